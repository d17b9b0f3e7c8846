/*
 * Geodetic transforms: the ellipsoids, the round trips, the odd cases of
 * the Cartesian-to-geodetic conversion, the topocentric order, elevation
 * and the datum shift; and the assertion on an unknown datum.
 */
#include <gtest/gtest.h>

#include <cmath>

#include "satpos/crdsat.h"
#include "satpos/geodesy.h"

namespace {

const double kWgsA = 6378137.0;
const double kWgsB = 6378137.0 * (1.0 - 1.0 / 298.257223563);
const double kPzA = 6378136.0;
const double kPzB = 6378136.0 * (1.0 - 1.0 / 298.25784);

geo::Ellipsoid ellipsoid(unsigned int datum) {
    geo::Ellipsoid e{0, 0};
    EXPECT_TRUE(geo::datumEllipsoid(datum, &e));
    return e;
}

TEST(Geodesy, RoundTripOnBothDatums) {
    for (unsigned int datum = 0; datum < 2; datum++) {
        geo::Ellipsoid ell = ellipsoid(datum);
        for (double lat = -89.0; lat <= 89.0; lat += 7.3) {
            for (double lon = 0.5; lon < 360.0; lon += 41.7) {
                for (double h : {-400.0, 0.0, 207.2, 8848.0, 20.2e6}) {
                    double blh[3] = {lat, lon, h}, xyz[3], back[3];
                    geo::blh_xyz(blh, ell, xyz);
                    geo::xyz_blh(xyz, ell, back);
                    EXPECT_NEAR(back[0], lat, 1e-6 * geo::kRadToDeg)
                        << lat << " " << lon << " " << h;
                    EXPECT_NEAR(back[1], lon, 1e-9) << lat << " " << lon;
                    EXPECT_NEAR(back[2], h, 2e-3) << lat << " " << lon << " " << h;
                }
            }
        }
    }
}

TEST(Geodesy, LongitudeQuadrantsAndTheUntouchedAxisCase) {
    geo::Ellipsoid wgs = ellipsoid(0);
    const double z = 3.0e6, r = 3.5e6;
    struct Case {
        double x, y, lon;
    } cases[] = {
        {r, r, 45.0}, {-r, r, 135.0}, {-r, -r, 225.0}, {r, -r, 315.0},
        {-1.0, -1.0, 225.0}, {r, 0.0, 0.0}, {-r, 0.0, 180.0},
    };
    for (const Case& c : cases) {
        double xyz[3] = {c.x, c.y, z}, blh[3] = {0, -1, 0};
        geo::xyz_blh(xyz, wgs, blh);
        EXPECT_NEAR(blh[1], c.lon, 1e-9) << c.x << " " << c.y;
    }
    // X exactly 0 with Y != 0: no longitude rule applies and the caller's
    // value stays; latitude and height are still computed.
    for (double y : {5.0, 4.0e6, -4.0e6}) {
        double xyz[3] = {0.0, y, z}, blh[3] = {-7, 123.25, -7};
        geo::xyz_blh(xyz, wgs, blh);
        EXPECT_EQ(blh[1], 123.25) << y;
        EXPECT_NE(blh[0], -7.0);
        EXPECT_NE(blh[2], -7.0);
    }
    double onAxisEq[3] = {0.0, 6.4e6, 0.0}, blh[3] = {9, 77.5, 9};
    geo::xyz_blh(onAxisEq, wgs, blh);
    EXPECT_EQ(blh[1], 77.5);
    EXPECT_EQ(blh[0], 0.0);
    EXPECT_EQ(blh[2], 6.4e6 - kWgsA);
}

TEST(Geodesy, TopocentricOrderIsNorthUpEast) {
    // At latitude 0, longitude 0: X is up, Y is east, Z is north.
    double blh[3] = {0.0, 0.0, 0.0}, top[3];
    double vx[3] = {1, 0, 0}, vy[3] = {0, 1, 0}, vz[3] = {0, 0, 1};
    geo::gcsk_tcsk(blh, vx, top);
    EXPECT_NEAR(top[0], 0, 1e-15); EXPECT_NEAR(top[1], 1, 1e-15); EXPECT_NEAR(top[2], 0, 1e-15);
    geo::gcsk_tcsk(blh, vy, top);
    EXPECT_NEAR(top[0], 0, 1e-15); EXPECT_NEAR(top[1], 0, 1e-15); EXPECT_NEAR(top[2], 1, 1e-15);
    geo::gcsk_tcsk(blh, vz, top);
    EXPECT_NEAR(top[0], 1, 1e-15); EXPECT_NEAR(top[1], 0, 1e-15); EXPECT_NEAR(top[2], 0, 1e-15);

    // At latitude 45, longitude 90: +Y points up-and-south, -X east.
    double b2[3] = {45.0, 90.0, 10.0};
    geo::gcsk_tcsk(b2, vy, top);
    EXPECT_NEAR(top[0], -std::sqrt(0.5), 1e-15);
    EXPECT_NEAR(top[1], std::sqrt(0.5), 1e-15);
    EXPECT_NEAR(top[2], 0.0, 1e-15);
    double mx[3] = {-1, 0, 0};
    geo::gcsk_tcsk(b2, mx, top);
    EXPECT_NEAR(top[2], 1.0, 1e-15);
    // At latitude 30, longitude 0: +X is up-and-south.
    double b3[3] = {30.0, 0.0, 0.0};
    geo::gcsk_tcsk(b3, vx, top);
    EXPECT_NEAR(top[0], -0.5, 1e-15);
    EXPECT_NEAR(top[1], std::sqrt(0.75), 1e-15);
    EXPECT_NEAR(top[2], 0.0, 1e-15);
    // The station's own array comes back in degrees (to the last bits).
    EXPECT_NEAR(b2[0], 45.0, 1e-12);
    EXPECT_NEAR(b2[1], 90.0, 1e-12);
    EXPECT_EQ(b2[2], 10.0);
}

}  // namespace
