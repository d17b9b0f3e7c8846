/*
 * GLONASS high-accuracy (VT) collectors of one satellite: 7-byte strings
 * numbered 1 to 10.
 */
#ifndef ZELNAV_NAVINF_GLO_VT_H
#define ZELNAV_NAVINF_GLO_VT_H

#include "navinf_str.h"
#include "tbl_sat.h"

/* Ephemeris: strings 1 to 7 and 10. */
class OprGloVt_t {
public:
    void upx0c(unsigned char* blk, unsigned int tm);
    bool isCmplt() const;
    /* False when a value is out of range (the caller clears the table). */
    bool getTbl(tblOprGlo_t* tbl);
    void clear();

private:
    NavInfStr_t str[8];
};

/* Time parameters: strings 8, 9, 10 of the three-string cycle. */
class TmPrmGloVt_t {
public:
    TmPrmGloVt_t();
    void upx0c(unsigned char* blk, unsigned int tm);
    bool isCmplt() const;
    bool getTbl(tblTmPrmGlo_t* tbl);
    void clear();

private:
    NavInfStr_t place[6];
    unsigned int cycle;  /* 0, 1 or 2 */
};

/* Almanac: strings 8, 9, 10 of 24 satellites in three phases. */
class AlmGloVt_t {
public:
    AlmGloVt_t();
    void upx0c(unsigned char* blk, unsigned int tm);
    bool isCmplt() const;
    bool getTbl(tblAlmGlo_t* tbl);
    void clear();

private:
    NavInfStr_t a[7][24];
    unsigned int counter; /* all ones = unknown */
};

#endif
