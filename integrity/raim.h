/*
 * raim_t: the integrity monitor of the navigation processor.
 *
 * It judges the position solutions of crdpnt_t and the measurements under
 * them, in four ways:
 *
 *   raimComb     the snapshot test: solve with every usable satellite,
 *                judge the scatter of the pseudorange residuals and the
 *                speed of the fix, and when that fails try every solution
 *                that leaves out one satellite and keep the best
 *                (raim_comb.cpp);
 *   raimStats    the 30-second test: keep one residual per satellite and
 *                second and exclude a satellite whose recent residuals
 *                show a bias or a scatter beyond fixed limits
 *                (raim_stats.cpp);
 *   raimTime*    the clock checks: find a jump of the receiver clock that
 *                all satellites of one system show between two seconds,
 *                remove a known clock shift, and judge the GLONASS-GPS
 *                time offset of combined fixes against its recent history
 *                (raim_time.cpp);
 *   raimSat      the screening of the tracked satellites against the
 *                almanac prediction or the reported elevations, before
 *                the clock checks of the same second (raim_sat.cpp).
 *
 * State lives in fixed arrays inside the object, so nothing is allocated
 * per epoch. The only owned pointer is the private crdpnt_t that raimComb
 * solves with; it is created by the constructor and freed by the
 * destructor.
 *
 * Units: metres, seconds, metres per second.
 */
#ifndef ZELNAV_INTEGRITY_RAIM_H
#define ZELNAV_INTEGRITY_RAIM_H

#include <stdint.h>

#include "solution/crdpnt.h"
#include "tbl_crd.h"
#include "tbl_pnt.h"
#include "tbl_prg.h"
#include "tbl_sat.h"

/* Seconds held by every history ring. */
#define RAIM_SPAN 30
/* History blocks: GLONASS slots 1..24, then GPS PRN 1..32. */
#define RAIM_NUM_GLO 24
#define RAIM_NUM_GPS 32
#define RAIM_NUM_BLK (RAIM_NUM_GLO + RAIM_NUM_GPS)
/* The clock-check area: one block per satellite as above, then one block
 * for the GLONASS-GPS time offset of combined fixes. */
#define RAIM_BLK_TAU RAIM_NUM_BLK
#define RAIM_NUM_TMBLK (RAIM_NUM_BLK + 1)

/* Return codes of raimComb. */
#define RAIM_OK 0
#define RAIM_NO_EXCLUSION (-32)
#define RAIM_TOO_FEW (-128)

/* Bits of the monitor's flag byte (cleared by clear). */
#define RAIM_FLAG_JUMP_GLO 0x01  /* last raimTimeGlo found a clock jump */
#define RAIM_FLAG_JUMP_GPS 0x02  /* last raimTimeGps found a clock jump */
#define RAIM_FLAG_TAU 0x04       /* last raimTau rejected the time offset */

/*
 * The history of one satellite. Ring index = time tag mod 30; an entry is
 * valid for the second its tag names, and a tag of 0 marks a second
 * without a sample.
 *
 * In the statistics blocks, prange is the corrected pseudorange, resid the
 * residual against the fix, prange2 the Doppler of the row; the leading
 * double `jump` is the receiver clock jump (m) that the clock check found
 * in this satellite's pseudorange at its latest sample, 0 when none.
 *
 * In the clock-check blocks, prange is the pseudorange as measured (C1,
 * before any shift) carried into the present receiver clock, resid its
 * second difference over the last three seconds, prange2 the clock jump
 * found at that second, and `jump` the shift (m) that shiftDt removed from
 * the satellite at its last call. The time-offset block keeps the accepted
 * offsets (s) in prange, the rejected ones in prange2, their deviation
 * from the reference in resid, and the reference in mean and sigma.
 */
