/*
 * raimComb on synthetic epochs whose residuals the tests choose.
 *
 * In GPS mode the fix uses only the GPS rows, yet the gate and the scatter
 * take every row whose flag is not 1. Exact GPS rows pin the fix to the
 * receiver truth, and GLONASS "probe" rows carry exactly the residuals a
 * test wants (predicted minus measured range: a probe measured 40 m short
 * has +40 m).
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "integrity/raim.h"
#include "solution/crdpnt_fixture.h"

namespace {

struct CombCase {
    crdpnt_test::Truth truth;
    crdpnt_test::Epoch ep;
    std::unique_ptr<raim_t> raim{new raim_t};
    tblCrdPnt_t pnt;

    CombCase() {
        std::memset(&pnt, 0, sizeof pnt);
        pnt.dop10 = 1000;   /* a poor previous fix: any exclusion beats it */
    }
    void gps(int k) { ep.add(truth, k, 1, k + 1); }
    void probe(int k, double r) { ep.add(truth, k, 0, k + 1).psvd -= r; }
    int run(double maxSpd = 100.0, int mode = 1) { return raim->raimComb(&ep.lst, &pnt, maxSpd, mode); }
    int flagged() const {
        int n = 0;
        for (uint32_t i = 0; i < ep.lst.num; i++) n += ep.rows[i].bad == 1;
        return n;
    }
};

}  // namespace

/* The all-in-view limits, with the receiver moving at 30 m/s: five zeros
 * and probes {+19, +19, +19, -19} (scatter 11.9 m) with a 60 m residual
 * (gated, and left flagged) are accepted; a speed exactly at the limit
 * returns 0 without handing out the fix; above it every candidate is as
 * fast, so none can be accepted: -32. */
TEST(RaimComb, AllInViewLimits) {
    auto build = [](CombCase& c) {
        c.truth.v[0] = 18.0;
        c.truth.v[1] = 24.0;
        for (int k = 0; k < 5; k++) c.gps(k);
        for (int k = 5; k < 9; k++) c.probe(k, k < 8 ? 19.0 : -19.0);
        c.probe(9, 60.0);
    };
    CombCase ok;
    build(ok);
    EXPECT_EQ(ok.run(), RAIM_OK);
    EXPECT_EQ(ok.pnt.actual, 1);
    EXPECT_EQ(ok.pnt.numGps, 5);
    EXPECT_EQ(ok.ep.rows[9].bad, 1);
    EXPECT_EQ(ok.flagged(), 1);

    /* An independent solver on the same rows gives the speed to the bit. */
    CombCase edge;
    build(edge);
    crdpnt_t ref;
    ref.set(1);
    ASSERT_EQ(ref.get(&edge.ep.lst)->actual, 1);
    const double v[3] = {ref.getSpd()->vxyz[0], ref.getSpd()->vxyz[1], ref.getSpd()->vxyz[2]};
    const double zero[3] = {0, 0, 0};
    const double speed = raim_t::calcDist(v, zero);
    ASSERT_NEAR(speed, 30.0, 1e-6);
    edge.pnt.actual = 1;
    EXPECT_EQ(edge.run(speed), RAIM_OK);
    EXPECT_EQ(edge.pnt.actual, 0);

    CombCase over;
    build(over);
    EXPECT_EQ(over.run(29.0), RAIM_NO_EXCLUSION);
    EXPECT_EQ(over.pnt.actual, 0);
    EXPECT_EQ(over.flagged(), 1) << "only the gated row; candidates are restored";
}

/*
 * Five exact GPS rows and the probes {+20, +49, -20, +20, -20}: no gate,
 * S0 = +49, scatter 19.4 m. Leaving out the +49 probe gives the smallest
 * candidate scatter (13.3 m). It is accepted when its DOP-weighted scatter
 * beats the caller's previous fix, not otherwise.
 */
