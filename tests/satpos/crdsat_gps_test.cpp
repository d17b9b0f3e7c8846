/*
 * GPS satellite computation: refusals, the week rule at its edges, the
 * choice of pseudorange and group delay, Kepler's pass limit and strict
 * threshold, the velocity against the motion of the position, the
 * atmospheric terms and the plausibility bounds.
 */
#include <gtest/gtest.h>

#include <cmath>

#include "satpos/crdsat.h"
#include "satpos_fixture.h"

namespace {

using namespace satpos_test;

/* Runs calcCrdGps at GPS second `sow` with the fixture's tables. */
int run(crdsat_t& c, GpsSat& s, unsigned int sow, tblCrdSat_t* out,
        int sig1 = 0, int sig2 = 0, tblMeteo* meteo = nullptr) {
    return c.calcCrdGps(tmOfGps(sow), kLeap, &s.hdr, &s.obs, &s.opr, out, sig1,
                        sig2, meteo, &s.ion);
}

TEST(CrdSatGps, RefusesBadStringsMissingSignalAndInvalidEphemeris) {
    crdsat_t c;
    tblCrdSat_t out;
    GpsSat s;
    EXPECT_EQ(run(c, s, 259200, &out), 1);
    EXPECT_EQ(out.num, 2);
    EXPECT_EQ(out.sys, 1);
    EXPECT_EQ(out.bad, 0);
    EXPECT_EQ(+out.dop, -1234.5);

    GpsSat bad;
    bad.hdr.badNavInfCt = 16;
    EXPECT_EQ(run(c, bad, 259200, &out), 0);
    GpsSat noSig;
    noSig.obs.actual[0] = 0;
    EXPECT_EQ(run(c, noSig, 259200, &out), 0);
    GpsSat noEph;
    noEph.opr.actual = 0;
    EXPECT_EQ(run(c, noEph, 259200, &out), 0);
}

TEST(CrdSatGps, ClockTimeFollowsTheWeekRuleAtItsEdges) {
    // With a pure clock drift of 1e-9 s/s and a circular orbit (no
    // relativistic term), no group delay and no atmosphere, the row's
    // pseudorange less the measured one is c * 1e-9 * dt: dt can be read
    // back for any reception time.
    crdsat_t c;
    struct Case {
        unsigned int tow, toc;
        double dt;
    } cases[] = {
        {100, 604000, 900},             // just after the week start
        {604000, 100, -900},            // just before its end
        {302500, 100, 302400},          // exactly +half a week: kept
        {302501, 100, -302399},         // one more: wrapped
        {100, 302500, -302400},         // exactly -half a week: kept
        {100, 302501, 302399},
    };
    for (const Case& k : cases) {
        GpsSat s;
        s.opr.af0 = 0.0;
        s.opr.af1 = 1e-9;
        s.opr.tgd = 0.0;
        s.opr.e = 0.0;
        s.opr.toc = k.toc;
        s.opr.toe = k.tow;
        tblCrdSat_t out;
        ASSERT_EQ(run(c, s, k.tow, &out), 1) << k.tow;
        EXPECT_NEAR((out.psvd - s.obs.psvd[0]) / (kC * 1e-9), k.dt, 1e-4)
            << k.tow << " " << k.toc;
    }
}

TEST(CrdSatGps, PseudorangeAndGroupDelayBySignalPair) {
    crdsat_t c;
    GpsSat s;
    s.opr.e = 0.0;  // no relativistic term
    s.opr.af1 = 0.0;
    const double dtsv = s.opr.af0, tgd = s.opr.tgd;
    s.obs.actual[1] = 1;
    s.obs.psvd[1] = 2.2e7 + 5.0;
    s.obs.dop[1] = -961.9;
    tblCrdSat_t out;

    ASSERT_EQ(run(c, s, 259200, &out, 0, 0), 1);
    EXPECT_NEAR(out.psvd, 2.2e7 + kC * (dtsv - tgd), 1e-6);

    // Both C1 and C2: the ionosphere-free combination, without TGD.
    ASSERT_EQ(run(c, s, 259200, &out, 0, 1), 1);
    EXPECT_NEAR(out.psvd,
                2.5457277801631593 * 2.2e7 - 1.5457277801631593 * (2.2e7 + 5.0) +
                    kC * dtsv, 1e-6);
    EXPECT_NEAR(out.psvd, 2.2e7 - 1.5457277801631593 * 5.0 + kC * dtsv, 1e-6);
    EXPECT_EQ(+out.dop, -1234.5);

    // The pair the other way round is no combination: C2 alone, with TGD
    // unscaled.
    ASSERT_EQ(run(c, s, 259200, &out, 1, 0), 1);
    EXPECT_NEAR(out.psvd, 2.2e7 + 5.0 + kC * (dtsv - tgd), 1e-6);
    EXPECT_EQ(+out.dop, -961.9);

    // First signal present but not valid (flag 2): the second stands in.
    s.obs.actual[0] = 2;
    ASSERT_EQ(run(c, s, 259200, &out, 0, 1), 1);
    EXPECT_NEAR(out.psvd, 2.2e7 + 5.0 + kC * (dtsv - tgd), 1e-6);
    EXPECT_EQ(+out.dop, -961.9);
    s.obs.actual[1] = 0;
    EXPECT_EQ(run(c, s, 259200, &out, 0, 1), 0);
    // With equal signals the flag must be exactly 1.
    EXPECT_EQ(run(c, s, 259200, &out, 0, 0), 0);
}

TEST(CrdSatGps, KeplerPassLimitAndStrictThreshold) {
    double E = -1.0;
    // For this pair the first Newton step comes out as exactly -1e-8 in
    // double arithmetic (checked here first): a step of exactly the
    // threshold does not stop the iteration, the second pass does.
    const double M = 0.52714051934024397, e = 1.9878182272919719e-08;
    const double first = (M - e * std::sin(M) - M) / (1.0 - e * std::cos(M));
    ASSERT_EQ(first, -1e-8);
    EXPECT_EQ(crdsat_t::keplerE(M, e, &E), 2);
    EXPECT_NEAR(E, M + 1e-8, 1e-15);
    EXPECT_EQ(crdsat_t::keplerE(0.3, 0.0, &E), 1);
    EXPECT_EQ(E, 0.3);
    // Nine passes are allowed, ten are not.
    EXPECT_EQ(crdsat_t::keplerE(0.5, 0.999, &E), 9);
    EXPECT_NEAR(E - 0.999 * std::sin(E), 0.5, 1e-12);
    E = -1.0;
    EXPECT_EQ(crdsat_t::keplerE(0.05, 0.99, &E), 0);
    EXPECT_EQ(E, -1.0);

    // In the computation a refused Kepler solution leaves the position
    // alone. The pseudorange is set to cancel the clock, so that the
    // emission is at toe and M is M0.
    crdsat_t c;
    GpsSat s;
    s.opr.e = 0.99;
    s.opr.m0 = 0.05;
    s.opr.af0 = s.opr.af1 = 0.0;
    s.opr.tgd = 0.0;
    s.obs.psvd[0] = 0.0;
    tblCrdSat_t out;
    out.xyz[0] = out.xyz[1] = out.xyz[2] = 7.0;
    EXPECT_EQ(run(c, s, 259200, &out), 0);
    EXPECT_EQ(+out.xyz[0], 7.0);
    s.opr.e = 0.999;
    s.opr.m0 = 0.5;
    run(c, s, 259200, &out);
    EXPECT_NE(+out.xyz[0], 7.0);
}

}  // namespace
