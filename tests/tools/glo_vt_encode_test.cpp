/*
 * VT string encoder and broadcast schedule: the schedule's string numbers
 * and counters, the bits the receiver's intake reads as health flags, and
 * round trips through the receiver's VT collectors with broadcast values
 * of 2009-04-01 (IGS merged GLONASS navigation file brdc0910.09g).
 *
 * The records are 4-byte packed, so their doubles are compared as copies
 * (+t.x): EXPECT_EQ binds its arguments to references, and a reference
 * to a misaligned double is undefined.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "decode/navinf_glo_vt.h"
#include "glo_vt_encode.h"
#include "x0c_writer.h"

namespace {

double get(const uint8_t* s, int pos, int len, bool sign = false) {
    return NavInfStr_t::GetValue(s, pos, len, sign, 1.0);
}

/* Ephemeris of one satellite from the RINEX record at 00:15 UTC (tb =
 * 03:15 Moscow time). RINEX 2 stores -tauN; its units are km. */
struct Rinex {
    double negTauN, gammaN;
    double x, vx, ax, y, vy, ay, z, vz, az;
};
const Rinex kR02 = {0.206762924790E-04, -0.272848410532E-11,
                    0.936473925781E+04, -0.267867088318E+00, 0.0,
                    -0.159087973633E+05, 0.239853191376E+01, 0.186264514923E-08,
                    -0.176143896484E+05, -0.230765628815E+01, 0.186264514923E-08};
const Rinex kR03 = {-0.342596322298E-04, -0.272848410532E-11,
                    0.256211230469E+04, -0.189046859741E+00, -0.186264514923E-08,
                    -0.253048676758E+05, 0.253620147705E+00, -0.931322574616E-09,
                    -0.194164404297E+04, -0.356233310700E+01, 0.279396772385E-08};
const Rinex kR07 = {-0.893827527761E-04, 0.181898940355E-11,
                    -0.158585351562E+04, 0.126294136047E+00, 0.931322574615E-09,
                    0.253605791016E+05, -0.321713447571E+00, 0.931322574615E-09,
                    0.234644091797E+04, 0.352914524078E+01, -0.186264514923E-08};

tblOprGlo_t ephFrom(const Rinex& r) {
    tblOprGlo_t e{};
    e.tb = 11700;
    e.tauN = -r.negTauN;
    e.gammaN = r.gammaN;
    e.x = r.x * 1000, e.y = r.y * 1000, e.z = r.z * 1000;
    e.vx = r.vx * 1000, e.vy = r.vy * 1000, e.vz = r.vz * 1000;
    e.ax = r.ax * 1000, e.ay = r.ay * 1000, e.az = r.az * 1000;
    e.dTauN = -2.793967723846e-09;  /* -3 x 2^-30 */
    e.nt = 457;                     /* 2009-04-01 in the interval 2008-2011 */
    e.m = 1;
    return e;
}

tblTmPrmGlo_t timeParams() {
    tblTmPrmGlo_t t{};
    t.na = 457;
    t.n4 = 4;
    t.tauC = -0.158790498972E-06;   /* RINEX header: -tauC */
    t.b1 = 0.0625;
    t.b2 = -0.0012;
    t.kp = 2;
    return t;
}

/* Almanac-like values for 24 satellites, within the broadcast ranges;
 * satellite 17 is an empty slot and 20 has an all-zero orbit. */
std::unique_ptr<tblAlmGlo_t> almanac() {
    auto a = std::make_unique<tblAlmGlo_t>();
    std::memset(a.get(), 0, sizeof *a);
    a->na = 457;
    a->n4 = 4;
    for (int k = 0; k < 24; k++) {
        tblAlmGloSat_t& e = a->alm[k];
        e.onSystem = k % 3 == 0;
        e.num = (uint8_t)(k + 1);
        e.lit = (uint8_t)(k == 17 ? 24 : (k * 5) % 24);
        e.lambda = -0.95 + 0.08 * k;
        e.lambdaT = 1200.5 + 1850.25 * k;
        e.dI = 0.012 - 0.001 * k;
        e.dT = -2656.0 + 1.5 * k;
        e.dTdot = (k % 2 ? 1 : -1) * 0.00045;
        e.eps = 0.0001 + 0.0012 * k;
        e.omega = 0.9 - 0.075 * k;
        e.tauA = (k - 12) * 1.3e-5;
    }
    tblAlmGloSat_t& z = a->alm[20];
    z.lambda = z.lambdaT = z.dI = z.dT = z.eps = z.omega = 0;
    return a;
}

