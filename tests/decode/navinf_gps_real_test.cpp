/*
 * GPS collectors on real broadcast subframes.
 *
 * - Subframes 1-3 of a u-blox recording against the RINEX navigation file
 *   its owner made from the same recording: every ephemeris field within
 *   the broadcast resolution.
 * - Two whole almanac cycles of another u-blox recording: complete
 *   almanacs, consistent among the satellites that sent them and with the
 *   ephemerides of the same satellites; UTC page against the leap-second
 *   values a Septentrio receiver decoded (they have not changed since
 *   2017, so another week serves).
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "decode/navinf_gps.h"
#include "decode/navinf_gps_fields.h"
#include "gps_feed.h"

using gpstest::RealSubframe;

namespace {

/* One GPS record of a RINEX 3 navigation file: the epoch and the 29
 * broadcast orbit values in file order (3 on the first line, 4 on each of
 * the next seven, 2 on the last). */
struct RinexEph {
    int prn;
    int year, month, day, hour, minute, second;
    double v[31];
};

double rinexNumber(const std::string& line, size_t at) {
    if (line.size() <= at) return 0.0;
    std::string f = line.substr(at, 19);
    for (char& ch : f)
        if (ch == 'D' || ch == 'd') ch = 'E';
    return std::strtod(f.c_str(), nullptr);
}

std::vector<RinexEph> readRinexGps(const std::string& path) {
    std::vector<RinexEph> out;
    std::ifstream in(path);
    std::string line;
    bool body = false;
    while (std::getline(in, line)) {
        if (!body) {
            body = line.find("END OF HEADER") != std::string::npos;
            continue;
        }
        if (line.empty() || line[0] == ' ') continue;
        bool gps = line[0] == 'G';
        RinexEph e;
        if (gps) {
            std::sscanf(line.c_str(), "G%d %d %d %d %d %d %d", &e.prn,
                        &e.year, &e.month, &e.day, &e.hour, &e.minute,
                        &e.second);
            for (int i = 0; i < 3; i++) e.v[i] = rinexNumber(line, 23 + 19 * i);
        }
        for (int l = 0; l < 7; l++) {
            std::getline(in, line);
            if (gps)
                for (int i = 0; i < 4; i++)
                    e.v[3 + 4 * l + i] = rinexNumber(line, 4 + 19 * i);
        }
        if (gps) out.push_back(e);
    }
    return out;
}

/* Days from 1970-01-01 of a Gregorian date. */
long daysFromCivil(int y, int m, int d) {
    y -= m <= 2;
    long era = (y >= 0 ? y : y - 399) / 400;
    long yoe = y - era * 400;
    long doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

/* Second of the GPS week of a RINEX epoch (GPS time). */
unsigned secondOfWeek(const RinexEph& e) {
    long days = daysFromCivil(e.year, e.month, e.day) -
                daysFromCivil(1980, 1, 6);
    return (unsigned)((days % 7) * 86400 + e.hour * 3600 + e.minute * 60 +
                      e.second);
}

/* Compares one value within half a count of its field; counts it. */
struct FieldCheck {
    int compared = 0;
    void near(double got, double want, const GpsField& f, const char* name) {
        EXPECT_NEAR(got, want, f.scale * 0.5000001) << name;
        compared++;
    }
    template <class A, class B>
    void eq(A got, B want, const char* name) {
        EXPECT_EQ(got, want) << name;
        compared++;
    }
};

}  // namespace

