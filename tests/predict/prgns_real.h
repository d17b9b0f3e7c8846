/*
 * The real sky of the sample recording for the prediction tests: the
 * broadcast ephemerides of 2024-01-01 (IGS merged navigation file of
 * data/tlse-2024-001), the positions they give (through the library's
 * own satellite computation), and almanacs built from them as the
 * broadcast almanacs hold their orbits.
 *
 * GPS almanac: each satellite's ephemeris moved to the reference time toa
 * (mean anomaly, node and inclination advanced at their rates), without
 * its harmonic corrections and with the semi-major axis that keeps its
 * mean motion, every value cut to its broadcast resolution.
 *
 * GLONASS almanac: osculating elements at the first ascending node of the
 * almanac day, found from the ephemerides alone. Each satellite's state is
 * followed through the day; at an ascending node (z turning positive) the
 * time, the Earth-fixed longitude, and the inclination, eccentricity and
 * argument of perigee of the osculating ellipse are taken; the draconic
 * period is the time to the next node. The first node of the Moscow day
 * falls before the file's first ephemeris for some satellites; theirs is
 * carried back one revolution by the change that the file shows between
 * their next two nodes. Nothing here uses the almanac model that the
 * library evaluates.
 *
 * Times: tmZel is Moscow time (UTC + 3 h) from 2000; GPS time is UTC + 18 s
 * on that day.
 */
#ifndef ZELNAV_TESTS_PREDICT_PRGNS_REAL_H
#define ZELNAV_TESTS_PREDICT_PRGNS_REAL_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "prgns_sky.h"
#include "rinex_nav.h"
#include "satpos/crdsat.h"
#include "tbl_nav.h"

