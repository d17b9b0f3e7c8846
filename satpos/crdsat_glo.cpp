/*
 * GLONASS satellite position, velocity and corrected pseudorange from the
 * broadcast ephemeris, and the GLONASS pass over a converter list.
 *
 * The ephemeris gives position, velocity and luni-solar acceleration in
 * the Earth-fixed PZ-90 frame at the reference time tb. The state is moved
 * into the inertial frame that coincides with the Earth-fixed one at tb,
 * integrated to the emission instant with a fourth-order Runge-Kutta-
 * Nystrom scheme under the central field plus J2 (luni-solar acceleration
 * held constant), and turned back into the Earth-fixed frame of the
 * reception instant. Times of day are Moscow time (tmZel modulo 86400),
 * as tb is.
 */
#include <cmath>
#include <cstdint>

#include "satpos/crdsat.h"

namespace {

constexpr double kC = 299792458.0;              /* m/s */
constexpr double kOmegaE = 7.2921151467e-5;     /* rad/s */
constexpr double kGM = 3.986004418e14;          /* m^3/s^2, PZ-90 */
constexpr double kGMae2 = 1.6215312640127506e28; /* GM * ae^2, ae = 6378136 m */
constexpr double kJ2x1_5 = 0.0016239386250000002; /* 3/2 * J2 */

/* Nominal integration step, s. */
constexpr double kStep = 60.0;

/* Carrier frequencies, MHz: band 1 and band 2 by letter, third band. */
constexpr double kF1Base = 1602.0, kF1Letter = 0.5625;
constexpr double kF2Base = 1246.0, kF2Letter = 0.4375;
constexpr double kF3 = 1202.25;

constexpr int64_t kDay = 86400;
constexpr int64_t kHalfDay = 43200;

/* Plausibility bounds of a GLONASS row. */
constexpr double kMaxRadius = 30000000.0;   /* m */
constexpr double kMinRadius = 15000000.0;   /* m */
constexpr double kMaxSpeed = 7000.0;        /* m/s */
constexpr double kMinSpeed = 1000.0;        /* m/s */

/* Brings a time difference into the day. Both bounds are inclusive (GPS
 * uses strict ones): exactly half a day becomes minus half a day and the
 * reverse; each wrap is applied once. */
int64_t dayRule(int64_t dt) {
    if (dt >= kHalfDay) return dt - kDay;
    if (dt <= -kHalfDay) return dt + kDay;
    return dt;
}

double dayRule(double dt) {
    if (dt >= (double)kHalfDay) return dt - (double)kDay;
    if (dt <= -(double)kHalfDay) return dt + (double)kDay;
    return dt;
}

double norm3(const double* v) {
    return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
}

}  // namespace

/*
 * Integration steps over the interval tau: trunc(|tau| / 60) + 1, so that
 * no step exceeds 60 s (59.9 s is one step, 60 s two of 30 s, 120 s three
 * of 40 s). A tau that is not finite or lies beyond a year can only come
 * from a garbage pseudorange; it gets one step, which keeps the arithmetic
 * defined (the row then fails the radius bounds or is NaN).
 */
int crdsat_t::gloSteps(double tau) {
    const double a = std::fabs(tau);
    if (!(a < 3.2e7)) return 1;
    return (int)std::trunc(a / kStep) + 1;
}

/*
 * Acceleration in the inertial frame: central field, the J2 term of the
 * Earth's oblateness and the luni-solar acceleration of the ephemeris.
 * No centrifugal or Coriolis terms, as the frame does not rotate.
 */
void crdsat_t::calc_F(double* r, double* accLS, double* acc) {
    const double x = r[0], y = r[1], z = r[2];
    /* r^3 and r^5 as products of r^2 and r (pow with a constant exponent
     * costs as much as the rest of the step), and the two field strengths
     * divided out once for the three axes. */
    const double r2 = x * x + y * y + z * z;
    const double rr = std::sqrt(r2);
    const double r3 = r2 * rr;
    const double r5 = r3 * r2;
    const double central = kGM / r3;
    const double j2 = kJ2x1_5 * kGMae2 / r5;
    const double zr = 5.0 * z * z / r2;
    acc[0] = -central * x - j2 * x * (1.0 - zr) + accLS[0];
    acc[1] = -central * y - j2 * y * (1.0 - zr) + accLS[1];
    acc[2] = -central * z - j2 * z * (3.0 - zr) + accLS[2];
}

