/*
 * Messages built by the writer and read back by the library's converter:
 * every field the writer places must come out of the reader's tables with
 * the value and scale it went in with.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "decode/lstsat.h"
#include "x0c_bits.h"
#include "x0c_writer.h"

namespace {

using x0c::Header;
using x0c::SatBlock;

const double kC = 299792458.0;
const double K32 = 1.0 / 4294967296.0;
const double K24 = 1.0 / 16777216.0;
const double K16 = 1.0 / 65536.0;

/* tmZel 757436409: (tm - 1) mod 30 = 8, so the CT string due is 4. */
const unsigned int kTm = 757436409u;
const unsigned int kRsvr = kTm + 630720000u;

double psvdOf(int64_t raw) { return (double)raw * kC * K32 / 1000.0; }
double angleOf(uint16_t raw) { return raw * (1.0 / 2048.0) * 360.0; }

struct Decoded {
    lstsat_t conv;
    std::vector<uint8_t> msg;
    lsttblSat_t* run(const Header& h, const std::vector<SatBlock>& sats) {
        msg = x0c::buildMessage(h, sats);
        return conv.upx0c(msg.data());
    }
};

Header header() {
    Header h;
    h.tmRsvr = kRsvr;
    h.dtGpsUtc = 18;
    return h;
}

SatBlock glonass(int num, int chan) {
    SatBlock g;
    g.num = (uint8_t)num;
    g.litByte = (uint8_t)(0x80 | num);  // bit 7 is not part of the letter
    g.hasSb10 = true;
    g.chan = (uint8_t)chan;
    return g;
}

SatBlock gps(int num, int chan) {
    SatBlock p;
    p.gps = true;
    p.num = (uint8_t)num;
    p.hasSb10 = true;
    p.chan = (uint8_t)chan;
    return p;
}

TEST(X0cRoundTrip, ObservationsAtFullResolution) {
    SatBlock g = glonass(3, 1);
    g.sig[0].present = true;
    g.sig[0].psvd = x0c::psvdToRaw(19950123.456);
    g.sig[0].dop = x0c::dopToRaw(-3141.59);
    g.sig[0].faze = x0c::fazeToRaw(-104829384.125);
    g.sig[0].ampl = 47;
    g.sig[1].present = true;
    g.sig[1].psvd = x0c::psvdToRaw(19950123.456 - 5.25) - g.sig[0].psvd;
    g.sig[1].dop = x0c::dopToRaw(2443.1);
    g.sig[1].faze = INT64_C(-0x7000000000000000);
    g.sig[1].ampl = 40;
    g.sig[2].present = true;
    g.sig[2].psvd = (INT64_C(1) << 47) - 1;        // largest 48-bit
    g.sig[2].dop = INT32_MIN;
    g.sig[2].faze = 1;
    g.sig[2].ampl = 0xFFFF;
    g.sig[3].present = true;
    g.sig[3].psvd = INT32_MIN;
    g.sig[3].dop = 1;

    SatBlock n = glonass(4, 2);
    n.sig[0].present = true;
    n.sig[0].psvd = -(INT64_C(1) << 47);            // 48-bit sign
    n.sig[1].present = true;
    n.sig[1].psvd = 12345;
    n.sig[3].present = true;                        // no base: adds to 0
    n.sig[3].psvd = -7;
    n.hasSb7 = true;
    n.sb7[0] = UINT64_C(0xFFFFFFFFFFFF);            // read unsigned
    n.sb7[1] = UINT64_C(0x123456789ABC);

    Decoded d;
    lsttblSat_t* lst = d.run(header(), {g, n});
    ASSERT_EQ(lst->numGlo, 2u);
    ASSERT_EQ(lst->numGps, 0u);

    const tblObs_t* o = lst->tblGlo[0].tblObs;
    EXPECT_EQ(o->tmZel, kTm);
    for (int k = 0; k < 4; k++) EXPECT_EQ(o->actual[k], 1) << k;
    EXPECT_EQ(o->actual[4], 0);
    EXPECT_NEAR(o->psvd[0], 19950123.456, 0.5 * kC * K32 / 1000.0);
    EXPECT_DOUBLE_EQ(o->psvd[0], psvdOf(g.sig[0].psvd));
    EXPECT_NEAR(o->psvd[1], 19950123.456 - 5.25, 0.5 * kC * K32 / 1000.0);
    EXPECT_NEAR(o->dop[0], -3141.59, 1000.0 * K24);
    EXPECT_DOUBLE_EQ(o->dop[1], 1000.0 * g.sig[1].dop * K24);
    EXPECT_DOUBLE_EQ(o->faze[0], -104829384.125);
    EXPECT_DOUBLE_EQ(o->faze[1], (double)INT64_C(-0x7000000000000000) * K16);
    EXPECT_EQ(o->ampl[0], 47u);
    EXPECT_EQ(o->ampl[1], 40u);
    EXPECT_DOUBLE_EQ(o->psvd[2], psvdOf((INT64_C(1) << 47) - 1));
    EXPECT_DOUBLE_EQ(o->dop[2], 1000.0 * INT32_MIN * K24);
    EXPECT_DOUBLE_EQ(o->faze[2], K16);
    EXPECT_EQ(o->ampl[2], 0xFFFFu);
    EXPECT_DOUBLE_EQ(o->psvd[3], psvdOf((INT64_C(1) << 47) - 1) + psvdOf(INT32_MIN));
    EXPECT_DOUBLE_EQ(o->dop[3], 1000.0 * K24);

    o = lst->tblGlo[1].tblObs;
    EXPECT_DOUBLE_EQ(o->psvd[0], psvdOf(-(INT64_C(1) << 47)));
    EXPECT_LT(o->psvd[0], 0.0);
    // sub-block 7 replaces places 1 and 3, unsigned
    EXPECT_DOUBLE_EQ(o->psvd[1], psvdOf(INT64_C(0xFFFFFFFFFFFF)));
    EXPECT_DOUBLE_EQ(o->psvd[3], psvdOf(INT64_C(0x123456789ABC)));
    EXPECT_EQ(o->actual[2], 0);
}

