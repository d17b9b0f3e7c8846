/*
 * Dilution of precision of a predicted constellation: the geometry of the
 * lines of sight in the local east-north-up frame, with one clock unknown
 * per satellite system (GLONASS and GPS keep different system times, so a
 * receiver that uses both solves for both clocks).
 */
#include <cmath>
#include <utility>

#include "sky.h"

namespace sky {

namespace {

const double kRad = 3.141592653589793 / 180.0;
const int kMaxUnknowns = 5;

/* Inverts the symmetric n x n matrix `m` in place by Gauss-Jordan with
 * partial pivoting; false when it is singular. */
bool invert(double m[kMaxUnknowns][kMaxUnknowns], int n) {
    double inv[kMaxUnknowns][kMaxUnknowns] = {};
    for (int i = 0; i < n; i++) inv[i][i] = 1.0;
    for (int c = 0; c < n; c++) {
        int piv = c;
        for (int r = c + 1; r < n; r++)
            if (std::fabs(m[r][c]) > std::fabs(m[piv][c])) piv = r;
        if (std::fabs(m[piv][c]) < 1e-12) return false;
        for (int k = 0; k < n; k++) {
            std::swap(m[c][k], m[piv][k]);
            std::swap(inv[c][k], inv[piv][k]);
        }
        const double d = m[c][c];
        for (int k = 0; k < n; k++) {
            m[c][k] /= d;
            inv[c][k] /= d;
        }
        for (int r = 0; r < n; r++) {
            if (r == c) continue;
            const double f = m[r][c];
            for (int k = 0; k < n; k++) {
                m[r][k] -= f * m[c][k];
                inv[r][k] -= f * inv[c][k];
            }
        }
    }
    for (int i = 0; i < n; i++)
        for (int k = 0; k < n; k++) m[i][k] = inv[i][k];
    return true;
}

}  // namespace

Dop dilution(const std::vector<Sat>& sats) {
    Dop out;
    bool hasGlo = false, hasGps = false;
    for (const Sat& s : sats) (s.sys == 'R' ? hasGlo : hasGps) = true;
    out.clocks = (int)hasGlo + (int)hasGps;
    const int n = 3 + out.clocks;
    if ((int)sats.size() < n || out.clocks == 0) return out;

    /* Normal matrix of the rows (-e, -n, -u, clock of the system). */
    double a[kMaxUnknowns][kMaxUnknowns] = {};
    for (const Sat& s : sats) {
        double row[kMaxUnknowns] = {};
        const double ce = std::cos(s.el * kRad);
        row[0] = -ce * std::sin(s.az * kRad);
        row[1] = -ce * std::cos(s.az * kRad);
        row[2] = -std::sin(s.el * kRad);
        /* The first clock is GLONASS when both systems are there. */
        const int clock = (hasGlo && s.sys == 'G') ? 4 : 3;
        row[clock] = 1.0;
        for (int i = 0; i < n; i++)
            for (int k = 0; k < n; k++) a[i][k] += row[i] * row[k];
    }
    if (!invert(a, n)) return out;
    double trace = 0.0;
    for (int i = 0; i < n; i++) trace += a[i][i];
    out.g = std::sqrt(trace);
    out.p = std::sqrt(a[0][0] + a[1][1] + a[2][2]);
    out.h = std::sqrt(a[0][0] + a[1][1]);
    out.v = std::sqrt(a[2][2]);
    out.t = std::sqrt(a[3][3]);
    out.valid = true;
    return out;
}

}  // namespace sky
