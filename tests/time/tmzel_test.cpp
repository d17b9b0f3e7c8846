#include <gtest/gtest.h>

#include "time/tmzel.h"
#include "zel.h"

namespace {

struct Date {
    unsigned int y, mo, d, h, mi, s;
};

Date toDate(unsigned int tm) {
    unsigned int v[6] = {0, 0, 0, 0, 0, 0};
    EXPECT_EQ(TmZel::tmZelToDate(tm, v), 1u) << tm;
    return {v[0], v[1], v[2], v[3], v[4], v[5]};
}

void expectDate(unsigned int tm, Date want) {
    Date got = toDate(tm);
    EXPECT_EQ(got.y, want.y) << tm;
    EXPECT_EQ(got.mo, want.mo) << tm;
    EXPECT_EQ(got.d, want.d) << tm;
    EXPECT_EQ(got.h, want.h) << tm;
    EXPECT_EQ(got.mi, want.mi) << tm;
    EXPECT_EQ(got.s, want.s) << tm;
}

const unsigned int kDay = 86400;

TEST(TmZel, DatesAtYearAndLeapEdges) {
    expectDate(1, {2000, 1, 1, 0, 0, 1});
    expectDate(31622399, {2000, 12, 31, 23, 59, 59});
    expectDate(31622400, {2001, 1, 1, 0, 0, 0});
    expectDate(126230400, {2004, 1, 1, 0, 0, 0});
    expectDate(126230400 + 59 * kDay, {2004, 2, 29, 0, 0, 0});
    expectDate(126230400 + 60 * kDay, {2004, 3, 1, 0, 0, 0});
    // 2001 is not leap: day 59 is 1 March.
    expectDate(31622400 + 59 * kDay, {2001, 3, 1, 0, 0, 0});
    expectDate(31622400 + 364 * kDay + 86399, {2001, 12, 31, 23, 59, 59});
    // 2100 = 2000 + 25 blocks of four years: leap, deliberately.
    expectDate(25u * 126230400u + 59 * kDay + 3723, {2100, 2, 29, 1, 2, 3});
    // The last second the 32-bit count holds.
    Date last = toDate(0xFFFFFFFFu);
    EXPECT_EQ(last.y, 2136u);
    EXPECT_LE(last.mo, 12u);
}

TEST(TmZel, ZeroIsNoTimeAndLeavesTheDateAlone) {
    unsigned int v[6] = {7, 7, 7, 7, 7, 7};
    EXPECT_EQ(TmZel::tmZelToDate(0, v), 0u);
    EXPECT_EQ(tmZelToDate(0, v), 0);
    for (unsigned int x : v) EXPECT_EQ(x, 7u);
    EXPECT_EQ(tmZelToDate(1, v), 1);
    EXPECT_EQ(v[0], 2000u);
    EXPECT_EQ(v[5], 1u);
}

TEST(TmZel, GlonassAlmanacDates) {
    struct Case {
        unsigned int n4;
        int na;
        unsigned int y, m, d;
    } cases[] = {
        {6, 1, 2016, 1, 1},     {6, 60, 2016, 2, 29},   {6, 61, 2016, 3, 1},
        {6, 366, 2016, 12, 31}, {6, 367, 2017, 1, 1},   {6, 425, 2017, 2, 28},
        {6, 426, 2017, 3, 1},   {6, 731, 2017, 12, 31}, {6, 732, 2018, 1, 1},
        {6, 1097, 2019, 1, 1},  {6, 1461, 2019, 12, 31},
    };
    for (const Case& c : cases) {
        unsigned int v[3] = {0, 0, 0};
        DateAlmGloToDate(c.n4, c.na, v);
        EXPECT_EQ(v[0], c.y) << c.na;
        EXPECT_EQ(v[1], c.m) << c.na;
        EXPECT_EQ(v[2], c.d) << c.na;
    }
}

TEST(TmZel, AlmanacDayOutsideTheIntervalStaysInTheYear) {
    for (int na : {0, -5, 1462, 2000, 100000}) {
        unsigned int v[3] = {0, 0, 0};
        TmZel::DateAlmGloToDate(6, na, v);
        EXPECT_EQ(v[0], 2016u) << na;
        EXPECT_GE(v[1], 1u) << na;
        EXPECT_LE(v[1], 12u) << na;
    }
}

}  // namespace
