/*
 * The word-at-a-time paths of the navigation strings against the bit-level
 * definitions: field readers over random bytes, the GLONASS codes over
 * random code words with every single error and many double errors, and
 * the ephemeris collectors that skip rebuilding an unchanged table.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "decode/lstsat.h"
#include "decode/navinf_str.h"
#include "tools/x0c/x0c_writer.h"
#include "zel.h"
#include "zlog.h"

namespace {

/* Bit number p of each layout, bit by bit: -1 when it lies outside the
 * kept bytes (reads as 0), else byte * 8 + bit. */
int placeGeneric(int p) { return p >= 1 ? p - 1 : -1; }
int placeCt(int b) {
    return b < 9 || b > 88 ? -1 : (10 - (b - 1) / 8) * 8 + (b - 1) % 8;
}
int placeL3(int b) {
    int i = 300 - b;
    return i < 0 || i >= 38 * 8 ? -1 : (i / 8) * 8 + 7 - i % 8;
}

double refField(const unsigned char* d, int pos, int len, bool sign,
                double scale, int (*place)(int)) {
    if (len < 1) return 0.0;
    auto bit = [&](int p) {
        int at = place(p);
        return at >= 0 && ((d[at / 8] >> (at % 8)) & 1);
    };
    int mag = sign ? len - 1 : len;
    double v = 0, w = 1;
    for (int i = 0; i < mag && i < 64; i++, w *= 2)
        if (bit(pos + i)) v += w;
    v *= scale;
    return sign && bit(pos + len - 1) ? -v : v;
}

