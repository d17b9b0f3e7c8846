#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "filter/filter.h"
#include "filter/static.h"

namespace {

/* The records are packed to 4 bytes, so their doubles may sit off an
 * 8-byte boundary; the test macros bind references, so such fields are
 * read as values (unary +). */

const unsigned int T0 = 800000;
/* A receiver in Toulouse. */
const double P[3] = {4627852.3986, 119640.3423, 4372994.4588};

tblCrdPnt_t fix(unsigned char sys, double dx = 0.0, double dt = 1e-4, double tau = 2e-6,
                int dop10 = 15) {
    tblCrdPnt_t r;
    std::memset(&r, 0, sizeof r);
    r.length = 100;
    r.actual = 1;
    r.sys = sys;
    r.xyz[0] = P[0] + dx;
    r.xyz[1] = P[1];
    r.xyz[2] = P[2];
    r.dt = dt;
    r.tau = tau;
    r.dop10 = dop10;
    return r;
}

signed char init(Static_t& s, double g, unsigned int nMax, unsigned char mode = 0,
                 unsigned int dopMax = 5, double g4 = 0.5) {
    double pos[3] = {P[0], P[1], P[2]};
    double k[5] = {g, g, g, g, g4};
    return s.InitStatic(pos, T0, k, nMax, dopMax, mode);
}

TEST(StaticInit, ParameterCodesInOrder) {
    Static_t s;
    double pos[3] = {1, 2, 3};
    double nan = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        double k[5];
        unsigned int nMax, dopMax;
        unsigned char mode;
        int want;
    } cases[] = {
        {{1e-9, 1, 0.5, 0.5, 0.5}, 1, 0, 0, 0},
        {{0, 1, 0.5, 0.5, 0.5}, 1, 0, 0, -1},
        {{0.5, 1.0000001, 0.5, 0.5, 0.5}, 1, 0, 0, -2},
        {{0.5, 0.5, nan, 0.5, 0.5}, 1, 0, 0, -3},
        {{0.5, 0.5, 0.5, 0.9e-9, 0.5}, 1, 0, 0, -4},
        {{0.5, 0.5, 0.5, 0.5, 2.0}, 1, 0, 10, -5},
        {{0.5, 0.5, 0.5, 0.5, 2.0}, 1, 0, 1, 0},  // k[4] only checked in mode 10
        {{0.5, 0.5, 0.5, 0.5, 0.5}, 0, 0, 0, -6},
        {{0.5, 0.5, 0.5, 0.5, 0.5}, 1000000001u, 0, 0, -6},
        {{0.5, 0.5, 0.5, 0.5, 0.5}, 1000000000u, 99, 10, 0},
        {{0.5, 0.5, 0.5, 0.5, 0.5}, 5, 100, 0, -7},
        {{0.5, 0.5, 0.5, 0.5, 0.5}, 5, 99, 2, -8},
        {{0.5, 0.5, 0.5, 0.5, 2.0}, 5, 99, 11, -8},
        {{0, 0.5, 0.5, 0.5, 0.5}, 0, 100, 2, -1},  // first failure wins
    };
    for (const Case& c : cases) {
        double k[5];
        std::memcpy(k, c.k, sizeof k);
        EXPECT_EQ(s.InitStatic(pos, T0, k, c.nMax, c.dopMax, c.mode), c.want)
            << "nMax " << c.nMax << " dopMax " << c.dopMax << " mode " << (int)c.mode;
    }
}

TEST(StaticFilter, RefusalCodesInOrder) {
    Static_t s;
    tblCrdPnt_t r = fix(0);
    EXPECT_EQ(s.StaticFilter(&r, T0 + 1), -1);  // never initialised
    ASSERT_EQ(init(s, 0.5, 100, 10, 5), 0);
    EXPECT_EQ(s.StaticFilter(&r, T0 + 1), -3);  // sys 0 in mode 10
    r = fix(1);
    EXPECT_EQ(s.StaticFilter(&r, T0 + 1), -3);
    r = fix(10);
    r.actual = 0;
    EXPECT_EQ(s.StaticFilter(&r, T0 + 1), -2);
    r.actual = 2;
    EXPECT_EQ(s.StaticFilter(&r, T0 + 1), -2);
    r = fix(10);
    EXPECT_EQ(s.StaticFilter(&r, T0), -4);
    EXPECT_EQ(s.StaticFilter(&r, T0 - 1), -4);
    r = fix(10, 0, 1e-4, 2e-6, 51);
    EXPECT_EQ(s.StaticFilter(&r, T0 + 1), -7);
    EXPECT_EQ(s.StaticFilter(&r, T0 + 1), -5);  // the refusal moved tLast
    r = fix(10, 0, 1e-4, 2e-6, 50);
    EXPECT_EQ(s.StaticFilter(&r, T0 + 2), -8);  // DOP 5.0 is allowed
    EXPECT_EQ(s.StaticFilter(&r, T0 + 2), -5);

    // A failed re-initialisation leaves the state unset.
    double pos[3] = {0, 0, 0};
    double k[5] = {0.5, 0.5, 0.5, 0.5, 0.5};
    EXPECT_EQ(s.InitStatic(pos, T0, k, 0, 5, 10), -6);
    r = fix(10);
    EXPECT_EQ(s.StaticFilter(&r, T0 + 3), -1);
}

