/*
 * The error-detecting codes of the navigation strings.
 *
 * GLONASS protects both of its string types with an extended Hamming code:
 * seven (CT) or six (VT) check sums over fixed sets of information bits,
 * plus one overall parity bit. A single wrong information bit shows up as
 * two or more failed check sums together with a failed overall parity, and
 * the pattern of failed sums points at the bit, which is then inverted in
 * the caller's own message bytes. GPS and L3 strings arrive already checked
 * by the receiver; all that is left is to read its verdict.
 *
 * The sets below are the GLONASS interface document's tables written out
 * bit by bit (string bit numbers for CT, positions for VT).
 */
#include "decode/navinf_str.h"

namespace {

/* ---- CT strings: bits 85 (first transmitted) .. 1, 11 bytes ---------- */

constexpr unsigned char kCtSet1[41] = {
    9,  10, 12, 13, 15, 17, 19, 20, 22, 24, 26, 28, 30, 32,
    34, 35, 37, 39, 41, 43, 45, 47, 49, 51, 53, 55, 57, 59,
    61, 63, 65, 66, 68, 70, 72, 74, 76, 78, 80, 82, 84};
constexpr unsigned char kCtSet2[41] = {
    9,  11, 12, 14, 15, 18, 19, 21, 22, 25, 26, 29, 30, 33,
    34, 36, 37, 40, 41, 44, 45, 48, 49, 52, 53, 56, 57, 60,
    61, 64, 65, 67, 68, 71, 72, 75, 76, 79, 80, 83, 84};
constexpr unsigned char kCtSet3[40] = {
    10, 11, 12, 16, 17, 18, 19, 23, 24, 25, 26, 31, 32, 33,
    34, 38, 39, 40, 41, 46, 47, 48, 49, 54, 55, 56, 57, 62,
    63, 64, 65, 69, 70, 71, 72, 77, 78, 79, 80, 85};
constexpr unsigned char kCtSet4[39] = {
    13, 14, 15, 16, 17, 18, 19, 27, 28, 29, 30, 31, 32, 33, 34, 42, 43, 44,
    45, 46, 47, 48, 49, 58, 59, 60, 61, 62, 63, 64, 65, 73, 74, 75, 76, 77,
    78, 79, 80};
constexpr unsigned char kCtSet5[36] = {
    20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 50, 51, 52,
    53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63, 64, 65, 81, 82, 83, 84, 85};
constexpr unsigned char kCtSet6[31] = {
    35, 36, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 51, 52,
    53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63, 64, 65};
constexpr unsigned char kCtSet7[20] = {
    66, 67, 68, 69, 70, 71, 72, 73, 74, 75, 76, 77, 78, 79, 80, 81, 82, 83,
    84, 85};

struct BitSet {
    const unsigned char* pos;
    int count;
};

/* A set of string bits as a mask over the string's bytes loaded into two
 * 64-bit words (byte j at bits 8 j .. 8 j + 7 of word j / 8), so that a
 * check sum is the parity of a masked word pair. */
struct WordMask {
    unsigned long long w[2];
};

inline int parity64(unsigned long long x) {
#if defined(__GNUC__)
    return __builtin_parityll(x);
#else
    x ^= x >> 32;
    x ^= x >> 16;
    x ^= x >> 8;
    x ^= x >> 4;
    return (0x6996 >> (x & 15)) & 1;
#endif
}

/* The string's bytes, little-endian into the two words. */
inline WordMask loadWords(const unsigned char* bytes, int n) {
    WordMask m = {{0, 0}};
    for (int j = 0; j < n; j++)
        m.w[j / 8] |= (unsigned long long)bytes[j] << (8 * (j % 8));
    return m;
}

inline int maskedParity(const WordMask& s, const WordMask& m) {
    return parity64((s.w[0] & m.w[0]) ^ (s.w[1] & m.w[1]));
}

constexpr BitSet kCtSets[7] = {
    {kCtSet1, 41}, {kCtSet2, 41}, {kCtSet3, 40}, {kCtSet4, 39},
    {kCtSet5, 36}, {kCtSet6, 31}, {kCtSet7, 20}};

const int kCtLastBit = 85;
const int kCtBytes = 11;

/* Byte index * 8 + bit of CT string bit b: byte (88 - b) / 8, bit
 * (8 - (89 - b) % 8) % 8. */
constexpr int ctPlace(int b) { return (88 - b) / 8 * 8 + (8 - (89 - b) % 8) % 8; }

constexpr void setPlace(WordMask& m, int place) {
    m.w[place / 64] |= 1ull << (place % 64);
}

/* Check sum i covers check bit i and the bits of set i; the overall
 * parity covers bits 1..85. */
struct CtMasks {
    WordMask sum[7];
    WordMask all;
};

constexpr CtMasks makeCtMasks() {
    CtMasks m = {};
    for (int i = 0; i < 7; i++) {
        setPlace(m.sum[i], ctPlace(i + 1));
        for (int k = 0; k < kCtSets[i].count; k++)
            setPlace(m.sum[i], ctPlace(kCtSets[i].pos[k]));
    }
    for (int b = 1; b <= kCtLastBit; b++) setPlace(m.all, ctPlace(b));
    return m;
}

constexpr CtMasks kCtMasks = makeCtMasks();

/* CT string bit b: byte (88 - b) / 8, bit (8 - (89 - b) % 8) % 8. */
inline int ctBit(const unsigned char* str, int b) {
    return (str[(88 - b) / 8] >> ((8 - (89 - b) % 8) % 8)) & 1;
}

inline void ctFlip(unsigned char* str, int b) {
    str[(88 - b) / 8] ^= (unsigned char)(1u << ((8 - (89 - b) % 8) % 8));
}

/* ---- VT strings: positions 1..56, 7 bytes ---------------------------- */

constexpr unsigned char kVtSet1[24] = {8,  9,  11, 12, 14, 16, 18, 19,
                                       21, 23, 25, 27, 29, 31, 33, 34,
                                       36, 38, 40, 42, 44, 46, 48, 50};
constexpr unsigned char kVtSet2[23] = {8,  10, 11, 13, 14, 17, 18, 20,
                                       21, 24, 25, 28, 29, 32, 33, 35,
                                       36, 39, 40, 43, 44, 47, 48};
constexpr unsigned char kVtSet3[23] = {9,  10, 11, 15, 16, 17, 18, 22,
                                       23, 24, 25, 30, 31, 32, 33, 37,
                                       38, 39, 40, 45, 46, 47, 48};
constexpr unsigned char kVtSet4[23] = {
    12, 13, 14, 15, 16, 17, 18, 26, 27, 28, 29, 30, 31, 32, 33, 41, 42, 43,
    44, 45, 46, 47, 48};
constexpr unsigned char kVtSet5[17] = {
    19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 49, 50};
constexpr unsigned char kVtSet6[17] = {
    34, 35, 36, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50};

constexpr BitSet kVtSets[6] = {{kVtSet1, 24}, {kVtSet2, 23}, {kVtSet3, 23},
                               {kVtSet4, 23}, {kVtSet5, 17}, {kVtSet6, 17}};

const int kVtLastBit = 50;
const int kVtBytes = 7;

/* VT position p is bit p - 1 of the string's bytes read little-endian. */
struct VtMasks {
    WordMask sum[6];
    WordMask all;
};

constexpr VtMasks makeVtMasks() {
    VtMasks m = {};
    for (int i = 0; i < 6; i++) {
        setPlace(m.sum[i], i);
        for (int k = 0; k < kVtSets[i].count; k++)
            setPlace(m.sum[i], kVtSets[i].pos[k] - 1);
    }
    for (int p = 1; p <= kVtLastBit; p++) setPlace(m.all, p - 1);
    return m;
}

constexpr VtMasks kVtMasks = makeVtMasks();

/* Position p of the byte-reversed copy: byte (56 - p) / 8, bit
 * (8 - (57 - p) % 8) % 8 -- the same bit as position p of the string,
 * which sits in byte (p - 1) / 8 at bit (p - 1) % 8. */
inline int vtRevBit(const unsigned char* rev, int p) {
    return (rev[(56 - p) / 8] >> ((8 - (57 - p) % 8) % 8)) & 1;
}

inline void vtFlip(unsigned char* str, int p) {
    str[(p - 1) / 8] ^= (unsigned char)(1u << ((p - 1) % 8));
}

/* ---- the decision shared by both GLONASS codes ----------------------- */

enum Verdict {
    CODE_GOOD,      /* no error */
    CODE_CHECKBIT,  /* one check bit wrong, information intact */
    CODE_FIXABLE,   /* one information bit wrong, at *errPos */
    CODE_BADPOS,    /* the syndrome points beyond the string */
    CODE_BAD        /* more errors than the code can mend */
};

/* Judges a syndrome S of `nsyn` bits (sum 1 in the lowest bit) and the
 * overall parity. A single wrong information bit makes S its classical
 * Hamming number, in which the check bits hold the powers of two; with h
 * the highest failed sum, h check numbers lie below S. The strings number
 * their information bits consecutively from offset + 1 instead (bit 9 for
 * CT, position 8 for VT), so the bit at fault is S + offset - h. The
 * position is an 8-bit value, as the receiver computes it. */
Verdict judge(unsigned char syndrome, int nsyn, unsigned char parity,
              int offset, int lastBit, int* errPos) {
    int k = 0, h = 0;
    for (int i = 1; i <= nsyn; i++) {
        if (syndrome & (1u << (i - 1))) {
            k++;
            h = i;
        }
    }
    unsigned char e = (unsigned char)(syndrome + offset - h);
    *errPos = e;
    if (e > lastBit) return CODE_BADPOS;
    if (k == 0 && parity == 0) return CODE_GOOD;
    if (k == 1 && parity == 1) return CODE_CHECKBIT;
    if (k >= 2 && parity == 1) return CODE_FIXABLE;
    /* Failed sums with even parity mean two errors. No failed sum with
     * odd parity is an error in the overall parity bit alone: the
     * information is intact, yet the string is deliberately dropped. */
    return CODE_BAD;
}

/* The verdict of one pass as the caller sees it. A fixable error is
 * corrected through `flip` only when `correct` is set, and only the second
 * pass, with correction barred, decides; a position beyond the string
 * rejects with HEM_BADPOS alone, nothing having been examined further. */
template <typename Flip, typename Recheck>
bool decide(Verdict v, int errPos, unsigned char* flags, bool correct,
            Flip flip, Recheck recheck) {
    switch (v) {
    case CODE_GOOD:
        return true;
    case CODE_CHECKBIT:
        *flags |= HEM_CHECKBIT;
        return true;
    case CODE_BADPOS:
        *flags |= HEM_BADPOS;
        return false;
    case CODE_FIXABLE:
        if (correct) {
            flip(errPos);
            *flags |= HEM_CORRECTED;
            return recheck();
        }
        break;
    case CODE_BAD:
        break;
    }
    *flags |= HEM_REJECTED;
    return false;
}

}  // namespace

