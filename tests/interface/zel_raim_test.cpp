/*
 * The exported integrity functions: forwarding through the handle and the
 * assertion on a null handle.
 */
#include <gtest/gtest.h>

#include <cstring>

#include "solution/crdpnt_fixture.h"
#include "zel.h"

using crdpnt_test::Epoch;
using crdpnt_test::Truth;

TEST(ZelRaim, ForwardsThroughTheHandle) {
    int* h = static_cast<int*>(raim_init());
    ASSERT_NE(h, nullptr);
    Truth t;
    Epoch ep;
    for (int k = 0; k < 6; k++) ep.add(t, k, 1, k + 1);
    /* A GLONASS row 300 m off: a GPS fix does not use it, the gate does. */
    ep.add(t, 6, 0, 5).psvd -= 300.0;
    ep.lst.tm = 1000;
    tblCrdPnt_t pnt;
    std::memset(&pnt, 0, sizeof pnt);
    EXPECT_EQ(raimComb(h, &ep.lst, &pnt, 100.0, 1), 0);
    EXPECT_EQ(ep.rows[6].bad, 1);
    EXPECT_EQ(pnt.actual, 1);
    EXPECT_EQ(raimStats(h, &ep.lst, &pnt), 0.0);
    EXPECT_EQ(raimTau(h, &ep.lst, &pnt), 0.0) << "a GPS-only fix has no offset to judge";
    raim_finit(h);

}

/* Two handles keep separate histories: thirty seconds of a 60 m residual
 * on PRN 2 get it flagged through one handle, while a handle that saw only
 * the last second has nothing to judge it by. */
TEST(ZelRaim, HandlesAreIndependent) {
    int* a = static_cast<int*>(raim_init());
    int* b = static_cast<int*>(raim_init());
    Truth t;
    tblCrdPnt_t fix;
    std::memset(&fix, 0, sizeof fix);
    fix.actual = 1;
    for (int i = 0; i < 3; i++) fix.xyz[i] = t.xyz[i];
    unsigned flaggedA = 0, flaggedB = 0;
    for (unsigned s = 0; s < 30; s++) {
        Epoch ep;
        for (int k = 0; k < 6; k++) ep.add(t, k, 1, k + 1);
        ep.rows[1].psvd -= 60.0;
        ep.lst.tm = 3000 + s;
        raimStats(a, &ep.lst, &fix);
        flaggedA = ep.rows[1].bad;
        if (s == 29) {
            for (int k = 0; k < 6; k++) ep.rows[k].bad = 0;
            raimStats(b, &ep.lst, &fix);
            flaggedB = ep.rows[1].bad;
        }
    }
    EXPECT_EQ(flaggedA, 1u);
    EXPECT_EQ(flaggedB, 0u);
    raim_finit(a);
    raim_finit(b);
}

TEST(ZelRaimDeathTest, NullHandleAsserts) {
    tblCrdPnt_t pnt;
    std::memset(&pnt, 0, sizeof pnt);
    lsttblCrdSat_t lst = {16, nullptr, 0, 0};
    EXPECT_DEATH(raim_finit(nullptr), "zel.*void raim_finit\\(int\\*\\).*false");
    EXPECT_DEATH(raimComb(nullptr, &lst, &pnt, 100.0, 10),
                 "int raimComb\\(int\\*, lsttblCrdSat_t\\*, tblCrdPnt_t\\*, double, int\\).*false");
    EXPECT_DEATH(raimTau(nullptr, &lst, &pnt),
                 "double raimTau\\(int\\*, lsttblCrdSat_t\\*, tblCrdPnt_t\\*\\).*false");
    EXPECT_DEATH(raimStats(nullptr, &lst, &pnt),
                 "double raimStats\\(int\\*, lsttblCrdSat_t\\*, tblCrdPnt_t\\*\\).*false");
}
