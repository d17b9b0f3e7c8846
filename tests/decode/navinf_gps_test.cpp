/*
 * GPS ephemeris, UTC and ionosphere collectors, fed with subframes built
 * by the message writer's encoder. A decoded table that encodes back to
 * the very bits it came from lies within half a count of the values that
 * made them; the real-data tests check the layout itself.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstring>

#include "decode/navinf_gps.h"
#include "decode/navinf_gps_fields.h"
#include "gps_feed.h"

using gpstest::feed;

namespace {

const int kPrn = 25;
const unsigned kT = gpstest::tmZelOf(2363, 455886);

/* Broadcast values of a real satellite (PRN 25, week 2363). */
tblOprGps_t realisticEph() {
    tblOprGps_t e;
    std::memset(&e, 0, sizeof e);
    e.wn = 315;
    e.af0 = 4.89457976073e-04;   e.af1 = -1.13686837722e-12;
    e.toc = e.toe = 460800;
    e.sqrtA = 5153.64361000;     e.e = 1.22986361384e-02;
    e.cus = 9.74535942078e-06;   e.cuc = 5.31040132046e-06;
    e.m0 = 1.21826291176;        e.deltaN = 4.92199073496e-09;
    e.crs = 102.875;             e.crc = 186.875;
    e.idot = 3.52514683652e-10;  e.omegaDot = -8.48285334489e-09;
    e.omega = 1.12541674290;     e.i0 = 9.49063522065e-01;
    e.cis = 2.23517417908e-08;   e.cic = -2.10478901863e-07;
    e.omega0 = 2.98942350206e-01;
    e.ura = 2.0;
    e.tgd = 5.58793544769e-09;
    e.iodc = e.iode = 73;
    return e;
}

/* Signed fields at their most negative count, unsigned ones at the top:
 * a lost sign bit or a short field shows. */
tblOprGps_t extremeEph() {
    tblOprGps_t e;
    std::memset(&e, 0, sizeof e);
    auto lowest = [](const GpsField& f) {
        return -std::ldexp(1.0, f.bits() - 1) * f.scale;
    };
    auto highest = [](const GpsField& f) {
        return (std::ldexp(1.0, f.bits()) - 1) * f.scale;
    };
    e.health = 63;
    e.wn = 1023;
    e.af0 = lowest(kGpsSf1.af0);     e.af1 = lowest(kGpsSf1.af1);
    e.af2 = lowest(kGpsSf1.af2);     e.tgd = lowest(kGpsSf1.tgd);
    e.toc = e.toe = 65535 * 16;
    e.sqrtA = highest(kGpsSf2.sqrtA); e.e = highest(kGpsSf2.e);
    e.crs = lowest(kGpsSf2.crs);     e.deltaN = lowest(kGpsSf2.deltaN);
    e.m0 = lowest(kGpsSf2.m0);       e.cuc = lowest(kGpsSf2.cuc);
    e.cus = lowest(kGpsSf2.cus);     e.cic = lowest(kGpsSf3.cic);
    e.omega0 = lowest(kGpsSf3.omega0); e.cis = lowest(kGpsSf3.cis);
    e.i0 = lowest(kGpsSf3.i0);       e.crc = lowest(kGpsSf3.crc);
    e.omega = lowest(kGpsSf3.omega); e.omegaDot = lowest(kGpsSf3.omegaDot);
    e.idot = lowest(kGpsSf3.idot);
    e.ura = 8192.0;
    e.iodc = e.iode = 255;
    return e;
}

struct Frame {
    uint8_t sf[3][30];
};

/* Subframes 1-3 of the frame that starts at `start` (s of week). */
Frame encodeFrame(const tblOprGps_t& e, uint32_t start, int ura = -1) {
    Frame f;
    x0c::gpsEncodeSf1(e, ura, -1, start + 6, f.sf[0]);
    x0c::gpsEncodeSf2(e, start + 12, f.sf[1]);
    x0c::gpsEncodeSf3(e, start + 18, f.sf[2]);
    return f;
}

void feedFrame(OprGps_t& c, const Frame& f, unsigned t1, unsigned t2,
               unsigned t3) {
    feed(c, kPrn, f.sf[0], t1);
    feed(c, kPrn, f.sf[1], t2);
    feed(c, kPrn, f.sf[2], t3);
}

/* The decoded part of the table: health to iode (not the padding). */
bool sameDecodedValues(const tblOprGps_t& a, const tblOprGps_t& b) {
    size_t from = offsetof(tblOprGps_t, health);
    size_t to = offsetof(tblOprGps_t, iode) + 1;
    return std::memcmp((const char*)&a + from, (const char*)&b + from,
                       to - from) == 0;
}

}  // namespace

