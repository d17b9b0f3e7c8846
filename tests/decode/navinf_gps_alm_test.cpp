/*
 * GPS almanac collector: whole 12.5-minute cycles of subframes built by
 * the encoder, with single pages or times altered.
 */
#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "decode/navinf_gps.h"
#include "decode/navinf_gps_fields.h"
#include "gps_feed.h"
#include "x0c_bits.h"

namespace {

const int kPrn = 13;
const int kWeek = 2414;
const uint32_t kCycle = 595500; /* start of a cycle: a multiple of 750 s */

tblAlmGps_t sampleAlmanac() {
    tblAlmGps_t a;
    std::memset(&a, 0, sizeof a);
    a.toa = 503808;
    a.wna = 366;
    for (int k = 0; k < 32; k++) {
        tblAlmGpsSat_t& s = a.alm[k];
        double x = (k - 15.5) / 16.0; /* -0.97 .. 0.97, both signs */
        s.onEmpty = 0;
        s.healL = k == 8 ? 0x05 : k == 17 ? 0xE0 : 0;
        s.toa = a.toa;
        s.af0 = x * 9.7e-4;
        s.af1 = -x * 3.6e-9;
        s.m0 = x * 3.1;
        s.omega = -x * 3.0;
        s.omega0 = x * 2.9 + 0.01;
        s.sqrtA = 5153.6 + 0.05 * k;
        s.omegaDot = -8.0e-9 + x * 1e-10;
        s.deltaI = x * 0.05;
        s.e = 0.0005 + 0.0009 * k;
    }
    a.alm[30].onEmpty = 1; /* PRN 31 not in the constellation */
    return a;
}

tblOprGps_t sampleEph(unsigned wn) {
    tblOprGps_t e;
    std::memset(&e, 0, sizeof e);
    e.wn = (uint16_t)wn;
    e.sqrtA = 5153.6;
    e.ura = 2.0;
    e.toc = e.toe = 597600;
    return e;
}

/* May change a subframe or its receive time before it is delivered;
 * returns false to leave the subframe out. */
using Tweak = std::function<bool(const x0c::GpsSlot&, uint8_t*, unsigned&)>;

struct CycleRun {
    tblOprGps_t eph;
    tblAlmGps_t alm;
    tblTmPrmGps_t utc;
    tblIonGps_t ion;
    unsigned tmHealth5 = 0; /* receive time of subframe 5 page 25 */
    int deliveries = 1;     /* messages that carry each subframe */

    explicit CycleRun(unsigned wn = 366) : eph(sampleEph(wn)), alm(sampleAlmanac()) {
        std::memset(&utc, 0, sizeof utc);
        std::memset(&ion, 0, sizeof ion);
    }

    /* One whole cycle, subframe 1 of page 1 to subframe 5 of page 25. */
    void cycle(AlmGps_t& c, const Tweak& tweak = nullptr) {
        x0c::GpsBroadcast b;
        b.eph = &eph;
        b.utc = &utc;
        b.ion = &ion;
        b.alm = &alm;
        for (uint32_t tow = kCycle; tow < kCycle + 750; tow += 6) {
            x0c::GpsSlot s = x0c::gpsSlotAt(tow);
            uint8_t sf[30];
            ASSERT_TRUE(x0c::gpsEncodeAt(b, tow, sf));
            unsigned tm = gpstest::tmZelOf(kWeek, s.towEnd);
            if (tweak && !tweak(s, sf, tm)) continue;
            for (int d = 0; d < deliveries; d++) {
                if (s.subframe == 5 && s.page == 25) tmHealth5 = tm + d;
                gpstest::feed(c, kPrn, sf, tm + d);
            }
        }
    }
};

/* A decoded entry encodes to the same almanac page as the original: it
 * lies within half a count of it in every field. */
void expectEntry(const tblAlmGpsSat_t& got, const tblAlmGpsSat_t& want,
                 int prn) {
    uint8_t a[30], b[30];
    x0c::gpsEncodeAlmPage(got, prn, 5, 6, a);
    x0c::gpsEncodeAlmPage(want, prn, 5, 6, b);
    EXPECT_EQ(got.onEmpty, 0) << "PRN " << prn;
    EXPECT_EQ(0, std::memcmp(a, b, 30)) << "PRN " << prn;
}

/* A table full of a byte pattern, to see what getTbl writes. */
tblAlmGps_t sentinelTable() {
    tblAlmGps_t t;
    std::memset(&t, 0xA5, sizeof t);
    return t;
}

}  // namespace

