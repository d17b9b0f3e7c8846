/*
 * Position filter for a moving receiver, tuned for a land vehicle.
 *
 * Model. On each axis of a local north-up-east frame the state is the
 * position and the velocity, propagated with a constant velocity and
 * disturbed by white acceleration noise of spectral density S:
 *     F = | 1 dt |      Q = S | dt³/3  dt²/2 |
 *         | 0  1 |            | dt²/2  dt    |
 * (this Q composes exactly, so a prediction in two steps equals one in a
 * single step). The fix measures the position with the same variance on
 * every axis, (UERE · DOP)² / 3: the DOP of the solution spreads a ranging
 * error UERE over three axes. With a noise that is the same on every axis
 * and a Q that is diagonal in the local frame, the three axes are
 * independent two-state filters.
 *
 * Parameters (constants below):
 *  - S north and east 1.0 m²/s³: about 1 m/s of unmodelled change of
 *    velocity per second, what a car does when it brakes, accelerates or
 *    turns; S up 0.1 m²/s³, since roads change gradient slowly.
 *  - UERE 5 m: ranging error of a code-only single-frequency fix.
 *  - DOP from the record's dop10, not below 0.5 (a zero or negative value
 *    is a solver that did not say).
 *  - Start: the fix itself, with zero velocity of spread 30 m/s
 *    horizontally and 3 m/s vertically.
 *  - Restart: after more than 10 s without a fix; when the fix jumps
 *    outside the gate (sum over the axes of the squared innovation over
 *    its variance above 36, i.e. a six-sigma jump on one axis); when time
 *    runs backwards; when the record's `sys` changes (the datum may
 *    change with it).
 *
 * The local frame is anchored at the fix of the last restart and uses the
 * geocentric latitude: the frame only shapes the process noise, so the
 * fraction of a degree to the ellipsoid normal, or the tilt after a long
 * drive, does not matter; positions go in and out exactly.
 *
 * Output, in the filter's own tblCrdPnt_t (a copy of the input record with
 * the position replaced):
 *  - a fix (actual 1, finite coordinates): the filtered position;
 *  - no fix while the filter runs: the prediction to t, marked actual 1
 *    with no satellites listed (numGlo = numGps = 0), since it uses none;
 *  - no fix and nothing to predict from: the input as it is (actual 0);
 *  - a second call for the time of the last fix: the previous output.
 * Clock offset, time offset and DOP are passed through unfiltered.
 */
#include <cmath>
#include <cstring>

#include "filter.h"

namespace {

/* Process noise spectral densities per local axis: north, up, east. */
const double kS[3] = {1.0, 0.1, 1.0};
/* Initial velocity variances per axis, (m/s)². */
const double kVInit[3] = {30.0 * 30.0, 3.0 * 3.0, 30.0 * 30.0};
const double kUere = 5.0;
const double kDopMin = 0.5;
/* Longest silence (s) the filter bridges. */
const unsigned int kMaxGap = 10;
/* Gate on the normalised innovation squared, three axes. */
const double kGate = 36.0;

double measVar(int dop10) {
    double dop = dop10 / 10.0;
    if (dop < kDopMin) dop = kDopMin;
    const double s = kUere * dop;
    return s * s / 3.0;
}

bool isFix(const tblCrdPnt_t* rec) {
    return rec->actual == 1 && std::isfinite(rec->xyz[0]) && std::isfinite(rec->xyz[1]) &&
           std::isfinite(rec->xyz[2]);
}

}  // namespace

void Filter_t::pntRestart(unsigned int t, const tblCrdPnt_t* rec) {
    PntState& s = *pnt;
    for (int i = 0; i < 3; i++) s.ref[i] = rec->xyz[i];
    const double lat = std::atan2(s.ref[2], std::hypot(s.ref[0], s.ref[1]));
    const double lon = std::atan2(s.ref[1], s.ref[0]);
    const double sf = std::sin(lat), cf = std::cos(lat);
    const double sl = std::sin(lon), cl = std::cos(lon);
    const double north[3] = {-sf * cl, -sf * sl, cf};
    const double up[3] = {cf * cl, cf * sl, sf};
    const double east[3] = {-sl, cl, 0.0};
    std::memcpy(s.rot[0], north, sizeof north);
    std::memcpy(s.rot[1], up, sizeof up);
    std::memcpy(s.rot[2], east, sizeof east);

    const double m = measVar(rec->dop10);
    for (int a = 0; a < 3; a++) {
        s.p[a] = 0.0;
        s.v[a] = 0.0;
        s.pp[a] = m;
        s.pv[a] = 0.0;
        s.vv[a] = kVInit[a];
    }
    s.tFix = t;
    s.tState = t;
    s.sys = rec->sys;
    s.running = 1;
}

