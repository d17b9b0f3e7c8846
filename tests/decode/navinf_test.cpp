/*
 * Navigation-data collector of one slot: routing of blocks and table
 * requests to the decoders, and what the converter does with the results
 * across messages. These run the real decoders: GPS subframe 4 page 18
 * completes the UTC and ionosphere tables at once, and CT strings 1 to 4
 * in sequence complete a CT ephemeris.
 */
#include <gtest/gtest.h>

#include "decode/intake_fixture.h"
#include "decode/navinf.h"

using namespace intake;
using x0c::SatBlock;

namespace {

std::vector<uint8_t> block(const SatBlock& s) {
    std::vector<uint8_t> out;
    x0c::appendBlock(s, out);
    return out;
}

SatBlock page18() {
    SatBlock s = sat(true, 3, 3);
    gpsSubframe(s, 4, 56);
    return s;
}

SatBlock ctSat(uint8_t m) {
    SatBlock s = sat(false, 1, 1);
    ctString(s, m);
    return s;
}

/* Feeds CT strings 1 to 4, each when it is due; returns the set. */
tblSatGlo ctEphemeris(Feed& feed, SatBlock first) {
    tblSatGlo set = feed(header(kT0 + 3), {first})->tblGlo[0];
    for (uint8_t m = 2; m <= 4; m++) feed(header(kT0 + 1 + 2 * m), {ctSat(m)});
    return set;
}

}  // namespace

TEST(IntakeNavInf, BlocksGoOnlyToTheDecodersOfTheHeadersSystem) {
    std::vector<uint8_t> blk = block(page18());
    for (uint8_t sys : {0, 2, 1}) {
        SCOPED_TRACE(int(sys));
        NavInf_t nav;
        tblHdr_t hdr = {};
        hdr.sys = sys;
        nav.upx0c(blk.data(), kT0, &hdr);
        tblTmPrmGps_t tp = {};
        tblIonGps_t ion = {};
        tblOprGps_t opr = {};
        tblAlmGps_t alm = {};
        EXPECT_EQ(nav.getTbl(&tp), 1);
        EXPECT_EQ(nav.getTbl(&ion), 1);
        EXPECT_EQ(nav.getTbl(&opr), 1);
        EXPECT_EQ(nav.getTbl(&alm), 1);
        EXPECT_EQ(tp.actual, sys == 1 ? 1 : 0);
        EXPECT_EQ(ion.actual, sys == 1 ? 1 : 0);
        EXPECT_EQ(opr.actual + alm.actual, 0);

        /* clear() empties the GPS decoders too. */
        tp.actual = 0;
        nav.clear();
        nav.getTbl(&tp);
        EXPECT_EQ(tp.actual, 0);
    }
}

TEST(IntakeNavInf, GlonassRequestsPickTheTableOfTheirSource) {
    Feed feed;
    const tblSatGlo set = ctEphemeris(feed, ctSat(1));
    EXPECT_EQ(set.tblOprGlo[0]->actual, 1);
    EXPECT_EQ(set.tblOprGlo[1]->actual, 0);
    EXPECT_EQ(set.tblHdr->badNavInfCt, 0);

    /* The same strings through a bare collector: index 0 fills pair[0]
     * only, index 1 (no VT strings) and index 2 touch nothing. */
    NavInf_t nav;
    tblHdr_t hdr = {};
    for (uint8_t m = 1; m <= 4; m++) {
        std::vector<uint8_t> blk = block(ctSat(m));
        nav.upx0c(blk.data(), kT0 + 1 + 2 * m, &hdr);
    }
    tblOprGlo_t opr[3] = {};
    tblOprGlo_t* pair[3] = {&opr[0], &opr[1], &opr[2]};
    EXPECT_EQ(nav.getTbl(pair, &hdr, 2), 0);
    EXPECT_EQ(nav.getTbl(pair, &hdr, -1), 0);
    EXPECT_EQ(opr[0].actual + opr[1].actual + opr[2].actual, 0);
    EXPECT_EQ(nav.getTbl(pair, &hdr, 1), 1);
    EXPECT_EQ(opr[1].actual, 0);
    EXPECT_EQ(nav.getTbl(pair, &hdr, 0), 1);
    EXPECT_EQ(opr[0].actual, 1);
    EXPECT_EQ(opr[1].actual + opr[2].actual, 0);

    tblTmPrmGlo_t tp[3] = {};
    tblTmPrmGlo_t* tpair[3] = {&tp[0], &tp[1], &tp[2]};
    tblAlmGlo_t* alm = new tblAlmGlo_t[3]();
    tblAlmGlo_t* apair[3] = {&alm[0], &alm[1], &alm[2]};
    EXPECT_EQ(nav.getTbl(tpair, &hdr, 3), 0);
    EXPECT_EQ(nav.getTbl(apair, &hdr, 2), 0);
    EXPECT_EQ(nav.getTbl(tpair, &hdr, 0), 1);
    EXPECT_EQ(nav.getTbl(apair, &hdr, 1), 1);
    EXPECT_EQ(tp[0].actual + tp[1].actual + tp[2].actual, 0);
    EXPECT_EQ(alm[0].actual + alm[1].actual + alm[2].actual, 0);
    delete[] alm;
}

