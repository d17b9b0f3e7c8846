/*
 * GLONASS standard-accuracy (CT) string encoder of the message writer.
 *
 * Builds the 10 kept bytes (the 77 information bits, string bits 85..9)
 * of any string of the 2.5-minute superframe from the navigation tables,
 * the inverse of the library's CT collectors. Values are rounded to the
 * broadcast resolution; a value beyond its field saturates at the field's
 * largest magnitude rather than wrapping. The check bits are not part of
 * the kept bytes: x0c::appendBlock (or x0c::ctWithCheckBits) adds them.
 *
 * What the tables do not hold is written as a healthy satellite sends it:
 * Bn = 0, ln = 0, P1 = 0, P2 = oddness of tb, P3 = 1 (five almanac
 * satellites per frame), P4 = 0, P = 0.
 */
#ifndef ZELNAV_GLO_CT_ENCODE_H
#define ZELNAV_GLO_CT_ENCODE_H

#include <cstdint>

#include "tbl_nav.h"

namespace x0c {

/* Where in the superframe a GLONASS time of day falls. */
struct GloCtSlot {
    unsigned int frame;       /* 1..5 */
    unsigned int str;         /* 1..15 */
    unsigned int frameStart;  /* tk of the frame: s of day, multiple of 30 */
    unsigned int strEnd;      /* s of day at which that string ends */
};

/* The string being broadcast at `tod` (GLONASS time of day, seconds; any
 * value, taken modulo 86400). Each string lasts 2 s, a frame 30 s, and the
 * 150-s superframe is aligned to the start of the GLONASS day. */
GloCtSlot gloCtSlotAt(unsigned int tod);

/* Everything a satellite broadcasts in its CT strings. */
struct GloCtSource {
    const tblOprGlo_t* opr = nullptr;     /* strings 1-4; required for them */
    const tblTmPrmGlo_t* tmPrm = nullptr; /* strings 5 and frame-5 string 14 */
    const tblAlmGlo_t* alm = nullptr;     /* almanac strings; none = all empty */
    unsigned int slot = 1;                /* orbital slot n (string 4) */
    unsigned int en = 0;                  /* age of the ephemeris, days */
};

/* String `str` (1..15) of frame `frame` (1..5); `tk` is the frame's start
 * time (s of day), written into string 1. Returns false (and zeroes `out`)
 * when the string needs a table that `src` lacks, or the numbers are out
 * of range. */
bool gloCtEncode(const GloCtSource& src, unsigned int frame, unsigned int str,
                 unsigned int tk, uint8_t out[10]);

/* The individual strings. */
void gloCtEncodeStr1(const tblOprGlo_t& opr, unsigned int tk, uint8_t out[10]);
void gloCtEncodeStr2(const tblOprGlo_t& opr, uint8_t out[10]);
void gloCtEncodeStr3(const tblOprGlo_t& opr, uint8_t out[10]);
void gloCtEncodeStr4(const tblOprGlo_t& opr, unsigned int slot,
                     unsigned int en, uint8_t out[10]);
void gloCtEncodeStr5(const tblTmPrmGlo_t& prm, uint8_t out[10]);
/* Almanac pair of entry `e` as strings `strA` and `strA` + 1. A null entry,
 * or one with onEmpty = 1, is written as the satellites broadcast an
 * unoccupied slot: carrier number 24, every orbit and clock value zero,
 * slot number `slot`. */
void gloCtEncodeAlmPair(const tblAlmGloSat_t* e, unsigned int slot,
                        unsigned int strA, uint8_t first[10],
                        uint8_t second[10]);
void gloCtEncodeStr14F5(const tblTmPrmGlo_t& prm, uint8_t out[10]);
void gloCtEncodeStr15F5(uint8_t out[10]);

/* FT index (0..15) of an accuracy in metres: the best index whose accuracy
 * is not better than `metres` (15 beyond 512 m). */
unsigned int gloCtFtIndex(double metres);

}  // namespace x0c

#endif
