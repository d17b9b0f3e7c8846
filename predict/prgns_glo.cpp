/*
 * GLONASS almanac propagation.
 *
 * A GLONASS almanac describes each orbit by its osculating elements at the
 * first ascending-node passage of the almanac day: the time of that
 * passage t_lambda and the Earth-fixed longitude lambda of the node, the
 * inclination (63 degrees + dI), the draconic period (43200 s + dT, which
 * changes by dTdot from one revolution to the next), the eccentricity and
 * the argument of perigee. The propagation follows the algorithm of the
 * GLONASS interface control document:
 *
 *   1. the revolutions W since that passage, the mean draconic period of
 *      revolution W + 1 and the mean motion;
 *   2. the semi-major axis that gives that draconic period under the
 *      second zonal harmonic J2, by iteration;
 *   3. the secular drift of the node and of the perigee under J2;
 *   4. the mean argument of latitude at the node of revolution W and at
 *      the time asked for;
 *   5. the short-period J2 perturbations of the elements, taken as their
 *      difference between the two: the almanac's elements are osculating
 *      at the node, so the node's perturbations are removed and the
 *      current ones added;
 *   6. Kepler's equation, then Earth-fixed (PZ-90) position and velocity.
 *
 * Times are Moscow time, as tmZel and the almanac are. All angles of the
 * almanac table are in semicircles.
 */
#include <cmath>
#include <cstdint>

#include "predict/prgns.h"

