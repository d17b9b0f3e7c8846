/*
 * Message 0x0C writer: one satellite block.
 *
 * A block is four bytes of identity and mask followed by the sub-blocks
 * whose mask bits are set, in bit order. Each signal place has a sub-block
 * of its own; the standard-accuracy navigation string travels inside the
 * C1 sub-block and the high-accuracy (VT) string inside the B1 sub-block,
 * which is why those two are laid out differently for GLONASS and GPS.
 */
#include <cstring>
#include <stdexcept>

#include "x0c_bytes.h"
#include "x0c_writer.h"

namespace x0c {

namespace {

/* Mask bits (= sub-block numbers) this writer produces. */
enum {
    SB_C1 = 0,
    SB_C2 = 1,
    SB_B1 = 2,
    SB_B2 = 3,
    SB_L3 = 6,
    SB_PSVD13 = 7,
    SB_CHAN = 10
};

/* Where the parts of a signal sub-block sit; -1 = not in this layout.
 * `full` places carry a 48-bit pseudorange (bytes 1-20 of observations),
 * the others a 32-bit difference (bytes 1-18). */
struct PlaceLayout {
    int len;
    bool full;
    int nav;    /* first byte of the navigation string */
    int elev;   /* elevation, then aux right after it */
    int angle;
    int aux8;
};

const PlaceLayout kGloC1 = {41, true, 21, 34, 38, 40};
/* Byte 57 is the parity indicator, written in place of aux8. */
const PlaceLayout kGpsC1 = {59, true, 21, 51, 55, -1};
const PlaceLayout kGloB1 = {32, true, 21, -1, 29, 31};
const PlaceLayout kGpsB1 = {24, true, -1, -1, 21, 23};
const PlaceLayout kDiff = {22, false, -1, -1, 19, 21};

const int kGpsParityByte = 57;

/* Sub-blocks without a signal place. */
const int kL3Len = 73;
const int kL3String = 35;
const int kL3Status = 72;
const int kPsvd13Len = 13;
const int kChanLen = 4;

const int kMaxSubLen = 80;

/* Observation fields of one place. A place that is not present is left as
 * zeros: its sub-block exists only for what else it carries. */
void putObs(uint8_t* sb, const PlaceLayout& lay, const Signal& s) {
    if (!s.present) return;
    if (lay.full) {
        requireSigned(s.psvd, 48, "pseudorange");
        putLE(sb + 1, (uint64_t)s.psvd, 6);
        putLE(sb + 7, (uint32_t)s.dop, 4);
        putLE(sb + 11, (uint64_t)s.faze, 8);
        putLE(sb + 19, s.ampl, 2);
    } else {
        requireSigned(s.psvd, 32, "pseudorange difference");
        putLE(sb + 1, (uint64_t)s.psvd, 4);
        putLE(sb + 5, (uint32_t)s.dop, 4);
        putLE(sb + 9, (uint64_t)s.faze, 8);
        putLE(sb + 17, s.ampl, 2);
    }
}

/* Fills a signal sub-block except for its navigation string. */
void putPlace(uint8_t* sb, const PlaceLayout& lay, const SatBlock& sat,
              int place) {
    const Signal& s = sat.sig[place];
    sb[0] = (uint8_t)lay.len;
    putObs(sb, lay, s);
    if (lay.elev >= 0) {
        putLE(sb + lay.elev, sat.elev10, 2);
        putLE(sb + lay.elev + 2, sat.aux, 2);
    }
    putLE(sb + lay.angle, s.angle, 2);
    if (lay.aux8 >= 0) sb[lay.aux8] = s.aux8;
}

/* Sub-block 0: C1 with the CT string (GLONASS) or the subframe (GPS). */
int writeC1(uint8_t* sb, const SatBlock& sat) {
    const PlaceLayout& lay = sat.gps ? kGpsC1 : kGloC1;
    putPlace(sb, lay, sat, 0);
    if (sat.gps) {
        if (sat.hasGps) std::memcpy(sb + lay.nav, sat.gpsSf, 30);
        /* The reader takes a zero indicator for a good subframe, and an
         * all-zero subframe has the valid ID 0: mark a missing one bad. */
        uint16_t parity = sat.gpsParity;
        if (!sat.hasGps && parity == 0) parity = 0xFFFF;
        putLE(sb + kGpsParityByte, parity, 2);
    } else if (sat.hasCt) {
        ctWithCheckBits(sat.ct, sb + lay.nav);
    }
    return lay.len;
}

/* Sub-block 2: B1, with the VT string for GLONASS. */
int writeB1(uint8_t* sb, const SatBlock& sat) {
    const PlaceLayout& lay = sat.gps ? kGpsB1 : kGloB1;
    putPlace(sb, lay, sat, 2);
    if (!sat.gps && sat.hasVt) vtWithCheckBits(sat.vt, sb + lay.nav);
    return lay.len;
}

int writeL3(uint8_t* sb, const SatBlock& sat) {
    sb[0] = kL3Len;
    std::memcpy(sb + kL3String, sat.l3, 37);
    sb[kL3Status] = sat.l3Bad ? 0x80 : 0;
    return kL3Len;
}

/* Sub-block 7: the pseudoranges of places 1 and 3 in full. */
int writePsvd13(uint8_t* sb, const SatBlock& sat) {
    requireUnsigned(sat.sb7[0], 48, "sub-block 7 pseudorange");
    requireUnsigned(sat.sb7[1], 48, "sub-block 7 pseudorange");
    sb[0] = kPsvd13Len;
    putLE(sb + 1, sat.sb7[0], 6);
    putLE(sb + 7, sat.sb7[1], 6);
    return kPsvd13Len;
}

/* Sub-block 10: the receiver channel, which also tells apart satellites
 * that share number and letter byte. */
int writeChan(uint8_t* sb, const SatBlock& sat) {
    sb[0] = kChanLen;
    sb[1] = sat.chan;
    sb[3] = sat.sb10Flags;
    return kChanLen;
}

}  // namespace

size_t appendBlock(const SatBlock& sat, std::vector<uint8_t>& out) {
    if (sat.num > 127) throw std::out_of_range("satellite number above 127");
    if (sat.gps && (sat.hasCt || sat.hasVt))
        throw std::invalid_argument("GLONASS string in a GPS block");
    if (!sat.gps && sat.hasGps)
        throw std::invalid_argument("GPS subframe in a GLONASS block");

    bool want[16] = {};
    want[SB_C1] = sat.sig[0].present || sat.hasCt || sat.hasGps;
    want[SB_C2] = sat.sig[1].present;
    want[SB_B1] = sat.sig[2].present || sat.hasVt;
    want[SB_B2] = sat.sig[3].present;
    want[SB_L3] = sat.hasL3;
    want[SB_PSVD13] = sat.hasSb7;
    want[SB_CHAN] = sat.hasSb10;

    /* Built apart and appended at the end, so that a value that does not
     * fit leaves `out` as it was. */
    std::vector<uint8_t> blk(4, 0);
    uint16_t mask = 0;
    for (int bit = 0; bit < 16; bit++) {
        if (!want[bit]) continue;
        uint8_t sb[kMaxSubLen] = {};
        int len = 0;
        switch (bit) {
        case SB_C1: len = writeC1(sb, sat); break;
        case SB_C2: putPlace(sb, kDiff, sat, 1); len = kDiff.len; break;
        case SB_B1: len = writeB1(sb, sat); break;
        case SB_B2: putPlace(sb, kDiff, sat, 3); len = kDiff.len; break;
        case SB_L3: len = writeL3(sb, sat); break;
        case SB_PSVD13: len = writePsvd13(sb, sat); break;
        case SB_CHAN: len = writeChan(sb, sat); break;
        }
        mask = (uint16_t)(mask | (1u << bit));
        blk.insert(blk.end(), sb, sb + len);
    }
    blk[0] = (uint8_t)(sat.num | (sat.gps ? 0x80 : 0));
    blk[1] = sat.litByte;
    putLE(blk.data() + 2, mask, 2);
    out.insert(out.end(), blk.begin(), blk.end());
    return blk.size();
}

}  // namespace x0c
