/*
 * GPS subframe encoder: table values into stored subframes through the
 * decoders' field layout.
 */
#include "gps_encode.h"

#include <cmath>
#include <cstring>

#include "decode/navinf_gps_fields.h"
#include "x0c_bits.h"

namespace x0c {

/* Writes `value` rounded to the field's resolution. A value outside the
 * field's range wraps as the field's bits do; callers give broadcastable
 * values. */
static void put(uint8_t* sf, const GpsField& f, double value) {
    int n = f.bits();
    uint64_t raw = f.twos ? rawTwos(value, f.scale, n)
                          : rawUnsigned(value, f.scale, n);
    if (f.lenLo > 0) {
        putBits(sf, f.pos, f.len, raw >> f.lenLo);
        putBits(sf, f.posLo, f.lenLo, raw & ((UINT64_C(1) << f.lenLo) - 1));
    } else {
        putBits(sf, f.pos, f.len, raw);
    }
}

/* Fills words 3 to 10 with alternating ones and zeros (data bit 1 of each
 * word a one), the pattern of pages that carry no data. */
static void putAlternating(uint8_t sf[30]) {
    for (int w = 3; w <= 10; w++) putBits(sf, gpsBitPos(w, 24), 24, 0xAAAAAA);
}

GpsSlot gpsSlotAt(double tow) {
    uint32_t i = (uint32_t)std::floor(tow / 6.0);
    uint32_t frame = i / 5;
    GpsSlot s;
    s.subframe = (int)(i % 5) + 1;
    s.page = (int)(frame % 25) + 1;
    s.towEnd = 6 * (i + 1);
    return s;
}

int gpsPageSvid(int subframe, int page) {
    static const unsigned char sf4[25] = {57, 25, 26, 27, 28, 57, 29, 30, 31,
                                          32, 57, 62, 52, 53, 54, 57, 55, 56,
                                          58, 59, 57, 60, 61, 62, 63};
    if (page < 1 || page > 25) return -1;
    if (subframe == 5) return page == 25 ? GPS_SVID_HEALTH5 : page;
    if (subframe == 4) return sf4[page - 1];
    return -1;
}

int gpsUraIndex(double metres) {
    if (!(metres > 0)) return 0;
    int best = 0;
    double bestDiff = 1e300;
    for (int n = 0; n < 16; n++) {
        double d = std::fabs(std::log2(gpsUraMetres(n)) - std::log2(metres));
        if (d < bestDiff) {
            bestDiff = d;
            best = n;
        }
    }
    return best;
}

unsigned gpsHealth6(const tblAlmGpsSat_t& entry) {
    if (entry.onEmpty) return GPS_HEALTH_ABSENT;
    unsigned summary = (entry.healL >> 5) != 0 ? 1u : 0u;
    return (summary << 5) | (entry.healL & 31u);
}

void gpsPutTlmHow(uint8_t sf[30], int id, uint32_t towEnd) {
    const GpsCommonLayout& c = kGpsCommon;
    put(sf, c.preamble, 0x8B);
    put(sf, c.tlmMessage, 0);
    put(sf, c.integrity, 0);
    put(sf, c.tow, (towEnd / 6) % (kGpsWeekSeconds / 6));
    put(sf, c.alert, 0);
    put(sf, c.antiSpoof, 1);
    put(sf, c.subframeId, id);
}

void gpsEncodeSf1(const tblOprGps_t& eph, int uraIndex, int iodc,
                  uint32_t towEnd, uint8_t sf[30]) {
    const GpsSf1Layout& l = kGpsSf1;
    std::memset(sf, 0, 30);
    gpsPutTlmHow(sf, 1, towEnd);
    if (uraIndex < 0) uraIndex = gpsUraIndex(eph.ura);
    if (iodc < 0) iodc = eph.iodc;
    put(sf, l.wn, eph.wn & 1023);
    put(sf, l.l2Codes, 1); /* P code on L2 */
    put(sf, l.ura, uraIndex);
    put(sf, l.health, eph.health & 63);
    put(sf, l.iodcHigh, (iodc >> 8) & 3);
    put(sf, l.l2PFlag, 0);
    put(sf, l.tgd, eph.tgd);
    put(sf, l.iodc, iodc & 255);
    put(sf, l.toc, eph.toc);
    put(sf, l.af2, eph.af2);
    put(sf, l.af1, eph.af1);
    put(sf, l.af0, eph.af0);
}

void gpsEncodeSf2(const tblOprGps_t& eph, uint32_t towEnd, uint8_t sf[30]) {
    const GpsSf2Layout& l = kGpsSf2;
    std::memset(sf, 0, 30);
    gpsPutTlmHow(sf, 2, towEnd);
    put(sf, l.iode, eph.iode);
    put(sf, l.crs, eph.crs);
    put(sf, l.deltaN, eph.deltaN);
    put(sf, l.m0, eph.m0);
    put(sf, l.cuc, eph.cuc);
    put(sf, l.e, eph.e);
    put(sf, l.cus, eph.cus);
    put(sf, l.sqrtA, eph.sqrtA);
    put(sf, l.toe, eph.toe);
    put(sf, l.fitFlag, 0);
    put(sf, l.aodo, 0);
}

void gpsEncodeSf3(const tblOprGps_t& eph, uint32_t towEnd, uint8_t sf[30]) {
    const GpsSf3Layout& l = kGpsSf3;
    std::memset(sf, 0, 30);
    gpsPutTlmHow(sf, 3, towEnd);
    put(sf, l.cic, eph.cic);
    put(sf, l.omega0, eph.omega0);
    put(sf, l.cis, eph.cis);
    put(sf, l.i0, eph.i0);
    put(sf, l.crc, eph.crc);
    put(sf, l.omega, eph.omega);
    put(sf, l.omegaDot, eph.omegaDot);
    put(sf, l.iode, eph.iode);
    put(sf, l.idot, eph.idot);
}

/* Page header of subframes 4 and 5: data ID 01 and the SV ID. */
static void putPageId(uint8_t sf[30], int svid) {
    put(sf, kGpsCommon.dataId, 1);
    put(sf, kGpsCommon.svId, svid);
}

void gpsEncodePage18(const tblTmPrmGps_t& utc, const tblIonGps_t& ion,
                     uint32_t towEnd, uint8_t sf[30]) {
    const GpsPage18Layout& l = kGpsPage18;
    std::memset(sf, 0, 30);
    gpsPutTlmHow(sf, 4, towEnd);
    putPageId(sf, GPS_SVID_PAGE18);
    put(sf, l.alpha0, ion.alpha0);
    put(sf, l.alpha1, ion.alpha1);
    put(sf, l.alpha2, ion.alpha2);
    put(sf, l.alpha3, ion.alpha3);
    put(sf, l.beta0, ion.beta0);
    put(sf, l.beta1, ion.beta1);
    put(sf, l.beta2, ion.beta2);
    put(sf, l.beta3, ion.beta3);
    put(sf, l.a1, utc.a1);
    put(sf, l.a0, utc.a0);
    put(sf, l.tot, utc.tot);
    put(sf, l.wnt, utc.wnt & 255);
    put(sf, l.dtLs, utc.dtLs);
    put(sf, l.wnLsf, utc.wnLsf & 255);
    put(sf, l.dn, utc.dn);
    put(sf, l.dtLsf, utc.dtLsf);
}

void gpsEncodeFillerPage(int id, int svid, uint32_t towEnd, uint8_t sf[30]) {
    std::memset(sf, 0, 30);
    gpsPutTlmHow(sf, id, towEnd);
    putAlternating(sf);
    putPageId(sf, svid);
}

void gpsEncodeAlmPage(const tblAlmGpsSat_t& entry, int prn, int id,
                      uint32_t towEnd, uint8_t sf[30]) {
    if (entry.onEmpty) {
        gpsEncodeFillerPage(id, GPS_SVID_DUMMY, towEnd, sf);
        return;
    }
    const GpsAlmLayout& l = kGpsAlm;
    std::memset(sf, 0, 30);
    gpsPutTlmHow(sf, id, towEnd);
    putPageId(sf, prn);
    put(sf, l.e, entry.e);
    put(sf, l.toa, entry.toa);
    put(sf, l.deltaI, entry.deltaI);
    put(sf, l.omegaDot, entry.omegaDot);
    put(sf, l.health, entry.healL);
    put(sf, l.sqrtA, entry.sqrtA);
    put(sf, l.omega0, entry.omega0);
    put(sf, l.omega, entry.omega);
    put(sf, l.m0, entry.m0);
    put(sf, l.af0, entry.af0);
    put(sf, l.af1, entry.af1);
}

void gpsEncodeHealth5(const tblAlmGps_t& alm, uint32_t towEnd,
                      uint8_t sf[30]) {
    std::memset(sf, 0, 30);
    gpsPutTlmHow(sf, 5, towEnd);
    putPageId(sf, GPS_SVID_HEALTH5);
    put(sf, kGpsHealth.toa, alm.toa);
    put(sf, kGpsHealth.wna, alm.wna & 255);
    for (int k = 0; k < 24; k++)
        put(sf, kGpsHealth.health[k], gpsHealth6(alm.alm[k]));
}

void gpsEncodeHealth4(const tblAlmGps_t& alm, uint32_t towEnd,
                      uint8_t sf[30]) {
    std::memset(sf, 0, 30);
    gpsPutTlmHow(sf, 4, towEnd);
    putPageId(sf, GPS_SVID_HEALTH4);
    for (int k = 0; k < 32; k++) put(sf, kGpsHealth.config[k], 9);
    for (int k = 24; k < 32; k++)
        put(sf, kGpsHealth.health[k], gpsHealth6(alm.alm[k]));
}

bool gpsEncodeAt(const GpsBroadcast& b, double tow, uint8_t sf[30]) {
    GpsSlot s = gpsSlotAt(tow);
    int svid = gpsPageSvid(s.subframe, s.page);
    switch (s.subframe) {
    case 1:
    case 2:
    case 3:
        if (!b.eph) return false;
        if (s.subframe == 1)
            gpsEncodeSf1(*b.eph, b.uraIndex, b.iodc, s.towEnd, sf);
        else if (s.subframe == 2)
            gpsEncodeSf2(*b.eph, s.towEnd, sf);
        else
            gpsEncodeSf3(*b.eph, s.towEnd, sf);
        return true;
    default:
        break;
    }
    if (svid == GPS_SVID_PAGE18) {
        if (!b.utc || !b.ion) return false;
        gpsEncodePage18(*b.utc, *b.ion, s.towEnd, sf);
        return true;
    }
    bool almPage = svid >= 1 && svid <= ZEL_NUM_ALM_GPS;
    if (almPage || svid == GPS_SVID_HEALTH4 || svid == GPS_SVID_HEALTH5) {
        if (!b.alm) return false;
        if (almPage)
            gpsEncodeAlmPage(b.alm->alm[svid - 1], svid, s.subframe,
                             s.towEnd, sf);
        else if (svid == GPS_SVID_HEALTH5)
            gpsEncodeHealth5(*b.alm, s.towEnd, sf);
        else
            gpsEncodeHealth4(*b.alm, s.towEnd, sf);
        return true;
    }
    gpsEncodeFillerPage(s.subframe, svid, s.towEnd, sf);
    return true;
}

}  // namespace x0c
