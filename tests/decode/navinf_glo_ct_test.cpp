/*
 * GLONASS CT collectors on strings built by the writer's CT encoder:
 * round trips, completeness, range rejection, frame bookkeeping, print.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstring>

#include "decode/navinf_glo_ct.h"
#include "decode/navinf_glo_ct_fields.h"
#include "glo_ct_encode.h"
#include "glo_ct_test_util.h"

using namespace glocttest;

namespace {

/* 2025-04-01 at 00:00 receiver time, and 14:00:00, a frame-1 start. */
const unsigned int kDay = 9222u * 86400u;
const unsigned int kTk = 50400;
#define LSB(n) std::ldexp(1.0, -(n))

/* Doubles of the 4-byte packed records, by offset. */
void setD(void* rec, size_t off, double v) { std::memcpy((char*)rec + off, &v, 8); }
double getD(const void* rec, size_t off) {
    double v;
    std::memcpy(&v, (const char*)rec + off, 8);
    return v;
}

/* What one satellite broadcasts. Almanac entry i describes slot i + 1;
 * entry 3 is an unoccupied slot, entry 7 has an all-zero orbit but a real
 * carrier number. */
struct Sky {
    tblOprGlo_t opr{};
    tblTmPrmGlo_t prm{};
    tblAlmGlo_t alm{};
    x0c::GloCtSource src;
    Sky() {
        opr.tb = 51300;
        opr.x = 21886427.9, opr.y = -13101501.6, opr.z = -775291.2;
        opr.vx = -19.3338, opr.vy = -243.97, opr.vz = 3592.8535;
        opr.ax = 0.0, opr.ay = 2.79e-6, opr.az = -1.86e-6;
        opr.gammaN = -2.73e-12, opr.tauN = 1.8962e-4, opr.dTauN = 9.3e-10;
        opr.ft = 4.0, opr.nt = 457, opr.m = 1;
        prm.na = 456, prm.n4 = 8, prm.tauC = -2.1e-8, prm.tauGps = 1.12e-8;
        prm.b1 = 0.0361, prm.b2 = -2.59e-4;
        alm.actual = 1;
        for (int i = 0; i < ZEL_NUM_ALM_GLO; i++) {
            tblAlmGloSat_t& e = alm.alm[i];
            e.onSystem = 1;
            e.num = (uint8_t)(i + 1);
            e.lit = (uint8_t)(i % 14 < 7 ? i % 14 : 38 - i % 14);
            e.tauA = (i % 2 ? -1 : 1) * 1.1e-4 * (i % 5);
            e.lambda = -0.9 + 0.075 * i, e.lambdaT = 1800.5 * i + 0.3;
            e.dI = 0.0031 * (i % 7) - 0.01, e.dT = -2656.1 + 0.07 * i;
            e.dTdot = -4.9e-4 + 1e-4 * (i % 4), e.eps = 2.3e-4 * (i % 9);
            e.omega = 0.95 - 0.08 * i;
        }
        std::memset(&alm.alm[3], 0, sizeof alm.alm[3]);
        alm.alm[3].onEmpty = 1;
        tblAlmGloSat_t& z = alm.alm[7];
        z.lambda = z.lambdaT = z.dI = z.dT = z.eps = z.omega = 0.0;
        src.opr = &opr, src.tmPrm = &prm, src.alm = &alm, src.slot = 21;
    }
    Sky(const Sky&) = delete;

    /* Strings 1 to 4 of the frame starting at `tk`. */
    void frame(unsigned int tk, uint8_t s[4][10]) const {
        for (unsigned int n = 1; n <= 4; n++) x0c::gloCtEncode(src, 1, n, tk, s[n - 1]);
    }
    /* Feeds what is broadcast from `tod0` for `secs` seconds, each string
     * received a second after it ends, plus `shift`. */
    template <class C>
    void feedSpan(C& c, unsigned int tod0, unsigned int secs, int shift = 0) const {
        for (unsigned int tod = tod0; tod < tod0 + secs; tod += 2) {
            x0c::GloCtSlot s = x0c::gloCtSlotAt(tod);
            uint8_t ct[10];
            ASSERT_TRUE(x0c::gloCtEncode(src, s.frame, s.str, s.frameStart, ct));
            feed(c, ct, kDay + s.strEnd + 1 + shift);
        }
    }
};

}  // namespace