void Filter_t::pntPredict(unsigned int t) {
    PntState& s = *pnt;
    const double dt = (double)(t - s.tState);
    if (dt == 0.0) return;
    const double dt2 = dt * dt, dt3 = dt2 * dt;
    for (int a = 0; a < 3; a++) {
        s.p[a] += s.v[a] * dt;
        s.pp[a] += 2.0 * dt * s.pv[a] + dt2 * s.vv[a] + kS[a] * dt3 / 3.0;
        s.pv[a] += dt * s.vv[a] + kS[a] * dt2 / 2.0;
        s.vv[a] += kS[a] * dt;
    }
    s.tState = t;
}

void Filter_t::pntOutput(const tblCrdPnt_t* rec, bool fix) {
    const PntState& s = *pnt;
    std::memcpy(pntOut, rec, sizeof *pntOut);
    pntOut->length = ZEL_LEN_CRDPNT;
    for (int i = 0; i < 3; i++)
        pntOut->xyz[i] = s.ref[i] + s.rot[0][i] * s.p[0] + s.rot[1][i] * s.p[1] +
                         s.rot[2][i] * s.p[2];
    if (!fix) {
        pntOut->actual = 1;
        pntOut->numGlo = 0;
        pntOut->numGps = 0;
        std::memset(pntOut->lstGlo, 0, sizeof pntOut->lstGlo);
        std::memset(pntOut->lstGps, 0, sizeof pntOut->lstGps);
    }
}

tblCrdPnt_t* Filter_t::KalmanCrdPnt0(unsigned int t, tblCrdPnt_t* rec) {
    PntState& s = *pnt;
    const bool fix = isFix(rec);

    if (s.running) {
        if (t == s.tFix) return pntOut;
        const bool backwards = (int)(t - s.tState) < 0;
        if (backwards || t - s.tFix > kMaxGap || (fix && rec->sys != s.sys)) s.running = 0;
    }
    if (!s.running) {
        if (fix) {
            pntRestart(t, rec);
            pntOutput(rec, true);
        } else {
            std::memcpy(pntOut, rec, sizeof *pntOut);
            pntOut->length = ZEL_LEN_CRDPNT;
        }
        return pntOut;
    }

    pntPredict(t);
    if (!fix) {
        pntOutput(rec, false);
        return pntOut;
    }

    const double m = measVar(rec->dop10);
    double e[3], sv[3], d2 = 0.0;
    for (int a = 0; a < 3; a++) {
        const double z = s.rot[a][0] * (rec->xyz[0] - s.ref[0]) +
                         s.rot[a][1] * (rec->xyz[1] - s.ref[1]) +
                         s.rot[a][2] * (rec->xyz[2] - s.ref[2]);
        e[a] = z - s.p[a];
        sv[a] = s.pp[a] + m;
        d2 += e[a] * e[a] / sv[a];
    }
    /* Written so that a NaN state also restarts. */
    if (!(d2 <= kGate)) {
        pntRestart(t, rec);
        pntOutput(rec, true);
        return pntOut;
    }

    for (int a = 0; a < 3; a++) {
        const double k1 = s.pp[a] / sv[a];
        const double k2 = s.pv[a] / sv[a];
        s.p[a] += k1 * e[a];
        s.v[a] += k2 * e[a];
        s.vv[a] -= k2 * s.pv[a];
        s.pp[a] -= k1 * s.pp[a];
        s.pv[a] -= k1 * s.pv[a];
    }
    s.tFix = t;
    pntOutput(rec, true);
    return pntOut;
}
