/*
 * Smoothing tracker of one satellite: fifteen two-state filters, one per
 * signal place for each of pseudorange, Doppler and carrier phase. Its
 * tblKalmanObs_t holds the identity of the bound satellite and, after
 * GetObs, copies of the fifteen filter states.
 */
#ifndef ZELNAV_KALMAN_OBS_H
#define ZELNAV_KALMAN_OBS_H

#include "kalman2.h"
#include "tbl_flt.h"
#include "tbl_sat.h"

class KalmanObs_t {
public:
    KalmanObs_t();
    ~KalmanObs_t();
    KalmanObs_t(const KalmanObs_t&) = delete;
    KalmanObs_t& operator=(const KalmanObs_t&) = delete;

    /* Binds the tracker to the satellite of `hdr` and starts the filters
     * of every valid signal place of `obs`. */
    void Init(const tblHdr_t* hdr, const tblObs_t* obs);
    /* Feeds the valid signal places of `obs` to their filters. */
    void Update(const tblObs_t* obs);
    /* Unbinds the tracker and clears all fifteen filters. */
    void Clear();
    /* Refreshes the filter copies of the table and returns it. */
    const tblKalmanObs_t* GetObs();

    unsigned char GetActual() const { return tbl->actual; }
    unsigned char GetSys() const { return tbl->sys; }
    unsigned char GetNum() const { return tbl->num; }
    unsigned int GetTime() const { return tbl->tmZel; }

private:
    tblKalmanObs_t* tbl;
    /* Measurement variance and process noise per quantity (m², Hz², cycles²). */
    double rPsvd, qPsvd, rDop, qDop, rFaze, qFaze;
    Kalman2_t fltPsvd[ZEL_NUM_SIG];
    Kalman2_t fltDop[ZEL_NUM_SIG];
    Kalman2_t fltFaze[ZEL_NUM_SIG];
};

#endif
