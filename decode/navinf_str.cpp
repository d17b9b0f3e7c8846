/*
 * One navigation string: where each kind sits in a satellite block of
 * message 0x0C, how it is taken in, and how its bit fields are read.
 *
 * The satellite block begins with the satellite number, the letter byte and
 * a 16-bit little-endian mask of the sections present. The sections follow
 * from byte 4 in mask-bit order, each opening with its own length byte.
 * Section 0 (standard signal) carries the CT string or the GPS subframe,
 * section 2 the VT string and section 6 the L3 string.
 */
#include "decode/navinf_str.h"

#include <cstring>

#include "interface/zel_assert.h"

namespace {

const int kCtOffset = 25;      /* CT string / GPS subframe, from the block */
const int kCtKept = 10;        /* information bits only */
const int kGpsBytes = 30;
const int kGpsIdByte = 49;     /* last byte of the handover word */
const int kGpsCheckBytes = 24; /* what check() copies of a subframe */
const int kVtInSection = 21;
const int kVtBytes = 7;
const int kL3InSection = 35;
const int kL3Bytes = 37;
const int kL3WithStatus = 38;  /* the receiver's status byte follows */
const int kL3TypeByte = 34;

/* Block offset of the first section: the fixed part is 4 bytes long. */
const int kFirstSection = 4;

inline unsigned int blockMask(const unsigned char* blk) {
    return (unsigned int)blk[2] | ((unsigned int)blk[3] << 8);
}

/* Offset of the section that follows the standard one and those flagged by
 * mask bits 1..`last`, each adding its own length byte. */
int sectionAfter(const unsigned char* blk, unsigned int mask, int last) {
    int off = kFirstSection;
    if (mask & 1u) off += blk[off];
    for (int bit = 1; bit <= last; bit++)
        if (mask & (1u << bit)) off += blk[off];
    return off;
}

/* How a string kind numbers its bits. Bit number p is turned into q =
 * p + shift; q % 8 is the bit within its byte (0 = least significant) and
 * q / 8 the byte, counted upward from byte 0 or, for the kinds stored
 * first-transmitted byte first, downward from byte `top`. Bits with q
 * outside [qLo, qHi] lie outside what the string keeps and read as 0;
 * both bounds fall on byte boundaries, so a byte is wholly in or out. */
struct BitLayout {
    int shift;
    int qLo, qHi;
    int top; /* -1: bytes counted upward */
};

const int kNoEnd = 0x3fffffff;

/* Generic and VT: position p in byte (p - 1) / 8 at bit (p - 1) % 8. */
const BitLayout kLayoutGeneric = {-1, 0, kNoEnd, -1};

/* CT bit b in byte 10 - (b - 1) / 8 at bit (b - 1) % 8: bits 9..88 lie in
 * the ten kept bytes (86..88 are the always-zero top bits of byte 0); the
 * check bits 1..8 are not kept. */
const BitLayout kLayoutCt = {-1, 8, 87, 10};

/* L3 bit b at index 300 - b counted from bit 7 of byte 0 downward, that is
 * in byte 37 - (b + 3) / 8 at bit (b + 3) % 8; reads stop at the end of
 * the status byte. */
const BitLayout kLayoutL3 = {3, 0, kL3WithStatus * 8 - 1, kL3WithStatus - 1};

inline unsigned int layoutByte(const unsigned char* data, const BitLayout& l,
                               int q) {
    return data[l.top < 0 ? q / 8 : l.top - q / 8];
}

/* Up to 64 bits from bit number `pos` upward, the first being the least
 * significant, taken a byte at a time. */
unsigned long long readBits(const unsigned char* data, int pos, int n,
                            const BitLayout& l) {
    unsigned long long v = 0;
    long long q = (long long)pos + l.shift;
    int i = 0;
    while (i < n) {
        if (q < l.qLo) { /* below the kept bytes: zeros */
            long long skip = l.qLo - q;
            if (skip >= n - i) break;
            i += (int)skip;
            q = l.qLo;
            continue;
        }
        if (q > l.qHi) break; /* beyond them: zeros to the end */
        int at = (int)(q % 8);
        int take = 8 - at;
        if (take > n - i) take = n - i;
        unsigned int bits = (layoutByte(data, l, (int)q) >> at) &
                            ((1u << take) - 1u);
        v |= (unsigned long long)bits << i;
        i += take;
        q += take;
    }
    return v;
}

/* The one field reader: `len` bits from bit number `pos` upward, the first
 * being the least significant. With `sign` the last bit is a sign-magnitude
 * sign. Magnitudes beyond 64 bits do not occur in any message; their upper
 * bits are not read. */
double readField(const unsigned char* data, int pos, int len, bool sign,
                 double scale, const BitLayout& l) {
    if (len < 1) return 0.0;
    int magBits = sign ? len - 1 : len;
    unsigned long long mag = readBits(data, pos, magBits < 64 ? magBits : 64, l);
    double v = (double)mag * scale;
    /* Negation, not multiplication by -1 of an integer: a zero magnitude
     * with the sign set stays -0.0. */
    if (sign && readBits(data, pos + len - 1, 1, l)) v = -v;
    return v;
}

}  // namespace

NavInfStr_t::NavInfStr_t() : data(), valid(0), num(0), lData(0), tmResived(0) {}

NavInfStr_t::~NavInfStr_t() {}

/* An empty source hands over only its emptiness: the target's bytes, number
 * and time stay as they were, hidden behind valid = 0. */
NavInfStr_t& NavInfStr_t::operator=(const NavInfStr_t& src) {
    if (this == &src) return *this;
    valid = src.valid;
    if (src.valid) {
        num = src.num;
        lData = src.lData;
        std::memcpy(data, src.data, lData);
        tmResived = src.tmResived;
    }
    return *this;
}

