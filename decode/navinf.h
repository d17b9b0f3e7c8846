/*
 * Navigation-data collector of one satellite slot. It owns one decoder per
 * kind of data and system, feeds each block to the decoders of the slot's
 * system and forwards table requests; it holds no data of its own.
 */
#ifndef ZELNAV_NAVINF_H
#define ZELNAV_NAVINF_H

#include "navinf_glo_ct.h"
#include "navinf_glo_vt.h"
#include "navinf_gps.h"
#include "tbl_sat.h"

class NavInf_t {
public:
    NavInf_t();
    ~NavInf_t();
    NavInf_t(const NavInf_t&) = delete;
    NavInf_t& operator=(const NavInf_t&) = delete;

    /* Feeds one satellite block to the decoders of hdr->sys. */
    void upx0c(unsigned char* blk, unsigned int tm, tblHdr_t* hdr);

    int getTbl(tblOprGps_t* tbl);
    int getTbl(tblTimePrmGps* tbl);
    int getTbl(tblAlmGps_t* tbl);
    int getTbl(tblIonGps_t* tbl);

    /* GLONASS: `pair` is the slot's triple of tables; index 0 asks the CT
     * decoder for pair[0], 1 the VT decoder for pair[1]. 1 when the set is
     * incomplete or the table was filled, 0 when a complete set was
     * rejected or the index is unknown. */
    int getTbl(tblOprGlo_t** pair, tblHdr_t* hdr, int idx);
    int getTbl(tblTmPrmGlo_t** pair, tblHdr_t* hdr, int idx);
    int getTbl(tblAlmGlo_t** pair, tblHdr_t* hdr, int idx);

    void clear();

private:
    void freeDecoders();

    OprGloCt_t* oprGloCt;
    OprGloVt_t* oprGloVt;
    TmPrmGloCt_t* tmPrmGloCt;
    TmPrmGloVt_t* tmPrmGloVt;
    AlmGloCt_t* almGloCt;
    AlmGloVt_t* almGloVt;
    OprGps_t* oprGps;
    TmPrmGps_t* tmPrmGps;
    AlmGps_t* almGps;
    IonGps_t* ionGps;
};

#endif
