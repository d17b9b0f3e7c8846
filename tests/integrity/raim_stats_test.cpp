/*
 * The 30-second statistics, on rows whose residuals are exact: the fix
 * sits at the centre of the Earth with no clock term and every satellite
 * 20000 km away on the X axis, so a row measured at 20000 km - r has the
 * residual r to the bit.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "integrity/raim.h"

namespace {

const double kRange = 2.0e7;
/* A multiple of 30: the ring index of a sample is its second in the span. */
const uint32_t kT0 = 900000000u;

struct Rows {
    tblCrdSat_t rows[ZEL_NUM_CRDSAT];
    lsttblCrdSat_t lst;
    tblCrdPnt_t fix;

    explicit Rows(uint32_t tm) {
        std::memset(this, 0, sizeof *this);
        lst.tbl = rows;
        lst.tm = tm;
    }
    tblCrdSat_t& add(int sys, int num, double resid) {
        tblCrdSat_t& r = rows[lst.num++];
        r.sys = (uint8_t)sys;
        r.num = (uint8_t)num;
        r.xyz[0] = kRange;
        r.psvd = kRange - resid;
        r.dop = 100.0 + num;
        return r;
    }
};

/* One satellite, residuals r[i] at seconds kT0 + i; the flag raimStats
 * leaves on it at the last second. */
int feed(raim_t& raim, int sys, int num, const double* r, int n = 30) {
    int bad = 0;
    for (int i = 0; i < n; i++) {
        Rows e(kT0 + i);
        e.add(sys, num, r[i]);
        raim.raimStats(&e.lst, &e.fix);
        bad = e.rows[0].bad;
    }
    return bad;
}

}  // namespace

/* Statistics of a complete span and the limits: 50 m on |mean| and 18 m on
 * sigma, a value equal to its limit passing. The sets below come out at
 * exactly 50 and exactly 18 in the sums as the statistics form them. */
TEST(RaimStats, StatisticsAndLimits) {
    double r[30];
    for (int i = 0; i < 30; i++) r[i] = (i % 3 == 1) ? 45.0 : 52.5;
    raim_t a;
    EXPECT_EQ(feed(a, 0, 7, r), 0);
    const raimSatBlk_t* b = a.getBlk(6);
    EXPECT_EQ(b->statValid, 1);
    EXPECT_EQ(b->mean, 50.0);
    EXPECT_EQ(b->meanSq, 2500.0);
    EXPECT_NEAR(b->sigma, std::sqrt(12.5), 1e-12);
    EXPECT_NEAR(b->devNorm, 2.5 / std::sqrt(12.5), 1e-12);
    EXPECT_EQ(b->probInteg, a.calcProbInteg(0.0, b->sigma, 50.0, 52.5));
    EXPECT_EQ(b->prange[5], kRange - 52.5);
    EXPECT_EQ(b->prange2[5], 107.0) << "the row's Doppler";
    r[29] = 52.50003;   /* mean 50.000001 */
    raim_t a2;
    EXPECT_EQ(feed(a2, 0, 7, r), 1);

    const double v[15] = {21, 3, 20, 17, 7, 8, 12, 27, 2, 11, 8, 14, 15, 3, 46};
    double z[30];
    for (int i = 0; i < 15; i++) z[2 * i] = -(z[2 * i + 1] = v[i]);
    raim_t s;
    EXPECT_EQ(feed(s, 0, 2, z), 0);
    EXPECT_EQ(s.getBlk(1)->sigma, 18.0);
    z[28] = -46.0001;
    raim_t s2;
    EXPECT_EQ(feed(s2, 0, 2, z), 1);
}

/* A bias growing by 2 m a second from kT0: nothing is judged before the
 * span is complete (kT0+29, mean -29 m, sigma 17.3 m: inside both limits);
 * the mean of the span ending at kT0+i is -2 (i - 14.5) m, beyond -50 m
 * from i = 40. A steady satellite beside it is never flagged. A gap of
 * one second holds the statistics back. */
