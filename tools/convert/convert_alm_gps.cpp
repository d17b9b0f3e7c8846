/*
 * GPS almanac from the broadcast ephemerides.
 */
#include <cmath>
#include <cstring>

#include "convert_alm.h"
#include "convert_orbit.h"

namespace cvt {

namespace {

const int64_t kToaStep = 4096;

/* An angle brought into [-pi, pi), the range of the almanac's
 * semicircle fields. */
double wrapPi(double a) {
    a = std::fmod(a + kPi, 2.0 * kPi);
    if (a < 0) a += 2.0 * kPi;
    return a - kPi;
}

/* A value kept inside what a signed field of `bits` bits at `scale` can
 * carry. */
double clampField(double v, int bits, double scale) {
    double lim = (std::ldexp(1.0, bits - 1) - 1.0) * scale;
    return v > lim ? lim : v < -lim ? -lim : v;
}

/* The 8-bit almanac health from the 6-bit ephemeris health: the summary
 * bit of the navigation data stands for all three data bits. */
uint8_t almanacHealth(uint8_t health6) {
    return (uint8_t)(((health6 & 0x20) ? 0xE0 : 0) | (health6 & 0x1F));
}

}  // namespace

void gpsAlmanacEntry(const GpsRecord& rec, int64_t toaAbs, tblAlmGpsSat_t& out) {
    const tblOprGps_t& t = rec.tbl;
    std::memset(&out, 0, sizeof out);
    out.length = ZEL_LEN_ALMGPS_SAT;
    out.onEmpty = 0;
    out.healL = almanacHealth(t.health);
    out.toa = (uint32_t)floorMod(toaAbs, kWeek);
    double dtE = (double)(toaAbs - rec.toe);
    double dtC = (double)(toaAbs - rec.toc);
    double a = t.sqrtA * t.sqrtA;
    double n = std::sqrt(kGpsGM / (a * a * a)) + t.deltaN;
    /* Both node longitudes count the Earth's rotation from the start of
     * their own week. */
    int64_t weekE = floorDiv(rec.toe, kWeek), weekA = floorDiv(toaAbs, kWeek);
    out.af0 = clampField(t.af0 + t.af1 * dtC, 11, std::ldexp(1.0, -20));
    out.af1 = clampField(t.af1, 11, std::ldexp(1.0, -38));
    out.m0 = wrapPi(t.m0 + n * dtE);
    out.omega = wrapPi(t.omega);
    out.omega0 = wrapPi(t.omega0 + t.omegaDot * dtE + kOmegaEarth * (double)(kWeek * (weekE - weekA)));
    out.sqrtA = t.sqrtA;
    out.omegaDot = t.omegaDot;
    out.deltaI = t.i0 + t.idot * dtE - 0.3 * kPi;
    out.e = t.e;
}

void gpsAlmanac(const NavData& nav, int64_t gpsT, tblAlmGps_t& out) {
    std::memset(&out, 0, sizeof out);
    out.length = ZEL_LEN_ALMGPS;
    out.actual = 1;
    int64_t week = floorDiv(gpsT, kWeek);
    int64_t toa = (floorMod(gpsT, kWeek) + kToaStep - 1) / kToaStep * kToaStep;
    if (toa >= kWeek) {
        toa = 0;
        week++;
    }
    int64_t toaAbs = week * kWeek + toa;
    out.toa = (uint32_t)toa;
    /* The decoders extend the 8-bit broadcast week with the 10-bit week
     * of subframe 1, so the table holds the week modulo 1024. */
    out.wna = (uint32_t)(week & 1023);
    for (int prn = 1; prn <= ZEL_NUM_ALM_GPS; prn++) {
        tblAlmGpsSat_t& e = out.alm[prn - 1];
        const GpsRecord* r = nav.gpsNearest(prn, gpsT);
        if (r) {
            gpsAlmanacEntry(*r, toaAbs, e);
        } else {
            std::memset(&e, 0, sizeof e);
            e.length = ZEL_LEN_ALMGPS_SAT;
            e.onEmpty = 1;
        }
    }
}

}  // namespace cvt
