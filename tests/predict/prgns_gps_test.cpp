/*
 * GPS almanac propagation: the age limit, the entries it skips, the mask
 * comparison, the two overloads and the orbit it draws.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "predict/prgns.h"
#include "prgns_real.h"

using namespace prgns_real;

namespace {

const uint32_t kToa = 32u * 4096u;

/* tmZel of the almanac's reference time. */
uint32_t toaTime() { return tmOfGps((int64_t)kGpsWeek * kWeek + kToa - kGpsTo2000); }

struct PrgnsGps : ::testing::Test {
    tblAlmGps_t alm;
    prgns_t p;
    int healthy = 0;
    void SetUp() override {
        gpsAlmanac(kToa, &alm);
        for (int k = 0; k < 32; k++) healthy += alm.alm[k].onEmpty == 0;
        double st[3];
        tlse(st);
        p.set(st, 0, 0, (unsigned)-90);
    }
    uint32_t count(uint32_t t, int leap = kLeapFolded) {
        return p.get(nullptr, &alm, t, leap)->numPrg;
    }
};

}  // namespace

TEST_F(PrgnsGps, UsedUpToNinetyDaysFromItsReferenceTime) {
    const uint32_t T = toaTime();
    ASSERT_GT(healthy, 0);
    EXPECT_EQ(count(T), (uint32_t)healthy);
    EXPECT_EQ(count(T + 7776000u), (uint32_t)healthy);
    EXPECT_EQ(count(T + 7776001u), 0u);
    EXPECT_EQ(count(T - 7776000u), (uint32_t)healthy);
    EXPECT_EQ(count(T - 7776001u), 0u);
    // The almanac weeks count from the rollover of August 1999: a 2024
    // almanac read with the plain leap seconds dates from 2004.
    EXPECT_EQ(count(T, kLeap), 0u);
    // The leap seconds move the reference time: one more second of them
    // makes the last good instant one second too late.
    EXPECT_EQ(count(T + 7776000u, kLeapFolded + 1), 0u);
}

TEST_F(PrgnsGps, SkipsUnhealthyAndEmptyEntries) {
    alm.alm[4].healL = 1;      // PRN 5
    alm.alm[6].onEmpty = 1;    // PRN 7
    alm.alm[6].healL = 0;
    const lsttblPrgSat* l = p.get(nullptr, &alm, toaTime(), kLeapFolded);
    int last = 0;
    for (uint32_t k = 0; k < l->numPrg; k++) {
        const tblPrgSat_t& e = l->prgSat[k];
        EXPECT_NE(e.num, 5);
        EXPECT_NE(e.num, 7);
        EXPECT_GT(e.num, last);   // in PRN order
        last = e.num;
        EXPECT_EQ(e.lit, e.num);
        EXPECT_EQ(e.sys, 1);
        EXPECT_EQ(e.actual, 1);
    }
    int expected = 0;
    for (int k = 0; k < 32; k++) expected += alm.alm[k].onEmpty == 0 && alm.alm[k].healL == 0;
    EXPECT_EQ(l->numPrg, (uint32_t)expected);

    alm.actual = 0;
    EXPECT_EQ(count(toaTime()), 0u);
}

/* A user placed so that one satellite lies exactly in its horizon plane:
 * on the X axis at the satellite's own X, the line of sight has no X
 * component and the elevation is exactly 0. */
TEST_F(PrgnsGps, ElevationEqualToTheMaskIsListed) {
    const uint32_t t = toaTime() + 3600;
    const tblPrgSat_t sat = p.get(nullptr, &alm, t, kLeapFolded)->prgSat[3];
    double user[3] = {sat.x, 0.0, 0.0};
    auto listed = [&](unsigned mask) {
        p.set(user, 0, 0, mask);
        const lsttblPrgSat* l = p.get(nullptr, &alm, t, kLeapFolded);
        for (uint32_t k = 0; k < l->numPrg; k++)
            if (l->prgSat[k].num == sat.num) return +l->prgSat[k].um;
        return -999.0;
    };
    EXPECT_EQ(listed(0), 0.0);
    EXPECT_EQ(listed(1), -999.0);
}