TEST(StaticFilter, StartsFromTheEarthsCentreAndHalvesUntilWithinAKilometre) {
    Static_t s;
    ASSERT_EQ(init(s, 0.2, 1000), 0);
    // |P| is 6.37e6 m: 6.37e6 / 2^13 is the first distance below 1000 m.
    // The average is then P (1 - 2^-13) and the gain at n = 13 is
    // 1 - 0.8 / 1000 x 13.
    tblCrdPnt_t r;
    for (unsigned int i = 1; i <= 13; i++) {
        r = fix(0);
        ASSERT_EQ(s.StaticFilter(&r, T0 + i), -8);
        EXPECT_EQ(+r.xyz[0], P[0]);  // a coarse step leaves the record alone
    }
    r = fix(0);
    ASSERT_EQ(s.StaticFilter(&r, T0 + 14), 0);
    const double w = 1.0 - 0.8 / 1000.0 * 13.0;
    const double a = 1.0 - std::ldexp(1.0, -13);
    for (int i = 0; i < 3; i++) {
        const double avg = P[i] * a;
        EXPECT_NEAR(+r.xyz[i], avg + (P[i] - avg) * w, 1e-6) << i;
    }
    EXPECT_NEAR(+r.dt, 1e-4 * a + 1e-4 * (1 - a) * w, 1e-15);
    EXPECT_EQ(+r.tau, 2e-6);  // mode 0: the time offset is not touched
}

TEST(StaticFilter, NMaxOneSkipsTheCoarseStepFromTheSecondEpoch) {
    Static_t s;
    ASSERT_EQ(init(s, 0.25, 1), 0);
    tblCrdPnt_t r = fix(0);
    EXPECT_EQ(s.StaticFilter(&r, T0 + 1), -8);  // n = 0: coarse
    r = fix(0);
    EXPECT_EQ(s.StaticFilter(&r, T0 + 2), 0);   // n = 1 = nMax: gain k
    for (int i = 0; i < 3; i++) EXPECT_DOUBLE_EQ(+r.xyz[i], P[i] * 0.5 + P[i] * 0.5 * 0.25);
    r = fix(0);
    EXPECT_EQ(s.StaticFilter(&r, T0 + 3), 0);   // n = 2, held at 1
    for (int i = 0; i < 3; i++)
        EXPECT_DOUBLE_EQ(+r.xyz[i], P[i] * 0.625 + P[i] * 0.375 * 0.25);
}

TEST(StaticFilter, GainFallsLinearlyAndRestartsAfterAGap) {
    Static_t s;
    ASSERT_EQ(init(s, 0.2, 20), 0);
    unsigned int t = T0 + 1;
    for (tblCrdPnt_t r = fix(0); s.StaticFilter(&r, t) == -8; r = fix(0)) t++;
    ASSERT_EQ(t, T0 + 14);

    // A gap of exactly 10 s is bridged.
    tblCrdPnt_t r = fix(0, 3.0);
    EXPECT_EQ(s.StaticFilter(&r, t + 10), 0);
    t += 10;
    // One more second is a restart, which keeps the average (no coarse
    // step follows) and brings the gain back to 1.
    r = fix(0);
    EXPECT_EQ(s.StaticFilter(&r, t + 11), -6);
    EXPECT_EQ(+r.xyz[0], P[0]);
    t += 11;
    EXPECT_EQ(s.StaticFilter(&r, t), -4);  // the restart moved tStart too

    // Gains 1, 0.96, 0.92, ... for n = 0, 1, 2, ...; 0.2 from n = 20 on.
    double avg = 0.0;  // offset from P along X
    for (unsigned int n = 0; n < 25; n++) {
        const double dx = (n % 2) ? 4.0 : -4.0;
        r = fix(0, dx);
        ASSERT_EQ(s.StaticFilter(&r, t + 1 + n), 0) << n;
        const double w = n < 20 ? 1.0 - 0.04 * n : 0.2;
        avg += (dx - avg) * w;
        EXPECT_NEAR(+r.xyz[0] - P[0], avg, 1e-7) << n;
        EXPECT_DOUBLE_EQ(+r.xyz[1], P[1]);
    }
}

}  // namespace
