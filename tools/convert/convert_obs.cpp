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

namespace {

const double kRateAgreement = 5.0;   /* cycles/s between phase rate and Doppler */

const SatSignals* findSat(const ObsSecond* sec, char sys, int prn) {
    if (!sec) return nullptr;
    for (const SatSignals& s : sec->sats)
        if (s.sys == sys && s.prn == prn) return &s;
    return nullptr;
}

/* Phase rate (cycles/s) at epoch `at` (one of the three) from the phase
 * of three recorded epochs in time order, by the derivative of the
 * parabola through them, when the phase runs unbroken through the three
 * and agrees there with the Doppler. */
bool phaseRate(const SatSignals* s[3], const int64_t t[3], int at, int place, double& rate) {
    for (int i = 0; i < 3; i++) {
        if (!s[i]) return false;
        const SigVal& v = s[i]->sig[place];
        if (!v.present || !v.hasFaze || (i > 0 && v.lossOfLock)) return false;
    }
    double x = (double)t[at];
    double ref = s[at]->sig[place].faze;
    double r = 0;
    for (int i = 0; i < 3; i++) {
        double num = 0, den = 1;
        for (int j = 0; j < 3; j++) {
            if (j == i) continue;
            num += x - (double)t[j];
            den *= (double)(t[i] - t[j]);
        }
        r += (s[i]->sig[place].faze - ref) * num / den;
    }
    const SigVal& v = s[at]->sig[place];
    if (!v.hasDop || std::fabs(r + v.dop) > kRateAgreement) return false;
    rate = r;
    return true;
}

/* Rate of the Hermite interpolant at fraction tau. */
double hermiteRate(double p0, double m0, double p1, double m1, double g, double tau) {
    double t2 = tau * tau;
    return (6 * t2 - 6 * tau) * (p0 - p1) / g + (3 * t2 - 4 * tau + 1) * m0 + (3 * t2 - 2 * tau) * m1;
}

/* One satellite between the bracket's epochs; false when no place is
 * left. */
bool interpolateSat(const Bracket& br, const SatSignals* before, const SatSignals& a,
                    const SatSignals& b, const SatSignals* after, int64_t t, int k,
                    SatSignals& out) {
    out = SatSignals();
    out.sys = a.sys;
    out.prn = a.prn;
    double g = (double)(br.b->t - br.a->t);
    double tau = (double)(t - br.a->t) / g;
    bool any = false;
    for (int p = 0; p < kPlaces; p++) {
        const SigVal& va = a.sig[p];
        const SigVal& vb = b.sig[p];
        if (!va.present || !vb.present || !va.hasDop || !vb.hasDop) continue;
        double lambda = wavelength(a.sys, k, p);
        bool phase = va.hasFaze && vb.hasFaze && !vb.lossOfLock;
        /* Rates in cycles/s: the phase's own where it can tell them. */
        double ma = -va.dop, mb = -vb.dop;
        if (phase) {
            /* Centred where the neighbours allow, one-sided at the ends of
             * a run of epochs. */
            const SatSignals* pab[3] = {before, &a, &b};
            const SatSignals* abn[3] = {&a, &b, after};
            int64_t tpab[3] = {br.before ? br.before->t : 0, br.a->t, br.b->t};
            int64_t tabn[3] = {br.a->t, br.b->t, br.after ? br.after->t : 0};
            double r;
            if (phaseRate(pab, tpab, 1, p, r) || phaseRate(abn, tabn, 0, p, r)) ma = r;
            if (phaseRate(abn, tabn, 1, p, r) || phaseRate(pab, tpab, 2, p, r)) mb = r;
        }
        double ra = lambda * ma, rb = lambda * mb;
        if (std::fabs(vb.psvd - va.psvd - 0.5 * g * (ra + rb)) > kPsvdTolerance) continue;
        SigVal& v = out.sig[p];
        v.present = true;
        v.psvd = hermite(va.psvd, ra, vb.psvd, rb, g, tau);
        v.hasDop = true;
        v.dop = va.dop + tau * (vb.dop - va.dop);
        any = true;
        if (phase && std::fabs(vb.faze - va.faze - 0.5 * g * (ma + mb)) <= kFazeTolerance) {
            v.hasFaze = true;
            v.faze = hermite(va.faze, ma, vb.faze, mb, g, tau);
            v.dop = -hermiteRate(va.faze, ma, vb.faze, mb, g, tau);
        }
        if (va.hasSnr && vb.hasSnr) {
            v.hasSnr = true;
            v.snr = va.snr + tau * (vb.snr - va.snr);
        }
    }
    return any;
}

}  // namespace

void interpolateSecond(const Bracket& br, int64_t t, FreqOf freq, const void* ctx, ObsSecond& out) {
    out.t = t;
    out.interpolated = true;
    out.afterBreak = false;
    out.line = br.b->line;
    out.sats.clear();
    for (const SatSignals& sa : br.a->sats) {
        const SatSignals* sb = findSat(br.b, sa.sys, sa.prn);
        if (!sb) continue;
        SatSignals s;
        if (interpolateSat(br, findSat(br.before, sa.sys, sa.prn), sa, *sb,
                           findSat(br.after, sa.sys, sa.prn), t, freq(ctx, sa.sys, sa.prn), s))
            out.sats.push_back(s);
    }
}

}  // namespace cvt
