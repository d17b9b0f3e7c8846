/*
 * The epoch driver: fresh state, the order of rows in list 0, refused
 * rows reused, the list per signal and its ephemeris source, clear, and
 * the reference point in its four forms with its two odd cases.
 */
#include <gtest/gtest.h>

#include <cstring>

#include "satpos/crdsat.h"
#include "satpos/geodesy.h"
#include "satpos_fixture.h"

namespace {

using namespace satpos_test;

/* A converter list of two GLONASS and three GPS satellites at one epoch
 * (00:00:30 UTC of 2009-04-01). */
struct Epoch {
    GloSat glo[2];
    GpsSat gps[3];
    tblMeteo meteo{0, 0, 0, 0};
    lsttblSat_t lst;
    unsigned int tm = tmOfGlo(10830);

    Epoch() {
        std::memset(&lst, 0, sizeof lst);
        glo[1].hdr.num = 9;
        gps[1].hdr.num = 5;
        gps[2].hdr.num = 31;
        for (int k = 0; k < 2; k++) glo[k].link(&lst.tblGlo[k]);
        for (int k = 0; k < 3; k++) gps[k].link(&lst.tblGps[k]);
        lst.numGlo = 2;
        lst.numGps = 3;
        lst.meteo = &meteo;
    }
};

TEST(CrdSat, GetPutsGlonassRowsFirstAndReusesRefusedRows) {
    crdsat_t c;
    Epoch e;
    e.gps[0].hdr.badNavInfCt = 64;  // refused: its row goes to the next
    lsttblCrdSat_t* l = c.get(&e.lst, e.tm, kLeap);
    ASSERT_EQ(l, c.getList(0));
    ASSERT_EQ(l->num, 4u);
    EXPECT_EQ(l->tm, e.tm);
    const int nums[] = {2, 9, 5, 31};
    const int syss[] = {0, 0, 1, 1};
    for (int k = 0; k < 4; k++) {
        EXPECT_EQ(+l->tbl[k].num, nums[k]) << k;
        EXPECT_EQ(+l->tbl[k].sys, syss[k]) << k;
        EXPECT_EQ(+l->tbl[k].bad, 0) << k;
    }
    // A GLONASS row that fails the bounds is still counted.
    e.glo[0].opr[0].vx = e.glo[0].opr[0].vy = e.glo[0].opr[0].vz = 0.0;
    e.glo[0].opr[0].x = 1.0e6;
    l = c.get(&e.lst, e.tm, kLeap);
    ASSERT_EQ(l->num, 4u);
    EXPECT_EQ(+l->tbl[0].bad, 1);

    // getGps fills list 0 with GPS rows only.
    l = c.getGps(&e.lst, e.tm + 1, kLeap);
    ASSERT_EQ(l->num, 2u);
    EXPECT_EQ(+l->tbl[0].num, 5);
    EXPECT_EQ(l->tm, e.tm + 1);
}

TEST(CrdSat, EpochWithoutUsableSatelliteKeepsThePreviousTime) {
    crdsat_t c;
    Epoch e;
    c.get(&e.lst, e.tm, kLeap);
    for (auto& g : e.glo) g.obs.actual[0] = 0;
    for (auto& g : e.gps) g.opr.actual = 0;
    lsttblCrdSat_t* l = c.get(&e.lst, e.tm + 1, kLeap);
    EXPECT_EQ(l->num, 0u);
    EXPECT_EQ(l->tm, e.tm);
    l = c.getGps(&e.lst, e.tm + 2, kLeap);
    EXPECT_EQ(l->num, 0u);
    EXPECT_EQ(l->tm, e.tm);
}

TEST(CrdSat, ReferencePointInAllFourForms) {
    double xyzW[3];
    tlse(xyzW);
    double xyzP[3];
    geo::WGS84_PZ90(xyzW, xyzP);

    // Every form of the same place gives the same four triplets.
    crdsat_t a, b, c, d;
    a.setPnt(xyzW, 0, 0);
    double blhW[3] = {a.getPnt()->blhWGS84[0], a.getPnt()->blhWGS84[1],
                      a.getPnt()->blhWGS84[2]};
    double blhP[3] = {a.getPnt()->blhPZ90[0], a.getPnt()->blhPZ90[1],
                      a.getPnt()->blhPZ90[2]};
    b.setPnt(xyzP, 0, 1);
    c.setPnt(blhW, 1, 0);
    d.setPnt(blhP, 1, 1);
    EXPECT_NEAR(blhW[0], 43.5606971, 1e-6);
    EXPECT_NEAR(blhW[1], 1.4808943, 1e-6);
    // The PZ-90 ellipsoid is a metre smaller and the point shifted by the
    // datum translation.
    EXPECT_NEAR(blhP[2] - blhW[2], 1.0 + 0.27, 0.2);
    // The latitude iteration stops within its tolerance, a few millimetres
    // on the ground.
    for (const crdsat_t* o : {&a, &b, &c, &d}) {
        const rcvPnt_t* p = o->getPnt();
        EXPECT_EQ(p->set, 1);
        for (int k = 0; k < 3; k++) {
            EXPECT_NEAR(p->xyzWGS84[k], xyzW[k], 5e-3) << k;
            EXPECT_NEAR(p->xyzPZ90[k], xyzP[k], 5e-3) << k;
            EXPECT_NEAR(p->blhWGS84[k], blhW[k], k < 2 ? 1e-7 : 5e-3) << k;
            EXPECT_NEAR(p->blhPZ90[k], blhP[k], k < 2 ? 1e-7 : 5e-3) << k;
        }
    }
    // The given form is stored as it came.
    EXPECT_EQ(std::memcmp(b.getPnt()->xyzPZ90, xyzP, sizeof xyzP), 0);
    EXPECT_EQ(std::memcmp(c.getPnt()->blhWGS84, blhW, sizeof blhW), 0);
    EXPECT_EQ(std::memcmp(d.getPnt()->blhPZ90, blhP, sizeof blhP), 0);
    // The datum shift ties the two Cartesian forms.
    EXPECT_EQ(c.getPnt()->xyzPZ90[0], c.getPnt()->xyzWGS84[0] + 0.36);
    EXPECT_EQ(d.getPnt()->xyzWGS84[1], d.getPnt()->xyzPZ90[1] + 0.08);
}

TEST(CrdSat, ReferencePointOddCases) {
    crdsat_t c;
    double xyz[3];
    tlse(xyz);
    c.setPnt(xyz, 0, 0);
    rcvPnt_t before = *c.getPnt();
    double other[3] = {1.0e6, 2.0e6, 3.0e6};
    // An unknown datum leaves the point unset and stores nothing.
    c.setPnt(other, 0, 2);
    EXPECT_EQ(c.getPnt()->set, 0);
    EXPECT_EQ(std::memcmp(c.getPnt()->xyzWGS84, before.xyzWGS84, sizeof xyz), 0);
    EXPECT_EQ(std::memcmp(c.getPnt()->blhPZ90, before.blhPZ90, sizeof xyz), 0);
    // An unknown form reports the point as set although nothing was
    // stored: the previous coordinates stay in use.
    c.setPnt(other, 2, 0);
    EXPECT_EQ(c.getPnt()->set, 1);
    EXPECT_EQ(std::memcmp(c.getPnt()->xyzWGS84, before.xyzWGS84, sizeof xyz), 0);
    crdsat_t fresh;
    fresh.setPnt(other, 7, 9);
    EXPECT_EQ(fresh.getPnt()->set, 1);
    EXPECT_EQ(fresh.getPnt()->xyzWGS84[0], 0.0);
}

}  // namespace
