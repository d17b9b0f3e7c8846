/*
 * Synthetic epochs for the position-solution tests: satellites placed in
 * the sky of a known receiver, with pseudoranges that a chosen receiver
 * state (position, clock term, GPS time offset) explains exactly, and
 * Doppler values that a chosen receiver velocity and clock drift explain
 * exactly. Every expectation of the tests follows from these truths, not
 * from the solver's own arithmetic.
 */
#ifndef ZELNAV_TESTS_SOLUTION_CRDPNT_FIXTURE_H
#define ZELNAV_TESTS_SOLUTION_CRDPNT_FIXTURE_H

#include <cmath>
#include <cstring>

#include "solution/crdpnt.h"

namespace crdpnt_test {

const double kC = 299792458.0;
const double kOmegaGps = 7.2921151467e-5;
const double kOmegaGlo = 7.292115e-5;
/* The ARP of the TLSE station, Toulouse. */
const double kTlse[3] = {4627852.3986, 119640.3423, 4372994.4588};

/* Azimuth and elevation (degrees) of up to twelve satellites: a spread
 * sky with some low and some high. */
const double kSky[12][2] = {{10, 70},  {75, 35},  {140, 20}, {200, 55},
                            {260, 15}, {320, 40}, {30, 25},  {110, 60},
                            {170, 45}, {235, 30}, {290, 65}, {350, 12}};

/* Carrier the velocity fit assumes for a row. */
inline double carrierOf(int sys, int lit) {
    if (sys == 1) return 1575420000.0;
    int k = lit > 24 ? lit - 32 : lit;
    return 1602000000.0 + 562500.0 * k;
}

/* Receiver truth of one synthetic epoch. */
struct Truth {
    double xyz[3] = {kTlse[0], kTlse[1], kTlse[2]};
    double cdt = 0.0;       /* receiver clock term, m */
    double cdelta = 0.0;    /* extra term on GPS rows, m */
    double v[3] = {0.0, 0.0, 0.0};
    double drift = 0.0;     /* s/s */
};

/* A list of rows with its own storage. */
struct Epoch {
    tblCrdSat_t rows[ZEL_NUM_CRDSAT];
    lsttblCrdSat_t lst;

    Epoch() {
        std::memset(rows, 0, sizeof rows);
        lst.length = 16;
        lst.tbl = rows;
        lst.num = 0;
        lst.tm = 0;
    }

