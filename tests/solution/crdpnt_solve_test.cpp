/*
 * The position fix: exact recovery of synthetic receivers in each mode,
 * the deliberate differences between the one- and two-system solvers
 * (DOP, Earth-rotation rate), the selection rules (bad rows, counts,
 * the combined mode's minimum, its one-system fallbacks, the lstGps
 * ordering), and what a failed epoch or clear leaves in the record.
 */
#include <gtest/gtest.h>

#include <cmath>

#include "crdpnt_fixture.h"

namespace {

using namespace crdpnt_test;

/* GLONASS letters for the rows: positive and negative (25..31 = -7..-1). */
const int kLit[12] = {1, 26, 5, 31, 0, 3, 25, 6, 2, 28, 4, 30};

void addGlo(Epoch& ep, const Truth& t, int first, int count) {
    for (int k = first; k < first + count; k++) ep.add(t, k, 0, 1 + k, kLit[k]);
}

void addGps(Epoch& ep, const Truth& t, int first, int count, bool wgs = false) {
    for (int k = first; k < first + count; k++) {
        tblCrdSat_t& r = ep.add(t, k, 1, 10 + k);
        if (wgs) toWgs84(r);
    }
}

void expectAt(const tblCrdPnt_t* p, const Truth& t, double omega, double tol) {
    double want[3];
    rotated(t.xyz, omega, t.cdt / kC, want);
    EXPECT_LT(dist3(xyzOf(p).v, want), tol);
    EXPECT_NEAR(+p->dt, t.cdt / kC, 1e-12);
}

TEST(CrdPntSolve, GlonassOnlyRecoversTheReceiverAndItsClock) {
    Truth t;
    t.cdt = kC * 1e-3;
    Epoch ep;
    addGlo(ep, t, 0, 6);
    crdpnt_t s;
    s.set(0);
    const tblCrdPnt_t* p = s.get(&ep.lst);
    ASSERT_EQ(p->actual, 1);
    EXPECT_EQ(p->length, 100);
    EXPECT_EQ(p->sys, 0);
    EXPECT_EQ(p->numGlo, 6);
    EXPECT_EQ(p->numGps, 0);
    for (int k = 0; k < 6; k++) EXPECT_EQ(p->lstGlo[k], 1 + k);
    expectAt(p, t, kOmegaGlo, 1e-3);
    // One millisecond of clock turns the fix by about 7.29e-8 rad.
    const double turn = std::atan2(p->xyz[1], p->xyz[0]) - std::atan2(t.xyz[1], t.xyz[0]);
    EXPECT_NEAR(turn, 7.292115e-8, 1e-12);

    // One-system DOP: position part of the inverse, sqrt(q00 + q11 + q22).
    double q[16];
    normalInverse(ep, t, 4, q);
    EXPECT_EQ(p->dop10, (int32_t)(10.0 * std::sqrt(q[0] + q[5] + q[10])));
}

TEST(CrdPntSolve, GpsOnlyRecoversTheReceiverWithTheGpsRotationRate) {
    Truth t;
    t.cdt = -kC * 2.5e-4;
    Epoch ep;
    addGps(ep, t, 2, 7);
    crdpnt_t s;
    s.set(1);
    const tblCrdPnt_t* p = s.get(&ep.lst);
    ASSERT_EQ(p->actual, 1);
    EXPECT_EQ(p->sys, 1);
    EXPECT_EQ(p->numGps, 7);
    EXPECT_EQ(p->numGlo, 0);
    expectAt(p, t, kOmegaGps, 1e-3);
}

TEST(CrdPntSolve, RotationRateFollowsTheModeInOneSystemButNotInTwo) {
    // The same rows through the same solver: the states are identical, so
    // the fixes differ only by the rotation, by (wGps - wGlo) * dt.
    Truth t;
    t.cdt = kC * 0.5;
    Epoch ep;
    addGlo(ep, t, 0, 4);
    addGps(ep, t, 4, 3);
    crdpnt_t a, b;
    tblCrdPnt_t pa = {}, pb = {};
    a.set(1);
    b.set(10);
    a.navSolveOneSystem(4, ep.rows, &pa);
    b.navSolveOneSystem(4, ep.rows, &pb);
    ASSERT_EQ(pa.actual, 1);
    ASSERT_EQ(pb.actual, 1);
    double want[3];
    rotated(xyzOf(&pb).v, kOmegaGps - kOmegaGlo, pb.dt, want);
    EXPECT_GT(dist3(xyzOf(&pa).v, xyzOf(&pb).v), 3e-8);
    EXPECT_LT(dist3(xyzOf(&pa).v, want), 5e-9);

    // The two-system solver keeps the GLONASS rate whatever the mode.
    tblCrdPnt_t qa = {}, qb = {};
    a.navSolveTwoSystem(7, ep.rows, &qa);
    b.navSolveTwoSystem(7, ep.rows, &qb);
    ASSERT_EQ(qa.actual, 1);
    for (int i = 0; i < 3; i++) EXPECT_EQ(+qa.xyz[i], +qb.xyz[i]);
}

TEST(CrdPntSolve, CombinedRecoversClockAndTimeOffsetWithSquaredDiagonalDop) {
    Truth t;
    t.cdt = kC * 2e-4;
    t.cdelta = 25.0;
    Epoch ep;
    addGlo(ep, t, 0, 4);
    addGps(ep, t, 4, 3, true);
    crdpnt_t s;
    s.set(10);
    const tblCrdPnt_t* p = s.get(&ep.lst);
    ASSERT_EQ(p->actual, 1);
    EXPECT_EQ(p->sys, 10);
    EXPECT_EQ(p->numGlo, 4);
    EXPECT_EQ(p->numGps, 3);
    for (int k = 0; k < 4; k++) EXPECT_EQ(p->lstGlo[k], 1 + k);
    for (int k = 0; k < 3; k++) EXPECT_EQ(p->lstGps[k], 14 + k);
    expectAt(p, t, kOmegaGlo, 1e-3);
    EXPECT_NEAR(+p->tau, 25.0 / kC, 1e-11);

    // Two-system DOP: sqrt of the sum of the squared diagonal over all
    // five unknowns, which for this sky is far from the position-only
    // figure of the one-system solver.
    double q[25];
    normalInverse(ep, t, 5, q);
    double sq = 0;
    for (int k = 0; k < 5; k++) sq += q[k * 6] * q[k * 6];
    EXPECT_EQ(p->dop10, (int32_t)(10.0 * std::sqrt(sq)));
    EXPECT_NE(p->dop10, (int32_t)(10.0 * std::sqrt(q[0] + q[6] + q[12])));
}

TEST(CrdPntSolve, CombinedNeedsFiveRowsWhenBothSystemsTakePart) {
    Truth t;
    t.cdelta = 12.0;
    crdpnt_t s;
    s.set(10);
    Epoch four;
    addGlo(four, t, 0, 3);
    addGps(four, t, 3, 1, true);
    EXPECT_EQ(s.get(&four.lst)->actual, 0);

    Epoch five;
    addGlo(five, t, 0, 3);
    addGps(five, t, 3, 2, true);
    const tblCrdPnt_t* p = s.get(&five.lst);
    ASSERT_EQ(p->actual, 1);
    EXPECT_EQ(p->sys, 10);
    EXPECT_EQ(p->numGlo, 3);
    EXPECT_EQ(p->numGps, 2);
    expectAt(p, t, kOmegaGlo, 1e-3);
}

TEST(CrdPntSolve, CombinedWithGpsRowsOnlySolvesInPz90AsOneSystem) {
    // GPS rows of a PZ-90 truth, delivered in WGS-84.
    Truth t;
    t.cdt = kC * 1e-4;
    Epoch ep;
    addGps(ep, t, 0, 6, true);
    crdpnt_t comb, gps;
    comb.set(10);
    gps.set(1);
    const tblCrdPnt_t* p = comb.get(&ep.lst);
    ASSERT_EQ(p->actual, 1);
    EXPECT_EQ(p->sys, 1);
    EXPECT_EQ(p->numGps, 6);
    EXPECT_EQ(p->numGlo, 0);
    expectAt(p, t, kOmegaGlo, 1e-3);

    // The GPS mode stays in WGS-84: the datum shift apart.
    Truth w = t;
    w.xyz[0] -= 0.36;
    w.xyz[1] += 0.08;
    w.xyz[2] += 0.18;
    const tblCrdPnt_t* g = gps.get(&ep.lst);
    ASSERT_EQ(g->actual, 1);
    expectAt(g, w, kOmegaGps, 1e-3);
}

TEST(CrdPntSolve, BadRowsAreNeverUsed) {
    Truth t;
    Epoch ep;
    addGlo(ep, t, 0, 2);
    tblCrdSat_t& bad = ep.add(t, 2, 0, 77, 1);
    bad.psvd = 1234.0;
    bad.bad = 1;
    addGlo(ep, t, 3, 3);
    tblCrdSat_t& badGps = ep.add(t, 8, 1, 78);
    badGps.psvd = -5.0e6;
    badGps.bad = 1;
    for (int mode : {0, 10}) {
        crdpnt_t s;
        s.set(mode);
        const tblCrdPnt_t* p = s.get(&ep.lst);
        ASSERT_EQ(p->actual, 1) << mode;
        EXPECT_EQ(p->sys, 0);
        EXPECT_EQ(p->numGlo, 5);
        const uint8_t want[5] = {1, 2, 4, 5, 6};
        for (int k = 0; k < 5; k++) EXPECT_EQ(p->lstGlo[k], want[k]);
        expectAt(p, t, kOmegaGlo, 1e-3);
    }
}

TEST(CrdPntSolve, AFailedEpochKeepsThePreviousFixWithActualZero) {
    Truth t;
    t.cdt = kC * 1e-3;
    Epoch good;
    addGlo(good, t, 0, 6);
    crdpnt_t s;
    s.set(0);
    tblCrdPnt_t before = *s.get(&good.lst);
    ASSERT_EQ(before.actual, 1);

    // Four satellites in one place: a singular normal matrix.
    Epoch same;
    for (int k = 0; k < 4; k++) same.add(t, 0, 0, 30 + k);
    const tblCrdPnt_t* p = s.get(&same.lst);
    EXPECT_EQ(p->actual, 0);
    // The selection has already rewritten counts and lists; the rest stays.
    EXPECT_EQ(p->numGlo, 4);
    EXPECT_EQ(p->lstGlo[0], 30);
    for (int i = 0; i < 3; i++) EXPECT_EQ(+p->xyz[i], +before.xyz[i]);
    EXPECT_EQ(+p->dt, +before.dt);
    EXPECT_EQ(p->dop10, before.dop10);
}

TEST(CrdPntSolve, GpsNumbersAreCopiedForAsManyRowsAsTheOldGlonassCount) {
    Truth t;
    Epoch glo;
    addGlo(glo, t, 0, 5);
    Epoch gps;
    addGps(gps, t, 0, 8);  // numbers 10..17
    Epoch gps2;
    addGps(gps2, t, 4, 6);  // numbers 14..19

    crdpnt_t s;
    s.set(1);
    // Fresh record: numGlo is 0, so no GPS number is copied.
    const tblCrdPnt_t* p = s.get(&gps.lst);
    ASSERT_EQ(p->actual, 1);
    EXPECT_EQ(p->numGps, 8);
    for (int k = 0; k < 24; k++) EXPECT_EQ(p->lstGps[k], 0) << k;

    // After a GLONASS fix of five, the next GPS fix copies five numbers.
    s.set(0);
    ASSERT_EQ(s.get(&glo.lst)->numGlo, 5);
    s.set(1);
    p = s.get(&gps.lst);
    ASSERT_EQ(p->actual, 1);
    for (int k = 0; k < 5; k++) EXPECT_EQ(p->lstGps[k], 10 + k);
    for (int k = 5; k < 8; k++) EXPECT_EQ(p->lstGps[k], 0);
    EXPECT_EQ(p->numGlo, 0);
    for (int k = 0; k < 24; k++) EXPECT_EQ(p->lstGlo[k], 0);

    // And the one after that copies none: the list still names the
    // previous epoch's satellites.
    p = s.get(&gps2.lst);
    ASSERT_EQ(p->actual, 1);
    EXPECT_EQ(p->numGps, 6);
    for (int k = 0; k < 5; k++) EXPECT_EQ(p->lstGps[k], 10 + k);
}

}  // namespace
