/*
 * Static averaging.
 *
 * The average always starts from the Earth's centre: InitStatic stores the
 * position it is given and then zeroes it. The first solutions are
 * therefore thousands of kilometres away, and a coarse step halves the
 * distance to them, one epoch at a time, until the average is within a
 * kilometre. Only then does the gain-weighted averaging begin. The coarse
 * phase is skipped once the gain has fallen all the way (n has reached
 * nMax), so with nMax = 1 the second epoch already averages.
 */
#include "static.h"

#include <cmath>
#include <cstring>

/* Gains outside this range are refused. */
static const double kGainMin = 1e-9;
static const double kGainMax = 1.0;
static const unsigned int kNMaxLimit = 1000000000u;
static const unsigned int kDopMaxLimit = 99;
/* A longer silence than this (seconds) restarts the gain. */
static const unsigned int kMaxGap = 10;
/* Beyond this distance (m) the average is first halved towards the fixes. */
static const double kCoarse = 1000.0;

static bool gainOk(double k) { return k >= kGainMin && k <= kGainMax; }  // NaN fails

Static_t::Static_t() : st(new State) { std::memset(st, 0, sizeof *st); }

Static_t::~Static_t() { delete st; }

double Static_t::r_xyz(const double* a, const double* b) {
    const double dx = a[0] - b[0], dy = a[1] - b[1], dz = a[2] - b[2];
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

signed char Static_t::InitStatic(double* pos, unsigned int t0, double* k,
                                 unsigned int nMax, unsigned int dopMax,
                                 unsigned char mode) {
    st->set = 0;
    /* Each gain is stored as soon as it passes, so a refusal leaves the
     * gains before it in place. */
    for (int j = 0; j < 4; j++) {
        if (!gainOk(k[j])) return (signed char)(-1 - j);
        st->k[j] = k[j];
    }
    if (mode == 10) {
        if (!gainOk(k[4])) return -5;
        st->k[4] = k[4];
    }
    if (nMax == 0 || nMax > kNMaxLimit) return -6;
    if (dopMax > kDopMaxLimit) return -7;
    if (mode != 0 && mode != 1 && mode != 10) return -8;

    st->nMax = nMax;
    st->dopMax = dopMax;
    st->mode = mode;
    /* pos may be null: the position is discarded just below. */
    if (pos != nullptr) std::memcpy(st->xyz, pos, sizeof st->xyz);
    st->set = 1;
    st->tLast = t0;
    st->tStart = t0;
    /* Deliberately discard the position just stored: the average starts
     * from the Earth's centre and reaches the receiver by coarse steps. */
    st->xyz[0] = st->xyz[1] = st->xyz[2] = 0.0;
    st->dt = 0.0;
    st->tau = 0.0;
    return 0;
}

signed char Static_t::StaticFilter(tblCrdPnt_t* rec, unsigned int t) {
    if (st->set != 1) return -1;
    if (rec->actual != 1) return -2;
    if (rec->sys != st->mode) return -3;
    if (st->tStart >= t) return -4;
    if (t <= st->tLast) return -5;
    if (t - st->tLast > kMaxGap) {
        st->tStart = t;
        st->tLast = t;
        return -6;
    }
    /* dop10 is signed: compare it as a signed value, so that a negative
     * (meaningless) DOP is not taken for a huge one. */
    if ((long long)rec->dop10 > (long long)st->dopMax * 10) {
        st->tLast = t;
        return -7;
    }

    /* Epochs since the start; t > tStart here, so this is never negative. */
    unsigned int n = t - st->tStart - 1;
    if (n > st->nMax) n = st->nMax;

    /* Copied out: the record's doubles need not be 8-byte aligned. */
    const double fix[3] = {rec->xyz[0], rec->xyz[1], rec->xyz[2]};
    const double d = r_xyz(st->xyz, fix);
    if (d > kCoarse && n != st->nMax) {
        for (int i = 0; i < 3; i++) st->xyz[i] = (st->xyz[i] + rec->xyz[i]) * 0.5;
        st->dt = (st->dt + rec->dt) * 0.5;
        /* The time-offset slot is halved with the solution's own tau (in
         * every mode; outside mode 10 it is simply never read). */
        st->tau = (st->tau + rec->tau) * 0.5;
        st->tLast = t;
        return -8;
    }

    /* The gain falls linearly from 1 at the start to k after nMax epochs. */
    double w[5];
    for (int j = 0; j < 5; j++)
        w[j] = 1.0 - (1.0 - st->k[j]) / (double)st->nMax * (double)n;

    for (int i = 0; i < 3; i++) st->xyz[i] += (rec->xyz[i] - st->xyz[i]) * w[i];
    st->dt += (rec->dt - st->dt) * w[3];
    if (st->mode == 10) {
        st->tau += (rec->tau - st->tau) * w[4];
        rec->tau = st->tau;
    }

    for (int i = 0; i < 3; i++) rec->xyz[i] = st->xyz[i];
    rec->dt = st->dt;
    st->tLast = t;
    return 0;
}
