/*
 * Little-endian byte placement and range checks shared by the parts of the
 * message writer. Internal to the writer.
 */
#ifndef ZELNAV_X0C_BYTES_H
#define ZELNAV_X0C_BYTES_H

#include <cstdint>
#include <stdexcept>
#include <string>

namespace x0c {

/* Stores the low `n` bytes of `v` at `p`, least significant first. */
inline void putLE(uint8_t* p, uint64_t v, int n) {
    for (int i = 0; i < n; i++) p[i] = (uint8_t)(v >> (8 * i));
}

/* Throws unless `v` fits a two's complement field of `bits` bits. */
inline void requireSigned(int64_t v, int bits, const char* what) {
    int64_t lim = INT64_C(1) << (bits - 1);
    if (v < -lim || v >= lim)
        throw std::out_of_range(std::string(what) + " does not fit " +
                                std::to_string(bits) + " signed bits");
}

/* Throws unless `v` fits an unsigned field of `bits` bits. */
inline void requireUnsigned(uint64_t v, int bits, const char* what) {
    if (bits < 64 && (v >> bits) != 0)
        throw std::out_of_range(std::string(what) + " does not fit " +
                                std::to_string(bits) + " unsigned bits");
}

}  // namespace x0c

#endif
