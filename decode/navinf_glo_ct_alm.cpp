/*
 * GLONASS standard-accuracy almanac collector.
 *
 * The almanac of the 24 orbital slots takes a whole 2.5-minute superframe:
 * frames 1 to 4 carry five satellites each in strings 6 to 15, frame 5
 * carries four in strings 6 to 13. Almanac strings carry no frame number
 * of their own, so a string can be filed only once string 1 of its frame
 * has told the frame (from the frame time tk); until then they are
 * dropped. Frame 1 starts a new superframe and a new collection.
 *
 * Table entries are numbered by transmission order (entry 0 = frame 1
 * strings 6/7), not by the slot number the pair announces: an entry keeps
 * its place even when the pair describes an empty slot.
 */
#include <cstdio>
#include <cstring>

#include "decode/navinf_glo_ct.h"
#include "decode/navinf_glo_ct_fields.h"

/* Limits of the almanac values, in table units (s, semicircles). */
static const double kMaxTauA = 0.0019;
static const double kMaxLambda = 1.0;
static const double kMaxDi = 0.067;
static const double kMaxEps = 0.03;
static const double kMaxOmega = 1.0;
static const double kMaxTLambda = 44100.0;
static const double kMaxDt = 3600.0;
static const double kMaxDtDot = 0.00390625; /* 2^-8 */

/* |v| <= limit, false for NaN. */
static bool within(double v, double limit) { return v <= limit && -v <= limit; }

/* The identity of the entry (health, slot, carrier and the empty-slot
 * marker) is written first, since it carries no range; the orbit and clock
 * values follow in the order of their tests, and the first one out of
 * range stops the entry with onErrData set, the remaining values left as
 * they were. */
void gloCtAlmEntry(const unsigned char* a, const unsigned char* b,
                   tblAlmGloSat_t* e) {
    e->onErrData = 0;
    e->onSystem = (uint8_t)gloCtValue(a, kGloCtAlmA[GLO_AA_CN]);
    e->num = (uint8_t)gloCtValue(a, kGloCtAlmA[GLO_AA_NA]);
    e->lit = (uint8_t)gloCtValue(b, kGloCtAlmB[GLO_AB_HA]);
    bool marker = e->lit == GLO_CT_EMPTY_CARRIER;
    e->onEmpty = marker ? 1 : 0;

    double v;
    v = gloCtValue(a, kGloCtAlmA[GLO_AA_TAU]);
    if (!within(v, kMaxTauA)) goto bad;
    e->tauA = v;
    v = gloCtValue(a, kGloCtAlmA[GLO_AA_LAMBDA]);
    if (!within(v, kMaxLambda)) goto bad;
    e->lambda = v;
    v = gloCtValue(a, kGloCtAlmA[GLO_AA_DI]);
    if (!within(v, kMaxDi)) goto bad;
    e->dI = v;
    v = gloCtValue(a, kGloCtAlmA[GLO_AA_EPS]);
    if (!(v <= kMaxEps)) goto bad;
    e->eps = v;
    v = gloCtValue(b, kGloCtAlmB[GLO_AB_OMEGA]);
    if (!within(v, kMaxOmega)) goto bad;
    e->omega = v;
    v = gloCtValue(b, kGloCtAlmB[GLO_AB_TLAMBDA]);
    if (!(v <= kMaxTLambda)) goto bad;
    e->lambdaT = v;
    v = gloCtValue(b, kGloCtAlmB[GLO_AB_DT]);
    if (!within(v, kMaxDt)) goto bad;
    e->dT = v;
    v = gloCtValue(b, kGloCtAlmB[GLO_AB_DTDOT]);
    if (!within(v, kMaxDtDot)) goto bad;
    e->dTdot = v;

    /* A pair that describes no orbit at all but lacks the marker is still
     * an empty slot, told apart so that the marker's absence stays
     * visible. tauA and dTdot do not count: a zero orbit is what matters. */
    if (!marker && e->lambda == 0.0 && e->lambdaT == 0.0 && e->dI == 0.0 &&
        e->dT == 0.0 && e->eps == 0.0 && e->omega == 0.0)
        e->onEmpty = 2;
    return;
bad:
    e->onErrData = 1;
}

AlmGloCt_t::AlmGloCt_t() { clear(); }

void AlmGloCt_t::clear() {
    str5.clear();
    for (int i = 0; i < GLO_CT_ALM_STRINGS; i++) alm[i].clear();
    frame = GLO_FRAME_UNKNOWN;
}

void AlmGloCt_t::upx0c(unsigned char* blk, unsigned int tm) {
    NavInfStr_t s;
    if (!s.createFromx0c(NAVSTR_GLO_CT, blk, tm)) return;
    unsigned int n = s.getNum();
    if (n == 1) {
        unsigned int f = gloCtFrameOf(gloCtTk(s.getData()));
        if (f == 1) clear();
        frame = f;
    } else if (n == 5) {
        str5 = s;
    } else if (n >= 6 && frame != GLO_FRAME_UNKNOWN) {
        int idx = gloCtAlmIndex(frame, n);
        if (idx >= 0) alm[idx] = s;
    }
}

bool AlmGloCt_t::isCmplt() const {
    if (frame == GLO_FRAME_UNKNOWN || !str5.isCmplt()) return false;
    for (int i = 0; i < GLO_CT_ALM_STRINGS; i++)
        if (!alm[i].isCmplt()) return false;
    unsigned int t0 = alm[0].getTmResived();
    unsigned int prev = t0;
    for (int i = 0; i < GLO_CT_ALM_STRINGS; i++) {
        unsigned int t = alm[i].getTmResived();
        if (t < prev) return false;
        unsigned int d = t >= t0 ? t - t0 : t0 - t;
        if (d > GLO_CT_SUPERFRAME_S) return false;
        prev = t;
    }
    return true;
}

bool AlmGloCt_t::getTbl(tblAlmGlo_t* tbl, tblHdr_t* hdr) {
    (void)hdr;
    if (!isCmplt()) return true;
    tbl->actual = 1;
    tbl->tmResived = alm[GLO_CT_ALM_STRINGS - 1].getTmResived();
    const unsigned char* s5 = str5.getData();
    tbl->na = (uint32_t)gloCtValue(s5, kGloCtStr5[GLO_S5_NA]);
    tbl->n4 = (uint32_t)gloCtValue(s5, kGloCtStr5[GLO_S5_N4]);
    for (int i = 0; i < ZEL_NUM_ALM_GLO; i++)
        gloCtAlmEntry(alm[2 * i].getData(), alm[2 * i + 1].getData(),
                      &tbl->alm[i]);
    return true;
}

void AlmGloCt_t::print() const {
    std::fprintf(stdout, "numPageNow=%02u 5=%02d ", frame,
                 str5.isCmplt() ? 1 : 0);
    for (int i = 0; i < ZEL_NUM_ALM_GLO; i++)
        std::fprintf(stdout, "%02d%02d%02d ", i, alm[2 * i].isCmplt() ? 1 : 0,
                     alm[2 * i + 1].isCmplt() ? 1 : 0);
    std::fputc('\n', stdout);
}