TEST(RaimStats, GrowingBiasCaughtOnceTheSpanIsComplete) {
    raim_t raim;
    int firstFlag = -1;
    for (int i = 0; i < 60 && firstFlag < 0; i++) {
        Rows e(kT0 + i);
        e.add(0, 9, -2.0 * i);
        e.add(0, 10, 1.0);
        raim.raimStats(&e.lst, &e.fix);
        EXPECT_EQ(raim.getBlk(8)->statValid, i >= 29 ? 1 : 0) << i;
        if (i == 29) {
            EXPECT_NEAR(raim.getBlk(8)->sigma, 2.0 * std::sqrt(899.0 / 12.0), 1e-9);
        }
        EXPECT_EQ(e.rows[1].bad, 0);
        if (e.rows[0].bad == 1) firstFlag = i;
    }
    EXPECT_EQ(firstFlag, 40);
    EXPECT_TRUE(raim.isCmpltGlo(9, kT0 + 40 + 2)) << "t-1 and t are not looked at";

    raim_t gap;
    for (int i = 0; i < 30; i++) {
        Rows e(kT0 + i);
        if (i != 13) e.add(0, 3, 0.0);
        gap.calcStats(&e.lst, &e.fix);
    }
    EXPECT_FALSE(gap.isCmpltGlo(3, kT0 + 29));
    EXPECT_EQ(gap.getBlk(2)->statValid, 0);
}

/* One number records either the GLONASS slot or the GPS PRN in a second,
 * the earlier usable row winning (slot 24 keeps its tag all the same); a
 * second call for the same second stores nothing; PRN 0 is PRN 32; only
 * GPS PRN 1..8 ever get statistics. */
TEST(RaimStats, HistoryRules) {
    raim_t raim;
    Rows e(kT0 + 4);
    e.add(0, 5, 10.0);
    e.add(1, 5, 20.0);
    e.add(1, 0, 3.0);
    raim.calcStats(&e.lst, &e.fix);
    EXPECT_EQ(raim.getBlk(4)->resid[4], 10.0);
    EXPECT_EQ(raim.getBlk(24 + 4)->tag[4], 0u);
    EXPECT_EQ(raim.getBlk(55)->tag[4], kT0 + 4);

    Rows f(kT0 + 5);
    f.add(1, 5, 20.0).bad = 1;   /* not usable: the later GLONASS row counts */
    f.add(1, 5, 21.0);
    f.add(0, 5, 10.0);
    raim.calcStats(&f.lst, &f.fix);
    EXPECT_EQ(raim.getBlk(24 + 4)->resid[5], 21.0);
    EXPECT_EQ(raim.getBlk(4)->tag[5], 0u);
    Rows again(kT0 + 5);
    again.add(1, 5, 99.0);
    raim.calcStats(&again.lst, &again.fix);
    EXPECT_EQ(raim.getBlk(24 + 4)->resid[5], 21.0);

    /* Slots 23 and 24, then thirty seconds later (same ring index) PRN 24
     * alone: slot 24 keeps its old tag, slot 23 does not. */
    Rows i0(kT0 + 1);
    i0.add(0, 23, 1.0);
    i0.add(0, 24, 1.0);
    raim.calcStats(&i0.lst, &i0.fix);
    Rows i1(kT0 + 31);
    i1.add(1, 24, 1.0);
    raim.calcStats(&i1.lst, &i1.fix);
    EXPECT_EQ(raim.getBlk(22)->tag[1], 0u);
    EXPECT_EQ(raim.getBlk(23)->tag[1], kT0 + 1);

    double big[30];
    for (double& x : big) x = 100.0;
    raim_t p5, p12;
    EXPECT_EQ(feed(p5, 1, 5, big), 1);
    EXPECT_EQ(feed(p12, 1, 12, big), 0);
    EXPECT_EQ(p12.getBlk(24 + 11)->statValid, 0);
}