TEST(RaimComb, ExclusionJudgedAgainstTheCallersFix) {
    auto build = [](CombCase& c) {
        for (int k = 0; k < 5; k++) c.gps(k);
        const double r[5] = {20.0, 49.0, -20.0, 20.0, -20.0};
        for (int k = 0; k < 5; k++) c.probe(5 + k, r[k]);
    };
    CombCase c;
    build(c);
    EXPECT_EQ(c.run(), RAIM_OK);
    EXPECT_EQ(c.ep.rows[6].bad, 1);
    EXPECT_EQ(c.flagged(), 1);
    EXPECT_EQ(c.pnt.actual, 1);
    const double p[3] = {c.pnt.xyz[0], c.pnt.xyz[1], c.pnt.xyz[2]};
    EXPECT_LT(crdpnt_test::dist3(p, c.truth.xyz), 1e-3);

    CombCase d;
    build(d);
    d.pnt.dop10 = 1;
    EXPECT_EQ(d.run(), RAIM_NO_EXCLUSION);
    EXPECT_EQ(d.flagged(), 0);
    EXPECT_EQ(d.pnt.actual, 0);
}

/* Only candidates slower than the limit compete. The first GPS row's
 * Doppler is 50 m/s off, so every fix that keeps it is fast: leaving out
 * the +49 probe would give the smallest scatter but keeps that row; the
 * winner is the fix without the first GPS row. */
TEST(RaimComb, FastCandidatesDoNotCompete) {
    CombCase c;
    for (int k = 0; k < 5; k++) c.gps(k);
    const double r[5] = {20.0, 49.0, -20.0, 20.0, -20.0};
    for (int k = 0; k < 5; k++) c.probe(5 + k, r[k]);
    c.ep.rows[0].dop += 50.0 * 1575420000.0 / 299792458.0;
    EXPECT_EQ(c.run(10.0), RAIM_OK);
    EXPECT_EQ(c.ep.rows[0].bad, 1);
    EXPECT_EQ(c.flagged(), 1);
    EXPECT_EQ(c.pnt.actual, 1);
}

/*
 * The first candidate is compared with S0, the signed sum of the
 * all-in-view residuals. Four exact GPS rows (indices 2..5) and four
 * probes of one sign: scatter 20 m. Leaving out a GPS row leaves three, so
 * that candidate's fix fails and its scatter counts as 0. With S0 = +160
 * the first GPS row wins (the later ones only tie) and the caller gets its
 * failed fix with code 0; with S0 = -160 nothing is below it: -32.
 */
TEST(RaimComb, FirstComparisonIsAgainstTheSignedSum) {
    for (double sign : {+1.0, -1.0}) {
        CombCase c;
        c.probe(0, sign * 40.0);
        c.probe(1, sign * 40.0);
        for (int k = 2; k < 6; k++) c.gps(k);
        c.probe(6, sign * 40.0);
        c.probe(7, sign * 40.0);
        c.pnt.dop10 = 15;
        if (sign > 0) {
            EXPECT_EQ(c.run(), RAIM_OK);
            EXPECT_EQ(c.pnt.actual, 0);
            EXPECT_EQ(c.ep.rows[2].bad, 1);
            EXPECT_EQ(c.flagged(), 1);
        } else {
            EXPECT_EQ(c.run(), RAIM_NO_EXCLUSION);
            EXPECT_EQ(c.flagged(), 0);
        }
    }
    /* No all-in-view fix (a mode the solver does not know): every
     * candidate compares with 0 and fails. A flag of 2 counts as usable
     * and comes back as 0. */
    CombCase none;
    for (int k = 0; k < 8; k++) none.gps(k);
    none.ep.rows[3].bad = 2;
    EXPECT_EQ(none.run(100.0, 2), RAIM_NO_EXCLUSION);
    EXPECT_EQ(none.flagged(), 0);
    EXPECT_EQ(none.ep.rows[3].bad, 0);
}
