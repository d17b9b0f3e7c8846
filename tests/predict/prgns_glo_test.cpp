/*
 * GLONASS almanac propagation: the orbit at the node passage, the
 * velocity against the motion of the position, the entries it lists and
 * their order, the almanac date and the age limit.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "predict/prgns.h"
#include "prgns_sky.h"

using namespace prgns_sky;

namespace {

struct PrgnsGlo : ::testing::Test {
    tblAlmGlo_t alm;
    prgns_t p;
    void SetUp() override {
        alm = gloAlmanacOfDay();
        double st[3];
        tlse(st);
        p.set(st, 0, 0, (unsigned)-90);
    }
    /* Only slot `slot` (entry slot - 1) stays usable. */
    void only(int slot) {
        for (int k = 0; k < 24; k++)
            if (k != slot - 1) alm.alm[k].onSystem = 0;
    }
    const lsttblPrgSat* at(uint32_t t) { return p.get(&alm, nullptr, t, 0); }
};

}  // namespace

/* At its node passage a satellite crosses the equator, rising, at the
 * almanac's longitude. */
TEST_F(PrgnsGlo, AtTheNodeTheOrbitIsTheAlmanacs) {
    for (int slot : {1, 9, 17}) {
        SetUp();
        only(slot);
        tblAlmGloSat_t& s = alm.alm[slot - 1];
        s.lambdaT = std::round(s.lambdaT);
        const lsttblPrgSat* l = at(kDay0 + (uint32_t)s.lambdaT);
        ASSERT_EQ(l->numPrg, 1u);
        const tblPrgSat_t& e = l->prgSat[0];
        EXPECT_NEAR(+e.z, 0.0, 0.1) << slot;
        EXPECT_GT(+e.vz, 3000.0) << slot;
        EXPECT_NEAR(std::atan2(+e.y, +e.x), s.lambda * kPi, 1e-9) << slot;
        // About half a draconic period later it crosses going down (the
        // eccentricity moves that crossing by some tens of seconds).
        const uint32_t half = kDay0 + (uint32_t)std::lround(s.lambdaT + (43200.0 + s.dT) / 2);
        EXPECT_GT(+at(half - 120)->prgSat[0].z, 0.0) << slot;
        EXPECT_LT(+at(half + 120)->prgSat[0].z, 0.0) << slot;
        EXPECT_LT(+at(half)->prgSat[0].vz, -3000.0) << slot;
    }
}

/* Entries in broadcast order, listed by slot; unusable ones skipped. */
TEST_F(PrgnsGlo, ListsUsableSatellitesBySlot) {
    tblAlmGlo_t reversed = alm;
    for (int k = 0; k < 24; k++) reversed.alm[k] = alm.alm[23 - k];
    alm = reversed;
    alm.alm[0].onSystem = 0;    // slot 24: not operational
    alm.alm[5].onEmpty = 1;     // slot 19: empty
    alm.alm[10].onErrData = 1;  // slot 14: a value out of range
    alm.alm[15].onEmpty = 2;    // slot 9: all-zero orbit
    const lsttblPrgSat* l = at(kDay0 + 40000);
    ASSERT_EQ(l->numPrg, 20u);
    int last = 0;
    for (uint32_t k = 0; k < l->numPrg; k++) {
        const tblPrgSat_t& e = l->prgSat[k];
        EXPECT_GT(e.num, last);
        last = e.num;
        EXPECT_TRUE(e.num != 24 && e.num != 19 && e.num != 14 && e.num != 9) << +e.num;
        EXPECT_EQ(e.lit, alm.alm[24 - e.num].lit);
        EXPECT_EQ(e.sys, 0);
        EXPECT_EQ(e.actual, 1);
    }
    alm.actual = 0;
    EXPECT_EQ(at(kDay0 + 40000)->numPrg, 0u);
}

/* The same orbit dated by the last day of the previous four-year
 * interval, asked for one day earlier, is the same sky. */
TEST_F(PrgnsGlo, AlmanacDateAcrossFourYearIntervals) {
    const uint32_t t = kDay0 + 50000;
    const tblPrgSat_t* e = at(t)->prgSat;
    std::vector<tblPrgSat_t> a(e, e + 24);
    alm.n4 = kN4 - 1;
    alm.na = 1461;
    const lsttblPrgSat* l = at(t - 86400);
    ASSERT_EQ(l->numPrg, 24u);
    EXPECT_EQ(std::memcmp(a.data(), l->prgSat, sizeof(tblPrgSat_t) * 24), 0);
    // No date, no prediction.
    alm.n4 = 0;
    EXPECT_EQ(at(t)->numPrg, 0u);
    alm.n4 = kN4;
    alm.na = 0;
    EXPECT_EQ(at(t)->numPrg, 0u);
}

/* Like a GPS almanac, one is used up to 90 days from its node passage. */
TEST_F(PrgnsGlo, UsedUpToNinetyDays) {
    only(3);
    alm.alm[2].lambdaT = 20000.0;
    const uint32_t node = kDay0 + 20000;
    EXPECT_EQ(at(node + 7776000u)->numPrg, 1u);
    EXPECT_EQ(at(node + 7776001u)->numPrg, 0u);
    EXPECT_EQ(at(node - 7776000u)->numPrg, 1u);
    EXPECT_EQ(at(node - 7776001u)->numPrg, 0u);
}
