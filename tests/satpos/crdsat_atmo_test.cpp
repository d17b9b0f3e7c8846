/*
 * Atmospheric delays: the night-time floor of the ionosphere model, the
 * strict phase bound, the latitude clamp and the polynomial in phi_m, the
 * local-time wrap; the troposphere's switches and its zenith value.
 */
#include <gtest/gtest.h>

#include <cmath>

#include "satpos/crdsat.h"
#include "satpos/geodesy.h"

namespace {

const double kPi = 3.141592653589793;

/* A receiver on WGS-84 at latitude `lat`, longitude 0, and a satellite
 * 20000 km away in the receiver's meridian plane, `el` degrees above the
 * plane normal to the geocentric radius, towards the pole (or the other
 * way for negative `north`). In this plane the east component of the line
 * of sight is exactly 0, so the azimuth is exactly 0 (or pi). */
struct Geometry {
    double rcvBlh[3], rcvXyz[3], sat[3];
    Geometry(double lat, double el, double north = 1.0) {
        rcvBlh[0] = lat; rcvBlh[1] = 0.0; rcvBlh[2] = 100.0;
        geo::Ellipsoid wgs{0, 0};
        geo::datumEllipsoid(0, &wgs);
        geo::blh_xyz(rcvBlh, wgs, rcvXyz);
        rcvXyz[1] = 0.0;
        double rr = std::hypot(rcvXyz[0], rcvXyz[2]);
        double n[3] = {rcvXyz[0] / rr, 0.0, rcvXyz[2] / rr};
        double t[3] = {-n[2] * north, 0.0, n[0] * north};
        double e = el * kPi / 180.0;
        for (int k = 0; k < 3; k++)
            sat[k] = rcvXyz[k] + 2.0e7 * (std::cos(e) * t[k] + std::sin(e) * n[k]);
    }
};

double obliquity(double elDeg) {
    return 1.0 + 16.0 * std::pow(0.53 - elDeg / 180.0, 3.0);
}

struct Coeffs {
    double alpha[4], beta[4];
};

TEST(Klobuchar, NegativeAmplitudeGivesTheNightValueAllDay) {
    crdsat_t c;
    Geometry g(43.56, 35.0);
    Coeffs k = {{-1e-8, -1e-8, 0, 0}, {9.0e4, 1.6e4, -2.0e5, -6.5e4}};
    for (unsigned int tl = 0; tl < 86400; tl += 3600) {
        double d = c.calcKlobuchara(k.alpha, k.beta, g.sat, g.rcvXyz, g.rcvBlh, tl);
        EXPECT_NEAR(d, obliquity(35.0) * 5e-9, 1e-20) << tl;
    }
    // All coefficients zero: the period is raised to 72000 s, the
    // amplitude is 0, and the floor is what remains, even at 14:00.
    Coeffs z = {{0, 0, 0, 0}, {0, 0, 0, 0}};
    double d = c.calcKlobuchara(z.alpha, z.beta, g.sat, g.rcvXyz, g.rcvBlh, 50400);
    EXPECT_NEAR(d, obliquity(35.0) * 5e-9, 1e-20);
}

TEST(Klobuchar, PhaseBoundIsStrict) {
    // Receiver straight under the satellite at latitude 0, longitude 0:
    // the pierce point has longitude 0 and the local time is tl itself.
    // With only alpha0 and beta0 set, the phase is 2 pi (tl - 50400) / PER
    // and PER is beta0 exactly.
    crdsat_t c;
    Geometry g(0.0, 90.0);
    g.rcvBlh[0] = 0.0;
    const double kTwoPi = 6.283185307179586;
    double per = 0.0;
    unsigned int tl = 0;
    for (unsigned int dt = 20000; dt < 36000 && per == 0.0; dt++) {
        double p = kTwoPi * dt / 1.57;
        for (int i = -4; i <= 4; i++) {
            double q = p;
            for (int j = 0; j < std::abs(i); j++) q = std::nextafter(q, i < 0 ? 0.0 : 1e9);
            if (kTwoPi * ((double)(50400 + dt) - 50400.0) / q == 1.57) {
                per = q;
                tl = 50400 + dt;
                break;
            }
        }
    }
    ASSERT_NE(per, 0.0) << "no period puts the phase at exactly 1.57";
    Coeffs k = {{2e-8, 0, 0, 0}, {per, 0, 0, 0}};
    double night = c.calcKlobuchara(k.alpha, k.beta, g.sat, g.rcvXyz, g.rcvBlh, 0);
    double atBound = c.calcKlobuchara(k.alpha, k.beta, g.sat, g.rcvXyz, g.rcvBlh, tl);
    EXPECT_EQ(atBound, night);
    // A hair longer period puts the phase just inside: the cosine series
    // applies and adds a visible daytime term (about 2 % of alpha0).
    k.beta[0] = std::nextafter(per, 1e9);
    double inside = c.calcKlobuchara(k.alpha, k.beta, g.sat, g.rcvXyz, g.rcvBlh, tl);
    EXPECT_GT(inside - night, 0.015 * 2e-8);
    // And the same at the other side of 14:00.
    k.beta[0] = per;
    double before = c.calcKlobuchara(k.alpha, k.beta, g.sat, g.rcvXyz, g.rcvBlh,
                                     50400 - (tl - 50400));
    EXPECT_EQ(before, night);
}

TEST(Klobuchar, LatitudeClampAndPolynomialTerms) {
    // Azimuth 0 (due north in the meridian plane): sin(A/pi) = 0, so the
    // pierce point keeps longitude 0, and at 14:00 the phase is 0. Above
    // the clamp, phi_m is fixed at 0.416 + 0.064 cos(-1.617) whatever the
    // receiver's latitude, and the delay is F (5e-9 + sum alpha_k p_k)
    // with p = 1, phi_m, phi_m^3, phi_m^7.
    crdsat_t c;
    Coeffs k = {{1e-8, 2e-8, 3e-8, 4e-8}, {1.0e5, 0, 0, 0}};
    const double el = 30.0;
    const double phiM = 0.416 + 0.064 * std::cos(-1.617);
    const double amp = 1e-8 + 2e-8 * phiM + 3e-8 * std::pow(phiM, 3) +
                       4e-8 * std::pow(phiM, 7);
    for (double lat : {80.0, 89.0}) {
        Geometry g(lat, el);
        double d = c.calcKlobuchara(k.alpha, k.beta, g.sat, g.rcvXyz, g.rcvBlh, 50400);
        EXPECT_NEAR(d, obliquity(el) * (5e-9 + amp), 1e-15) << lat;
    }
    // Southern clamp: the same with the signs of the phi_m terms.
    const double phiS = -0.416 + 0.064 * std::cos(-1.617);
    const double ampS = 1e-8 + 2e-8 * phiS + 3e-8 * std::pow(phiS, 3) +
                        4e-8 * std::pow(phiS, 7);
    Geometry gs(-85.0, el, -1.0);
    double ds = c.calcKlobuchara(k.alpha, k.beta, gs.sat, gs.rcvXyz, gs.rcvBlh, 50400);
    EXPECT_NEAR(ds, obliquity(el) * (5e-9 + std::max(ampS, 0.0)), 1e-15);
    // Below the clamp the latitude does change the delay.
    Geometry g1(20.0, el), g2(30.0, el);
    double d1 = c.calcKlobuchara(k.alpha, k.beta, g1.sat, g1.rcvXyz, g1.rcvBlh, 50400);
    double d2 = c.calcKlobuchara(k.alpha, k.beta, g2.sat, g2.rcvXyz, g2.rcvBlh, 50400);
    EXPECT_GT(std::fabs(d1 - d2), 1e-10);
}

TEST(Klobuchar, LocalTimeWrapsIntoTheDay) {
    // A satellite to the west puts the pierce point at a negative
    // longitude (about -430 s of local time), so with tl = 0 the local time
    // is negative before the wrap and must come out in the late evening;
    // with tl = 86400 it is the same instant, give or take the second lost
    // to truncation toward zero. Left negative, it would sit beyond the
    // phase bound and give the floor.
    crdsat_t c;
    Geometry g(0.0, 20.0);
    double west[3] = {g.rcvXyz[0] + 1.0e7, -2.0e7, g.rcvXyz[2]};
    Coeffs k = {{3e-8, 0, 0, 0}, {2.0e5, 0, 0, 0}};
    Coeffs none = {{0, 0, 0, 0}, {2.0e5, 0, 0, 0}};
    double a = c.calcKlobuchara(k.alpha, k.beta, west, g.rcvXyz, g.rcvBlh, 0);
    double b = c.calcKlobuchara(k.alpha, k.beta, west, g.rcvXyz, g.rcvBlh, 86400);
    double floor = c.calcKlobuchara(none.alpha, none.beta, west, g.rcvXyz, g.rcvBlh, 0);
    double peak = c.calcKlobuchara(k.alpha, k.beta, west, g.rcvXyz, g.rcvBlh, 50830);
    EXPECT_NEAR(a, b, 1e-3 * b);
    EXPECT_GT(a - floor, 0.3 * (peak - floor));
    EXPECT_LT(a - floor, 0.6 * (peak - floor));
}

TEST(Troposphere, SwitchesAndZenithValue) {
    crdsat_t c;
    tblMeteo m{1, 15.0, 50.0, 1013.25};
    const double T = 288.0;
    const double dz = 2.343 * 1013.25 * (T - 4.12) / (T * 1013.25);
    // At the zenith both mapping functions are 1.
    EXPECT_NEAR(c.calcTrop(&m, 90.0, 2.0e7), dz + 0.15, 1e-12);
    EXPECT_NEAR(dz, 2.31, 0.01);
    // Low elevations map up, roughly as 1 / sin(el).
    double low = c.calcTrop(&m, 10.0, 2.2e7);
    EXPECT_GT(low, 5.0 * (dz + 0.15));
    EXPECT_LT(low, 6.0 * (dz + 0.15));
    // Humidity plays no part.
    tblMeteo wet = m;
    wet.humidity = 100.0;
    EXPECT_EQ(c.calcTrop(&wet, 10.0, 2.2e7), low);
    // No term below the horizon, nor without valid readings.
    EXPECT_EQ(c.calcTrop(&m, -0.001, 2.0e7), 0.0);
    EXPECT_GT(c.calcTrop(&m, 0.0, 2.0e7), 0.0);
    m.actual = 0;
    EXPECT_EQ(c.calcTrop(&m, 45.0, 2.0e7), 0.0);
    m.actual = 2;
    EXPECT_EQ(c.calcTrop(&m, 45.0, 2.0e7), 0.0);
    EXPECT_EQ(c.calcTrop(nullptr, 45.0, 2.0e7), 0.0);
}

}  // namespace
