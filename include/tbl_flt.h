/*
 * Filtering records: the state of one two-state (value and rate) tracking
 * filter, the smoothing table of one satellite (fifteen such states: the
 * pseudorange, Doppler and carrier-phase filters of its five signal
 * places), and the list of smoothing tables returned per epoch.
 *
 * 4-byte packing, as for every public record; compiles as C and as C++.
 */
#ifndef ZELNAV_TBL_FLT_H
#define ZELNAV_TBL_FLT_H

#include <stdint.h>

#include "tbl_sat.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma pack(push, 4)

/* State of one two-state tracking filter. */
typedef struct _tblKalman2 {
    uint16_t length;      /* 80 */
    uint8_t actual;       /* 1 once the filter holds an estimate */
    uint32_t tLast;       /* time of the last processed measurement */
    uint32_t t0;          /* time the filter was (re)started */
    double x;             /* value */
    double v;             /* rate, value units per second */
    double k1, k2;        /* gains of the last correction */
    double p11, p12, p21, p22; /* covariance, row by row */
    int16_t error;        /* recent outliers, 0..255 */
} tblKalman2_t;

/* Smoothing state of one satellite. */
typedef struct _tblKalmanObs {
    uint16_t length;      /* 1220 */
    uint8_t actual;       /* 1 while bound to a satellite */
    uint8_t sys;          /* system of the satellite, 255 unbound */
    uint8_t num;          /* satellite number, 255 unbound */
    uint32_t tmZel;       /* time of the last observation used */
    tblKalman2_t psvd[ZEL_NUM_SIG];  /* pseudorange filters per signal place */
    tblKalman2_t dop[ZEL_NUM_SIG];   /* Doppler filters */
    tblKalman2_t faze[ZEL_NUM_SIG];  /* carrier-phase filters */
    uint8_t reserved[8];  /* pads the record to its length of 1220 */
} tblKalmanObs_t;

/* Smoothing tables of the satellites of one epoch. */
typedef struct _lsttblKalmanObs {
    uint32_t reserved;    /* kept 0 */
    tblKalmanObs_t* tbl;  /* array of ZEL_NUM_SLOTS tables */
    uint32_t num;         /* tables filled in this epoch */
} lsttblKalmanObs_t;

#pragma pack(pop)

#define ZEL_LEN_KALMAN2 80
#define ZEL_LEN_KALMANOBS 1220

#ifdef __cplusplus
}
#endif

#endif