TEST(GpsRealData, EphemeridesMatchTheRinexFile) {
    std::vector<RealSubframe> sfs = gpstest::readSubframes(
        gpstest::dataPath("rawnav/gps_subframes_ubx_coldstart.txt"));
    std::vector<RinexEph> rnx =
        readRinexGps(gpstest::dataPath("rawnav/rinex_nav_coldstart.nav"));
    ASSERT_EQ(sfs.size(), 849u);
    ASSERT_EQ(rnx.size(), 9u);

    FieldCheck fc;
    int fed = 0, sets = 0, setsOtherIssue = 0;
    for (const RinexEph& r : rnx) {
        SCOPED_TRACE("G" + std::to_string(r.prn));
        const double* v = r.v;
        OprGps_t c;
        int setsOfPrn = 0;
        for (const RealSubframe& s : sfs) {
            if (s.prn != r.prn || s.id < 1 || s.id > 3) continue;
            gpstest::feed(c, s.prn, s.sf, gpstest::tmZelOf(s.week, s.tow));
            fed++;
            if (s.id != 3 || !c.isCmplt()) continue;
            tblOprGps_t t;
            ASSERT_EQ(c.getTbl(&t), 1);
            if (t.iode != (int)v[3] || t.toe != (unsigned)v[11]) {
                setsOtherIssue++; /* another upload than the RINEX one */
                continue;
            }
            setsOfPrn++;
            EXPECT_EQ(t.actual, 1);
            fc.eq(t.toc, secondOfWeek(r), "toc");
            fc.near(t.af0, v[0], kGpsSf1.af0, "af0");
            fc.near(t.af1, v[1], kGpsSf1.af1, "af1");
            fc.near(t.af2, v[2], kGpsSf1.af2, "af2");
            fc.eq(t.iode, (int)v[3], "iode");
            fc.near(t.crs, v[4], kGpsSf2.crs, "crs");
            fc.near(t.deltaN, v[5], kGpsSf2.deltaN, "deltaN");
            fc.near(t.m0, v[6], kGpsSf2.m0, "m0");
            fc.near(t.cuc, v[7], kGpsSf2.cuc, "cuc");
            fc.near(t.e, v[8], kGpsSf2.e, "e");
            fc.near(t.cus, v[9], kGpsSf2.cus, "cus");
            fc.near(t.sqrtA, v[10], kGpsSf2.sqrtA, "sqrtA");
            fc.eq(t.toe, (unsigned)v[11], "toe");
            fc.near(t.cic, v[12], kGpsSf3.cic, "cic");
            fc.near(t.omega0, v[13], kGpsSf3.omega0, "omega0");
            fc.near(t.cis, v[14], kGpsSf3.cis, "cis");
            fc.near(t.i0, v[15], kGpsSf3.i0, "i0");
            fc.near(t.crc, v[16], kGpsSf3.crc, "crc");
            fc.near(t.omega, v[17], kGpsSf3.omega, "omega");
            fc.near(t.omegaDot, v[18], kGpsSf3.omegaDot, "omegaDot");
            fc.near(t.idot, v[19], kGpsSf3.idot, "idot");
            fc.eq((int)t.wn, (int)v[21] % 1024, "wn");
            fc.eq(t.ura, v[23], "ura");
            fc.eq((int)t.health, (int)v[24], "health");
            fc.near(t.tgd, v[25], kGpsSf1.tgd, "tgd");
            fc.eq((int)t.iodc, (int)v[26] & 255, "iodc");
        }
        EXPECT_GT(setsOfPrn, 0);
        sets += setsOfPrn;
    }
    /* every satellite of the file had the same upload throughout */
    EXPECT_EQ(setsOtherIssue, 0);
    std::printf("[ ephemeris ] %d real subframes 1-3 fed, %d sets, "
                "%d fields compared with RINEX\n",
                fed, sets, fc.compared);
    RecordProperty("subframes", fed);
    RecordProperty("fields", fc.compared);
}

