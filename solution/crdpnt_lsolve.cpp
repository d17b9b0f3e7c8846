/*
 * The least-squares kernel: Gauss-Jordan elimination of a small augmented
 * normal matrix, and the two range functions that linearise pseudoranges.
 *
 * lsolve works on a copy W of the caller's [N | b] and reduces it to
 * diagonal form; the caller's storage, which starts as [I | 0], undergoes
 * the same row operations and so ends up holding N^-1 once every row is
 * divided by its pivot. The solution column is W's reduced right-hand side
 * divided the same way. The inverse is what gives the dilution of
 * precision, which is why a plain solve would not do.
 */
#include <cmath>
#include <cstring>

#include "solution/crdpnt.h"

int crdpnt_t::lsolve(int n, double* m) {
    if (n < 1 || n > CRDPNT_MAX_UNKNOWNS) return -1;
    const int cols = n + 1;
    double w[CRDPNT_MAX_UNKNOWNS][CRDPNT_MAX_UNKNOWNS + 1];
    for (int i = 0; i < n; i++)
        for (int k = 0; k < cols; k++) w[i][k] = m[i * cols + k];
    std::memset(m, 0, sizeof(double) * n * cols);
    for (int i = 0; i < n; i++) m[i * cols + i] = 1.0;

    for (int j = 0; j < n; j++) {
        /* Partial pivoting; a later row wins only when strictly larger,
         * so of equal candidates the upper one stays. */
        int best = j;
        for (int i = j + 1; i < n; i++)
            if (std::fabs(w[i][j]) > std::fabs(w[best][j])) best = i;
        if (best != j) {
            for (int k = 0; k < cols; k++) {
                double t = w[j][k];
                w[j][k] = w[best][k];
                w[best][k] = t;
                t = m[j * cols + k];
                m[j * cols + k] = m[best * cols + k];
                m[best * cols + k] = t;
            }
        }
        /* The pivot is tested inside the loop over the other rows, so a
         * 1 x 2 system is never tested: a zero coefficient there divides
         * by zero below and yields infinities, as it always has. */
        for (int i = 0; i < n; i++) {
            if (i == j) continue;
            if (std::fabs(w[j][j]) < 1e-15) return -2;
            const double f = w[i][j] / w[j][j];
            for (int k = 0; k < cols; k++) {
                w[i][k] -= f * w[j][k];
                m[i * cols + k] -= f * m[j * cols + k];
            }
        }
    }

    for (int i = 0; i < n; i++) m[i * cols + n] = w[i][n];
    for (int i = 0; i < n; i++)
        for (int k = 0; k < cols; k++) m[i * cols + k] /= w[i][i];
    return 0;
}

double crdpnt_t::r_xyz(double* a, double* b) {
    const double dx = a[0] - b[0];
    const double dy = a[1] - b[1];
    const double dz = a[2] - b[2];
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

double crdpnt_t::r_xyzt(double* sat, double* state) {
    return r_xyz(sat, state) + state[3];
}
