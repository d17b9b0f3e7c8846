/*
 * Geodetic transforms: ellipsoids, Cartesian <-> geodetic, topocentric
 * rotation, elevation, range and the PZ-90 / WGS-84 datum shift.
 */
#include "satpos/geodesy.h"

#include <cmath>

namespace geo {

namespace {

constexpr double kHalfPi = 1.5707963267948966;
constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;

/* The latitude correction is iterated until it moves by no more than
 * this, in radians. */
constexpr double kLatTolerance = 1e-6;

/* Prime-vertical term a * sqrt(1 - e^2 sin^2 B) used by the height. */
double meridianTerm(const Ellipsoid& ell, double sinB) {
    return ell.a * std::sqrt(1.0 - ell.e2 * sinB * sinB);
}

}  // namespace

bool datumEllipsoid(unsigned int datum, Ellipsoid* ell) {
    double a, invF;
    switch (datum) {
    case 0: a = 6378137.0; invF = 298.257223563; break;  /* WGS-84 */
    case 1: a = 6378136.0; invF = 298.25784; break;      /* PZ-90 */
    default: return false;
    }
    double f = 1.0 / invF;
    ell->a = a;
    ell->e2 = 2.0 * f - f * f;
    return true;
}

void xyz_blh(const double* xyz, const Ellipsoid& ell, double* blh) {
    const double X = xyz[0], Y = xyz[1], Z = xyz[2];
    const double D = std::sqrt(X * X + Y * Y);

    if (D == 0.0) {
        /* On the polar axis. Z = 0 as well divides zero by zero: the
         * latitude comes out NaN and is left so. */
        double B = (Z / std::fabs(Z)) * kHalfPi;
        double sinB = std::sin(B);
        blh[0] = B * kRadToDeg;
        blh[1] = 0.0;
        blh[2] = Z * sinB - meridianTerm(ell, sinB);
        return;
    }

    /* Longitude from the quadrant of (X, Y). With X exactly 0 none of the
     * rules applies and the caller's longitude stays: a receiver is never
     * there, and this is how the transform has always behaved. */
    const double La = std::fabs(std::asin(Y / D));
    bool haveL = true;
    double L = 0.0;
    if (Y < 0 && X > 0) L = kTwoPi - La;
    else if (Y < 0 && X < 0) L = kPi + La;
    else if (Y > 0 && X < 0) L = kPi - La;
    else if (Y > 0 && X > 0) L = La;
    else if (Y == 0 && X > 0) L = 0.0;
    else if (Y == 0 && X < 0) L = kPi;
    else haveL = false;

    if (Z == 0.0) {
        blh[0] = 0.0;
        if (haveL) blh[1] = L * kRadToDeg;
        blh[2] = D - ell.a;
        return;
    }

    /* Latitude as geocentric latitude c plus a correction s, refined until
     * the correction settles. There is no pass limit: for any point in the
     * working range (ground to beyond the satellites) the correction
     * settles in a few passes, and a NaN difference compares false and
     * ends the loop. */
    const double r = std::sqrt(X * X + Y * Y + Z * Z);
    const double c = std::asin(Z / r);
    const double p = ell.e2 * ell.a / (2.0 * r);
    double s1 = 0.0, b, d;
    do {
        b = c + s1;
        double sinb = std::sin(b);
        double s2 = std::asin(p * std::sin(2.0 * b) /
                              std::sqrt(1.0 - ell.e2 * sinb * sinb));
        d = std::fabs(s2 - s1);
        s1 = s2;
    } while (d > kLatTolerance);

    /* The latitude is the b of the last pass: c plus the correction of the
     * pass before, not the one just computed. */
    const double B = b;
    const double sinB = std::sin(B);
    blh[0] = B * kRadToDeg;
    if (haveL) blh[1] = L * kRadToDeg;
    blh[2] = D * std::cos(B) + Z * sinB - meridianTerm(ell, sinB);
}

void blh_xyz(const double* blh, const Ellipsoid& ell, double* xyz) {
    const double B = blh[0] * kDegToRad;
    const double L = blh[1] * kDegToRad;
    const double H = blh[2];
    const double sinB = std::sin(B);
    const double N = ell.a / std::sqrt(1.0 - ell.e2 * sinB * sinB);
    xyz[0] = (N + H) * std::cos(B) * std::cos(L);
    xyz[1] = (N + H) * std::cos(B) * std::sin(L);
    xyz[2] = ((1.0 - ell.e2) * N + H) * sinB;
}

void gcsk_tcsk(double* blh, const double* vec, double* top) {
    blh[0] *= kDegToRad;
    blh[1] *= kDegToRad;
    const double sB = std::sin(blh[0]), cB = std::cos(blh[0]);
    const double sL = std::sin(blh[1]), cL = std::cos(blh[1]);
    top[0] = -sB * cL * vec[0] - sB * sL * vec[1] + cB * vec[2];
    top[1] = cB * cL * vec[0] + cB * sL * vec[1] + sB * vec[2];
    top[2] = -sL * vec[0] + cL * vec[1];
    blh[0] *= kRadToDeg;
    blh[1] *= kRadToDeg;
}

double calcUm(const double* sat, const double* rcv) {
    const double range = calcRange(sat, rcv);
    const double rr = std::sqrt(rcv[0] * rcv[0] + rcv[1] * rcv[1] +
                                rcv[2] * rcv[2]);
    double dot = 0.0;
    for (int k = 0; k < 3; k++)
        dot += ((sat[k] - rcv[k]) / range) * (rcv[k] / rr);
    return std::asin(dot) * 180.0 / kPi;
}

double calcRange(const double* a, const double* b) {
    const double dx = a[0] - b[0], dy = a[1] - b[1], dz = a[2] - b[2];
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

void PZ90_WGS84(const double* in, double* out) {
    out[0] = in[0] - 0.36;
    out[1] = in[1] + 0.08;
    out[2] = in[2] + 0.18;
}

void WGS84_PZ90(const double* in, double* out) {
    out[0] = in[0] + 0.36;
    out[1] = in[1] - 0.08;
    out[2] = in[2] - 0.18;
}

}  // namespace geo
