/*
 * GPS almanac propagation: the age limit, the entries it skips and the
 * mask comparison.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "predict/prgns.h"
#include "prgns_sky.h"

using namespace prgns_sky;

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
        for (int k = 0; k < 32; k++) healthy += alm.alm[k].onEmpty == 0 && alm.alm[k].healL == 0;
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
