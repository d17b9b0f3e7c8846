/*
 * GPS ephemeris and clock collector: subframes 1, 2 and 3 of one
 * satellite, turned into tblOprGps_t.
 *
 * A new subframe 1 starts a new set. The three subframes are taken as one
 * set when subframes 2 and 3 were received at most 750 s (one almanac
 * cycle) before subframe 1; any time after it is accepted, so a set whose
 * subframe 1 was received last in a cycle still counts. The issue-of-data
 * numbers of the three subframes are not compared with one another.
 */
#include "decode/navinf_gps.h"

#include <cstring>

#include "decode/navinf_gps_read.h"
#include "interface/zel_assert.h"

void OprGps_t::upx0c(unsigned char* blk, unsigned int tm) {
    NavInfStr_t s;
    if (!s.createFromx0c(NAVSTR_GPS, blk, tm)) return;
    unsigned int id = s.getNum();
    if (id == 1) clear();
    if (id >= 1 && id <= 3) sf[id - 1] = s;
}

bool OprGps_t::isCmplt() const {
    if (!sf[0].isCmplt() || !sf[1].isCmplt() || !sf[2].isCmplt())
        return false;
    unsigned int t1 = sf[0].getTmResived();
    int d2 = (int)(t1 - sf[1].getTmResived());
    int d3 = (int)(t1 - sf[2].getTmResived());
    return d2 <= 750 && d3 <= 750;
}

/* Copies a stored subframe into a raw area of the table. A subframe
 * rebuilt by check() holds only words 3 to 10 (24 bytes); the telemetry
 * and handover words it lacks are left zero. */
static void copySubframe(const NavInfStr_t& s, uint8_t dst[30]) {
    unsigned int n = s.getLData();
    if (n > 30) n = 30;
    std::memcpy(dst, s.getData(), n);
    std::memset(dst + n, 0, 30 - n);
}

int OprGps_t::getTbl(tblOprGps_t* tbl) {
    if (!isCmplt()) return 1;
    uint8_t raw[3][30];
    for (int i = 0; i < 3; i++) copySubframe(sf[i], raw[i]);
    /* The same subframes into an untouched table: nothing would change. */
    if (memo.holds(tbl) && std::memcmp(raw[0], tbl->subfr1, 30) == 0 &&
        std::memcmp(raw[1], tbl->subfr2, 30) == 0 &&
        std::memcmp(raw[2], tbl->subfr3, 30) == 0)
        return 1;
    std::memcpy(tbl->subfr1, raw[0], 30);
    std::memcpy(tbl->subfr2, raw[1], 30);
    std::memcpy(tbl->subfr3, raw[2], 30);
    tbl->actual = 1;

    const unsigned char* s1 = tbl->subfr1;
    const unsigned char* s2 = tbl->subfr2;
    const unsigned char* s3 = tbl->subfr3;

    tbl->health = (uint8_t)gpsUnsigned(s1, kGpsSf1.health);
    tbl->wn = (uint16_t)gpsUnsigned(s1, kGpsSf1.wn);
    tbl->af0 = gpsValue(s1, kGpsSf1.af0);
    tbl->af1 = gpsValue(s1, kGpsSf1.af1);
    tbl->af2 = gpsValue(s1, kGpsSf1.af2);
    tbl->toc = gpsUnsigned(s1, kGpsSf1.toc);
    tbl->ura = gpsUraMetres((int)gpsUnsigned(s1, kGpsSf1.ura));
    tbl->tgd = gpsValue(s1, kGpsSf1.tgd);
    tbl->iodc = (uint8_t)gpsUnsigned(s1, kGpsSf1.iodc);

    tbl->iode = (uint8_t)gpsUnsigned(s2, kGpsSf2.iode);
    tbl->crs = gpsValue(s2, kGpsSf2.crs);
    tbl->deltaN = gpsValue(s2, kGpsSf2.deltaN);
    tbl->m0 = gpsValue(s2, kGpsSf2.m0);
    tbl->cuc = gpsValue(s2, kGpsSf2.cuc);
    tbl->e = gpsValue(s2, kGpsSf2.e);
    tbl->cus = gpsValue(s2, kGpsSf2.cus);
    tbl->sqrtA = gpsValue(s2, kGpsSf2.sqrtA);
    tbl->toe = gpsUnsigned(s2, kGpsSf2.toe);

    tbl->cic = gpsValue(s3, kGpsSf3.cic);
    tbl->omega0 = gpsValue(s3, kGpsSf3.omega0);
    tbl->cis = gpsValue(s3, kGpsSf3.cis);
    tbl->i0 = gpsValue(s3, kGpsSf3.i0);
    tbl->crc = gpsValue(s3, kGpsSf3.crc);
    tbl->omega = gpsValue(s3, kGpsSf3.omega);
    tbl->omegaDot = gpsValue(s3, kGpsSf3.omegaDot);
    tbl->idot = gpsValue(s3, kGpsSf3.idot);
    memo.keep(tbl);
    return 1;
}

void OprGps_t::clear() {
    for (NavInfStr_t& s : sf) s.clear();
}

/* Rebuilds an ephemeris from words 3 to 10 of its three subframes (24
 * bytes each, stored order), as kept by whoever saved it, and re-decodes
 * it. Used to re-check a stored ephemeris: any failure is a programming
 * error. */
void OprGps_t::check(unsigned char* bytes, tblOprGps_t* tbl) {
    for (int i = 0; i < 3; i++) {
        bool ok = sf[i].check(NAVSTR_GPS, bytes + 24 * i);
        ZEL_ASSERT(ok, "0", "navinf",
                   "void OprGps_t::check(unsigned char*, tblOprGps_t*)");
    }
    ZEL_ASSERT(isCmplt(), "0", "navinf",
               "void OprGps_t::check(unsigned char*, tblOprGps_t*)");
    getTbl(tbl);
}