TEST(OprGps, TableRoundTripThroughSubframes) {
    for (const tblOprGps_t& want : {realisticEph(), extremeEph()}) {
        Frame f = encodeFrame(want, 455880);
        OprGps_t c;
        feedFrame(c, f, kT, kT + 6, kT + 12);
        ASSERT_TRUE(c.isCmplt());
        tblOprGps_t got;
        std::memset(&got, 0, sizeof got);
        EXPECT_EQ(c.getTbl(&got), 1);
        EXPECT_EQ(got.actual, 1);
        EXPECT_EQ(0, std::memcmp(got.subfr1, f.sf[0], 30));
        EXPECT_EQ(0, std::memcmp(got.subfr2, f.sf[1], 30));
        EXPECT_EQ(0, std::memcmp(got.subfr3, f.sf[2], 30));
        Frame again = encodeFrame(got, 455880);
        EXPECT_EQ(0, std::memcmp(again.sf, f.sf, sizeof f.sf));
        /* integers exactly, and a few values against the originals */
        EXPECT_EQ(got.health, want.health);
        EXPECT_EQ(got.wn, want.wn);
        EXPECT_EQ(got.toc, want.toc);
        EXPECT_EQ(got.toe, want.toe);
        EXPECT_EQ(got.iodc, want.iodc);
        EXPECT_EQ(got.iode, want.iode);
        EXPECT_DOUBLE_EQ(got.ura, want.ura);
        EXPECT_NEAR(got.sqrtA, want.sqrtA, kGpsSf2.sqrtA.scale);
        EXPECT_NEAR(got.m0, want.m0, kGpsSf2.m0.scale);
        EXPECT_NEAR(got.idot, want.idot, kGpsSf3.idot.scale);
        EXPECT_NEAR(got.af0, want.af0, kGpsSf1.af0.scale);
    }
}

TEST(OprGps, CompletenessHasAnUpperBoundOnly) {
    Frame f = encodeFrame(realisticEph(), 455880);
    const struct {
        int d2, d3;   /* receive time of subframes 2, 3 relative to 1 */
        bool complete;
    } cases[] = {
        {6, 12, true},
        {-750, -750, true},  /* 750 s before subframe 1: still one set */
        {-751, 12, false},
        {6, -751, false},
        {100000, 12, true},  /* any time after subframe 1 */
        {6, 200000, true},
    };
    for (const auto& k : cases) {
        OprGps_t c;
        feedFrame(c, f, kT, kT + k.d2, kT + k.d3);
        EXPECT_EQ(c.isCmplt(), k.complete) << k.d2 << " " << k.d3;
    }
}

TEST(OprGps, IncompleteSetsLeaveTheTableAlone) {
    Frame f = encodeFrame(realisticEph(), 455880);
    tblOprGps_t tbl, before;
    std::memset(&tbl, 0xA5, sizeof tbl);
    before = tbl;

    OprGps_t c;
    feed(c, kPrn, f.sf[1], kT);
    feed(c, kPrn, f.sf[2], kT);
    EXPECT_FALSE(c.isCmplt()); /* no subframe 1 */
    EXPECT_EQ(c.getTbl(&tbl), 1);
    EXPECT_EQ(0, std::memcmp(&tbl, &before, sizeof tbl));

    /* a subframe 1 starts a new set: the earlier 2 and 3 are gone */
    feed(c, kPrn, f.sf[0], kT + 12);
    feed(c, kPrn, f.sf[1], kT + 18);
    EXPECT_FALSE(c.isCmplt());
    feed(c, kPrn, f.sf[2], kT + 24);
    EXPECT_TRUE(c.isCmplt());

    /* other subframes change nothing; clear() empties */
    uint8_t sf4[30];
    x0c::gpsEncodeFillerPage(4, 57, 455910, sf4);
    feed(c, kPrn, sf4, kT + 30);
    EXPECT_TRUE(c.isCmplt());
    c.clear();
    EXPECT_EQ(c.getTbl(&tbl), 1);
    EXPECT_EQ(0, std::memcmp(&tbl, &before, sizeof tbl));
}

TEST(OprGps, AccuracyFromTheUraIndex) {
    /* half steps use real division: index 3 is 2^2.5, not 2^2 */
    const struct {
        int index;
        double metres;
    } cases[] = {{0, 2.0},  {1, 2.8284271247461903}, {3, 5.656854249492381},
                 {6, 16.0}, {7, 32.0}, {14, 4096.0}, {15, 8192.0}};
    for (const auto& k : cases) {
        OprGps_t c;
        feedFrame(c, encodeFrame(realisticEph(), 455880, k.index), kT, kT, kT);
        tblOprGps_t tbl;
        c.getTbl(&tbl);
        EXPECT_DOUBLE_EQ(tbl.ura, k.metres) << "index " << k.index;
        EXPECT_EQ(x0c::gpsUraIndex(k.metres), k.index);
    }
}

