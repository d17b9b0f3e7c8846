/*
 * GLONASS standard-accuracy ephemeris collector (strings 1 to 4), and the
 * field helpers shared by the three CT collectors.
 *
 * The four strings of one frame are collected as they arrive; string 1
 * starts a new set, so a set never mixes frames that are more than one
 * string 1 apart. The table is built only when all four are present and
 * in transmission order, and every value is tested against the physical
 * limits of a GLONASS orbit before it is stored: a single bit error that
 * slipped past the Hamming code is far more likely to land outside those
 * limits than to produce a plausible orbit.
 */
#include <cmath>
#include <cstring>

#include "decode/navinf_glo_ct.h"
#include "decode/navinf_glo_ct_fields.h"
#include "interface/zel_assert.h"

/* Accuracy in metres for the 4-bit index FT. Index 15 is the worst
 * accuracy the satellite can announce, not a "do not use" marker: it
 * becomes 1024 m like any other value. */
static const double kFtMetres[16] = {1,  2,  2.5, 4,   5,   7,   10,  12,
                                     14, 16, 32,  64,  128, 256, 512, 1024};

/* Limits of the values of strings 1 to 3 (km, km/s, km/s^2) and of tb. A
 * value equal to a limit passes; NaN fails every test. */
static const double kMaxPos = 27000.0;
static const double kMaxVel = 4.3;
static const double kMaxAcc = 6.2e-9;
static const double kTbTimes15Below = 1426.0;

double gloCtValue(const unsigned char* data, const GloCtField& f) {
    return NavInfStr_t::GetValueCT(data, f.lsb, f.len, f.sign, f.scale);
}

unsigned int gloCtTk(const unsigned char* str1) {
    unsigned int h = (unsigned int)gloCtValue(str1, kGloCtStr1[GLO_S1_TK_H]);
    unsigned int m = (unsigned int)gloCtValue(str1, kGloCtStr1[GLO_S1_TK_M]);
    unsigned int s30 =
        (unsigned int)gloCtValue(str1, kGloCtStr1[GLO_S1_TK_S30]);
    return h * 3600 + m * 60 + 30 * s30;
}

static bool within(double v, double limit) { return std::fabs(v) <= limit; }

OprGloCt_t::OprGloCt_t() { clear(); }

void OprGloCt_t::clear() {
    for (int i = 0; i < 4; i++) str[i].clear();
}

void OprGloCt_t::put(const NavInfStr_t& s) {
    unsigned int n = s.getNum();
    if (n == 1) clear();
    if (n >= 1 && n <= 4) str[n - 1] = s;
}

void OprGloCt_t::upx0c(unsigned char* blk, unsigned int tm) {
    NavInfStr_t s;
    if (!s.createFromx0c(NAVSTR_GLO_CT, blk, tm)) return;
    put(s);
}

/* The window test works on signed differences t1 - tn, which are never
 * positive once the strings are in order; in effect only the order is
 * enforced, and string 1 restarting the set keeps the four strings within
 * one frame or so. Kept as the receiver always did it. */
bool OprGloCt_t::isCmplt() const {
    for (int i = 0; i < 4; i++)
        if (!str[i].isCmplt()) return false;
    unsigned int t[4];
    for (int i = 0; i < 4; i++) t[i] = str[i].getTmResived();
    for (int i = 1; i < 4; i++)
        if ((int)(t[0] - t[i]) > 30) return false;
    return t[0] <= t[1] && t[1] <= t[2] && t[2] <= t[3];
}

