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
/* A time tag that is a multiple of 30, so that the ring index of a
 * sample is its second within the span. */
const uint32_t kT0 = 900000000u;

struct Rows {
    tblCrdSat_t rows[ZEL_NUM_CRDSAT];
    lsttblCrdSat_t lst;
    tblCrdPnt_t fix;

    Rows() {
        std::memset(rows, 0, sizeof rows);
        std::memset(&fix, 0, sizeof fix);
        lst.length = 16;
        lst.tbl = rows;
        lst.num = 0;
        lst.tm = 0;
        fix.length = 100;
        fix.actual = 1;
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

/* Feeds one satellite the 30 residuals r[0..29] at seconds kT0..kT0+29,
 * with a fresh list every second; returns the flag of its last row. */
int feed(raim_t& raim, int sys, int num, const double* r) {
    int bad = 0;
    for (int i = 0; i < 30; i++) {
        Rows e;
        e.lst.tm = kT0 + i;
        e.add(sys, num, r[i]);
        raim.raimStats(&e.lst, &e.fix);
        bad = e.rows[0].bad;
    }
    return bad;
}

}  // namespace

/* erf2 is x - x^3/3 for x >= 1e-6 (the signed stop test ends the series
 * after its first negative term), x alone below. */
TEST(RaimStats, Erf2TruncatedSeries) {
    raim_t raim;
    EXPECT_DOUBLE_EQ(raim.erf2(0.5), 0.5 - 0.125 / 3.0);
    EXPECT_DOUBLE_EQ(raim.erf2(0.458), 0.458 - std::pow(0.458, 3) / 3.0);
    EXPECT_EQ(raim.erf2(-0.5), -0.5);
    EXPECT_EQ(raim.erf2(5e-7), 5e-7);
    /* 1e-6 itself is not below the stop value: a second term follows. */
    EXPECT_EQ(raim.erf2(1e-6), 1e-6 - 1e-18 / 3.0);
    EXPECT_DOUBLE_EQ(raim.erf2(2.0), 2.0 - 8.0 / 3.0);
    EXPECT_EQ(raim.erf2(0.0), 0.0);
    EXPECT_TRUE(std::isnan(raim.erf2(NAN)));
    EXPECT_EQ(raim.getFact(0), 1u);
    EXPECT_EQ(raim.getFact(20), 2432902008176640000ull);
}

/* With a = 0: (2 erf2(q w) - erf2(q (w + m)) - erf2(q (w - m))) / (2 sqrt(pi))
 * with q = 1 / (sqrt(2) s). */
TEST(RaimStats, ProbIntegFromTheSeries) {
    raim_t raim;
    const double s = 2.0, m = 0.5, w = 1.0;
    const double q = 1.0 / (std::sqrt(2.0) * s);
    auto e = [](double x) { return x - x * x * x / 3.0; };
    const double want = (2.0 * e(q * w) - e(q * (w + m)) - e(q * (w - m))) / (2.0 * std::sqrt(M_PI));
    EXPECT_NEAR(raim.calcProbInteg(0.0, s, m, w), want, 1e-15);
    /* a shifts the window symmetrically. */
    const double a = 0.25;
    const double wantA = (e(q * (w + a)) + 1 + e(q * (w - a)) + 1 - 1 - e(q * (w - a - m)) -
                          e(q * (w + a + m)) - 1) / (2.0 * std::sqrt(M_PI));
    EXPECT_NEAR(raim.calcProbInteg(a, s, m, w), wantA, 1e-15);
}

/* The span is complete when the tags t-29 .. t-2 are there; t-1 and t are
 * not looked at. One missing second in the middle breaks it. */
TEST(RaimStats, SpanCompleteness) {
    raim_t raim;
    const double r[30] = {0};
    Rows e;
    /* Slot 3 at kT0 .. kT0+27 only. */
    for (int i = 0; i < 28; i++) {
        Rows x;
        x.lst.tm = kT0 + i;
        x.add(0, 3, r[i]);
        raim.calcStats(&x.lst, &x.fix);
    }
    EXPECT_TRUE(raim.isCmpltGlo(3, kT0 + 29));
    EXPECT_FALSE(raim.isCmpltGlo(3, kT0 + 28)) << "t-29 before the first sample";
    EXPECT_FALSE(raim.isCmpltGlo(3, kT0 + 30)) << "t-2 missing";
    EXPECT_FALSE(raim.isCmpltGlo(4, kT0 + 29));
    EXPECT_EQ(raim.getBlk(2)->statValid, 0) << "no second so far had a full span";

    raim_t gap;
    for (int i = 0; i < 30; i++) {
        Rows x;
        x.lst.tm = kT0 + i;
        if (i != 13) x.add(0, 3, r[i]);
        gap.calcStats(&x.lst, &x.fix);
    }
    EXPECT_FALSE(gap.isCmpltGlo(3, kT0 + 29));
    EXPECT_EQ(gap.getBlk(2)->tag[13], 0u);
    EXPECT_EQ(gap.getBlk(2)->statValid, 0);
}

/* Mean, sigma, meanSq, probInteg and devNorm of a complete span, and what
 * raimStats makes of them: limits 50 m on |mean| and 18 m on sigma, a
 * value equal to its limit passes. */
TEST(RaimStats, StatisticsAndLimits) {
    /* 20 x 52.5 and 10 x 45: the mean is 50 to the bit. */
    double r[30];
    for (int i = 0; i < 30; i++) r[i] = (i % 3 == 1) ? 45.0 : 52.5;
    {
        raim_t raim;
        EXPECT_EQ(feed(raim, 0, 7, r), 0);
        const raimSatBlk_t* b = raim.getBlk(6);
        EXPECT_EQ(b->statValid, 1);
        EXPECT_EQ(b->mean, 50.0);
        EXPECT_EQ(b->meanSq, 2500.0);
        EXPECT_NEAR(b->sigma, std::sqrt(12.5), 1e-12);
        EXPECT_NEAR(b->devNorm, 2.5 / std::sqrt(12.5), 1e-12);
        EXPECT_EQ(b->probInteg, raim.calcProbInteg(0.0, b->sigma, 50.0, 52.5));
        EXPECT_EQ(b->prange[5], kRange - 52.5);
        EXPECT_EQ(b->prange2[5], 107.0) << "the row's Doppler";
    }
    {
        r[29] = 52.50003;   /* mean 50.000001 */
        raim_t raim;
        EXPECT_EQ(feed(raim, 0, 7, r), 1);
    }
    {
        /* Mean 0, sigma 18 to the bit (a set whose rounding comes out
         * exact), then the same with one residual a little larger. */
        const double a[15] = {21, 3, 20, 17, 7, 8, 12, 27, 2, 11, 8, 14, 15, 3, 46};
        double z[30];
        for (int i = 0; i < 15; i++) {
            z[2 * i] = a[i];
            z[2 * i + 1] = -a[i];
        }
        raim_t raim;
        EXPECT_EQ(feed(raim, 0, 2, z), 0);
        EXPECT_EQ(raim.getBlk(1)->sigma, 18.0);
        EXPECT_EQ(raim.getBlk(1)->mean, 0.0);
        z[28] = 46.0001;
        raim_t over;
        EXPECT_EQ(feed(over, 0, 2, z), 1);
    }
}

/* A bias that grows by 2 m a second from kT0 on: at no second does it
 * look like a fault on its own, and the first complete span (kT0+29) has
 * a mean of -29 m and a sigma of 17.3 m, both inside the limits. The mean
 * of the span ending at kT0+i is -2 (i - 14.5) m, beyond -50 m from
 * i = 40 on. Before the span completes nothing is judged at all. */
TEST(RaimStats, GrowingBiasCaughtOnceTheSpanIsComplete) {
    raim_t raim;
    int firstFlag = -1;
    for (int i = 0; i < 60 && firstFlag < 0; i++) {
        Rows e;
        e.lst.tm = kT0 + i;
        e.add(0, 9, -2.0 * i);   /* measured 2i metres long */
        e.add(0, 10, 1.0);
        raim.raimStats(&e.lst, &e.fix);
        if (i == 28) {
            EXPECT_EQ(raim.getBlk(8)->statValid, 0);
        }
        if (i == 29) {
            EXPECT_EQ(raim.getBlk(8)->statValid, 1);
            EXPECT_NEAR(raim.getBlk(8)->mean, -29.0, 1e-9);
            EXPECT_NEAR(raim.getBlk(8)->sigma, 2.0 * std::sqrt(899.0 / 12.0), 1e-9);
        }
        EXPECT_EQ(e.rows[1].bad, 0) << "a steady satellite is never flagged";
        if (e.rows[0].bad == 1) firstFlag = i;
    }
    EXPECT_EQ(firstFlag, 40);
}

/* History rules: one number records either the GLONASS slot or the GPS
 * PRN per second, the earlier row winning; a second call for the same
 * second stores nothing; only GPS PRN 1..8 ever get statistics. */
TEST(RaimStats, HistoryRules) {
    raim_t raim;
    {
        Rows e;
        e.lst.tm = kT0 + 4;
        e.add(0, 5, 10.0);
        e.add(1, 5, 20.0);
        raim.calcStats(&e.lst, &e.fix);
        EXPECT_EQ(raim.getBlk(4)->tag[4], kT0 + 4);
        EXPECT_EQ(raim.getBlk(4)->resid[4], 10.0);
        EXPECT_EQ(raim.getBlk(24 + 4)->tag[4], 0u);
    }
    {
        Rows e;
        e.lst.tm = kT0 + 5;
        e.add(1, 5, 20.0);
        e.add(0, 5, 10.0);
        raim.calcStats(&e.lst, &e.fix);
        EXPECT_EQ(raim.getBlk(24 + 4)->tag[5], kT0 + 5);
        EXPECT_EQ(raim.getBlk(24 + 4)->resid[5], 20.0);
        EXPECT_EQ(raim.getBlk(4)->tag[5], 0u);
        /* A flagged row is not recorded: the first row still counts. */
        Rows f;
        f.lst.tm = kT0 + 6;
        f.add(1, 5, 20.0).bad = 1;
        f.add(0, 5, 10.0);
        raim.calcStats(&f.lst, &f.fix);
        EXPECT_EQ(raim.getBlk(4)->tag[6], kT0 + 6);
        EXPECT_EQ(raim.getBlk(24 + 4)->tag[6], 0u);
    }
    {
        /* Same second again with other values: nothing is overwritten. */
        Rows e;
        e.lst.tm = kT0 + 5;
        e.add(1, 5, 99.0);
        raim.calcStats(&e.lst, &e.fix);
        EXPECT_EQ(raim.getBlk(24 + 4)->resid[5], 20.0);
        EXPECT_EQ(raim.getBlk(24 + 4)->prange[5], kRange - 20.0);
    }
    {
        /* Slot 24 keeps its tag when a second passes without it; slot 23
         * does not. Both were recorded 30 seconds earlier at the same
         * ring index. */
        Rows e;
        e.lst.tm = kT0 + 1;
        e.add(0, 23, 1.0);
        e.add(0, 24, 1.0);
        raim.calcStats(&e.lst, &e.fix);
        Rows f;
        f.lst.tm = kT0 + 31;
        f.add(1, 24, 1.0);
        raim.calcStats(&f.lst, &f.fix);
        EXPECT_EQ(raim.getBlk(22)->tag[1], 0u);
        EXPECT_EQ(raim.getBlk(23)->tag[1], kT0 + 1);
        EXPECT_EQ(raim.getBlk(24 + 23)->tag[1], kT0 + 31);
    }
    {
        /* PRN 0 is PRN 32. */
        Rows e;
        e.lst.tm = kT0 + 7;
        e.add(1, 0, 3.0);
        raim.calcStats(&e.lst, &e.fix);
        EXPECT_EQ(raim.getBlk(55)->tag[7], kT0 + 7);
    }

    /* 30 seconds of 100 m residuals: PRN 5 is flagged, PRN 12 never. */
    double big[30];
    for (double& x : big) x = 100.0;
    raim_t a, b;
    EXPECT_EQ(feed(a, 1, 5, big), 1);
    EXPECT_EQ(b.getBlk(24 + 11)->statValid, 0);
    EXPECT_EQ(feed(b, 1, 12, big), 0);
    EXPECT_EQ(b.getBlk(24 + 11)->statValid, 0);
    EXPECT_EQ(b.getBlk(24 + 11)->resid[3], 100.0) << "recorded, never judged";
}

/* statValid survives both a broken span and clear(), so the last
 * statistics go on judging. clear() empties tags, residuals, mean, sigma
 * and meanSq, but not probInteg, devNorm or the pseudoranges. */
TEST(RaimStats, StatisticsOutliveTheSpanAndClear) {
    double big[30];
    for (int i = 0; i < 30; i++) big[i] = 60.0 + (i % 2);
    raim_t raim;
    EXPECT_EQ(feed(raim, 0, 1, big), 1);
    const double prob = raim.getBlk(0)->probInteg;
    const double dev = raim.getBlk(0)->devNorm;

    /* Thirty seconds later, after a long gap, a clean residual: the slot
     * is still judged by its old mean. */
    Rows e;
    e.lst.tm = kT0 + 90;
    e.add(0, 1, 0.0);
    raim.raimStats(&e.lst, &e.fix);
    EXPECT_EQ(e.rows[0].bad, 1);

    raim.clear();
    const raimSatBlk_t* b = raim.getBlk(0);
    EXPECT_EQ(b->statValid, 1);
    EXPECT_EQ(b->mean, 0.0);
    EXPECT_EQ(b->sigma, 0.0);
    EXPECT_EQ(b->meanSq, 0.0);
    EXPECT_EQ(b->tag[0], 0u);
    EXPECT_EQ(b->resid[1], 0.0);
    EXPECT_EQ(b->probInteg, prob);
    EXPECT_EQ(b->devNorm, dev);
    EXPECT_EQ(b->prange[1], kRange - 61.0);
    /* After clear the mean is 0 and sigma 0: the satellite passes. */
    Rows f;
    f.lst.tm = kT0 + 91;
    f.add(0, 1, 0.0);
    raim.raimStats(&f.lst, &f.fix);
    EXPECT_EQ(f.rows[0].bad, 0);
}
