/*
 * Message 0x0C intake: the converter keeps one slot per tracked satellite
 * (24 slots) across messages; each slot decodes its block into its table
 * set and hands the navigation strings to its NavInf_t.
 */
#ifndef ZELNAV_LSTSAT_H
#define ZELNAV_LSTSAT_H

#include "navinf.h"
#include "tbl_sat.h"

/* Key of an empty slot. */
#define SAT_KEY_EMPTY 0xFFFFu

/* One satellite slot. */
class sat_t {
public:
    sat_t();
    ~sat_t();
    sat_t(const sat_t&) = delete;
    sat_t& operator=(const sat_t&) = delete;

    static constexpr double K2_32 = 1.0 / 4294967296.0;
    static constexpr double K2_24 = 1.0 / 16777216.0;
    static constexpr double K2_16 = 1.0 / 65536.0;

    /* Satellite identity of a block: number, byte 1 and the sub-block-10
     * byte; the system bit is not part of it. */
    static unsigned int getKeyx0c(const unsigned char* blk);
    bool thisSat(const unsigned char* blk) const;
    /* thisSat for a key already taken from the block. */
    bool hasKey(unsigned int k) const { return key == k; }
    bool empty() const { return key == SAT_KEY_EMPTY; }
    /* Claims this (empty) slot for the satellite of `blk`. */
    void create(const unsigned char* blk);
    /* Length of a satellite block in bytes. */
    static unsigned int getOffsetx0c(const unsigned char* blk);
    void clearResived() { resived = 0; }
    /* Frees the slot when the current message did not carry it. */
    void remove();
    /* Returns the slot to its freshly constructed state. */
    void clear();
    /* Decodes the block; returns the tblSatGlo* or tblSatGps* of the slot
     * (nullptr for an unknown system). */
    void* upx0c(unsigned char* blk, unsigned int tm);
    unsigned int getTblActual() const { return sys; }

    /* Per-record clears: validity flags to 0; length and identity kept. */
    static void tblHdr_clear(tblHdr_t* t);
    static void tblObs_clear(tblObs_t* t);
    static void tblAddInf_clear(tblAddInf_t* t);
    static void tblOprGlo_clear(tblOprGlo_t* t);
    static void tblTmPrmGlo_clear(tblTmPrmGlo_t* t);
    static void tblAlmGlo_clear(tblAlmGlo_t* t);
    static void tblOprGps_clear(tblOprGps_t* t);
    static void tblTmPrmGps_clear(tblTmPrmGps_t* t);
    static void tblAlmGps_clear(tblAlmGps_t* t);
    static void tblIonGps_clear(tblIonGps_t* t);

private:
    void freeTables();
    void resetTables();
    void tblHdr_upx0c(unsigned char* blk, unsigned int tm, tblHdr_t* hdr);
    void tblObs_upx0c(const unsigned char* blk, unsigned int tm, tblObs_t* obs);
    void tblAddInf_upx0c(const unsigned char* blk, tblHdr_t* hdr,
                         tblAddInf_t* add);

    unsigned char resived;
    unsigned int key;
    unsigned int sys;
    tblSatGlo* tblGlo;
    tblSatGps* tblGps;
    NavInf_t* navInf;
};

/* The converter: 24 slots and the result list. */
class lstsat_t {
public:
    lstsat_t();
    ~lstsat_t();
    lstsat_t(const lstsat_t&) = delete;
    lstsat_t& operator=(const lstsat_t&) = delete;

    lsttblSat_t* upx0c(unsigned char* msg);
    tblGpsUtc_t* getTblGpsUtc() { return gpsUtc; }
    void clear();

private:
    sat_t* sat;
    lsttblSat_t* tbl;
    tblGpsUtc_t* gpsUtc;
};

#endif
