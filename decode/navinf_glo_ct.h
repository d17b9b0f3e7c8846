/*
 * GLONASS standard-accuracy (CT) collectors of one satellite.
 */
#ifndef ZELNAV_NAVINF_GLO_CT_H
#define ZELNAV_NAVINF_GLO_CT_H

#include "navinf_str.h"
#include "tbl_sat.h"

/* Frame counter value meaning "not known yet". */
#define GLO_FRAME_UNKNOWN 0xFFFFFFFFu

/* Ephemeris: strings 1 to 4. */
class OprGloCt_t {
public:
    OprGloCt_t();
    void upx0c(unsigned char* blk, unsigned int tm);
    bool isCmplt() const;
    /* True unless a complete set was rejected (then the collector is
     * emptied and the header's badNavInfCt gains 48). */
    bool getTbl(tblOprGlo_t* tbl, tblHdr_t* hdr);
    void clear();
    void check(unsigned char* bytes, tblOprGlo_t* tbl, tblHdr_t* hdr);

private:
    NavInfStr_t str[4];
};

/* Time parameters: string 5 and frame-5 string 14. */
class TmPrmGloCt_t {
public:
    TmPrmGloCt_t();
    void upx0c(unsigned char* blk, unsigned int tm);
    bool isCmplt() const;
    bool getTbl(tblTmPrmGlo_t* tbl, tblHdr_t* hdr);
    void clear();

private:
    NavInfStr_t str5;
    NavInfStr_t str14;
    unsigned int frame;
};

/* Almanac: string 5 and the 48 almanac strings of the superframe. */
class AlmGloCt_t {
public:
    AlmGloCt_t();
    void upx0c(unsigned char* blk, unsigned int tm);
    bool isCmplt() const;
    bool getTbl(tblAlmGlo_t* tbl, tblHdr_t* hdr);
    void clear();
    void print() const;

private:
    NavInfStr_t str5;
    NavInfStr_t alm[48];
    unsigned int frame;
};

#endif
