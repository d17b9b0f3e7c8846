/*
 * raimComb on synthetic epochs whose residuals the tests choose.
 *
 * In GPS mode the fix uses only the GPS rows, yet the gate and the scatter
 * of the monitor take every row whose flag is not 1. Four or five exact GPS
 * rows therefore pin the fix to the receiver truth, and GLONASS "probe"
 * rows carry exactly the residuals a test wants (predicted minus measured
 * range, so a probe measured 40 m short has a residual of +40 m). With the
 * clock term at 0 the fix is not rotated, and every expectation below
 * follows from the chosen residuals.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "integrity/raim.h"
#include "solution/crdpnt_fixture.h"

using crdpnt_test::Epoch;
using crdpnt_test::Truth;

namespace {

const int kGps = 1;

struct CombCase {
    Truth truth;
    Epoch ep;
    std::unique_ptr<raim_t> raim{new raim_t};
    tblCrdPnt_t pnt;

    CombCase() {
        std::memset(&pnt, 0, sizeof pnt);
        pnt.length = 100;
        pnt.dop10 = 1000;   /* a poor previous fix: any exclusion beats it */
    }
    /* An exact GPS row at sky position k. */
    void gps(int k, int num) { ep.add(truth, k, 1, num); }
    /* A GLONASS row whose residual against the truth is r metres. */
    void probe(int k, int num, double r) { ep.add(truth, k, 0, num).psvd -= r; }
    int run(double maxSpd = 100.0, int mode = kGps) {
        return raim->raimComb(&ep.lst, &pnt, maxSpd, mode);
    }
    int flagged() const {
        int n = 0;
        for (uint32_t i = 0; i < ep.lst.num; i++) n += ep.rows[i].bad == 1;
        return n;
    }
    double err() const {
        double p[3] = {pnt.xyz[0], pnt.xyz[1], pnt.xyz[2]};
        return crdpnt_test::dist3(p, truth.xyz);
    }
};

}  // namespace

/* Too few rows, or too few that pass the 50 m gate. */
TEST(RaimComb, TooFewSatellites) {
    {
        CombCase c;
        for (int k = 0; k < 5; k++) c.gps(k, k + 1);
        c.pnt.actual = 1;
        c.pnt.xyz[0] = 123.0;
        tblCrdPnt_t before = c.pnt;
        EXPECT_EQ(c.run(), RAIM_TOO_FEW);
        EXPECT_EQ(std::memcmp(&before, &c.pnt, sizeof before), 0) << "pnt must be untouched";
    }
    {
        /* Seven rows, two beyond the gate: five pass. Both stay flagged
         * and the caller's fix is marked invalid. */
        CombCase c;
        for (int k = 0; k < 4; k++) c.gps(k, k + 1);
        c.probe(4, 1, 80.0);
        c.probe(5, 2, 3.0);
        c.probe(6, 3, -75.0);
        c.pnt.actual = 1;
        EXPECT_EQ(c.run(), RAIM_TOO_FEW);
        EXPECT_EQ(c.pnt.actual, 0);
        EXPECT_EQ(c.ep.rows[4].bad, 1);
        EXPECT_EQ(c.ep.rows[5].bad, 0);
        EXPECT_EQ(c.ep.rows[6].bad, 1);
    }
}

/* A clean epoch is accepted whole: the caller receives the all-in-view fix
 * and no row is flagged. A residual at or beyond the gate is flagged and
 * stays flagged although the call accepts the rest. */
TEST(RaimComb, AcceptsCleanEpochAndGatesLargeResiduals) {
    CombCase c;
    for (int k = 0; k < 5; k++) c.gps(k, k + 1);
    for (int k = 5; k < 8; k++) c.probe(k, k, (k % 2 ? 6.0 : -6.0));
    EXPECT_EQ(c.run(), RAIM_OK);
    EXPECT_EQ(c.pnt.actual, 1);
    EXPECT_EQ(c.pnt.length, 100);
    EXPECT_EQ(c.pnt.sys, 1);
    EXPECT_EQ(c.pnt.numGps, 5);
    EXPECT_LT(c.err(), 1e-3);
    EXPECT_EQ(c.flagged(), 0);

    CombCase g;
    for (int k = 0; k < 5; k++) g.gps(k, k + 1);
    g.probe(5, 5, 4.0);
    g.probe(6, 6, 60.0);
    g.probe(7, 7, -4.0);
    EXPECT_EQ(g.run(), RAIM_OK);
    EXPECT_EQ(g.pnt.actual, 1);
    EXPECT_EQ(g.ep.rows[6].bad, 1);
    EXPECT_EQ(g.flagged(), 1);
}

/* The limits of the all-in-view test: a scatter under 18 m is accepted; a
 * speed exactly at the limit returns 0 but hands out nothing; above it the
 * fix is refused and, since every candidate moves as fast, so is every
 * exclusion. The receiver moves at 30 m/s and the Doppler values say so. */
