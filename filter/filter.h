/*
 * The filtering facility behind a `filter` handle: 24 observation
 * smoothing trackers bound to the GLONASS satellites of each epoch, the
 * static averaging of a receiver at rest, and a position filter for a
 * moving receiver.
 */
#ifndef ZELNAV_FILTER_H
#define ZELNAV_FILTER_H

#include "kalman_obs.h"
#include "static.h"
#include "tbl_flt.h"
#include "tbl_pnt.h"
#include "tbl_sat.h"

/* Number of smoothing trackers. */
#define FILTER_NUM_OBS 24

class Filter_t {
public:
    Filter_t();
    ~Filter_t();
    Filter_t(const Filter_t&) = delete;
    Filter_t& operator=(const Filter_t&) = delete;

    /* Smooths the GLONASS observations of `lst` and writes the smoothed
     * values back into its tblObs_t records. */
    void KalmanObs0(lsttblSat_t* lst);
    /* Smooths the GLONASS observations of `lst` and returns the state of
     * every bound tracker. */
    lsttblKalmanObs_t* KalmanObs(lsttblSat_t* lst);
    /* The smoothing table last refreshed by KalmanObs0 (null before). */
    const tblKalmanObs_t* GetLastObs() const { return lastObs; }

    signed char InitStatic(double* pos, unsigned int t0, double* k, unsigned int nMax,
                           unsigned int dopMax, unsigned char mode) {
        return stat->InitStatic(pos, t0, k, nMax, dopMax, mode);
    }
    signed char StaticFilter(tblCrdPnt_t* rec, unsigned int t) {
        return stat->StaticFilter(rec, t);
    }

    /* Filters the position solution of time t; returns the filter's own
     * record (see filter_crdpnt.cpp). */
    tblCrdPnt_t* KalmanCrdPnt0(unsigned int t, tblCrdPnt_t* rec);

private:
    /* State of the position filter: position and velocity on each axis of
     * a north-up-east frame anchored at the fix of the last restart. */
    struct PntState {
        unsigned char running;  /* 1 while it holds a state */
        unsigned char sys;      /* systems (datum) of the fixes filtered */
        unsigned int tFix;      /* last fix taken in */
        unsigned int tState;    /* time the state refers to */
        double ref[3];          /* ECEF anchor of the local frame, m */
        double rot[3][3];       /* rows: north, up, east unit vectors */
        double p[3];            /* position in the local frame, m */
        double v[3];            /* velocity, m/s */
        double pp[3], pv[3], vv[3];  /* covariance per axis */
    };

    void release();
    void pntRestart(unsigned int t, const tblCrdPnt_t* rec);
    void pntPredict(unsigned int t);
    void pntOutput(const tblCrdPnt_t* rec, bool fix);

    KalmanObs_t* obs[FILTER_NUM_OBS];
    const tblKalmanObs_t* lastObs;
    lsttblKalmanObs_t lstObs;
    Static_t* stat;
    PntState* pnt;
    tblCrdPnt_t* pntOut;
};

#endif
