/*
 * One satellite slot of the message 0x0C converter: its identity, its two
 * table sets and its navigation-data collector, and the routing of one
 * satellite block through the decoders.
 *
 * A slot owns a GLONASS and a GPS table set for its whole life and uses
 * the one of the system it is currently bound to. Keeping both avoids any
 * allocation when a slot changes hands between the systems.
 */
#include "decode/lstsat.h"

#include "decode/lstsat_x0c.h"

namespace {

/* Zeroes a record and gives it back its length. */
template <class T>
void resetTable(T* t, uint16_t length) {
    *t = T();
    t->length = length;
}

void resetAlmGlo(tblAlmGlo_t* t) {
    resetTable(t, ZEL_LEN_ALMGLO);
    for (int i = 0; i < ZEL_NUM_ALM_GLO; i++) t->alm[i].length = ZEL_LEN_ALMGLO_SAT;
}

void resetAlmGps(tblAlmGps_t* t) {
    resetTable(t, ZEL_LEN_ALMGPS);
    for (int i = 0; i < ZEL_NUM_ALM_GPS; i++) t->alm[i].length = ZEL_LEN_ALMGPS_SAT;
}

}  // namespace

sat_t::sat_t()
    : resived(0), key(SAT_KEY_EMPTY), sys(0), tblGlo(nullptr), tblGps(nullptr),
      navInf(nullptr) {
    /* All pointers start null, so a failed allocation half way can free
     * what was taken before it and let the exception pass on. */
    try {
        tblGlo = new tblSatGlo();
        tblGps = new tblSatGps();
        tblGlo->tblHdr = new tblHdr_t();
        tblGlo->tblObs = new tblObs_t();
        tblGlo->tblAddInf = new tblAddInf_t();
        for (int i = 0; i < 3; i++) {
            tblGlo->tblOprGlo[i] = new tblOprGlo_t();
            tblGlo->tblTmPrmGlo[i] = new tblTmPrmGlo_t();
            tblGlo->tblAlmGlo[i] = new tblAlmGlo_t();
        }
        tblGps->tblHdr = new tblHdr_t();
        tblGps->tblObs = new tblObs_t();
        tblGps->tblAddInf = new tblAddInf_t();
        tblGps->tblOprGps = new tblOprGps_t();
        tblGps->tblTmPrmGps = new tblTmPrmGps_t();
        tblGps->tblAlmGps = new tblAlmGps_t();
        tblGps->tblIonGps = new tblIonGps_t();
        navInf = new NavInf_t();
    } catch (...) {
        freeTables();
        throw;
    }
    resetTables();
}

sat_t::~sat_t() { freeTables(); }

void sat_t::freeTables() {
    delete navInf;
    navInf = nullptr;
    if (tblGlo != nullptr) {
        delete tblGlo->tblHdr;
        delete tblGlo->tblObs;
        delete tblGlo->tblAddInf;
        for (int i = 0; i < 3; i++) {
            delete tblGlo->tblOprGlo[i];
            delete tblGlo->tblTmPrmGlo[i];
            delete tblGlo->tblAlmGlo[i];
        }
        delete tblGlo;
        tblGlo = nullptr;
    }
    if (tblGps != nullptr) {
        delete tblGps->tblHdr;
        delete tblGps->tblObs;
        delete tblGps->tblAddInf;
        delete tblGps->tblOprGps;
        delete tblGps->tblTmPrmGps;
        delete tblGps->tblAlmGps;
        delete tblGps->tblIonGps;
        delete tblGps;
        tblGps = nullptr;
    }
}

/* Every table back to its state after construction: zero content, its
 * length, and the system mark of the two header tables. */
