/*
 * GPS UTC and ionosphere collectors: both live on subframe 4 page 18 (SV
 * ID 56), which each keeps for itself. Page 18 comes round once per 12.5
 * minutes; the latest one is the one used.
 */
#include "decode/navinf_gps.h"

#include "decode/navinf_gps_read.h"

/* The subframe in `blk` when it is subframe 4 page 18, else false. */
static bool takePage18(NavInfStr_t& dst, unsigned char* blk, unsigned int tm) {
    NavInfStr_t s;
    if (!s.createFromx0c(NAVSTR_GPS, blk, tm)) return false;
    if (s.getNum() != 4 || s.getSvid() != GPS_SVID_PAGE18) return false;
    dst = s;
    return true;
}

void TmPrmGps_t::upx0c(unsigned char* blk, unsigned int tm) {
    takePage18(page18, blk, tm);
}

bool TmPrmGps_t::isCmplt() const { return page18.isCmplt(); }

int TmPrmGps_t::getTbl(tblTmPrmGps_t* tbl) {
    if (!isCmplt()) return 1;
    const unsigned char* p = page18.getData();
    tbl->actual = 1;
    tbl->a1 = gpsValue(p, kGpsPage18.a1);
    tbl->a0 = gpsValue(p, kGpsPage18.a0);
    tbl->tot = gpsUnsigned(p, kGpsPage18.tot);
    tbl->wnt = gpsUnsigned(p, kGpsPage18.wnt);
    tbl->dtLs = gpsSigned(p, kGpsPage18.dtLs);
    tbl->wnLsf = gpsUnsigned(p, kGpsPage18.wnLsf);
    tbl->dn = gpsUnsigned(p, kGpsPage18.dn);
    tbl->dtLsf = gpsSigned(p, kGpsPage18.dtLsf);
    return 1;
}

void TmPrmGps_t::clear() { page18.clear(); }

void IonGps_t::upx0c(unsigned char* blk, unsigned int tm) {
    takePage18(page18, blk, tm);
}

bool IonGps_t::isCmplt() const { return page18.isCmplt(); }

int IonGps_t::getTbl(tblIonGps_t* tbl) {
    if (!isCmplt()) return 1;
    const unsigned char* p = page18.getData();
    tbl->actual = 1;
    tbl->alpha0 = gpsValue(p, kGpsPage18.alpha0);
    tbl->alpha1 = gpsValue(p, kGpsPage18.alpha1);
    tbl->alpha2 = gpsValue(p, kGpsPage18.alpha2);
    tbl->alpha3 = gpsValue(p, kGpsPage18.alpha3);
    tbl->beta0 = gpsValue(p, kGpsPage18.beta0);
    tbl->beta1 = gpsValue(p, kGpsPage18.beta1);
    tbl->beta2 = gpsValue(p, kGpsPage18.beta2);
    tbl->beta3 = gpsValue(p, kGpsPage18.beta3);
    return 1;
}

void IonGps_t::clear() { page18.clear(); }
