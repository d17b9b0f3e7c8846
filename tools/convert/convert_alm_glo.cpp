/*
 * GLONASS almanac from ephemeris state vectors, and the almanac model
 * that evaluates it (see convert_alm.h for the derivation).
 */
#include <cmath>
#include <cstring>

#include "convert_alm.h"
#include "convert_orbit.h"

namespace cvt {

namespace {

const double kTMean = 43200.0;            /* mean draconic period, s */
const double kIMean = 63.0 / 180.0;       /* mean inclination, semicircles */
const double kStep = 30.0;                /* integration step, s */
const double kSearch = 46000.0;           /* longer than one revolution */

double wrapPi(double a) {
    a = std::fmod(a + kPi, 2.0 * kPi);
    if (a < 0) a += 2.0 * kPi;
    return a - kPi;
}

/* Osculating inclination and eccentricity vector (components along the
 * node line and perpendicular to it in the orbit plane) of an Earth-fixed
 * state, taken in the inertial frame that coincides with the Earth-fixed
 * one at that instant. */
void osculating(const GloState& s, double& inc, double& e1, double& e2) {
    const double* r = s.r;
    double v[3] = {s.v[0] - kOmegaEarth * r[1], s.v[1] + kOmegaEarth * r[0], s.v[2]};
    double h[3] = {r[1] * v[2] - r[2] * v[1], r[2] * v[0] - r[0] * v[2], r[0] * v[1] - r[1] * v[0]};
    double hn = std::sqrt(h[0] * h[0] + h[1] * h[1] + h[2] * h[2]);
    inc = std::acos(h[2] / hn);
    /* Node line z x h, and the in-plane direction h x node. */
    double nl = std::hypot(h[0], h[1]);
    double nx = -h[1] / nl, ny = h[0] / nl;
    double q[3] = {(h[1] * 0.0 - h[2] * ny) / hn, (h[2] * nx - h[0] * 0.0) / hn,
                   (h[0] * ny - h[1] * nx) / hn};
    double rn = std::sqrt(r[0] * r[0] + r[1] * r[1] + r[2] * r[2]);
    double v2 = v[0] * v[0] + v[1] * v[1] + v[2] * v[2];
    double rv = r[0] * v[0] + r[1] * v[1] + r[2] * v[2];
    double ev[3];
    for (int i = 0; i < 3; i++) ev[i] = ((v2 - kGloGM / rn) * r[i] - rv * v[i]) / kGloGM;
    e1 = ev[0] * nx + ev[1] * ny;
    e2 = ev[0] * q[0] + ev[1] * q[1] + ev[2] * q[2];
}

/* Moves `s` by `dt` (no luni-solar term: the almanac model has none). */
void move(GloState& s, double dt) { gloPropagate(s, dt, nullptr, kStep); }

/* The first ascending node crossing from `s` (at time `t`) in the
 * direction of `dir` (+1 forward, -1 backward) within kSearch seconds.
 * On success `t` and `s` are the crossing's. */
bool findNode(GloState& s, double& t, double dir) {
    GloState cur = s;
    for (double done = 0; done < kSearch; done += kStep) {
        GloState next = cur;
        move(next, dir * kStep);
        /* In forward time the node is where z turns from negative to
         * non-negative. */
        const GloState& early = dir > 0 ? cur : next;
        const GloState& late = dir > 0 ? next : cur;
        if (early.r[2] < 0 && late.r[2] >= 0) {
            double lo = 0, hi = kStep;   /* seconds after `early` */
            for (int it = 0; it < 60 && hi - lo > 1e-7; it++) {
                double mid = 0.5 * (lo + hi);
                GloState m = early;
                move(m, mid);
                (m.r[2] < 0 ? lo : hi) = mid;
            }
            GloState at = early;
            move(at, hi);
            double tEarly = dir > 0 ? t + done : t - done - kStep;
            t = tEarly + hi;
            s = at;
            return true;
        }
        cur = next;
    }
    return false;
}

/* Semi-major axis of the almanac model for draconic period `tdr`, and the
 * node and perigee rates that go with it. */
void modelRates(double tdr, double inc, double e, double omega, double& a, double& nodeRate,
                double& perigeeRate) {
    double n = 2.0 * kPi / tdr;
    double si = std::sin(inc), ci = std::cos(inc);
    double ecw = 1.0 + e * std::cos(omega);
    double e2 = 1.0 - e * e;
    a = std::cbrt(kGloGM * (tdr / (2 * kPi)) * (tdr / (2 * kPi)));
    for (int it = 0; it < 20; it++) {
        double p = a * e2;
        double k = 1.5 * kGloJ2 * (kGloAe / p) * (kGloAe / p);
        double tosc = tdr / (1.0 - k * ((2.0 - 2.5 * si * si) * std::pow(e2, 1.5) / (ecw * ecw) +
                                        ecw * ecw * ecw / e2));
        double next = std::cbrt(kGloGM * (tosc / (2 * kPi)) * (tosc / (2 * kPi)));
        bool done = std::fabs(next - a) < 1e-3;
        a = next;
        if (done) break;
    }
    double p = a * e2;
    double k = kGloJ2 * n * (kGloAe / p) * (kGloAe / p);
    nodeRate = -1.5 * k * ci;
    perigeeRate = 0.75 * k * (5.0 * ci * ci - 1.0);
}

}  // namespace

void gloAlmanacEmpty(unsigned slot, tblAlmGloSat_t& out) {
    std::memset(&out, 0, sizeof out);
    out.length = ZEL_LEN_ALMGLO_SAT;
    out.onEmpty = 1;
    out.num = (uint8_t)slot;
    out.lit = 24;
}

void gloAlmanacOrbit(const tblOprGlo_t& eph, double tbSinceDayStart, tblAlmGloSat_t& out) {
    /* The ascending node nearest tb. */
    GloState s0 = gloStateAtTb(eph);
    GloState fwd = s0, bwd = s0;
    double tf = tbSinceDayStart, tbk = tbSinceDayStart;
    bool hasF = findNode(fwd, tf, +1.0);
    bool hasB = findNode(bwd, tbk, -1.0);
    if (!hasF && !hasB) return;
    bool useF = hasF && (!hasB || tf - tbSinceDayStart <= tbSinceDayStart - tbk);
    GloState node = useF ? fwd : bwd;
    double tNode = useF ? tf : tbk;

    /* One revolution to the next node, averaging the osculating elements. */
    double sumI = 0, sumE1 = 0, sumE2 = 0;
    int samples = 0;
    GloState cur = node;
    double tNext = tNode;
    {
        GloState probe = node;
        move(probe, kStep);   /* step off the node so the search finds the next one */
        double tp = tNode + kStep;
        if (!findNode(probe, tp, +1.0)) return;
        tNext = tp;
    }
    double tdr = tNext - tNode;
    int n = (int)std::ceil(tdr / kStep);
    double h = tdr / n;
    for (int i = 0; i < n; i++) {
        double inc, e1, e2;
        osculating(cur, inc, e1, e2);
        sumI += inc;
        sumE1 += e1;
        sumE2 += e2;
        samples++;
        move(cur, h);
    }
    double inc = sumI / samples;
    double e1 = sumE1 / samples, e2 = sumE2 / samples;
    double ecc = std::hypot(e1, e2);
    double omegaNode = std::atan2(e2, e1);
    double lambdaNode = std::atan2(node.r[1], node.r[0]);

    double a, nodeRate, perigeeRate;
    modelRates(tdr, inc, ecc, omegaNode, a, nodeRate, perigeeRate);
    double w = std::floor(tNode / tdr);
    double back = w * tdr;
    out.lambdaT = tNode - back;
    out.lambda = wrapPi(lambdaNode - (nodeRate - kOmegaEarth) * back) / kPi;
    out.omega = wrapPi(omegaNode - perigeeRate * back) / kPi;
    out.dI = inc / kPi - kIMean;
    out.dT = tdr - kTMean;
    out.dTdot = 0.0;
    out.eps = ecc;
}

void gloAlmanacPosition(const tblAlmGloSat_t& al, double t, double xyz[3]) {
    double tav = kTMean + al.dT;
    double dt = t - al.lambdaT;
    double w = std::floor(dt / tav);
    double tdr = tav + (2.0 * w + 1.0) * al.dTdot;
    double inc = (kIMean + al.dI) * kPi;
    double e = al.eps;
    double omegaA = al.omega * kPi;
    double a, nodeRate, perigeeRate;
    modelRates(tdr, inc, e, omegaA, a, nodeRate, perigeeRate);
    double sinceNode = dt - (w * tdr + al.dTdot * w * w);
    double lambda = al.lambda * kPi + (nodeRate - kOmegaEarth) * dt;
    double omegaW = omegaA + perigeeRate * (dt - sinceNode);
    double omega = omegaA + perigeeRate * dt;
    /* Mean argument of latitude: at the node of revolution W the true
     * anomaly is -omega; from there it gains 2 pi per draconic period. */
    double nu0 = -omegaW;
    double e0 = std::atan2(std::sqrt(1.0 - e * e) * std::sin(nu0), e + std::cos(nu0));
    double lat = omegaW + e0 - e * std::sin(e0) + 2.0 * kPi / tdr * sinceNode;
    double m = lat - omega;
    double ea = m;
    for (int it = 0; it < 30; it++) ea = m + e * std::sin(ea);
    double nu = std::atan2(std::sqrt(1.0 - e * e) * std::sin(ea), std::cos(ea) - e);
    double u = nu + omega;
    double r = a * (1.0 - e * std::cos(ea));
    double cl = std::cos(lambda), sl = std::sin(lambda);
    double cu = std::cos(u), su = std::sin(u);
    double ci = std::cos(inc), si = std::sin(inc);
    xyz[0] = r * (cl * cu - sl * su * ci);
    xyz[1] = r * (sl * cu + cl * su * ci);
    xyz[2] = r * su * si;
}

void gloAlmanac(const NavData& nav, int64_t utcT, const GloDay& day, int64_t dayStartUtc,
                const int freq[33], tblAlmGlo_t& out) {
    std::memset(&out, 0, sizeof out);
    out.length = ZEL_LEN_ALMGLO;
    out.actual = 1;
    out.na = day.day;
    out.n4 = day.n4;
    for (unsigned k = 0; k < ZEL_NUM_ALM_GLO; k++) {
        tblAlmGloSat_t& e = out.alm[k];
        gloAlmanacEmpty(k + 1, e);
        int slot = (int)k + 1;
        const GloRecord* r = nav.gloNearest(slot, utcT);
        if (!r || freq[slot] == kNoFreq) continue;
        gloAlmanacOrbit(r->tbl, (double)(r->tb - dayStartUtc), e);
        if (e.dT == 0.0) {   /* no node found: not an orbit the model can carry */
            gloAlmanacEmpty(k + 1, e);
            continue;
        }
        e.onEmpty = 0;
        e.onSystem = r->healthy ? 1 : 0;
        e.lit = (uint8_t)(freq[slot] < 0 ? freq[slot] + 32 : freq[slot]);
        e.tauA = r->tbl.tauN;
    }
}

}  // namespace cvt