TEST(GloCtEphemeris, CompletenessNeedsAllFourInOrder) {
    Sky sky;
    uint8_t s[4][10];
    sky.frame(kTk, s);
    tblOprGlo_t tbl, before;
    std::memset(&tbl, 0x5A, sizeof tbl);
    before = tbl;
    tblHdr_t hdr{};
    OprGloCt_t c;
    feed(c, s[0], 100);
    feed(c, s[2], 104); /* string 3 before string 2 */
    feed(c, s[1], 106);
    feed(c, s[3], 108);
    EXPECT_FALSE(c.isCmplt());
    EXPECT_TRUE(c.getTbl(&tbl, &hdr));
    EXPECT_EQ(0, std::memcmp(&tbl, &before, sizeof tbl));

    feed(c, s[0], 130); /* string 1 restarts the set */
    feed(c, s[1], 132);
    feed(c, s[2], 134);
    EXPECT_FALSE(c.isCmplt());
    feed(c, s[3], 136);
    EXPECT_TRUE(c.isCmplt());
    feed(c, s[0], 160);
    EXPECT_FALSE(c.isCmplt());
}

/* Sets one value (at `off`) of the sample ephemeris and collects it. */
static bool collect(size_t off, double v, tblOprGlo_t* out, tblHdr_t* hdr, OprGloCt_t& c) {
    Sky sky;
    if (off == offsetof(tblOprGlo_t, tb))
        sky.opr.tb = (uint32_t)v;
    else
        setD(&sky.opr, off, v);
    uint8_t s[4][10];
    sky.frame(kTk, s);
    for (int i = 0; i < 4; i++) feed(c, s[i], 1000 + 2 * i);
    return c.getTbl(out, hdr);
}

TEST(GloCtEphemeris, RangeTestsRejectInOrder) {
    OprGloCt_t c;
    tblOprGlo_t t{};
    tblHdr_t hdr{};
    /* The largest counts within the limits pass; 27000 km is a count. */
    const double vmax = 4508876 * LSB(20) * 1000;
    EXPECT_TRUE(collect(offsetof(tblOprGlo_t, vx), -vmax, &t, &hdr, c));
    EXPECT_EQ(+t.vx, -vmax);
    EXPECT_TRUE(collect(offsetof(tblOprGlo_t, y), 27000e3, &t, &hdr, c));
    EXPECT_EQ(+t.y, 27000e3);
    EXPECT_TRUE(collect(offsetof(tblOprGlo_t, az), 6 * LSB(30) * 1000, &t, &hdr, c));
    EXPECT_TRUE(collect(offsetof(tblOprGlo_t, tb), 95 * 900, &t, &hdr, c));
    EXPECT_EQ(t.tb, 95u * 900u);
    EXPECT_EQ(hdr.badNavInfCt, 0);

    /* One count beyond the velocity limit: rejected, flagged, emptied. */
    hdr.badNavInfCt = 4;
    std::memset(&t, 0, sizeof t);
    t.x = 7.0;
    EXPECT_FALSE(collect(offsetof(tblOprGlo_t, vx), vmax + 1, &t, &hdr, c));
    EXPECT_EQ(t.actual, 0);
    EXPECT_EQ(hdr.badNavInfCt, 4 | 48);
    EXPECT_EQ(+t.x, 7.0); /* decoding stopped at vx */
    EXPECT_FALSE(c.isCmplt());

    /* A failure in string 3 leaves string 2's values and gammaN written,
     * the rest of string 3 and string 4 untouched. */
    std::memset(&t, 0, sizeof t);
    EXPECT_FALSE(collect(offsetof(tblOprGlo_t, vz), -4400.0, &t, &hdr, c));
    EXPECT_NE(+t.y, 0.0);
    EXPECT_NE(+t.gammaN, 0.0);
    EXPECT_EQ(+t.z, 0.0);
    EXPECT_EQ(+t.tauN, 0.0);
    EXPECT_FALSE(collect(offsetof(tblOprGlo_t, ax), 7 * LSB(30) * 1000, &t, &hdr, c));
    EXPECT_FALSE(collect(offsetof(tblOprGlo_t, z), -27001e3, &t, &hdr, c));
    std::memset(&t, 0, sizeof t);
    EXPECT_FALSE(collect(offsetof(tblOprGlo_t, tb), 96 * 900, &t, &hdr, c));
    EXPECT_EQ(t.tb, 0u);
    EXPECT_NE(+t.x, 0.0);
}

