/*
 * Message 0x0C writer: the exact inverse of the library's reader. Builds
 * complete messages from typed inputs, so that tests and the RINEX
 * converter can feed the library what the receiver would have sent.
 *
 * Layout written (byte numbers from the first byte of the unit named):
 *
 * Header, 25 bytes: 0 type (low nibble, 12) | noData (bit 7); 1-2 length of
 * the whole message; 3 offset of the first satellite block (25); 4-7
 * receiver seconds since 1980-01-06 (receiver time scale); 9 number of
 * blocks; 14 GPS-UTC seconds; 19-20 temperature, 21-22 pressure, 23-24
 * humidity, each a signed 16-bit count of tenths. Bytes not listed are 0.
 *
 * Satellite block: 0 number (bits 0-6) | GPS (bit 7); 1 frequency letter
 * byte; 2-3 mask of the present sub-blocks; then the sub-blocks in bit
 * order, each starting with its own total length. The block is 4 bytes
 * plus the length bytes of its sub-blocks.
 *   sub-block 0 (signal C1 and the standard-accuracy navigation data):
 *     1-6 pseudorange (48-bit signed, 2^-32 ms), 7-10 Doppler (32-bit
 *     signed, 2^-24 kHz), 11-18 phase (64-bit signed, 2^-16 cycle), 19-20
 *     amplitude;
 *     GLONASS (41 bytes): 21-31 CT string with its check bits, 34-35
 *     elevation (tenths of a degree), 36-37 aux, 38-39 angle, 40 aux8;
 *     GPS (59 bytes): 21-50 subframe (ten words without parity, reversed
 *     byte order), 51-52 elevation, 53-54 aux, 55-56 angle, 57-58 parity
 *     indicator (0 = parity good). Byte 57 is also where the reader takes
 *     the aux8 of the place, so a GPS place 0 always carries aux8 = low
 *     byte of the parity indicator and Signal::aux8 of a GPS place 0 is
 *     not written.
 *   sub-blocks 1 and 3 (C2, B2; 22 bytes): 1-4 pseudorange difference to
 *     place 0 / 2 (32-bit signed, 2^-32 ms), 5-8 Doppler, 9-16 phase, 17-18
 *     amplitude, 19-20 angle, 21 aux8.
 *   sub-block 2 (B1): as sub-block 0 for bytes 1-20; GLONASS (32 bytes):
 *     21-27 VT string with its check bits, 29-30 angle, 31 aux8; GPS (24
 *     bytes): 21-22 angle, 23 aux8.
 *   sub-block 6 (L3, 73 bytes): 35-71 the 37 string bytes, 72 status (bit
 *     7 set = check failed).
 *   sub-block 7 (13 bytes): 1-6 and 7-12 two 48-bit unsigned pseudoranges
 *     (2^-32 ms) that replace those of places 1 and 3.
 *   sub-block 10 (4 bytes): 1 receiver channel, 3 flags (bits 5 and 7).
 * Multi-byte values are little-endian.
 *
 * The reader finds the VT string by skipping the sub-blocks of bits 0 and
 * 1, and the L3 string by skipping those of bits 0 to 4 only. A sub-block 5
 * written ahead of an L3 string would therefore hide it; this writer never
 * writes sub-blocks 4, 5, 8, 9 or 11-15.
 *
 * The pressure is in tenths of a hectopascal; the receiver may instead
 * report it in tenths of a centimetre of mercury (whole millimetres), which
 * the reader recognises by a value below 1100.
 *
 * Values that do not fit their fields (a pseudorange beyond 48 bits, a
 * difference beyond 32 bits, a satellite number above 127, more than 255
 * blocks, a non-finite physical value) make the functions throw
 * std::out_of_range; a navigation string
 * given for the wrong system throws std::invalid_argument. Nothing is
 * silently truncated.
 */
#ifndef ZELNAV_X0C_WRITER_H
#define ZELNAV_X0C_WRITER_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace x0c {

const double kC = 299792458.0;

/* Raw units of the observation fields, from physical values (rounded to
 * the nearest count). */