int crdsat_t::calcCrdGlo(unsigned int tm, tblHdr_t* hdr, tblObs_t* obs,
                         tblOprGlo_t* opr, tblCrdSat_t* out, int sig1,
                         int sig2, tblMeteo* meteo) {
    const uint8_t* act = obs->actual;
    if (act[sig1] == 0 || opr->actual == 0) {
        out->bad = 1;
        return 0;
    }
    /* Two signals of one band (C1 with B1, C2 with B2), or a pair given
     * the wrong way round, are refused without touching the row. */
    if (sig1 > sig2 || (sig1 == 0 && sig2 == 2) || (sig1 == 1 && sig2 == 3))
        return 0;

    /* Letters -7..-1 are stored as 25..31. Taken back to -7..-1 and then
     * as an unsigned byte they enter the formulas as 249..255; both band
     * formulas keep the ratio 9/7 for any letter, so the combination
     * weights do not depend on it and this is harmless. */
    uint8_t k = hdr->lit;
    if (k > 24) k = (uint8_t)(k - 32);

    double f1 = kF1Base, f2 = kF2Base;
    if ((sig1 == 0 || sig1 == 2) && act[sig1] == 1)
        f1 = kF1Base + kF1Letter * k;
    else if (sig1 == 4 && act[4] == 1)
        f1 = kF3;
    if ((sig2 == 1 || sig2 == 3) && act[sig2] == 1)
        f2 = kF2Base + kF2Letter * k;
    else if (sig2 == 4 && act[4] == 1)
        f2 = kF3;

    /* Pseudorange: the ionosphere-free pair when both bands are there
     * (the second band first moved by the inter-band delay), else the
     * signal that is. */
    double P, dop;
    if ((sig1 == 0 || sig1 == 2) && (sig2 == 1 || sig2 == 3)) {
        if (act[sig1] != 1) {
            if (act[sig2] != 1) return 0;
            P = obs->psvd[sig2];
            dop = obs->dop[sig2];
        } else if (act[sig2] != 1) {
            P = obs->psvd[sig1];
            dop = obs->dop[sig1];
        } else {
            const double d = f1 * f1 - f2 * f2;
            P = f1 * f1 / d * obs->psvd[sig1] -
                f2 * f2 / d * (obs->psvd[sig2] - kC * opr->dTauN);
            dop = obs->dop[sig1];
        }
    } else if (act[sig1] == 1) {
        P = obs->psvd[sig1];
        dop = obs->dop[sig1];
    } else {
        if (act[sig2] != 1) return 0;
        P = obs->psvd[sig2];
        dop = obs->dop[sig2];
    }
    out->dop = dop;

    out->num = hdr->num;
    out->lit = (int8_t)hdr->lit;
    out->sys = hdr->sys;

    /* Reception time of day and its distance from the reference time. */
    const uint32_t t = tm % (uint32_t)kDay;
    const double dt = (double)dayRule((int64_t)t - (int64_t)opr->tb);

    /* Satellite clock at reception time. The frequency term enters with
     * the same sign as tau_n, opposite to the interface document's clock
     * model; this is the receiver's long-standing arithmetic and is kept
     * (the difference, 2 c gamma_n dt, is typically below a metre within
     * the quarter hour around tb). */
    P -= kC * (dt * opr->gammaN + opr->tauN);
    out->psvd = P;

    /* Inertial frame equal to the Earth-fixed one at tb. */
    double r[3] = {opr->x, opr->y, opr->z};
    double v[3] = {opr->vx - kOmegaE * opr->y, opr->vy + kOmegaE * opr->x,
                   opr->vz};
    double accLS[3] = {opr->ax, opr->ay, opr->az};

    /* Integrate from tb to the emission instant in N equal steps of at
     * most 60 s; h is negative when emission precedes tb. */
    const double tau = dayRule((double)t - P / kC - (double)opr->tb);
    const int N = gloSteps(tau);
    const double h = tau / N;

    double k1[3], k2[3], k3[3], rs[3];
    for (int step = 0; step < N; step++) {
        calc_F(r, accLS, k1);
        for (int j = 0; j < 3; j++) {
            k1[j] *= h;
            rs[j] = r[j] + v[j] * h / 2.0 + k1[j] * h / 8.0;
        }
        calc_F(rs, accLS, k2);
        for (int j = 0; j < 3; j++) {
            k2[j] *= h;
            rs[j] = r[j] + v[j] * h + k2[j] * h / 2.0;
        }
        calc_F(rs, accLS, k3);
        for (int j = 0; j < 3; j++) {
            k3[j] *= h;
            r[j] = r[j] + v[j] * h + (k1[j] + 2.0 * k2[j]) * h / 6.0;
            v[j] = v[j] + (k1[j] + 4.0 * k2[j] + k3[j]) / 6.0;
        }
    }

    /* Back to the Earth-fixed frame of the reception instant: the Earth
     * has turned by omega * dt since tb. */
    const double th = -kOmegaE * dt;
    const double sth = std::sin(th), cth = std::cos(th);
    /* The row is a packed record whose doubles may sit on 4-byte
     * boundaries: the geometry below works on aligned copies. */
    double xyz[3], vxyz[3];
    xyz[0] = r[0] * cth - r[1] * sth;
    xyz[1] = r[0] * sth + r[1] * cth;
    xyz[2] = r[2];
    vxyz[0] = v[0] * cth - v[1] * sth + kOmegaE * xyz[1];
    vxyz[1] = v[0] * sth + v[1] * cth - kOmegaE * xyz[0];
    vxyz[2] = v[2];
    for (int j = 0; j < 3; j++) {
        out->xyz[j] = xyz[j];
        out->vxyz[j] = vxyz[j];
        out->acc[j] = accLS[j];
    }

    /* Troposphere at the receiver point (PZ-90). The range uses the
     * rotated position but the elevation the integrated one before the
     * rotation, in the frame of tb: that is how the receiver has always
     * computed it, and it is kept. */
    if (meteo != nullptr && meteo->actual == 1 && rcvPnt->set == 1) {
        const double R = calcRange(xyz, rcvPnt->xyzPZ90);
        const double el = calcUm(r, rcvPnt->xyzPZ90);
        out->psvd -= calcTrop(meteo, el, R);
    }

    /* An implausible row is flagged but still returned and counted; the
     * users of the list skip rows with `bad` set. */
    const double radius = norm3(xyz);
    const double speed = norm3(vxyz);
    out->bad = 0;
    if (radius > kMaxRadius || radius < kMinRadius) out->bad = 1;
    if (speed > kMaxSpeed || speed < kMinSpeed) out->bad = 1;
    return 1;
}

/*
 * GLONASS satellites of the list on the pair (sig1, sig2), into list sig1,
 * from the ephemeris of the signal's navigation source. Signal indices
 * outside 0..4 name no list and no observation: nothing is computed and
 * the call returns a null list.
 */
lsttblCrdSat_t* crdsat_t::getGlo(lsttblSat_t* lst, unsigned int tm,
                                 int sig1, int sig2) {
    if (sig1 < 0 || sig1 >= CRDSAT_NUM_LISTS || sig2 < 0 ||
        sig2 >= CRDSAT_NUM_LISTS)
        return nullptr;
    lsttblCrdSat_t* out = lstCrdSat[sig1];
    out->num = 0;
    for (uint32_t k = 0; k < lst->numGlo; k++) {
        tblSatGlo* s = &lst->tblGlo[k];
        if (calcCrdGlo(tm, s->tblHdr, s->tblObs, s->tblOprGlo[SignalNI[sig1]],
                       &out->tbl[out->num], sig1, sig2, lst->meteo) == 1)
            out->num++;
    }
    if (out->num != 0) out->tm = tm;
    return out;
}
