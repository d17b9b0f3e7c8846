/*
 * prgns_t as a whole: a new object, the user position, clear, the room of
 * the list, and the prediction made straight from a converter list.
 */
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "predict/prgns.h"
#include "prgns_list.h"
#include "prgns_sky.h"
#include "satpos/crdsat.h"

using namespace prgns_sky;

namespace {

const uint32_t kToa = 32u * 4096u;
const uint32_t kNoon = kDay0 + 15 * 3600;   /* 12:00 UTC */

/* The GPS almanac of the day with every PRN filled and healthy: the empty
 * and unhealthy ones take the orbit of a good one a quarter turn further on. */
void fullGpsAlmanac(tblAlmGps_t* alm) {
    gpsAlmanac(kToa, alm);
    int model = 0;
    while (alm->alm[model].onEmpty != 0 || alm->alm[model].healL != 0) model++;
    for (int k = 0; k < 32; k++) {
        if (alm->alm[k].onEmpty == 0 && alm->alm[k].healL == 0) continue;
        alm->alm[k] = alm->alm[model];
        alm->alm[k].m0 += 1.5;
    }
}

}  // namespace

/* Every satellite of both systems at mask -90: the list holds all 56,
 * GLONASS first; propagating into a full list adds nothing and writes
 * nothing past its end. */
TEST(Prgns, RoomForEverySatelliteOfBothSystems) {
    prgns_t p;
    double st[3];
    tlse(st);
    p.set(st, 0, 0, (unsigned)-90);
    tblAlmGlo_t glo = gloAlmanacOfDay();
    tblAlmGps_t gps;
    fullGpsAlmanac(&gps);
    const uint32_t t = tmOfGps((int64_t)kGpsWeek * kWeek + kToa - kGpsTo2000);
    lsttblPrgSat* l = p.get(&glo, &gps, t, kLeapFolded);
    ASSERT_EQ(l->numPrg, (uint32_t)ZEL_NUM_PRGSAT);
    for (int k = 0; k < 24; k++) EXPECT_EQ(l->prgSat[k].sys, 0);
    for (int k = 24; k < 56; k++) EXPECT_EQ(l->prgSat[k].num, k - 23);
    std::vector<tblPrgSat_t> full(l->prgSat, l->prgSat + 56);
    p.prgnsAlmnGps(&gps, kLeapFolded, t, l);
    p.prgnsAlmnGlo(&glo, t, l);
    EXPECT_EQ(l->numPrg, (uint32_t)ZEL_NUM_PRGSAT);
    EXPECT_EQ(std::memcmp(full.data(), l->prgSat, sizeof(tblPrgSat_t) * 56), 0);
}

/*
 * Straight from a converter list: the time is that of the first GLONASS
 * satellite (else the first GPS one), the almanacs are the list's, and
 * GPS is predicted only when the list brought the time parameters.
 */
TEST(Prgns, GetFromAConverterList) {
    std::unique_ptr<AlmList> l(new AlmList);
    std::unique_ptr<prgns_t> p(new prgns_t);
    double st[3];
    tlse(st);
    p->set(st, 0, 0, 0);
    const tblAlmGlo_t& day = gloAlmanacOfDay();
    tblAlmGps_t gps;
    gpsAlmanac(kToa, &gps);
    const uint32_t t = kNoon;

    *l->glo(3, kN4, kNa, 100.0, t) = day;
    *l->gps(12, kWna, kToa, 100.0, t + 5, true, 0, kLeapFolded) = gps;
    p->get(&l->lst);
    const lsttblPrgSat* r = p->getList();
    EXPECT_EQ(r->tm, t);
    ASSERT_GT(r->numPrg, 10u);
    EXPECT_EQ(r->prgSat[0].sys, 0);
    EXPECT_EQ(r->prgSat[r->numPrg - 1].sys, 1);
    // The same as asking with the almanacs themselves.
    std::vector<tblPrgSat_t> a(r->prgSat, r->prgSat + r->numPrg);
    tblAlmGlo_t glo = day;
    const lsttblPrgSat* direct = p->get(&glo, &gps, t, kLeapFolded);
    ASSERT_EQ(direct->numPrg, a.size());
    EXPECT_EQ(std::memcmp(a.data(), direct->prgSat, sizeof(tblPrgSat_t) * a.size()), 0);

    // GPS alone: its time, and no GLONASS.
    l->reset();
    *l->gps(12, kWna, kToa, 100.0, t + 5, true, 0, kLeapFolded) = gps;
    p->get(&l->lst);
    EXPECT_EQ(r->tm, t + 5);
    ASSERT_GT(r->numPrg, 0u);
    for (uint32_t k = 0; k < r->numPrg; k++) EXPECT_EQ(r->prgSat[k].sys, 1);

    // GLONASS alone: the GPS almanac is still held, but without the time
    // parameters of this list GPS is not predicted.
    l->reset();
    *l->glo(3, kN4, kNa, 100.0, t) = day;
    p->get(&l->lst);
    EXPECT_EQ(p->getNumAlmGps(), 12);
    ASSERT_GT(r->numPrg, 0u);
    for (uint32_t k = 0; k < r->numPrg; k++) EXPECT_EQ(r->prgSat[k].sys, 0);

    // Nothing in the list: no time, no prediction.
    l->reset();
    p->get(&l->lst);
    EXPECT_EQ(r->tm, 0u);
    EXPECT_EQ(r->numPrg, 0u);
}