TEST(X0cRoundTrip, AdditionalInformation) {
    SatBlock g = glonass(9, 7);
    g.sb10Flags = 0xA0;
    g.elev10 = 455;
    g.aux = 0xBEEF;
    for (int k = 0; k < 4; k++) {
        g.sig[k].present = k != 1;
        g.sig[k].angle = (uint16_t)(0x0123 * (k + 1));
        g.sig[k].aux8 = (uint8_t)(0x10 + k);
    }
    SatBlock p = gps(9, 8);  // same number, own channel: own slot
    p.sb10Flags = 0x20;
    p.elev10 = 901;
    p.aux = 3;
    p.sig[0].present = true;
    p.sig[0].angle = 0xFFFF;
    p.sig[0].aux8 = 0x99;  // not carried: the parity indicator is there
    p.sig[2].present = true;
    p.sig[2].angle = 0x0800;
    p.sig[2].aux8 = 0x42;
    p.hasGps = true;
    p.gpsSf[24] = 2 << 2;  // subframe 2
    p.gpsParity = 0;

    Decoded d;
    lsttblSat_t* lst = d.run(header(), {g, p});
    ASSERT_EQ(lst->numGlo, 1u);
    ASSERT_EQ(lst->numGps, 1u);

    const tblHdr_t* h = lst->tblGlo[0].tblHdr;
    const tblAddInf_t* a = lst->tblGlo[0].tblAddInf;
    EXPECT_EQ(h->num, 9);
    EXPECT_EQ(h->lit, 9);
    EXPECT_EQ(h->sys, 0);
    EXPECT_DOUBLE_EQ(h->um, 45.5);
    EXPECT_DOUBLE_EQ(h->aux, 0xBEEF);
    EXPECT_EQ(a->actual, 1);
    EXPECT_EQ(a->chan, 7);
    EXPECT_EQ(a->flagB5, 1);
    EXPECT_EQ(a->flagB7, 1);
    for (int k = 0; k < 4; k++) {
        EXPECT_EQ(a->present[k], k != 1) << k;
        if (k == 1) continue;
        EXPECT_DOUBLE_EQ(a->angle[k], angleOf(g.sig[k].angle)) << k;
        EXPECT_EQ(a->aux8[k], 0x10 + k) << k;
    }

    h = lst->tblGps[0].tblHdr;
    a = lst->tblGps[0].tblAddInf;
    EXPECT_EQ(h->num, 9);
    EXPECT_EQ(h->sys, 1);
    EXPECT_DOUBLE_EQ(h->um, 90.1);
    EXPECT_DOUBLE_EQ(h->aux, 3.0);
    EXPECT_EQ(a->chan, 8);
    EXPECT_EQ(a->flagB5, 1);
    EXPECT_EQ(a->flagB7, 0);
    EXPECT_EQ(a->present[0], 1);
    EXPECT_EQ(a->present[1], 0);
    EXPECT_EQ(a->present[2], 1);
    EXPECT_DOUBLE_EQ(a->angle[0], angleOf(0xFFFF));
    EXPECT_EQ(a->aux8[0], 0);  // low byte of the parity indicator
    EXPECT_DOUBLE_EQ(a->angle[2], 360.0);
    EXPECT_EQ(a->aux8[2], 0x42);
}

