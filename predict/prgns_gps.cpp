/*
 * GPS almanac propagation: Earth-fixed position and velocity of every
 * healthy satellite of a GPS almanac at a receiver time, on the plain
 * Keplerian ellipse of the almanac (no harmonic corrections), with the
 * node turning at the almanac's rate less the Earth's rotation.
 */
#include <cmath>
#include <cstdint>

#include "predict/prgns.h"
#include "time/tmzel.h"

namespace {

const double kGM = 3.986005e14;               /* m^3/s^2, GPS orbits */
const double kOmegaE = 7.2921151467e-5;       /* rad/s */
const double kRefInclination = 0.9424777960769379;   /* 0.3 pi rad */
const uint32_t kWeek = 604800;

/*
 * Receiver seconds of GPS week 0, second 0 of the almanac's week count,
 * before the leap seconds: 1024 weeks (the week numbers count from the
 * rollover of August 1999) and the 10800 s by which the receiver's GLONASS
 * time scale runs ahead of UTC.
 */
const uint32_t kEpochShift = 619326000u;

/* An almanac is used up to 90 days from its reference time, s. */
const double kMaxAge = 7.776e6;

/* Newton passes on Kepler's equation: three are plenty for e < 0.03. */
const int kKeplerPasses = 3;

}  // namespace

void prgns_t::prgnsAlmnGps(tblAlmGps_t* alm, tblTmPrmGps_t* tp, unsigned int t,
                           lsttblPrgSat* lst) {
    if (alm->actual == 0 || tp->actual == 0) return;
    prgnsAlmnGps(alm, tp->dtLs, t, lst);
}

void prgns_t::prgnsAlmnGps(tblAlmGps_t* alm, int dtLs, unsigned int t,
                           lsttblPrgSat* lst) {
    if (alm->actual == 0) return;

    /* Reference time of the almanac in the receiver scale; the sums wrap
     * as unsigned 32-bit values do. */
    const uint32_t T = TmZel::tmRsvrTotmZel(alm->toa + alm->wna * kWeek +
                                            kEpochShift - (uint32_t)dtLs);
    const double dt = (double)((int64_t)t - (int64_t)T);
    if (std::fabs(dt) > kMaxAge) return;

    for (int p = 1; p <= ZEL_NUM_ALM_GPS; p++) {
        const tblAlmGpsSat_t& s = alm->alm[p - 1];
        if (s.onEmpty == 1 || s.healL != 0) continue;

        const double e = s.e;
        const double a = s.sqrtA * s.sqrtA;
        const double n = std::sqrt(kGM / (a * a * a));
        const double M = s.m0 + n * dt;
        double E = M;
        for (int pass = 0; pass < kKeplerPasses; pass++)
            E -= (E - e * std::sin(E) - M) / (1.0 - e * std::cos(E));

        const double root = std::sqrt(1.0 - e * e);
        const double nu = std::atan2(root * std::sin(E), std::cos(E) - e);
        const double u = nu + s.omega;
        const double r = a * (1.0 - e * std::cos(E));
        const double i = kRefInclination + s.deltaI;
        /* The node at t: the entry's own reference time fixes the
         * Earth's rotation since the start of the week. */
        const double Om = s.omega0 + (s.omegaDot - kOmegaE) * dt -
                          kOmegaE * (double)s.toa;

        const double cu = std::cos(u), su = std::sin(u);
        const double ci = std::cos(i), si = std::sin(i);
        const double cO = std::cos(Om), sO = std::sin(Om);
        const double xp = r * cu, yp = r * su;
        double xyz[3];
        xyz[0] = xp * cO - yp * ci * sO;
        xyz[1] = xp * sO + yp * ci * cO;
        xyz[2] = yp * si;

        /* Velocity on the ellipse, carried into the rotating frame; the
         * node rate is left out, its effect is a fraction of a m/s. */
        const double vr = a * n * e * std::sin(nu) / root;
        const double vt = a * n * (1.0 + e * std::cos(nu)) / root;
        const double vxp = vr * cu - vt * su;
        const double vyp = vr * su + vt * cu;
        double vxyz[3];
        vxyz[0] = vxp * cO - vyp * ci * sO + kOmegaE * xyz[1];
        vxyz[1] = vxp * sO + vyp * ci * cO - kOmegaE * xyz[0];
        vxyz[2] = vyp * si;

        append(lst, xyz, vxyz, (uint8_t)p, (uint8_t)p, 1);
    }
}
