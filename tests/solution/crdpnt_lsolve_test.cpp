/*
 * The least-squares kernel: refusals, the pivot rule, the inverse it
 * leaves behind, the unguarded 1 x 2 case, and the range functions.
 */
#include <gtest/gtest.h>

#include <cmath>

#include "solution/crdpnt.h"

namespace {

TEST(CrdPntLsolve, RefusesSizesOutsideOneToSevenWithoutTouchingTheMatrix) {
    double m[8 * 9];
    for (double& v : m) v = 42.0;
    EXPECT_EQ(crdpnt_t::lsolve(0, m), -1);
    EXPECT_EQ(crdpnt_t::lsolve(8, m), -1);
    EXPECT_EQ(crdpnt_t::lsolve(-3, m), -1);
    for (double v : m) ASSERT_EQ(v, 42.0);
}

TEST(CrdPntLsolve, TwoIdenticalRowsAreSingular) {
    double m[4 * 5] = {4, 1, 2, 1, 7,
                       1, 3, 0, 1, 2,
                       4, 1, 2, 1, 7,
                       1, 1, 1, 5, 3};
    EXPECT_EQ(crdpnt_t::lsolve(4, m), -2);
}

TEST(CrdPntLsolve, LeavesTheInverseAndTheSolutionOfAGeneralSystem) {
    // A symmetric positive matrix that needs row exchanges (small first
    // pivot) and its right-hand side for the solution (1, -2, 3, 0.5, -1).
    const double N[5][5] = {{0.01, 1, 2, 0, 1},
                            {1, 9, 1, 2, 0},
                            {2, 1, 8, 1, 1},
                            {0, 2, 1, 7, 3},
                            {1, 0, 1, 3, 6}};
    const double x[5] = {1, -2, 3, 0.5, -1};
    double m[5 * 6];
    for (int i = 0; i < 5; i++) {
        double b = 0;
        for (int k = 0; k < 5; k++) {
            m[i * 6 + k] = N[i][k];
            b += N[i][k] * x[k];
        }
        m[i * 6 + 5] = b;
    }
    ASSERT_EQ(crdpnt_t::lsolve(5, m), 0);
    for (int i = 0; i < 5; i++) {
        EXPECT_NEAR(m[i * 6 + 5], x[i], 1e-12);
        for (int k = 0; k < 5; k++) {
            double p = 0;
            for (int j = 0; j < 5; j++) p += m[i * 6 + j] * N[j][k];
            EXPECT_NEAR(p, i == k ? 1.0 : 0.0, 1e-12) << i << "," << k;
        }
    }
}

TEST(CrdPntLsolve, EqualCandidatePivotsKeepTheUpperRow) {
    // The order of elimination shows through an infinite coefficient:
    // pivoting on row 0 leaves the first unknown finite, pivoting on row 1
    // spreads inf/inf into it. A tie must keep row 0.
    double tie[2 * 3] = {2, 0, 2,
                         -2, INFINITY, 0};
    ASSERT_EQ(crdpnt_t::lsolve(2, tie), 0);
    EXPECT_EQ(tie[2], 1.0);
    // A strictly larger lower candidate does win, and the same probe shows it.
    double larger[2 * 3] = {2, 0, 2,
                            -3, INFINITY, 0};
    ASSERT_EQ(crdpnt_t::lsolve(2, larger), 0);
    EXPECT_TRUE(std::isnan(larger[2]));
}

TEST(CrdPntLsolve, OneByTwoWithZeroCoefficientIsNotCaught) {
    // With one unknown there is no other row, so the pivot is never
    // tested: the zero divides and the result is infinite, not -2.
    double m[2] = {0.0, 5.0};
    EXPECT_EQ(crdpnt_t::lsolve(1, m), 0);
    EXPECT_TRUE(std::isinf(m[0]));
    EXPECT_TRUE(std::isinf(m[1]));
    double ok[2] = {4.0, 2.0};
    ASSERT_EQ(crdpnt_t::lsolve(1, ok), 0);
    EXPECT_EQ(ok[0], 0.25);
    EXPECT_EQ(ok[1], 0.5);
}

}  // namespace