void sat_t::resetTables() {
    resetTable(tblGlo->tblHdr, ZEL_LEN_HDR);
    tblGlo->tblHdr->sys = 0;
    resetTable(tblGlo->tblObs, ZEL_LEN_OBS);
    resetTable(tblGlo->tblAddInf, ZEL_LEN_ADDINF);
    for (int i = 0; i < 3; i++) {
        resetTable(tblGlo->tblOprGlo[i], ZEL_LEN_OPRGLO);
        resetTable(tblGlo->tblTmPrmGlo[i], ZEL_LEN_TMPRMGLO);
        resetAlmGlo(tblGlo->tblAlmGlo[i]);
    }
    resetTable(tblGps->tblHdr, ZEL_LEN_HDR);
    tblGps->tblHdr->sys = 1;
    resetTable(tblGps->tblObs, ZEL_LEN_OBS);
    resetTable(tblGps->tblAddInf, ZEL_LEN_ADDINF);
    resetTable(tblGps->tblOprGps, ZEL_LEN_OPRGPS);
    resetTable(tblGps->tblTmPrmGps, ZEL_LEN_TMPRMGPS);
    resetAlmGps(tblGps->tblAlmGps);
    resetTable(tblGps->tblIonGps, ZEL_LEN_IONGPS);
}

/*
 * The key packs the satellite number (without the system bit), the whole
 * letter byte and the channel byte of sub-block 10:
 *     key = ((num << 8 | byte1) << 8) | channel
 * Leaving the system bit out is deliberate: the receiver's channel number
 * already tells apart two satellites that share number and letter byte.
 */
unsigned int sat_t::getKeyx0c(const unsigned char* blk) {
    unsigned int key = ((((unsigned int)blk[0] & 0x7Fu) << 8) | blk[1]) << 8;
    unsigned int off[x0cle::kSubBlocks];
    x0cle::subBlocks(blk, off);
    if (off[10] != 0) key |= blk[off[10] + 1];
    return key;
}

bool sat_t::thisSat(const unsigned char* blk) const { return getKeyx0c(blk) == key; }

void sat_t::create(const unsigned char* blk) {
    sys = (blk[0] & 0x80u) ? 1u : 0u;
    tblHdr_t* hdr = sys == 1 ? tblGps->tblHdr : tblGlo->tblHdr;
    hdr->num = blk[0] & 0x7Fu;
    hdr->lit = blk[1] & 0x7Fu;
    key = getKeyx0c(blk);
}

unsigned int sat_t::getOffsetx0c(const unsigned char* blk) {
    unsigned int off[x0cle::kSubBlocks];
    return x0cle::subBlocks(blk, off);
}

/*
 * A satellite missing from one decoded message loses its slot and all the
 * navigation data collected for it: the receiver reports every tracked
 * satellite in every epoch, so a gap means the track was lost and the
 * strings gathered so far can no longer be trusted to belong together.
 */
void sat_t::remove() {
    if (empty() || resived != 0) return;
    key = SAT_KEY_EMPTY;
    if (sys == 0) {
        tblHdr_clear(tblGlo->tblHdr);
        tblObs_clear(tblGlo->tblObs);
        tblAddInf_clear(tblGlo->tblAddInf);
        /* Index 2 (third source) is left alone: nothing fills it. */
        for (int i = 0; i < 2; i++) {
            tblOprGlo_clear(tblGlo->tblOprGlo[i]);
            tblTmPrmGlo_clear(tblGlo->tblTmPrmGlo[i]);
            tblAlmGlo_clear(tblGlo->tblAlmGlo[i]);
        }
    } else if (sys == 1) {
        tblHdr_clear(tblGps->tblHdr);
        tblObs_clear(tblGps->tblObs);
        tblAddInf_clear(tblGps->tblAddInf);
        tblOprGps_clear(tblGps->tblOprGps);
        tblTmPrmGps_clear(tblGps->tblTmPrmGps);
        tblAlmGps_clear(tblGps->tblAlmGps);
        tblIonGps_clear(tblGps->tblIonGps);
    }
    navInf->clear();
}

void sat_t::clear() {
    resived = 0;
    key = SAT_KEY_EMPTY;
    sys = 0;
    resetTables();
    navInf->clear();
}

