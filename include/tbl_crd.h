/*
 * Satellite results of one epoch: one row per satellite with its position
 * and velocity at signal emission and its corrected pseudorange, and the
 * list that holds up to 24 such rows. The meteorological record that feeds
 * the tropospheric correction is `tblMeteo` of tbl_sat.h.
 *
 * 4-byte packing, as for every public record. Compiles as C and as C++.
 */
#ifndef ZELNAV_TBL_CRD_H
#define ZELNAV_TBL_CRD_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#pragma pack(push, 4)

/* Rows in one result list. */
#define ZEL_NUM_CRDSAT 24

/* One satellite of one epoch. */
typedef struct _tblCrdSat {
    uint8_t num;          /* satellite number, from the header */
    int8_t lit;           /* GLONASS letter as the header stores it: 25..31 are -7..-1 */
    uint8_t sys;          /* 0 GLONASS, 1 GPS */
    double xyz[3];        /* m, at emission, Earth-fixed frame of the reception instant */
    double vxyz[3];       /* m/s, same rotating frame */
    double acc[3];        /* m/s^2, luni-solar acceleration (GLONASS rows only) */
    double psvd;          /* corrected pseudorange, m */
    double dop;           /* Doppler of the signal used, as observed */
    uint8_t bad;          /* 1 = failed the plausibility check */
} tblCrdSat_t;

/* Rows computed for one epoch. */
typedef struct _lsttblCrdSat {
    uint32_t length;      /* 16 */
    tblCrdSat_t* tbl;     /* ZEL_NUM_CRDSAT rows, owned by the list */
    uint32_t num;         /* rows filled */
    uint32_t tm;          /* receiver time of the epoch; written only when num != 0 */
} lsttblCrdSat_t;

#pragma pack(pop)

/* The `length` a result list carries (its size with 32-bit pointers). */
#define ZEL_LEN_LSTCRDSAT 16

#ifdef __cplusplus
}
#endif

#endif
