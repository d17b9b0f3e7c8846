/*
 * Clock checks: jumps of the receiver clock, known clock shifts, and the
 * GLONASS-GPS time offset of combined fixes.
 *
 * A receiver that steers its clock keeps it near system time by stepping
 * it, typically by a whole millisecond. Every pseudorange of the channels
 * that share that clock then jumps by the same amount (300 km for 1 ms)
 * from one second to the next. A single-system fix absorbs such a step in
 * its clock unknown, but everything that follows a satellite from second
 * to second (smoothing, the residual history, the offset between the two
 * systems when only the channels of one system stepped) must know about
 * it. The order of one epoch is: raimTimeGlo/raimTimeGps on the
 * pseudoranges as measured, then shiftDtGlo/shiftDtGps with the shift the
 * host wants removed, then the satellite computation and the fix, then
 * raimTau on the combined fix.
 *
 * The clock-check area holds one block per satellite (GLONASS slot s at
 * s-1, GPS PRN s at 24+s-1, PRN 0 meaning 32) and one block for the time
 * offset. clear() does not touch it: the clock history belongs to the
 * receiver, not to the statistics that a host may restart.
 */
#include <cmath>

#include "integrity/raim.h"

namespace {

const double kC = 299792458.0;      /* speed of light, m/s */
/* Smallest step taken for a clock jump, m (0.5 microsecond). Range
 * accelerations and code noise leave second differences of a few metres;
 * a smaller step is left to the clock unknown of the fix. */
const double kJumpMin = 150.0;
/* How far one satellite's second difference may be from the common value
 * and still count as showing the same jump, m. */
const double kJumpAgree = 30.0;
/* Largest change of the GLONASS-GPS offset against its recent history, s:
 * the 50 m of the residual gate. The offset of the two system time scales
 * drifts by nanoseconds per day; a step of 50 m is a clock jump in the
 * channels of one system or a fault absorbed by the offset unknown. */
const double kTauGate = 50.0 / kC;
/* Accepted offsets of the last 30 seconds needed before one is judged. */
const int kTauMinHistory = 5;

inline int sysRows(uint32_t num) {
    return num < (uint32_t)ZEL_NUM_SLOTS ? (int)num : ZEL_NUM_SLOTS;
}

/* Median of n values (n >= 1), sorting the array in place. */
double median(double* v, int n) {
    for (int i = 1; i < n; i++) {
        const double x = v[i];
        int j = i - 1;
        while (j >= 0 && v[j] > x) {
            v[j + 1] = v[j];
            j--;
        }
        v[j + 1] = x;
    }
    return n % 2 ? v[n / 2] : 0.5 * (v[n / 2 - 1] + v[n / 2]);
}

}  // namespace

/* The satellites of one system in a converter list, and their blocks. */
struct raim_t::sysView_t {
    int sys;              /* 0 GLONASS, 1 GPS */
    uint8_t jumpBit;      /* RAIM_FLAG_JUMP_GLO or _GPS */
    int first, count;     /* the system's blocks */

    int rows(const lsttblSat_t* lst) const {
        return sysRows(sys == 0 ? lst->numGlo : lst->numGps);
    }
    tblHdr_t* hdr(lsttblSat_t* lst, int i) const {
        return sys == 0 ? lst->tblGlo[i].tblHdr : lst->tblGps[i].tblHdr;
    }
    tblObs_t* obs(lsttblSat_t* lst, int i) const {
        return sys == 0 ? lst->tblGlo[i].tblObs : lst->tblGps[i].tblObs;
    }
    /* Block of a satellite number, -1 when the system has none for it. */
    int block(uint8_t num) const {
        const int n = (sys == 1 && num == 0) ? 32 : num;
        return (n >= 1 && n <= count) ? first + n - 1 : -1;
    }
};

const raim_t::sysView_t raim_t::kViewGlo = {0, RAIM_FLAG_JUMP_GLO, 0, RAIM_NUM_GLO};
const raim_t::sysView_t raim_t::kViewGps = {1, RAIM_FLAG_JUMP_GPS, RAIM_NUM_GLO, RAIM_NUM_GPS};

