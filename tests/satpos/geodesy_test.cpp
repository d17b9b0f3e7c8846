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

TEST(Geodesy, EllipsoidsByDatumIndex) {
    geo::Ellipsoid e{1, 2};
    EXPECT_FALSE(geo::datumEllipsoid(2, &e));
    EXPECT_EQ(e.a, 1.0);  // untouched on refusal
    EXPECT_NEAR(ellipsoid(0).e2, 0.00669437999014, 1e-14);
    EXPECT_NEAR(ellipsoid(1).e2, 0.0066943661774, 1e-12);

    // The pole of each ellipsoid lies at its semi-minor axis: checks both
    // the axis and the flattening of each datum.
    double xyz[3];
    double pole[3] = {90.0, 0.0, 0.0};
    geo::blh_xyz(pole, ellipsoid(0), xyz);
    EXPECT_NEAR(xyz[2], kWgsB, 1e-6);
    EXPECT_NEAR(std::hypot(xyz[0], xyz[1]), 0.0, 1e-6);
    geo::blh_xyz(pole, ellipsoid(1), xyz);
    EXPECT_NEAR(xyz[2], kPzB, 1e-6);
    double eq[3] = {0.0, 90.0, 100.0};
    geo::blh_xyz(eq, ellipsoid(1), xyz);
    EXPECT_NEAR(xyz[1], kPzA + 100.0, 1e-6);
    EXPECT_NEAR(xyz[0], 0.0, 1e-6);
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

TEST(Geodesy, PolarAxisAndEquatorShortcuts) {
    geo::Ellipsoid wgs = ellipsoid(0);
    double blh[3] = {1, 2, 3};
    double north[3] = {0.0, 0.0, kWgsB};
    geo::xyz_blh(north, wgs, blh);
    EXPECT_EQ(blh[0], 90.0);
    EXPECT_EQ(blh[1], 0.0);
    EXPECT_NEAR(blh[2], 0.0, 1e-6);

    double south[3] = {0.0, 0.0, -kWgsB - 1000.0};
    geo::xyz_blh(south, wgs, blh);
    EXPECT_EQ(blh[0], -90.0);
    EXPECT_NEAR(blh[2], 1000.0, 1e-6);

    double eq[3] = {kWgsA, 0.0, 0.0};
    geo::xyz_blh(eq, wgs, blh);
    EXPECT_EQ(blh[0], 0.0);
    EXPECT_EQ(blh[1], 0.0);
    EXPECT_EQ(blh[2], 0.0);

    // On the equator the height is the distance from the axis less a.
    double eqWest[3] = {-3.0e6, -4.0e6, 0.0};
    geo::xyz_blh(eqWest, wgs, blh);
    EXPECT_EQ(blh[0], 0.0);
    EXPECT_NEAR(blh[1], 180.0 + std::atan2(4.0, 3.0) * geo::kRadToDeg, 1e-9);
    EXPECT_EQ(blh[2], 5.0e6 - kWgsA);

    double eqBack[3] = {-kWgsA, 0.0, 0.0};
    geo::xyz_blh(eqBack, wgs, blh);
    EXPECT_EQ(blh[1], 180.0);

    // The centre of the Earth has no latitude.
    double centre[3] = {0.0, 0.0, 0.0};
    geo::xyz_blh(centre, wgs, blh);
    EXPECT_TRUE(std::isnan(blh[0]));
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

TEST(Geodesy, ElevationFromTheGeocentricRadius) {
    double rcv[3] = {4627852.3986, 119640.3423, 4372994.4588};
    double rr = std::sqrt(rcv[0] * rcv[0] + rcv[1] * rcv[1] + rcv[2] * rcv[2]);
    double above[3];
    for (int k = 0; k < 3; k++) above[k] = rcv[k] * (1.0 + 2.0e7 / rr);
    EXPECT_NEAR(geo::calcUm(above, rcv), 90.0, 1e-6);
    // Along the geocentric horizon (normal to the radius): 0; below it: < 0.
    double side[3] = {rcv[0] - rcv[2] * 0.1, rcv[1], rcv[2] + rcv[0] * 0.1};
    EXPECT_NEAR(geo::calcUm(side, rcv), 0.0, 1e-9);
    double below[3] = {-rcv[0], -rcv[1], -rcv[2]};
    EXPECT_NEAR(geo::calcUm(below, rcv), -90.0, 1e-6);

    double a[3] = {1, 2, 3}, b[3] = {4, 6, 15};
    EXPECT_EQ(geo::calcRange(a, b), 13.0);
}

TEST(Geodesy, DatumShiftIsATranslationThatUndoesItself) {
    double in[3] = {12345678.901234567, -2345678.9012345, 20000000.123456789};
    double w[3], back[3];
    geo::PZ90_WGS84(in, w);
    EXPECT_EQ(w[0], in[0] - 0.36);
    EXPECT_EQ(w[1], in[1] + 0.08);
    EXPECT_EQ(w[2], in[2] + 0.18);
    geo::WGS84_PZ90(w, back);
    for (int k = 0; k < 3; k++) EXPECT_NEAR(back[k], in[k], 4e-9) << k;
    double zero[3] = {0, 0, 0};
    geo::WGS84_PZ90(zero, w);
    EXPECT_EQ(w[0], 0.36);
    EXPECT_EQ(w[1], -0.08);
    EXPECT_EQ(w[2], -0.18);
}

TEST(GeodesyDeathTest, UnknownDatumAssertsInCrdsat) {
    crdsat_t c;
    double xyz[3] = {kWgsA, 0, 0}, blh[3] = {0, 0, 0};
    EXPECT_DEATH(c.xyz_blh(xyz, 2, blh),
                 "crdsat.*void crdsat_t::xyz_blh\\(double\\*, unsigned int, "
                 "double\\*\\).*false");
    EXPECT_DEATH(c.blh_xyz(blh, 7, xyz),
                 "crdsat.*void crdsat_t::blh_xyz\\(double\\*, unsigned int, "
                 "double\\*\\).*false");
    // The object's own entry points reach both datums.
    c.xyz_blh(xyz, 1, blh);
    EXPECT_EQ(blh[2], kWgsA - kPzA);
}

}  // namespace