    /* Appends a satellite at sky position k (of kSky) of system `sys`,
     * 21000 km from the receiver truth, moving at 3.9 km/s across the
     * line of sight. psvd and dop follow the truth exactly. */
    tblCrdSat_t& add(const Truth& t, int k, int sys, int num, int lit = 0) {
        const double lat = std::atan2(t.xyz[2], std::hypot(t.xyz[0], t.xyz[1]));
        const double lon = std::atan2(t.xyz[1], t.xyz[0]);
        const double e[3] = {-std::sin(lon), std::cos(lon), 0.0};
        const double n[3] = {-std::sin(lat) * std::cos(lon),
                             -std::sin(lat) * std::sin(lon), std::cos(lat)};
        const double u[3] = {std::cos(lat) * std::cos(lon),
                             std::cos(lat) * std::sin(lon), std::sin(lat)};
        const double az = kSky[k][0] * M_PI / 180.0;
        const double el = kSky[k][1] * M_PI / 180.0;
        double los[3], sat[3], vs[3];
        for (int i = 0; i < 3; i++) {
            los[i] = std::cos(el) * (std::sin(az) * e[i] + std::cos(az) * n[i]) +
                     std::sin(el) * u[i];
            sat[i] = t.xyz[i] + 2.1e7 * los[i];
        }
        /* A velocity not along the line of sight: the east vector turned
         * a little, times 3900 m/s, plus a radial part of 400 m/s. */
        for (int i = 0; i < 3; i++) vs[i] = 3900.0 * (0.8 * e[i] + 0.6 * n[i]) + 400.0 * los[i];

        tblCrdSat_t& r = rows[lst.num++];
        r.num = (uint8_t)num;
        r.lit = (int8_t)lit;
        r.sys = (uint8_t)sys;
        r.xyz[0] = sat[0];
        r.xyz[1] = sat[1];
        r.xyz[2] = sat[2];
        r.vxyz[0] = vs[0];
        r.vxyz[1] = vs[1];
        r.vxyz[2] = vs[2];
        const double rho = std::sqrt((sat[0] - t.xyz[0]) * (sat[0] - t.xyz[0]) +
                                     (sat[1] - t.xyz[1]) * (sat[1] - t.xyz[1]) +
                                     (sat[2] - t.xyz[2]) * (sat[2] - t.xyz[2]));
        const double P = rho + t.cdt + (sys == 1 ? t.cdelta : 0.0);
        r.psvd = P;
        /* The fit's model: u = (R - sat) / P, y = u.(v_rcv) + c * drift =
         * u.v_sat - c * dop / f. */
        double uv_sat = 0.0, uv_rcv = 0.0;
        for (int i = 0; i < 3; i++) {
            const double ui = (t.xyz[i] - sat[i]) / P;
            uv_sat += ui * vs[i];
            uv_rcv += ui * t.v[i];
        }
        r.dop = (uv_sat - uv_rcv - kC * t.drift) * carrierOf(sys, lit) / kC;
        r.bad = 0;
        return r;
    }
};

/* A GPS row built around a PZ-90 truth, expressed in WGS-84 as the
 * satellite computation delivers it; the combined fix shifts it back. */
inline void toWgs84(tblCrdSat_t& r) {
    r.xyz[0] -= 0.36;
    r.xyz[1] += 0.08;
    r.xyz[2] += 0.18;
}

/* The position a fix reports: the truth turned about the polar axis by
 * omega * dt. */
inline void rotated(const double* p, double omega, double dt, double* out) {
    const double a = omega * dt;
    out[0] = p[0] * std::cos(a) - p[1] * std::sin(a);
    out[1] = p[0] * std::sin(a) + p[1] * std::cos(a);
    out[2] = p[2];
}

/* Inverse of a small symmetric positive matrix by plain Gauss-Jordan
 * without pivoting (enough for well-conditioned normal matrices); the
 * tests' own reference, independent of lsolve. */
inline void invert(int n, const double* a, double* inv) {
    double w[7][14];
    for (int i = 0; i < n; i++)
        for (int k = 0; k < 2 * n; k++)
            w[i][k] = k < n ? a[i * n + k] : (k - n == i ? 1.0 : 0.0);
    for (int j = 0; j < n; j++) {
        const double p = w[j][j];
        for (int k = 0; k < 2 * n; k++) w[j][k] /= p;
        for (int i = 0; i < n; i++) {
            if (i == j) continue;
            const double f = w[i][j];
            for (int k = 0; k < 2 * n; k++) w[i][k] -= f * w[j][k];
        }
    }
    for (int i = 0; i < n; i++)
        for (int k = 0; k < n; k++) inv[i * n + k] = w[i][n + k];
}

/* Inverse of the normal matrix of the rows at the truth, for `unknowns` 4
 * (position and clock) or 5 (and the GPS column). */
inline void normalInverse(const Epoch& ep, const Truth& t, int unknowns,
                          double* inv) {
    double N[25] = {0};
    for (uint32_t r = 0; r < ep.lst.num; r++) {
        const tblCrdSat_t& row = ep.rows[r];
        double d[3] = {t.xyz[0] - row.xyz[0], t.xyz[1] - row.xyz[1],
                       t.xyz[2] - row.xyz[2]};
        const double rho = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        double h[5] = {d[0] / rho, d[1] / rho, d[2] / rho, 1.0,
                       row.sys == 1 ? 1.0 : 0.0};
        for (int i = 0; i < unknowns; i++)
            for (int k = 0; k < unknowns; k++) N[i * unknowns + k] += h[i] * h[k];
    }
    invert(unknowns, N, inv);
}

inline double dist3(const double* a, const double* b) {
    return std::sqrt((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) +
                     (a[2] - b[2]) * (a[2] - b[2]));
}

}  // namespace crdpnt_test

#endif
