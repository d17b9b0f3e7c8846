/*
 * Navigation-string flags of the header table, and the navigation tables
 * they void. These go through the real string checks (code checks, string
 * numbers), so the strings are built with their check bits by the writer.
 */
#include <gtest/gtest.h>

#include "decode/intake_fixture.h"
#include "decode/navinf_str.h"

using namespace intake;
using x0c::SatBlock;

namespace {

/* VT string number n with the two-bit field at 44 and the bit at 46. */
void vtString(SatBlock& s, unsigned n, unsigned f44, unsigned b46) {
    s.hasVt = true;
    std::memset(s.vt, 0, sizeof s.vt);
    x0c::putBits(s.vt, 47, 4, n);
    x0c::putBits(s.vt, 44, 2, f44);
    x0c::putBits(s.vt, 46, 1, b46);
}

const tblHdr_t* gloHdr(Feed& feed, unsigned s, const SatBlock& b) {
    return feed(header(kT0 + s), {b})->tblGlo[0].tblHdr;
}

}  // namespace

/* CT string due at kT0 + s is ((s - 1) mod 30) / 2, 0 standing for 15. */
TEST(IntakeHdrFlags, CtSequenceAndContentMarks) {
    struct Case {
        unsigned s, m;
        int byte;
        uint8_t value, flag;
    } cases[] = {
        {1, 15, -1, 0, 0},      {2, 15, -1, 0, 0},      {3, 1, -1, 0, 0},
        {30, 14, -1, 0, 0},     {3, 15, -1, 0, 64},     {30, 15, -1, 0, 64},
        {5, 2, 1, 0xA0, 5 | 32}, {5, 2, 1, 0x60, 3},    {6, 2, 1, 0x80, 4 | 32},
        {5, 2, 1, 0x1F, 0},     {7, 3, 2, 0x01, 36},    {7, 3, 2, 0x02, 0},
        {9, 4, 9, 0x01, 0},     {11, 5, 9, 0x01, 36},   {19, 9, 9, 0x01, 36},
        {27, 13, 9, 0x01, 36},  {1, 15, 9, 0x01, 36},   {29, 14, 9, 0x01, 0},
        {3, 1, 9, 0x01, 0},     {11, 5, 2, 0x01, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "s=" << c.s << " string " << c.m);
        SatBlock b = sat(false, 1, 1);
        ctString(b, (uint8_t)c.m);
        if (c.byte >= 0) b.ct[c.byte] |= c.value;
        Feed feed;
        EXPECT_EQ(gloHdr(feed, c.s, b)->badNavInfCt, c.flag);
    }
}

TEST(IntakeHdrFlags, OutOfSequenceCtKeepsThePreviousVtAndL3Flags) {
    SatBlock b = sat(false, 1, 1);
    ctString(b, 1);
    vtString(b, 2, 2, 0);
    b.hasL3 = true;
    b.l3Bad = true;
    Feed feed;
    const tblHdr_t* h = gloHdr(feed, 3, b);
    EXPECT_EQ(h->badNavInfCt, 0);
    EXPECT_EQ(h->badNavInfVt, 2);
    EXPECT_EQ(h->badNavInfL3, 16);

    /* String 1 again where string 2 is due; no VT or L3 string this time. */
    SatBlock late = sat(false, 1, 1);
    ctString(late, 1);
    h = gloHdr(feed, 5, late);
    EXPECT_EQ(h->badNavInfCt, 64);
    EXPECT_EQ(h->badNavInfVt, 2);
    EXPECT_EQ(h->badNavInfL3, 16);

    ctString(late, 3);
    h = gloHdr(feed, 7, late);
    EXPECT_EQ(h->badNavInfCt, 0);
    EXPECT_EQ(h->badNavInfVt, 16);
    EXPECT_EQ(h->badNavInfL3, 0);
}

