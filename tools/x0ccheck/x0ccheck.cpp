/*
 * The structural check of a 0x0C message: the library's own walk over the
 * header, the satellite blocks and their sub-blocks, with every read
 * compared against the message length first.
 */
#include "x0ccheck.h"

#include <cstdio>

namespace x0ccheck {

/*
 * What the library reads inside each sub-block (byte 0 is the length):
 *   0  C1: observations to byte 20; GLONASS: CT string 21-31 and the
 *      receiver values 34-40; GPS: subframe 21-50, receiver values
 *      51-57 and the parity indicator 57-58;
 *   1, 3  C2, B2: observations to 18, angle and flag to 21;
 *   2  B1: observations to 20; GLONASS: VT string 21-27, angle and flag
 *      29-31; GPS: angle and flag 21-23;
 *   6  GLONASS L3: string 35-71 and its status byte 72 (not read for GPS);
 *   7  two full pseudoranges, 1-12;
 *   10 receiver channel 1 and flags 3.
 */
const uint8_t kNeedGlo[16] = {41, 22, 32, 22, 1, 1, 73, 13, 1, 1, 4, 1, 1, 1, 1, 1};
const uint8_t kNeedGps[16] = {59, 22, 24, 22, 1, 1, 1, 13, 1, 1, 4, 1, 1, 1, 1, 1};

namespace {

inline unsigned int u16(const uint8_t* p) {
    return (unsigned int)p[0] | ((unsigned int)p[1] << 8);
}

inline uint32_t u32(const uint8_t* p) {
    return (uint32_t)p[0] | ((uint32_t)p[1] << 8) | ((uint32_t)p[2] << 16) |
           ((uint32_t)p[3] << 24);
}

Result fail(Result r, Fault f, unsigned int at, unsigned int have = 0,
            unsigned int need = 0) {
    r.fault = f;
    r.at = at;
    r.have = have;
    r.need = need;
    return r;
}

/* One satellite block at `off`; on success `end` is where the next starts,
 * or 0 when the block runs past the `known` bytes before any fault. */
Result checkBlock(const uint8_t* msg, unsigned int len, unsigned int known, unsigned int off,
                  int index, unsigned int* end) {
    Result r;
    r.length = len;
    r.block = index;
    if (off + kBlockHead > len)
        return fail(r, Fault::BlockPastEnd, off, len - off, kBlockHead);
    *end = 0;
    if (off + kBlockHead > known) return Result();
    r.satByte = msg[off];
    const bool gps = (msg[off] & 0x80u) != 0;
    const uint8_t* need = gps ? kNeedGps : kNeedGlo;
    const unsigned int mask = u16(msg + off + 2);

    unsigned int at = off + kBlockHead;
    for (int i = 0; i < 16; i++) {
        if (!(mask & (1u << i))) continue;
        r.sub = i;
        if (at >= len) return fail(r, Fault::SubBlockPastEnd, at, 0, 1);
        if (at >= known) return Result();
        const unsigned int sub = msg[at];
        if (sub == 0) return fail(r, Fault::SubBlockEmpty, at);
        if (at + sub > len) return fail(r, Fault::SubBlockPastEnd, at, len - at, sub);
        if (sub < need[i]) return fail(r, Fault::SubBlockShort, at, sub, need[i]);
        at += sub;
    }
    *end = at;
    return Result();
}

/* The walk over a message of length `len` of which the first `known`
 * bytes are there; it stops, accepting so far, at the first read past
 * them. */
Result walk(const uint8_t* msg, unsigned int len, unsigned int known) {
    Result r;
    r.length = len;
    if ((msg[0] & 0x0Fu) != 12) return fail(r, Fault::NotX0c, 0, msg[0] & 0x0Fu, 12);
    r.end = 3;
    if (msg[0] & 0x80u) return r; /* no data: the library reads nothing more */
    if (len < kHeaderBytes) return fail(r, Fault::HeaderShort, 0, len, kHeaderBytes);
    if (known < 10) return r;

    const unsigned int first = msg[3];
    const unsigned int numSat = msg[9];
    /* The library stops before the blocks in these cases. */
    r.end = first;
    if (first == len || u32(msg + 4) == 0 || numSat == 0) return r;
    if (first < kHeaderBytes || first > len)
        return fail(r, Fault::FirstBlock, 3, first, kHeaderBytes);

    unsigned int off = first;
    for (unsigned int b = 0; b < numSat; b++) {
        unsigned int end = 0;
        Result br = checkBlock(msg, len, known, off, (int)b, &end);
        if (!br.ok()) return br;
        if (end == 0) return r;
        off = end;
    }
    r.end = off;
    return r;
}

}  // namespace

Result check(const uint8_t* msg, std::size_t avail) {
    Result r;
    if (avail < 3) return fail(r, Fault::Short, 0, (unsigned int)avail, 3);
    const unsigned int len = u16(msg + 1);
    r.length = len;
    if (len < 3) return fail(r, Fault::LengthTooSmall, 1, len, 3);
    if (len > avail) {
        const unsigned int have = avail > 0xFFFFu ? 0xFFFFu : (unsigned int)avail;
        return fail(r, Fault::LengthPastEnd, 1, have, len);
    }
    return walk(msg, len, len);
}

bool mayPass(const uint8_t* msg, std::size_t avail) {
    if (avail < 3) return true;
    const unsigned int len = u16(msg + 1);
    if (len < 3) return false;
    if (len <= avail) return check(msg, avail).ok();
    return walk(msg, len, (unsigned int)avail).ok();
}

std::string describe(const Result& r) {
    char where[64] = "";
    if (r.block >= 0) {
        if (r.satByte >= 0)
            std::snprintf(where, sizeof where, "block %d (%s %d): ", r.block,
                          (r.satByte & 0x80) ? "GPS" : "GLONASS", r.satByte & 0x7F);
        else
            std::snprintf(where, sizeof where, "block %d: ", r.block);
    }
    char what[160];
    switch (r.fault) {
    case Fault::None:
        return std::string();
    case Fault::Short:
        std::snprintf(what, sizeof what, "only %u bytes, no room for the length field", r.have);
        break;
    case Fault::LengthTooSmall:
        std::snprintf(what, sizeof what, "length field %u is below 3", r.have);
        break;
    case Fault::LengthPastEnd:
        std::snprintf(what, sizeof what, "length field says %u bytes, only %u are there",
                      r.need, r.have);
        break;
    case Fault::NotX0c:
        std::snprintf(what, sizeof what, "message type %u, not 0x0C", r.have);
        break;
    case Fault::HeaderShort:
        std::snprintf(what, sizeof what, "length %u is shorter than the %u-byte header",
                      r.have, r.need);
        break;
    case Fault::FirstBlock:
        std::snprintf(what, sizeof what,
                      "first block at byte %u, outside bytes %u..%u of the message",
                      r.have, r.need, r.length);
        break;
    case Fault::BlockPastEnd:
        std::snprintf(what, sizeof what,
                      "block head at byte %u needs %u bytes, %u left in the message",
                      r.at, r.need, r.have);
        break;
    case Fault::SubBlockPastEnd:
        std::snprintf(what, sizeof what,
                      "sub-block %d at byte %u is %u bytes, %u left in the message", r.sub,
                      r.at, r.need, r.have);
        break;
    case Fault::SubBlockEmpty:
        std::snprintf(what, sizeof what, "sub-block %d at byte %u has length 0", r.sub, r.at);
        break;
    case Fault::SubBlockShort:
        std::snprintf(what, sizeof what,
                      "sub-block %d at byte %u is %u bytes, the decoder reads %u", r.sub,
                      r.at, r.have, r.need);
        break;
    }
    return std::string(where) + what;
}

}  // namespace x0ccheck