TEST(X0cRoundTrip, MeteoAndGpsUtcRecords) {
    Decoded d;
    Header h = header();
    h.temperature = -125;
    h.pressure = 10999;
    h.humidity = 1000;
    SatBlock p = gps(5, 1);
    p.sig[0].present = true;
    lsttblSat_t* lst = d.run(h, {p});
    EXPECT_EQ(lst->meteo->actual, 1);
    EXPECT_DOUBLE_EQ(lst->meteo->temperature, -12.5);
    EXPECT_DOUBLE_EQ(lst->meteo->pressure, 1099.9);
    EXPECT_DOUBLE_EQ(lst->meteo->humidity, 100.0);
    EXPECT_EQ(d.conv.getTblGpsUtc()->actual, 1);
    EXPECT_EQ(d.conv.getTblGpsUtc()->dtGpsUtc, 18u);

    // a pressure in millimetres of mercury, and no GPS satellite
    h.pressure = 760;
    h.dtGpsUtc = 17;
    lst = d.run(h, {glonass(1, 1)});
    EXPECT_EQ(lst->meteo->actual, 1);
    EXPECT_DOUBLE_EQ(lst->meteo->pressure, 76.0 * 13.157894736842104);
    EXPECT_EQ(d.conv.getTblGpsUtc()->actual, 0);

    h.temperature = -601;
    lst = d.run(h, {});
    EXPECT_EQ(lst->meteo->actual, 0);
    EXPECT_DOUBLE_EQ(lst->meteo->temperature, -60.1);
}

TEST(X0cRoundTrip, GoodStringsLeaveTheFlagsClear) {
    SatBlock g = glonass(2, 1);
    g.sig[0].present = true;
    g.hasCt = true;
    x0c::putBitsCT(g.ct, 81, 4, 4);  // due at kTm
    x0c::putBitsCT(g.ct, 30, 20, 0xABCDE);
    g.hasVt = true;
    x0c::putBits(g.vt, 47, 4, 7);
    x0c::putBits(g.vt, 10, 20, 0x5A5A5);
    g.hasL3 = true;
    g.l3[34] = 3 << 5;  // type 3

    SatBlock p = gps(2, 2);
    p.hasGps = true;
    uint32_t w[10] = {0x8B0000, (1234u << 7) | (3u << 2), 0x123456};
    x0c::gpsWordsToStored(w, p.gpsSf);

    Decoded d;
    lsttblSat_t* lst = d.run(header(), {g, p});
    ASSERT_EQ(lst->numGlo, 1u);
    ASSERT_EQ(lst->numGps, 1u);
    const tblHdr_t* h = lst->tblGlo[0].tblHdr;
    EXPECT_EQ(h->badNavInfCt, 0);
    EXPECT_EQ(h->badNavInfVt, 0);
    EXPECT_EQ(h->badNavInfL3, 0);
    EXPECT_EQ(lst->tblGps[0].tblHdr->badNavInfCt, 0);

    // the same strings marked bad by the receiver, or missing
    g.l3Bad = true;
    g.hasVt = false;
    p.gpsParity = 1;
    lst = d.run(header(), {g, p});
    h = lst->tblGlo[0].tblHdr;
    EXPECT_EQ(h->badNavInfCt, 0);
    EXPECT_EQ(h->badNavInfVt, 16);
    EXPECT_EQ(h->badNavInfL3, 16);
    EXPECT_EQ(lst->tblGps[0].tblHdr->badNavInfCt, 16);

    // a place 0 without its string: nothing to take
    g.hasCt = false;
    p.hasGps = false;
    p.gpsParity = 0;
    p.sig[0].present = true;
    lst = d.run(header(), {g, p});
    EXPECT_EQ(lst->tblGlo[0].tblHdr->badNavInfCt, 16);
    EXPECT_EQ(lst->tblGps[0].tblHdr->badNavInfCt, 16);
}

TEST(X0cRoundTrip, TypeAndNoData) {
    Decoded d;
    SatBlock g = glonass(1, 1);
    g.sig[0].present = true;
    lsttblSat_t* lst = d.run(header(), {g});
    ASSERT_EQ(lst->numGlo, 1u);

    Header h = header();
    h.type = 11;  // not ours: the list stays as it was
    EXPECT_EQ(d.run(h, {})->numGlo, 1u);

    h.type = 12;
    h.noData = true;
    lst = d.run(h, {g});
    EXPECT_EQ(lst->numGlo, 0u);
    EXPECT_EQ(lst->numGps, 0u);
}

}  // namespace