namespace {

struct PrnResult {
    std::vector<tblAlmGps_t> alm;
    bool hasEph = false;
    tblOprGps_t eph;
    bool hasUtc = false;
    tblTmPrmGps_t utc;
    tblIonGps_t ion;
};

/* Feeds every subframe of the file to one set of collectors per PRN,
 * keeping each almanac as it completes and the last ephemeris and page
 * 18. */
std::map<int, PrnResult> runAlmanacFile(int* fed) {
    std::vector<RealSubframe> sfs = gpstest::readSubframes(
        gpstest::dataPath("rawnav/gps_subframes_ubx_rxmsfrbx_2cycles.txt"));
    struct Collectors {
        AlmGps_t alm;
        OprGps_t opr;
        TmPrmGps_t utc;
        IonGps_t ion;
    };
    std::map<int, Collectors> col;
    std::map<int, PrnResult> res;
    *fed = 0;
    for (const RealSubframe& s : sfs) {
        Collectors& c = col[s.prn];
        PrnResult& r = res[s.prn];
        unsigned tm = gpstest::tmZelOf(s.week, s.tow);
        gpstest::feed(c.alm, s.prn, s.sf, tm);
        gpstest::feed(c.opr, s.prn, s.sf, tm);
        gpstest::feed(c.utc, s.prn, s.sf, tm);
        gpstest::feed(c.ion, s.prn, s.sf, tm);
        (*fed)++;
        if (s.id == 5 && c.alm.isCmplt()) {
            tblAlmGps_t a;
            EXPECT_EQ(c.alm.getTbl(&a), 1);
            /* complete for the few seconds until the next subframe 1 */
            if (r.alm.empty() || r.alm.back().tmResived != a.tmResived)
                r.alm.push_back(a);
        }
        if (s.id == 3 && c.opr.isCmplt()) {
            c.opr.getTbl(&r.eph);
            r.hasEph = true;
        }
        if (c.utc.isCmplt()) {
            c.utc.getTbl(&r.utc);
            c.ion.getTbl(&r.ion);
            r.hasUtc = true;
        }
    }
    return res;
}

/* Leap-second fields of the receiver-decoded UTC record: DEL_t_LS,
 * WN_LSF, DN, DEL_t_LSF (columns 9-12). */
void readSbfLeapSeconds(int v[4]) {
    std::ifstream in(gpstest::dataPath("rawnav/sbf_allblocks_gpsutc.txt"));
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream ss(line);
        std::string skip;
        for (int i = 0; i < 8; i++) ss >> skip;
        ss >> v[0] >> v[1] >> v[2] >> v[3];
    }
}

}  // namespace

