/*
 * Navigation-data collector of one satellite slot.
 *
 * It owns one decoder per kind of data and system and only routes: blocks
 * go to the decoders of the slot's system, table requests to the decoder
 * of the requested table. Both GLONASS families (standard-accuracy CT and
 * high-accuracy VT) are fed side by side; the caller keeps one table per
 * source and asks each for its own.
 */
#include "decode/navinf.h"

NavInf_t::NavInf_t()
    : oprGloCt(nullptr), oprGloVt(nullptr), tmPrmGloCt(nullptr), tmPrmGloVt(nullptr),
      almGloCt(nullptr), almGloVt(nullptr), oprGps(nullptr), tmPrmGps(nullptr),
      almGps(nullptr), ionGps(nullptr) {
    try {
        oprGloCt = new OprGloCt_t();
        oprGloVt = new OprGloVt_t();
        tmPrmGloCt = new TmPrmGloCt_t();
        tmPrmGloVt = new TmPrmGloVt_t();
        almGloCt = new AlmGloCt_t();
        almGloVt = new AlmGloVt_t();
        oprGps = new OprGps_t();
        tmPrmGps = new TmPrmGps_t();
        almGps = new AlmGps_t();
        ionGps = new IonGps_t();
    } catch (...) {
        freeDecoders();
        throw;
    }
}

NavInf_t::~NavInf_t() { freeDecoders(); }

void NavInf_t::freeDecoders() {
    delete oprGloCt;
    delete oprGloVt;
    delete tmPrmGloCt;
    delete tmPrmGloVt;
    delete almGloCt;
    delete almGloVt;
    delete oprGps;
    delete tmPrmGps;
    delete almGps;
    delete ionGps;
    oprGloCt = nullptr;
    oprGloVt = nullptr;
    tmPrmGloCt = nullptr;
    tmPrmGloVt = nullptr;
    almGloCt = nullptr;
    almGloVt = nullptr;
    oprGps = nullptr;
    tmPrmGps = nullptr;
    almGps = nullptr;
    ionGps = nullptr;
}

/* Each decoder cuts its own string kind out of the block and ignores a
 * block without it. */
void NavInf_t::upx0c(unsigned char* blk, unsigned int tm, tblHdr_t* hdr) {
    switch (hdr->sys & 0xFFu) {
    case 0:
        oprGloCt->upx0c(blk, tm);
        tmPrmGloCt->upx0c(blk, tm);
        almGloCt->upx0c(blk, tm);
        oprGloVt->upx0c(blk, tm);
        tmPrmGloVt->upx0c(blk, tm);
        almGloVt->upx0c(blk, tm);
        break;
    case 1:
        oprGps->upx0c(blk, tm);
        tmPrmGps->upx0c(blk, tm);
        almGps->upx0c(blk, tm);
        ionGps->upx0c(blk, tm);
        break;
    default:
        break;
    }
}

int NavInf_t::getTbl(tblOprGps_t* tbl) { return oprGps->getTbl(tbl); }
int NavInf_t::getTbl(tblTimePrmGps* tbl) { return tmPrmGps->getTbl(tbl); }
int NavInf_t::getTbl(tblAlmGps_t* tbl) { return almGps->getTbl(tbl); }
int NavInf_t::getTbl(tblIonGps_t* tbl) { return ionGps->getTbl(tbl); }

/* GLONASS: index 0 is the CT table of the pair, 1 the VT table. The CT
 * ephemeris decoder also marks the header when it rejects a set. */

int NavInf_t::getTbl(tblOprGlo_t** pair, tblHdr_t* hdr, int idx) {
    if (idx == 0) return oprGloCt->getTbl(pair[0], hdr) ? 1 : 0;
    if (idx == 1) return oprGloVt->getTbl(pair[1]) ? 1 : 0;
    return 0;
}

int NavInf_t::getTbl(tblTmPrmGlo_t** pair, tblHdr_t* hdr, int idx) {
    if (idx == 0) return tmPrmGloCt->getTbl(pair[0], hdr) ? 1 : 0;
    if (idx == 1) return tmPrmGloVt->getTbl(pair[1]) ? 1 : 0;
    return 0;
}

int NavInf_t::getTbl(tblAlmGlo_t** pair, tblHdr_t* hdr, int idx) {
    if (idx == 0) return almGloCt->getTbl(pair[0], hdr) ? 1 : 0;
    if (idx == 1) return almGloVt->getTbl(pair[1]) ? 1 : 0;
    return 0;
}

void NavInf_t::clear() {
    oprGloCt->clear();
    oprGloVt->clear();
    tmPrmGloCt->clear();
    tmPrmGloVt->clear();
    almGloCt->clear();
    almGloVt->clear();
    oprGps->clear();
    tmPrmGps->clear();
    almGps->clear();
    ionGps->clear();
}
