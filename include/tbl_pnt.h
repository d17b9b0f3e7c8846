/*
 * Receiver solution records: position, clock and time offset of one epoch,
 * and the velocity estimated from the Doppler measurements of the same fix.
 * 4-byte packing, as for every public record.
 */
#ifndef ZELNAV_TBL_PNT_H
#define ZELNAV_TBL_PNT_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#pragma pack(push, 4)

/* Position solution of one epoch. */
typedef struct _tblCrdPnt {
    uint16_t length;      /* 100 */
    uint8_t actual;       /* 1 when this epoch produced a solution */
    uint8_t sys;          /* 0 GLONASS, 1 GPS, 10 both */
    uint8_t numGlo;
    uint8_t lstGlo[24];   /* numbers of the GLONASS satellites used */
    uint8_t numGps;
    uint8_t lstGps[24];   /* numbers of the GPS satellites used */
    double xyz[3];        /* m, PZ-90 with GLONASS or combined, WGS-84 GPS-only */
    double dt;            /* receiver clock offset, s */
    int32_t dop10;        /* dilution of precision x 10, truncated */
    double tau;           /* GPS minus GLONASS system time, s */
} tblCrdPnt_t;

/* Velocity and clock drift of the last fix. */
typedef struct _tblSpdPnt {
    uint16_t length;      /* 48 */
    uint8_t actual;
    uint8_t sys;          /* systems of the position solution */
    double vxyz[3];       /* m/s */
    double drift;         /* s/s */
    double driftMean;     /* s/s */
    uint8_t reserved[4];  /* pads the record to its length of 48 */
} tblSpdPnt_t;

#pragma pack(pop)

#define ZEL_LEN_CRDPNT 100
#define ZEL_LEN_SPDPNT 48

#ifdef __cplusplus
}
#endif

#endif