void* sat_t::upx0c(unsigned char* blk, unsigned int tm) {
    resived = 1;
    if (sys == 1) {
        tblSatGps* set = tblGps;
        tblHdr_upx0c(blk, tm, set->tblHdr);
        tblObs_upx0c(blk, tm, set->tblObs);
        tblAddInf_upx0c(blk, set->tblHdr, set->tblAddInf);
        /* A subframe that could not be taken, or one announcing an unhealthy
         * satellite, voids the satellite's GPS navigation tables and is not
         * collected. */
        if (set->tblHdr->badNavInfCt != 0) {
            tblOprGps_clear(set->tblOprGps);
            tblTmPrmGps_clear(set->tblTmPrmGps);
            tblAlmGps_clear(set->tblAlmGps);
            tblIonGps_clear(set->tblIonGps);
        } else {
            navInf->upx0c(blk, tm, set->tblHdr);
            /* The GPS decoders reset `actual` themselves when they reject a
             * complete set, so their verdicts need no further action. */
            navInf->getTbl(set->tblOprGps);
            navInf->getTbl(set->tblTmPrmGps);
            navInf->getTbl(set->tblAlmGps);
            navInf->getTbl(set->tblIonGps);
        }
        return set;
    }
    if (sys == 0) {
        tblSatGlo* set = tblGlo;
        tblHdr_t* hdr = set->tblHdr;
        tblHdr_upx0c(blk, tm, hdr);
        tblObs_upx0c(blk, tm, set->tblObs);
        tblAddInf_upx0c(blk, hdr, set->tblAddInf);
        /* A CT string that was not taken (16) or arrived out of sequence
         * (64) means the standard-accuracy stream was interrupted: its
         * tables are voided. The content marks 32/36 and the health value
         * of string 2 do not void anything. */
        if (hdr->badNavInfCt != 0 && (hdr->badNavInfCt & 0x50u) != 0) {
            tblOprGlo_clear(set->tblOprGlo[0]);
            tblTmPrmGlo_clear(set->tblTmPrmGlo[0]);
            tblAlmGlo_clear(set->tblAlmGlo[0]);
        }
        /* Any VT flag other than a clean string (0) or the health value 1
         * voids the high-accuracy tables. */
        if (hdr->badNavInfVt != 0 && hdr->badNavInfVt != 1) {
            tblOprGlo_clear(set->tblOprGlo[1]);
            tblTmPrmGlo_clear(set->tblTmPrmGlo[1]);
            tblAlmGlo_clear(set->tblAlmGlo[1]);
        }
        navInf->upx0c(blk, tm, hdr);
        /* Both sources are asked for every kind; a rejected complete set
         * leaves a table that must not be used. */
        for (int i = 0; i < 2; i++)
            if (navInf->getTbl(set->tblOprGlo, hdr, i) == 0) tblOprGlo_clear(set->tblOprGlo[i]);
        for (int i = 0; i < 2; i++)
            if (navInf->getTbl(set->tblTmPrmGlo, hdr, i) == 0) tblTmPrmGlo_clear(set->tblTmPrmGlo[i]);
        for (int i = 0; i < 2; i++)
            if (navInf->getTbl(set->tblAlmGlo, hdr, i) == 0) tblAlmGlo_clear(set->tblAlmGlo[i]);
        return set;
    }
    return nullptr;
}

/* Record clears: the validity flags go to 0; the length and the identity
 * (num, lit, sys) stay, so that a cleared record still describes itself. */

void sat_t::tblHdr_clear(tblHdr_t* t) {
    t->badNavInfCt = 0;
    t->badNavInfVt = 0;
    t->badNavInfL3 = 0;
}

void sat_t::tblObs_clear(tblObs_t* t) {
    for (int i = 0; i < ZEL_NUM_SIG; i++) t->actual[i] = 0;
}

void sat_t::tblAddInf_clear(tblAddInf_t* t) {
    t->actual = 0;
    for (int i = 0; i < 4; i++) t->present[i] = 0;
}

void sat_t::tblOprGlo_clear(tblOprGlo_t* t) { t->actual = 0; }
void sat_t::tblTmPrmGlo_clear(tblTmPrmGlo_t* t) { t->actual = 0; }
void sat_t::tblAlmGlo_clear(tblAlmGlo_t* t) { t->actual = 0; }
void sat_t::tblOprGps_clear(tblOprGps_t* t) { t->actual = 0; }
void sat_t::tblTmPrmGps_clear(tblTmPrmGps_t* t) { t->actual = 0; }
void sat_t::tblAlmGps_clear(tblAlmGps_t* t) { t->actual = 0; }
void sat_t::tblIonGps_clear(tblIonGps_t* t) { t->actual = 0; }
