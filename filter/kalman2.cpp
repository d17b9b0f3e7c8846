/*
 * Two-state tracking filter.
 *
 * The model is the textbook constant-rate one with two deliberate
 * departures that the receiver's smoothing has always had and that hosts
 * tuned against:
 *  - the process noise q is added to all four covariance entries, not to
 *    a noise matrix shaped by the model;
 *  - the outlier gate compares the measurement with the prediction
 *    advanced by one more second of rate, while the innovation that is
 *    applied is taken against the prediction itself.
 * Nothing here guards a zero measurement noise: with r = q = 0 (the
 * Doppler filters of the smoother) the gains come out as 0/0 = NaN. That
 * is how the Doppler smoothing has always behaved, and a guard would
 * change what hosts see.
 */
#include "kalman2.h"

#include <cmath>
#include <cstring>

Kalman2_t::Kalman2_t() : tbl(new tblKalman2_t), r(0.0), q(0.0), dtRate(0.0) {
    std::memset(tbl, 0, sizeof *tbl);
    tbl->length = ZEL_LEN_KALMAN2;
    Clear();
}

Kalman2_t::~Kalman2_t() { delete tbl; }

void Kalman2_t::Init(unsigned int t, double x0, double dtRate_, double r_, double q_) {
    tbl->x = x0;
    tbl->tLast = t;
    tbl->t0 = t;
    r = r_;
    q = q_;
    Clear();
    dtRate = dtRate_;
    tbl->actual = 1;
}

void Kalman2_t::SetNew(unsigned int t, double x0) {
    tbl->x = x0;
    tbl->tLast = t;
    tbl->t0 = t;
    tbl->actual = 1;
}

void Kalman2_t::Clear() {
    tbl->actual = 0;
    tbl->k1 = 1.0;
    tbl->k2 = 1.0;
    tbl->p11 = r;
    tbl->p12 = r;
    tbl->p21 = r;
    tbl->p22 = 2.0 * r;
    tbl->error = 0;
}

void Kalman2_t::Extrapolation(double dt) {
    const double p11 = tbl->p11, p12 = tbl->p12, p21 = tbl->p21, p22 = tbl->p22;
    tbl->p11 = p11 + (p12 + p21 + p22 * dt) * dt + q;
    tbl->p12 = p12 + p22 * dt + q;
    tbl->p21 = p21 + p22 * dt + q;
    tbl->p22 = p22 + q;
    tbl->x += tbl->v * dt;
}

void Kalman2_t::Estimation() {
    const double p11 = tbl->p11, p12 = tbl->p12, p21 = tbl->p21, p22 = tbl->p22;
    const double s = p11 + r;
    const double k1 = p11 / s;
    const double k2 = p21 / s;
    tbl->k1 = k1;
    tbl->k2 = k2;
    tbl->p21 = p21 - k2 * p11;
    tbl->p22 = p22 - k2 * p12;
    tbl->p11 = p11 - k1 * p11;
    tbl->p12 = p12 - k1 * p12;
}

void Kalman2_t::Update(unsigned int t, double z) {
    const unsigned int dt = t - tbl->tLast;
    if (dt == 0) return;

    /* The first measurement dtRate seconds after the start gives the rate
     * as a plain difference (per dtRate, not per second: the smoother uses
     * dtRate 1, where the two agree). */
    const unsigned int age = t - tbl->t0;
    if ((double)age == dtRate) {
        tbl->v = z - tbl->x;
        tbl->x = z;
        tbl->tLast = t;
        return;
    }

    /* The covariance shrinks here even when the measurement turns out to
     * be an outlier. */
    Extrapolation((double)dt);
    Estimation();

    /* A negative r makes the limit NaN; the comparison then never fires
     * and every measurement is taken. NaN residuals are taken as well. */
    const double a = std::fabs(z - (tbl->x + tbl->v));
    const double limit = 3.0 * std::sqrt(r);
    if (a > limit) {
        if (tbl->error < 255) tbl->error++;
    } else {
        const double e = z - tbl->x;
        tbl->v += tbl->k2 * e;
        tbl->x += tbl->k1 * e;
        if (tbl->error > 0) tbl->error--;
    }
    tbl->actual = 1;
    tbl->tLast = t;
}
