/*
 * Two-state tracking filter: a scalar value and its rate per second, fed
 * with one measurement per whole second of receiver time. The smoother
 * keeps one per measured quantity and signal. The whole state lives in a
 * tblKalman2_t that the filter owns and shows read-only, so that a host
 * can watch gains, covariances and the outlier count.
 */
#ifndef ZELNAV_KALMAN2_H
#define ZELNAV_KALMAN2_H

#include "tbl_flt.h"

class Kalman2_t {
public:
    Kalman2_t();
    ~Kalman2_t();
    Kalman2_t(const Kalman2_t&) = delete;
    Kalman2_t& operator=(const Kalman2_t&) = delete;

    /* Starts tracking at x0. A measurement exactly dtRate seconds after
     * this re-seeds the rate instead of being filtered. r is the
     * measurement variance (also the initial covariance scale), q the
     * process noise. */
    void Init(unsigned int t, double x0, double dtRate, double r, double q);
    /* Restarts the value at x0; rate, gains, covariance and the outlier
     * count are kept. */
    void SetNew(unsigned int t, double x0);
    /* One filter step with measurement z at time t. */
    void Update(unsigned int t, double z);
    /* Resets gains, covariance and the outlier count and marks the
     * estimate not valid; value, rate and times are kept. */
    void Clear();

    const tblKalman2_t* GetTbl() const { return tbl; }
    unsigned char GetActual() const { return tbl->actual; }
    int GetError() const { return tbl->error; }

private:
    void Extrapolation(double dt);
    void Estimation();

    tblKalman2_t* tbl;
    double r;
    double q;
    double dtRate;
};

#endif
