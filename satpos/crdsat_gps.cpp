/*
 * GPS satellite position, velocity and corrected pseudorange from the
 * broadcast ephemeris, and the GPS pass over a converter list.
 *
 * The position is that of the emission instant (reception time less the
 * corrected pseudorange over c), but the node longitude uses the time of
 * reception: this leaves the coordinates in the Earth-fixed frame of the
 * reception instant, with the Earth's rotation during the signal's travel
 * already accounted for, which is what the position solution wants.
 */
#include <cmath>
#include <cstdint>

#include "satpos/crdsat.h"

namespace {

constexpr double kC = 299792458.0;             /* m/s */
constexpr double kGM = 3.986005e14;            /* m^3/s^2, GPS orbits */
constexpr double kOmegaE = 7.2921151467e-5;    /* rad/s */
constexpr double kRelF = -4.442807633e-10;     /* s/m^1/2 */

/* Ionosphere-free weights for the two GPS carriers, gamma = (77/60)^2:
 * gamma/(gamma-1) and 1/(gamma-1). */
constexpr double kIonoFree1 = 2.5457277801631593;
constexpr double kIonoFree2 = 1.5457277801631593;

/* tmZel (GLONASS time, UTC + 3 h, from 2000) to GPS seconds from
 * 1980-01-06, before the GPS-UTC seconds are added: the receiver-time
 * offset 630720000 less the 10800 s of Moscow time. */
constexpr uint32_t kTmZelToGps = 630709200u;

constexpr int64_t kWeek = 604800;
constexpr int64_t kHalfWeek = 302400;

/* Kepler's equation: at most this many Newton passes, each stopping as
 * soon as its step is strictly below the threshold. */
constexpr int kKeplerPasses = 9;
constexpr double kKeplerStep = 1e-8;

/* Plausibility bounds of a GPS row. */
constexpr double kMaxRadius = 30000000.0;     /* m */
constexpr double kMaxSpeed = 7000.0;          /* m/s */

/* Brings a time difference into the week: strictly beyond half a week it
 * wraps by a whole week. */
int64_t weekRule(int64_t dt) {
    if (dt > kHalfWeek) return dt - kWeek;
    if (dt < -kHalfWeek) return dt + kWeek;
    return dt;
}

double weekRule(double dt) {
    if (dt > (double)kHalfWeek) return dt - (double)kWeek;
    if (dt < -(double)kHalfWeek) return dt + (double)kWeek;
    return dt;
}

}  // namespace

/*
 * Kepler's equation E - e sin E = M by Newton's method from E = M. At most
 * nine passes, stopping as soon as a step is strictly below 1e-8 rad; an
 * orbit that needs more is refused rather than used half-solved. Returns
 * the number of passes taken, 0 when it did not get there (E is then left
 * alone).
 */
int crdsat_t::keplerE(double M, double e, double* E) {
    double Ek = M;
    for (int pass = 1; pass <= kKeplerPasses; pass++) {
        double step = (Ek - e * std::sin(Ek) - M) / (1.0 - e * std::cos(Ek));
        Ek -= step;
        if (std::fabs(step) < kKeplerStep) {
            *E = Ek;
            return pass;
        }
    }
    return 0;
}

