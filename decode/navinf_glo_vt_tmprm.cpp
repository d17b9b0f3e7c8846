/*
 * GLONASS high-accuracy (VT) time-parameter collector.
 *
 * The time parameters ride in strings 8, 9 and 10 of three consecutive
 * 10-second frames (a 30-second cycle). String 1 of each frame tells
 * which frame of the cycle follows: v, its tens of seconds, gives the
 * cycle counter v mod 3, and a frame with v = 0 or 3 starts a new cycle
 * and throws away what the old one left. Strings are filed into six
 * places by counter and number; a set is usable when all six places are
 * filled within 720 s after place 0 (string 8 of the first frame).
 *
 * Until the first string 1 the counter is 0, as after clear(): strings
 * filed before it are dropped by the next cycle start at the latest.
 */
#include "navinf_glo_vt.h"
#include "navinf_glo_vt_read.h"

namespace {
const unsigned kMaxSpan = 720;
}

TmPrmGloVt_t::TmPrmGloVt_t() : cycle(0) { clear(); }

void TmPrmGloVt_t::upx0c(unsigned char* blk, unsigned int tm) {
    NavInfStr_t s;
    if (!s.createFromx0c(NAVSTR_GLO_VT, blk, tm)) return;
    unsigned num = s.getNum();
    if (num == 1) {
        unsigned v = (unsigned)gloVtGetInt(s, glovt::kStepV);
        if (v == 0 || v == 3) clear();
        cycle = v % 3;
        return;
    }
    if (num < 8 || num > 10) return;
    int p = glovt::kTpPlace[cycle][num - 8];
    if (p >= 0) place[p] = s;
}

bool TmPrmGloVt_t::isCmplt() const {
    for (int i = 0; i < 6; i++)
        if (!place[i].isCmplt()) return false;
    /* Unsigned on purpose: a place received before place 0 wraps to a huge
     * difference and fails the same test as one received too late. */
    unsigned t0 = place[0].getTmResived();
    for (int i = 1; i < 6; i++)
        if (place[i].getTmResived() - t0 > kMaxSpan) return false;
    return true;
}

bool TmPrmGloVt_t::getTbl(tblTmPrmGlo_t* tbl) {
    using namespace glovt;
    if (!isCmplt()) return true;

    tbl->actual = 1;
    tbl->na = (unsigned)gloVtGetInt(place[kTpNa.src], kTpNa);
    tbl->n4 = (unsigned)gloVtGetInt(place[kTpN4.src], kTpN4);

    /* The low bits of tauC extend its magnitude, so they move the value
     * away from zero whatever its sign. A negative value below 2^-27 s
     * reads as -0, which counts as positive here. */
    double tauC = gloVtGet(place[kTpTauC.src], kTpTauC);
    double low = gloVtGet(place[kTpTauCLow.src], kTpTauCLow);
    tbl->tauC = tauC >= 0 ? tauC + low : tauC - low;

    tbl->tauGps = 0.0;  /* not broadcast in the VT strings */
    tbl->b1 = gloVtGet(place[kTpB1.src], kTpB1);
    tbl->b2 = gloVtGet(place[kTpB2.src], kTpB2);
    tbl->kp = (uint8_t)gloVtGetInt(place[kTpKp.src], kTpKp);
    return true;
}

void TmPrmGloVt_t::clear() {
    for (int i = 0; i < 6; i++) place[i].clear();
    cycle = 0;
}
