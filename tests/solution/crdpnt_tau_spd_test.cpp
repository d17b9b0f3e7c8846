/*
 * The fixed-clock GLONASS fix and the velocity fit: three satellites are
 * enough with a known clock, the mode gate, the rotation by the record's
 * old clock offset; velocity and drift of a moving receiver, the GLONASS
 * letters (negative ones included), rows of other systems ignored, the
 * row minimum.
 */
#include <gtest/gtest.h>

#include <cmath>

#include "crdpnt_fixture.h"

namespace {

using namespace crdpnt_test;

TEST(CrdPntTau, ThreeGlonassRowsAndAKnownClockGiveTheFix) {
    Truth t;
    t.cdt = kC * 3e-4;
    Epoch ep;
    for (int k = 0; k < 3; k++) ep.add(t, k, 0, 5 + k, k);
    ep.add(t, 3, 1, 20);  // a GPS row is not used
    crdpnt_t s;
    s.set(0);
    const tblCrdPnt_t* p = s.getTau(&ep.lst, 3e-4);
    ASSERT_EQ(p->actual, 1);
    EXPECT_EQ(p->sys, 0);
    EXPECT_EQ(p->numGlo, 3);
    EXPECT_EQ(p->numGps, 0);
    for (int k = 0; k < 3; k++) EXPECT_EQ(p->lstGlo[k], 5 + k);
    // A fresh record holds dt = 0: no rotation, and dt/tau stay 0.
    EXPECT_LT(dist3(xyzOf(p).v, t.xyz), 1e-3);
    EXPECT_EQ(+p->dt, 0.0);
    EXPECT_EQ(+p->tau, 0.0);
    // DOP of the three coordinates alone.
    double N[9] = {0}, q[9];
    for (int r = 0; r < 3; r++) {
        double d[3], rho = 0;
        for (int i = 0; i < 3; i++) {
            d[i] = t.xyz[i] - ep.rows[r].xyz[i];
            rho += d[i] * d[i];
        }
        rho = std::sqrt(rho);
        for (int i = 0; i < 3; i++)
            for (int k = 0; k < 3; k++) N[i * 3 + k] += d[i] * d[k] / (rho * rho);
    }
    invert(3, N, q);
    EXPECT_EQ(p->dop10, (int32_t)(10.0 * std::sqrt(q[0] + q[4] + q[8])));

    // A wrong clock is absorbed by the coordinates: the fix moves.
    EXPECT_GT(dist3(xyzOf(s.getTau(&ep.lst, 3e-4 + 1e-6)).v, t.xyz), 10.0);
}

TEST(CrdPntTau, RotatesByTheClockOffsetOfTheEarlierFix) {
    Truth t;
    t.cdt = kC * 1e-3;
    Epoch six;
    for (int k = 0; k < 6; k++) six.add(t, k, 0, 1 + k);
    crdpnt_t s;
    s.set(0);
    const tblCrdPnt_t* p = s.get(&six.lst);
    ASSERT_EQ(p->actual, 1);
    const double dt = p->dt;

    // Solve with a known clock of a different value: the rotation still
    // uses the 1 ms left in the record.
    Truth t2 = t;
    t2.cdt = kC * 5e-3;
    Epoch three;
    for (int k = 0; k < 3; k++) three.add(t2, k + 2, 0, 3 + k);
    p = s.getTau(&three.lst, 5e-3);
    ASSERT_EQ(p->actual, 1);
    double want[3];
    rotated(t.xyz, kOmegaGlo, dt, want);
    EXPECT_LT(dist3(xyzOf(p).v, want), 1e-3);
    EXPECT_EQ(+p->dt, dt);
}

void expectVelocity(const tblSpdPnt_t* v, const Truth& t, int sys) {
    ASSERT_EQ(v->actual, 1);
    EXPECT_EQ(v->length, 48);
    EXPECT_EQ(v->sys, sys);
    for (int i = 0; i < 3; i++) EXPECT_NEAR(+v->vxyz[i], t.v[i], 1e-6) << i;
    EXPECT_NEAR(+v->drift, t.drift, 1e-14);
}

TEST(CrdPntSpd, CombinedFixUsesEveryRowWithItsOwnCarrier) {
    // 3 GLONASS rows on letters -7, -1 and +6, and 2 GPS rows: a wrong
    // carrier for any of them would spoil the exact fit.
    Truth t;
    t.v[0] = 12.5;
    t.v[1] = -3.0;
    t.v[2] = 7.25;
    t.drift = 2e-8;
    t.cdelta = 15.0;
    Epoch ep;
    ep.add(t, 0, 0, 1, 25);
    ep.add(t, 1, 0, 2, 31);
    ep.add(t, 2, 0, 3, 6);
    toWgs84(ep.add(t, 3, 1, 11));
    toWgs84(ep.add(t, 4, 1, 12));
    crdpnt_t s;
    s.set(10);
    const tblCrdPnt_t* p = s.get(&ep.lst);
    ASSERT_EQ(p->actual, 1);
    ASSERT_EQ(p->sys, 10);
    const tblSpdPnt_t* v = s.getSpd();
    expectVelocity(v, t, 10);
    // driftMean: the mean of y = u.v_sat - c * dop / f over the rows, by c.
    double sum = 0;
    for (int r = 0; r < 5; r++) {
        const tblCrdSat_t& row = ep.rows[r];
        double sat[3] = {row.xyz[0], row.xyz[1], row.xyz[2]};
        if (row.sys == 1) {
            sat[0] += 0.36;
            sat[1] -= 0.08;
            sat[2] -= 0.18;
        }
        double y = 0;
        for (int i = 0; i < 3; i++) y += (p->xyz[i] - sat[i]) / row.psvd * row.vxyz[i];
        sum += y - kC * row.dop / carrierOf(row.sys, row.lit);
    }
    EXPECT_NEAR(+v->driftMean, sum / (5 * kC), 1e-15);
}

TEST(CrdPntSpd, RowsOfTheOtherSystemAreIgnored) {
    Truth t;
    t.v[2] = 4.0;
    Epoch ep;
    for (int k = 0; k < 6; k++) ep.add(t, k, 1, 10 + k);
    // GLONASS rows with Dopplers that fit nothing.
    for (int k = 6; k < 9; k++) ep.add(t, k, 0, k, 2).dop = 5000.0 * k;
    crdpnt_t s;
    tblCrdPnt_t fix = {};
    s.set(1);
    s.navSolveOneSystem(6, ep.rows, &fix);
    ASSERT_EQ(fix.actual, 1);
    fix.sys = 1;
    // Put the GLONASS rows first: order must not matter either.
    tblCrdSat_t rows[9];
    for (int k = 0; k < 3; k++) rows[k] = ep.rows[6 + k];
    for (int k = 0; k < 6; k++) rows[3 + k] = ep.rows[k];
    s.navSpeedTask(&fix, rows, 9);
    expectVelocity(s.getSpd(), t, 1);
}

}  // namespace
