/*
 * Velocity and clock drift from the Doppler values of the rows of a fix.
 *
 * For a row with line vector u from the satellite towards the receiver,
 * the observed range rate -c * dop / f equals u . (v_rcv - v_sat) plus the
 * clock drift term, so y = u . v_sat - c * dop / f is linear in the four
 * unknowns (v_rcv, drift) with the design row (ux, uy, uz, c).
 *
 * u is (R - sat) divided by the corrected pseudorange rather than by the
 * geometric range: the pseudorange holds the receiver clock term, so with
 * a large clock offset u is a little short and a receiver at rest shows a
 * small speed. That has always been so and hosts allow for it.
 *
 * GLONASS carriers follow the row's letter, taken as a signed value (the
 * header stores -7..-1 as 25..31); GPS is on L1.
 */
#include <cstring>

#include "solution/crdpnt.h"
#include "solution/crdpnt_math.h"

using namespace crdpnt_math;

namespace {

const double kFreqGpsL1 = 1575420000.0;
const double kFreqGloL1 = 1602000000.0;
const double kFreqGloStep = 562500.0;

}  // namespace

void crdpnt_t::navSpeedTask(tblCrdPnt_t* fix, tblCrdSat_t* rows, int n) {
    if (fix->actual == 0 || n < 4) return;
    spd->actual = 0;
    if (n > ZEL_NUM_CRDSAT) n = ZEL_NUM_CRDSAT;

    const double R[3] = {fix->xyz[0], fix->xyz[1], fix->xyz[2]};
    const bool useGps = fix->sys == 1 || fix->sys == 10;
    const bool useGlo = fix->sys == 0 || fix->sys == 10;

    double m[4 * 5];
    std::memset(m, 0, sizeof m);
    double sumY = 0.0;
    int used = 0;
    for (int i = 0; i < n; i++) {
        const tblCrdSat_t& r = rows[i];
        double freq;
        if (r.sys == 1 && useGps) {
            freq = kFreqGpsL1;
        } else if (r.sys == 0 && useGlo) {
            int k = r.lit;
            if (k > 24) k -= 32;
            freq = kFreqGloL1 + kFreqGloStep * k;
        } else {
            continue;
        }
        double sat[3], vsat[3];
        satXyz(r, sat);
        satVxyz(r, vsat);
        const double P = r.psvd;
        const double u[3] = {(R[0] - sat[0]) / P, (R[1] - sat[1]) / P,
                             (R[2] - sat[2]) / P};
        const double y = u[0] * vsat[0] + u[1] * vsat[1] + u[2] * vsat[2] -
                         kC * r.dop / freq;
        const double h[4] = {u[0], u[1], u[2], kC};
        addNormalRow(4, h, y, m);
        sumY += y;
        used++;
    }
    if (lsolve(4, m) != 0) return;

    spd->actual = 1;
    spd->vxyz[0] = m[0 * 5 + 4];
    spd->vxyz[1] = m[1 * 5 + 4];
    spd->vxyz[2] = m[2 * 5 + 4];
    spd->drift = m[3 * 5 + 4];
    spd->driftMean = sumY / (used * kC);
    spd->sys = fix->sys;
}
