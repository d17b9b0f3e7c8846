/*
 * prgns_t as a whole: a new object, the user position, clear, the room of
 * the list, and the prediction made straight from a converter list.
 */
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "predict/prgns.h"
#include "prgns_list.h"
#include "prgns_real.h"
#include "satpos/crdsat.h"

using namespace prgns_real;

namespace {

const uint32_t kToa = 32u * 4096u;
const uint32_t kNoon = kDay0 + 15 * 3600;   /* 12:00 UTC */

/* The GPS almanac of the day with every PRN filled: the empty ones take
 * the orbit of a filled one a quarter turn further on. */
void fullGpsAlmanac(tblAlmGps_t* alm) {
    gpsAlmanac(kToa, alm);
    int model = 0;
    while (alm->alm[model].onEmpty != 0) model++;
    for (int k = 0; k < 32; k++) {
        if (alm->alm[k].onEmpty == 0) continue;
        alm->alm[k] = alm->alm[model];
        alm->alm[k].m0 += 1.5;
    }
}

}  // namespace

TEST(Prgns, NewObject) {
    prgns_t p;
    const lsttblPrgSat* l = p.getList();
    EXPECT_EQ(l->length, ZEL_LEN_LSTPRGSAT);
    EXPECT_EQ(l->numPrg, 0u);
    EXPECT_EQ(l->tm, 0u);
    EXPECT_EQ(l->posType + l->posSys + l->posMask, 0);
    EXPECT_EQ(p.getNumAlmGlo(), -1);
    EXPECT_EQ(p.getNumAlmGps(), -1);
    // The held tables carry their lengths, entries included.
    std::unique_ptr<AlmList> none(new AlmList);
    const tblAlmGlo_t* g = p.getAlmanGlo(&none->lst);
    EXPECT_EQ(g->length, ZEL_LEN_ALMGLO);
    EXPECT_EQ(g->alm[23].length, ZEL_LEN_ALMGLO_SAT);
    const tblAlmGps_t* s = p.getAlmanGps0(&none->lst);
    EXPECT_EQ(s->length, ZEL_LEN_ALMGPS);
    EXPECT_EQ(s->alm[31].length, ZEL_LEN_ALMGPS_SAT);
    EXPECT_EQ(p.getTmPrmGps()->length, ZEL_LEN_TMPRMGPS);

    // Nothing is predicted before the position is set.
    tblAlmGlo_t glo = gloAlmanacOfDay();
    l = p.get(&glo, nullptr, kNoon, kLeap);
    EXPECT_EQ(l->numPrg, 0u);
    EXPECT_EQ(l->tm, kNoon);
}

TEST(Prgns, SetKeepsWhatItIsGiven) {
    prgns_t p;
    double xyz[3] = {4627852.5, 119640.25, 4372994.125};
    p.set(xyz, 0, 1, 300);
    const lsttblPrgSat* l = p.getList();
    EXPECT_EQ(std::memcmp(p.getPnt(), xyz, sizeof xyz), 0);
    EXPECT_EQ(std::memcmp(l->pos, xyz, sizeof xyz), 0);
    EXPECT_EQ(l->posType, 0);
    EXPECT_EQ(l->posSys, 1);
    EXPECT_EQ(l->posMask, 300 % 256);
    EXPECT_EQ(p.getMask(), 300.0);

    // Geodetic: the list keeps the degrees, the object the Cartesian form.
    double blh[3] = {43.5607, 1.4809, 207.5}, want[3];
    crdsat_t c;
    c.blh_xyz(blh, 0, want);
    p.set(blh, 1, 0, 5);
    EXPECT_EQ(std::memcmp(p.getPnt(), want, sizeof want), 0);
    EXPECT_EQ(std::memcmp(l->pos, blh, sizeof blh), 0);
    EXPECT_EQ(l->posType, 1);

    // A negative mask lists satellites below the horizon down to it.
    p.set(blh, 1, 0, (unsigned)-5);
    EXPECT_EQ(p.getMask(), -5.0);
    EXPECT_EQ(l->posMask, 251);
    tblAlmGlo_t glo = gloAlmanacOfDay();
    l = p.get(&glo, nullptr, kNoon, kLeap);
    int below = 0;
    for (uint32_t k = 0; k < l->numPrg; k++) {
        EXPECT_GE(+l->prgSat[k].um, -5.0);
        below += l->prgSat[k].um < 0;
    }
    EXPECT_GT(below, 0);
}

TEST(Prgns, ClearKeepsTheSettingUp) {
    prgns_t p;
    double st[3];
    tlse(st);
    p.set(st, 0, 0, 10);
    tblAlmGlo_t glo = gloAlmanacOfDay();
    const uint32_t n = p.get(&glo, nullptr, kNoon, kLeap)->numPrg;
    ASSERT_GT(n, 0u);
    p.clear();
    EXPECT_EQ(p.getList()->numPrg, 0u);
    EXPECT_EQ(p.getList()->tm, 0u);
    EXPECT_EQ(p.getMask(), 10.0);
    EXPECT_EQ(std::memcmp(p.getPnt(), st, sizeof st), 0);
    EXPECT_EQ(p.get(&glo, nullptr, kNoon, kLeap)->numPrg, n);
}

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
