/*
 * Smoothing tracker of one satellite.
 *
 * Noise values: pseudorange 50 m (variance 2500), phase 10 cycles
 * (variance 100), no process noise anywhere. The Doppler filters have a
 * zero measurement noise on purpose; see kalman2.cpp for what that does.
 */
#include "kalman_obs.h"

#include <cstring>

/* An outlier count above this restarts a filter from the raw value. */
static const int kMaxErrors = 3;

KalmanObs_t::KalmanObs_t()
    : tbl(new tblKalmanObs_t),
      rPsvd(2500.0),
      qPsvd(0.0),
      rDop(0.0),
      qDop(0.0),
      rFaze(100.0),
      qFaze(0.0) {
    std::memset(tbl, 0, sizeof *tbl);
    tbl->length = ZEL_LEN_KALMANOBS;
    for (int i = 0; i < ZEL_NUM_SIG; i++) {
        tbl->psvd[i].length = ZEL_LEN_KALMAN2;
        tbl->dop[i].length = ZEL_LEN_KALMAN2;
        tbl->faze[i].length = ZEL_LEN_KALMAN2;
    }
    Clear();
}

KalmanObs_t::~KalmanObs_t() { delete tbl; }

void KalmanObs_t::Init(const tblHdr_t* hdr, const tblObs_t* obs) {
    tbl->sys = hdr->sys;
    tbl->num = hdr->num;
    const unsigned int t = obs->tmZel;
    for (int i = 0; i < ZEL_NUM_SIG; i++) {
        if (obs->actual[i] != 1) continue;
        fltPsvd[i].Init(t, obs->psvd[i], 1.0, rPsvd, qPsvd);
        fltDop[i].Init(t, obs->dop[i], 1.0, rDop, qDop);
        fltFaze[i].Init(t, obs->faze[i], 1.0, rFaze, qFaze);
    }
    tbl->actual = 1;
    tbl->tmZel = t;
}

/* One filter step; a filter that keeps rejecting restarts from the raw
 * value with a fresh covariance (the signal has most likely slipped). */
static void step(Kalman2_t& f, unsigned int t, double z) {
    f.Update(t, z);
    if (f.GetError() > kMaxErrors) {
        f.Clear();
        f.SetNew(t, z);
    }
}

void KalmanObs_t::Update(const tblObs_t* obs) {
    const unsigned int t = obs->tmZel;
    for (int i = 0; i < ZEL_NUM_SIG; i++) {
        if (obs->actual[i] != 1) continue;
        step(fltPsvd[i], t, obs->psvd[i]);
        step(fltDop[i], t, obs->dop[i]);
        step(fltFaze[i], t, obs->faze[i]);
    }
    tbl->tmZel = t;
}

void KalmanObs_t::Clear() {
    tbl->actual = 0;
    tbl->sys = 255;
    tbl->num = 255;
    for (int i = 0; i < ZEL_NUM_SIG; i++) {
        fltPsvd[i].Clear();
        fltDop[i].Clear();
        fltFaze[i].Clear();
    }
}

const tblKalmanObs_t* KalmanObs_t::GetObs() {
    for (int i = 0; i < ZEL_NUM_SIG; i++) {
        std::memcpy(&tbl->psvd[i], fltPsvd[i].GetTbl(), sizeof(tblKalman2_t));
        std::memcpy(&tbl->dop[i], fltDop[i].GetTbl(), sizeof(tblKalman2_t));
        std::memcpy(&tbl->faze[i], fltFaze[i].GetTbl(), sizeof(tblKalman2_t));
    }
    return tbl;
}