/*
 * Clock jump of one system between consecutive seconds.
 *
 * Each satellite's C1 pseudorange is kept per second in its clock-check
 * block. With the seconds t-2, t-1 and t present, the second difference
 * P(t) - 2 P(t-1) + P(t-2) is the change of the range rate: a few metres
 * at most for a satellite seen from the ground, and the size of the step
 * when the receiver clock stepped at t. The system's clock jumped at t
 * when at least two satellites have a second difference, their median J
 * is at least 150 m, and more than half of them (and at least two) are
 * within 30 m of J. One satellite alone, or a minority, is a measurement
 * fault and is left to the integrity tests.
 *
 * A jump is recorded: the flag bit of the system is set (cleared when the
 * second shows none), J is written to prange2[t] of every satellite that
 * has a sample at t and to the leading double of its statistics block (0
 * there when there was no jump), and the earlier seconds of every block of
 * the system are carried into the new clock (J added), so that the next
 * second differences do not show the step again, with the opposite sign.
 *
 * A satellite without a valid C1 at t gets no sample (tag 0). A second call
 * for a second already recorded stores nothing and leaves the verdict of
 * the first.
 */
void raim_t::raimTime(const sysView_t& v, lsttblSat_t* lst, unsigned int t) {
    if (lst == nullptr) return;
    const uint32_t k = t % RAIM_SPAN;
    const uint32_t k1 = (uint32_t)(t - 1u) % RAIM_SPAN;
    const uint32_t k2 = (uint32_t)(t - 2u) % RAIM_SPAN;

    bool sampled[RAIM_NUM_BLK] = {};
    double dd[ZEL_NUM_SLOTS];
    int nd = 0;
    bool repeat = false;

    const int n = v.rows(lst);
    for (int i = 0; i < n; i++) {
        const tblHdr_t* hdr = v.hdr(lst, i);
        const tblObs_t* obs = v.obs(lst, i);
        if (hdr == nullptr || obs == nullptr || obs->actual[0] != 1) continue;
        const int b = v.block(hdr->num);
        if (b < 0 || sampled[b]) continue;
        sampled[b] = true;
        raimSatBlk_t& B = tmBlk[b];
        if (B.tag[k] == t) {
            repeat = true;
            continue;
        }
        B.tag[k] = t;
        B.prange[k] = obs->psvd[0];
        B.prange2[k] = 0.0;
        B.resid[k] = 0.0;
        if (B.tag[k1] == (uint32_t)(t - 1u) && B.tag[k2] == (uint32_t)(t - 2u)) {
            B.resid[k] = B.prange[k] - 2.0 * B.prange[k1] + B.prange[k2];
            dd[nd++] = B.resid[k];
        }
    }
    for (int b = v.first; b < v.first + v.count; b++)
        if (!sampled[b] && tmBlk[b].tag[k] != t) tmBlk[b].tag[k] = 0;
    if (repeat) return;

    bool jump = false;
    double J = 0.0;
    if (nd >= 2) {
        J = median(dd, nd);
        int agree = 0;
        for (int i = 0; i < nd; i++)
            if (std::fabs(dd[i] - J) <= kJumpAgree) agree++;
        jump = std::fabs(J) >= kJumpMin && agree >= 2 && 2 * agree > nd;
    }

    if (jump) {
        flag |= v.jumpBit;
        for (int b = v.first; b < v.first + v.count; b++) {
            raimSatBlk_t& B = tmBlk[b];
            for (uint32_t i = 0; i < RAIM_SPAN; i++)
                if (i != k && B.tag[i] != 0) B.prange[i] += J;
            if (sampled[b]) B.prange2[k] = J;
        }
    } else {
        flag &= (uint8_t)~v.jumpBit;
    }
    for (int b = v.first; b < v.first + v.count; b++)
        if (sampled[b]) blk[b].jump = jump ? J : 0.0;
}

void raim_t::raimTimeGlo(lsttblSat_t* lst, unsigned int t) {
    raimTime(kViewGlo, lst, t);
}

void raim_t::raimTimeGps(lsttblSat_t* lst, unsigned int t) {
    raimTime(kViewGps, lst, t);
}

