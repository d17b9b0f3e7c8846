/*
 * GPS navigation collectors of one satellite: they keep the subframes they
 * need, decide when a set is complete and fill the GPS tables from it.
 * Each is fed every satellite block of its satellite with the epoch time.
 */
#ifndef ZELNAV_NAVINF_GPS_H
#define ZELNAV_NAVINF_GPS_H

#include "navinf_memo.h"
#include "navinf_str.h"
#include "tbl_nav.h"

/* Ephemeris and clock: subframes 1, 2, 3. */
class OprGps_t {
public:
    void upx0c(unsigned char* blk, unsigned int tm);
    bool isCmplt() const;
    /* Fills the table when complete; 1 unless a complete set was rejected. */
    int getTbl(tblOprGps_t* tbl);
    void clear();
    /* Rebuilds the ephemeris from three 24-byte subframe pieces. */
    void check(unsigned char* bytes, tblOprGps_t* tbl);

private:
    NavInfStr_t sf[3];
    NavMemo<tblOprGps_t> memo;
};

/* UTC parameters: subframe 4, page 18. */
class TmPrmGps_t {
public:
    void upx0c(unsigned char* blk, unsigned int tm);
    bool isCmplt() const;
    int getTbl(tblTmPrmGps_t* tbl);
    void clear();

private:
    NavInfStr_t page18;
};

/* Ionosphere parameters: subframe 4, page 18. */
class IonGps_t {
public:
    void upx0c(unsigned char* blk, unsigned int tm);
    bool isCmplt() const;
    int getTbl(tblIonGps_t* tbl);
    void clear();

private:
    NavInfStr_t page18;
};

/* Almanac and health of the 32 satellites: subframes 4 and 5, filed by the
 * page counter that subframe 1 sets. */
class AlmGps_t {
public:
    AlmGps_t();
    void upx0c(unsigned char* blk, unsigned int tm);
    bool isCmplt() const;
    int getTbl(tblAlmGps_t* tbl);
    void clear();

private:
    NavInfStr_t sf1;         /* latest subframe 1: week number, page counter */
    NavInfStr_t health25;    /* subframe 4 page 25: PRN 25..32 */
    NavInfStr_t health1;     /* subframe 5 page 25: PRN 1..24, toa, WNa */
    NavInfStr_t alm[32];     /* one almanac page per PRN */
    unsigned int page;       /* 1..25; all ones = unknown */
};

#endif