bool NavInfStr_t::createFromx0c(int kind, unsigned char* blk,
                                unsigned int tm) {
    unsigned int mask = blockMask(blk);
    unsigned int n = 0;
    const unsigned char* src = 0;
    int keep = 0; /* meaningful bytes */
    int copy = 0; /* bytes taken, when more than those */

    switch (kind) {
    case NAVSTR_GLO_CT: {
        if (!(mask & 1u)) return false;
        unsigned char* str = blk + kCtOffset;
        unsigned char flags = 0; /* wanted by no caller here */
        if (!ishemOkGloCt(str, &flags, true)) return false;
        /* The check's last pass has already refused number 0, after any
         * correction; the block's own rule is kept all the same. */
        n = str[0] & 15u;
        if (n == 0) return false;
        src = str;
        keep = kCtKept;
        break;
    }
    case NAVSTR_GPS:
        if (!(mask & 1u)) return false;
        if (!ishemOkGpsCt(blk)) return false;
        /* Subframe ID, bits 20..22 of the handover word. ID 0 names no
         * subframe but passes; only 6 and 7 are turned away. */
        n = (blk[kGpsIdByte] >> 2) & 7u;
        if (n > 5) return false;
        src = blk + kCtOffset;
        keep = kGpsBytes;
        break;
    case NAVSTR_GLO_VT: {
        if (!(mask & (1u << 2))) return false;
        unsigned char* str = blk + sectionAfter(blk, mask, 1) + kVtInSection;
        unsigned char flags = 0;
        if (!ishemOkGloVt(str, &flags, true)) return false;
        n = ((str[6] & 3u) << 2) | (str[5] >> 6); /* positions 50..47 */
        if (n < 1 || n > 10) return false;
        src = str;
        keep = kVtBytes;
        break;
    }
    case NAVSTR_GLO_L3: {
        if (!(mask & (1u << 6))) return false;
        /* Sections 1 to 4 are counted in front of it; section 5
         * deliberately is not. */
        const unsigned char* str =
            blk + sectionAfter(blk, mask, 4) + kL3InSection;
        if (!ishemOkGloL3(str)) return false;
        n = str[kL3TypeByte] >> 5;
        if (n < 1 || n > 5) return false;
        src = str;
        /* The status byte comes along, so that a field reader running off
         * the string's end still reads what the receiver sent. */
        copy = kL3WithStatus;
        keep = kL3Bytes;
        break;
    }
    default:
        return false;
    }

    std::memcpy(data, src, copy > keep ? copy : keep);
    num = n;
    lData = (unsigned int)keep;
    tmResived = tm;
    valid = 1;
    return true;
}

/* Loads bytes that were checked elsewhere (stored tables being re-read).
 * A GPS subframe is deliberately taken only up to its 24th byte, its number
 * left as it was; kinds without a loader are accepted and change nothing. */
bool NavInfStr_t::check(int kind, const unsigned char* bytes) {
    if (kind == NAVSTR_GLO_CT) {
        std::memcpy(data, bytes, kCtKept);
        num = bytes[0] & 15u;
        lData = kCtKept;
    } else if (kind == NAVSTR_GPS) {
        std::memcpy(data, bytes, kGpsCheckBytes);
        lData = kGpsCheckBytes;
    } else {
        return true;
    }
    valid = 1;
    tmResived = 0;
    return true;
}

unsigned int NavInfStr_t::getNum() const {
    ZEL_ASSERT(valid, "false", "navinf",
               "unsigned int NavInfStr_t::getNum() const");
    return num;
}

unsigned int NavInfStr_t::getTmResived() const {
    ZEL_ASSERT(valid, "false", "navinf",
               "unsigned int NavInfStr_t::getTmResived() const");
    return tmResived;
}

unsigned char* NavInfStr_t::getData() const {
    ZEL_ASSERT(valid, "false", "navinf",
               "unsigned char* NavInfStr_t::getData() const");
    /* The bytes are the string's, not the holder's: decoders read them
     * through a const string. */
    return const_cast<unsigned char*>(data);
}

unsigned int NavInfStr_t::getLData() const {
    ZEL_ASSERT(valid, "false", "navinf",
               "unsigned int NavInfStr_t::getLData() const");
    return lData;
}

/* SV/page ID of a GPS subframe 4 or 5 page: the low six bits of the first
 * byte of word 3, stored byte 23. */
unsigned char NavInfStr_t::getSvid() const {
    ZEL_ASSERT(valid, "false", "navinf",
               "unsigned char NavInfStr_t::getSvid() const");
    return data[23] & 63;
}

double NavInfStr_t::GetValue(const unsigned char* data, int pos, int len,
                             bool sign, double scale) {
    return readField(data, pos, len, sign, scale, kLayoutGeneric);
}

double NavInfStr_t::GetValueCT(const unsigned char* data, int pos, int len,
                               bool sign, double scale) {
    return readField(data, pos, len, sign, scale, kLayoutCt);
}

double NavInfStr_t::GetValueVT(const unsigned char* data, int pos, int len,
                               bool sign, double scale) {
    return readField(data, pos, len, sign, scale, kLayoutGeneric);
}

double NavInfStr_t::GetValueL3(const unsigned char* data, int pos, int len,
                               bool sign, double scale) {
    return readField(data, pos, len, sign, scale, kLayoutL3);
}

int NavInfStr_t::Round(double x) {
    int t = (int)x;
    if (x > 0) {
        if (x - t >= 0.5) t++;
    } else if (t - x >= 0.5) {
        t--;
    }
    return t;
}
