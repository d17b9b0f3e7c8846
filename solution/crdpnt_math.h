/*
 * Arithmetic shared by the solvers of crdpnt_t: constants, the normal
 * equations, the dilution-of-precision figure and the Earth-rotation
 * correction of a fix.
 *
 * The result rows are packed to 4 bytes, so their doubles may sit on
 * addresses that a double* must not point to. Every solver therefore reads
 * row coordinates through satXyz() into aligned arrays before handing them
 * to r_xyz / r_xyzt.
 */
#ifndef ZELNAV_SOLUTION_CRDPNT_MATH_H
#define ZELNAV_SOLUTION_CRDPNT_MATH_H

#include <cmath>
#include <cstdint>

#include "tbl_crd.h"
#include "tbl_pnt.h"

namespace crdpnt_math {

const double kC = 299792458.0;            /* speed of light, m/s */
/* Earth rotation rates: the GPS value, and the rounded one that the
 * GLONASS and combined fixes use. */
const double kOmegaGps = 7.2921151467e-5;
const double kOmegaGlo = 7.292115e-5;
/* A fix has converged once its correction is shorter than this, m. */
const double kConverged = 1e-4;
/* Passes of the iterated fit before it gives up. */
const int kMaxPasses = 10;

inline void satXyz(const tblCrdSat_t& row, double out[3]) {
    out[0] = row.xyz[0];
    out[1] = row.xyz[1];
    out[2] = row.xyz[2];
}

inline void satVxyz(const tblCrdSat_t& row, double out[3]) {
    out[0] = row.vxyz[0];
    out[1] = row.vxyz[1];
    out[2] = row.vxyz[2];
}

/* Adds one observation (design row h of n elements, residual r) to the
 * augmented normal matrix [H'H | H'r] of n rows and n + 1 columns. */
inline void addNormalRow(int n, const double* h, double r, double* m) {
    const int cols = n + 1;
    for (int i = 0; i < n; i++) {
        for (int k = 0; k < n; k++) m[i * cols + k] += h[i] * h[k];
        m[i * cols + n] += h[i] * r;
    }
}

/* Euclidean length of the n-element correction in column n of a solved
 * augmented matrix. */
inline double correctionNorm(int n, const double* m) {
    double s = 0.0;
    for (int i = 0; i < n; i++) s += m[i * (n + 1) + n] * m[i * (n + 1) + n];
    return std::sqrt(s);
}

/* DOP x 10, truncated toward zero. A figure beyond the 32-bit range, or
 * not a number (a degenerate inverse), is reported as the largest value:
 * the worst geometry, never an undefined conversion. */
inline int32_t dopTimes10(double dop) {
    double v = dop * 10.0;
    if (!(v < 2147483647.0)) return INT32_MAX;
    if (v <= -2147483648.0) return INT32_MIN;
    return (int32_t)v;
}

/* The fit places the receiver in the Earth-fixed frame of the emission
 * epochs; a clock offset dt means the reception really happened dt later,
 * during which the frame turned by omega * dt. */
inline void earthRotation(const double* state, double dt, double omega,
                          tblCrdPnt_t* out) {
    const double a = omega * dt;
    const double ca = std::cos(a), sa = std::sin(a);
    out->xyz[0] = state[0] * ca - state[1] * sa;
    out->xyz[1] = state[0] * sa + state[1] * ca;
    out->xyz[2] = state[2];
}

}  // namespace crdpnt_math

#endif