int64_t psvdToRaw(double metres);   /* 2^-32 ms of light time */
int32_t dopToRaw(double hertz);     /* 2^-24 kHz */
int64_t fazeToRaw(double cycles);   /* 2^-16 cycle */

struct Header {
    uint8_t type = 12;        /* low nibble written */
    bool noData = false;
    uint32_t tmRsvr = 0;      /* receiver seconds; 0 = no time */
    uint8_t dtGpsUtc = 0;
    int16_t temperature = 150; /* tenths of a degree Celsius */
    int16_t pressure = 10132;  /* tenths of hPa (or mmHg below 1100) */
    int16_t humidity = 500;    /* tenths of a percent */
};

/* One signal place, in raw units. For places 1 and 3 `psvd` is the
 * difference to the pseudorange of place 0 / 2 and must fit 32 bits (half
 * a millisecond, 150 km); psvdToRaw(C2) - psvdToRaw(C1) gives back C2 to
 * the count, where psvdToRaw(C2 - C1) would round twice. A
 * place that is not present but whose sub-block is written anyway (for its
 * navigation string) carries zero observations. */
struct Signal {
    bool present = false;
    int64_t psvd = 0;
    int32_t dop = 0;
    int64_t faze = 0;
    uint16_t ampl = 0;
    uint16_t angle = 0;
    uint8_t aux8 = 0;
};

struct SatBlock {
    bool gps = false;
    uint8_t num = 1;          /* 1..127 */
    uint8_t litByte = 0;      /* whole block byte 1 (GLONASS letter in 0-6) */
    Signal sig[4];            /* places C1, C2, B1, B2 = sub-blocks 0..3 */
    uint16_t elev10 = 0;      /* elevation, tenths of a degree (sub-block 0) */
    uint16_t aux = 0;         /* sub-block 0 aux value */

    /* Navigation data. A string that is absent is written as zeros (which
     * the reader rejects) when its sub-block is present for observations;
     * an absent GPS subframe gets the parity indicator 0xFFFF when
     * gpsParity is 0, since zeros would read as a good subframe 0. CT and
     * VT strings belong to GLONASS blocks, subframes to GPS blocks. */
    bool hasCt = false;
    uint8_t ct[10] = {};      /* GLONASS CT information bits, kept layout */
    bool hasVt = false;
    uint8_t vt[7] = {};       /* VT string; positions 1-7 are recomputed */
    bool hasGps = false;
    uint8_t gpsSf[30] = {};   /* GPS subframe, stored (reversed) order */
    uint16_t gpsParity = 0;   /* 0 = the receiver found the parity good */
    bool hasL3 = false;
    uint8_t l3[37] = {};
    bool l3Bad = false;       /* sets the status byte's failure bit */

    bool hasSb7 = false;
    uint64_t sb7[2] = {0, 0}; /* 48-bit unsigned pseudoranges */
    bool hasSb10 = false;
    uint8_t chan = 0;
    uint8_t sb10Flags = 0;    /* byte 3 of sub-block 10 */
};

/* Appends one satellite block to `out`; returns its length. Sub-block 0 is
 * written when place 0 is present or a CT/GPS string is given; sub-block 2
 * likewise for place 2 or a VT string. */
size_t appendBlock(const SatBlock& sat, std::vector<uint8_t>& out);

/* Builds a whole message: header, then one block per satellite. */
std::vector<uint8_t> buildMessage(const Header& hdr,
                                  const std::vector<SatBlock>& sats);

/* The stored form of a GPS subframe (gpsSf) from its ten 24-bit words
 * without parity, in transmitted order (word 1 first; each word's first
 * transmitted bit is its bit 23). */
void gpsWordsToStored(const uint32_t words[10], uint8_t out[30]);

/* The 11 transmitted bytes of a CT string (check bits 8..1 in byte 10)
 * from its 10 kept bytes: the Hamming code of the GLONASS interface
 * document. */
void ctWithCheckBits(const uint8_t info[10], uint8_t out[11]);
/* A VT string with its check bits c1..c6 (positions 1-6) and overall parity
 * (position 7) computed over positions 8..50. */
void vtWithCheckBits(const uint8_t in[7], uint8_t out[7]);

}  // namespace x0c

#endif