bool OprGloCt_t::getTbl(tblOprGlo_t* tbl, tblHdr_t* hdr) {
    if (!isCmplt()) return true;
    const unsigned char* s1 = str[0].getData();
    const unsigned char* s2 = str[1].getData();
    const unsigned char* s3 = str[2].getData();
    const unsigned char* s4 = str[3].getData();

    /* The set accepted last time, into an untouched table: a rebuild
     * would write the same bytes and accept it again. A rejected set
     * empties the collector, so only accepted ones are remembered. */
    bool same = memo.holds(tbl);
    for (int i = 0; i < 4 && same; i++)
        same = std::memcmp(tbl->str[i], str[i].getData(), 10) == 0;
    if (same) return true;

    for (int i = 0; i < 4; i++) std::memcpy(tbl->str[i], str[i].getData(), 10);
    tbl->actual = 1;
    tbl->tk = gloCtTk(s1);

    /* Each value is tested as soon as it is read, in broadcast units, and
     * stored in metres only once it has passed. */
    double v;
    v = gloCtValue(s1, kGloCtStr1[GLO_S1_VX]);
    if (!within(v, kMaxVel)) goto reject;
    tbl->vx = v * 1000.0;
    v = gloCtValue(s1, kGloCtStr1[GLO_S1_AX]);
    if (!within(v, kMaxAcc)) goto reject;
    tbl->ax = v * 1000.0;
    v = gloCtValue(s1, kGloCtStr1[GLO_S1_X]);
    if (!within(v, kMaxPos)) goto reject;
    tbl->x = v * 1000.0;

    v = gloCtValue(s2, kGloCtStr2[GLO_S2_TB]);
    if (!(v * 15.0 < kTbTimes15Below)) goto reject;
    tbl->tb = (unsigned int)v * 900;
    v = gloCtValue(s2, kGloCtStr2[GLO_S2_VY]);
    if (!within(v, kMaxVel)) goto reject;
    tbl->vy = v * 1000.0;
    v = gloCtValue(s2, kGloCtStr2[GLO_S2_AY]);
    if (!within(v, kMaxAcc)) goto reject;
    tbl->ay = v * 1000.0;
    v = gloCtValue(s2, kGloCtStr2[GLO_S2_Y]);
    if (!within(v, kMaxPos)) goto reject;
    tbl->y = v * 1000.0;

    tbl->gammaN = gloCtValue(s3, kGloCtStr3[GLO_S3_GAMMA]);
    v = gloCtValue(s3, kGloCtStr3[GLO_S3_VZ]);
    if (!within(v, kMaxVel)) goto reject;
    tbl->vz = v * 1000.0;
    v = gloCtValue(s3, kGloCtStr3[GLO_S3_AZ]);
    if (!within(v, kMaxAcc)) goto reject;
    tbl->az = v * 1000.0;
    v = gloCtValue(s3, kGloCtStr3[GLO_S3_Z]);
    if (!within(v, kMaxPos)) goto reject;
    tbl->z = v * 1000.0;

    tbl->tauN = gloCtValue(s4, kGloCtStr4[GLO_S4_TAU]);
    tbl->dTauN = gloCtValue(s4, kGloCtStr4[GLO_S4_DTAU]);
    tbl->ft = kFtMetres[(unsigned int)gloCtValue(s4, kGloCtStr4[GLO_S4_FT])];
    tbl->nt = (uint16_t)gloCtValue(s4, kGloCtStr4[GLO_S4_NT]);
    tbl->m = (uint8_t)gloCtValue(s4, kGloCtStr4[GLO_S4_M]);
    memo.keep(tbl);
    return true;

reject:
    /* Bits 4 and 5 of the header flag a rejected ephemeris; the set is
     * dropped so that the next one is collected from scratch. */
    tbl->actual = 0;
    hdr->badNavInfCt |= 48;
    clear();
    return false;
}

/* Loads four consecutive 10-byte pieces (strings 1 to 4, stored by their
 * own numbers as if received) and builds the table from them. Used to
 * re-check a stored ephemeris: any failure here is a programming error,
 * not a data error. */
void OprGloCt_t::check(unsigned char* bytes, tblOprGlo_t* tbl, tblHdr_t* hdr) {
    static const char* const kSig =
        "void OprGloCt_t::check(unsigned char*, tblOprGlo_t*, tblHdr_t*)";
    clear();
    for (int i = 0; i < 4; i++) {
        NavInfStr_t s;
        ZEL_ASSERT(s.check(NAVSTR_GLO_CT, bytes + 10 * i), "0", "navinf", kSig);
        put(s);
    }
    ZEL_ASSERT(isCmplt(), "0", "navinf", kSig);
    bool ok = getTbl(tbl, hdr);
    ZEL_ASSERT(ok && tbl->actual == 1, "0", "navinf", kSig);
}