TEST(GloCtTimeParams, NeverCompleteFromCtStrings) {
    Sky sky;
    TmPrmGloCt_t c;
    tblTmPrmGlo_t t, before;
    std::memset(&t, 0x33, sizeof t);
    before = t;
    tblHdr_t hdr{};
    for (unsigned int tod = kTk; tod < kTk + 300; tod += 2) {
        sky.feedSpan(c, tod, 2);
        EXPECT_FALSE(c.isCmplt());
    }
    EXPECT_TRUE(c.getTbl(&t, &hdr));
    EXPECT_EQ(0, std::memcmp(&t, &before, sizeof t));
}

TEST(GloCtAlmanac, ReceiveTimesMustStayWithinOneSuperframeInOrder) {
    Sky sky;
    AlmGloCt_t late, early;
    sky.feedSpan(late, kTk, 120);
    sky.feedSpan(late, kTk + 120, 30, 20); /* last 154 s after the first */
    EXPECT_FALSE(late.isCmplt());
    sky.feedSpan(early, kTk, 120);
    sky.feedSpan(early, kTk + 120, 30, -100); /* frame 5 stamped too early */
    EXPECT_FALSE(early.isCmplt());
}

TEST(GloCtAlmanac, StringsBeforeFirstString1AreIgnored) {
    Sky sky;
    AlmGloCt_t c;
    sky.feedSpan(c, kTk + 92, 28);  /* frame 4 from string 2 on */
    sky.feedSpan(c, kTk + 120, 20); /* frame 5 strings 1 to 10 */
    /* Entries 20 and 21 whole, the first string of entry 22. */
    std::string want = "numPageNow=05 5=01 ";
    for (int i = 0; i < 24; i++) {
        char e[16];
        std::snprintf(e, sizeof e, "%02d%02d%02d ", i, i >= 20 && i <= 22, i == 20 || i == 21);
        want += e;
    }
    testing::internal::CaptureStdout();
    c.print();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), want + "\n");
    c.clear();
    testing::internal::CaptureStdout();
    c.print();
    EXPECT_EQ(testing::internal::GetCapturedStdout().substr(0, 26), "numPageNow=4294967295 5=00");
}

TEST(GloCtAlmanac, EntryRangeTestsInOrder) {
    Sky sky;
    struct Case {
        size_t off;
        double bad;  /* one count beyond the limit */
        double good; /* the largest count within it */
    } cases[] = {
        {offsetof(tblAlmGloSat_t, tauA), 499 * LSB(18), 498 * LSB(18)},
        {offsetof(tblAlmGloSat_t, dI), -70255 * LSB(20), -70254 * LSB(20)},
        {offsetof(tblAlmGloSat_t, eps), 31458 * LSB(20), 31457 * LSB(20)},
        {offsetof(tblAlmGloSat_t, lambdaT), 44100.03125, 44100.0},
        {offsetof(tblAlmGloSat_t, dT), -3600.001953125, -3600.0},
    };
    /* In the order of the tests. */
    const size_t order[] = {
        offsetof(tblAlmGloSat_t, tauA),  offsetof(tblAlmGloSat_t, lambda),
        offsetof(tblAlmGloSat_t, dI),    offsetof(tblAlmGloSat_t, eps),
        offsetof(tblAlmGloSat_t, omega), offsetof(tblAlmGloSat_t, lambdaT),
        offsetof(tblAlmGloSat_t, dT),    offsetof(tblAlmGloSat_t, dTdot)};
    for (const Case& k : cases) {
        for (int pass = 0; pass < 2; pass++) {
            tblAlmGloSat_t e = sky.alm.alm[5], got{};
            setD(&e, k.off, pass ? k.good : k.bad);
            uint8_t f[10], g[10];
            x0c::gloCtEncodeAlmPair(&e, 6, 6, f, g);
            for (size_t m : order) setD(&got, m, 99.0);
            gloCtAlmEntry(f, g, &got);
            EXPECT_EQ(got.onErrData, pass ? 0 : 1);
            EXPECT_EQ(got.num, 6);
            bool reached = false;
            for (size_t m : order) {
                reached = reached || m == k.off;
                EXPECT_EQ(getD(&got, m) != 99.0, pass || !reached) << k.off << " " << m;
            }
        }
    }
}
