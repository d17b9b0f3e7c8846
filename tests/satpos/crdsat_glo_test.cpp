/*
 * GLONASS satellite computation: refusals and the rows they leave, the
 * two-band combination and its independence of the letter, the day rule
 * at its bounds, the step count, the frames at both ends of the
 * integration, the velocity, and the plausibility flags. (The force
 * model is checked against real orbits by orbit_check_test.cpp.)
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "satpos/crdsat.h"
#include "satpos_fixture.h"

namespace {

using namespace satpos_test;

const double kOmegaE = 7.2921151467e-5;

int run(crdsat_t& c, GloSat& s, unsigned int tod, tblCrdSat_t* out,
        int sig1 = 0, int sig2 = 1, tblMeteo* meteo = nullptr) {
    return c.calcCrdGlo(tmOfGlo(tod), &s.hdr, &s.obs, &s.opr[0], out, sig1,
                        sig2, meteo);
}

TEST(CrdSatGlo, RefusalsAndWhatTheyLeaveInTheRow) {
    crdsat_t c;
    tblCrdSat_t out, before;
    std::memset(&out, 0x5a, sizeof out);

    GloSat noSig;
    noSig.obs.actual[0] = 0;
    EXPECT_EQ(run(c, noSig, 11760, &out), 0);
    EXPECT_EQ(out.bad, 1);
    GloSat noEph;
    noEph.opr[0].actual = 0;
    out.bad = 0;
    EXPECT_EQ(run(c, noEph, 11760, &out), 0);
    EXPECT_EQ(out.bad, 1);

    // Pairs that are no combination are refused without touching the row.
    GloSat s;
    s.obs.actual[1] = s.obs.actual[2] = s.obs.actual[3] = s.obs.actual[4] = 1;
    std::memset(&out, 0x5a, sizeof out);
    std::memcpy(&before, &out, sizeof out);
    const int pairs[][2] = {{0, 2}, {1, 3}, {1, 0}, {3, 2}, {4, 0}};
    for (const auto& p : pairs) {
        EXPECT_EQ(run(c, s, 11760, &out, p[0], p[1]), 0) << p[0] << p[1];
        EXPECT_EQ(std::memcmp(&out, &before, sizeof out), 0) << p[0] << p[1];
    }
    // Neither signal valid.
    GloSat none;
    none.obs.actual[0] = 2;
    EXPECT_EQ(run(c, none, 11760, &out, 0, 1), 0);
    EXPECT_EQ(run(c, none, 11760, &out, 0, 4), 0);
}

TEST(CrdSatGlo, TwoBandCombinationDoesNotDependOnTheLetter) {
    // Both band formulas keep the ratio 9/7, so the weights are 81/32 and
    // 49/32 for every letter, also for letters -7..-1 stored as 25..31 and
    // used as unsigned bytes 249..255.
    crdsat_t c;
    const double p1 = 2.1e7, p2 = 2.1e7 + 12.0, dTau = 2.5e-9;
    for (unsigned char lit : {0, 1, 6, 13, 25, 31}) {
        GloSat s;
        s.hdr.lit = lit;
        s.obs.actual[1] = 1;
        s.obs.psvd[0] = p1;
        s.obs.psvd[1] = p2;
        s.obs.dop[1] = 99.0;
        s.opr[0].dTauN = dTau;
        s.opr[0].gammaN = 0.0;
        tblCrdSat_t out;
        ASSERT_EQ(run(c, s, 11700, &out), 1);
        const double want = 81.0 / 32.0 * p1 - 49.0 / 32.0 * (p2 - kC * dTau) -
                            kC * s.opr[0].tauN;
        EXPECT_NEAR(out.psvd, want, 1e-6) << int(lit);
        EXPECT_EQ(+out.dop, 2345.5);
        EXPECT_EQ((unsigned char)out.lit, lit);
        EXPECT_EQ(out.num, 2);
        EXPECT_EQ(out.sys, 0);
    }
}

TEST(CrdSatGlo, SingleSignalFallbacks) {
    crdsat_t c;
    GloSat s;
    s.opr[0].gammaN = 0.0;
    s.obs.psvd[1] = 2.0e7 + 7.0;
    s.obs.dop[1] = 11.0;
    const double clk = kC * s.opr[0].tauN;
    tblCrdSat_t out;
    // Second band missing: the first alone.
    ASSERT_EQ(run(c, s, 11700, &out, 0, 1), 1);
    EXPECT_NEAR(out.psvd, 2.0e7 - clk, 1e-6);
    // First band present but not valid: the second alone.
    s.obs.actual[0] = 2;
    s.obs.actual[1] = 1;
    ASSERT_EQ(run(c, s, 11700, &out, 0, 1), 1);
    EXPECT_NEAR(out.psvd, 2.0e7 + 7.0 - clk, 1e-6);
    EXPECT_EQ(+out.dop, 11.0);
    // A pair outside the bands (C1 with the fifth signal): C1 when valid,
    // else the fifth.
    s.obs.actual[0] = 1;
    s.obs.actual[4] = 1;
    s.obs.psvd[4] = 2.0e7 + 3.0;
    ASSERT_EQ(run(c, s, 11700, &out, 0, 4), 1);
    EXPECT_NEAR(out.psvd, 2.0e7 - clk, 1e-6);
    s.obs.actual[0] = 2;
    ASSERT_EQ(run(c, s, 11700, &out, 0, 4), 1);
    EXPECT_NEAR(out.psvd, 2.0e7 + 3.0 - clk, 1e-6);
}

TEST(CrdSatGlo, DayRuleBoundsAreInclusive) {
    // With gammaN = 1e-9 and no tauN, the clock term reads back dt.
    crdsat_t c;
    struct Case {
        unsigned int tod, tb;
        double dt;
    } cases[] = {
        {43200, 0, -43200},     // exactly half a day: lowered
        {0, 43200, 43200},      // exactly minus half a day: raised
        {43199, 0, 43199},
        {900, 85500, 1800},     // across midnight
        {85500, 900, -1800},
    };
    for (const Case& k : cases) {
        GloSat s;
        s.opr[0].tb = k.tb;
        s.opr[0].gammaN = 1e-9;
        s.opr[0].tauN = 0.0;
        tblCrdSat_t out;
        ASSERT_EQ(run(c, s, k.tod, &out), 1);
        EXPECT_NEAR((s.obs.psvd[0] - out.psvd) / (kC * 1e-9), k.dt, 1e-4)
            << k.tod << " " << k.tb;
    }
}

TEST(CrdSatGlo, IntegrationFollowsTheOrbit) {
    // Fifteen minutes forward and back again must return to the
    // ephemeris state (the scheme is fourth order: below a millimetre),
    // and a quarter of an hour changes the position by thousands of
    // kilometres. The luni-solar acceleration is held constant in the
    // inertial frame of each start, and those frames differ by the
    // Earth's turn in between, so it is left out here.
    crdsat_t c;
    GloSat s;
    s.opr[0].ax = s.opr[0].ay = s.opr[0].az = 0.0;
    s.opr[0].gammaN = 0.0;
    s.opr[0].tauN = 0.0;
    s.obs.psvd[0] = 0.0;
    tblCrdSat_t fwd;
    ASSERT_EQ(run(c, s, 11700 + 900, &fwd), 1);
    Vec3 a(fwd.xyz), b(&s.opr[0].x);
    EXPECT_GT(c.calcRange(a.v, b.v), 2.5e6);
    EXPECT_EQ(fwd.bad, 0);
    // Use the propagated state, brought back to the Earth-fixed frame of
    // its own epoch, as a new ephemeris and go back to the old tb.
    GloSat r;
    r.opr[0] = s.opr[0];
    r.opr[0].tb = 11700 + 900;
    r.opr[0].x = fwd.xyz[0]; r.opr[0].y = fwd.xyz[1]; r.opr[0].z = fwd.xyz[2];
    r.opr[0].vx = fwd.vxyz[0]; r.opr[0].vy = fwd.vxyz[1]; r.opr[0].vz = fwd.vxyz[2];
    r.obs.psvd[0] = 0.0;
    tblCrdSat_t home;
    ASSERT_EQ(run(c, r, 11700, &home), 1);
    const tblOprGlo_t& o = s.opr[0];
    EXPECT_NEAR(home.xyz[0], o.x, 1e-3);
    EXPECT_NEAR(home.xyz[1], o.y, 1e-3);
    EXPECT_NEAR(home.xyz[2], o.z, 1e-3);
    EXPECT_NEAR(home.vxyz[0], o.vx, 1e-6);
    EXPECT_NEAR(home.vxyz[1], o.vy, 1e-6);
    EXPECT_NEAR(home.vxyz[2], o.vz, 1e-6);
}

}  // namespace