namespace {

const double kPi = 3.141592653589793;
const double kGM = 3.986004418e14;        /* m^3/s^2, PZ-90 */
const double kAe = 6378136.0;             /* m, PZ-90 equatorial radius */
const double kJ2 = 1.08262575e-3;         /* second zonal harmonic */
const double kOmegaE = 7.2921151467e-5;   /* rad/s */
const double kTMean = 43200.0;            /* mean draconic period, s */
const double kIMean = 63.0 / 180.0;       /* mean inclination, semicircles */

/* An almanac is used up to 90 days from its node passage, as GPS ones
 * are: beyond that its drift terms no longer hold the orbit. */
const double kMaxAge = 7.776e6;

/* Semi-major axis iteration: stop below 1 mm of change, at most 20 passes
 * (it takes three or four). */
const double kAxisTol = 1e-3;
const int kAxisPasses = 20;

/* Kepler's equation: stop below 1e-9 rad of change, at most 30 passes. */
const double kKeplerTol = 1e-9;
const int kKeplerPasses = 30;

/* Days from 1996-01-01 (day 1 of four-year interval 1) to 2000-01-01,
 * the origin of tmZel. */
const int64_t kDaysTo2000 = 1461;

/* Short-period J2 perturbations of the elements at mean argument of
 * latitude L: semi-major axis (relative), the eccentricity vector
 * h = e sin w, l = e cos w, node longitude, inclination and L itself. */
struct Perturb {
    double a, h, l, lambda, i, L;
};

Perturb shortPeriod(double B, double inc, double h, double l, double L) {
    const double si = std::sin(inc), ci = std::cos(inc);
    const double s2 = si * si, c2 = ci * ci;
    const double k = 1.0 - 1.5 * s2;
    const double sL = std::sin(L), cL = std::cos(L);
    const double s2L = std::sin(2 * L), c2L = std::cos(2 * L);
    const double s3L = std::sin(3 * L), c3L = std::cos(3 * L);
    const double s4L = std::sin(4 * L), c4L = std::cos(4 * L);
    Perturb d;
    d.a = 2.0 * B * k * (l * cL + h * sL) +
          B * s2 * (0.5 * h * sL - 0.5 * l * cL + c2L + 3.5 * l * c3L + 3.5 * h * s3L);
    d.h = B * k * (sL + 1.5 * l * s2L - 1.5 * h * c2L) -
          0.25 * B * s2 *
              (sL - 7.0 / 3.0 * s3L + 5.0 * l * s2L - 8.5 * l * s4L + 8.5 * h * c4L + h * c2L) -
          0.5 * B * c2 * l * s2L;
    d.l = B * k * (cL + 1.5 * l * c2L + 1.5 * h * s2L) -
          0.25 * B * s2 *
              (-cL - 7.0 / 3.0 * c3L - 5.0 * h * s2L - 8.5 * l * c4L - 8.5 * h * s4L + l * c2L) +
          0.5 * B * c2 * h * s2L;
    const double node = 3.5 * l * sL - 2.5 * h * cL - 0.5 * s2L - 7.0 / 6.0 * l * s3L +
                        7.0 / 6.0 * h * c3L;
    d.lambda = -B * ci * node;
    d.i = 0.5 * B * si * ci *
          (-l * cL + h * sL + c2L + 7.0 / 3.0 * l * c3L + 7.0 / 3.0 * h * s3L);
    d.L = 2.0 * B * k * (1.75 * l * sL - 1.75 * h * cL) +
          3.0 * B * s2 *
              (-7.0 / 24.0 * h * cL - 7.0 / 24.0 * l * sL - 49.0 / 72.0 * h * c3L +
               49.0 / 72.0 * l * s3L + 0.25 * s2L) +
          B * c2 * node;
    return d;
}

/*
 * Semi-major axis of an orbit whose draconic period under J2 is tdr. The
 * draconic period is shorter than the Keplerian one of the same axis by
 * the J2 factor; the axis is found from the Keplerian period that factor
 * implies, starting from tdr itself.
 */
double axisOfPeriod(double tdr, double inc, double e, double omega) {
    const double s2 = std::sin(inc) * std::sin(inc);
    const double e2 = 1.0 - e * e;
    const double ecw = 1.0 + e * std::cos(omega);
    const double shape = (2.0 - 2.5 * s2) * std::pow(e2, 1.5) / (ecw * ecw) +
                         ecw * ecw * ecw / e2;
    double tosc = tdr;
    double a = 0.0;
    for (int pass = 0; pass < kAxisPasses; pass++) {
        const double next = std::cbrt(kGM * (tosc / (2 * kPi)) * (tosc / (2 * kPi)));
        const bool done = std::fabs(next - a) < kAxisTol;
        a = next;
        if (done) break;
        const double p = a * e2;
        tosc = tdr / (1.0 - 1.5 * kJ2 * (kAe / p) * (kAe / p) * shape);
    }
    return a;
}

/* Earth-fixed position (m) and velocity (m/s) of almanac entry `s` at
 * dt seconds after its node passage. */
void gloAlmanacState(const tblAlmGloSat_t& s, double dt, double* xyz, double* vxyz) {
    const double eps0 = s.eps;
    const double omega0 = s.omega * kPi;
    const double inc0 = (kIMean + s.dI) * kPi;

    /* 1. Whole revolutions since the passage, mean period and motion. */
    const double tNode = kTMean + s.dT;
    const double W = std::floor(dt / tNode);
    const double tdr = tNode + (2.0 * W + 1.0) * s.dTdot;
    const double n = 2.0 * kPi / tdr;

    /* 2. Semi-major axis. */
    const double a0 = axisOfPeriod(tdr, inc0, eps0, omega0);
    const double p0 = a0 * (1.0 - eps0 * eps0);

    /* 3. Secular drift of node and perigee. */
    const double j2n = kJ2 * n * (kAe / p0) * (kAe / p0);
    const double cosI = std::cos(inc0);
    const double lambda0 = s.lambda * kPi - (kOmegaE + 1.5 * j2n * cosI) * dt;
    const double omega = omega0 - 0.75 * j2n * (1.0 - 5.0 * cosI * cosI) * dt;

    /* 4. Mean argument of latitude at the node (true anomaly -omega) and
     * now; the time since the node of revolution W allows for the period
     * changing by dTdot each revolution. */
    const double E0 = -2.0 * std::atan(std::sqrt((1.0 - eps0) / (1.0 + eps0)) *
                                       std::tan(omega / 2.0));
    const double L1 = omega + E0 - eps0 * std::sin(E0);
    const double L2 = L1 + n * (dt - tNode * W - s.dTdot * W * W);

    /* 5. Short-period perturbations: off at the node, on now. */
    const double B = 1.5 * kJ2 * (kAe / a0) * (kAe / a0);
    const double h0 = eps0 * std::sin(omega), l0 = eps0 * std::cos(omega);
    const Perturb d1 = shortPeriod(B, inc0, h0, l0, L1);
    const Perturb d2 = shortPeriod(B, inc0, h0, l0, L2);
    const double a = a0 + a0 * (d2.a - d1.a);
    const double h = h0 + d2.h - d1.h;
    const double l = l0 + d2.l - d1.l;
    const double inc = inc0 + d2.i - d1.i;
    const double lambda = lambda0 + d2.lambda - d1.lambda;
    const double L = L2 + d2.L - d1.L;
    const double eps = std::sqrt(h * h + l * l);
    const double w = std::atan2(h, l);

    /* 6. Kepler's equation on the mean anomaly L - w. */
    const double M = L - w;
    double E = M;
    for (int pass = 0; pass < kKeplerPasses; pass++) {
        const double next = M + eps * std::sin(E);
        const bool done = std::fabs(next - E) < kKeplerTol;
        E = next;
        if (done) break;
    }
    const double nu = std::atan2(std::sqrt(1.0 - eps * eps) * std::sin(E), std::cos(E) - eps);
    const double u = nu + w;
    const double p = a * (1.0 - eps * eps);
    const double r = p / (1.0 + eps * std::cos(nu));

    const double cl = std::cos(lambda), sl = std::sin(lambda);
    const double cu = std::cos(u), su = std::sin(u);
    const double ci = std::cos(inc), si = std::sin(inc);
    xyz[0] = r * (cl * cu - sl * su * ci);
    xyz[1] = r * (sl * cu + cl * su * ci);
    xyz[2] = r * su * si;

    /* Radial and transverse speeds on the ellipse; the Earth's rotation
     * takes them into the rotating frame. */
    const double k = std::sqrt(kGM / p);
    const double vr = k * eps * std::sin(nu);
    const double vu = k * (1.0 + eps * std::cos(nu));
    vxyz[0] = vr * (cu * cl - su * sl * ci) - vu * (su * cl + cu * sl * ci) + kOmegaE * xyz[1];
    vxyz[1] = vr * (cu * sl + su * cl * ci) - vu * (su * sl - cu * cl * ci) - kOmegaE * xyz[0];
    vxyz[2] = vr * su * si + vu * cu * si;
}

/* A satellite the almanac says can be used: filled, decoded without a
 * range error, and marked operational (Cn = 1). */
bool usable(const tblAlmGloSat_t& s) {
    return s.onErrData == 0 && s.onEmpty == 0 && s.onSystem == 1;
}

}  // namespace

