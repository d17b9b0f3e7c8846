/*
 * Check bits of the GLONASS strings, for writing messages.
 *
 * Both GLONASS string types use an extended Hamming code. Rather than carry
 * the per-check-sum bit tables, the encoder derives membership the way the
 * code is built: in the classical numbering the check bits hold the powers
 * of two and the information bits, from the last transmitted one backward,
 * take the other numbers from 3 upward; check sum i covers every
 * information bit whose number has bit i - 1 set. The reader keeps the
 * tables written out, so each side checks the other.
 */
#include "x0c_writer.h"

namespace x0c {

namespace {

/* Classical Hamming number of information bit k (0 = the first one after
 * the check bits): the k-th number from 3 upward that is not a power of
 * two. */
int hammingNumber(int k) {
    int h = 2;
    while (k >= 0) {
        h++;
        if (h & (h - 1)) k--;
    }
    return h;
}

/* CT string bit b (85..1) of the 11 transmitted bytes. */
int ctGet(const uint8_t* s, int b) {
    return (s[10 - (b - 1) / 8] >> ((b - 1) % 8)) & 1;
}

void ctPut(uint8_t* s, int b, int v) {
    uint8_t m = (uint8_t)(1u << ((b - 1) % 8));
    if (v)
        s[10 - (b - 1) / 8] |= m;
    else
        s[10 - (b - 1) / 8] &= (uint8_t)~m;
}

/* VT position p (1..56): byte (p - 1) / 8, bit (p - 1) % 8. */
int vtGet(const uint8_t* s, int p) {
    return (s[(p - 1) / 8] >> ((p - 1) % 8)) & 1;
}

void vtPut(uint8_t* s, int p, int v) {
    uint8_t m = (uint8_t)(1u << ((p - 1) % 8));
    if (v)
        s[(p - 1) / 8] |= m;
    else
        s[(p - 1) / 8] &= (uint8_t)~m;
}

}  // namespace

/* Information bits 9..85, check sums c1..c7 in bits 1..7, and bit 8 making
 * the parity of bits 1..85 even. */
void ctWithCheckBits(const uint8_t info[10], uint8_t out[11]) {
    for (int i = 0; i < 10; i++) out[i] = info[i];
    out[10] = 0;
    int sums = 0, parity = 0;
    for (int b = 9; b <= 85; b++) {
        if (!ctGet(out, b)) continue;
        sums ^= hammingNumber(b - 9);
        parity ^= 1;
    }
    for (int i = 1; i <= 7; i++) {
        int c = (sums >> (i - 1)) & 1;
        ctPut(out, i, c);
        parity ^= c;
    }
    ctPut(out, 8, parity);
}

/* Information positions 8..50, check sums c1..c6 in positions 1..6 and
 * position 7 making the parity of positions 1..50 even. Positions 51..56
 * lie outside the code and are copied as they are. */
void vtWithCheckBits(const uint8_t in[7], uint8_t out[7]) {
    for (int i = 0; i < 7; i++) out[i] = in[i];
    int sums = 0, parity = 0;
    for (int p = 8; p <= 50; p++) {
        if (!vtGet(out, p)) continue;
        sums ^= hammingNumber(p - 8);
        parity ^= 1;
    }
    for (int i = 1; i <= 6; i++) {
        int c = (sums >> (i - 1)) & 1;
        vtPut(out, i, c);
        parity ^= c;
    }
    vtPut(out, 7, parity);
}

}  // namespace x0c
