#include <gtest/gtest.h>

#include <cmath>

#include "filter/filter.h"
#include "filter/kalman_obs.h"
#include "glo_list.h"

namespace {

/* The records are packed to 4 bytes, so their doubles may sit off an
 * 8-byte boundary; the test macros bind references, so such fields are
 * read as values (unary +). */

const unsigned int T1 = 700000;
const double Z0 = 21000000.0;

/* Pseudorange of satellite `num` at epoch k: a slow drift plus a
 * deterministic wobble, well inside the smoother's gate. */
double range(unsigned int num, unsigned int k) {
    static const double wobble[] = {0.0, 0.0, 12.0, -7.0, 3.0, -20.0, 9.0, -4.0};
    return Z0 + 1000.0 * num + 10.0 * k + wobble[k % 8];
}

TEST(KalmanObs, BindsValidPlacesAndRestartsAfterFourOutliers) {
    KalmanObs_t o;
    EXPECT_EQ(o.GetActual(), 0);
    EXPECT_EQ(o.GetSys(), 255);
    EXPECT_EQ(o.GetNum(), 255);

    GloList l;
    tblObs_t* obs = l.glo(9, T1, 1000.0);
    obs->actual[2] = 2;  // neither started nor fed
    obs->psvd[2] = 5.0;
    o.Init(l.lst.tblGlo[0].tblHdr, obs);
    EXPECT_EQ(o.GetActual(), 1);
    EXPECT_EQ(o.GetNum(), 9);
    EXPECT_EQ(o.GetSys(), 0);
    EXPECT_EQ(o.GetTime(), T1);

    const tblKalmanObs_t* t = o.GetObs();
    EXPECT_EQ(t->faze[4].length, 80);
    EXPECT_EQ(t->dop[1].actual, 1);
    EXPECT_EQ(t->psvd[2].actual, 0);
    EXPECT_EQ(+t->psvd[0].p11, 2500.0);  // pseudorange noise
    EXPECT_EQ(+t->faze[0].p11, 100.0);   // phase noise
    EXPECT_EQ(+t->dop[0].p11, 0.0);      // Doppler: none

    // Steady for two seconds, then a jump far outside the 150 m gate.
    const double z[] = {1000.0, 1000.0, 2000.0, 2000.0, 2000.0, 2000.0};
    for (unsigned int k = 0; k < 6; k++) {
        obs->tmZel = T1 + 1 + k;
        obs->psvd[0] = z[k];
        obs->psvd[2] = 5.0 + k;
        o.Update(obs);
        t = o.GetObs();
        EXPECT_EQ(o.GetTime(), T1 + 1 + k);
        if (k >= 2 && k <= 4) {
            EXPECT_EQ(t->psvd[0].error, (int)k - 1) << k;
            EXPECT_EQ(+t->psvd[0].x, 1000.0) << k;
        }
    }
    // The fourth outlier restarted the filter at the raw value.
    EXPECT_EQ(+t->psvd[0].x, 2000.0);
    EXPECT_EQ(t->psvd[0].error, 0);
    EXPECT_EQ(t->psvd[0].t0, T1 + 6);
    EXPECT_EQ(+t->psvd[0].p11, 2500.0);
    EXPECT_EQ(t->psvd[2].tLast, 0u);

    o.Clear();
    EXPECT_EQ(o.GetActual(), 0);
    EXPECT_EQ(o.GetNum(), 255);
    EXPECT_EQ(o.GetObs()->psvd[0].actual, 0);
}

TEST(FilterObs0, SmoothsGlonassInPlaceAndLeavesGpsAlone) {
    Filter_t f;
    EXPECT_EQ(f.GetLastObs(), nullptr);
    Kalman2_t ref;
    for (unsigned int k = 0; k < 6; k++) {
        GloList l;
        tblObs_t* o = l.glo(5, T1 + k, range(5, k));
        o->actual[2] = 2;
        o->psvd[2] = 777.0;
        tblObs_t* g = l.gps(5, T1 + k, 123.0);
        f.KalmanObs0(&l.lst);

        if (k == 0)
            ref.Init(T1, range(5, 0), 1.0, 2500.0, 0.0);
        else
            ref.Update(T1 + k, range(5, k));
        EXPECT_EQ(+o->psvd[0], +ref.GetTbl()->x) << k;
        if (k == 2) {
            EXPECT_NE(+o->psvd[0], range(5, k));
            // Constant Doppler: accepted with a 0/0 gain.
            EXPECT_TRUE(std::isnan(o->dop[0]));
        }
        EXPECT_EQ(+o->psvd[2], 777.0);
        EXPECT_EQ(+g->psvd[0], 123.0);

        const tblKalmanObs_t* last = f.GetLastObs();
        ASSERT_NE(last, nullptr);
        EXPECT_EQ(last->num, 5);
        EXPECT_EQ(last->tmZel, T1 + k);
        EXPECT_EQ(last->psvd[2].actual, 0);
    }
}

TEST(FilterObs0, SatelliteMissingForOneEpochLosesItsSmoothing) {
    Filter_t f;
    for (unsigned int k = 0; k < 7; k++) {
        GloList l;
        tblObs_t* o5 = k == 3 ? nullptr : l.glo(5, T1 + k, range(5, k));
        tblObs_t* o7 = l.glo(7, T1 + k, range(7, k));
        f.KalmanObs0(&l.lst);
        // Satellite 7 is smoothed throughout: raw only at the start and at
        // the rate re-seed.
        if (k >= 2) {
            EXPECT_NE(+o7->psvd[0], range(7, k)) << k;
        }
        // Satellite 5 starts over on its return at epoch 4: raw at 4 and 5.
        if (k == 4 || k == 5) {
            EXPECT_EQ(+o5->psvd[0], range(5, k)) << k;
        }
        if (k == 6) {
            EXPECT_NE(+o5->psvd[0], range(5, k));
        }
    }
}

TEST(FilterObs0, UnconfirmedSignalWithNoFreeTrackerIsCleared) {
    Filter_t f;
    for (unsigned int k = 0; k < 5; k++) {
        GloList l;
        tblObs_t* o[24];
        for (unsigned char n = 1; n <= 24; n++) o[n - 1] = l.glo(n, T1 + k, range(n, k));
        if (k == 1) l.addInf(0)->present[0] = 0;
        f.KalmanObs0(&l.lst);
        if (k == 2) {
            // Satellite 1 was dropped at epoch 1 and starts again now; the
            // others carry on smoothing.
            EXPECT_EQ(+o[0]->psvd[0], range(1, k));
            for (int i = 1; i < 24; i++) EXPECT_NE(+o[i]->psvd[0], range(i + 1, k)) << i;
        }
        if (k == 3) {  // rate re-seed
            EXPECT_EQ(+o[0]->psvd[0], range(1, k));
        }
        if (k == 4) {
            EXPECT_NE(+o[0]->psvd[0], range(1, k));
        }
    }
}

TEST(FilterObs, NewSatelliteTakesEveryFreeTracker) {
    Filter_t f;
    {
        GloList l;
        l.glo(3, T1, range(3, 0));
        const lsttblKalmanObs_t* out = f.KalmanObs(&l.lst);
        EXPECT_EQ(out->reserved, 0u);
        ASSERT_EQ(out->num, 24u);
        for (int i = 0; i < 24; i++) {
            EXPECT_EQ(out->tbl[i].length, 1220);
            EXPECT_EQ(out->tbl[i].actual, 1);
            EXPECT_EQ(out->tbl[i].sys, 0);
            EXPECT_EQ(out->tbl[i].num, 3);
            EXPECT_EQ(out->tbl[i].tmZel, T1);
            EXPECT_EQ(+out->tbl[i].psvd[0].x, range(3, 0));
        }
    }
    {
        // Only the first tracker is fed; the newcomer finds none free.
        GloList l;
        l.glo(3, T1 + 1, range(3, 1));
        l.glo(4, T1 + 1, range(4, 1));
        const lsttblKalmanObs_t* out = f.KalmanObs(&l.lst);
        ASSERT_EQ(out->num, 24u);
        EXPECT_EQ(out->tbl[0].tmZel, T1 + 1);
        EXPECT_EQ(+out->tbl[0].psvd[0].x, range(3, 1));
        EXPECT_EQ(+out->tbl[0].psvd[0].v, range(3, 1) - range(3, 0));
        for (int i = 1; i < 24; i++) {
            EXPECT_EQ(out->tbl[i].num, 3);
            EXPECT_EQ(out->tbl[i].tmZel, T1);
        }
    }
    {
        // Satellite 3 gone: every tracker is cleared, and 4 still finds
        // none free in this call.
        GloList l;
        l.glo(4, T1 + 2, range(4, 2));
        EXPECT_EQ(f.KalmanObs(&l.lst)->num, 0u);
        const lsttblKalmanObs_t* out = f.KalmanObs(&l.lst);
        ASSERT_EQ(out->num, 24u);
        EXPECT_EQ(out->tbl[23].num, 4);
    }
    {
        // No GLONASS sets: everything is cleared; GPS sets do not count.
        GloList l;
        l.gps(4, T1 + 3, 1.0);
        EXPECT_EQ(f.KalmanObs(&l.lst)->num, 0u);
    }
}

TEST(FilterObs, BoundTrackersAreCopiedOutInTrackerOrder) {
    Filter_t f;
    {
        GloList l;
        l.glo(3, T1, range(3, 0));
        l.glo(4, T1, range(4, 0));
        f.KalmanObs0(&l.lst);  // trackers 0 and 1
    }
    GloList l;
    l.glo(6, T1 + 1, range(6, 1));
    l.glo(4, T1 + 1, range(4, 1));
    l.glo(3, T1 + 1, range(3, 1));
    const lsttblKalmanObs_t* out = f.KalmanObs(&l.lst);
    ASSERT_EQ(out->num, 24u);
    EXPECT_EQ(out->tbl[0].num, 3);
    EXPECT_EQ(out->tbl[1].num, 4);
    EXPECT_EQ(+out->tbl[1].psvd[0].v, range(4, 1) - range(4, 0));
    EXPECT_EQ(+out->tbl[1].psvd[1].x, range(4, 1) + 1.0);
    for (int i = 2; i < 24; i++) {
        EXPECT_EQ(out->tbl[i].num, 6);
        EXPECT_EQ(out->tbl[i].psvd[0].t0, T1 + 1);
    }
    // The list's observations are not touched by this entry point.
    EXPECT_EQ(+l.obs[1].psvd[0], range(4, 1));
}

}  // namespace
