#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "decode/navinf_str.h"
#include "real_glo_strings.h"
#include "tools/x0c/x0c_writer.h"

namespace {

typedef std::vector<unsigned char> Bytes;

/* CT string bit b (85..1) of the 11 transmitted bytes. */
void flipCt(unsigned char* s, int b) { s[10 - (b - 1) / 8] ^= 1u << ((b - 1) % 8); }

/* A satellite block with only the standard section, carrying `s`. */
Bytes ctBlock(const unsigned char* s) {
    Bytes b(64, 0);
    b[2] = 1;
    b[4] = 41;
    std::memcpy(&b[25], s, 11);
    return b;
}

const std::vector<RealGloString>& real() {
    static const std::vector<RealGloString> v = loadRealGloStrings();
    return v;
}

TEST(NavInfStrCt, RealStringsPassUntouchedAndAreKept) {
    ASSERT_EQ(real().size(), 461u);
    for (const RealGloString& r : real()) {
        auto s = r.bytes;
        unsigned char flags = 0;
        EXPECT_TRUE(NavInfStr_t::ishemOkGloCt(s.data(), &flags, true));
        EXPECT_EQ(flags, 0);
        EXPECT_EQ(s, r.bytes);

        Bytes blk = ctBlock(r.bytes.data());
        NavInfStr_t str;
        ASSERT_TRUE(str.createFromx0c(NAVSTR_GLO_CT, blk.data(), 777));
        EXPECT_EQ(str.getNum(), r.number);
        EXPECT_EQ(str.getLData(), 10u);
        EXPECT_EQ(str.getTmResived(), 777u);
        EXPECT_EQ(std::memcmp(str.getData(), r.bytes.data(), 10), 0);
        // String 4 carries the slot number n in bits 15..11.
        if (r.number == 4) {
            EXPECT_EQ(NavInfStr_t::GetValueCT(str.getData(), 11, 5, false, 1),
                      r.slot);
        }
    }
}

TEST(NavInfStrCt, EverySingleInformationBitErrorIsMended) {
    for (const RealGloString& r : real()) {
        for (int b = 9; b <= 85; b++) {
            auto s = r.bytes;
            flipCt(s.data(), b);
            unsigned char flags = 0;
            bool ok = NavInfStr_t::ishemOkGloCt(s.data(), &flags, true);
            if ((s[0] & 15) == 0) {
                // The error wiped the number: dropped before any check.
                EXPECT_FALSE(ok);
                EXPECT_EQ(flags, 0);
                continue;
            }
            ASSERT_TRUE(ok) << b;
            EXPECT_EQ(flags, HEM_CORRECTED);
            EXPECT_EQ(s, r.bytes) << b;
        }
    }
    // Through a block: the caller's message bytes are repaired.
    Bytes blk = ctBlock(real()[0].bytes.data());
    flipCt(&blk[25], 40);
    NavInfStr_t str;
    ASSERT_TRUE(str.createFromx0c(NAVSTR_GLO_CT, blk.data(), 1));
    EXPECT_EQ(std::memcmp(&blk[25], real()[0].bytes.data(), 11), 0);
    // Not allowed to correct: rejected.
    auto s = real()[0].bytes;
    flipCt(s.data(), 40);
    unsigned char flags = 0;
    EXPECT_FALSE(NavInfStr_t::ishemOkGloCt(s.data(), &flags, false));
    EXPECT_EQ(flags, HEM_REJECTED);
}

TEST(NavInfStrCt, DoubleErrorsAreRejectedUnchanged) {
    for (size_t i = 0; i < real().size(); i += 23) {
        for (int a = 1; a <= 85; a++) {
            for (int b = a + 1; b <= 85; b++) {
                auto s = real()[i].bytes;
                flipCt(s.data(), a);
                flipCt(s.data(), b);
                auto before = s;
                unsigned char flags = 0;
                ASSERT_FALSE(NavInfStr_t::ishemOkGloCt(s.data(), &flags, true))
                    << a << "," << b;
                EXPECT_EQ(s, before);
                if ((s[0] & 15) != 0) {
                    EXPECT_TRUE(flags == HEM_REJECTED || flags == HEM_BADPOS)
                        << int(flags);
                } else {
                    EXPECT_EQ(flags, 0);
                }
            }
        }
    }
}

TEST(NavInfStrCt, CheckBitErrorsAndNumberZero) {
    for (int c = 1; c <= 8; c++) {
        auto s = real()[5].bytes;
        flipCt(s.data(), c);
        unsigned char flags = 0;
        bool ok = NavInfStr_t::ishemOkGloCt(s.data(), &flags, true);
        // Bit 8 alone leaves intact data, yet the string is dropped.
        EXPECT_EQ(ok, c != 8) << c;
        EXPECT_EQ(flags, c == 8 ? HEM_REJECTED : HEM_CHECKBIT) << c;
    }
    // All seven sums failing point at "bit 128".
    auto s = real()[5].bytes;
    for (int c = 1; c <= 7; c++) flipCt(s.data(), c);
    unsigned char flags = 0;
    EXPECT_FALSE(NavInfStr_t::ishemOkGloCt(s.data(), &flags, true));
    EXPECT_EQ(flags, HEM_BADPOS);

    // Number 0 with an otherwise flawless code.
    auto info = real()[5].bytes;
    info[0] &= 0xF0;
    x0c::ctWithCheckBits(info.data(), s.data());
    flags = 0;
    EXPECT_FALSE(NavInfStr_t::ishemOkGloCt(s.data(), &flags, true));
    EXPECT_EQ(flags, 0);
    // An error in bit 81 of such a string makes it number 1 on the way in;
    // the correction restores 0, which the second pass refuses.
    Bytes blk = ctBlock(s.data());
    flipCt(&blk[25], 81);
    NavInfStr_t str;
    EXPECT_FALSE(str.createFromx0c(NAVSTR_GLO_CT, blk.data(), 1));
    EXPECT_EQ(blk[25] & 15, 0);
    EXPECT_FALSE(str.isCmplt());

    // Three errors (bits 9, 12, 85) that look like one in bit 81 of a
    // string numbered 1: the "correction" empties the number, and the
    // second pass turns the string away.
    info[0] = (info[0] & 0xF0) | 1;
    x0c::ctWithCheckBits(info.data(), s.data());
    for (int b : {9, 12, 85}) flipCt(s.data(), b);
    flags = 0;
    EXPECT_FALSE(NavInfStr_t::ishemOkGloCt(s.data(), &flags, true));
    EXPECT_EQ(flags, HEM_CORRECTED);
    EXPECT_EQ(s[0] & 15, 0);
}

/* ---- GPS subframes --------------------------------------------------- */

Bytes gpsBlock(unsigned int id) {
    Bytes b(64, 0);
    b[2] = 1;
    b[4] = 59;
    for (int i = 25; i < 55; i++) b[i] = (unsigned char)(i * 7);
    b[49] = (unsigned char)((b[49] & ~0x1C) | (id << 2));
    b[48] = 0xE5;  // data ID 3, SV ID 37
    return b;
}

TEST(NavInfStrGps, SubframeIdAndParityIndicator) {
    for (unsigned int id = 0; id < 8; id++) {
        Bytes blk = gpsBlock(id);
        NavInfStr_t str;
        ASSERT_EQ(str.createFromx0c(NAVSTR_GPS, blk.data(), 9), id <= 5) << id;
        if (id > 5) continue;
        EXPECT_EQ(str.getNum(), id);
        EXPECT_EQ(str.getLData(), 30u);
        EXPECT_EQ(std::memcmp(str.getData(), &blk[25], 30), 0);
        EXPECT_EQ(str.getSvid(), 37);
    }
    for (int at : {61, 62}) {
        Bytes blk = gpsBlock(1);
        blk[at] = 0x10;
        NavInfStr_t str;
        EXPECT_FALSE(NavInfStr_t::ishemOkGpsCt(blk.data()));
        EXPECT_FALSE(str.createFromx0c(NAVSTR_GPS, blk.data(), 9));
    }
    Bytes blk = gpsBlock(1);
    blk[2] = 0x04;
    NavInfStr_t str;
    EXPECT_FALSE(str.createFromx0c(NAVSTR_GPS, blk.data(), 9));
}

/* ---- VT and L3: sections behind the standard one --------------------- */

/* A block with sections of the given lengths (0 = absent) for mask bits
 * 0..6, every byte after the length bytes filled with junk. */
Bytes sectionBlock(const std::vector<int>& lens, size_t* at) {
    Bytes b(4, 0);
    unsigned int mask = 0;
    for (size_t i = 0; i < lens.size(); i++) {
        if (!lens[i]) continue;
        mask |= 1u << i;
        at[i] = b.size();
        b.push_back((unsigned char)lens[i]);
        for (int k = 1; k < lens[i]; k++) b.push_back((unsigned char)(0xA5 ^ k));
    }
    b[2] = (unsigned char)mask;
    return b;
}

void putVt(unsigned char* at, unsigned int number) {
    unsigned char in[7] = {0, 0x3C, 0x5A, 0x81, 0x7E, 0, 0xF0};
    in[5] = (unsigned char)((in[5] & 0x3F) | ((number & 3) << 6));
    in[6] = (unsigned char)((in[6] & 0xFC) | (number >> 2));
    x0c::vtWithCheckBits(in, at);
}

TEST(NavInfStrVt, FoundBehindTheSectionsBeforeIt) {
    for (auto lens : {std::vector<int>{0, 0, 32}, {41, 0, 32}, {41, 22, 32},
                      {59, 22, 32, 22}}) {
        size_t at[8] = {};
        Bytes blk = sectionBlock(lens, at);
        unsigned char* vt = &blk[at[2] + 21];
        putVt(vt, 7);
        Bytes orig(vt, vt + 7);
        vt[3] ^= 0x10; // position 29, inside the code
        NavInfStr_t str;
        ASSERT_TRUE(str.createFromx0c(NAVSTR_GLO_VT, blk.data(), 3));
        EXPECT_EQ(str.getNum(), 7u);
        EXPECT_EQ(str.getLData(), 7u);
        EXPECT_EQ(Bytes(vt, vt + 7), orig);  // mended in the message
        EXPECT_EQ(std::memcmp(str.getData(), vt, 7), 0);
    }
}

TEST(NavInfStrL3, StatusTypeAndPlace) {
    // Section 5 lies in front of 6 but is deliberately not counted.
    for (auto lens : {std::vector<int>{0, 0, 0, 0, 0, 0, 73},
                      {41, 22, 32, 22, 9, 0, 73}, {41, 0, 32, 0, 0, 5, 73}}) {
        size_t at[8] = {};
        Bytes blk = sectionBlock(lens, at);
        size_t s = (lens[5] ? at[5] : at[6]) + 35;
        for (unsigned int type = 0; type < 8; type++) {
            blk[s + 34] = (unsigned char)((type << 5) | 0x0B);
            blk[s + 37] = 0x7F;
            NavInfStr_t str;
            ASSERT_EQ(str.createFromx0c(NAVSTR_GLO_L3, blk.data(), 4),
                      type >= 1 && type <= 5) << type;
            if (!str.isCmplt()) continue;
            EXPECT_EQ(str.getNum(), type);
            EXPECT_EQ(str.getLData(), 37u);
            // The status byte comes along behind the 37 string bytes.
            EXPECT_EQ(std::memcmp(str.getData(), &blk[s], 38), 0);
            blk[s + 37] = 0x80;
            EXPECT_FALSE(NavInfStr_t::ishemOkGloL3(&blk[s]));
            EXPECT_FALSE(str.createFromx0c(NAVSTR_GLO_L3, blk.data(), 4));
        }
    }
}

/* ---- field readers and rounding -------------------------------------- */

TEST(NavInfStrFields, CtReaderFollowsTheStringBitNumbers) {
    // Eleven bytes: the check bits in byte 10 must never be read.
    unsigned char d[11] = {};
    d[10] = 0xFF;
    // Field of bits 14..24: value 0x5A3 = 101 1010 0011, sign bit 24 set.
    for (int i = 0; i < 11; i++)
        if ((0x5A3 >> i) & 1) d[9 - (14 + i - 9) / 8] |= 1u << ((14 + i - 9) % 8);
    EXPECT_EQ(NavInfStr_t::GetValueCT(d, 14, 11, false, 1), 0x5A3);
    EXPECT_EQ(NavInfStr_t::GetValueCT(d, 14, 11, true, 1), -0x1A3);
    EXPECT_EQ(NavInfStr_t::GetValueCT(d, 1, 8, false, 1), 0.0);
    EXPECT_EQ(NavInfStr_t::GetValueCT(d, 5, 10, false, 1), 0x200);  // bit 14
    d[0] = 0x1B;
    EXPECT_EQ(NavInfStr_t::GetValueCT(d, 81, 4, false, 1), 11);
    EXPECT_EQ(NavInfStr_t::GetValueCT(d, 85, 1, false, 1), 1);
}

TEST(NavInfStrFields, L3ReaderMostSignificantFirst) {
    Bytes d(40, 0xFF);  // the string, its status byte and two more
    std::fill(d.begin(), d.begin() + 38, 0);
    d[0] = 0x80;      // bit 300
    d[1] = 0xA5;      // bits 292..285
    d[37] = 0x01;     // last status bit: number -3
    EXPECT_EQ(NavInfStr_t::GetValueL3(d.data(), 300, 1, false, 1), 1);
    EXPECT_EQ(NavInfStr_t::GetValueL3(d.data(), 285, 8, false, 1), 0xA5);
    EXPECT_EQ(NavInfStr_t::GetValueL3(d.data(), 285, 8, true, 1), -0x25);
    EXPECT_EQ(NavInfStr_t::GetValueL3(d.data(), 289, 4, false, 1), 0xA);
    // Before the first bit and past the status byte nothing is read.
    EXPECT_EQ(NavInfStr_t::GetValueL3(d.data(), 300, 3, false, 1), 1);
    EXPECT_EQ(NavInfStr_t::GetValueL3(d.data(), -10, 8, false, 1), 128);
}

TEST(NavInfStrFields, RoundHalfAwayFromZero) {
    const struct { double x; int r; } cases[] = {
        {2.5, 3},   {-2.5, -3}, {0.49, 0},    {-0.49, 0}, {-0.5, -1},
        {0.5, 1},   {0.0, 0},   {-0.0, 0},    {1.0, 1},   {-1.0, -1},
        {2.4999, 2}, {-2.5001, -3}, {1e6 + 0.5, 1000001}};
    for (const auto& c : cases) EXPECT_EQ(NavInfStr_t::Round(c.x), c.r) << c.x;
}

/* ---- state ----------------------------------------------------------- */

}  // namespace
