/*
 * GLONASS standard-accuracy (CT) collectors of one satellite.
 */
#ifndef ZELNAV_NAVINF_GLO_CT_H
#define ZELNAV_NAVINF_GLO_CT_H

#include "navinf_memo.h"
#include "navinf_str.h"
#include "tbl_sat.h"

/* Frame counter value meaning "not known yet". */
#define GLO_FRAME_UNKNOWN 0xFFFFFFFFu

struct GloCtField;

/* Field `f` (navinf_glo_ct_fields.h) of the 10 kept bytes of a CT string,
 * in broadcast units. */
double gloCtValue(const unsigned char* data, const GloCtField& f);
/* Frame time of string 1: seconds of day at which its frame began. */
unsigned int gloCtTk(const unsigned char* str1);
/* One almanac entry from its pair of strings (first, second), with the
 * range tests in their order: the first failure sets onErrData and leaves
 * the later values unwritten. */
void gloCtAlmEntry(const unsigned char* first, const unsigned char* second,
                   tblAlmGloSat_t* e);

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
    NavMemo<tblOprGlo_t> memo; /* the last accepted set */

    /* Store a string of number 1 to 4; string 1 restarts the set. */
    void put(const NavInfStr_t& s);
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
