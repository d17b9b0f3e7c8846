#include <gtest/gtest.h>

#include <array>
#include <cstdint>

#include "decode/navinf_str.h"
#include "decode/real_glo_strings.h"
#include "tools/x0c/x0c_writer.h"

namespace {

typedef std::array<uint8_t, 7> Vt;

/* Deterministic filler for random-looking strings. */
struct Lcg {
    uint32_t s;
    uint8_t next() {
        s = s * 1664525u + 1013904223u;
        return (uint8_t)(s >> 24);
    }
};

Vt encodedVt(Lcg& g) {
    Vt in, out;
    for (auto& b : in) b = g.next();
    x0c::vtWithCheckBits(in.data(), out.data());
    // Positions 8..56 are the caller's; only 1..7 are written.
    EXPECT_EQ(out[0] & 0x80, in[0] & 0x80);
    for (int i = 1; i < 7; i++) EXPECT_EQ(out[i], in[i]);
    return out;
}

void flipVt(uint8_t* s, int p) { s[(p - 1) / 8] ^= 1u << ((p - 1) % 8); }

TEST(X0cHamming, CtCheckBitsOfRealStrings) {
    auto all = loadRealGloStrings();
    ASSERT_EQ(all.size(), 461u);
    for (const RealGloString& r : all) {
        uint8_t out[11];
        x0c::ctWithCheckBits(r.bytes.data(), out);
        for (int i = 0; i < 11; i++) EXPECT_EQ(out[i], r.bytes[i]) << i;
    }
}

TEST(X0cHamming, VtStringsPassAndSingleErrorsAreMended) {
    Lcg g{777};
    for (int n = 0; n < 200; n++) {
        Vt good = encodedVt(g);
        unsigned char flags = 0;
        Vt s = good;
        ASSERT_TRUE(NavInfStr_t::ishemOkGloVt(s.data(), &flags, true));
        EXPECT_EQ(flags, 0);
        for (int p = 1; p <= 56; p++) {
            s = good;
            flipVt(s.data(), p);
            flags = 0;
            bool ok = NavInfStr_t::ishemOkGloVt(s.data(), &flags, true);
            if (p == 7) {  // the overall parity alone
                EXPECT_FALSE(ok);
                EXPECT_EQ(flags, HEM_REJECTED);
                continue;
            }
            EXPECT_TRUE(ok) << p;
            if (p <= 6) {
                EXPECT_EQ(flags, HEM_CHECKBIT) << p;
            } else if (p <= 50) {
                EXPECT_EQ(flags, HEM_CORRECTED) << p;
                EXPECT_EQ(s, good) << p;
            } else {  // not covered by the code
                EXPECT_EQ(flags, 0) << p;
            }
        }
    }
}

}  // namespace
