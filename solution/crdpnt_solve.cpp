/*
 * The position solvers: iterated linearised least squares from the centre
 * of the Earth.
 *
 * Each pass predicts every pseudorange from the current state, forms the
 * normal equations of the residuals and solves them with lsolve, whose
 * inverse gives the dilution of precision. Ten passes are always enough
 * from the Earth's centre for satellites at GPS or GLONASS altitude; a
 * fit that still moves after ten is abandoned.
 *
 * The two solvers differ on purpose in two ways that hosts depend on:
 *   - one system stops when the correction is small and does not apply
 *     that last correction; two systems always apply it first;
 *   - one system's DOP is sqrt(q00 + q11 + q22) (position only); two
 *     systems' is sqrt(q00^2 + ... + q44^2), the squared diagonal over all
 *     five unknowns, clocks included.
 */
#include <cmath>
#include <cstring>

#include "solution/crdpnt.h"
#include "solution/crdpnt_math.h"

using namespace crdpnt_math;

void crdpnt_t::navSolveOneSystem(int n, tblCrdSat_t* rows,
                                 tblCrdPnt_t* out) {
    double sat[ZEL_NUM_CRDSAT][3];
    if (n > ZEL_NUM_CRDSAT) n = ZEL_NUM_CRDSAT;
    for (int i = 0; i < n; i++) satXyz(rows[i], sat[i]);

    double state[4] = {0.0, 0.0, 0.0, 0.0}; /* X, Y, Z, c * dt */
    double dop = 0.0;
    bool converged = false;
    for (int pass = 1; pass <= kMaxPasses; pass++) {
        double m[4 * 5];
        std::memset(m, 0, sizeof m);
        for (int i = 0; i < n; i++) {
            const double rho = r_xyz(sat[i], state);
            const double h[4] = {(state[0] - sat[i][0]) / rho,
                                 (state[1] - sat[i][1]) / rho,
                                 (state[2] - sat[i][2]) / rho, 1.0};
            addNormalRow(4, h, rows[i].psvd - r_xyzt(sat[i], state), m);
        }
        if (lsolve(4, m) != 0) return;
        dop = std::sqrt(m[0 * 5 + 0] + m[1 * 5 + 1] + m[2 * 5 + 2]);
        if (correctionNorm(4, m) < kConverged) {
            converged = true;
            break;
        }
        for (int k = 0; k < 4; k++) state[k] += m[k * 5 + 4];
    }
    if (!converged) return;

    out->dt = state[3] / kC;
    out->actual = 1;
    out->dop10 = dopTimes10(dop);
    earthRotation(state, out->dt, omegaEOfMode(), out);
}

/*
 * Both systems: a fifth unknown c * delta applies to the GPS rows only. A
 * weak pseudo-observation (0, 0, 0, 0, w) with residual +w * c * delta
 * keeps the normal matrix regular while the geometry of one system alone
 * could leave the offset undetermined; its weight grows by 1e-4 with every
 * pass. The residual's sign is positive, as the receiver has always
 * computed it.
 */
void crdpnt_t::navSolveTwoSystem(int n, tblCrdSat_t* rows,
                                 tblCrdPnt_t* out) {
    double sat[ZEL_NUM_CRDSAT][3];
    if (n > ZEL_NUM_CRDSAT) n = ZEL_NUM_CRDSAT;
    for (int i = 0; i < n; i++) satXyz(rows[i], sat[i]);

    double state[5] = {0.0, 0.0, 0.0, 0.0, 0.0}; /* X, Y, Z, c*dt, c*delta */
    double w = 1e-8;
    double dop = 0.0;
    bool converged = false;
    for (int pass = 1; pass <= kMaxPasses; pass++) {
        double m[5 * 6];
        std::memset(m, 0, sizeof m);
        for (int i = 0; i < n; i++) {
            const double s = rows[i].sys == 1 ? 1.0 : 0.0;
            const double rho = r_xyz(sat[i], state);
            const double h[5] = {(state[0] - sat[i][0]) / rho,
                                 (state[1] - sat[i][1]) / rho,
                                 (state[2] - sat[i][2]) / rho, 1.0, s};
            const double r =
                rows[i].psvd - (r_xyzt(sat[i], state) + s * state[4]);
            addNormalRow(5, h, r, m);
        }
        const double hp[5] = {0.0, 0.0, 0.0, 0.0, w};
        addNormalRow(5, hp, w * state[4], m);

        if (lsolve(5, m) != 0) return;
        double q = 0.0;
        for (int k = 0; k < 5; k++) q += m[k * 6 + k] * m[k * 6 + k];
        dop = std::sqrt(q);
        for (int k = 0; k < 5; k++) state[k] += m[k * 6 + 5];
        if (correctionNorm(5, m) < kConverged) {
            converged = true;
            break;
        }
        w += 1e-4;
    }
    if (!converged) return;

    out->dt = state[3] / kC;
    out->actual = 1;
    out->dop10 = dopTimes10(dop);
    /* The combined fix is always carried through the GLONASS rate. */
    earthRotation(state, out->dt, kOmegaGlo, out);
    out->tau = state[4] / kC;
}
