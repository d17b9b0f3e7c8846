#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "decode/navinf_str.h"
#include "x0c_bits.h"
#include "x0c_writer.h"

namespace {

using x0c::Header;
using x0c::SatBlock;
using Bytes = std::vector<uint8_t>;

uint64_t getLE(const uint8_t* p, int n) {
    uint64_t v = 0;
    for (int i = n - 1; i >= 0; i--) v = v << 8 | p[i];
    return v;
}

/* The two satellites of the hand-worked message below. */
SatBlock handGlonass() {
    SatBlock g;
    g.num = 5;
    g.litByte = 0x83;
    g.sig[0].present = true;
    g.sig[0].psvd = 0x0042A1B2C3D4;
    g.sig[0].dop = -1234567;
    g.sig[0].faze = -INT64_C(0x12345678900);
    g.sig[0].ampl = 0x0321;
    g.sig[0].angle = 0x0400;
    g.sig[0].aux8 = 0x11;
    g.elev10 = 450;
    g.aux = 0xBEEF;
    g.sig[1].present = true;
    g.sig[1].psvd = -0x12345;
    g.sig[1].dop = 0x00010203;
    g.sig[1].faze = INT64_C(0x0A0B0C0D0E);
    g.sig[1].ampl = 0x0102;
    g.sig[1].angle = 0x1234;
    g.sig[1].aux8 = 0x22;
    /* String 1 with information bits 9 and 35 set besides the number. */
    g.hasCt = true;
    g.ct[0] = 0x01;
    g.ct[6] = 0x04;
    g.ct[9] = 0x01;
    g.hasSb10 = true;
    g.chan = 3;
    g.sb10Flags = 0xA0;
    return g;
}

SatBlock handGps() {
    SatBlock p;
    p.gps = true;
    p.num = 12;
    p.sig[0].present = true;
    p.sig[0].psvd = 0x00003B9ACA00;
    p.sig[0].dop = x0c::dopToRaw(2500.0);
    p.sig[0].faze = INT64_C(0x100000000);
    p.sig[0].ampl = 45;
    p.sig[0].angle = 0xFFFF;
    p.sig[0].aux8 = 0x55;  // not written: byte 57 is the parity indicator
    p.elev10 = 900;
    p.aux = 1;
    p.hasGps = true;
    /* Words 1 (TLM), 2 (HOW: TOW count 0x0ABCD, subframe 1), 3 and 10. */
    uint32_t w[10] = {0x8B1234, 0x55E684, 0x010203, 0, 0, 0, 0, 0, 0, 0xA0B0C0};
    x0c::gpsWordsToStored(w, p.gpsSf);
    return p;
}

Header handHeader() {
    Header h;
    h.tmRsvr = 0x12345678;
    h.dtGpsUtc = 18;
    h.temperature = -125;
    h.pressure = 10132;
    h.humidity = 455;
    return h;
}

/* Worked out byte by byte from the layout tables, not from the writer:
 * if writer and reader ever agree on a wrong layout, this disagrees. */
const uint8_t kHandMessage[] = {
    // header: type, length 159, offSat 25, tmRsvr, gap, numSat 2
    0x0C, 0x9F, 0x00, 0x19, 0x78, 0x56, 0x34, 0x12, 0x00, 0x02,
    0x00, 0x00, 0x00, 0x00,              // gap
    0x12,                                // GPS-UTC 18 s
    0x00, 0x00, 0x00, 0x00,              // gap
    0x83, 0xFF,                          // -12.5 degrees
    0x94, 0x27,                          // 1013.2 hPa
    0xC7, 0x01,                          // 45.5 %
    // GLONASS block: number 5, letter byte, mask bits 0, 1, 10
    0x05, 0x83, 0x03, 0x04,
    // sub-block 0, 41 bytes
    0x29,
    0xD4, 0xC3, 0xB2, 0xA1, 0x42, 0x00,              // pseudorange
    0x79, 0x29, 0xED, 0xFF,                          // Doppler -1234567
    0x00, 0x77, 0x98, 0xBA, 0xDC, 0xFE, 0xFF, 0xFF,  // phase
    0x21, 0x03,                                      // amplitude
    // CT string: number 1 (bit 81), bits 35 and 9; check bits c2 c5 c6
    // c7 and the overall parity c8
    0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x04, 0x00, 0x00, 0x01, 0xF2,
    0x00, 0x00,                                      // unused
    0xC2, 0x01,                                      // elevation 45.0
    0xEF, 0xBE,                                      // aux
    0x00, 0x04,                                      // angle
    0x11,                                            // aux8
    // sub-block 1, 22 bytes
    0x16,
    0xBB, 0xDC, 0xFE, 0xFF,                          // difference -0x12345
    0x03, 0x02, 0x01, 0x00,                          // Doppler
    0x0E, 0x0D, 0x0C, 0x0B, 0x0A, 0x00, 0x00, 0x00,  // phase
    0x02, 0x01,                                      // amplitude
    0x34, 0x12,                                      // angle
    0x22,                                            // aux8
    // sub-block 10, 4 bytes: channel 3, flags bits 5 and 7
    0x04, 0x03, 0x00, 0xA0,
    // GPS block: number 12 with the system bit, mask bit 0
    0x8C, 0x00, 0x01, 0x00,
    // sub-block 0, 59 bytes
    0x3B,
    0x00, 0xCA, 0x9A, 0x3B, 0x00, 0x00,              // pseudorange
    0x00, 0x00, 0x80, 0x02,                          // 2.5 kHz
    0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,  // phase 65536 cycles
    0x2D, 0x00,                                      // amplitude
    // subframe, last transmitted byte first: word 10, words 9..4, 3, 2, 1
    0xC0, 0xB0, 0xA0,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x03, 0x02, 0x01, 0x84, 0xE6, 0x55, 0x34, 0x12, 0x8B,
    0x84, 0x03,                                      // elevation 90.0
    0x01, 0x00,                                      // aux
    0xFF, 0xFF,                                      // angle
    0x00, 0x00,                                      // parity good
};

TEST(X0cWriter, HandWorkedMessage) {
    Bytes msg = x0c::buildMessage(handHeader(), {handGlonass(), handGps()});
    Bytes want(kHandMessage, kHandMessage + sizeof kHandMessage);
    ASSERT_EQ(msg.size(), want.size());
    for (size_t i = 0; i < want.size(); i++)
        EXPECT_EQ(msg[i], want[i]) << "byte " << i;
}

TEST(X0cWriter, RawUnitsRoundToNearestCount) {
    // one millisecond of light time is 2^32 counts
    EXPECT_EQ(x0c::psvdToRaw(x0c::kC / 1000.0), INT64_C(1) << 32);
    double count = x0c::kC / 1000.0 / 4294967296.0;  // metres per count
    EXPECT_EQ(x0c::psvdToRaw(-2.4 * count), -2);
    EXPECT_EQ(x0c::psvdToRaw(-2.6 * count), -3);
    EXPECT_EQ(x0c::psvdToRaw(2.6 * count), 3);
    // a GPS-like range: 21000 km is 70.048... ms
    EXPECT_EQ(x0c::psvdToRaw(21.0e6),
              (int64_t)std::llround(21.0e6 / 299792458.0 * 1e3 * 4294967296.0));

    EXPECT_EQ(x0c::dopToRaw(1000.0), 1 << 24);
    EXPECT_EQ(x0c::dopToRaw(-1000.0), -(1 << 24));
    EXPECT_EQ(x0c::dopToRaw(1000.0 / 16777216.0 * 0.6), 1);
    EXPECT_EQ(x0c::dopToRaw(-1000.0 / 16777216.0 * 0.6), -1);

    EXPECT_EQ(x0c::fazeToRaw(1.0), 65536);
    EXPECT_EQ(x0c::fazeToRaw(-0.6 / 65536.0), -1);
    // beyond 32 bits: a phase of 2^40 cycles
    EXPECT_EQ(x0c::fazeToRaw(1099511627776.0), INT64_C(1) << 56);
}

/* The library's string intake must find every string where the writer put
 * it, behind whichever sub-blocks precede it. */
TEST(X0cWriter, ReaderFindsEachString) {
    SatBlock g;
    for (int k = 0; k < 4; k++) g.sig[k].present = true;
    g.hasCt = true;
    x0c::putBitsCT(g.ct, 81, 4, 11);
    x0c::putBitsCT(g.ct, 9, 40, UINT64_C(0xC3A5F00F5A));
    g.hasVt = true;
    x0c::putBits(g.vt, 47, 4, 9);
    x0c::putBits(g.vt, 8, 39, UINT64_C(0x5A0F3C6996));
    g.hasL3 = true;
    for (int i = 0; i < 37; i++) g.l3[i] = (uint8_t)(0xA0 + i);
    g.l3[34] = 5 << 5;
    g.hasSb7 = true;
    g.hasSb10 = true;
    Bytes b;
    x0c::appendBlock(g, b);

    NavInfStr_t ct, vt, l3;
    ASSERT_TRUE(ct.createFromx0c(NAVSTR_GLO_CT, b.data(), 5));
    EXPECT_EQ(ct.getNum(), 11u);
    EXPECT_EQ(std::memcmp(ct.getData(), g.ct, 10), 0);
    ASSERT_TRUE(vt.createFromx0c(NAVSTR_GLO_VT, b.data(), 5));
    EXPECT_EQ(vt.getNum(), 9u);
    EXPECT_EQ(NavInfStr_t::GetValueVT(vt.getData(), 8, 39, false, 1.0),
              (double)UINT64_C(0x5A0F3C6996));
    ASSERT_TRUE(l3.createFromx0c(NAVSTR_GLO_L3, b.data(), 5));
    EXPECT_EQ(l3.getNum(), 5u);
    EXPECT_EQ(std::memcmp(l3.getData(), g.l3, 37), 0);
    g.l3Bad = true;
    b.clear();
    x0c::appendBlock(g, b);
    EXPECT_FALSE(l3.createFromx0c(NAVSTR_GLO_L3, b.data(), 5));

    SatBlock p = handGps();
    p.sig[2].present = true;
    b.clear();
    x0c::appendBlock(p, b);
    NavInfStr_t sf;
    ASSERT_TRUE(sf.createFromx0c(NAVSTR_GPS, b.data(), 5));
    EXPECT_EQ(sf.getNum(), 1u);
    EXPECT_EQ(std::memcmp(sf.getData(), p.gpsSf, 30), 0);
    p.gpsParity = 0x0100;  // only the high byte set: the whole word counts
    b.clear();
    x0c::appendBlock(p, b);
    EXPECT_FALSE(sf.createFromx0c(NAVSTR_GPS, b.data(), 5));
}

TEST(X0cWriter, GpsParityIndicatorSharesTheAux8Byte) {
    SatBlock p = handGps();
    p.gpsParity = 0x1234;
    Bytes b;
    x0c::appendBlock(p, b);
    EXPECT_EQ(getLE(&b[4 + 57], 2), 0x1234u);
    EXPECT_EQ(b.size(), 4u + 59);

    // a place 0 without a subframe must not read as a good subframe 0
    p.hasGps = false;
    p.gpsParity = 0;
    b.clear();
    x0c::appendBlock(p, b);
    EXPECT_EQ(getLE(&b[4 + 57], 2), 0xFFFFu);
    for (int i = 21; i <= 50; i++) EXPECT_EQ(b[4 + i], 0) << i;

    // nothing to carry: no sub-block 0 at all
    p.sig[0].present = false;
    b.clear();
    EXPECT_EQ(x0c::appendBlock(p, b), 4u);
    EXPECT_EQ(getLE(&b[2], 2), 0u);
}

TEST(X0cWriter, RefusesWhatDoesNotFit) {
    Bytes out = {0xEE};
    SatBlock s;
    s.sig[0].present = true;
    s.sig[0].psvd = INT64_C(1) << 47;
    EXPECT_THROW(x0c::appendBlock(s, out), std::out_of_range);
    s.sig[0].psvd = -(INT64_C(1) << 47) - 1;
    EXPECT_THROW(x0c::appendBlock(s, out), std::out_of_range);
    s.sig[0].psvd = 0;
    s.sig[3].present = true;
    s.sig[3].psvd = INT64_C(1) << 31;
    EXPECT_THROW(x0c::appendBlock(s, out), std::out_of_range);
    s.sig[3].psvd = 0;
    s.hasSb7 = true;
    s.sb7[1] = UINT64_C(1) << 48;
    EXPECT_THROW(x0c::appendBlock(s, out), std::out_of_range);
    s.sb7[1] = 0;
    s.num = 128;
    EXPECT_THROW(x0c::appendBlock(s, out), std::out_of_range);
    s.num = 1;
    s.hasGps = true;
    EXPECT_THROW(x0c::appendBlock(s, out), std::invalid_argument);
    s.hasGps = false;
    s.gps = true;
    s.hasVt = true;
    EXPECT_THROW(x0c::appendBlock(s, out), std::invalid_argument);
    // a refused block leaves the buffer as it was
    EXPECT_EQ(out, Bytes{0xEE});

    EXPECT_THROW(x0c::dopToRaw(128000.0), std::out_of_range);  // 2^31 counts
    EXPECT_NO_THROW(x0c::dopToRaw(127999.0));
    EXPECT_THROW(x0c::psvdToRaw(NAN), std::out_of_range);
    EXPECT_THROW(x0c::fazeToRaw(INFINITY), std::out_of_range);
    EXPECT_THROW(x0c::fazeToRaw(1e300), std::out_of_range);

    std::vector<SatBlock> many(256);
    EXPECT_THROW(x0c::buildMessage(Header(), many), std::out_of_range);
    many.resize(255);
    EXPECT_EQ(x0c::buildMessage(Header(), many)[9], 255);
}

}  // namespace
