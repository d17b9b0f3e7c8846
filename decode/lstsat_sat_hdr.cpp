/*
 * Navigation-string flags of a satellite's header table.
 *
 * For each string the block carries (GLONASS CT, VT and L3, or the GPS
 * subframe) the header tells the host whether it could be taken and what
 * its content says about the satellite:
 *   16  the string is missing or failed its code check;
 *   64  the CT string is not the one due at this time;
 *   32, 36 content marks: health and validity bits of the string;
 *   0..7 for CT string 2 (and 0..3 for VT/L3 string 2) the health value
 *        itself, ORed in below the marks.
 */
#include "decode/lstsat.h"

#include "decode/lstsat_x0c.h"
#include "decode/navinf_str.h"

namespace {

const unsigned char kNotTaken = 0x10;
const unsigned char kOutOfSequence = 0x40;
const unsigned char kMarkUnhealthy = 0x20;
const unsigned char kMarkBadData = 0x24;

/* The L3 string sits in sub-block 6. */
const unsigned int kMaskL3 = 1u << 6;

/* One-bit or two-bit unsigned field of a VT / L3 string as an integer. */
int fieldVT(const unsigned char* data, int pos, int len) {
    return NavInfStr_t::Round(NavInfStr_t::GetValueVT(data, pos, len, false, 1.0));
}
int fieldL3(const unsigned char* data, int pos, int len) {
    return NavInfStr_t::Round(NavInfStr_t::GetValueL3(data, pos, len, false, 1.0));
}

/*
 * A CT string lasts 2 s and a frame of 15 strings 30 s, aligned on the
 * receiver's half-minutes; the string delivered with the epoch tm is the
 * one that ended a second or two before it:
 *     expected = ((tm - 1) mod 30) / 2, with 0 standing for 15.
 */
unsigned int expectedCtString(unsigned int tm) {
    unsigned int n = ((tm - 1u) % 30u) / 2u;
    return n == 0 ? 15u : n;
}

}  // namespace

void sat_t::tblHdr_upx0c(unsigned char* blk, unsigned int tm, tblHdr_t* hdr) {
    if (sys == 1) {
        NavInfStr_t sf;
        if (!sf.createFromx0c(NAVSTR_GPS, blk, tm)) {
            hdr->badNavInfCt = kNotTaken;
            return;
        }
        hdr->badNavInfCt = 0;
        /* Byte 21 of the stored subframe 1 holds the top of the 6-bit SV
         * health field; its top bit set means the navigation data are bad. */
        if (sf.getNum() == 1 && (sf.getData()[21] & 0x80u) != 0)
            hdr->badNavInfCt |= kMarkUnhealthy;
        return;
    }
    if (sys != 0) return;

    /* GLONASS standard-accuracy string. */
    NavInfStr_t ct;
    if (!ct.createFromx0c(NAVSTR_GLO_CT, blk, tm)) {
        hdr->badNavInfCt = kNotTaken;
    } else {
        hdr->badNavInfCt = 0;
        const unsigned int num = ct.getNum();
        if (num != expectedCtString(tm)) {
            /* The receiver lost the string timing: nothing else of this
             * block is judged, and the VT and L3 flags stay as the previous
             * message left them. */
            hdr->badNavInfCt = kOutOfSequence;
            return;
        }
        const unsigned char* d = ct.getData();
        if (num == 2) {
            /* Bn, string bits 80..78: the health word of the satellite. Its
             * top bit is the unhealthy flag, so a value above 3 is marked. */
            hdr->badNavInfCt |= (unsigned char)(d[1] >> 5);
            if (hdr->badNavInfCt > 3) hdr->badNavInfCt |= kMarkUnhealthy;
        } else if (num == 3) {
            /* ln, string bit 65: the satellite's own data are unusable. */
            if (d[2] & 1u) hdr->badNavInfCt |= kMarkBadData;
        } else if (num >= 5 && (num & 1u) != 0) {
            /* ln of strings 5, 7, ..., 15, string bit 9. */
            if (d[9] & 1u) hdr->badNavInfCt |= kMarkBadData;
        }
    }

    /* GLONASS high-accuracy string. */
    NavInfStr_t vt;
    if (!vt.createFromx0c(NAVSTR_GLO_VT, blk, tm)) {
        hdr->badNavInfVt = kNotTaken;
    } else {
        hdr->badNavInfVt = 0;
        const unsigned char* d = vt.getData();
        const unsigned int num = vt.getNum();
        if (num == 2) {
            /* The two-bit field at 44 goes in as a value, as the CT health
             * word does; the bit at 46 is the string's bad-data mark. */
            hdr->badNavInfVt |= (unsigned char)fieldVT(d, 44, 2);
            if (fieldVT(d, 46, 1) > 0) hdr->badNavInfVt |= kMarkBadData;
        } else if (num == 6) {
            if (fieldVT(d, 46, 1) > 0) hdr->badNavInfVt |= kMarkBadData;
        }
    }

    /* GLONASS L3 string, judged only when its sub-block is present. */
    hdr->badNavInfL3 = 0;
    if (x0cle::blockMask(blk) & kMaskL3) {
        NavInfStr_t l3;
        if (!l3.createFromx0c(NAVSTR_GLO_L3, blk, tm)) {
            hdr->badNavInfL3 = kNotTaken;
        } else {
            const unsigned char* d = l3.getData();
            if (l3.getNum() == 2) hdr->badNavInfL3 |= (unsigned char)fieldL3(d, 56, 2);
            /* Every L3 string carries the bad-data bit at 40. */
            hdr->badNavInfL3 |= (unsigned char)(fieldL3(d, 40, 1) * kMarkBadData);
        }
    }
}
