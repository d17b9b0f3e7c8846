/*
 * GLONASS high-accuracy (VT) almanac collector.
 *
 * The almanac of 24 satellites takes 12 minutes: 72 frames of 10 s, three
 * per satellite. String 1 of each frame gives the step v + 6u (v = tens
 * of seconds, u = minutes mod 12); the satellite index is step / 3 and the
 * phase step mod 3. Strings 8 and 9 carry different fields in each phase,
 * string 10 the same in all. The step 0 frame (v = 0, u = 0) starts a new
 * almanac and throws away the old strings.
 *
 * A string 1 whose step would be 72 or more (v = 6 or 7, which a frame
 * time never gives, in the last minute of the cycle) makes the step
 * unknown: the strings 8 to 10 that follow are dropped until the next
 * sound string 1 rather than filed under a satellite index that does not
 * exist. A v of 6 or 7 in the earlier minutes yields a step below 72 and
 * is taken as it comes.
 */
#include "navinf_glo_vt.h"
#include "navinf_glo_vt_read.h"

namespace {

const unsigned kStepUnknown = 0xFFFFFFFFu;

/* Range limits of an entry, inclusive. */
const double kTauALimit = 0.0019;         /* s */
const double kLambdaLimit = 1.0;          /* semicircles */
const double kDILimit = 0.067;            /* semicircles */
const double kEpsMax = 0.03;
const double kOmegaLimit = 1.0;           /* semicircles */
const double kLambdaTMax = 44100.0;       /* s */
const double kDTLimit = 3600.0;           /* s */
const double kDTdotLimit = 0.00390625;    /* 2^-8 s/orbit^2 */

/* Range tests in their fixed order; true when every value passes. Only
 * the first failure matters to the caller. */
bool entryInRange(const tblAlmGloSat_t& e) {
    return gloVtWithin(e.tauA, kTauALimit) &&
           gloVtWithin(e.lambda, kLambdaLimit) &&
           gloVtWithin(e.dI, kDILimit) &&
           e.eps <= kEpsMax &&
           gloVtWithin(e.omega, kOmegaLimit) &&
           e.lambdaT <= kLambdaTMax &&
           gloVtWithin(e.dT, kDTLimit) &&
           gloVtWithin(e.dTdot, kDTdotLimit);
}

}  // namespace

AlmGloVt_t::AlmGloVt_t() : counter(kStepUnknown) { clear(); }

void AlmGloVt_t::upx0c(unsigned char* blk, unsigned int tm) {
    using namespace glovt;
    NavInfStr_t s;
    if (!s.createFromx0c(NAVSTR_GLO_VT, blk, tm)) return;
    unsigned num = s.getNum();
    if (num == 1) {
        unsigned v = (unsigned)gloVtGetInt(s, kStepV);
        unsigned u = (unsigned)gloVtGetInt(s, kStepU) % 12;
        if (v == 0 && u == 0) clear();
        counter = v + 6 * u;
        if (counter >= (unsigned)kAlmSteps) counter = kStepUnknown;
        return;
    }
    if (counter == kStepUnknown || num < 8 || num > 10) return;
    unsigned k = counter / 3;
    unsigned phase = counter % 3;
    int arr = num == 10 ? kAlmArrayStr10 : kAlmArray[phase][num - 8];
    a[arr][k] = s;
}

bool AlmGloVt_t::isCmplt() const {
    for (int i = 0; i < 7; i++)
        for (int k = 0; k < glovt::kAlmSats; k++)
            if (!a[i][k].isCmplt()) return false;
    return true;
}

bool AlmGloVt_t::getTbl(tblAlmGlo_t* tbl) {
    using namespace glovt;
    if (!isCmplt()) return true;

    tbl->actual = 1;
    tbl->na = (unsigned)gloVtGetInt(a[kAlmNa.src][0], kAlmNa);
    tbl->n4 = (unsigned)gloVtGetInt(a[kAlmN4.src][0], kAlmN4);
    tbl->tmResived = a[6][kAlmSats - 1].getTmResived();

    for (int k = 0; k < kAlmSats; k++) {
        tblAlmGloSat_t& e = tbl->alm[k];
        unsigned health = (unsigned)gloVtGetInt(a[kAlmHealth.src][k], kAlmHealth);
        e.onSystem = (uint8_t)((health >> (23 - k)) & 1u);
        e.num = (uint8_t)gloVtGetInt(a[kAlmNum.src][k], kAlmNum);
        e.lit = (uint8_t)gloVtGetInt(a[kAlmLit.src][k], kAlmLit);
        e.lambda = gloVtGet(a[kAlmLambda.src][k], kAlmLambda);
        e.lambdaT = gloVtGet(a[kAlmLambdaT.src][k], kAlmLambdaT);
        e.dI = gloVtGet(a[kAlmDI.src][k], kAlmDI);
        e.dT = gloVtGet(a[kAlmDT.src][k], kAlmDT);
        e.dTdot = gloVtGet(a[kAlmDTdot.src][k], kAlmDTdot);
        e.eps = gloVtGet(a[kAlmEps.src][k], kAlmEps);
        e.omega = gloVtGet(a[kAlmOmega.src][k], kAlmOmega);
        e.tauA = gloVtGet(a[kAlmTauA.src][k], kAlmTauA);

        /* Both flags are rewritten for every entry, so that nothing of an
         * earlier almanac lingers in a reused table. */
        e.onEmpty = e.lit == kAlmLitEmpty ? 1 : 0;
        e.onErrData = entryInRange(e) ? 0 : 1;
        if (e.lit != kAlmLitEmpty && e.lambda == 0 && e.lambdaT == 0 &&
            e.dI == 0 && e.dT == 0 && e.eps == 0 && e.omega == 0)
            e.onEmpty = 2;
    }
    return true;
}

void AlmGloVt_t::clear() {
    for (int i = 0; i < 7; i++)
        for (int k = 0; k < glovt::kAlmSats; k++) a[i][k].clear();
    counter = kStepUnknown;
}
