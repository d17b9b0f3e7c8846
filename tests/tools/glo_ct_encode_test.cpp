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

static unsigned int field(const uint8_t* s, int lsb, int len) {
    return (unsigned int)NavInfStr_t::GetValueCT(s, lsb, len, false, 1.0);
}

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

TEST(GloCtEncode, SuperframeLayout) {
    tblOprGlo_t o;
    tblTmPrmGlo_t p;
    tblAlmGlo_t a;
    std::memset(&o, 0, sizeof o);
    std::memset(&p, 0, sizeof p);
    std::memset(&a, 0, sizeof a);
    p.b1 = -0.5;
    a.actual = 1;
    for (int i = 0; i < ZEL_NUM_ALM_GLO; i++) {
        a.alm[i].num = (uint8_t)(30 - i); /* not the place, to see the order */
        a.alm[i].lit = 3;
        a.alm[i].dT = -2655.0;
    }
    a.alm[9].onEmpty = 1;
    x0c::GloCtSource src;
    uint8_t s[10];
    EXPECT_FALSE(x0c::gloCtEncode(src, 1, 2, 0, s));
    EXPECT_FALSE(x0c::gloCtEncode(src, 3, 5, 0, s));
    EXPECT_FALSE(x0c::gloCtEncode(src, 6, 7, 0, s));
    src.opr = &o;
    src.tmPrm = &p;
    src.alm = &a;
    int almStrings = 0;
    for (unsigned int f = 1; f <= 5; f++) {
        for (unsigned int n = 1; n <= 15; n++) {
            ASSERT_TRUE(x0c::gloCtEncode(src, f, n, 0, s));
            SCOPED_TRACE(f * 100 + n);
            EXPECT_EQ(s[0] & 0xE0, 0);            /* above bit 85 */
            EXPECT_EQ(field(s, GLO_CT_IDLE_BIT, 1), 0u);
            EXPECT_EQ(field(s, 81, 4), n);
            int idx = gloCtAlmIndex(f, n);
            if (idx < 0) continue;
            almStrings++;
            unsigned int entry = (unsigned int)idx / 2;
            if (idx % 2 == 0) {
                EXPECT_EQ(field(s, kGloCtAlmA[GLO_AA_NA].lsb, 5),
                          entry == 9 ? 10 : 30 - entry);
            } else {
                EXPECT_EQ(field(s, kGloCtAlmB[GLO_AB_HA].lsb, 5),
                          entry == 9 ? 24u : 3u);
                EXPECT_EQ(field(s, kGloCtAlmB[GLO_AB_DT].lsb, 22) != 0,
                          entry != 9);
            }
        }
    }
    EXPECT_EQ(almStrings, GLO_CT_ALM_STRINGS);
    ASSERT_TRUE(x0c::gloCtEncode(src, 5, 14, 0, s));
    EXPECT_EQ(field(s, 70, 11), 0x400u | 512u); /* sign and 0.5 s */
    ASSERT_TRUE(x0c::gloCtEncode(src, 5, 15, 0, s));
    const uint8_t only15[10] = {0x0F};
    EXPECT_EQ(0, std::memcmp(s, only15, 10));

    /* An almanac that is not valid is sent as 24 empty slots. */
    a.actual = 0;
    ASSERT_TRUE(x0c::gloCtEncode(src, 4, 8, 0, s));
    EXPECT_EQ(field(s, kGloCtAlmA[GLO_AA_NA].lsb, 5), 17u);
    EXPECT_EQ(field(s, kGloCtAlmA[GLO_AA_CN].lsb, 1), 0u);
}

TEST(GloCtEncode, FieldCodingAtTheEdges) {
    tblOprGlo_t o;
    std::memset(&o, 0, sizeof o);
    o.vx = 9000.0;    /* beyond the 24-bit field: saturates */
    o.ax = -0.0;      /* keeps its sign bit, as broadcast */
    o.x = -1.0e3 * std::ldexp(1.0, -12); /* half a count: rounds away */
    uint8_t s[10];
    x0c::gloCtEncodeStr1(o, 86399, s);
    EXPECT_EQ(field(s, 41, 24), 0x7FFFFFu);
    EXPECT_EQ(field(s, 36, 5), 0x10u);
    EXPECT_EQ(field(s, 9, 27), (1u << 26) | 1u);
    EXPECT_EQ(field(s, 72, 5), 23u);
    EXPECT_EQ(field(s, 66, 6), 59u);
    EXPECT_EQ(field(s, 65, 1), 1u);

    EXPECT_EQ(x0c::gloCtFtIndex(0.0), 0u);
    EXPECT_EQ(x0c::gloCtFtIndex(2.5), 2u);
    EXPECT_EQ(x0c::gloCtFtIndex(2.6), 3u);
    EXPECT_EQ(x0c::gloCtFtIndex(513.0), 15u);
    EXPECT_EQ(x0c::gloCtFtIndex(5000.0), 15u);
}
