/*
 * Integrity monitoring in `zelnav solve --raim`, and the fault injection
 * that demonstrates it (`--inject`).
 *
 * Every epoch, between the satellite computation and the fix:
 *   1. the injected faults are added to the corrected pseudoranges;
 *   2. raimComb judges the rows; the rows it excludes (its 50 m gate, or
 *      the one left out by an accepted exclusion) stay flagged, so the
 *      pipeline's fix that follows is made without them.
 * After the fix:
 *   3. raimStats adds the epoch's residuals against that fix to its
 *      30-second history and flags the satellites whose history fails;
 *      when it flags one, the fix is made again without it.
 *
 * The fix reported is that one, and only when raimComb accepted the epoch
 * (code 0) and handed out a fix. Its own fix is not reported as it is:
 * when the gate removes a satellite but the rest is consistent, raimComb
 * accepts the all-in-view fix, which was still made with the faulty
 * satellite; the flags it leaves are what the host acts on. With code -32
 * or -128, or a fix that met a limit exactly, the epoch has no fix.
 * raimStats runs on epochs that have a fix: without one its residuals
 * would measure nothing.
 */
#ifndef ZELNAV_SOLVE_RAIM_H
#define ZELNAV_SOLVE_RAIM_H

#include <string>
#include <vector>

#include "solve_pipeline.h"
#include "zel.h"

namespace solve {

/* A pseudorange fault: from epoch `from` on (0 = the first epoch of the
 * log) the corrected pseudorange of one satellite grows by
 * bias + rate * (epoch - from) metres. */
struct Injection {
    int sys = 1;            /* 0 GLONASS, 1 GPS */
    int num = 0;            /* slot or PRN */
    long from = 0;
    double bias = 0.0;      /* m */
    double rate = 0.0;      /* m per epoch */
};

/* "SYS:NUM:FROM:BIAS[:RATE]" with SYS G or R ("G24:..." for "G:24:..."
 * too); false when malformed. */
bool parseInjection(const std::string& text, Injection* out);

/* "G24", "R14". */
std::string satName(int sys, int num);

class RaimCheck {
public:
    /* raim: run the monitor (else only inject). maxSpeed in m/s. */
    RaimCheck(Pipeline& pl, bool raim, double maxSpeed, const std::vector<Injection>& faults);
    ~RaimCheck();
    RaimCheck(const RaimCheck&) = delete;
    RaimCheck& operator=(const RaimCheck&) = delete;

    /* After every epoch the pipeline ran: the statistics and the fix to
     * report (nullptr when the epoch has none). */
    const tblCrdPnt_t* finish();

    /* The last epoch: whether the monitor ran, its raimComb code, the
     * satellites excluded by raimComb and by raimStats ("G24 R14"). */
    bool checked() const { return checked_; }
    int outcome() const { return outcome_; }
    const std::string& excludedComb() const { return comb_; }
    const std::string& excludedStats() const { return stats_; }

    /* Epochs per raimComb code, and satellite-epochs excluded. */
    long accepted = 0, noExclusion = 0, tooFew = 0;
    long combExclusions = 0, statsExclusions = 0;
    /* Exclusions per satellite over the run, "G24 x200 R05 x3"; of
     * raimComb (stats false) or of raimStats (stats true); "none". */
    std::string tally(bool stats) const;

private:
    static void hook(lsttblCrdSat_t* rows, void* self);
    void beforeFix(lsttblCrdSat_t* rows);
    static std::string flagged(const lsttblCrdSat_t* rows, const uint8_t* before, long* count,
                               long tally[2][33]);

    Pipeline& pl_;
    bool raim_;
    double maxSpeed_;
    std::vector<Injection> faults_;
    int* monitor_ = nullptr;
    tblCrdPnt_t rec_;           /* raimComb's fix: in, the previous; out, this epoch's */
    lsttblCrdSat_t* rows_ = nullptr;
    long epoch_ = 0;
    long checkedEpoch_ = -1;    /* the epoch the monitor last ran on */
    bool checked_ = false;
    int outcome_ = 0;
    std::string comb_, stats_;
    long tallyComb_[2][33] = {};
    long tallyStats_[2][33] = {};
};

}  // namespace solve

#endif