TEST(IntakeHdrFlags, GpsSubframeMarks) {
    struct { uint8_t id, byte21; uint16_t parity; bool has; uint8_t flag; } cases[] = {
        {1, 0x80, 0, true, 32}, {1, 0x7F, 0, true, 0}, {2, 0x80, 0, true, 0},
        {1, 0x00, 1, true, 16}, {0, 0x00, 0, false, 16},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "subframe " << int(c.id) << " parity " << c.parity);
        SatBlock b = sat(true, 1, 1);
        if (c.has) {
            gpsSubframe(b, c.id);
            b.gpsSf[21] = c.byte21;
            b.gpsParity = c.parity;
        } else {
            b.sig[0].present = false; /* no sub-block 0 at all */
            b.sig[2].present = true;
        }
        Feed feed;
        EXPECT_EQ(feed(header(kT0 + 3), {b})->tblGps[0].tblHdr->badNavInfCt, c.flag);
    }
}

/* Which navigation tables a message voids. The tables are marked valid by
 * hand before the message; an incomplete set of strings leaves them as
 * they are, so what changes is what the flags voided. */
TEST(IntakeHdrFlags, FlagsDecideWhichNavigationTablesAreVoided) {
    struct { unsigned s, ct; int vtNum; unsigned vtHealth; bool ctVoid, vtVoid; } cases[] = {
        {7, 3, 2, 1, false, false},  /* ln mark 36, VT health 1 */
        {5, 2, 2, 0, false, false},  /* Bn 5 -> 37 (ct[1] below) */
        {5, 1, 2, 0, true, true},    /* out of sequence; VT 16 of the first message kept */
        {3, 0, 2, 0, true, false},   /* no CT string */
        {3, 1, 2, 2, false, true},   /* VT health 2 */
        {3, 1, -1, 0, false, true},  /* no VT string */
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "s=" << c.s << " CT " << c.ct << " VT " << c.vtNum);
        Feed feed;
        SatBlock b = sat(false, 1, 1);
        const tblSatGlo set = feed(header(kT0 + 1), {b})->tblGlo[0];
        for (int i = 0; i < 3; i++)
            set.tblOprGlo[i]->actual = set.tblTmPrmGlo[i]->actual = set.tblAlmGlo[i]->actual = 1;
        if (c.ct != 0) ctString(b, (uint8_t)c.ct);
        b.ct[1] = 0xA0;
        b.ct[2] = 0x01;
        if (c.vtNum > 0) vtString(b, (unsigned)c.vtNum, c.vtHealth, 0);
        feed(header(kT0 + c.s), {b});
        EXPECT_EQ(set.tblOprGlo[0]->actual, c.ctVoid ? 0 : 1);
        EXPECT_EQ(set.tblTmPrmGlo[0]->actual, c.ctVoid ? 0 : 1);
        EXPECT_EQ(set.tblAlmGlo[0]->actual, c.ctVoid ? 0 : 1);
        EXPECT_EQ(set.tblOprGlo[1]->actual, c.vtVoid ? 0 : 1);
        EXPECT_EQ(set.tblTmPrmGlo[1]->actual, c.vtVoid ? 0 : 1);
        EXPECT_EQ(set.tblAlmGlo[1]->actual, c.vtVoid ? 0 : 1);
    }
    for (uint8_t health : {0x00, 0x80}) {
        Feed feed;
        SatBlock b = sat(true, 1, 1);
        const tblSatGps set = feed(header(kT0 + 1), {b})->tblGps[0];
        set.tblOprGps->actual = set.tblTmPrmGps->actual = 1;
        set.tblAlmGps->actual = set.tblIonGps->actual = 1;
        gpsSubframe(b, 1);
        b.gpsSf[21] = health;
        feed(header(kT0 + 2), {b});
        const int kept = health ? 0 : 1;
        EXPECT_EQ(set.tblOprGps->actual, kept);
        EXPECT_EQ(set.tblTmPrmGps->actual, kept);
        EXPECT_EQ(set.tblAlmGps->actual, kept);
        EXPECT_EQ(set.tblIonGps->actual, kept);
    }
}