int crdsat_t::calcCrdGps(unsigned int tm, int dUtc, tblHdr_t* hdr,
                         tblObs_t* obs, tblOprGps_t* opr, tblCrdSat_t* out,
                         int sig1, int sig2, tblMeteo* meteo,
                         tblIonGps_t* ion) {
    if (hdr->badNavInfCt != 0 || obs->actual[sig1] == 0 || opr->actual == 0)
        return 0;

    out->num = hdr->num;
    out->lit = (int8_t)hdr->lit;
    out->sys = hdr->sys;

    /* GPS time of reception and its second of the week. */
    const uint32_t t = tm + (uint32_t)dUtc + kTmZelToGps;
    const uint32_t tow = t % (uint32_t)kWeek;

    /* Satellite clock, evaluated at reception time on purpose. */
    const double dt = (double)weekRule((int64_t)tow - (int64_t)opr->toc);
    const double dtsv = opr->af0 + opr->af1 * dt + opr->af2 * dt * dt;

    /* Pseudorange. The group delay applies to single-frequency C1 (and is
     * deliberately not scaled when the second signal stands in); the
     * ionosphere-free pair needs none. */
    const uint8_t* act = obs->actual;
    double P;
    if (sig1 == sig2) {
        if (act[sig1] != 1) return 0;
        P = obs->psvd[sig1] + kC * (dtsv - opr->tgd);
        out->dop = obs->dop[sig1];
    } else if (act[sig1] != 1) {
        if (act[sig2] != 1) return 0;
        P = obs->psvd[sig2] + kC * (dtsv - opr->tgd);
        out->dop = obs->dop[sig2];
    } else if (act[sig2] == 1 && (sig1 == 0 || sig1 == 2) &&
               (sig2 == 1 || sig2 == 3)) {
        P = kIonoFree1 * obs->psvd[sig1] - kIonoFree2 * obs->psvd[sig2];
        P += kC * dtsv;
        out->dop = obs->dop[sig1];
    } else {
        P = obs->psvd[sig1] + kC * (dtsv - opr->tgd);
        out->dop = obs->dop[sig1];
    }
    out->psvd = P;

    /* Mean motion. */
    const double sqrtA = opr->sqrtA;
    const double A = sqrtA * sqrtA;
    const double n = std::sqrt(kGM / (A * A * A)) + opr->deltaN;

    /* Time from the ephemeris epoch: at reception for the node, at
     * emission for everything else. */
    const double tkR = (double)weekRule((int64_t)tow - (int64_t)opr->toe);
    const double tk = weekRule((double)tow - P / kC - (double)opr->toe);

    const double e = opr->e;
    const double M = opr->m0 + n * tk;
    double E;
    if (keplerE(M, e, &E) == 0) return 0;

    const double sinE = std::sin(E), cosE = std::cos(E);
    const double den = 1.0 - e * cosE;
    const double rootE = std::sqrt(1.0 - e * e);
    const double nu = std::atan2(rootE * sinE / den, (cosE - e) / den);
    const double Phi = nu + opr->omega;

    /* Second-harmonic corrections. */
    const double s2 = std::sin(2.0 * Phi), c2 = std::cos(2.0 * Phi);
    const double du = opr->cus * s2 + opr->cuc * c2;
    const double dr = opr->crs * s2 + opr->crc * c2;
    const double di = opr->cis * s2 + opr->cic * c2;

    /* Relativistic clock term, in metres. */
    const double rel = kRelF * e * sqrtA * sinE;
    out->psvd += rel * kC;

    const double u = Phi + du;
    const double r = A * (1.0 - e * cosE) + dr;
    const double i = opr->i0 + opr->idot * tk + di;
    const double Om = (opr->omegaDot - kOmegaE) * tkR + opr->omega0 -
                      kOmegaE * (double)opr->toe;

    const double sinU = std::sin(u), cosU = std::cos(u);
    const double sinI = std::sin(i), cosI = std::cos(i);
    const double sinO = std::sin(Om), cosO = std::cos(Om);
    /* The row is a packed record: its doubles may sit on 4-byte
     * boundaries, so the geometry works on aligned copies. */
    const double xp = r * cosU, yp = r * sinU;
    double xyz[3];
    xyz[0] = xp * cosO - yp * cosI * sinO;
    xyz[1] = xp * sinO + yp * cosI * cosO;
    xyz[2] = yp * sinI;
    for (int k = 0; k < 3; k++) out->xyz[k] = xyz[k];

    /* Atmosphere at the receiver point (WGS-84). */
    double corr = 0.0;
    if (ion->actual == 1) {
        double alpha[4] = {ion->alpha0, ion->alpha1, ion->alpha2, ion->alpha3};
        double beta[4] = {ion->beta0, ion->beta1, ion->beta2, ion->beta3};
        /* Local time: GPS seconds plus the longitude at 240 s per degree,
         * truncated toward zero. */
        const double tlRaw = (double)t + rcvPnt->blhWGS84[1] / 15.0 * 3600.0;
        const uint32_t tl =
            std::isfinite(tlRaw) ? (uint32_t)(int64_t)tlRaw : t;
        const double I = calcKlobuchara(alpha, beta, xyz,
                                        rcvPnt->xyzWGS84, rcvPnt->blhWGS84,
                                        tl);
        corr = -I * kC;
    }
    if (meteo != nullptr && meteo->actual == 1 && rcvPnt->set == 1) {
        const double R = calcRange(xyz, rcvPnt->xyzWGS84);
        const double el = calcUm(xyz, rcvPnt->xyzWGS84);
        corr -= calcTrop(meteo, el, R);
    }
    /* The relativistic term goes in a second time, here without the
     * factor c (about 1e-8 m); the receiver has always done so. */
    out->psvd += corr + rel;

    /* Velocity of the unperturbed ellipse, in the rotating frame. */
    const double Vu = (1.0 + e * std::cos(nu)) * A * n / rootE;
    const double Vr = A * n * e * std::sin(nu) / rootE;
    const double vxp = Vr * cosU - Vu * sinU;
    const double vyp = Vr * sinU + Vu * cosU;
    double v[3];
    v[0] = vxp * cosO - vyp * cosI * sinO + kOmegaE * xyz[1];
    v[1] = vxp * sinO + vyp * cosI * cosO - kOmegaE * xyz[0];
    v[2] = vyp * sinI;
    for (int k = 0; k < 3; k++) out->vxyz[k] = v[k];

    /* A NaN norm compares false and passes. */
    out->bad = 0;
    const double radius =
        std::sqrt(xyz[0] * xyz[0] + xyz[1] * xyz[1] + xyz[2] * xyz[2]);
    const double speed = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    if (radius > kMaxRadius || speed > kMaxSpeed) {
        out->bad = 1;
        return 0;
    }
    return 1;
}

/* GPS satellites of the list on C1, into list 0. A refused satellite
 * leaves its row to the next one. */
lsttblCrdSat_t* crdsat_t::getGps(lsttblSat_t* lst, unsigned int tm,
                                 int dUtc) {
    lsttblCrdSat_t* out = lstCrdSat[0];
    out->num = 0;
    for (uint32_t k = 0; k < lst->numGps; k++) {
        tblSatGps* s = &lst->tblGps[k];
        if (calcCrdGps(tm, dUtc, s->tblHdr, s->tblObs, s->tblOprGps,
                       &out->tbl[out->num], 0, 0, lst->meteo,
                       s->tblIonGps) == 1)
            out->num++;
    }
    if (out->num != 0) out->tm = tm;
    return out;
}
