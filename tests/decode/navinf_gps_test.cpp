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
