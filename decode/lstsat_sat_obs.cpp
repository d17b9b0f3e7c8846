/*
 * Observations and additional information of one satellite block.
 *
 * Sub-blocks 0 to 3 carry the four signal places C1, C2, B1, B2. Places 0
 * and 2 carry full values; places 1 and 3 carry their pseudorange as a
 * 32-bit difference to place 0 / 2, which keeps the block short. Sub-block
 * 7, when present, supplies full pseudoranges for places 1 and 3.
 *
 * Byte numbers inside a sub-block count from its length byte (byte 0).
 */
#include "decode/lstsat.h"

#include "decode/lstsat_x0c.h"

namespace {

const double kC = 299792458.0; /* speed of light, m/s */

/* Light time in units of 2^-32 ms to metres. */
inline double rangeToMetres(double raw) { return raw * kC * sat_t::K2_32 / 1000.0; }
/* 2^-24 kHz to Hz. */
inline double dopToHertz(double raw) { return 1000.0 * raw * sat_t::K2_24; }
/* 2^-16 cycle to cycles. */
inline double fazeToCycles(double raw) { return raw * sat_t::K2_16; }
/* 16-bit raw angle, 2^-11 of a turn, to degrees. */
inline double angleToDegrees(uint16_t raw) { return raw * (1.0 / 2048.0) * 360.0; }

/* Full place (sub-blocks 0 and 2): 48-bit signed range at 1, Doppler at 7,
 * phase at 11, amplitude at 19. */
void fullPlace(const unsigned char* sb, tblObs_t* obs, int place) {
    obs->psvd[place] = rangeToMetres((double)x0cle::i48(sb + 1));
    obs->dop[place] = dopToHertz((double)x0cle::i32(sb + 7));
    obs->faze[place] = fazeToCycles((double)x0cle::i64(sb + 11));
    obs->ampl[place] = x0cle::u16(sb + 19);
    obs->actual[place] = 1;
}

/* Difference place (sub-blocks 1 and 3): 32-bit signed range difference at
 * 1, Doppler at 5, phase at 9, amplitude at 17. The difference is added to
 * whatever the base place holds. When the base sub-block is missing from
 * this block that is a stale value (the previous epoch's, or 0), and the
 * sum is meaningless; the place is still marked valid, as the receiver
 * marked the signal, and no rule is invented for a block it does not send. */
void diffPlace(const unsigned char* sb, tblObs_t* obs, int place, int base) {
    obs->psvd[place] = obs->psvd[base] + rangeToMetres((double)x0cle::i32(sb + 1));
    obs->dop[place] = dopToHertz((double)x0cle::i32(sb + 5));
    obs->faze[place] = fazeToCycles((double)x0cle::i64(sb + 9));
    obs->ampl[place] = x0cle::u16(sb + 17);
    obs->actual[place] = 1;
}

}  // namespace

void sat_t::tblObs_upx0c(const unsigned char* blk, unsigned int tm, tblObs_t* obs) {
    unsigned int off[x0cle::kSubBlocks];
    x0cle::subBlocks(blk, off);

    for (int i = 0; i < 4; i++) obs->actual[i] = 0;
    obs->tmZel = tm;

    /* Bit order matters: places 1 and 3 build on 0 and 2, and sub-block 7
     * overrides what 1 and 3 left. */
    if (off[0] != 0) fullPlace(blk + off[0], obs, 0);
    if (off[1] != 0) diffPlace(blk + off[1], obs, 1, 0);
    if (off[2] != 0) fullPlace(blk + off[2], obs, 2);
    if (off[3] != 0) diffPlace(blk + off[3], obs, 3, 2);
    if (off[7] != 0) {
        /* These two ranges are read as unsigned 48-bit values, unlike the
         * signed ranges of places 0 and 2: a pseudorange is never negative
         * and the receiver uses the full width here. */
        const unsigned char* sb = blk + off[7];
        if (obs->actual[1]) obs->psvd[1] = rangeToMetres((double)x0cle::unsignedLE(sb + 1, 6));
        if (obs->actual[3]) obs->psvd[3] = rangeToMetres((double)x0cle::unsignedLE(sb + 7, 6));
    }
}

/*
 * Where the receiver's own per-signal values sit depends on the system:
 * sub-block 0 carries the navigation string first (an 11-byte GLONASS CT
 * string, or a 30-byte GPS subframe with its parity word), so the
 * elevation group starts at byte 34 for GLONASS and 51 for GPS; sub-block
 * 2 carries a 7-byte VT string for GLONASS only, so its angle sits at 29
 * for GLONASS and 21 for GPS.
 */
void sat_t::tblAddInf_upx0c(const unsigned char* blk, tblHdr_t* hdr, tblAddInf_t* add) {
    unsigned int off[x0cle::kSubBlocks];
    x0cle::subBlocks(blk, off);

    add->actual = 1;
    for (int i = 0; i < 4; i++) add->present[i] = 0;

    const unsigned int d = hdr->sys == 0 ? 34 : hdr->sys == 1 ? 51 : 21;
    const unsigned int e = hdr->sys != 0 ? 21 : 29;

    if (off[0] != 0) {
        const unsigned char* sb = blk + off[0];
        add->present[0] = 1;
        hdr->um = x0cle::u16(sb + d) * 0.1;
        hdr->aux = x0cle::u16(sb + d + 2);
        add->angle[0] = angleToDegrees(x0cle::u16(sb + d + 4));
        add->aux8[0] = sb[d + 6];
    }
    if (off[1] != 0) {
        const unsigned char* sb = blk + off[1];
        add->present[1] = 1;
        add->angle[1] = angleToDegrees(x0cle::u16(sb + 19));
        add->aux8[1] = sb[21];
    }
    if (off[2] != 0) {
        const unsigned char* sb = blk + off[2];
        add->present[2] = 1;
        add->angle[2] = angleToDegrees(x0cle::u16(sb + e));
        add->aux8[2] = sb[e + 2];
    }
    if (off[3] != 0) {
        const unsigned char* sb = blk + off[3];
        add->present[3] = 1;
        add->angle[3] = angleToDegrees(x0cle::u16(sb + 19));
        add->aux8[3] = sb[21];
    }
    if (off[10] != 0) {
        const unsigned char* sb = blk + off[10];
        add->chan = sb[1];
        add->flagB5 = (sb[3] >> 5) & 1u;
        add->flagB7 = (sb[3] >> 7) & 1u;
    }
}
