/*
 * Table printing: the exact text of every kind of table, including the
 * almanacs and observation places that are not valid.
 */
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "diag/prnt_tbl.h"

namespace {

/* Runs `print` with standard output captured and returns its lines. */
std::vector<std::string> linesOf(const std::function<void()>& print) {
    testing::internal::CaptureStdout();
    print();
    std::string out = testing::internal::GetCapturedStdout();
    std::vector<std::string> lines;
    std::size_t from = 0;
    while (from < out.size()) {
        std::size_t nl = out.find('\n', from);
        EXPECT_NE(nl, std::string::npos) << "last line not terminated: " << out.substr(from);
        if (nl == std::string::npos) nl = out.size();
        lines.push_back(out.substr(from, nl - from));
        from = nl + 1;
    }
    return lines;
}

tblAlmGps_t gpsAlmanac(uint8_t actual) {
    tblAlmGps_t t;
    std::memset(&t, 0, sizeof t);
    t.length = ZEL_LEN_ALMGPS;
    t.actual = actual;
    for (int i = 0; i < ZEL_NUM_ALM_GPS; i++) {
        t.alm[i].length = ZEL_LEN_ALMGPS_SAT;
        t.alm[i].healL = (uint8_t)(i * 8);
    }
    t.alm[30].onEmpty = 1;
    t.alm[31].healL = 0xff;
    return t;
}

}  // namespace

TEST(PrntTbl, OneLineTables) {
    tblHdr_t hdr = {};
    hdr.length = ZEL_LEN_HDR;
    hdr.num = 127;
    hdr.lit = 5;
    hdr.sys = 1;
    hdr.badNavInfCt = 36;
    hdr.badNavInfVt = 64;
    hdr.badNavInfL3 = 16;  /* not printed */
    EXPECT_EQ(linesOf([&] { prntTbl_t::tblHdr(&hdr); }),
              std::vector<std::string>{
                  "p tblHdr_t length:028 num:127 lit:05 sys:01 badNavInfCt:36 badNavInfVt:64"});

    tblAddInf_t add = {};
    add.length = ZEL_LEN_ADDINF;
    add.actual = 1;
    tblOprGps_t opr = {};
    opr.length = ZEL_LEN_OPRGPS;
    tblTmPrmGps_t tp = {};
    tp.length = ZEL_LEN_TMPRMGPS;
    tp.actual = 1;
    tblIonGps_t ion = {};
    ion.length = 7;
    ion.actual = 3;
    std::vector<std::string> want = {
        "p tblAddInf_t length:060 actual:01",
        "p tblOprGps_t length:" + std::to_string(sizeof(tblOprGps_t)) + " actual:00",
        "p tblTmPrmGps_t length:044 actual:01",
        "p tblIonGps_t length:007 actual:03",
    };
    EXPECT_EQ(linesOf([&] {
                  prntTbl_t::tblAddInf(&add);
                  prntTbl_t::tblOprGps(&opr);
                  prntTbl_t::tblTmPrmGps(&tp);
                  prntTbl_t::tblIonGps(&ion);
              }),
              want);
}

TEST(PrntTbl, ObservationsValidAndInvalidPlaces) {
    tblObs_t obs = {};
    obs.length = ZEL_LEN_OBS;
    obs.tmZel = 0x1a2b;
    obs.actual[0] = 1;
    obs.psvd[0] = 21456789.1234;
    obs.dop[0] = -1234.5678;
    obs.faze[0] = 123.0;
    obs.ampl[0] = 7;
    /* Place 1 holds values but is not valid: only its flag is printed. */
    obs.psvd[1] = 99.0;
    obs.ampl[1] = 55;
    obs.actual[2] = 2;
    obs.psvd[2] = -0.0004;
    obs.dop[2] = 0.5;
    obs.faze[2] = -98765432109.75;
    obs.ampl[2] = 4321;
    /* Place 4 is never printed, valid or not. */
    obs.actual[4] = 1;
    obs.psvd[4] = 1.0;
    EXPECT_EQ(linesOf([&] { prntTbl_t::tblObs(&obs); }),
              (std::vector<std::string>{
                  "p tblObs_t length:156 tmZel:001a2b ",
                  "C1 actual:01 psvd:   21456789.123 dop:-1234.568 faze:        123.000 ampl:007",
                  "C2 actual:00",
                  "B1 actual:02 psvd:         -0.000 dop:0.500 faze:-98765432109.750 ampl:4321",
                  "B2 actual:00",
              }));
    /* A full 32-bit time is printed in all its digits. */
    obs.tmZel = 0x2f3c4d5eu;
    std::vector<std::string> lines = linesOf([&] { prntTbl_t::tblObs(&obs); });
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0], "p tblObs_t length:156 tmZel:2f3c4d5e ");
}

/* A set prints its header and one more table: observations for GLONASS,
 * the almanac (not the observations) for GPS. */
TEST(PrntTbl, TableSets) {
    tblHdr_t hdr = {};
    hdr.length = ZEL_LEN_HDR;
    hdr.num = 3;
    tblObs_t obs = {};
    obs.length = ZEL_LEN_OBS;
    obs.tmZel = 0xabcdef;
    obs.actual[1] = 1;
    obs.psvd[1] = 20000000.5;
    obs.dop[1] = 10.0;
    obs.faze[1] = 1.25;
    obs.ampl[1] = 40;
    tblAlmGps_t alm = gpsAlmanac(0);

    ::tblSatGlo glo = {};
    glo.tblHdr = &hdr;
    glo.tblObs = &obs;
    EXPECT_EQ(linesOf([&] { prntTbl_t::tblSatGlo(&glo); }),
              (std::vector<std::string>{
                  "p tblHdr_t length:028 num:03 lit:00 sys:00 badNavInfCt:00 badNavInfVt:00",
                  "p tblObs_t length:156 tmZel:abcdef ",
                  "C1 actual:00",
                  "C2 actual:01 psvd:   20000000.500 dop:10.000 faze:          1.250 ampl:040",
                  "B1 actual:00",
                  "B2 actual:00",
              }));

    hdr.sys = 1;
    ::tblSatGps gps = {};
    gps.tblHdr = &hdr;
    gps.tblObs = &obs;
    gps.tblAlmGps = &alm;
    EXPECT_EQ(linesOf([&] { prntTbl_t::tblSatGps(&gps); }),
              (std::vector<std::string>{
                  "p tblHdr_t length:028 num:03 lit:00 sys:01 badNavInfCt:00 badNavInfVt:00",
                  "p tblAlmGps_t length:2704 actual:00",
              }));
}
