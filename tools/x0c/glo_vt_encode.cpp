/*
 * GLONASS VT string encoder: table values into the bit fields of the
 * shared VT position table, and the broadcast schedule (see the header).
 *
 * Every string is assembled the same way: a list of (field, raw value)
 * pairs is built from the tables, and the pairs whose field belongs to the
 * string being built are written with putBits. Which fields belong to a
 * string is decided by the position table alone (its `src` together with
 * the place and array maps), so the encoder files each value exactly
 * where the collectors look for it.
 */
#include "glo_vt_encode.h"

#include <cmath>
#include <cstring>

#include "decode/navinf_glo_vt_fields.h"
#include "x0c_bits.h"

namespace x0c {

namespace {

/* The almanac's na and n4 are read from the bits of the time parameters'
 * na and n4 (string 8 of phase 2 and string 10); only the latter are
 * sent. */
static_assert(glovt::kAlmNa.pos == glovt::kTpNa.pos &&
              glovt::kAlmNa.len == glovt::kTpNa.len &&
              glovt::kAlmNa.src == glovt::kAlmArray[2][0] &&
              glovt::kTpNa.src == glovt::kTpPlace[2][0],
              "almanac na shares the time parameters' na");
static_assert(glovt::kAlmN4.pos == glovt::kTpN4.pos &&
              glovt::kAlmN4.len == glovt::kTpN4.len &&
              glovt::kAlmN4.src == glovt::kAlmArrayStr10 &&
              glovt::kTpN4.src == glovt::kTpPlace[0][2],
              "almanac n4 shares the time parameters' n4");

struct Put {
    const GloVtField* f;
    uint64_t raw;
};

uint64_t rawOf(const GloVtField& f, double value) {
    return f.sign ? rawSignMag(value, f.scale, f.len)
                  : rawUnsigned(value, f.scale, f.len);
}

/* Writes the pairs whose field source is `src`. */
void putFrom(uint8_t* out, const Put* list, int n, unsigned src) {
    for (int i = 0; i < n; i++)
        if (list[i].f->src == src)
            putBits(out, list[i].f->pos, list[i].f->len, list[i].raw);
}

void startString(uint8_t* out, unsigned num) {
    std::memset(out, 0, 7);
    putBits(out, glovt::kNum.pos, glovt::kNum.len, num);
}

/* The ephemeris fields of `eph`, with `tk` as the frame time. */
int ephPuts(const tblOprGlo_t& eph, uint32_t tk, Put* p) {
    using namespace glovt;
    int n = 0;
    tk %= 86400;
    p[n++] = {&kTkHours, tk / 3600};
    p[n++] = {&kTkMinutes, tk / 60 % 60};
    p[n++] = {&kTkSeconds, tk % 60 / 10};
    p[n++] = {&kTb, eph.tb / 900};
    const double pos[3] = {eph.x, eph.y, eph.z};
    const double vel[3] = {eph.vx, eph.vy, eph.vz};
    const double acc[3] = {eph.ax, eph.ay, eph.az};
    for (int a = 0; a < 3; a++) {
        p[n++] = {&kPos[a], rawOf(kPos[a], pos[a] / 1000.0)};
        p[n++] = {&kVel[a], rawOf(kVel[a], vel[a] / 1000.0)};
        p[n++] = {&kAcc[a], rawOf(kAcc[a], acc[a] / 1000.0)};
    }
    p[n++] = {&kGammaN, rawOf(kGammaN, eph.gammaN)};
    p[n++] = {&kTauN, rawOf(kTauN, eph.tauN)};
    p[n++] = {&kDTauN, rawOf(kDTauN, eph.dTauN)};
    p[n++] = {&kNt, (uint64_t)eph.nt & 0x7FF};
    p[n++] = {&kM, (uint64_t)eph.m & 3};
    return n;
}

/* The time-parameter fields; tauC is cut into its two parts here. */
int tpPuts(const tblTmPrmGlo_t& tp, Put* p) {
    using namespace glovt;
    int n = 0;
    p[n++] = {&kTpNa, (uint64_t)tp.na & 0x7FF};
    p[n++] = {&kTpN4, (uint64_t)tp.n4 & 0x1F};
    uint64_t mag = (uint64_t)std::llround(std::fabs(tp.tauC) / kTpTauCLow.scale);
    uint64_t low = mag & 0xF;
    uint64_t high = (mag >> 4) & ((UINT64_C(1) << (kTpTauC.len - 1)) - 1);
    if (tp.tauC < 0) high |= UINT64_C(1) << (kTpTauC.len - 1);
    p[n++] = {&kTpTauC, high};
    p[n++] = {&kTpTauCLow, low};
    p[n++] = {&kTpB1, rawOf(kTpB1, tp.b1)};
    p[n++] = {&kTpB2, rawOf(kTpB2, tp.b2)};
    p[n++] = {&kTpKp, (uint64_t)tp.kp & 3};
    return n;
}

/* The fields of almanac entry `k`; the health field is the mask of all
 * entries, the first satellite in its highest bit. */
int almPuts(const tblAlmGlo_t& alm, unsigned k, Put* p) {
    using namespace glovt;
    const tblAlmGloSat_t& e = alm.alm[k];
    uint64_t health = 0;
    for (int i = 0; i < kAlmSats; i++)
        health |= (uint64_t)(alm.alm[i].onSystem & 1u) << (kAlmSats - 1 - i);
    int n = 0;
    p[n++] = {&kAlmHealth, health};
    p[n++] = {&kAlmNum, (uint64_t)e.num & 0x1F};
    p[n++] = {&kAlmLit, (uint64_t)e.lit & 0x1F};
    p[n++] = {&kAlmLambda, rawOf(kAlmLambda, e.lambda)};
    p[n++] = {&kAlmLambdaT, rawOf(kAlmLambdaT, e.lambdaT)};
    p[n++] = {&kAlmDI, rawOf(kAlmDI, e.dI)};
    p[n++] = {&kAlmDT, rawOf(kAlmDT, e.dT)};
    p[n++] = {&kAlmDTdot, rawOf(kAlmDTdot, e.dTdot)};
    p[n++] = {&kAlmEps, rawOf(kAlmEps, e.eps)};
    p[n++] = {&kAlmOmega, rawOf(kAlmOmega, e.omega)};
    p[n++] = {&kAlmTauA, rawOf(kAlmTauA, e.tauA)};
    return n;
}

const int kMaxPuts = 24;

}  // namespace

VtSlot vtSlotAt(uint32_t tod) {
    VtSlot s;
    tod %= 86400;
    s.num = tod % kVtFrameSec + 1;
    s.frame = tod - tod % kVtFrameSec;
    s.step = s.frame % kVtAlmCycleSec / kVtFrameSec;
    s.sat = s.step / 3;
    s.phase = s.step % 3;
    return s;
}

void vtEphString(unsigned num, const tblOprGlo_t& eph, uint32_t tk,
                 uint8_t out[7]) {
    Put p[kMaxPuts];
    int n = ephPuts(eph, tk, p);
    startString(out, num);
    putFrom(out, p, n, num);
}

void vtAlmString(unsigned num, unsigned phase, unsigned sat,
                 const tblTmPrmGlo_t& tp, const tblAlmGlo_t& alm,
                 uint8_t out[7]) {
    Put p[kMaxPuts];
    startString(out, num);
    int n = almPuts(alm, sat % glovt::kAlmSats, p);
    putFrom(out, p, n, (unsigned)glovt::kAlmArray[phase % 3][num - 8]);
    int place = glovt::kTpPlace[phase % 3][num - 8];
    if (place >= 0) {
        n = tpPuts(tp, p);
        putFrom(out, p, n, (unsigned)place);
    }
}

void vtString10(const tblOprGlo_t& eph, const tblTmPrmGlo_t& tp,
                uint8_t out[7]) {
    Put p[kMaxPuts];
    startString(out, 10);
    int n = ephPuts(eph, 0, p);
    putFrom(out, p, n, 10);
    /* String 10 lands in a different place in each cycle; it carries the
     * fields of all of them, so whichever copy is kept is whole. */
    n = tpPuts(tp, p);
    for (int c = 0; c < 3; c++)
        putFrom(out, p, n, (unsigned)glovt::kTpPlace[c][2]);
}

unsigned vtStringAt(uint32_t tod, const tblOprGlo_t& eph,
                    const tblTmPrmGlo_t& tp, const tblAlmGlo_t& alm,
                    uint8_t out[7]) {
    VtSlot s = vtSlotAt(tod);
    if (s.num <= 7)
        vtEphString(s.num, eph, s.frame, out);
    else if (s.num <= 9)
        vtAlmString(s.num, s.phase, s.sat, tp, alm, out);
    else
        vtString10(eph, tp, out);
    return s.num;
}

}  // namespace x0c