TEST(GpsRealData, AlmanacAndUtcCycles) {
    int fed = 0;
    std::map<int, PrnResult> res = runAlmanacFile(&fed);
    EXPECT_EQ(fed, 1491);

    int sets = 0, filled = 0, empty = 0;
    const tblAlmGps_t* first = nullptr;
    for (auto& pr : res) {
        for (const tblAlmGps_t& a : pr.second.alm) {
            SCOPED_TRACE("almanac from PRN " + std::to_string(pr.first));
            sets++;
            EXPECT_EQ(a.actual, 1);
            EXPECT_EQ(a.toa % 4096, 0u);
            EXPECT_LE(a.toa, 602112u);
            /* GPS week 2414 is 366 in ten bits; an almanac may be
             * referenced to the next week */
            EXPECT_TRUE(a.wna == 366 || a.wna == 367) << a.wna;
            for (int k = 0; k < 32; k++) {
                const tblAlmGpsSat_t& e = a.alm[k];
                SCOPED_TRACE("PRN " + std::to_string(k + 1));
                if (e.onEmpty) {
                    empty++;
                    continue;
                }
                filled++;
                /* the records are 4-byte packed: doubles go to the
                 * comparisons by value (unary +), not by reference */
                EXPECT_EQ(e.toa, a.toa);
                EXPECT_NEAR(e.sqrtA, 5153.6, 5.0);
                EXPECT_GE(+e.e, 0.0);
                EXPECT_LT(+e.e, 0.03);
                /* inclination 55 degrees +- 3 about the 0.3 semicircles */
                EXPECT_LT(std::fabs(e.deltaI), 0.06);
                EXPECT_LT(std::fabs(e.af0), 1e-3);
                EXPECT_LT(std::fabs(e.af1), 1e-9);
                EXPECT_GT(+e.omegaDot, -9.5e-9);
                EXPECT_LT(+e.omegaDot, -7.0e-9);
                EXPECT_LE(std::fabs(e.m0), GPS_PI);
                EXPECT_LE(std::fabs(e.omega), GPS_PI);
                EXPECT_LE(std::fabs(e.omega0), GPS_PI);
            }
            /* every satellite sends the same upload's reference time */
            if (!first) first = &a;
            EXPECT_EQ(a.toa, first->toa);
            EXPECT_EQ(a.wna, first->wna);
        }
    }
    /* PRN 11, 13 and 20 are tracked through the first cycle, 13, 20 and
     * 21 through the second */
    EXPECT_GE(sets, 6);

    /* The almanac agrees with the ephemerides the same satellites sent:
     * the orbit shape directly, the node and the argument of latitude
     * after carrying the almanac to the ephemeris' toe. Both weekly
     * epochs are taken into account: this almanac is referenced to week
     * 2415 (wna 367) and the ephemerides to week 2414. The almanac holds
     * mean elements fitted over days, the ephemeris osculating ones over
     * hours: they agree to about a kilometre along the orbit (1e-3 rad),
     * 0.1 in root semi-major axis, 1e-9 rad/s in node rate and a few
     * microseconds in clock; the limits leave some room above that and
     * stay far below what a wrong sign, scale or bit position gives. */
    const double gm = 3.986005e14, we = 7.2921151467e-5;
    const tblAlmGps_t& a = res[13].alm.at(0);
    ASSERT_EQ(a.wna, 367u);
    int againstEph = 0;
    for (auto& pr : res) {
        if (!pr.second.hasEph) continue;
        const tblOprGps_t& eph = pr.second.eph;
        const tblAlmGpsSat_t& e = a.alm[pr.first - 1];
        SCOPED_TRACE("PRN " + std::to_string(pr.first));
        ASSERT_EQ(e.onEmpty, 0);
        EXPECT_NEAR(e.sqrtA, eph.sqrtA, 0.2);
        EXPECT_NEAR(e.e, eph.e, 2e-4);
        EXPECT_NEAR(0.3 * GPS_PI + e.deltaI, eph.i0, 2e-3);
        EXPECT_NEAR(e.omegaDot, eph.omegaDot, 1e-9);
        EXPECT_NEAR(e.af0, eph.af0, 1e-5);
        EXPECT_NEAR(e.af1, eph.af1, 1e-11);

        double t = (double)eph.toe - 604800.0; /* toe on the almanac's week */
        double dt = t - (double)a.toa;
        double nodeAlm = e.omega0 + e.omegaDot * dt - we * t;
        double nodeEph = eph.omega0 - we * eph.toe;
        EXPECT_NEAR(std::remainder(nodeAlm - nodeEph, 2 * GPS_PI), 0.0, 5e-3);
        double n = std::sqrt(gm) / (e.sqrtA * e.sqrtA * e.sqrtA);
        double uAlm = e.m0 + n * dt + e.omega;
        double uEph = eph.m0 + eph.omega;
        EXPECT_NEAR(std::remainder(uAlm - uEph, 2 * GPS_PI), 0.0, 5e-3);
        againstEph++;
    }
    EXPECT_GE(againstEph, 6);


    /* Page 18: the leap-second fields have not changed since 2017, so a
     * receiver's record of another week serves; the rest must be
     * plausible and the ionosphere the same from every satellite. */
    int leap[4] = {};
    readSbfLeapSeconds(leap);
    ASSERT_EQ(leap[0], 18);
    int pages = 0;
    const tblIonGps_t* ion0 = nullptr;
    for (auto& pr : res) {
        if (!pr.second.hasUtc) continue;
        SCOPED_TRACE("page 18 of PRN " + std::to_string(pr.first));
        const tblTmPrmGps_t& u = pr.second.utc;
        const tblIonGps_t& i = pr.second.ion;
        pages++;
        EXPECT_EQ(u.actual, 1);
        EXPECT_EQ(i.actual, 1);
        EXPECT_EQ(u.dtLs, leap[0]);
        EXPECT_EQ((int)u.wnLsf, leap[1]);
        EXPECT_EQ((int)u.dn, leap[2]);
        EXPECT_EQ(u.dtLsf, leap[3]);
        EXPECT_TRUE(u.wnt == 2414 % 256 || u.wnt == 2415 % 256) << u.wnt;
        EXPECT_LT(std::fabs(u.a0), 1e-7);
        EXPECT_LT(std::fabs(u.a1), 1e-12);
        EXPECT_LT(std::fabs(i.alpha0 - 5e-8), 5e-8);
        EXPECT_LT(std::fabs(i.beta0 - 5e5), 5e5);
        if (!ion0) ion0 = &i;
        EXPECT_EQ(0, std::memcmp(&i.alpha0, &ion0->alpha0, 8 * sizeof(double)));
    }
    EXPECT_GE(pages, 6);

    std::printf("[ almanac ] %d real subframes fed, %d complete almanacs "
                "(%d entries filled, %d empty), %d entries against "
                "ephemerides, %d pages 18\n",
                fed, sets, filled, empty, againstEph, pages);
    RecordProperty("subframes", fed);
    RecordProperty("almanacs", sets);
}
