/*
 * Structural check of one 0x0C message, for hosts that take messages from
 * outside (a log file, a serial line, a fuzzer) and must not hand the
 * library anything it would read past.
 *
 * The library trusts the lengths inside a message: it walks the satellite
 * blocks by their sub-block length bytes and reads fixed offsets inside
 * the sub-blocks without comparing them with the message length. This
 * check walks the message exactly as the library will and refuses it when
 * any of those reads would leave the message:
 *
 *   - the length field (bytes 1-2) must fit in the bytes available;
 *   - a message of type 12 with data needs its 25-byte header;
 *   - when the library will walk blocks (first-block offset != length,
 *     time != 0, block count != 0), every block head, every sub-block
 *     and the whole of every block must lie inside the length, and each
 *     sub-block the library reads must be long enough for what it reads
 *     there (observations, navigation strings, receiver values; the sizes
 *     depend on the block's system, see kNeedGlo / kNeedGps).
 *
 * The library looks for the L3 string after skipping only the sub-blocks
 * of bits 0 to 4, so with a sub-block 5 present it reads the string from
 * there. That read still stays inside the block: it starts no later than
 * sub-block 6, which must itself hold the whole string.
 *
 * The satellite key ignores the system bit, so a GPS block could in
 * principle land in a GLONASS slot of an earlier message and be read with
 * the other system's offsets; a receiver gives every tracked satellite its
 * own channel number in sub-block 10, so that does not happen in practice
 * and the check judges each block by its own system bit.
 *
 * No allocation, no state: the check can run on every message of a live
 * stream.
 */
#ifndef ZELNAV_X0CCHECK_H
#define ZELNAV_X0CCHECK_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace x0ccheck {

/* Header bytes the library reads of a message with data. */
const unsigned int kHeaderBytes = 25;
/* Satellite block head: number, letter byte, 16-bit mask. */
const unsigned int kBlockHead = 4;

/* Least length of each sub-block the library reads, by sub-block number,
 * for a GLONASS and a GPS block (1 = only its length byte). */
extern const uint8_t kNeedGlo[16];
extern const uint8_t kNeedGps[16];

enum class Fault {
    None = 0,
    Short,            /* fewer than 3 bytes: no length field */
    LengthTooSmall,   /* length field below 3 */
    LengthPastEnd,    /* length field longer than the bytes available */
    NotX0c,           /* type nibble is not 12 */
    HeaderShort,      /* length below the 25-byte header */
    FirstBlock,       /* first-block offset inside the header or past the end */
    BlockPastEnd,     /* a block head does not fit in the message */
    SubBlockPastEnd,  /* a sub-block starts or ends past the message */
    SubBlockEmpty,    /* a sub-block length byte of 0 */
    SubBlockShort     /* a sub-block shorter than what the library reads */
};

struct Result {
    Fault fault = Fault::None;
    unsigned int length = 0;  /* the message's length field (0 if unread) */
    unsigned int at = 0;      /* offset in the message where the fault lies */
    int block = -1;           /* block index, -1 for the header */
    int sub = -1;             /* sub-block number, -1 when none */
    int satByte = -1;         /* byte 0 of that block (GPS bit, number), -1 if unread */
    unsigned int have = 0;    /* the size found ... */
    unsigned int need = 0;    /* ... and the size needed */
    /* Of an accepted message: where what the library reads ends (3 for
     * a message without data, the first block's offset when no block is
     * walked, else the end of the last block). Receivers put nothing
     * after that, so a message whose end is short of its length is
     * suspect where no framing vouches for its length. */
    unsigned int end = 0;

    bool ok() const { return fault == Fault::None; }
};

/* Checks the message at `msg` with `avail` bytes readable from there. A
 * message is accepted when the library can decode it without reading a
 * byte outside its own length; Result::length is then its length. */
Result check(const uint8_t* msg, std::size_t avail);

/* Whether the first `avail` bytes of a message (its length field may
 * claim more) can still be the start of one check() accepts: nothing read
 * within them fails. A reader of a live stream asks this while a
 * candidate message is arriving, so as not to wait for all the bytes a
 * false start claims. */
bool mayPass(const uint8_t* msg, std::size_t avail);

/* One line in words, e.g. "block 3 (GPS 5): sub-block 0 is 41 bytes, the
 * decoder reads 59". Empty for an accepted message. */
std::string describe(const Result& r);

}  // namespace x0ccheck

#endif
