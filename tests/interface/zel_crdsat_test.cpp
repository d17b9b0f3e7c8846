/*
 * The exported crdsat_* functions: they forward to the object behind the
 * handle, and a null handle stops the process with the assertion naming
 * the function.
 */
#include <gtest/gtest.h>

#include "zel.h"

namespace {

TEST(ZelCrdsat, ForwardsToTheObjectBehindTheHandle) {
    int* h = static_cast<int*>(crdsat_init());
    ASSERT_NE(h, nullptr);
    int* other = static_cast<int*>(crdsat_init());
    lsttblSat_t empty = {};
    auto* l0 = static_cast<lsttblCrdSat_t*>(crdsat_get(h, &empty, 100, 15));
    ASSERT_NE(l0, nullptr);
    EXPECT_EQ(l0->length, 16u);
    EXPECT_EQ(l0->num, 0u);
    EXPECT_EQ(crdsat_getGps(h, &empty, 100, 15), l0);
    auto* l3 = static_cast<lsttblCrdSat_t*>(crdsat_getGlo(h, &empty, 100, 3, 3));
    ASSERT_NE(l3, nullptr);
    EXPECT_NE(l3, l0);
    // Handles are independent.
    EXPECT_NE(crdsat_get(other, &empty, 100, 15), l0);
    double pnt[3] = {4627852.3986, 119640.3423, 4372994.4588};
    crdsat_setPnt(h, pnt, 0, 0);
    l0->num = 3;
    l0->tm = 7;
    crdsat_clear(h);
    EXPECT_EQ(l0->num, 0u);
    EXPECT_EQ(l0->tm, 0u);
    crdsat_finit(other);
    crdsat_finit(h);
}

}  // namespace
