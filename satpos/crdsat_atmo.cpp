/*
 * Atmospheric delays: the broadcast single-frequency ionosphere model for
 * GPS and the tropospheric model used by both systems.
 *
 * The ionosphere model is of the Klobuchar kind but its arithmetic is this
 * receiver's own, and every departure from the textbook algorithm is kept
 * on purpose (the receiver's outputs have always been computed so):
 *   - the azimuth in radians is divided by pi and the quotient handed to
 *     cos/sin as an angle in radians;
 *   - semicircle values are given to cos() as if they were radians, both
 *     for the latitude of the pierce point and for the phase of phi_m;
 *   - the amplitude and period polynomials use 1, phi_m, phi_m^3, phi_m^7;
 *   - the latitude clamp at +-0.416 uses a fixed cosine of 0.416 rad.
 */
#include <cmath>
#include <cstdint>

#include "satpos/crdsat.h"
#include "satpos/geodesy.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;

/* Night-time (floor) vertical delay, s. */
constexpr double kNightDelay = 5e-9;
/* Pierce-point latitude clamp, semicircles, and its cosine taken as
 * radians. */
constexpr double kLatClamp = 0.416;
constexpr double kCosLatClamp = 0.9147126730733223;
/* The cosine series is used while the phase stays within this bound. */
constexpr double kPhaseBound = 1.57;

}  // namespace

double crdsat_t::calcKlobuchara(double* alpha, double* beta, double* sat,
                                double* rcvXyz, double* rcvBlh,
                                unsigned int tl) {
    /* Line of sight and geocentric radial; elevation in semicircles. */
    double range = geo::calcRange(sat, rcvXyz);
    double rr = std::sqrt(rcvXyz[0] * rcvXyz[0] + rcvXyz[1] * rcvXyz[1] +
                          rcvXyz[2] * rcvXyz[2]);
    double u[3], dot = 0.0;
    for (int k = 0; k < 3; k++) {
        u[k] = (sat[k] - rcvXyz[k]) / range;
        dot += u[k] * (rcvXyz[k] / rr);
    }
    const double E = std::asin(dot) / kPi;

    /* Azimuth of the line of sight, radians. */
    double top[3];
    gcsk_tcsk(rcvBlh, u, top);
    const double A = std::atan2(top[2], top[0]);

    /* Earth-centred angle to the pierce point, semicircles. */
    const double psi = 0.0137 / (E + 0.11) - 0.022;

    const double phiU = rcvBlh[0] / 180.0;
    const double lamU = rcvBlh[1] / 180.0;

    double phiI = phiU + psi * std::cos(A / kPi);
    double q;
    if (phiI > kLatClamp) {
        phiI = kLatClamp;
        q = kCosLatClamp;
    } else if (phiI < -kLatClamp) {
        phiI = -kLatClamp;
        q = kCosLatClamp;
    } else {
        q = std::cos(phiI);
    }
    const double lamI = lamU + psi * std::sin(A / kPi) / q;

    /* Geomagnetic latitude of the pierce point. */
    const double phiM = phiI + 0.064 * std::cos(lamI - 1.617);

    /* Local time at the pierce point, whole seconds in 0..86399. A NaN
     * (a receiver point at the Earth's centre) has no integer value; the
     * delay is NaN then anyway through the elevation, so 0 stands in. */
    const double tRaw = 43200.0 * lamI + (double)tl;
    int64_t t = std::isfinite(tRaw) ? (int64_t)tRaw : 0;
    t %= 86400;
    if (t < 0) t += 86400;

    /* Obliquity factor. */
    const double F = 1.0 + 16.0 * std::pow(0.53 - E, 3.0);

    /* Each term is the square of the one before times phi_m. */
    const double* a = alpha;
    const double* b = beta;
    double pk = 1.0, amp = 0.0, per = 0.0;
    for (int k = 0; k < 4; k++) {
        amp += a[k] * pk;
        per += b[k] * pk;
        pk = pk * pk * phiM;
    }
    if (per < 72000.0) per = 72000.0;
    if (amp < 0.0) amp = 0.0;

    const double x = kTwoPi * ((double)t - 50400.0) / per;
    if (std::fabs(x) < kPhaseBound)
        return F * (kNightDelay +
                    amp * (1.0 - x * x / 2.0 + x * x * x * x / 24.0));
    return F * kNightDelay;
}

/*
 * Tropospheric delay in metres: a dry zenith delay from pressure and
 * temperature and a fixed wet zenith delay of 0.15 m, each with its own
 * mapping function. Humidity is not used. R is the range the caller
 * passes (the satellite range). A missing meteorological record counts
 * as one without valid readings.
 */
double crdsat_t::calcTrop(tblMeteo* meteo, double el, double R) {
    if (meteo == nullptr || meteo->actual != 1 || el < 0) return 0.0;
    const double T = 273.0 + meteo->temperature;
    const double Dz = 2.343 * meteo->pressure * (T - 4.12) / (T * 1013.25);
    const double cosEl = std::cos(el * geo::kDegToRad);
    const double qd = cosEl / (1.0 + 22.347 * (T - 4.12) / R);
    const double qw = cosEl / (1.0 + 1950.0 / R);
    const double md = 1.0 / std::sqrt(1.0 - qd * qd);
    const double mw = 1.0 / std::sqrt(1.0 - qw * qw);
    return Dz * md + 0.15 * mw;
}
