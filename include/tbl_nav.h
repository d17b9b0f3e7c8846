/*
 * Navigation tables decoded from the broadcast messages: GPS ephemeris,
 * UTC and ionosphere parameters and almanac; GLONASS ephemeris, time
 * parameters and almanac.
 *
 * Every table starts with `length` (set once by its owner) and `actual`
 * (1 = filled from a complete, consistent set of strings). Values are in
 * SI units after scaling; GPS angles in radians, GLONASS almanac angles in
 * semicircles. 4-byte packing, as for every public record.
 */
#ifndef ZELNAV_TBL_NAV_H
#define ZELNAV_TBL_NAV_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#pragma pack(push, 4)

/* GPS ephemeris and clock (subframes 1, 2, 3). */
typedef struct _tblOprGps {
    uint16_t length;
    uint8_t actual;
    uint8_t subfr1[30];   /* raw subframes, words without parity, reversed byte order */
    uint8_t subfr2[30];
    uint8_t subfr3[30];
    uint8_t health;       /* 6-bit SV health */
    uint16_t wn;          /* 10-bit week, not extended */
    double af0;           /* s */
    double af1;           /* s/s */
    double af2;           /* s/s^2 */
    uint32_t toc;         /* s of week */
    uint32_t toe;         /* s of week */
    double sqrtA;         /* m^1/2 */
    double cus;           /* rad */
    double e;
    double cuc;           /* rad */
    double m0;            /* rad */
    double deltaN;        /* rad/s */
    double crs;           /* m */
    double idot;          /* rad/s */
    double omegaDot;      /* rad/s */
    double omega;         /* rad */
    double crc;           /* m */
    double i0;            /* rad */
    double cis;           /* rad */
    double omega0;        /* rad */
    double cic;           /* rad */
    double ura;           /* m */
    double tgd;           /* s */
    uint8_t iodc;         /* low 8 bits */
    uint8_t iode;
} tblOprGps_t;

/* GPS UTC parameters (subframe 4, page 18). */
typedef struct _tblTimePrmGps {
    uint16_t length;      /* 44 */
    uint8_t actual;
    double a1;            /* s/s */
    double a0;            /* s */
    uint32_t tot;         /* s of week */
    uint32_t wnt;         /* weeks, 8 bits */
    int32_t dtLs;         /* s */
    uint32_t wnLsf;       /* weeks, 8 bits */
    uint32_t dn;          /* day */
    int32_t dtLsf;        /* s */
} tblTmPrmGps_t;
typedef tblTmPrmGps_t tblTimePrmGps;

/* GPS ionosphere (Klobuchar) coefficients (subframe 4, page 18). */
typedef struct _tblIonGps {
    uint16_t length;
    uint8_t actual;
    double alpha0, alpha1, alpha2, alpha3;
    double beta0, beta1, beta2, beta3;
} tblIonGps_t;

/* One GPS almanac entry. */
typedef struct _tblAlmGpsSat {
    uint16_t length;      /* 84 */
    uint8_t onEmpty;      /* 1 = no almanac for this PRN */
    uint8_t healL;        /* 8-bit health of the almanac page */
    uint32_t toa;         /* s of week, the page's own */
    double af0;           /* s */
    double af1;           /* s/s */
    double m0;            /* rad */
    double omega;         /* rad */
    double omega0;        /* rad */
    double sqrtA;         /* m^1/2 */
    double omegaDot;      /* rad/s */
    double deltaI;        /* rad, offset from the reference inclination */
    double e;
    uint8_t reserved[4];  /* pads the entry to its length of 84 */
} tblAlmGpsSat_t;

#define ZEL_NUM_ALM_GPS 32

/* GPS almanac of 32 satellites (subframes 4 and 5). */
typedef struct _tblAlmGps {
    uint16_t length;      /* 2704 */
    uint8_t actual;
    uint32_t toa;         /* s of week, from the health page */
    uint32_t wna;         /* extended almanac week */
    tblAlmGpsSat_t alm[ZEL_NUM_ALM_GPS];
    uint32_t tmResived;   /* receive time of the health page */
} tblAlmGps_t;

/* GLONASS ephemeris (CT strings 1-4, or VT strings 1-7 and 10). */
typedef struct _tblOprGlo {
    uint16_t length;      /* 200 */
    uint8_t actual;
    uint8_t str[8][10];   /* raw strings */
    uint32_t tb;          /* s of day */
    uint32_t tk;          /* s of day */
    double vx, vy, vz;    /* m/s, PZ-90 */
    double ax, ay, az;    /* m/s^2 */
    double x, y, z;       /* m */
    double gammaN;
    double tauN;          /* s */
    double dTauN;         /* s */
    double ft;            /* m */
    uint16_t nt;          /* day within the four-year interval */
    uint8_t m;            /* satellite modification */
} tblOprGlo_t;

/* GLONASS time parameters (CT string 5 and frame-5 string 14, or VT 8-10). */
typedef struct _tblTmPrmGlo {
    uint16_t length;      /* 48 */
    uint8_t actual;
    uint32_t na;          /* day within the four-year interval */
    uint32_t n4;          /* four-year interval */
    double tauC;          /* s */
    double tauGps;        /* s */
    double b1;            /* s */
    double b2;            /* s/day */
    uint8_t kp;
} tblTmPrmGlo_t;

/* One GLONASS almanac entry. */
typedef struct _tblAlmGloSat {
    uint16_t length;      /* 72 */
    uint8_t onErrData;    /* 1 = a value out of range; later fields unwritten */
    uint8_t onEmpty;      /* 0 filled, 1 empty-slot marker, 2 all-zero orbit */
    uint8_t onSystem;     /* health Cn */
    uint8_t num;          /* slot */
    uint8_t lit;          /* raw 5-bit carrier field */
    double lambda;        /* semicircles */
    double lambdaT;       /* s */
    double dI;            /* semicircles */
    double dT;            /* s */
    double dTdot;         /* s/orbit^2 */
    double eps;
    double omega;         /* semicircles */
    double tauA;          /* s */
} tblAlmGloSat_t;

#define ZEL_NUM_ALM_GLO 24

/* GLONASS almanac of 24 satellites. */
typedef struct _tblAlmGlo {
    uint16_t length;      /* 1744 */
    uint8_t actual;
    uint32_t na;
    uint32_t n4;
    tblAlmGloSat_t alm[ZEL_NUM_ALM_GLO];
    uint32_t tmResived;   /* receive time of the last needed string */
} tblAlmGlo_t;

#pragma pack(pop)

/* Record lengths, as carried in the `length` fields. */
#define ZEL_LEN_HDR 28
#define ZEL_LEN_OBS 156
#define ZEL_LEN_ADDINF 60
#define ZEL_LEN_OPRGLO 200
#define ZEL_LEN_TMPRMGLO 48
#define ZEL_LEN_ALMGLO 1744
#define ZEL_LEN_ALMGLO_SAT 72
#define ZEL_LEN_TMPRMGPS 44
#define ZEL_LEN_ALMGPS 2704
#define ZEL_LEN_ALMGPS_SAT 84
#define ZEL_LEN_OPRGPS ((uint16_t)sizeof(tblOprGps_t))
#define ZEL_LEN_IONGPS ((uint16_t)sizeof(tblIonGps_t))

#ifdef __cplusplus
}
#endif

#endif
