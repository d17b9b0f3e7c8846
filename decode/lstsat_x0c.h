/*
 * Byte-level access to message 0x0C: little-endian field readers and the
 * walk over the sub-blocks of one satellite block.
 *
 * The receiver writes every multi-byte field least significant byte first;
 * the readers do not depend on the host's byte order or on the alignment
 * of the field inside the message.
 */
#ifndef ZELNAV_LSTSAT_X0C_H
#define ZELNAV_LSTSAT_X0C_H

#include <cstdint>

namespace x0cle {

/* Unsigned value of `n` bytes (n <= 8) starting at `p`. */
inline uint64_t unsignedLE(const unsigned char* p, int n) {
    uint64_t v = 0;
    for (int i = n - 1; i >= 0; i--) v = (v << 8) | p[i];
    return v;
}

inline uint16_t u16(const unsigned char* p) { return (uint16_t)unsignedLE(p, 2); }
inline uint32_t u32(const unsigned char* p) { return (uint32_t)unsignedLE(p, 4); }
inline int16_t i16(const unsigned char* p) { return (int16_t)u16(p); }
inline int32_t i32(const unsigned char* p) { return (int32_t)u32(p); }
inline int64_t i64(const unsigned char* p) { return (int64_t)unsignedLE(p, 8); }

/* 48-bit two's complement value, sign-extended to 64 bits. */
inline int64_t i48(const unsigned char* p) {
    uint64_t v = unsignedLE(p, 6);
    if (v & (UINT64_C(1) << 47)) v |= UINT64_C(0xFFFF) << 48;
    return (int64_t)v;
}

/* Number of sub-blocks a satellite block can announce (bits of its mask). */
const int kSubBlocks = 16;
/* The sub-blocks follow the 4-byte block head: number, letter, mask. */
const unsigned int kBlockHead = 4;

/* Mask of the present sub-blocks (block bytes 2-3). */
inline unsigned int blockMask(const unsigned char* blk) { return u16(blk + 2); }

/*
 * Locates the sub-blocks of a satellite block. The present sub-blocks
 * follow the head in increasing bit order, each opening with its own total
 * length byte. off[i] receives the offset of sub-block i from the block's
 * first byte, 0 when it is absent (no sub-block can start at 0). Returns the
 * length of the whole block. The length bytes are trusted: the message
 * carries no other framing to check them against.
 */
inline unsigned int subBlocks(const unsigned char* blk, unsigned int off[kSubBlocks]) {
    unsigned int mask = blockMask(blk);
    unsigned int at = kBlockHead;
    for (int i = 0; i < kSubBlocks; i++) {
        off[i] = 0;
        if (mask & (1u << i)) {
            off[i] = at;
            at += blk[at];
        }
    }
    return at;
}

}  // namespace x0cle

#endif
