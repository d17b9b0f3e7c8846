/*
 * Bit writer of the message writer: the inverse of the library's field
 * readers, for building navigation strings from field values.
 *
 * Two numberings, the same as the readers':
 *  - putBits: bit 1 is the least significant bit of byte 0, counting up
 *    through each byte and on into the next (GPS stored subframes, VT and
 *    generic strings);
 *  - putBitsCT: GLONASS CT string bit numbers (9..85) in the 10 kept bytes,
 *    where string bit b lies in byte 9 - (b - 9) / 8 at bit (b - 9) % 8.
 * In both, `pos` is the position of the field's least significant bit and
 * the field's bits occupy pos .. pos + len - 1.
 */
#ifndef ZELNAV_X0C_BITS_H
#define ZELNAV_X0C_BITS_H

#include <cmath>
#include <cstdint>

namespace x0c {

inline void putBits(uint8_t* data, int pos, int len, uint64_t raw) {
    for (int i = 0; i < len; i++) {
        int p = pos - 1 + i;
        uint8_t bit = (uint8_t)(1u << (p % 8));
        if ((raw >> i) & 1u)
            data[p / 8] |= bit;
        else
            data[p / 8] &= (uint8_t)~bit;
    }
}

inline void putBitsCT(uint8_t* data10, int pos, int len, uint64_t raw) {
    for (int i = 0; i < len; i++) {
        int b = pos + i;
        uint8_t bit = (uint8_t)(1u << ((b - 9) % 8));
        int byte = 9 - (b - 9) / 8;
        if ((raw >> i) & 1u)
            data10[byte] |= bit;
        else
            data10[byte] &= (uint8_t)~bit;
    }
}

/* Raw field of `len` bits holding value / scale rounded to the nearest
 * count: unsigned, two's complement, or sign-magnitude (top bit = sign). */
inline uint64_t rawUnsigned(double value, double scale, int len) {
    uint64_t v = (uint64_t)std::llround(value / scale);
    return len >= 64 ? v : v & ((UINT64_C(1) << len) - 1);
}

inline uint64_t rawTwos(double value, double scale, int len) {
    int64_t v = std::llround(value / scale);
    return (uint64_t)v & ((UINT64_C(1) << len) - 1);
}

inline uint64_t rawSignMag(double value, double scale, int len) {
    int64_t v = std::llround(value / scale);
    uint64_t mag = (uint64_t)(v < 0 ? -v : v) & ((UINT64_C(1) << (len - 1)) - 1);
    return v < 0 ? mag | (UINT64_C(1) << (len - 1)) : mag;
}

}  // namespace x0c

#endif
