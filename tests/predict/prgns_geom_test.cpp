/*
 * Visibility geometry: elevation, delay, Doppler, azimuth and the
 * coordinate conversions of the prediction.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "predict/prgns.h"
#include "satpos/crdsat.h"

namespace {

const double kC = 299792458.0;

/* TLSE, WGS-84. */
double kTlse[3] = {4627852.3986, 119640.3423, 4372994.4588};

/* A point `up` metres above `user` (along its geocentric radius, or
 * along the ellipsoid normal when `normal`), shifted `east` and `north`
 * metres in the station's geodetic frame. */
void around(const double* user, double up, double east, double north, prgns_t& p, double* out,
            bool normal = false) {
    double blh[3];
    p.xyz_blh(const_cast<double*>(user), 0, blh);
    const double B = blh[0] / 57.29577951308232, L = blh[1] / 57.29577951308232;
    const double r = std::sqrt(user[0] * user[0] + user[1] * user[1] + user[2] * user[2]);
    double u[3] = {user[0] / r, user[1] / r, user[2] / r};
    if (normal) {
        u[0] = std::cos(B) * std::cos(L);
        u[1] = std::cos(B) * std::sin(L);
        u[2] = std::sin(B);
    }
    const double e[3] = {-std::sin(L), std::cos(L), 0.0};
    const double n[3] = {-std::sin(B) * std::cos(L), -std::sin(B) * std::sin(L), std::cos(B)};
    for (int k = 0; k < 3; k++) out[k] = user[k] + up * u[k] + east * e[k] + north * n[k];
}

}  // namespace

TEST(PrgnsGeom, ElevationAndDelay) {
    prgns_t p;
    double sat[3];
    around(kTlse, 20000e3, 0, 0, p, sat);
    EXPECT_NEAR(p.calcUm(sat, kTlse), 90.0, 1e-9);
    EXPECT_NEAR(p.calcDelay(sat, kTlse), 20000e3 / kC, 1e-15);
    EXPECT_NEAR(p.calcDelay(sat, kTlse), 0.0667, 1e-4);
    // Level with the user along the geocentric plane: 0; 45 degrees up.
    around(kTlse, 0, 1000e3, 0, p, sat);
    EXPECT_NEAR(p.calcUm(sat, kTlse), 0.0, 1e-9);
    around(kTlse, 1000e3, 0, 1000e3, p, sat);
    EXPECT_NEAR(p.calcUm(sat, kTlse), 45.0, 0.2);  // north in the geodetic frame
    around(kTlse, 1000e3, 1000e3, 0, p, sat);
    EXPECT_NEAR(p.calcUm(sat, kTlse), 45.0, 1e-9);  // east is normal to both
}

TEST(PrgnsGeom, DopplerSignAndCarrier) {
    prgns_t p;
    double sat[3];
    around(kTlse, 20000e3, 0, 0, p, sat);
    double r = std::sqrt(kTlse[0] * kTlse[0] + kTlse[1] * kTlse[1] + kTlse[2] * kTlse[2]);
    // Falling straight towards the user at 1000 m/s: approaching, so
    // positive; sideways motion adds nothing.
    double v[3];
    for (int k = 0; k < 3; k++) v[k] = -1000.0 * kTlse[k] / r;
    const double perHz = 1000.0 / kC * 1e6;
    EXPECT_NEAR(p.calcDop(sat, v, 1, 7, kTlse), perHz * 1575.42, 1e-6);
    EXPECT_NEAR(p.calcDop(sat, v, 0, 0, kTlse), perHz * 1602.0, 1e-6);
    EXPECT_NEAR(p.calcDop(sat, v, 0, 24, kTlse), perHz * (1602.0 + 13.5), 1e-6);
    EXPECT_NEAR(p.calcDop(sat, v, 0, 31, kTlse), perHz * (1602.0 - 0.5625), 1e-6);
    EXPECT_NEAR(p.calcDop(sat, v, 0, 25, kTlse), perHz * (1602.0 - 7 * 0.5625), 1e-6);
    for (int k = 0; k < 3; k++) v[k] = -v[k];
    EXPECT_NEAR(p.calcDop(sat, v, 1, 1, kTlse), -perHz * 1575.42, 1e-6);
    double side[3];
    around(kTlse, 0, 1000.0, 0, p, side);
    for (int k = 0; k < 3; k++) v[k] = side[k] - kTlse[k];
    EXPECT_NEAR(p.calcDop(sat, v, 1, 1, kTlse), 0.0, 1e-6);
}

TEST(PrgnsGeom, AzimuthRunsFromNorthThroughEast) {
    prgns_t p;
    p.set(kTlse, 0, 0, 0);
    double* user = const_cast<double*>(p.getPnt());
    double sat[3];
    struct { double east, north, az; } cases[] = {
        {0, 1e6, 0}, {1e6, 1e6, 45}, {1e6, 0, 90}, {0, -1e6, 180}, {-1e6, 0, 270},
        {-1e6, 1e6, 315},
        // Just west of north: -0.5 degrees comes back as 359.5.
        {-std::tan(0.5 / 57.29577951308232) * 1e6, 1e6, 359.5},
    };
    for (const auto& c : cases) {
        around(user, 5e6, c.east, c.north, p, sat, true);
        EXPECT_NEAR(p.calcAz(sat, user, 0), c.az, 1e-6) << c.east << " " << c.north;
    }
    // Exactly north of a point on the prime meridian stays 0, not 360.
    double onMeridian[3] = {4500000.0, 0.0, 4500000.0};
    p.set(onMeridian, 0, 0, 0);
    double north[3] = {4000000.0, 0.0, 9000000.0};
    EXPECT_EQ(p.calcAz(north, onMeridian, 0), 0.0);
}