unsigned char NavInfStr_t::calcHemGloCt(const unsigned char* str,
                                        const unsigned char* positions,
                                        int count, unsigned char initial) {
    unsigned char c = initial & 1;
    for (int i = 0; i < count; i++) c ^= (unsigned char)ctBit(str, positions[i]);
    return c;
}

bool NavInfStr_t::ishemOkGloCt(unsigned char* str, unsigned char* flags,
                               bool correct) {
    /* A string numbered 0 is no string at all; it is dropped before the
     * code is looked at, and no flag is raised. */
    if ((str[0] & 15) == 0) return false;

    /* Each check sum is the parity of the string under its mask: the same
     * sums calcHemGloCt forms bit by bit, a word at a time. */
    const WordMask w = loadWords(str, kCtBytes);
    unsigned char syndrome = 0;
    for (int i = 0; i < 7; i++)
        syndrome |= (unsigned char)(maskedParity(w, kCtMasks.sum[i]) << i);
    const unsigned char parity = (unsigned char)maskedParity(w, kCtMasks.all);

    int e = 0;
    Verdict v = judge(syndrome, 7, parity, 8, kCtLastBit, &e);
    return decide(
        v, e, flags, correct, [str](int b) { ctFlip(str, b); },
        [str, flags] { return ishemOkGloCt(str, flags, false); });
}

