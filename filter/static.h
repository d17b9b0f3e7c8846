/*
 * Running average of the position of a receiver at rest. Each accepted
 * solution is blended in with a gain that falls linearly from 1 to a set
 * end value over nMax epochs, so the average settles and keeps improving.
 */
#ifndef ZELNAV_STATIC_H
#define ZELNAV_STATIC_H

#include "tbl_pnt.h"

class Static_t {
public:
    Static_t();
    ~Static_t();
    Static_t(const Static_t&) = delete;
    Static_t& operator=(const Static_t&) = delete;

    /* Starts (over) at t0. k: end gains of X, Y, Z, clock offset and time
     * offset, each in [1e-9, 1] (the last only checked and used in mode
     * 10); nMax: 1..1e9 epochs; dopMax: 0..99 whole DOP units; mode 0
     * GLONASS, 1 GPS, 10 both. Returns 0, or -1..-8 naming the rejected
     * argument in that order. */
    signed char InitStatic(double* pos, unsigned int t0, double* k, unsigned int nMax,
                           unsigned int dopMax, unsigned char mode);
    /* Blends the solution of time t in and writes the average back into
     * it (0), or returns why it did not (-1..-8). */
    signed char StaticFilter(tblCrdPnt_t* rec, unsigned int t);

    static double r_xyz(const double* a, const double* b);

private:
    struct State {
        unsigned char set;     /* 1 once InitStatic succeeded */
        double k[5];           /* end gains: X, Y, Z, clock, time offset */
        unsigned int nMax;
        unsigned int dopMax;   /* whole units; records carry tenths */
        unsigned int tLast;    /* last step that changed the state */
        unsigned int tStart;   /* (re)start of the averaging */
        double xyz[3];
        double dt;
        double tau;            /* mode 10 only */
        unsigned char mode;    /* 0 GLONASS, 1 GPS, 10 both */
    };
    State* st;
};

#endif
