/*
 * Visibility geometry of the prediction: elevation, azimuth, signal delay
 * and Doppler of a predicted satellite seen from the user position, and
 * the coordinate conversions they need.
 *
 * Geodetic to Cartesian and the topocentric rotation are the shared ones
 * of satpos/geodesy (one implementation for every unit). Cartesian to
 * geodetic is this unit's own: the prediction only needs the station's
 * latitude and longitude to orient the local frame, and uses a short
 * fixed iteration rather than the satellite computation's converging one.
 */
#include <cmath>

#include "interface/zel_assert.h"
#include "predict/prgns.h"
#include "satpos/geodesy.h"

namespace {

const double kC = 299792458.0;          /* m/s */
const double kFreqGps = 1575.42;        /* L1, MHz */
const double kFreqGlo = 1602.0;         /* GLONASS band 1, letter 0, MHz */
const double kFreqGloStep = 0.5625;     /* per letter, MHz */

/* Passes of the latitude iteration of xyz_blh. */
const int kLatPasses = 10;
const double kHalfPi = 1.5707963267948966;

}  // namespace

/*
 * Elevation above the plane normal to the user's geocentric radius (not
 * the ellipsoid normal): at mid latitudes the two differ by up to 0.2
 * degrees, which is well inside what an almanac prediction is good for.
 */
double prgns_t::calcUm(double* sat, double* user) {
    return geo::calcUm(sat, user);
}

double prgns_t::calcDelay(double* sat, double* user) {
    return geo::calcRange(sat, user) / kC;
}

/*
 * Doppler of a receiver at rest: the range rate along the line of sight,
 * positive while the satellite approaches, scaled to the carrier. GLONASS
 * letters -7..-1 are carried as 25..31.
 */
double prgns_t::calcDop(double* sat, double* satVel, unsigned char sys,
                        unsigned char lit, double* user) {
    const double range = geo::calcRange(sat, user);
    double rate = 0.0;
    for (int k = 0; k < 3; k++) rate -= (sat[k] - user[k]) / range * satVel[k];
    double f = kFreqGps;
    if (sys == 0) {
        int letter = lit;
        if (lit > 24) letter = lit - 32;
        f = kFreqGlo + kFreqGloStep * letter;
    }
    return rate / kC * f * 1000000.0;
}

/*
 * Azimuth from north through east, 0 to 360. The line of sight is taken
 * from the held user position; the station's frame from `user`, on the
 * datum crdSys. Every caller passes the held position as `user`.
 */
double prgns_t::calcAz(double* sat, double* user, unsigned int crdSys) {
    double e[3];
    for (int k = 0; k < 3; k++) e[k] = sat[k] - pnt[k];
    const double len = std::sqrt(e[0] * e[0] + e[1] * e[1] + e[2] * e[2]);
    for (int k = 0; k < 3; k++) e[k] /= len;
    double blh[3], top[3];
    xyz_blh(user, crdSys, blh);
    gcsk_tcsk(blh, e, top);
    double az = std::atan2(top[2], top[0]) * geo::kRadToDeg;
    if (az < 0) az += 360.0;
    return az;
}

/*
 * Cartesian to geodetic. The latitude correction over the geocentric
 * latitude is iterated ten times from zero, and the latitude kept is the
 * one the tenth correction was computed from (the tenth correction itself
 * is not applied); after ten passes the difference is far below anything
 * the prediction can see. The longitude comes straight from atan2 and so
 * runs -180..180. On the polar axis the height is the distance from the
 * pole, |z| less the polar radius.
 */
void prgns_t::xyz_blh(double* xyz, unsigned int datum, double* blh) {
    geo::Ellipsoid ell;
    ZEL_ASSERT(geo::datumEllipsoid(datum, &ell), "false", "prgns",
               "void prgns_t::xyz_blh(double*, unsigned int, double*)");
    const double x = xyz[0], y = xyz[1], z = xyz[2];
    const double p = std::sqrt(x * x + y * y);
    double B, L, H;
    if (p == 0.0) {
        B = z < 0 ? -kHalfPi : kHalfPi;
        L = 0.0;
        /* Polar radius b = a sqrt(1 - e^2). */
        H = std::fabs(z) - ell.a * std::sqrt(1.0 - ell.e2);
    } else {
        const double r = std::sqrt(x * x + y * y + z * z);
        const double phi = std::atan2(z, p);
        const double k = ell.e2 * ell.a / (2.0 * r);
        double delta = 0.0;
        B = phi;
        for (int pass = 0; pass < kLatPasses; pass++) {
            B = phi + delta;
            const double s = std::sin(B);
            delta = std::asin(k * std::sin(2.0 * B) / std::sqrt(1.0 - ell.e2 * s * s));
        }
        L = std::atan2(y, x);
        const double s = std::sin(B);
        H = p * std::cos(B) + z * s - ell.a * std::sqrt(1.0 - ell.e2 * s * s);
    }
    blh[0] = B * geo::kRadToDeg;
    blh[1] = L * geo::kRadToDeg;
    blh[2] = H;
}

void prgns_t::blh_xyz(double* blh, unsigned int datum, double* xyz) {
    geo::Ellipsoid ell;
    ZEL_ASSERT(geo::datumEllipsoid(datum, &ell), "false", "prgns",
               "void prgns_t::blh_xyz(double*, unsigned int, double*)");
    geo::blh_xyz(blh, ell, xyz);
}

void prgns_t::gcsk_tcsk(double* blh, double* vec, double* top) {
    geo::gcsk_tcsk(blh, vec, top);
}

/*
 * One propagated satellite into the list, when it stands at or above the
 * mask (a satellite exactly at the mask is listed). The list has room for
 * every satellite of both systems; a call that would go beyond it (the
 * same almanac propagated twice into one list) adds nothing more.
 */
void prgns_t::append(lsttblPrgSat* lst, const double* xyz, const double* vxyz,
                     uint8_t num, uint8_t lit, uint8_t sys) {
    double sat[3] = {xyz[0], xyz[1], xyz[2]};
    double vel[3] = {vxyz[0], vxyz[1], vxyz[2]};
    const double um = calcUm(sat, pnt);
    if (!(um >= umMask)) return;
    if (lst->numPrg >= ZEL_NUM_PRGSAT) return;
    tblPrgSat_t* e = &lst->prgSat[lst->numPrg];
    e->num = num;
    e->lit = lit;
    e->sys = sys;
    e->delay = calcDelay(sat, pnt);
    e->dop = calcDop(sat, vel, sys, lit, pnt);
    e->az = calcAz(sat, pnt, crdSys);
    e->um = um;
    e->actual = 1;
    e->x = sat[0];
    e->y = sat[1];
    e->z = sat[2];
    e->vx = vel[0];
    e->vy = vel[1];
    e->vz = vel[2];
    lst->numPrg++;
}
