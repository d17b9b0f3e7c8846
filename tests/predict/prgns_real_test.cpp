/*
 * Almanac prediction against the real sky of 2024-01-01: the almanacs
 * built from the day's broadcast ephemerides (prgns_real.h), propagated by
 * the library, must put every satellite where its ephemeris does, give
 * the elevation, azimuth and Doppler that the ephemeris gives over TLSE,
 * and predict the sky the station recorded.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <string>

#include "predict/prgns.h"
#include "prgns_real.h"
#include "rinex_obs.h"
#include "satpos/geodesy.h"

using namespace prgns_real;

namespace {

const double kDegPerRad = 57.29577951308232;

/* 12:24:32 GPS time on 2024-01-01: second 131072 of week 2295. */
const uint32_t kToa = 32u * 4096u;

double dist(const double* a, const double* b) {
    return std::sqrt((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) +
                     (a[2] - b[2]) * (a[2] - b[2]));
}

/* What the ephemeris says of a satellite seen from TLSE, computed here
 * from first principles: elevation over the plane normal to the
 * station's geocentric radius (the prediction's own definition), azimuth
 * in the frame of the geodetic normal, Doppler of a receiver at rest. */
struct Seen {
    double el, az, dop;
};

Seen seen(const double* sat, const double* vel, double freqMHz) {
    double st[3];
    tlse(st);
    double d[3];
    for (int k = 0; k < 3; k++) d[k] = sat[k] - st[k];
    const double range = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    const double rs = std::sqrt(st[0] * st[0] + st[1] * st[1] + st[2] * st[2]);
    Seen s;
    s.el = std::asin((d[0] * st[0] + d[1] * st[1] + d[2] * st[2]) / (range * rs)) * kDegPerRad;
    /* Geodetic latitude and longitude of TLSE by the satellite
     * computation's transform (the prediction has its own). */
    geo::Ellipsoid wgs;
    geo::datumEllipsoid(0, &wgs);
    double blh[3];
    geo::xyz_blh(st, wgs, blh);
    const double lat = blh[0] / kDegPerRad, lon = blh[1] / kDegPerRad;
    const double north = -std::sin(lat) * std::cos(lon) * d[0] - std::sin(lat) * std::sin(lon) * d[1] +
                         std::cos(lat) * d[2];
    const double east = -std::sin(lon) * d[0] + std::cos(lon) * d[1];
    s.az = std::atan2(east, north) * kDegPerRad;
    if (s.az < 0) s.az += 360.0;
    const double rate = (d[0] * vel[0] + d[1] * vel[1] + d[2] * vel[2]) / range;
    s.dop = -rate / kC * freqMHz * 1e6;
    return s;
}

double angleDiff(double a, double b) {
    double d = std::fmod(std::fabs(a - b), 360.0);
    return d > 180.0 ? 360.0 - d : d;
}

/* A predictor at TLSE (WGS-84, Cartesian) with mask `mask`. */
struct AtTlse {
    prgns_t p;
    explicit AtTlse(int mask) {
        double st[3];
        tlse(st);
        p.set(st, 0, 0, (unsigned)mask);
    }
};

/* Largest differences between predictions and ephemerides. */
struct Worst {
    double pos = 0, el = 0, az = 0, dop = 0;
    int n = 0;
};

void compare(const lsttblPrgSat* l, uint32_t t, Worst& w) {
    for (uint32_t k = 0; k < l->numPrg; k++) {
        const tblPrgSat_t& e = l->prgSat[k];
        const double pred[3] = {e.x, e.y, e.z};
        double ref[3], vref[3];
        double f;
        if (e.sys == 1) {
            const rinex::GpsEph* eph = nearestGps(e.num, t);
            ASSERT_NE(eph, nullptr);
            ASSERT_TRUE(gpsEphState(*eph, t, ref, vref));
            f = 1575.42;
        } else {
            const rinex::GloEph* eph = nearestGlo(e.num, t);
            ASSERT_NE(eph, nullptr);
            gloEphState(*eph, t, ref, vref);
            f = 1602.0 + 0.5625 * eph->freqNum;
        }
        const Seen s = seen(ref, vref, f);
        w.pos = std::max(w.pos, dist(pred, ref));
        w.el = std::max(w.el, std::fabs(s.el - e.um));
        /* Azimuth as an angle on the sky: near the zenith a small
         * displacement turns the azimuth a lot. */
        if (s.el > 0) w.az = std::max(w.az, angleDiff(s.az, e.az) * std::cos(s.el / kDegPerRad));
        w.dop = std::max(w.dop, std::fabs(s.dop - e.dop));
        w.n++;
    }
}

}  // namespace

