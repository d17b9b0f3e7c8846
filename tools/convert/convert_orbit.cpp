/*
 * Satellite orbits and station geodesy of the conversion.
 */
#include "convert_orbit.h"

#include <cmath>

namespace cvt {

void gpsPosition(const tblOprGps_t& eph, double dt, double xyz[3]) {
    double a = eph.sqrtA * eph.sqrtA;
    double n = std::sqrt(kGpsGM / (a * a * a)) + eph.deltaN;
    double m = eph.m0 + n * dt;
    double e = m;
    for (int it = 0; it < 20; it++) {
        double next = m + eph.e * std::sin(e);
        if (std::fabs(next - e) < 1e-13) {
            e = next;
            break;
        }
        e = next;
    }
    double nu = std::atan2(std::sqrt(1.0 - eph.e * eph.e) * std::sin(e), std::cos(e) - eph.e);
    double phi = nu + eph.omega;
    double s2 = std::sin(2 * phi), c2 = std::cos(2 * phi);
    double u = phi + eph.cus * s2 + eph.cuc * c2;
    double r = a * (1.0 - eph.e * std::cos(e)) + eph.crs * s2 + eph.crc * c2;
    double inc = eph.i0 + eph.idot * dt + eph.cis * s2 + eph.cic * c2;
    double om = eph.omega0 + (eph.omegaDot - kOmegaEarth) * dt - kOmegaEarth * eph.toe;
    double xp = r * std::cos(u), yp = r * std::sin(u);
    xyz[0] = xp * std::cos(om) - yp * std::cos(inc) * std::sin(om);
    xyz[1] = xp * std::sin(om) + yp * std::cos(inc) * std::cos(om);
    xyz[2] = yp * std::sin(inc);
}

namespace {

/* Time derivative of a GLONASS state in the rotating Earth-fixed frame. */
void gloDerivative(const double y[6], const double* acc, double d[6]) {
    const double* r = y;
    const double* v = y + 3;
    double r2 = r[0] * r[0] + r[1] * r[1] + r[2] * r[2];
    double rr = std::sqrt(r2);
    double gm = kGloGM / (r2 * rr);
    double j2 = 1.5 * kGloJ2 * kGloGM * kGloAe * kGloAe / (r2 * r2 * rr);
    double z2 = 5.0 * r[2] * r[2] / r2;
    double w2 = kOmegaEarth * kOmegaEarth;
    d[0] = v[0];
    d[1] = v[1];
    d[2] = v[2];
    d[3] = -gm * r[0] - j2 * r[0] * (1.0 - z2) + w2 * r[0] + 2.0 * kOmegaEarth * v[1];
    d[4] = -gm * r[1] - j2 * r[1] * (1.0 - z2) + w2 * r[1] - 2.0 * kOmegaEarth * v[0];
    d[5] = -gm * r[2] - j2 * r[2] * (3.0 - z2);
    if (acc) {
        d[3] += acc[0];
        d[4] += acc[1];
        d[5] += acc[2];
    }
}

void rk4Step(double y[6], double h, const double* acc) {
    double k1[6], k2[6], k3[6], k4[6], t[6];
    gloDerivative(y, acc, k1);
    for (int i = 0; i < 6; i++) t[i] = y[i] + 0.5 * h * k1[i];
    gloDerivative(t, acc, k2);
    for (int i = 0; i < 6; i++) t[i] = y[i] + 0.5 * h * k2[i];
    gloDerivative(t, acc, k3);
    for (int i = 0; i < 6; i++) t[i] = y[i] + h * k3[i];
    gloDerivative(t, acc, k4);
    for (int i = 0; i < 6; i++) y[i] += h / 6.0 * (k1[i] + 2.0 * k2[i] + 2.0 * k3[i] + k4[i]);
}

}  // namespace

void gloPropagate(GloState& s, double dt, const double* acc, double maxStep) {
    int steps = (int)std::ceil(std::fabs(dt) / maxStep);
    if (steps == 0) return;
    double h = dt / steps;
    double y[6] = {s.r[0], s.r[1], s.r[2], s.v[0], s.v[1], s.v[2]};
    for (int i = 0; i < steps; i++) rk4Step(y, h, acc);
    for (int i = 0; i < 3; i++) {
        s.r[i] = y[i];
        s.v[i] = y[i + 3];
    }
}

GloState gloStateAtTb(const tblOprGlo_t& eph) {
    GloState s = {{eph.x, eph.y, eph.z}, {eph.vx, eph.vy, eph.vz}};
    return s;
}

GloState gloStateAt(const tblOprGlo_t& eph, double dt) {
    GloState s = gloStateAtTb(eph);
    const double acc[3] = {eph.ax, eph.ay, eph.az};
    gloPropagate(s, dt, acc);
    return s;
}

void geodetic(const double xyz[3], double& lat, double& lon, double& h) {
    const double a = 6378137.0, f = 1.0 / 298.257223563;
    const double e2 = f * (2.0 - f);
    double p = std::hypot(xyz[0], xyz[1]);
    lon = std::atan2(xyz[1], xyz[0]);
    lat = std::atan2(xyz[2], p * (1.0 - e2));
    h = 0.0;
    for (int it = 0; it < 10; it++) {
        double s = std::sin(lat);
        double n = a / std::sqrt(1.0 - e2 * s * s);
        h = p / std::cos(lat) - n;
        if (p < 1.0) h = std::fabs(xyz[2]) - a * std::sqrt(1.0 - e2);
        lat = std::atan2(xyz[2], p * (1.0 - e2 * n / (n + h)));
    }
}

double elevationDeg(const double rcv[3], const double sat[3]) {
    double lat, lon, h;
    geodetic(rcv, lat, lon, h);
    double d[3] = {sat[0] - rcv[0], sat[1] - rcv[1], sat[2] - rcv[2]};
    double up = std::cos(lat) * std::cos(lon) * d[0] + std::cos(lat) * std::sin(lon) * d[1] +
                std::sin(lat) * d[2];
    double range = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    return std::asin(up / range) * 180.0 / kPi;
}

}  // namespace cvt