TEST(IntakeNavInf, RejectedCtEphemerisMarksTheHeaderAndIsVoided) {
    SatBlock first = ctSat(1);
    /* x velocity 5 km/s, beyond the 4.3 km/s limit (string bits 64..41) */
    x0c::putBitsCT(first.ct, 41, 24, x0c::rawSignMag(5.0, 1.0 / 1048576, 24));
    Feed feed;
    const tblSatGlo set = ctEphemeris(feed, first);
    EXPECT_EQ(set.tblOprGlo[0]->actual, 0);
    EXPECT_EQ(set.tblHdr->badNavInfCt, 48);
}

/* A string out of sequence voids the CT tables before the collector is
 * asked for them: a collector that still holds a complete set refills the
 * ephemeris in the same message, one that does not leaves it void. */
TEST(IntakeNavInf, SequenceLossVoidsBeforeTheCollectorRefills) {
    Feed feed;
    const tblSatGlo set = ctEphemeris(feed, ctSat(1));
    ASSERT_EQ(set.tblOprGlo[0]->actual, 1);
    feed(header(kT0 + 12), {ctSat(6)}); /* string 5 is due */
    EXPECT_EQ(set.tblHdr->badNavInfCt, 64);
    EXPECT_EQ(set.tblOprGlo[0]->actual, 1);

    feed(header(kT0 + 33), {ctSat(1)}); /* a new frame restarts the collector */
    EXPECT_EQ(set.tblOprGlo[0]->actual, 1);
    feed(header(kT0 + 37), {ctSat(2)}); /* string 3 is due */
    EXPECT_EQ(set.tblHdr->badNavInfCt, 64);
    EXPECT_EQ(set.tblOprGlo[0]->actual, 0);
}

/* The CT collector never completes a time-parameter set; the VT one does,
 * so of the pair it is the second table that becomes valid. VT strings 8
 * and 10 of cycles 0 and 1 and strings 8, 9, 10 of cycle 2 make the set;
 * string 1 carries the cycle in bits 30-32. */
TEST(IntakeNavInf, GlonassTimeParametersComeFromTheVtSource) {
    Feed feed;
    unsigned int t = kT0 + 3;
    tblSatGlo set = {};
    const unsigned strings[][2] = {{1, 0}, {8, 0}, {10, 0}, {1, 1}, {8, 0},
                                   {1, 2}, {8, 0}, {9, 0},  {10, 0}};
    const size_t n = sizeof strings / sizeof strings[0];
    for (size_t i = 0; i < n; i++) {
        SatBlock b = sat(false, 1, 1);
        b.hasVt = true;
        x0c::putBits(b.vt, 47, 4, strings[i][0]);
        if (strings[i][0] == 1) x0c::putBits(b.vt, 30, 3, strings[i][1]);
        set = feed(header(t++), {b})->tblGlo[0];
        if (i + 1 < n) {
            EXPECT_EQ(set.tblTmPrmGlo[1]->actual, 0) << i;
        }
    }
    EXPECT_EQ(set.tblTmPrmGlo[1]->actual, 1);
    EXPECT_EQ(set.tblTmPrmGlo[0]->actual, 0);
}
