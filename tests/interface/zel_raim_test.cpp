/*
 * The exported integrity functions: forwarding through the handle, and
 * the assertion on a null handle.
 */
#include <gtest/gtest.h>

#include <cstring>

#include "solution/crdpnt_fixture.h"
#include "zel.h"

TEST(ZelRaim, ForwardsThroughTheHandle) {
    int* h = static_cast<int*>(raim_init());
    ASSERT_NE(h, nullptr);
    crdpnt_test::Truth t;
    crdpnt_test::Epoch ep;
    for (int k = 0; k < 6; k++) ep.add(t, k, 1, k + 1);
    ep.add(t, 6, 0, 5).psvd -= 300.0;   /* a GLONASS row the GPS fix does not use */
    ep.lst.tm = 1000;
    tblCrdPnt_t pnt;
    std::memset(&pnt, 0, sizeof pnt);
    EXPECT_EQ(raimComb(h, &ep.lst, &pnt, 100.0, 1), 0);
    EXPECT_EQ(ep.rows[6].bad, 1);
    EXPECT_EQ(pnt.actual, 1);
    EXPECT_EQ(raimStats(h, &ep.lst, &pnt), 0.0);
    EXPECT_EQ(raimTau(h, &ep.lst, &pnt), 0.0) << "a GPS fix has no offset to judge";
    ep.lst.num = 5;
    EXPECT_EQ(raimComb(h, &ep.lst, &pnt, 100.0, 1), -128);
    raim_finit(h);
}
