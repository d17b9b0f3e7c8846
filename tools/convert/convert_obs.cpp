/*
 * Observations of the conversion: places, signal strength, shifts and
 * interpolation (see convert_obs.h).
 */
#include "convert_obs.h"

#include <cmath>

#include "rinex_sys.h"

namespace cvt {

namespace {

const double kC = 299792458.0;
const double kPsvdTolerance = 50.0;   /* m */
const double kFazeTolerance = 20.0;   /* cycles */

/* Tracking codes of each place, in preference order ("" ends a list). */
const char* const kCodes[2][kPlaces][3] = {
    /* GPS */ {{"1C", "", ""}, {"2W", "2L", "2X"}, {"", "", ""}, {"", "", ""}},
    /* GLONASS */ {{"1C", "", ""}, {"2C", "", ""}, {"1P", "", ""}, {"2P", "", ""}},
};

/* Signal strength from the RINEX strength digit: the middle of its band. */
double snrOfDigit(int ssi) { return 6.0 * ssi + 2.5; }

double hermite(double p0, double m0, double p1, double m1, double g, double tau) {
    double t2 = tau * tau, t3 = t2 * tau;
    return (2 * t3 - 3 * t2 + 1) * p0 + (t3 - 2 * t2 + tau) * g * m0 + (-2 * t3 + 3 * t2) * p1 +
           (t3 - t2) * g * m1;
}

}  // namespace

double wavelength(char sys, int k, int place) {
    bool l1 = place == kPlaceC1 || place == kPlaceB1;
    if (sys == 'G') return kC / (l1 ? 1575.42e6 : 1227.60e6);
    return kC / (l1 ? 1602.0e6 + k * 0.5625e6 : 1246.0e6 + k * 0.4375e6);
}

SignalMap::SignalMap(const rinex::ObsHeader& h) {
    const char sysOf[2] = {'G', 'R'};
    for (int s = 0; s < 2; s++)
        for (int p = 0; p < kPlaces; p++)
            for (int i = 0; i < 3; i++) {
                std::string code = kCodes[s][p][i];
                if (code.empty()) break;
                Code c;
                c.c = h.obsIndex(sysOf[s], "C" + code);
                if (c.c < 0) continue;
                c.d = h.obsIndex(sysOf[s], "D" + code);
                c.l = h.obsIndex(sysOf[s], "L" + code);
                c.s = h.obsIndex(sysOf[s], "S" + code);
                codes_[s][p][count_[s][p]++] = c;
            }
}

bool SignalMap::declares(char sys, int place) const {
    int s = rinex::systemIndex(sys);
    return s >= 0 && count_[s][place] > 0;
}

bool SignalMap::take(const rinex::SatObs& sat, SatSignals& out) const {
    int s = rinex::systemIndex(sat.sys);
    if (s < 0) return false;
    out = SatSignals();
    out.sys = sat.sys;
    out.prn = sat.prn;
    bool any = false;
    auto value = [&](int i) -> const rinex::ObsValue* {
        if (i < 0 || (std::size_t)i >= sat.values.size() || !sat.values[(std::size_t)i].present)
            return nullptr;
        return &sat.values[(std::size_t)i];
    };
    for (int p = 0; p < kPlaces; p++)
        for (int i = 0; i < count_[s][p]; i++) {
            const Code& c = codes_[s][p][i];
            const rinex::ObsValue* pr = value(c.c);
            if (!pr) continue;
            SigVal& v = out.sig[p];
            v.present = true;
            v.psvd = pr->value;
            if (const rinex::ObsValue* d = value(c.d)) {
                v.hasDop = true;
                v.dop = d->value;
            }
            const rinex::ObsValue* l = value(c.l);
            if (l) {
                v.hasFaze = true;
                v.faze = l->value;
                v.lossOfLock = (l->lli & 1) != 0;
            }
            if (const rinex::ObsValue* sn = value(c.s)) {
                v.hasSnr = true;
                v.snr = sn->value;
            } else if (pr->ssi > 0 || (l && l->ssi > 0)) {
                v.hasSnr = true;
                v.snr = snrOfDigit(pr->ssi > 0 ? pr->ssi : l->ssi);
            }
            any = true;
            break;
        }
    return any;
}

bool shiftAlongDoppler(SatSignals& s, double dt, int k) {
    bool all = true;
    for (int p = 0; p < kPlaces; p++) {
        SigVal& v = s.sig[p];
        if (!v.present) continue;
        if (!v.hasDop) {
            all = false;
            continue;
        }
        v.psvd -= wavelength(s.sys, k, p) * v.dop * dt;
        if (v.hasFaze) v.faze -= v.dop * dt;
    }
    return all;
}

bool interpolateSat(const SatSignals& a, const SatSignals& b, double g, double tau, int k,
                    SatSignals& out) {
    out = SatSignals();
    out.sys = a.sys;
    out.prn = a.prn;
    bool any = false;
    for (int p = 0; p < kPlaces; p++) {
        const SigVal& va = a.sig[p];
        const SigVal& vb = b.sig[p];
        if (!va.present || !vb.present) continue;
        double lambda = wavelength(a.sys, k, p);
        SigVal& v = out.sig[p];
        /* Without the rates, a straight line between epochs 30 s apart
         * would be metres off: such a place is left out. */
        if (!va.hasDop || !vb.hasDop) continue;
        double rate0 = -lambda * va.dop, rate1 = -lambda * vb.dop;
        if (std::fabs(vb.psvd - va.psvd - 0.5 * g * (rate0 + rate1)) > kPsvdTolerance) continue;
        v.present = true;
        v.psvd = hermite(va.psvd, rate0, vb.psvd, rate1, g, tau);
        v.hasDop = true;
        v.dop = va.dop + tau * (vb.dop - va.dop);
        any = true;
        if (va.hasFaze && vb.hasFaze && !vb.lossOfLock &&
            std::fabs(vb.faze - va.faze + 0.5 * g * (va.dop + vb.dop)) <= kFazeTolerance) {
            v.hasFaze = true;
            v.faze = hermite(va.faze, -va.dop, vb.faze, -vb.dop, g, tau);
        }
        if (va.hasSnr && vb.hasSnr) {
            v.hasSnr = true;
            v.snr = va.snr + tau * (vb.snr - va.snr);
        }
    }
    return any;
}

}  // namespace cvt
