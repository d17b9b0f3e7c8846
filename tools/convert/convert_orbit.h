/*
 * Satellite orbits for the conversion: where a satellite is, from its
 * broadcast ephemeris, to report its elevation as the receiver would and
 * to turn GLONASS state vectors into almanac elements; and the geodesy of
 * the station (geodetic height for the standard atmosphere, elevation).
 *
 * GPS: the Keplerian model of the GPS interface document with its
 * constants. GLONASS: numerical integration (4th-order Runge-Kutta) of the
 * equations of motion in the Earth-fixed PZ-90 frame of the GLONASS
 * interface document: central body, second zonal harmonic, centrifugal and
 * Coriolis terms, plus the broadcast luni-solar acceleration when given.
 */
#ifndef ZELNAV_CONVERT_ORBIT_H
#define ZELNAV_CONVERT_ORBIT_H

#include "tbl_nav.h"

namespace cvt {

const double kPi = 3.141592653589793;
const double kOmegaEarth = 7.2921151467e-5;   /* rad/s, both systems */

/* GLONASS (PZ-90) constants. */
const double kGloGM = 3.986004418e14;
const double kGloAe = 6378136.0;
const double kGloJ2 = 1.08262575e-3;

/* GPS constants. */
const double kGpsGM = 3.986005e14;

/* Earth-fixed position (m) of a GPS satellite `dt` seconds after toe. */
void gpsPosition(const tblOprGps_t& eph, double dt, double xyz[3]);

/* A GLONASS state: Earth-fixed position (m) and velocity (m/s). */
struct GloState {
    double r[3];
    double v[3];
};

/* Integrates `s` over `dt` seconds (either sign) in steps of at most
 * `maxStep` s, with the constant luni-solar acceleration `acc` (m/s^2;
 * null = none). */
void gloPropagate(GloState& s, double dt, const double* acc, double maxStep = 30.0);

/* The state of a GLONASS ephemeris at tb, and `dt` seconds later. */
GloState gloStateAtTb(const tblOprGlo_t& eph);
GloState gloStateAt(const tblOprGlo_t& eph, double dt);

/* Geodetic latitude, longitude (rad) and ellipsoidal height (m) of an
 * Earth-fixed point on the WGS-84 ellipsoid. */
void geodetic(const double xyz[3], double& lat, double& lon, double& h);

/* Elevation (degrees) of `sat` seen from `rcv`, above the plane normal to
 * the ellipsoid at `rcv`. */
double elevationDeg(const double rcv[3], const double sat[3]);

}  // namespace cvt

#endif