/* The receiver side: the three VT collectors of one satellite. */
struct Receiver {
    OprGloVt_t opr;
    TmPrmGloVt_t tp;
    AlmGloVt_t alm;
    void feed(const uint8_t vt[7], unsigned tm) {
        x0c::SatBlock sb;
        sb.num = 2;
        sb.hasVt = true;
        std::memcpy(sb.vt, vt, 7);
        std::vector<uint8_t> blk;
        x0c::appendBlock(sb, blk);
        opr.upx0c(blk.data(), tm);
        tp.upx0c(blk.data(), tm);
        alm.upx0c(blk.data(), tm);
    }
};

/* Sends seconds [from, to) of a continuous GLONASS time (seconds since a
 * day start, may run past midnight), each received `lag` seconds later. */
void broadcast(Receiver& r, unsigned from, unsigned to, unsigned lag,
               const tblOprGlo_t& eph, const tblTmPrmGlo_t& tp,
               const tblAlmGlo_t& alm) {
    uint8_t s[7];
    for (unsigned t = from; t < to; t++) {
        x0c::vtStringAt(t % 86400, eph, tp, alm, s);
        r.feed(s, t + lag);
    }
}

void expectEph(const tblOprGlo_t& got, const tblOprGlo_t& want) {
    const double p = 1000 * std::ldexp(1.0, -13) / 2;  /* half a step */
    const double v = 1000 * std::ldexp(1.0, -23) / 2;
    const double a = 1000 * std::ldexp(1.0, -30) / 2;
    EXPECT_EQ(got.actual, 1);
    EXPECT_EQ(got.tb, want.tb);
    EXPECT_NEAR(got.x, want.x, p);
    EXPECT_NEAR(got.y, want.y, p);
    EXPECT_NEAR(got.z, want.z, p);
    EXPECT_NEAR(got.vx, want.vx, v);
    EXPECT_NEAR(got.vy, want.vy, v);
    EXPECT_NEAR(got.vz, want.vz, v);
    EXPECT_NEAR(got.ax, want.ax, a);
    EXPECT_NEAR(got.ay, want.ay, a);
    EXPECT_NEAR(got.az, want.az, a);
    EXPECT_NEAR(got.tauN, want.tauN, std::ldexp(1.0, -31));
    EXPECT_NEAR(got.gammaN, want.gammaN, std::ldexp(1.0, -41));
    EXPECT_NEAR(got.dTauN, want.dTauN, std::ldexp(1.0, -31));
    EXPECT_EQ(+got.ft, 0.0);
    EXPECT_EQ(got.nt, want.nt);
    EXPECT_EQ(got.m, want.m);
}

void expectTimeParams(const tblTmPrmGlo_t& got, const tblTmPrmGlo_t& want) {
    EXPECT_EQ(got.actual, 1);
    EXPECT_EQ(got.na, want.na);
    EXPECT_EQ(got.n4, want.n4);
    EXPECT_NEAR(got.tauC, want.tauC, std::ldexp(1.0, -32));
    EXPECT_EQ(+got.tauGps, 0.0);
    EXPECT_NEAR(got.b1, want.b1, std::ldexp(1.0, -11));
    EXPECT_NEAR(got.b2, want.b2, std::ldexp(1.0, -17));
    EXPECT_EQ(got.kp, want.kp);
}

