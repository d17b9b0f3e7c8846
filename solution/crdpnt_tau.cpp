/*
 * GLONASS fix with a known receiver clock: the host supplies the clock
 * offset (for instance carried over from a combined fix) and only the
 * three coordinates are estimated, so three satellites are enough.
 *
 * Two things are old behaviour and stay: the final Earth-rotation
 * correction uses the clock offset `dt` left in the record by an earlier
 * solution, not the offset given here, and neither `dt` nor `tau` of the
 * record is written. No velocity follows this fix.
 */
#include <cmath>
#include <cstring>

#include "solution/crdpnt.h"
#include "solution/crdpnt_math.h"

using namespace crdpnt_math;

tblCrdPnt_t* crdpnt_t::getTau(lsttblCrdSat_t* lst, double tau) {
    pnt->actual = 0;
    if (mode == CRDPNT_MODE_GLO) clcCrdPntGloTau(lst, pnt, tau);
    return pnt;
}

void crdpnt_t::clcCrdPntGloTau(lsttblCrdSat_t* lst, tblCrdPnt_t* out,
                               double tau) {
    if (lst->num == 0) return;
    tblCrdSat_t rows[ZEL_NUM_CRDSAT];
    std::memset(rows, 0, sizeof rows);
    const uint32_t n = lst->num < ZEL_NUM_CRDSAT ? lst->num : ZEL_NUM_CRDSAT;
    int count = 0;
    for (uint32_t i = 0; i < n; i++) {
        const tblCrdSat_t& r = lst->tbl[i];
        if (r.sys == 0 && r.bad == 0) rows[count++] = r;
    }
    if (count < 3) return;

    out->numGlo = (uint8_t)count;
    for (int k = 0; k < count; k++) out->lstGlo[k] = rows[k].num;
    out->sys = 0;
    out->numGps = 0;
    std::memset(out->lstGps, 0, sizeof out->lstGps);

    navSolveOneSystemTau(count, rows, out, tau);
}

void crdpnt_t::navSolveOneSystemTau(int n, tblCrdSat_t* rows,
                                    tblCrdPnt_t* out, double tau) {
    double sat[ZEL_NUM_CRDSAT][3];
    if (n > ZEL_NUM_CRDSAT) n = ZEL_NUM_CRDSAT;
    for (int i = 0; i < n; i++) satXyz(rows[i], sat[i]);

    double state[4] = {0.0, 0.0, 0.0, kC * tau}; /* clock term held fixed */
    double dop = 0.0;
    bool converged = false;
    for (int pass = 1; pass <= kMaxPasses; pass++) {
        double m[3 * 4];
        std::memset(m, 0, sizeof m);
        for (int i = 0; i < n; i++) {
            const double rho = r_xyz(sat[i], state);
            const double h[3] = {(state[0] - sat[i][0]) / rho,
                                 (state[1] - sat[i][1]) / rho,
                                 (state[2] - sat[i][2]) / rho};
            addNormalRow(3, h, rows[i].psvd - r_xyzt(sat[i], state), m);
        }
        if (lsolve(3, m) != 0) return;
        dop = std::sqrt(m[0 * 4 + 0] + m[1 * 4 + 1] + m[2 * 4 + 2]);
        if (correctionNorm(3, m) < kConverged) {
            converged = true;
            break;
        }
        for (int k = 0; k < 3; k++) state[k] += m[k * 4 + 3];
    }
    if (!converged) return;

    out->actual = 1;
    out->dop10 = dopTimes10(dop);
    earthRotation(state, out->dt, omegaEOfMode(), out);
}
