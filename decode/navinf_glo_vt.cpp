/*
 * GLONASS high-accuracy (VT) ephemeris collector.
 *
 * The ephemeris of the VT signal is spread over strings 1 to 7 and 10 of
 * the 10-string frame. String 1 opens a frame, so it empties the
 * collector; a set is usable when all eight strings arrived in frame order
 * with no gap above 720 s between neighbours. The decoded table has finer
 * position and velocity steps than the standard-accuracy one, tk in
 * 10-second steps and no accuracy index (ft = 0).
 */
#include <cstring>

#include "navinf_glo_vt.h"
#include "navinf_glo_vt_read.h"

namespace {

/* Magnitude limits of the ephemeris vectors, in broadcast units. */
const double kPosLimitKm = 27000.0;
const double kVelLimitKms = 4.3;
const double kAccLimitKms2 = 6.2e-9;

/* Largest gap between two neighbouring strings of one set. */
const unsigned kMaxGap = 720;

/* Place of string `num` in the collector: strings 1..7 in 0..6, string 10
 * in 7; -1 for the strings the ephemeris does not use. */
int placeOf(unsigned num) {
    if (num >= 1 && num <= 7) return (int)num - 1;
    if (num == 10) return 7;
    return -1;
}

/* Decodes a km-based ephemeris value of `str`, tests its magnitude against
 * `limitKm` and gives it in metres. False when it is out of range. */
bool inMetres(const NavInfStr_t* str, const GloVtField& f, double limitKm,
              double* metres) {
    double v = gloVtGet(str[placeOf(f.src)], f);
    if (!gloVtWithin(v, limitKm)) return false;
    *metres = v * 1000.0;
    return true;
}

}  // namespace

void OprGloVt_t::upx0c(unsigned char* blk, unsigned int tm) {
    NavInfStr_t s;
    if (!s.createFromx0c(NAVSTR_GLO_VT, blk, tm)) return;
    int place = placeOf(s.getNum());
    if (place < 0) return;
    if (place == 0) clear();
    str[place] = s;
}

bool OprGloVt_t::isCmplt() const {
    for (int i = 0; i < 8; i++)
        if (!str[i].isCmplt()) return false;
    /* Unsigned on purpose: a string received before its predecessor wraps
     * to a huge gap and fails like one received too late. */
    for (int i = 1; i < 8; i++)
        if (str[i].getTmResived() - str[i - 1].getTmResived() > kMaxGap)
            return false;
    return true;
}

bool OprGloVt_t::getTbl(tblOprGlo_t* tbl) {
    using namespace glovt;
    if (!isCmplt()) return true;

    tbl->actual = 1;
    for (int i = 0; i < 8; i++) {
        unsigned n = str[i].getLData();
        if (n > sizeof tbl->str[i]) n = sizeof tbl->str[i];
        std::memset(tbl->str[i], 0, sizeof tbl->str[i]);
        std::memcpy(tbl->str[i], str[i].getData(), n);
    }

    /* A rejected set leaves `actual` at 1: the slot clears the table when
     * we answer false. */
    int tb = gloVtGetInt(str[placeOf(kTb.src)], kTb);
    if (tb * 15 > 1425) return false;
    tbl->tb = (unsigned)tb * 900u;

    const NavInfStr_t& s1 = str[placeOf(kTkHours.src)];
    tbl->tk = (unsigned)(gloVtGetInt(s1, kTkHours) * 3600 +
                         gloVtGetInt(s1, kTkMinutes) * 60 +
                         gloVtGetInt(s1, kTkSeconds));

    /* Axis by axis: position, velocity, acceleration, each tested as soon
     * as it is decoded; the first value out of range ends decoding. */
    double m;
    if (!inMetres(str, kPos[0], kPosLimitKm, &m)) return false;
    tbl->x = m;
    if (!inMetres(str, kVel[0], kVelLimitKms, &m)) return false;
    tbl->vx = m;
    if (!inMetres(str, kAcc[0], kAccLimitKms2, &m)) return false;
    tbl->ax = m;
    if (!inMetres(str, kPos[1], kPosLimitKm, &m)) return false;
    tbl->y = m;
    if (!inMetres(str, kVel[1], kVelLimitKms, &m)) return false;
    tbl->vy = m;
    if (!inMetres(str, kAcc[1], kAccLimitKms2, &m)) return false;
    tbl->ay = m;
    if (!inMetres(str, kPos[2], kPosLimitKm, &m)) return false;
    tbl->z = m;
    if (!inMetres(str, kVel[2], kVelLimitKms, &m)) return false;
    tbl->vz = m;
    if (!inMetres(str, kAcc[2], kAccLimitKms2, &m)) return false;
    tbl->az = m;

    tbl->gammaN = gloVtGet(str[placeOf(kGammaN.src)], kGammaN);
    tbl->tauN = gloVtGet(str[placeOf(kTauN.src)], kTauN);
    tbl->dTauN = gloVtGet(str[placeOf(kDTauN.src)], kDTauN);
    tbl->ft = 0.0;  /* the VT strings carry no accuracy index */
    tbl->nt = (uint16_t)gloVtGetInt(str[placeOf(kNt.src)], kNt);
    tbl->m = (uint8_t)gloVtGetInt(str[placeOf(kM.src)], kM);
    return true;
}

void OprGloVt_t::clear() {
    for (int i = 0; i < 8; i++) str[i].clear();
}
