/*
 * The exported crdpnt_* functions: they forward to the object behind the
 * handle, handles are independent, and a null handle stops the process
 * with the assertion naming the function.
 */
#include <gtest/gtest.h>

#include "../solution/crdpnt_fixture.h"
#include "zel.h"

namespace {

using namespace crdpnt_test;

TEST(ZelCrdpnt, ForwardsAndKeepsHandlesApart) {
    int* a = static_cast<int*>(crdpnt_init());
    int* b = static_cast<int*>(crdpnt_init());
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    Truth t;
    t.cdt = kC * 1e-4;
    Epoch ep;
    for (int k = 0; k < 5; k++) ep.add(t, k, 0, 1 + k);

    crdpnt_set(a, 0);
    crdpnt_set(b, 1);  // GPS mode on b must not change a
    auto* pa = static_cast<tblCrdPnt_t*>(crdpnt_get(a, &ep.lst));
    auto* pb = static_cast<tblCrdPnt_t*>(crdpnt_get(b, &ep.lst));
    ASSERT_NE(pa, pb);
    EXPECT_EQ(pa->actual, 1);
    EXPECT_EQ(pb->actual, 0);
    EXPECT_EQ(pa->length, 100);
    auto* va = static_cast<tblSpdPnt_t*>(crdpnt_getSpd(a));
    EXPECT_EQ(va->actual, 1);
    EXPECT_NE(crdpnt_getSpd(b), va);
    EXPECT_EQ(crdpnt_getTau(a, &ep.lst, 1e-4), pa);
    EXPECT_EQ(pa->actual, 1);
    EXPECT_EQ(static_cast<tblCrdPnt_t*>(crdpnt_getTau(b, &ep.lst, 1e-4))->actual, 0);
    crdpnt_clear(a);
    EXPECT_EQ(pa->numGlo, 0);
    EXPECT_EQ(+pa->xyz[0], 0.0);
    crdpnt_finit(b);
    crdpnt_finit(a);
}

}  // namespace
