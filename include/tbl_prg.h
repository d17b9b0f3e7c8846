/*
 * The almanac prediction list: the satellites expected above the elevation
 * mask at one time and place, with their geometry, and the place and mask
 * the prediction was made for.
 *
 * 4-byte packing, as for every public record. The list holds a pointer to
 * its entries, so on a 64-bit build it is larger than the 44 bytes its
 * `length` announces (the 32-bit layout); the host reads its fields, it
 * does not copy it by `length`. Compiles as C and as C++.
 */
#ifndef ZELNAV_TBL_PRG_H
#define ZELNAV_TBL_PRG_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#pragma pack(push, 4)

/* Entries one list can hold: every satellite of both systems (24 GLONASS
 * slots and 32 GPS PRNs), so that no mask, however low, can overflow it. */
#define ZEL_NUM_PRGSAT 56

/* One predicted satellite. */
typedef struct _tblPrgSat {
    uint8_t num;          /* GLONASS slot or GPS PRN */
    uint8_t lit;          /* GLONASS letter (25..31 are -7..-1); the PRN again for GPS */
    uint8_t sys;          /* 0 GLONASS, 1 GPS */
    double delay;         /* signal travel time, s */
    double dop;           /* predicted Doppler, Hz, for a receiver at rest */
    double az;            /* azimuth, degrees 0..360 */
    double um;            /* elevation, degrees */
    uint8_t actual;       /* 1 for every entry written */
    double x, y, z;       /* m, Earth-fixed */
    double vx, vy, vz;    /* m/s, Earth-fixed */
} tblPrgSat_t;

/* The prediction of one time and place. */
typedef struct _lsttblPrgSat {
    uint16_t length;      /* 44 */
    tblPrgSat_t* prgSat;  /* ZEL_NUM_PRGSAT entries, owned by the list */
    uint32_t numPrg;      /* entries filled: GLONASS first, then GPS */
    uint32_t tm;          /* receiver time of the prediction */
    double pos[3];        /* user position as given to prgns_set */
    uint8_t posType;      /* 1 = pos is latitude, longitude (degrees), height (m) */
    uint8_t posSys;       /* datum of pos: 0 WGS-84, 1 PZ-90 */
    uint8_t posMask;      /* elevation mask, degrees */
} lsttblPrgSat;

#pragma pack(pop)

/* The `length` the list carries (its size with 32-bit pointers). */
#define ZEL_LEN_LSTPRGSAT 44

#ifdef __cplusplus
}
#endif

#endif