TEST(OprGps, CheckRebuildsFromWordsThreeToTen) {
    Frame f = encodeFrame(realisticEph(), 455880);
    OprGps_t full;
    feedFrame(full, f, kT, kT, kT);
    tblOprGps_t want;
    full.getTbl(&want);

    unsigned char bytes[72];
    for (int i = 0; i < 3; i++) std::memcpy(bytes + 24 * i, f.sf[i], 24);
    OprGps_t c;
    tblOprGps_t tbl;
    std::memset(&tbl, 0xA5, sizeof tbl);
    c.check(bytes, &tbl);
    EXPECT_EQ(tbl.actual, 1);
    EXPECT_TRUE(sameDecodedValues(tbl, want));
    const uint8_t* raw[3] = {tbl.subfr1, tbl.subfr2, tbl.subfr3};
    const uint8_t zeros[6] = {};
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(0, std::memcmp(raw[i], f.sf[i], 24));
        EXPECT_EQ(0, std::memcmp(raw[i] + 24, zeros, 6)); /* words 1, 2 */
    }
}

TEST(UtcIonGps, Page18RoundTripAndSelection) {
    tblTmPrmGps_t u;
    tblIonGps_t ion;
    std::memset(&u, 0, sizeof u);
    std::memset(&ion, 0, sizeof ion);
    u.a1 = -9.769962616701378e-15;  u.a0 = -2.7939677238464355e-09;
    u.tot = 503808;  u.wnt = 255;  u.dtLs = -128;
    u.wnLsf = 137;   u.dn = 7;     u.dtLsf = 18;
    ion.alpha0 = 2.794e-08;  ion.alpha1 = -1.490e-08;
    ion.alpha2 = -1.788e-07; ion.alpha3 = 5.960e-08;
    ion.beta0 = 131072.0;    ion.beta1 = -65536.0;
    ion.beta2 = -262144.0;   ion.beta3 = 262144.0;
    uint8_t page18[30], asSf5[30], other[30];
    x0c::gpsEncodePage18(u, ion, 456000, page18);
    /* the same page sent as subframe 5: its SV ID says 56, its ID not */
    std::memcpy(asSf5, page18, 30);
    x0c::gpsPutTlmHow(asSf5, 5, 456000);
    x0c::gpsEncodeFillerPage(4, 57, 456030, other);

    TmPrmGps_t cu;
    IonGps_t ci;
    tblTmPrmGps_t gu;
    tblIonGps_t gi;
    std::memset(&gu, 0x5A, sizeof gu);
    const tblTmPrmGps_t untouched = gu;
    for (const uint8_t* sf : {asSf5, other}) {
        feed(cu, kPrn, sf, kT);
        feed(ci, kPrn, sf, kT);
    }
    EXPECT_FALSE(cu.isCmplt());
    EXPECT_FALSE(ci.isCmplt());
    EXPECT_EQ(cu.getTbl(&gu), 1);
    EXPECT_EQ(0, std::memcmp(&gu, &untouched, sizeof gu));

    feed(cu, kPrn, page18, kT);
    feed(ci, kPrn, page18, kT);
    ASSERT_TRUE(cu.isCmplt());
    ASSERT_TRUE(ci.isCmplt());
    EXPECT_EQ(cu.getTbl(&gu), 1);
    EXPECT_EQ(ci.getTbl(&gi), 1);
    EXPECT_EQ(gu.actual, 1);
    EXPECT_EQ(gi.actual, 1);
    uint8_t again[30];
    x0c::gpsEncodePage18(gu, gi, 456000, again);
    EXPECT_EQ(0, std::memcmp(again, page18, 30));
    EXPECT_EQ(gu.tot, u.tot);
    EXPECT_EQ(gu.wnt, u.wnt);
    EXPECT_EQ(gu.dtLs, u.dtLs);
    EXPECT_EQ(gu.dtLsf, u.dtLsf);
    EXPECT_NEAR(gu.a0, u.a0, kGpsPage18.a0.scale);
    EXPECT_NEAR(gi.alpha1, ion.alpha1, kGpsPage18.alpha1.scale);
    EXPECT_DOUBLE_EQ(gi.beta1, ion.beta1);

    cu.clear();
    ci.clear();
    EXPECT_FALSE(cu.isCmplt());
    EXPECT_FALSE(ci.isCmplt());
}
