/*
 * GLONASS high-accuracy (VT) string encoder of the message writer: builds
 * the 7-byte VT strings from table values, and the broadcast schedule that
 * says which string a satellite sends at which second.
 *
 * The schedule (all times in seconds of the GLONASS day, 0..86399):
 *
 *  - Frames of 10 s, starting at every multiple of 10. String n (1..10) is
 *    sent in second n - 1 of its frame: strings 1-7 carry the ephemeris,
 *    8 and 9 the almanac and the time parameters, 10 the ephemeris day and
 *    the slowly changing time parameters.
 *  - String 1 carries the frame's start time as hours, minutes and tens of
 *    seconds (this is tk of the ephemeris). Its tens of seconds v (0..5)
 *    and minutes modulo 12, u, are the counters the receiver steers by:
 *    step = v + 6u = (frame start mod 720) / 10 runs 0..71 through a
 *    12-minute almanac cycle. The almanac satellite index of the frame is
 *    step / 3, its phase step mod 3 (= v mod 3, the time-parameter cycle
 *    counter). A day holds exactly 120 cycles, so every cycle starts at a
 *    multiple of 720 s and the day boundary starts a cycle.
 *  - Almanac: satellite index k has the 30 s from (k * 30) mod 720, in
 *    three phases:
 *        phase 0: string 8 = health mask of all 24, tauA, slot number;
 *                 string 9 = lambda, omega
 *        phase 1: string 8 = eps;  string 9 = lambdaT, dI
 *        phase 2: string 8 = tauC (sign, high 27 bits), day number na;
 *                 string 9 = dT, dTdot, carrier number, tauC (low 4 bits)
 *    and string 10 (every frame) = nt, n4, kp, b2, b1.
 *    So the almanac is complete at second 719 of each cycle.
 *  - Time parameters: complete every 30 s, at the last string 10 of the
 *    phase-2 frame.
 *  - Ephemeris: complete every 10 s, at string 10.
 *
 * The receiver's collectors check these rules (the time-parameter set
 * within 720 s of its first string, the ephemeris strings at most 720 s
 * apart), so the schedule survives any constant delivery delay.
 *
 * The caller should change the ephemeris only at a frame start and the
 * time parameters and almanac only at a cycle start, or a set mixes old
 * and new values. The day number na and four-year number n4 are broadcast
 * once, from the time parameters; the almanac table's own na and n4 are
 * not sent (the receiver reads the same bits for both tables).
 *
 * Values are rounded to the nearest broadcast step; a value too large for
 * its field loses its high bits (the bit writer masks it). A negative
 * tauC smaller than 2^-27 s in magnitude has no representation that the
 * receiver reads back as negative; it is sent as -0 plus the low bits and
 * arrives positive.
 *
 * Positions 1-7 (check bits and parity) are left 0 in every string built
 * here: the message writer computes them (vtWithCheckBits). Positions
 * 51-56 are 0.
 */
#ifndef ZELNAV_GLO_VT_ENCODE_H
#define ZELNAV_GLO_VT_ENCODE_H

#include <cstdint>

#include "tbl_nav.h"

namespace x0c {

const unsigned kVtFrameSec = 10;
const unsigned kVtAlmCycleSec = 720;

/* Where a second of the day falls in the schedule. */
struct VtSlot {
    unsigned num;    /* string sent in that second, 1..10 */
    uint32_t frame;  /* second of day at which its frame began */
    unsigned step;   /* almanac step of the frame, 0..71 */
    unsigned sat;    /* almanac satellite index, step / 3 */
    unsigned phase;  /* step mod 3 */
};
VtSlot vtSlotAt(uint32_t tod);

/* Ephemeris string 1..7; `tk` (second of day, a multiple of 10) goes into
 * string 1 in place of the table's tk. */
void vtEphString(unsigned num, const tblOprGlo_t& eph, uint32_t tk,
                 uint8_t out[7]);
/* String 8 or 9 of almanac satellite index `sat` (0..23) in `phase`
 * (0..2). */
void vtAlmString(unsigned num, unsigned phase, unsigned sat,
                 const tblTmPrmGlo_t& tp, const tblAlmGlo_t& alm,
                 uint8_t out[7]);
/* String 10, the same in every frame. */
void vtString10(const tblOprGlo_t& eph, const tblTmPrmGlo_t& tp,
                uint8_t out[7]);

/* The string sent during second `tod` of the GLONASS day (taken modulo a
 * day); returns its number. */
unsigned vtStringAt(uint32_t tod, const tblOprGlo_t& eph,
                    const tblTmPrmGlo_t& tp, const tblAlmGlo_t& alm,
                    uint8_t out[7]);

}  // namespace x0c

#endif