struct raimSatBlk_t {
    uint8_t spare[2];
    uint8_t statValid;             /* 1 once statistics were computed; never reset */
    double jump;
    uint32_t tag[RAIM_SPAN];
    double prange[RAIM_SPAN];
    double resid[RAIM_SPAN];
    double prange2[RAIM_SPAN];
    double mean;                   /* m */
    double sigma;                  /* m */
    double meanSq;                 /* m^2 */
    double probInteg;
    double devNorm;                /* newest residual's deviation, in sigmas */
};

class raim_t {
public:
    raim_t();
    ~raim_t();
    raim_t(const raim_t&) = delete;
    raim_t& operator=(const raim_t&) = delete;

    /* Forgets the statistics: tags, residuals, mean, sigma, meanSq and the
     * leading double of the 56 satellite blocks, and the flag byte; then
     * rebuilds the factorials. Pseudorange rings, probInteg, devNorm,
     * statValid and the clock-check area stay. */
    void clear();

    /* Snapshot test of one epoch; 0, -32 or -128. See raim_comb.cpp. */
    int raimComb(lsttblCrdSat_t* lst, tblCrdPnt_t* pnt, double maxSpd, int mode);
    /* Euclidean distance between two 3-vectors. */
    static double calcDist(const double* a, const double* b);
    /* Whether the tags of block slot-1 hold the seconds t-29 .. t-2. */
    bool isCmpltGlo(unsigned long slot, unsigned long t) const;

    /* 30-second test. raimStats records this epoch, then flags the
     * satellites that fail; it always returns 0.0. */
    void calcStats(const lsttblCrdSat_t* lst, const tblCrdPnt_t* pnt);
    double raimStats(lsttblCrdSat_t* lst, tblCrdPnt_t* pnt);
    /* The error-function series without its factor 2/sqrt(pi). */
    double erf2(double x) const;
    double calcProbInteg(double a, double s, double m, double w) const;

    /* Clock checks. See raim_time.cpp. */
    double raimTau(lsttblCrdSat_t* lst, tblCrdPnt_t* pnt);
    void raimTimeGlo(lsttblSat_t* lst, unsigned int t);
    void raimTimeGps(lsttblSat_t* lst, unsigned int t);
    void shiftDtGlo(lsttblSat_t* lst, double dtShift);
    void shiftDtGps(lsttblSat_t* lst, double dtShift);

    /* Screening of one second: raimUmGlo / raimUmGps invalidate the
     * observations of the satellites below umMin (degrees) by the
     * prediction prg, or by the reported elevations when prg is null.
     * See raim_sat.cpp. */
    void raimSat(lsttblSat_t* lst, const lsttblPrgSat* prg, unsigned int t, double umMin,
                 double dtShift, unsigned int mode);
    void raimUmGlo(lsttblSat_t* lst, const lsttblPrgSat* prg, double umMin);
    void raimUmGps(lsttblSat_t* lst, const lsttblPrgSat* prg, double umMin);

    /* Read access for hosts and tests. */
    const raimSatBlk_t* getBlk(int i) const { return &blk[i]; }
    const raimSatBlk_t* getTmBlk(int i) const { return &tmBlk[i]; }
    uint8_t getFlag() const { return flag; }
    uint64_t getFact(int n) const { return fact[n]; }

private:
    /* One system's view of the converter list, for the clock checks. */
    struct sysView_t;
    static const sysView_t kViewGlo, kViewGps;
    void raimTime(const sysView_t& sys, lsttblSat_t* lst, unsigned int t);
    void shiftDt(const sysView_t& sys, lsttblSat_t* lst, double dtShift);

    /* Records one sample into a statistics block unless that second is
     * already there. */
    void storeSample(raimSatBlk_t& b, uint32_t t, const tblCrdSat_t& row,
                     const double* pos, double dt);

    uint64_t fact[21];
    raimSatBlk_t blk[RAIM_NUM_BLK];      /* GLONASS slot-1, then 24 + PRN-1 */
    raimSatBlk_t tmBlk[RAIM_NUM_TMBLK];  /* the clock-check area */
    uint8_t flag;
    crdpnt_t* crdpnt;
};

#endif