TEST(AlmGps, ReceiveTimeWindows) {
    CycleRun r;
    struct Case {
        int sf, page;  /* the subframe whose time is moved */
        int shift;     /* seconds, relative to the latest subframe 1 */
        bool complete;
    } cases[] = {
        {5, 25, 0, true},     /* health page no earlier than subframe 1 */
        {5, 25, -1, false},   /* one second before it: the unsigned
                                 difference wraps */
        {4, 25, -1, false},
        {5, 25, 750, true},
        {5, 25, 751, false},
        {5, 24, -750, true},  /* almanac pages: either side, 750 s */
        {5, 24, -751, false},
        {4, 10, 751, false},
        {4, 10, 750, true},
    };
    for (const Case& k : cases) {
        AlmGps_t c;
        /* the latest subframe 1 is that of page 25 */
        unsigned t1 = gpstest::tmZelOf(kWeek, kCycle + 24 * 30 + 6);
        r.cycle(c, [&](const x0c::GpsSlot& s, uint8_t*, unsigned& tm) {
            if (s.subframe == k.sf && s.page == k.page) tm = t1 + k.shift;
            return true;
        });
        EXPECT_EQ(c.isCmplt(), k.complete)
            << k.sf << "/" << k.page << " " << k.shift;
    }
}

TEST(AlmGps, PageWithAnotherToaRejectsTheTable) {
    CycleRun r;
    r.alm.alm[9].toa = r.alm.toa + 4096; /* PRN 10 from another upload */
    AlmGps_t c;
    r.cycle(c);
    ASSERT_TRUE(c.isCmplt());
    tblAlmGps_t got = sentinelTable();
    EXPECT_EQ(c.getTbl(&got), 0);
    EXPECT_EQ(got.actual, 0);
    /* entries before it and the offending one are written, later ones not */
    for (int k = 0; k < 9; k++) expectEntry(got.alm[k], r.alm.alm[k], k + 1);
    expectEntry(got.alm[9], r.alm.alm[9], 10);
    tblAlmGps_t untouched = sentinelTable();
    for (int k = 10; k < 32; k++)
        EXPECT_EQ(0, std::memcmp(&got.alm[k], &untouched.alm[k],
                                 sizeof got.alm[k]))
            << "PRN " << k + 1;
}

TEST(AlmGps, AlmanacWeekExtension) {
    const struct {
        unsigned wn;   /* 10-bit week of subframe 1 */
        unsigned w;    /* 8-bit almanac week */
        unsigned wna;
    } cases[] = {
        {315, 59, 315},
        {315, 60, 316},
        {315, 58, 314},
        {256, 128, 384},        /* difference +128: no correction */
        {384, 0, 256},          /* difference -128: no correction */
        /* across a 256-week boundary the high part moves by one, not
         * by 256, so the low bits fill up */
        {514, 250, 0x1FF},
        {773, 134, 0x2FF},
        {510, 1, 0x101},
        {2, 250, 0xFFFFFFFFu},  /* high part 0 - 1 */
        {1023, 0, 0x301},
    };
    for (const auto& k : cases) {
        CycleRun r(k.wn);
        r.alm.wna = k.w;
        AlmGps_t c;
        r.cycle(c);
        ASSERT_TRUE(c.isCmplt());
        tblAlmGps_t got = sentinelTable();
        c.getTbl(&got);
        EXPECT_EQ(got.wna, k.wna) << k.wn << " " << k.w;
    }
}
