/*
 * The exported prediction functions: the null-handle assertion of each,
 * and that they reach the object behind the handle.
 */
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "prgns_list.h"
#include "prgns_sky.h"
#include "zel.h"

namespace {

}  // namespace

TEST(ZelPrgns, HandlesReachTheirOwnPredictor) {
    using namespace prgns_sky;
    int* a = static_cast<int*>(prgns_init());
    int* b = static_cast<int*>(prgns_init());
    ASSERT_NE(a, nullptr);
    ASSERT_NE(a, b);
    EXPECT_EQ(prgns_getnumalmglo(a), 255);
    EXPECT_EQ(prgns_getnumalmgps(a), 255);

    std::unique_ptr<AlmList> l(new AlmList);
    *l->glo(7, kN4, kNa, 10.0, kDay0 + 50000) = gloAlmanacOfDay();
    tblAlmGps_t gps;
    gpsAlmanac(32u * 4096u, &gps);
    *l->gps(21, kWna, gps.toa, 10.0, kDay0 + 50000, true, 0, kLeapFolded) = gps;

    void* glo = prgns_getAlmanGlo(a, &l->lst);
    tblTmPrmGps_t tp;
    std::memset(&tp, 0, sizeof tp);
    void* g = prgns_getAlmanGps(a, &l->lst, &tp);
    EXPECT_EQ(prgns_getAlmanGps0(a, &l->lst), g);
    EXPECT_EQ(prgns_getnumalmglo(a), 7);
    EXPECT_EQ(prgns_getnumalmgps(a), 21);
    EXPECT_EQ(tp.dtLs, kLeapFolded);
    EXPECT_EQ(prgns_getnumalmglo(b), 255);

    double st[3];
    tlse(st);
    const lsttblPrgSat* none = static_cast<const lsttblPrgSat*>(prgns_get2(b, glo, g, kDay0 + 50000, kLeapFolded));
    EXPECT_EQ(none->numPrg, 0u);   // b has no position
    prgns_set(a, st, 0, 0, 0);
    const lsttblPrgSat* l2 = static_cast<const lsttblPrgSat*>(prgns_get2(a, glo, g, kDay0 + 50000, kLeapFolded));
    const uint32_t n = l2->numPrg;
    ASSERT_GT(n, 10u);
    EXPECT_EQ(prgns_get0(a, glo, g, &tp, kDay0 + 50000), l2);
    EXPECT_EQ(l2->numPrg, n);
    EXPECT_EQ(prgns_get1(a, &l->lst), l2);
    EXPECT_EQ(l2->numPrg, n);
    EXPECT_EQ(l2->tm, kDay0 + 50000);

    prgns_clear(a);
    EXPECT_EQ(prgns_getnumalmglo(a), 255);
    EXPECT_EQ(prgns_getnumalmgps(a), 255);
    EXPECT_EQ(l2->numPrg, 0u);
    prgns_finit(a);
    prgns_finit(b);
}
