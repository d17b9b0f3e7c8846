/*
 * The 30-second test: one residual per satellite and second, and for every
 * satellite whose last 30 seconds are complete, the mean and scatter of
 * those residuals, a probability from a truncated error-function series
 * and the normalised deviation of the newest residual. raimStats flags a
 * satellite whose mean or scatter is beyond its limit; unlike the
 * snapshot test it catches a bias that grows too slowly to stand out in
 * any one second.
 *
 * The blocks are addressed as one array of 56: GLONASS slot s at s-1,
 * GPS PRN s at 24+s-1. The walk over s = 1..32 and the statistics of
 * block s-1 are old rules kept as they are, with their consequences:
 *
 *  - one number s records either the GLONASS slot or the GPS PRN of that
 *    number in an epoch, whichever comes first in the list, and zeroes the
 *    other's tag;
 *  - statistics are computed for blocks 0..31 only: GLONASS slots 1..24
 *    and GPS PRN 1..8; GPS PRN 9..32 never get any and are never flagged;
 *  - statValid is never reset, so a satellite whose span broke off is
 *    still judged by its last statistics;
 *  - raimStats reads the GPS block of a row numbered 0 at 24-1, which is
 *    GLONASS slot 24's block.
 */
#include <cmath>

#include "integrity/raim.h"

namespace {

const double kC = 299792458.0;          /* speed of light, m/s */
const double kMeanMax = 50.0;           /* largest acceptable |mean|, m */
const double kSigmaMax = 18.0;          /* largest acceptable sigma, m */
const double kSeriesStop = 1e-6;
const double kSqrt2 = 1.4142135623730951;
const double kTwoSqrtPi = 3.5449077018110318;

inline int rowsOf(const lsttblCrdSat_t* lst) {
    return lst->num < (uint32_t)ZEL_NUM_CRDSAT ? (int)lst->num : ZEL_NUM_CRDSAT;
}

}  // namespace

void raim_t::storeSample(raimSatBlk_t& b, uint32_t t, const tblCrdSat_t& row,
                         const double* pos, double dt) {
    const uint32_t k = t % RAIM_SPAN;
    if (b.tag[k] == t) return;   /* this second is already recorded */
    double sat[3] = {row.xyz[0], row.xyz[1], row.xyz[2]};
    b.prange[k] = row.psvd;
    b.prange2[k] = row.dop;
    b.resid[k] = calcDist(pos, sat) + kC * dt - row.psvd;
    b.tag[k] = t;
}

void raim_t::calcStats(const lsttblCrdSat_t* lst, const tblCrdPnt_t* pnt) {
    const uint32_t t = lst->tm;
    const uint32_t k = t % RAIM_SPAN;
    const int n = rowsOf(lst);
    const double pos[3] = {pnt->xyz[0], pnt->xyz[1], pnt->xyz[2]};
    const double dt = pnt->dt;

    for (uint32_t s = 1; s <= 32; s++) {
        raimSatBlk_t& glo = blk[s - 1];
        raimSatBlk_t& gps = blk[RAIM_NUM_GLO + s - 1];

        const tblCrdSat_t* found = nullptr;
        for (int j = 0; j < n && !found; j++) {
            const tblCrdSat_t& row = lst->tbl[j];
            if (row.bad != 0) continue;
            if (row.sys == 0 && row.num == s) found = &row;
            if (row.sys == 1 && (row.num == 0 ? 32u : row.num) == s) found = &row;
        }

        if (found && found->sys == 0) {
            storeSample(glo, t, *found, pos, dt);
            gps.tag[k] = 0;
        } else if (found) {
            storeSample(gps, t, *found, pos, dt);
            if (s < 24) glo.tag[k] = 0;   /* slot 24 keeps its tag */
        } else {
            if (s < 24) glo.tag[k] = 0;
            gps.tag[k] = 0;
        }

        if (!isCmpltGlo(s, t)) continue;
        raimSatBlk_t& b = blk[s - 1];
        b.statValid = 1;
        b.mean = 0.0;
        b.sigma = 0.0;
        b.meanSq = 0.0;
        for (int i = 0; i < RAIM_SPAN; i++) b.mean += b.resid[i] / 30.0;
        b.meanSq = b.mean * b.mean;
        double var = 0.0;
        for (int i = 0; i < RAIM_SPAN; i++)
            var += (b.resid[i] - b.mean) * (b.resid[i] - b.mean) / 30.0;
        b.sigma = std::sqrt(var);
        b.probInteg = calcProbInteg(0.0, b.sigma, b.mean, std::fabs(b.resid[k]));
        b.devNorm = (b.resid[k] - b.mean) / b.sigma;
    }
}

double raim_t::raimStats(lsttblCrdSat_t* lst, tblCrdPnt_t* pnt) {
    calcStats(lst, pnt);
    const int n = rowsOf(lst);
    for (int j = 0; j < n; j++) {
        tblCrdSat_t& row = lst->tbl[j];
        if (row.bad != 0) continue;
        int b;
        if (row.sys == 0)
            b = (int)row.num - 1;
        else if (row.sys == 1)
            b = RAIM_NUM_GLO + (int)row.num - 1;
        else
            continue;
        /* A number beyond the blocks has no history to be judged by. */
        if (b < 0 || b >= RAIM_NUM_BLK) continue;
        if (blk[b].statValid != 1) continue;
        if (std::fabs(blk[b].mean) > kMeanMax || blk[b].sigma > kSigmaMax) row.bad = 1;
    }
    return 0.0;
}

/*
 * The Maclaurin series of the error function without its 2/sqrt(pi). The
 * stop test compares the signed term with 1e-6, so for x > 1e-6 the sum
 * ends after x - x^3/3 and for x <= 1e-6 after x: a coarse figure, and the
 * one the probability has always been computed with. The denominator is an
 * unsigned 64-bit product; only a NaN argument runs the series to n = 20,
 * where that product wraps.
 */
double raim_t::erf2(double x) const {
    double sum = 0.0;
    for (int n = 0; n <= 20; n++) {
        const uint64_t den = fact[n] * (uint64_t)(2 * n + 1);
        const double term = std::pow(-1.0, n) * std::pow(x, 2 * n + 1) / (double)den;
        sum += term;
        if (term < kSeriesStop) break;
    }
    return sum;
}

double raim_t::calcProbInteg(double a, double s, double m, double w) const {
    const double q = 1.0 / (kSqrt2 * s);
    const double e1 = erf2(q * (w + a));
    const double e2 = erf2(q * (w - a));
    const double e3 = erf2(q * (w + a + m));
    const double e4 = erf2(q * (w - a - m));
    return ((e1 + 1.0) + (e2 + 1.0)) / kTwoSqrtPi - (1.0 + e4 + (e3 + 1.0)) / kTwoSqrtPi;
}