namespace prgns_real {

/* The day's times, constants and the station, shared with the almanac
 * tests; the orbit constants below are this header's own. */
using prgns_sky::kDay0;
using prgns_sky::kGpsTo2000;
using prgns_sky::kGpsWeek;
using prgns_sky::kLeap;
using prgns_sky::kLeapFolded;
using prgns_sky::kN4;
using prgns_sky::kNa;
using prgns_sky::kPi;
using prgns_sky::kWeek;
using prgns_sky::kWna;
using prgns_sky::tlse;
using prgns_sky::tmOfGps;

const double kC = 299792458.0;
const double kOmegaE = 7.2921151467e-5;
const double kGpsGM = 3.986005e14;
const double kGloGM = 3.986004418e14;
const int64_t kMoscow = 10800;                     /* UTC to Moscow time, s */

inline std::string navPath() {
    return std::string(ZELNAV_DATA_DIR) + "/tlse-2024-001/BRDC00IGS_R_20240010000_01D_MN.rnx.gz";
}
inline std::string obsPath() {
    return std::string(ZELNAV_DATA_DIR) + "/tlse-2024-001/TLSE00FRA_R_20240011200_05M_01S_MO.rnx.gz";
}

/* tmZel of a UTC time in seconds from 2000. */
inline uint32_t tmOfUtc(int64_t utc) { return (uint32_t)(utc + kMoscow); }

/* The navigation file, read once. */
inline const rinex::NavFile& nav() {
    static rinex::NavFile file;
    static bool loaded = false;
    if (!loaded) {
        rinex::Diagnostics diag;
        if (!rinex::readNavFile(navPath(), file, diag)) std::abort();
        loaded = true;
    }
    return file;
}

inline uint32_t tmOf(const rinex::GpsEph& e) {
    return tmOfGps((int64_t)e.week * kWeek + (int64_t)e.toe - kGpsTo2000);
}
inline uint32_t tmOf(const rinex::GloEph& e) { return tmOfUtc(e.tocSec2000); }

/* The healthy ephemeris of a satellite whose reference time is nearest
 * t, or null. */
template <class Eph>
const Eph* nearest(const std::vector<Eph>& all, int num, uint32_t t, int Eph::*id) {
    const Eph* best = nullptr;
    int64_t bestD = 0;
    for (const Eph& e : all) {
        if (e.*id != num || e.health != 0) continue;
        int64_t d = std::llabs((int64_t)tmOf(e) - (int64_t)t);
        if (!best || d < bestD) {
            best = &e;
            bestD = d;
        }
    }
    return best;
}
inline const rinex::GpsEph* nearestGps(int prn, uint32_t t) {
    return nearest(nav().gps, prn, t, &rinex::GpsEph::prn);
}
const std::vector<rinex::GloEph>& gloEphemerides(int slot);
inline const rinex::GloEph* nearestGlo(int slot, uint32_t t) {
    if (slot < 1 || slot > 32) return nullptr;
    return nearest(gloEphemerides(slot), slot, t, &rinex::GloEph::slot);
}

/* Earth-fixed position and velocity of a GPS satellite at t from its
 * ephemeris, by the library's satellite computation: a zero pseudorange
 * and no clock terms make emission and reception the same instant. */
inline bool gpsEphState(const rinex::GpsEph& e, uint32_t t, double* xyz, double* vxyz) {
    tblHdr_t hdr;
    tblObs_t obs;
    tblOprGps_t opr;
    tblIonGps_t ion;
    tblCrdSat_t out;
    std::memset(&hdr, 0, sizeof hdr);
    std::memset(&obs, 0, sizeof obs);
    std::memset(&opr, 0, sizeof opr);
    std::memset(&ion, 0, sizeof ion);
    std::memset(&out, 0, sizeof out);
    hdr.num = (uint8_t)e.prn;
    hdr.sys = 1;
    obs.actual[0] = 1;
    opr.actual = 1;
    opr.toc = opr.toe = (uint32_t)e.toe;
    opr.sqrtA = e.sqrtA;
    opr.e = e.e;
    opr.m0 = e.m0;
    opr.deltaN = e.deltaN;
    opr.omega = e.omega;
    opr.omega0 = e.omega0;
    opr.omegaDot = e.omegaDot;
    opr.i0 = e.i0;
    opr.idot = e.idot;
    opr.cus = e.cus;
    opr.cuc = e.cuc;
    opr.crs = e.crs;
    opr.crc = e.crc;
    opr.cis = e.cis;
    opr.cic = e.cic;
    crdsat_t c;
    if (c.calcCrdGps(t, kLeap, &hdr, &obs, &opr, &out, 0, 0, nullptr, &ion) != 1) return false;
    std::memcpy(xyz, &out.xyz, 3 * sizeof(double));
    std::memcpy(vxyz, &out.vxyz, 3 * sizeof(double));
    return true;
}

/* The same for GLONASS at a time with a fraction of a second: the
 * computation takes whole receiver seconds, so the fraction goes in as
 * light time, and the Earth's turn over it is undone afterwards. */
inline void gloEphState(const rinex::GloEph& e, double t, double* xyz, double* vxyz) {
    tblHdr_t hdr;
    tblObs_t obs;
    tblOprGlo_t opr;
    tblCrdSat_t out;
    std::memset(&hdr, 0, sizeof hdr);
    std::memset(&obs, 0, sizeof obs);
    std::memset(&opr, 0, sizeof opr);
    std::memset(&out, 0, sizeof out);
    hdr.num = (uint8_t)e.slot;
    obs.actual[0] = 1;
    const double whole = std::ceil(t);
    const double frac = whole - t;
    obs.psvd[0] = frac * kC;
    opr.actual = 1;
    opr.tb = tmOf(e) % 86400u;
    opr.x = e.x * 1000;
    opr.y = e.y * 1000;
    opr.z = e.z * 1000;
    opr.vx = e.vx * 1000;
    opr.vy = e.vy * 1000;
    opr.vz = e.vz * 1000;
    opr.ax = e.ax * 1000;
    opr.ay = e.ay * 1000;
    opr.az = e.az * 1000;
    crdsat_t c;
    c.calcCrdGlo((uint32_t)whole, &hdr, &obs, &opr, &out, 0, 1, nullptr);
    double r[3], v[3];
    std::memcpy(r, &out.xyz, sizeof r);
    std::memcpy(v, &out.vxyz, sizeof v);
    const double cs = std::cos(kOmegaE * frac), sn = std::sin(kOmegaE * frac);
    xyz[0] = r[0] * cs - r[1] * sn;
    xyz[1] = r[0] * sn + r[1] * cs;
    xyz[2] = r[2];
    vxyz[0] = v[0] * cs - v[1] * sn;
    vxyz[1] = v[0] * sn + v[1] * cs;
    vxyz[2] = v[2];
}

/*
 * The GLONASS records of the satellite that holds each slot. The merged
 * file carries runs of records filed under the wrong slot: R01 at 02:15
 * and 02:45 UTC hold the orbit and clock of R05, R08 until 01:45 and from
 * 20:45 those of another satellite. A satellite's clock offset drifts by
 * nanoseconds over a day while those of two satellites lie tens of
 * microseconds apart, so the records kept are those whose clock lies
 * within a microsecond of the slot's median.
 */
inline const std::vector<rinex::GloEph>& gloEphemerides(int slot) {
    static std::vector<rinex::GloEph> good[33];
    static bool built = false;
    if (built) return good[slot];
    const std::vector<rinex::GloEph>& all = nav().glo;
    for (int n = 1; n <= 32; n++) {
        std::vector<double> clocks;
        for (const rinex::GloEph& e : all)
            if (e.slot == n && e.health == 0) clocks.push_back(e.minusTauN);
        if (clocks.empty()) continue;
        std::sort(clocks.begin(), clocks.end());
        const double median = clocks[clocks.size() / 2];
        for (const rinex::GloEph& e : all)
            if (e.slot == n && e.health == 0 && std::fabs(e.minusTauN - median) < 1e-6)
                good[n].push_back(e);
    }
    built = true;
    return good[slot];
}

/* x rounded to a multiple of the resolution `q`. */
inline double cut(double x, double q) { return std::round(x / q) * q; }

/* An angle into -pi .. pi. */
inline double wrap(double a) {
    a = std::fmod(a + kPi, 2 * kPi);
    if (a < 0) a += 2 * kPi;
    return a - kPi;
}

/* ---- GPS ---- */

/* Almanac of every PRN with a healthy ephemeris, reference time toa of
 * week kGpsWeek; the other PRNs empty. */
inline void gpsAlmanac(uint32_t toa, tblAlmGps_t* out) {
    std::memset(out, 0, sizeof *out);
    out->length = ZEL_LEN_ALMGPS;
    out->actual = 1;
    out->toa = toa;
    out->wna = kWna;
    const int64_t toaAbs = (int64_t)kGpsWeek * kWeek + toa;
    const uint32_t tToa = tmOfGps(toaAbs - kGpsTo2000);
    const double sc = kPi;   /* semicircles to radians */
    for (int p = 1; p <= ZEL_NUM_ALM_GPS; p++) {
        tblAlmGpsSat_t& s = out->alm[p - 1];
        s.length = ZEL_LEN_ALMGPS_SAT;
        const rinex::GpsEph* e = nearestGps(p, tToa);
        if (!e) {
            s.onEmpty = 1;
            continue;
        }
        const double dt = (double)(toaAbs - ((int64_t)e->week * kWeek + (int64_t)e->toe));
        const double a = e->sqrtA * e->sqrtA;
        const double n = std::sqrt(kGpsGM / (a * a * a)) + e->deltaN;
        s.toa = toa;
        /* The axis whose Keplerian motion is the ephemeris' corrected
         * mean motion, as a fit of the almanac to the orbit gives it: the
         * along-track drift would otherwise reach kilometres in hours. */
        s.sqrtA = cut(std::sqrt(std::cbrt(kGpsGM / (n * n))), std::ldexp(1.0, -11));
        s.e = cut(e->e, std::ldexp(1.0, -21));
        s.m0 = cut(wrap(e->m0 + n * dt), std::ldexp(sc, -23));
        s.omega = cut(wrap(e->omega), std::ldexp(sc, -23));
        s.omega0 = cut(wrap(e->omega0 + e->omegaDot * dt), std::ldexp(sc, -23));
        s.omegaDot = cut(e->omegaDot, std::ldexp(sc, -38));
        s.deltaI = cut(e->i0 + e->idot * dt - 0.3 * kPi, std::ldexp(sc, -19));
    }
}

/* ---- GLONASS ---- */

/* Osculating elements of an Earth-fixed state, in the inertial frame
 * that coincides with the Earth-fixed one at that instant. */
struct Osc {
    double inc, ecc, omega;
};

inline Osc osculating(const double* r, const double* ve) {
    const double v[3] = {ve[0] - kOmegaE * r[1], ve[1] + kOmegaE * r[0], ve[2]};
    const double h[3] = {r[1] * v[2] - r[2] * v[1], r[2] * v[0] - r[0] * v[2],
                         r[0] * v[1] - r[1] * v[0]};
    const double hn = std::sqrt(h[0] * h[0] + h[1] * h[1] + h[2] * h[2]);
    const double rn = std::sqrt(r[0] * r[0] + r[1] * r[1] + r[2] * r[2]);
    const double v2 = v[0] * v[0] + v[1] * v[1] + v[2] * v[2];
    const double rv = r[0] * v[0] + r[1] * v[1] + r[2] * v[2];
    double e[3];
    for (int k = 0; k < 3; k++) e[k] = ((v2 - kGloGM / rn) * r[k] - rv * v[k]) / kGloGM;
    /* Node direction z x h, and the in-plane normal to it h x node. */
    const double nl = std::hypot(h[0], h[1]);
    const double nx = -h[1] / nl, ny = h[0] / nl;
    const double q[3] = {-h[2] * ny / hn, h[2] * nx / hn, (h[0] * ny - h[1] * nx) / hn};
    Osc o;
    o.inc = std::acos(h[2] / hn);
    o.ecc = std::sqrt(e[0] * e[0] + e[1] * e[1] + e[2] * e[2]);
    o.omega = std::atan2(e[0] * q[0] + e[1] * q[1] + e[2] * q[2], e[0] * nx + e[1] * ny);
    return o;
}

/* One ascending node passage. */
struct Node {
    double t;        /* tmZel with fraction */
    double lambda;   /* Earth-fixed longitude, rad */
    Osc osc;
};

/* Ascending nodes of a slot over the span of the file. Each step of ten
 * minutes (far less than the half revolution between two crossings) is
 * judged on one ephemeris, the one nearest its start, so that the seam
 * between two ephemerides never looks like a crossing. */
inline std::vector<Node> nodes(int slot) {
    std::vector<Node> out;
    const uint32_t t0 = kDay0 + 10800, t1 = kDay0 + 86400 + 10800 - 900;
    const uint32_t step = 600;
    for (uint32_t t = t0; t + step <= t1; t += step) {
        const rinex::GloEph* e = nearestGlo(slot, t);
        if (!e) return out;
        double r[3], v[3];
        gloEphState(*e, t, r, v);
        if (r[2] >= 0) continue;
        gloEphState(*e, t + step, r, v);
        if (r[2] < 0) continue;
        double lo = t, hi = t + step;
        for (int it = 0; it < 40; it++) {
            const double mid = 0.5 * (lo + hi);
            gloEphState(*e, mid, r, v);
            (r[2] < 0 ? lo : hi) = mid;
        }
        gloEphState(*e, hi, r, v);
        Node n;
        n.t = hi;
        n.lambda = std::atan2(r[1], r[0]);
        n.osc = osculating(r, v);
        out.push_back(n);
    }
    return out;
}

/* GLONASS almanac of day kNa of interval kN4 for slots 1..24 (entries
 * in slot order, slots without ephemerides empty). */
inline void gloAlmanac(tblAlmGlo_t* out) {
    std::memset(out, 0, sizeof *out);
    out->length = ZEL_LEN_ALMGLO;
    out->actual = 1;
    out->n4 = kN4;
    out->na = kNa;
    for (int slot = 1; slot <= ZEL_NUM_ALM_GLO; slot++) {
        tblAlmGloSat_t& s = out->alm[slot - 1];
        s.length = ZEL_LEN_ALMGLO_SAT;
        s.num = (uint8_t)slot;
        std::vector<Node> nd = nodes(slot);
        const rinex::GloEph* e = nearestGlo(slot, kDay0 + 43200);
        if (nd.size() < 2 || !e) {
            s.onEmpty = 1;
            s.lit = 24;
            continue;
        }
        const double T = nd[1].t - nd[0].t;
        Node first = nd[0];
        if (first.t - kDay0 >= T) {
            /* Back one revolution, by the change over the next one. */
            first.t -= T;
            first.lambda = nd[0].lambda - wrap(nd[1].lambda - nd[0].lambda);
            first.osc.inc = nd[0].osc.inc - (nd[1].osc.inc - nd[0].osc.inc);
            first.osc.ecc = nd[0].osc.ecc - (nd[1].osc.ecc - nd[0].osc.ecc);
            first.osc.omega = nd[0].osc.omega - wrap(nd[1].osc.omega - nd[0].osc.omega);
        }
        const int freq = (int)e->freqNum;
        s.lit = (uint8_t)(freq < 0 ? freq + 32 : freq);
        s.onSystem = 1;
        s.lambdaT = cut(first.t - kDay0, std::ldexp(1.0, -5));
        s.lambda = cut(wrap(first.lambda) / kPi, std::ldexp(1.0, -20));
        s.dI = cut(first.osc.inc / kPi - 63.0 / 180.0, std::ldexp(1.0, -20));
        s.dT = cut(T - 43200.0, std::ldexp(1.0, -9));
        s.dTdot = 0.0;
        s.eps = cut(first.osc.ecc, std::ldexp(1.0, -20));
        s.omega = cut(wrap(first.osc.omega) / kPi, std::ldexp(1.0, -15));
        s.tauA = 0.0;
    }
}

/* Built once: the node search integrates the whole day. */
inline const tblAlmGlo_t& gloAlmanacOfDay() {
    static tblAlmGlo_t alm;
    static bool built = false;
    if (!built) {
        gloAlmanac(&alm);
        built = true;
    }
    return alm;
}

}  // namespace prgns_real

#endif