TEST(RaimComb, SigmaAndSpeedLimits) {
    /* Five zeros and four probes of +-19 m: sigma = 19 * sqrt(4/9) = 12.7. */
    auto build = [](CombCase& c) {
        c.truth.v[0] = 18.0;
        c.truth.v[1] = 24.0;
        for (int k = 0; k < 5; k++) c.gps(k, k + 1);
        for (int k = 5; k < 9; k++) c.probe(k, k, k % 2 ? 19.0 : -19.0);
    };
    CombCase ok;
    build(ok);
    EXPECT_EQ(ok.run(), RAIM_OK);
    EXPECT_EQ(ok.pnt.actual, 1);

    /* maxSpd equal to the fix's own speed, which an independent solver on
     * the same rows reproduces to the bit. */
    CombCase edge;
    build(edge);
    crdpnt_t ref;
    ref.set(kGps);
    ASSERT_EQ(ref.get(&edge.ep.lst)->actual, 1);
    const tblSpdPnt_t* v = ref.getSpd();
    const double zero[3] = {0, 0, 0};
    const double vx[3] = {v->vxyz[0], v->vxyz[1], v->vxyz[2]};
    const double speed = raim_t::calcDist(vx, zero);
    ASSERT_NEAR(speed, 30.0, 1e-6);
    edge.pnt.actual = 1;
    EXPECT_EQ(edge.run(speed), RAIM_OK);
    EXPECT_EQ(edge.pnt.actual, 0) << "a speed at the limit hands out no fix";
    EXPECT_EQ(edge.flagged(), 0);

    CombCase over;
    build(over);
    EXPECT_EQ(over.run(29.0), RAIM_NO_EXCLUSION);
    EXPECT_EQ(over.pnt.actual, 0);
    EXPECT_EQ(over.flagged(), 0);
}

/*
 * The exclusion search, with five exact GPS rows and the probes
 * {+49, +20, -20, +20, -20}: nothing reaches the gate, S0 = +49, the
 * scatter is 19.4 m. Leaving out the +49 probe gives the smallest
 * candidate scatter (13.3 m); leaving out a GPS row keeps the fix and
 * gives 20.4 m. The winner is accepted when its DOP-weighted scatter beats
 * that of the caller's previous fix.
 */
TEST(RaimComb, ExcludesTheWorstRowWhenItBeatsTheCallersFix) {
    auto build = [](CombCase& c) {
        for (int k = 0; k < 5; k++) c.gps(k, k + 1);
        const double r[5] = {20.0, 49.0, -20.0, 20.0, -20.0};
        for (int k = 0; k < 5; k++) c.probe(5 + k, 10 + k, r[k]);
    };
    CombCase c;
    build(c);
    c.pnt.dop10 = 1000;
    EXPECT_EQ(c.run(), RAIM_OK);
    EXPECT_EQ(c.flagged(), 1);
    EXPECT_EQ(c.ep.rows[6].bad, 1) << "the +49 m probe is the one left out";
    EXPECT_EQ(c.pnt.actual, 1);
    EXPECT_LT(c.err(), 1e-3);

    /* A previous fix of DOP 0.1 cannot be beaten. */
    CombCase d;
    build(d);
    d.pnt.dop10 = 1;
    EXPECT_EQ(d.run(), RAIM_NO_EXCLUSION);
    EXPECT_EQ(d.flagged(), 0) << "candidates' flags are restored";
    EXPECT_EQ(d.pnt.actual, 0);
}

/*
 * The first candidate is compared with S0, the signed sum of the
 * all-in-view residuals. Four exact GPS rows and four probes of the same
 * sign give a scatter of 20 m either way; leaving out a GPS row leaves
 * three, so that candidate's fix fails and its scatter counts as 0. With
 * S0 = +160 the first GPS row (index 2) wins, the three later ones only
 * tie with it, and the caller receives its failed fix with code 0. With
 * S0 = -160 nothing can be below it and the call gives -32.
 */
TEST(RaimComb, FirstComparisonIsAgainstTheSignedSum) {
    for (double sign : {+1.0, -1.0}) {
        CombCase c;
        c.probe(0, 10, sign * 40.0);
        c.probe(1, 11, sign * 40.0);
        for (int k = 2; k < 6; k++) c.gps(k, k);
        c.probe(6, 12, sign * 40.0);
        c.probe(7, 13, sign * 40.0);
        c.pnt.dop10 = 15;
        const int rc = c.run();
        if (sign > 0) {
            EXPECT_EQ(rc, RAIM_OK);
            EXPECT_EQ(c.pnt.actual, 0) << "the winner's fix failed";
            EXPECT_EQ(c.ep.rows[2].bad, 1) << "earliest of the tied candidates";
            EXPECT_EQ(c.flagged(), 1);
        } else {
            EXPECT_EQ(rc, RAIM_NO_EXCLUSION);
            EXPECT_EQ(c.flagged(), 0);
        }
    }
}

/* With no all-in-view fix (a mode the solver does not know) every
 * candidate compares against 0 and fails: -32, flags as they were. */
TEST(RaimComb, NoAllInViewFixGivesNoExclusion) {
    CombCase c;
    for (int k = 0; k < 8; k++) c.gps(k, k + 1);
    c.ep.rows[3].bad = 2;   /* not 1: usable for the monitor, restored as 0 */
    c.pnt.actual = 1;
    EXPECT_EQ(c.run(100.0, 2), RAIM_NO_EXCLUSION);
    EXPECT_EQ(c.pnt.actual, 0);
    EXPECT_EQ(c.flagged(), 0);
    EXPECT_EQ(c.ep.rows[3].bad, 0);
}

TEST(RaimComb, CalcDistIsTheEuclideanNorm) {
    const double a[3] = {1.0, 2.0, 3.0}, b[3] = {4.0, 6.0, 15.0};
    EXPECT_EQ(raim_t::calcDist(a, b), 13.0);
    EXPECT_EQ(raim_t::calcDist(b, a), 13.0);
    EXPECT_EQ(raim_t::calcDist(a, a), 0.0);
}