/*
 * The almanac's table holds the satellites in the order they were
 * broadcast; the prediction lists them by slot number. The almanac date
 * (four-year interval n4 from 1996, day na) and the node passage time
 * give each satellite's reference instant in the tmZel scale.
 */
void prgns_t::prgnsAlmnGlo(tblAlmGlo_t* glo, unsigned int t, lsttblPrgSat* lst) {
    if (glo->actual == 0) return;
    if (glo->n4 == 0 || glo->na == 0) return;
    const int64_t dayStart =
        ((int64_t)(glo->n4 - 1) * 1461 + (int64_t)glo->na - 1 - kDaysTo2000) * 86400;
    const double sinceDay = (double)((int64_t)t - dayStart);

    for (unsigned slot = 0; slot < 32; slot++) {
        for (int k = 0; k < ZEL_NUM_ALM_GLO; k++) {
            const tblAlmGloSat_t& s = glo->alm[k];
            if (s.num != slot || !usable(s)) continue;
            const double dt = sinceDay - s.lambdaT;
            if (std::fabs(dt) > kMaxAge) continue;
            double xyz[3], vxyz[3];
            gloAlmanacState(s, dt, xyz, vxyz);
            append(lst, xyz, vxyz, s.num, s.lit, 0);
        }
    }
}