/*
 * Removes a known receiver clock shift of dtShift seconds from every valid
 * pseudorange of the system (all five signal places): P -= c * dtShift,
 * for a clock that reads dtShift ahead. Carrier phases and Doppler values
 * are left alone: the position fix works on pseudoranges, and the phase
 * users follow the phase themselves. The shift removed (m) is kept in the
 * leading double of the satellite's clock-check block. Call it after the
 * jump check of the same second, which works on the pseudoranges as
 * measured.
 */
void raim_t::shiftDt(const sysView_t& v, lsttblSat_t* lst, double dtShift) {
    if (lst == nullptr) return;
    const double d = kC * dtShift;
    const int n = v.rows(lst);
    for (int i = 0; i < n; i++) {
        const tblHdr_t* hdr = v.hdr(lst, i);
        tblObs_t* obs = v.obs(lst, i);
        if (obs == nullptr) continue;
        for (int s = 0; s < ZEL_NUM_SIG; s++)
            if (obs->actual[s] == 1) obs->psvd[s] -= d;
        const int b = hdr ? v.block(hdr->num) : -1;
        if (b >= 0) tmBlk[b].jump = d;
    }
}

void raim_t::shiftDtGlo(lsttblSat_t* lst, double dtShift) {
    shiftDt(kViewGlo, lst, dtShift);
}

void raim_t::shiftDtGps(lsttblSat_t* lst, double dtShift) {
    shiftDt(kViewGps, lst, dtShift);
}

/*
 * Judges the GPS-minus-GLONASS offset `tau` of a combined fix (actual 1,
 * sys 10) of the second lst->tm against the offsets accepted over the
 * previous 29 seconds.
 *
 * With at least 5 accepted offsets in that window, their mean is the
 * reference: an offset more than 50 m / c (about 167 ns) away from it is
 * rejected. A rejected offset sets RAIM_FLAG_TAU and is not added to the
 * history, so a faulty second does not move the reference; it is kept in
 * prange2 for the record. An accepted offset (or any offset while the
 * history is too short to judge by) clears the flag and joins the history.
 * After a real step of the offset the old history has run out 25 seconds
 * later; the new level is then accepted and becomes the reference.
 *
 * A second call for a second already in the history judges again without
 * storing. Returns the offset judged (s); 0.0, with the flag cleared, when
 * there is no combined fix to judge.
 */
double raim_t::raimTau(lsttblCrdSat_t* lst, tblCrdPnt_t* pnt) {
    if (lst == nullptr || pnt == nullptr || lst->num == 0 || pnt->actual != 1 ||
        pnt->sys != 10) {
        flag &= (uint8_t)~RAIM_FLAG_TAU;
        return 0.0;
    }
    const uint32_t t = lst->tm;
    const uint32_t k = t % RAIM_SPAN;
    const double tau = pnt->tau;
    raimSatBlk_t& B = tmBlk[RAIM_BLK_TAU];

    int n = 0;
    double sum = 0.0;
    for (int i = 0; i < RAIM_SPAN; i++) {
        const uint32_t age = t - B.tag[i];
        if (B.tag[i] != 0 && age >= 1 && age <= RAIM_SPAN - 1) {
            n++;
            sum += B.prange[i];
        }
    }

    bool reject = false;
    if (n >= kTauMinHistory) {
        const double ref = sum / n;
        double var = 0.0;
        for (int i = 0; i < RAIM_SPAN; i++) {
            const uint32_t age = t - B.tag[i];
            if (B.tag[i] != 0 && age >= 1 && age <= RAIM_SPAN - 1)
                var += (B.prange[i] - ref) * (B.prange[i] - ref) / n;
        }
        B.statValid = 1;
        B.mean = ref;
        B.sigma = std::sqrt(var);
        B.resid[k] = tau - ref;
        reject = std::fabs(tau - ref) > kTauGate;
    }

    if (reject) {
        flag |= RAIM_FLAG_TAU;
        B.prange2[k] = tau;
    } else {
        flag &= (uint8_t)~RAIM_FLAG_TAU;
        if (B.tag[k] != t) {
            B.tag[k] = t;
            B.prange[k] = tau;
        }
    }
    return tau;
}