unsigned char NavInfStr_t::calcHemGloVt(const unsigned char* rev,
                                        const unsigned char* positions,
                                        int count, unsigned char initial) {
    unsigned char c = initial & 1;
    for (int i = 0; i < count; i++)
        c ^= (unsigned char)vtRevBit(rev, positions[i]);
    return c;
}

bool NavInfStr_t::ishemOkGloVt(unsigned char* str, unsigned char* flags,
                               bool correct) {
    /* calcHemGloVt works on a byte-reversed copy; the masks number the
     * positions of the string itself, which are the same bits. */
    const WordMask w = loadWords(str, kVtBytes);
    unsigned char syndrome = 0;
    for (int i = 0; i < 6; i++)
        syndrome |= (unsigned char)(maskedParity(w, kVtMasks.sum[i]) << i);
    const unsigned char parity = (unsigned char)maskedParity(w, kVtMasks.all);

    int e = 0;
    Verdict v = judge(syndrome, 6, parity, 7, kVtLastBit, &e);
    /* The correction goes into the caller's bytes, not into the copy. */
    return decide(
        v, e, flags, correct, [str](int p) { vtFlip(str, p); },
        [str, flags] { return ishemOkGloVt(str, flags, false); });
}

/* The receiver tests the parity of every GPS word itself and reports the
 * outcome in the 16-bit word after the subframe (block bytes 61..62):
 * zero means every word passed. */
bool NavInfStr_t::ishemOkGpsCt(const unsigned char* blk) {
    return (blk[61] | (blk[62] << 8)) == 0;
}

/* L3 strings carry their own receiver verdict in the status byte after the
 * 37 string bytes: bit 7 set means the check failed. */
bool NavInfStr_t::ishemOkGloL3(const unsigned char* str) {
    return (str[37] & 0x80) == 0;
}