bool sameDouble(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

TEST(NavInfStrWords, FieldReadersFollowTheBitNumbering) {
    std::mt19937 rng(7);
    unsigned char d[40];
    for (int round = 0; round < 4; round++) {
        for (unsigned char& c : d) c = (unsigned char)rng();
        if (round == 3) std::memset(d, 0xFF, sizeof d);
        for (int len = 0; len <= 40; len++) {
            for (int sign = 0; sign < 2; sign++) {
                // Generic: from before the first bit to the end of the buffer.
                for (int pos = -6; pos + len - 1 <= 320; pos++)
                    ASSERT_TRUE(sameDouble(
                        NavInfStr_t::GetValue(d, pos, len, sign, 0.5),
                        refField(d, pos, len, sign, 0.5, placeGeneric)))
                        << pos << " " << len << " " << sign;
                // CT and L3: across both ends of what they keep.
                for (int pos = -6; pos <= 100; pos++)
                    ASSERT_TRUE(sameDouble(
                        NavInfStr_t::GetValueCT(d, pos, len, sign, 3.0),
                        refField(d, pos, len, sign, 3.0, placeCt)))
                        << pos << " " << len << " " << sign;
                for (int pos = -12; pos <= 310; pos++)
                    ASSERT_TRUE(sameDouble(
                        NavInfStr_t::GetValueL3(d, pos, len, sign, 1.0),
                        refField(d, pos, len, sign, 1.0, placeL3)))
                        << pos << " " << len << " " << sign;
            }
        }
    }
    // The widest magnitude: 64 bits, the rest ignored.
    std::memset(d, 0xFF, sizeof d);
    EXPECT_EQ(NavInfStr_t::GetValue(d, 1, 70, false, 1.0), 18446744073709551615.0);
}

/* CT string bit b (85..1) of the 11 transmitted bytes. */
void flipCt(unsigned char* s, int b) { s[10 - (b - 1) / 8] ^= 1u << ((b - 1) % 8); }
/* VT position p (1..56). */
void flipVt(unsigned char* s, int p) { s[(p - 1) / 8] ^= 1u << ((p - 1) % 8); }

TEST(NavInfStrWords, GloCtCodeOnRandomWords) {
    std::mt19937 rng(11);
    for (int n = 0; n < 150; n++) {
        uint8_t info[10], good[11];
        for (uint8_t& c : info) c = (uint8_t)rng();
        info[0] = (uint8_t)(1 + n % 15); /* bits 86..88 zero, number 1..15 */
        x0c::ctWithCheckBits(info, good);

        unsigned char s[11], flags = 0;
        std::memcpy(s, good, 11);
        ASSERT_TRUE(NavInfStr_t::ishemOkGloCt(s, &flags, true));
        EXPECT_EQ(flags, 0);

        for (int b = 1; b <= 85; b++) {
            std::memcpy(s, good, 11);
            flipCt(s, b);
            flags = 0;
            bool ok = NavInfStr_t::ishemOkGloCt(s, &flags, true);
            if ((s[0] & 15) == 0) {  // number wiped: dropped unexamined
                EXPECT_FALSE(ok);
                EXPECT_EQ(flags, 0);
            } else if (b <= 7) {     // a check bit: data intact
                EXPECT_TRUE(ok) << b;
                EXPECT_EQ(flags, HEM_CHECKBIT) << b;
            } else if (b == 8) {     // overall parity alone: dropped
                EXPECT_FALSE(ok);
                EXPECT_EQ(flags, HEM_REJECTED);
            } else {                 // an information bit: mended
                EXPECT_TRUE(ok) << b;
                EXPECT_EQ(flags, HEM_CORRECTED) << b;
                EXPECT_EQ(std::memcmp(s, good, 11), 0) << b;
            }
        }
        for (int k = 0; k < 20; k++) {
            int b1 = 1 + (int)(rng() % 85), b2 = 1 + (int)(rng() % 85);
            if (b1 == b2) continue;
            std::memcpy(s, good, 11);
            flipCt(s, b1);
            flipCt(s, b2);
            flags = 0;
            EXPECT_FALSE(NavInfStr_t::ishemOkGloCt(s, &flags, true))
                << b1 << " " << b2;
        }
    }
}

TEST(NavInfStrWords, GloVtCodeOnRandomWords) {
    std::mt19937 rng(13);
    for (int n = 0; n < 150; n++) {
        uint8_t data[7], good[7];
        for (uint8_t& c : data) c = (uint8_t)rng();
        x0c::vtWithCheckBits(data, good);

        unsigned char s[7], flags = 0;
        std::memcpy(s, good, 7);
        ASSERT_TRUE(NavInfStr_t::ishemOkGloVt(s, &flags, true));
        EXPECT_EQ(flags, 0);

        for (int p = 1; p <= 56; p++) {
            std::memcpy(s, good, 7);
            flipVt(s, p);
            flags = 0;
            bool ok = NavInfStr_t::ishemOkGloVt(s, &flags, true);
            if (p <= 6) {
                EXPECT_TRUE(ok) << p;
                EXPECT_EQ(flags, HEM_CHECKBIT) << p;
            } else if (p == 7) {
                EXPECT_FALSE(ok);
                EXPECT_EQ(flags, HEM_REJECTED);
            } else if (p <= 50) {
                EXPECT_TRUE(ok) << p;
                EXPECT_EQ(flags, HEM_CORRECTED) << p;
                EXPECT_EQ(std::memcmp(s, good, 7), 0) << p;
            } else {  // positions 51..56 lie outside the code
                EXPECT_TRUE(ok) << p;
                EXPECT_EQ(flags, 0) << p;
            }
        }
        for (int k = 0; k < 20; k++) {
            int p1 = 1 + (int)(rng() % 50), p2 = 1 + (int)(rng() % 50);
            if (p1 == p2) continue;
            std::memcpy(s, good, 7);
            flipVt(s, p1);
            flipVt(s, p2);
            flags = 0;
            EXPECT_FALSE(NavInfStr_t::ishemOkGloVt(s, &flags, true))
                << p1 << " " << p2;
        }
    }
}

/* The collectors skip a rebuild only while the table still holds their
 * last one: a table written over from outside is rebuilt from the strings
 * by the next message, on the real log. Messages 60 to 62 (GPS seconds 0
 * to 2 of a half minute) fall where both systems hold a complete set. */
TEST(NavInfStrWords, EphemerisTablesWrittenOverAreRebuilt) {
    zlog::Reader rd;
    ASSERT_TRUE(rd.open(ZELNAV_DATA_DIR "/tlse-2024-001/tlse_1200_5min.zlog"));
    std::vector<std::vector<uint8_t>> msgs;
    zlog::Record r;
    while (rd.next(r)) msgs.push_back(r.message);
    ASSERT_GT(msgs.size(), 63u);

    int* cnv = static_cast<int*>(cnvx0c_init());
    lsttblSat_t* lst = nullptr;
    for (std::size_t i = 0; i < 60; i++)
        lst = static_cast<lsttblSat_t*>(cnvx0c_upx0c(cnv, msgs[i].data()));
    ASSERT_NE(lst, nullptr);
    ASSERT_GT(lst->numGps, 0u);
    ASSERT_GT(lst->numGlo, 0u);
    tblOprGps_t* gps = lst->tblGps[0].tblOprGps;
    tblOprGlo_t* glo = lst->tblGlo[0].tblOprGlo[0];
    ASSERT_EQ(gps->actual, 1);
    ASSERT_EQ(glo->actual, 1);

    tblOprGps_t gpsBefore;
    tblOprGlo_t gloBefore;
    std::memcpy(&gpsBefore, gps, sizeof gpsBefore);
    std::memcpy(&gloBefore, glo, sizeof gloBefore);
    // The next message carries the same ephemerides: the tables stay.
    cnvx0c_upx0c(cnv, msgs[60].data());
    EXPECT_EQ(std::memcmp(gps, &gpsBefore, sizeof gpsBefore), 0);
    EXPECT_EQ(std::memcmp(glo, &gloBefore, sizeof gloBefore), 0);

    // Written over, decoded fields and raw strings alike: rebuilt.
    const double wrong = 1.0e9;
    std::memcpy(&gps->af0, &wrong, sizeof wrong);
    std::memcpy(&glo->x, &wrong, sizeof wrong);
    cnvx0c_upx0c(cnv, msgs[61].data());
    EXPECT_EQ(std::memcmp(gps, &gpsBefore, sizeof gpsBefore), 0);
    EXPECT_EQ(std::memcmp(glo, &gloBefore, sizeof gloBefore), 0);
    gps->subfr2[5] ^= 1;
    glo->str[2][3] ^= 1;
    cnvx0c_upx0c(cnv, msgs[62].data());
    EXPECT_EQ(std::memcmp(gps, &gpsBefore, sizeof gpsBefore), 0);
    EXPECT_EQ(std::memcmp(glo, &gloBefore, sizeof gloBefore), 0);
    cnvx0c_finit(cnv);
}

}  // namespace
