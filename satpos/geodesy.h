/*
 * Geodetic arithmetic shared by every unit that handles coordinates: the
 * satellite computation, the position solution and the almanac prediction
 * call these functions rather than keeping copies of their own.
 *
 * Conventions (every caller relies on them):
 *   - Cartesian triplets are Earth-centred Earth-fixed X, Y, Z in metres.
 *   - Geodetic triplets are latitude and longitude in degrees and height
 *     above the ellipsoid in metres; longitude runs 0..360, east positive.
 *   - Topocentric triplets are in the order north, up, east.
 *   - Datum index 0 is WGS-84, 1 is PZ-90.
 *
 * The functions keep no state. An unknown datum index is a programming
 * error of the caller; `datumEllipsoid` reports it so that each class can
 * raise its own assertion naming its own method.
 */
#ifndef ZELNAV_SATPOS_GEODESY_H
#define ZELNAV_SATPOS_GEODESY_H

namespace geo {

/* Degrees <-> radians, with the exact factors every transform uses. */
constexpr double kDegToRad = 0.017453292519943295;
constexpr double kRadToDeg = 57.29577951308232;

/* Reference ellipsoid: semi-major axis (m) and first eccentricity squared,
 * the latter always formed from the flattening as 2f - f^2. */
struct Ellipsoid {
    double a;
    double e2;
};

/* Fills `ell` for datum 0 (WGS-84) or 1 (PZ-90) and returns true; returns
 * false, leaving `ell` alone, for any other index. */
bool datumEllipsoid(unsigned int datum, Ellipsoid* ell);

/* Cartesian to geodetic, iterating on the latitude correction until it
 * moves by no more than 1e-6 rad. Odd cases, kept on purpose:
 *   - on the polar axis (X = Y = 0) the latitude is +-90, the longitude 0;
 *     the origin itself gives a NaN latitude;
 *   - for X = 0 exactly with Y != 0 no longitude rule applies and blh[1]
 *     keeps whatever the caller's array held;
 *   - Z = 0 exactly takes the equator shortcut (height = D - a). */
void xyz_blh(const double* xyz, const Ellipsoid& ell, double* blh);

/* Geodetic to Cartesian, closed form. */
void blh_xyz(const double* blh, const Ellipsoid& ell, double* xyz);

/* Rotates the geocentric vector `vec` into the topocentric frame of the
 * point `blh`: top = (north, up, east). The station's latitude and
 * longitude are turned into radians in place and back into degrees before
 * returning, so the caller's array passes through both factors (its last
 * bit may change). */
void gcsk_tcsk(double* blh, const double* vec, double* top);

/* Elevation in degrees of `sat` seen from `rcv`, measured from the plane
 * normal to the receiver's geocentric radius (not the ellipsoid normal). */
double calcUm(const double* sat, const double* rcv);

/* Euclidean distance between two Cartesian points, m. */
double calcRange(const double* a, const double* b);

/* Datum shifts between PZ-90 and WGS-84: a translation only. `in` and
 * `out` may be the same array. */
void PZ90_WGS84(const double* in, double* out);
void WGS84_PZ90(const double* in, double* out);

}  // namespace geo

#endif