TEST_F(PrgnsGps, BothOverloadsAgree) {
    tblTmPrmGps_t tp;
    std::memset(&tp, 0, sizeof tp);
    tp.length = ZEL_LEN_TMPRMGPS;
    tp.actual = 1;
    tp.dtLs = kLeapFolded;
    const uint32_t t = toaTime() + 86400;
    lsttblPrgSat* l = p.get(nullptr, &alm, t, kLeapFolded);
    const uint32_t n = l->numPrg;
    ASSERT_GT(n, 0u);
    std::vector<tblPrgSat_t> first(l->prgSat, l->prgSat + n);
    l = p.get(nullptr, &alm, &tp, t);
    ASSERT_EQ(l->numPrg, n);
    EXPECT_EQ(std::memcmp(first.data(), l->prgSat, n * sizeof(tblPrgSat_t)), 0);
    // No time parameters, or invalid ones: no GPS.
    EXPECT_EQ(p.get(nullptr, &alm, nullptr, t)->numPrg, 0u);
    tp.actual = 0;
    EXPECT_EQ(p.get(nullptr, &alm, &tp, t)->numPrg, 0u);
}

/* One satellite on a circular orbit: its distance is the semi-major axis,
 * its inertial velocity a n across the radius, and after one orbital
 * period it is back where it was in space. */
TEST_F(PrgnsGps, CircularOrbit) {
    for (int k = 1; k < 32; k++) alm.alm[k].onEmpty = 1;
    tblAlmGpsSat_t& s = alm.alm[0];
    s.onEmpty = 0;
    s.healL = 0;
    s.e = 0.0;
    s.sqrtA = 5153.6;
    const double a = s.sqrtA * s.sqrtA;
    const double n = std::sqrt(3.986005e14 / (a * a * a));
    const double omegaDot = s.omegaDot;
    const uint32_t t0 = toaTime() + 1000;
    const double period = 2 * kPi / n;
    double r0[3] = {0, 0, 0};
    for (int pass = 0; pass < 2; pass++) {
        const uint32_t t = t0 + (pass ? (uint32_t)std::lround(period) : 0u);
        const lsttblPrgSat* l = p.get(nullptr, &alm, t, kLeapFolded);
        ASSERT_EQ(l->numPrg, 1u);
        const tblPrgSat_t& e = l->prgSat[0];
        const double r[3] = {e.x, e.y, e.z};
        const double v[3] = {e.vx - kOmegaE * e.y, e.vy + kOmegaE * e.x, e.vz};
        const double rn = std::sqrt(r[0] * r[0] + r[1] * r[1] + r[2] * r[2]);
        const double vn = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
        EXPECT_NEAR(rn, a, 1e-6);
        EXPECT_NEAR(vn, a * n, 1e-6);
        EXPECT_NEAR((r[0] * v[0] + r[1] * v[1] + r[2] * v[2]) / (rn * vn), 0.0, 1e-12);
        if (pass == 0) {
            std::memcpy(r0, r, sizeof r0);
            continue;
        }
        // Undo the Earth's turn (less the node's own drift) over the
        // period; the fraction of a second lost to rounding moves the
        // satellite by under 4 km.
        const double dt = (double)std::lround(period);
        const double th = (kOmegaE - omegaDot) * dt;
        const double back[3] = {r[0] * std::cos(th) - r[1] * std::sin(th),
                                r[0] * std::sin(th) + r[1] * std::cos(th), r[2]};
        const double d = std::sqrt((back[0] - r0[0]) * (back[0] - r0[0]) +
                                   (back[1] - r0[1]) * (back[1] - r0[1]) +
                                   (back[2] - r0[2]) * (back[2] - r0[2]));
        EXPECT_LT(d, a * n * 0.5 + 1.0);
    }
}
