/*
 * The writer's GLONASS CT encoder: superframe timing and layout, field
 * coding at the edges. Value round trips through the collectors are in
 * tests/decode.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "decode/navinf_glo_ct_fields.h"
#include "decode/navinf_str.h"
#include "glo_ct_encode.h"

TEST(GloCtEncode, SlotOfTimeOfDay) {
    struct {
        unsigned int tod, frame, str, start, end;
    } cases[] = {
        {0, 1, 1, 0, 2},          {1, 1, 1, 0, 2},
        {29, 1, 15, 0, 30},       {30, 2, 1, 30, 32},
        {149, 5, 15, 120, 150},   {150, 1, 1, 150, 152},
        {62882, 2, 2, 62880, 62884}, {86399, 5, 15, 86370, 86400},
        {86400 + 31, 2, 1, 30, 32},
    };
    for (const auto& c : cases) {
        x0c::GloCtSlot s = x0c::gloCtSlotAt(c.tod);
        EXPECT_EQ(s.frame, c.frame) << c.tod;
        EXPECT_EQ(s.str, c.str) << c.tod;
        EXPECT_EQ(s.frameStart, c.start) << c.tod;
        EXPECT_EQ(s.strEnd, c.end) << c.tod;
    }
    /* A string ending at E is delivered at E + 1 and E + 2, where the
     * converter expects string ((t - 1) mod 30) / 2, 0 standing for 15. */
    for (unsigned int e = 2; e <= 86400; e += 2) {
        unsigned int str = x0c::gloCtSlotAt(e - 1).str;
        for (unsigned int t = e + 1; t <= e + 2; t++) {
            unsigned int want = ((t - 1) % 30) / 2;
            ASSERT_EQ(str, want ? want : 15u) << t;
        }
    }
}
