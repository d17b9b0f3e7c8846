/*
 * The library's filters in `zelnav solve`: observation smoothing
 * (--smooth), static averaging (--static) and the position filter
 * (--filter). They share one filter handle; each works on its own part of
 * the epoch and any of them can run alone or with the others.
 *
 *  --smooth  Before the satellite computation, KalmanFilterObs0 smooths
 *            the pseudoranges, Doppler values and carrier phases of the
 *            GLONASS satellites in the converter's list, in place. GPS
 *            satellites are never smoothed.
 *  --static  Every fix the epoch reports is handed (as a copy) to
 *            staticFilter. The averaging starts at the first fix: its
 *            time less one second is the start, so the first fix is the
 *            first step. The averaged position is reported at the end of
 *            the run; the CSV keeps the fixes themselves.
 *  --filter  Every epoch goes through KalmanFilterCrdPnt0, also an epoch
 *            without a fix (the filter then predicts, while it runs), and
 *            the filter's record is what the epoch reports.
 *
 * Static averaging parameters (--static-gain, --static-epochs): the gain
 * of each step falls linearly from 1 at the start to the end gain after
 * the given number of epochs and stays there, so the end gain sets the
 * memory of the average (0.01: about 100 s). The same end gain is used
 * for the coordinates, the clock offset and the time offset. Fixes with a
 * DOP above 10 are left out.
 */
#ifndef ZELNAV_SOLVE_FILTER_H
#define ZELNAV_SOLVE_FILTER_H

#include <cstdio>

#include "solve_pipeline.h"
#include "solve_report.h"
#include "zel.h"

namespace solve {

struct FilterOptions {
    bool smooth = false;
    bool average = false;            /* --static */
    bool filter = false;
    double staticGain = 0.01;        /* end gain, 1e-9..1 */
    unsigned int staticEpochs = 60;  /* epochs until the end gain, 1..1e9 */
    unsigned int staticDopMax = 10;  /* largest DOP of a fix averaged in */
};

class FilterStage {
public:
    /* ref: the known WGS-84 position, or null when there is none. */
    FilterStage(Pipeline& pl, const FilterOptions& opt, const double* ref);
    ~FilterStage();
    FilterStage(const FilterStage&) = delete;
    FilterStage& operator=(const FilterStage&) = delete;

    /* After every epoch the pipeline ran, with the fix the epoch reports
     * (null when it has none): averages it in, filters it, and returns
     * the fix to report instead (the filter's record with --filter, else
     * `fix` itself). */
    const tblCrdPnt_t* finish(const tblCrdPnt_t* fix);
    /* The epoch just finished is reported: counts its unfiltered fix and
     * its running average against the known position. */
    void reported();
    /* Summary lines on `err`. */
    void summary(std::FILE* err) const;

    /* staticFilter codes of the run: 0 averaged in, -8 coarse step, the
     * others refused (wrong system, DOP, gap ...). */
    long averaged = 0, coarse = 0, refused = 0;
    /* Epochs the filter reported a position for without a fix. */
    long predicted = 0;
    /* The final average, WGS-84; valid when averaged > 0. */
    double average[3] = {0.0, 0.0, 0.0};
    /* Its distance from the known position; 0 without one. */
    double averageError() const;
    /* Accuracy of the unfiltered fixes (with --filter) and of the
     * running average at the reported epochs where it stepped. */
    const Accuracy& raw() const { return raw_; }
    const Accuracy& running() const { return running_; }

private:
    static void smoothHook(lsttblSat_t* lst, void* self);
    void averageIn(const tblCrdPnt_t* fix);

    Pipeline& pl_;
    FilterOptions opt_;
    bool hasRef_;
    double ref_[3] = {0.0, 0.0, 0.0};
    int* h_;
    bool started_ = false;       /* initStatic called */
    int initCode_ = 0;           /* what it returned */
    int lastCode_ = 1;           /* staticFilter code of this epoch; 1 none */
    bool lastPredicted_ = false; /* this epoch's filter output is a prediction */
    const tblCrdPnt_t* rawFix_ = nullptr;
    Accuracy raw_, running_;
};

}  // namespace solve

#endif
