/*
 * GLONASS CT string encoder: table values -> string bits, through the same
 * field table the library's collectors read (decode/navinf_glo_ct_fields.h).
 */
#include "glo_ct_encode.h"

#include <cmath>
#include <cstring>

#include "decode/navinf_glo_ct_fields.h"
#include "x0c_bits.h"

namespace x0c {

/* Accuracy in metres of each FT index (the collectors' table). */
static const double kFtMetres[16] = {1,  2,  2.5, 4,   5,   7,   10,  12,
                                     14, 16, 32,  64,  128, 256, 512, 1024};

/* Writes `value` (broadcast units) into field `f`, rounded to the nearest
 * count and saturated at the field's largest magnitude. Sign-magnitude
 * fields keep the sign of a negative zero, as the satellites send it. */
static void putField(uint8_t* out, const GloCtField& f, double value) {
    if (std::isnan(value)) value = 0.0;
    double count = value / f.scale;
    uint64_t raw;
    if (f.sign) {
        double maxMag = std::ldexp(1.0, f.len - 1) - 1.0;
        double mag = std::fabs(count);
        if (mag > maxMag) mag = maxMag;
        raw = rawUnsigned(mag, 1.0, f.len - 1);
        if (std::signbit(value)) raw |= UINT64_C(1) << (f.len - 1);
    } else {
        double maxCount = std::ldexp(1.0, f.len) - 1.0;
        if (count < 0.0) count = 0.0;
        if (count > maxCount) count = maxCount;
        raw = rawUnsigned(count, 1.0, f.len);
    }
    putBitsCT(out, f.lsb, f.len, raw);
}

static void begin(uint8_t out[10], unsigned int num) {
    std::memset(out, 0, 10);
    putBitsCT(out, kGloCtStrNum.lsb, kGloCtStrNum.len, num);
}

GloCtSlot gloCtSlotAt(unsigned int tod) {
    tod %= 86400u;
    GloCtSlot s;
    s.frame = gloCtFrameOf(tod);
    s.str = gloCtStringOf(tod);
    s.frameStart = tod - tod % GLO_CT_FRAME_S;
    s.strEnd = s.frameStart + GLO_CT_STRING_S * s.str;
    return s;
}

unsigned int gloCtFtIndex(double metres) {
    for (unsigned int i = 0; i < 15; i++)
        if (metres <= kFtMetres[i]) return i;
    return 15;
}

void gloCtEncodeStr1(const tblOprGlo_t& opr, unsigned int tk, uint8_t out[10]) {
    const GloCtField* f = kGloCtStr1;
    tk %= 86400u;
    begin(out, 1);
    putField(out, f[GLO_S1_P1], 0);
    putField(out, f[GLO_S1_TK_H], tk / 3600);
    putField(out, f[GLO_S1_TK_M], (tk % 3600) / 60);
    putField(out, f[GLO_S1_TK_S30], (tk % 60) / 30);
    putField(out, f[GLO_S1_VX], opr.vx / 1000.0);
    putField(out, f[GLO_S1_AX], opr.ax / 1000.0);
    putField(out, f[GLO_S1_X], opr.x / 1000.0);
}

void gloCtEncodeStr2(const tblOprGlo_t& opr, uint8_t out[10]) {
    const GloCtField* f = kGloCtStr2;
    unsigned int tb = (unsigned int)std::lround(opr.tb / 900.0);
    begin(out, 2);
    putField(out, f[GLO_S2_BN], 0);
    putField(out, f[GLO_S2_P2], tb & 1u);
    putField(out, f[GLO_S2_TB], tb);
    putField(out, f[GLO_S2_VY], opr.vy / 1000.0);
    putField(out, f[GLO_S2_AY], opr.ay / 1000.0);
    putField(out, f[GLO_S2_Y], opr.y / 1000.0);
}

void gloCtEncodeStr3(const tblOprGlo_t& opr, uint8_t out[10]) {
    const GloCtField* f = kGloCtStr3;
    begin(out, 3);
    putField(out, f[GLO_S3_P3], 1);
    putField(out, f[GLO_S3_GAMMA], opr.gammaN);
    putField(out, f[GLO_S3_P], 0);
    putField(out, f[GLO_S3_LN], 0);
    putField(out, f[GLO_S3_VZ], opr.vz / 1000.0);
    putField(out, f[GLO_S3_AZ], opr.az / 1000.0);
    putField(out, f[GLO_S3_Z], opr.z / 1000.0);
}

void gloCtEncodeStr4(const tblOprGlo_t& opr, unsigned int slot,
                     unsigned int en, uint8_t out[10]) {
    const GloCtField* f = kGloCtStr4;
    begin(out, 4);
    putField(out, f[GLO_S4_TAU], opr.tauN);
    putField(out, f[GLO_S4_DTAU], opr.dTauN);
    putField(out, f[GLO_S4_EN], en);
    putField(out, f[GLO_S4_P4], 0);
    putField(out, f[GLO_S4_FT], gloCtFtIndex(opr.ft));
    putField(out, f[GLO_S4_NT], opr.nt);
    putField(out, f[GLO_S4_N], slot);
    putField(out, f[GLO_S4_M], opr.m);
}

void gloCtEncodeStr5(const tblTmPrmGlo_t& prm, uint8_t out[10]) {
    const GloCtField* f = kGloCtStr5;
    begin(out, 5);
    putField(out, f[GLO_S5_NA], prm.na);
    putField(out, f[GLO_S5_TAUC], prm.tauC);
    putField(out, f[GLO_S5_N4], prm.n4);
    putField(out, f[GLO_S5_TAUGPS], prm.tauGps);
    putField(out, f[GLO_S5_LN], 0);
}

void gloCtEncodeAlmPair(const tblAlmGloSat_t* e, unsigned int slot,
                        unsigned int strA, uint8_t first[10],
                        uint8_t second[10]) {
    const GloCtField* a = kGloCtAlmA;
    const GloCtField* b = kGloCtAlmB;
    begin(first, strA);
    begin(second, strA + 1);
    if (!e || e->onEmpty == 1) {
        /* An unoccupied slot: its number and the empty-slot carrier, all
         * else zero (unhealthy). */
        putField(first, a[GLO_AA_NA], slot);
        putField(second, b[GLO_AB_HA], GLO_CT_EMPTY_CARRIER);
        return;
    }
    putField(first, a[GLO_AA_CN], e->onSystem);
    /* The table keeps no almanac modification; every satellite in orbit
     * announces itself as GLONASS-M (1) or later. */
    putField(first, a[GLO_AA_MN], 1);
    putField(first, a[GLO_AA_NA], e->num);
    putField(first, a[GLO_AA_TAU], e->tauA);
    putField(first, a[GLO_AA_LAMBDA], e->lambda);
    putField(first, a[GLO_AA_DI], e->dI);
    putField(first, a[GLO_AA_EPS], e->eps);
    putField(second, b[GLO_AB_OMEGA], e->omega);
    putField(second, b[GLO_AB_TLAMBDA], e->lambdaT);
    putField(second, b[GLO_AB_DT], e->dT);
    putField(second, b[GLO_AB_DTDOT], e->dTdot);
    putField(second, b[GLO_AB_HA], e->lit);
    putField(second, b[GLO_AB_LN], 0);
}

void gloCtEncodeStr14F5(const tblTmPrmGlo_t& prm, uint8_t out[10]) {
    const GloCtField* f = kGloCtStr14F5;
    begin(out, 14);
    putField(out, f[GLO_S14_B1], prm.b1);
    putField(out, f[GLO_S14_B2], prm.b2);
    putField(out, f[GLO_S14_KP], prm.kp);
}

void gloCtEncodeStr15F5(uint8_t out[10]) {
    begin(out, 15);
    putField(out, kGloCtStr15F5[GLO_S15_LN], 0);
}

bool gloCtEncode(const GloCtSource& src, unsigned int frame, unsigned int str,
                 unsigned int tk, uint8_t out[10]) {
    std::memset(out, 0, 10);
    if (frame < 1 || frame > 5 || str < 1 || str > 15) return false;
    if (str <= 4) {
        if (!src.opr) return false;
        switch (str) {
        case 1: gloCtEncodeStr1(*src.opr, tk, out); break;
        case 2: gloCtEncodeStr2(*src.opr, out); break;
        case 3: gloCtEncodeStr3(*src.opr, out); break;
        default: gloCtEncodeStr4(*src.opr, src.slot, src.en, out); break;
        }
        return true;
    }
    if (str == 5 || (frame == 5 && str == 14)) {
        if (!src.tmPrm) return false;
        if (str == 5)
            gloCtEncodeStr5(*src.tmPrm, out);
        else
            gloCtEncodeStr14F5(*src.tmPrm, out);
        return true;
    }
    if (frame == 5 && str == 15) {
        gloCtEncodeStr15F5(out);
        return true;
    }
    /* Almanac: entry (slot) k of the superframe, in transmission order. */
    int idx = gloCtAlmIndex(frame, str);
    unsigned int entry = (unsigned int)idx / 2;
    const tblAlmGloSat_t* e =
        (src.alm && src.alm->actual) ? &src.alm->alm[entry] : nullptr;
    uint8_t first[10], second[10];
    unsigned int strA = str - (unsigned int)(idx % 2);
    gloCtEncodeAlmPair(e, entry + 1, strA, first, second);
    std::memcpy(out, idx % 2 ? second : first, 10);
    return true;
}

}  // namespace x0c