void expectAlmanac(const tblAlmGlo_t& got, const tblAlmGlo_t& want) {
    EXPECT_EQ(got.actual, 1);
    EXPECT_EQ(got.na, want.na);
    EXPECT_EQ(got.n4, want.n4);
    for (int k = 0; k < 24; k++) {
        const tblAlmGloSat_t& g = got.alm[k];
        const tblAlmGloSat_t& w = want.alm[k];
        EXPECT_EQ(g.onSystem, w.onSystem) << k;
        EXPECT_EQ(g.num, w.num) << k;
        EXPECT_EQ(g.lit, w.lit) << k;
        EXPECT_NEAR(g.lambda, w.lambda, std::ldexp(1.0, -21)) << k;
        EXPECT_NEAR(g.lambdaT, w.lambdaT, std::ldexp(1.0, -6)) << k;
        EXPECT_NEAR(g.dI, w.dI, std::ldexp(1.0, -21)) << k;
        EXPECT_NEAR(g.dT, w.dT, std::ldexp(1.0, -10)) << k;
        EXPECT_NEAR(g.dTdot, w.dTdot, std::ldexp(1.0, -15)) << k;
        EXPECT_NEAR(g.eps, w.eps, std::ldexp(1.0, -21)) << k;
        EXPECT_NEAR(g.omega, w.omega, std::ldexp(1.0, -16)) << k;
        EXPECT_NEAR(g.tauA, w.tauA, std::ldexp(1.0, -19)) << k;
        EXPECT_EQ(g.onErrData, 0) << k;
        EXPECT_EQ(g.onEmpty, k == 17 ? 1 : k == 20 ? 2 : 0) << k;
    }
}

TEST(GloVtSchedule, StringNumbersAndCountersFollowTheFrameTime) {
    tblOprGlo_t eph = ephFrom(kR02);
    tblTmPrmGlo_t tp = timeParams();
    auto alm = almanac();
    uint8_t s[7];
    for (uint32_t tod = 0; tod < 86400; tod++) {
        x0c::VtSlot slot = x0c::vtSlotAt(tod);
        unsigned num = x0c::vtStringAt(tod, eph, tp, *alm, s);
        ASSERT_EQ(num, tod % 10 + 1);
        ASSERT_EQ(slot.num, num);
        ASSERT_EQ(get(s, 47, 4), num) << tod;
        ASSERT_EQ(s[0] & 0x7F, 0) << tod;           /* check bits left 0 */
        ASSERT_EQ(s[6] & 0xFC, 0) << tod;           /* positions 51-56 */
        if (num != 1) continue;
        /* string 1: the frame start, and the counters v + 6u = step */
        unsigned frame = tod;
        ASSERT_EQ(get(s, 39, 5) * 3600 + get(s, 33, 6) * 60 + get(s, 30, 3) * 10,
                  frame);
        unsigned v = s[3] >> 5, u = (s[4] & 63) % 12;
        ASSERT_EQ(v + 6 * u, frame % 720 / 10);
        ASSERT_EQ(slot.step, v + 6 * u);
        ASSERT_EQ(slot.sat, slot.step / 3);
        ASSERT_EQ(slot.phase, v % 3);
    }
    x0c::VtSlot wrap = x0c::vtSlotAt(86400 + 15);
    EXPECT_EQ(wrap.frame, 10u);
    EXPECT_EQ(wrap.num, 6u);
}

TEST(GloVtSchedule, IntakeHealthBitsStayClearAtExtremeValues) {
    /* The intake reads string 2 positions 44-46 and string 6 position 46
     * as flags that make it drop the VT tables; no field may reach them. */
    tblOprGlo_t eph{};
    eph.x = eph.y = eph.z = -32767e3;
    eph.ax = eph.ay = eph.az = -14e-9 * 1000;
    eph.vx = eph.vy = eph.vz = -7.9e3;
    eph.gammaN = -1023 * std::ldexp(1.0, -40);
    eph.tb = 127 * 900;
    eph.m = 3;
    uint8_t s[7];
    x0c::vtEphString(2, eph, 0, s);
    EXPECT_EQ(get(s, 44, 3), 0);
    EXPECT_EQ(get(s, 8, 29, true), -32767.0 * 8192);  /* and x is intact */
    x0c::vtEphString(6, eph, 0, s);
    EXPECT_EQ(get(s, 46, 1), 0);
    EXPECT_EQ(get(s, 35, 11, true), -1023);
}