/*
 * GPS, six hours either side of toa, every 20 minutes, every satellite
 * whatever its elevation (mask -90). Expected: under 1 km, 0.002 degrees,
 * 0.2 Hz.
 */
TEST(PrgnsReal, GpsAlmanacFollowsTheEphemerides) {
    tblAlmGps_t alm;
    gpsAlmanac(kToa, &alm);
    AtTlse at(-90);
    Worst w;
    const uint32_t tToa = tmOfGps((int64_t)kGpsWeek * kWeek + kToa - kGpsTo2000);
    int listed = 0;
    for (int64_t dt = -6 * 3600; dt <= 6 * 3600; dt += 1200) {
        const uint32_t t = (uint32_t)(tToa + dt);
        const lsttblPrgSat* l = at.p.get(nullptr, &alm, t, kLeapFolded);
        listed += (int)l->numPrg;
        compare(l, t, w);
    }
    int healthy = 0;
    for (int p = 0; p < 32; p++) healthy += alm.alm[p].onEmpty == 0;
    EXPECT_GE(healthy, 30);
    EXPECT_EQ(listed, healthy * 37);
    EXPECT_LT(w.pos, 1500.0);
    EXPECT_LT(w.el, 0.05);
    EXPECT_LT(w.az, 0.05);
    EXPECT_LT(w.dop, 1.0);
}

/*
 * GLONASS over the whole day of the file, every 20 minutes, every slot:
 * the almanac of the day's first nodes against the ephemerides. Expected:
 * about 1.2 km at worst (4 km if the short-period terms of the second
 * harmonic were left out), 0.005 degrees, 0.5 Hz.
 */
TEST(PrgnsReal, GloAlmanacFollowsTheEphemerides) {
    tblAlmGlo_t alm = gloAlmanacOfDay();
    int filled = 0;
    for (int k = 0; k < 24; k++) filled += alm.alm[k].onEmpty == 0;
    EXPECT_EQ(filled, 24);
    AtTlse at(-90);
    Worst w;
    for (uint32_t t = kDay0 + 10800; t < kDay0 + 86400 + 10800 - 900; t += 1200) {
        const lsttblPrgSat* l = at.p.get(&alm, nullptr, t, kLeap);
        ASSERT_EQ(l->numPrg, 24u);
        for (uint32_t k = 0; k < 24; k++) {
            EXPECT_EQ(l->prgSat[k].num, k + 1);   // in slot order
            EXPECT_EQ(l->prgSat[k].lit, alm.alm[k].lit);
            EXPECT_EQ(l->prgSat[k].sys, 0);
        }
        compare(l, t, w);
    }
    EXPECT_EQ(w.n, 24 * 72);
    EXPECT_LT(w.pos, 2000.0);
    EXPECT_LT(w.el, 0.05);
    EXPECT_LT(w.az, 0.05);
    EXPECT_LT(w.dop, 1.5);
}

/*
 * The first epoch of the sample recording, 12:00:00 GPS time: every
 * satellite the station tracked is predicted above the horizon, and every
 * satellite predicted above 10 degrees was tracked.
 */
TEST(PrgnsReal, PredictedSkyIsTheRecordedOne) {
    rinex::Diagnostics diag;
    rinex::ObsReader rd(diag);
    ASSERT_TRUE(rd.open(obsPath()));
    rinex::ObsEpoch ep;
    ASSERT_TRUE(rd.next(ep));
    const uint32_t t = tmOfGps(ep.sec2000);
    std::set<std::string> tracked;
    for (const rinex::SatObs& s : ep.sats) tracked.insert(rinex::satName(s.sys, s.prn));
    ASSERT_GE(tracked.size(), 15u);

    tblAlmGps_t gps;
    gpsAlmanac(kToa, &gps);
    tblAlmGlo_t glo = gloAlmanacOfDay();
    AtTlse at(0);
    const lsttblPrgSat* l = at.p.get(&glo, &gps, t, kLeapFolded);
    EXPECT_EQ(l->tm, t);
    std::set<std::string> predicted, high;
    for (uint32_t k = 0; k < l->numPrg; k++) {
        const tblPrgSat_t& e = l->prgSat[k];
        const std::string name = rinex::satName(e.sys == 1 ? 'G' : 'R', e.num);
        predicted.insert(name);
        if (e.um > 10.0) high.insert(name);
    }
    for (const std::string& s : tracked) EXPECT_TRUE(predicted.count(s)) << s << " tracked";
    for (const std::string& s : high) EXPECT_TRUE(tracked.count(s)) << s << " predicted";
}
