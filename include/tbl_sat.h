/*
 * Per-epoch records handed out by the message converter: the header,
 * observation and additional-information tables of one tracked satellite,
 * the table sets that group them with the navigation tables, the list of
 * table sets of one epoch, and the meteorological and GPS-UTC records.
 *
 * All records use 4-byte packing: that is the layout the `length` fields
 * describe, so a host that copies `length` bytes gets the whole record.
 * Compiles as C and as C++.
 */
#ifndef ZELNAV_TBL_SAT_H
#define ZELNAV_TBL_SAT_H

#include <stdint.h>

#include "tbl_nav.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma pack(push, 4)

/* Number of satellite slots of one converter. */
#define ZEL_NUM_SLOTS 24
/* Signal places of an observation table: C1, C2, B1, B2 and a reserved one. */
#define ZEL_NUM_SIG 5

/* Header of one satellite: identity and navigation-string flags. */
typedef struct _tblHdr {
    uint16_t length;      /* 28 */
    uint8_t num;          /* satellite number 1..127 */
    uint8_t lit;          /* GLONASS frequency letter, bits 0-6 of block byte 1 */
    uint8_t sys;          /* 0 GLONASS set, 1 GPS set */
    uint8_t reserved;     /* carried, not interpreted */
    uint8_t badNavInfCt;  /* 0 good, 16 not taken, 64 out of sequence, 32/36 content marks (+48 rejected ephemeris) */
    uint8_t badNavInfVt;  /* the same for the high-accuracy string */
    uint8_t badNavInfL3;  /* the same for the L3 string */
    double aux;           /* receiver value carried unscaled */
    double um;            /* elevation reported by the receiver, degrees */
} tblHdr_t;

/* Observations of one satellite at one epoch, per signal place. */
typedef struct _tblObs {
    uint16_t length;               /* 156 */
    uint32_t tmZel;                /* epoch, receiver time scale */
    uint8_t actual[ZEL_NUM_SIG];   /* 1 = the place's values are valid */
    double psvd[ZEL_NUM_SIG];      /* pseudorange, m */
    double dop[ZEL_NUM_SIG];       /* Doppler, Hz */
    double faze[ZEL_NUM_SIG];      /* carrier phase, cycles */
    uint32_t ampl[ZEL_NUM_SIG];    /* amplitude */
} tblObs_t;

/* Additional information the receiver reports with each signal. */
typedef struct _tblAddInf {
    uint16_t length;      /* 60 */
    uint8_t actual;
    uint8_t chan;         /* receiver channel (sub-block 10, byte 1) */
    uint8_t flagB5;
    uint8_t flagB7;
    uint8_t present[4];   /* sub-blocks 0..3 present */
    double angle[4];
    double angleExtra;    /* not written by the converter */
    uint8_t aux8[4];
    uint8_t reserved[4];  /* pads the record to its length of 60 */
} tblAddInf_t;

/* Meteorological readings of the epoch. */
typedef struct _tblMeteo {
    uint8_t actual;       /* 1 = valid readings */
    double temperature;   /* degrees Celsius */
    double humidity;      /* percent */
    double pressure;      /* hPa */
} tblMeteo;

/* GPS-UTC difference carried in the message header. */
typedef struct _tblGpsUtc {
    uint8_t actual;       /* 1 when the last message carried GPS satellites */
    uint32_t dtGpsUtc;    /* seconds */
} tblGpsUtc_t;

/* Table set of one GLONASS satellite. Index 0 of each navigation triple is
 * fed by standard-accuracy (CT) strings, index 1 by high-accuracy (VT)
 * strings; index 2 is allocated but never filled. */
typedef struct _tblSatGlo {
    tblHdr_t* tblHdr;
    tblObs_t* tblObs;
    tblAddInf_t* tblAddInf;
    tblOprGlo_t* tblOprGlo[3];
    tblTmPrmGlo_t* tblTmPrmGlo[3];
    tblAlmGlo_t* tblAlmGlo[3];
} tblSatGlo;

/* Table set of one GPS satellite. */
typedef struct _tblSatGps {
    tblHdr_t* tblHdr;
    tblObs_t* tblObs;
    tblAddInf_t* tblAddInf;
    tblOprGps_t* tblOprGps;
    tblTmPrmGps_t* tblTmPrmGps;
    tblAlmGps_t* tblAlmGps;
    tblIonGps_t* tblIonGps;
} tblSatGps;

/* The satellites decoded from the last message. */
typedef struct _lsttblSat {
    tblSatGlo tblGlo[ZEL_NUM_SLOTS];
    uint32_t numGlo;
    tblSatGps tblGps[ZEL_NUM_SLOTS];
    uint32_t numGps;
    tblMeteo* meteo;
} lsttblSat_t;

#pragma pack(pop)

#ifdef __cplusplus
}
#endif

#endif