TEST(GloVtRoundTrip, RealEphemeridesAndAlmanacThroughTheCollectors) {
    tblTmPrmGlo_t tp = timeParams();
    auto alm = almanac();
    for (const Rinex* r : {&kR02, &kR03, &kR07}) {
        tblOprGlo_t eph = ephFrom(*r);
        auto rx = std::make_unique<Receiver>();
        /* one whole almanac cycle, 03:00:00 to 03:11:59, delivered 2 s late */
        broadcast(*rx, 10800, 10800 + 720, 2, eph, tp, *alm);
        ASSERT_TRUE(rx->opr.isCmplt());
        ASSERT_TRUE(rx->tp.isCmplt());
        ASSERT_TRUE(rx->alm.isCmplt());

        tblOprGlo_t ge{};
        ASSERT_TRUE(rx->opr.getTbl(&ge));
        expectEph(ge, eph);
        EXPECT_EQ(ge.tk, 10800u + 710);    /* the last frame's start */

        tblTmPrmGlo_t gt{};
        ASSERT_TRUE(rx->tp.getTbl(&gt));
        expectTimeParams(gt, tp);

        auto ga = std::make_unique<tblAlmGlo_t>();
        ASSERT_TRUE(rx->alm.getTbl(ga.get()));
        expectAlmanac(*ga, *alm);
        EXPECT_EQ(ga->tmResived, 10800u + 718 + 2);  /* string 9, step 71 */
    }
}

TEST(GloVtRoundTrip, StartMidCycleCompletesAtTheEndOfTheFirstWholeCycle) {
    tblOprGlo_t eph = ephFrom(kR03);
    tblTmPrmGlo_t tp = timeParams();
    auto alm = almanac();
    auto rx = std::make_unique<Receiver>();
    /* from 10:03:27; the first whole cycle is 10:12:00 to 10:23:59 and its
     * last almanac string (string 9 of step 71) is sent at 10:23:58 */
    const unsigned start = 36207, last = 36720 + 718;
    broadcast(*rx, start, start + 3, 1, eph, tp, *alm);
    EXPECT_FALSE(rx->opr.isCmplt());      /* only strings 8-10 so far */
    broadcast(*rx, start + 3, start + 13, 1, eph, tp, *alm);
    EXPECT_TRUE(rx->opr.isCmplt());       /* the frame of 10:03:30 */
    broadcast(*rx, start + 13, last, 1, eph, tp, *alm);
    EXPECT_FALSE(rx->alm.isCmplt());
    broadcast(*rx, last, last + 1, 1, eph, tp, *alm);
    ASSERT_TRUE(rx->alm.isCmplt());
    auto ga = std::make_unique<tblAlmGlo_t>();
    rx->alm.getTbl(ga.get());
    expectAlmanac(*ga, *alm);
    EXPECT_EQ(ga->tmResived, last + 1);
}

TEST(GloVtRoundTrip, AcrossMidnight) {
    tblOprGlo_t eph = ephFrom(kR07);
    tblTmPrmGlo_t tp = timeParams();
    auto alm = almanac();
    auto rx = std::make_unique<Receiver>();
    /* 23:55:00 to 00:12:00: the day boundary starts a cycle */
    const unsigned day = 86400 * 3;
    broadcast(*rx, day - 300, day + 718, 0, eph, tp, *alm);
    EXPECT_FALSE(rx->alm.isCmplt());
    broadcast(*rx, day + 718, day + 720, 0, eph, tp, *alm);
    ASSERT_TRUE(rx->alm.isCmplt());
    ASSERT_TRUE(rx->tp.isCmplt());
    ASSERT_TRUE(rx->opr.isCmplt());
    tblOprGlo_t ge{};
    ASSERT_TRUE(rx->opr.getTbl(&ge));
    EXPECT_EQ(ge.tk, 710u);
    expectEph(ge, eph);
    tblTmPrmGlo_t gt{};
    rx->tp.getTbl(&gt);
    expectTimeParams(gt, tp);
}

}  // namespace
