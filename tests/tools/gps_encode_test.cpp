/*
 * GPS subframe encoder against real broadcast subframes: the broadcast
 * timing and page numbering, and tables decoded from real subframes
 * encoded back into the very bits the satellites sent.
 */
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <vector>

#include "../decode/gps_feed.h"
#include "decode/navinf_gps.h"
#include "decode/navinf_gps_fields.h"
#include "gps_encode.h"

using gpstest::RealSubframe;
using gpstest::wordOf;

namespace {

unsigned svidOf(const uint8_t sf[30]) {
    return (unsigned)(wordOf(sf, 3) >> 16) & 63;
}

/* Bits of words 3-10 that the encoder does not know, per word: reserved
 * bits, the two parity-solving bits that end word 10, and fields the
 * tables do not carry. */
struct Mask {
    uint32_t ignore[11] = {};
    Mask() { ignore[10] = 0x000003; }
};

Mask maskFor(int id, unsigned svid) {
    Mask m;
    if (id == 1) {
        m.ignore[3] = 0x003000;  /* codes on L2 */
        m.ignore[4] = m.ignore[5] = m.ignore[6] = 0xFFFFFF; /* reserved */
        m.ignore[7] = 0xFFFF00;
    } else if (id == 2) {
        m.ignore[10] = 0x0000FF; /* fit interval flag, AODO */
    } else if (id == 3) {
        /* all fields known */
    } else if (svid == GPS_SVID_PAGE18) {
        m.ignore[10] = 0x00FFFF; /* reserved */
    } else if (svid == GPS_SVID_HEALTH5) {
        m.ignore[10] = 0xFFFFFF; /* reserved */
    } else if (svid == GPS_SVID_HEALTH4) {
        /* satellite configurations (not kept) and reserved bits */
        m.ignore[3] = 0x00FFFF;
        m.ignore[4] = m.ignore[5] = m.ignore[6] = m.ignore[7] = 0xFFFFFF;
        m.ignore[8] = 0xFFFFC0;
        m.ignore[10] = 0x00003F;
    } else if (svid == GPS_SVID_DUMMY) {
        m.ignore[10] = 0; /* the alternating pattern runs to the end */
    }
    return m;
}

/* Compares words 3-10 (outside the mask) and the TOW and ID of the
 * handover word; returns the number of words compared. */
int expectSameBits(const uint8_t got[30], const uint8_t want[30],
                   const Mask& m) {
    EXPECT_EQ(wordOf(got, 1) >> 16, 0x8Bu);
    EXPECT_EQ(wordOf(got, 2) & 0xFFFF9C, wordOf(want, 2) & 0xFFFF9C);
    for (int w = 3; w <= 10; w++)
        EXPECT_EQ(wordOf(got, w) & ~m.ignore[w], wordOf(want, w) & ~m.ignore[w])
            << "word " << w;
    return 9;
}

}  // namespace

TEST(GpsEncode, RealEphemerisEncodesToTheBroadcastBits) {
    std::vector<RealSubframe> sfs = gpstest::readSubframes(
        gpstest::dataPath("rawnav/gps_subframes_ubx_coldstart.txt"));
    std::map<int, OprGps_t> col;
    std::map<int, uint32_t> towOf1;
    int sets = 0, words = 0;
    for (const RealSubframe& r : sfs) {
        if (r.id > 3) continue;
        OprGps_t& c = col[r.prn];
        gpstest::feed(c, r.prn, r.sf, gpstest::tmZelOf(r.week, r.tow));
        if (r.id == 1) towOf1[r.prn] = r.tow;
        if (r.id != 3 || !c.isCmplt()) continue;
        tblOprGps_t t;
        c.getTbl(&t);
        uint32_t end1 = towOf1[r.prn];
        if (end1 + 12 != r.tow) continue; /* not one frame */
        uint8_t sf[3][30];
        unsigned iodcHigh = (wordOf(t.subfr1, 3) & 3) << 8;
        unsigned ura = (wordOf(t.subfr1, 3) >> 8) & 15;
        x0c::gpsEncodeSf1(t, (int)ura, (int)(iodcHigh | t.iodc), end1, sf[0]);
        x0c::gpsEncodeSf2(t, end1 + 6, sf[1]);
        x0c::gpsEncodeSf3(t, end1 + 12, sf[2]);
        const uint8_t* real[3] = {t.subfr1, t.subfr2, t.subfr3};
        for (int i = 0; i < 3; i++) {
            SCOPED_TRACE("PRN " + std::to_string(r.prn) + " subframe " +
                         std::to_string(i + 1));
            words += expectSameBits(sf[i], real[i], maskFor(i + 1, 0));
        }
        sets++;
    }
    EXPECT_GE(sets, 9 * 18);
    std::printf("[ encode ephemeris ] %d sets, %d words compared\n", sets,
                words);
}

TEST(GpsEncode, RealAlmanacCycleEncodesToTheBroadcastBits) {
    std::vector<RealSubframe> sfs = gpstest::readSubframes(
        gpstest::dataPath("rawnav/gps_subframes_ubx_rxmsfrbx_2cycles.txt"));
    int cycles = 0, words = 0;
    for (int prn : {11, 13, 20, 21}) {
        AlmGps_t alm;
        TmPrmGps_t utc;
        IonGps_t ion;
        std::vector<const RealSubframe*> cycle;
        for (const RealSubframe& r : sfs) {
            if (r.prn != prn) continue;
            if (x0c::gpsSlotAt(r.tow - 6).page == 1 && r.id == 1)
                cycle.clear();
            cycle.push_back(&r);
            unsigned tm = gpstest::tmZelOf(r.week, r.tow);
            gpstest::feed(alm, prn, r.sf, tm);
            gpstest::feed(utc, prn, r.sf, tm);
            gpstest::feed(ion, prn, r.sf, tm);
            if (r.id != 5 || !alm.isCmplt()) continue;

            /* a whole cycle: encode every page 4/5 of it again */
            tblAlmGps_t a;
            tblTmPrmGps_t u;
            tblIonGps_t i;
            ASSERT_EQ(alm.getTbl(&a), 1);
            ASSERT_TRUE(utc.isCmplt());
            utc.getTbl(&u);
            ion.getTbl(&i);
            x0c::GpsBroadcast b;
            b.alm = &a;
            b.utc = &u;
            b.ion = &i;
            for (const RealSubframe* p : cycle) {
                if (p->id < 4) continue;
                unsigned svid = svidOf(p->sf);
                uint8_t sf[30];
                ASSERT_TRUE(x0c::gpsEncodeAt(b, p->tow - 6, sf));
                /* the reserved and special pages carry nothing the
                 * tables keep */
                bool kept = svid <= 32 || svid == GPS_SVID_PAGE18 ||
                            svid == GPS_SVID_HEALTH4 ||
                            svid == GPS_SVID_HEALTH5;
                if (!kept) continue;
                SCOPED_TRACE("PRN " + std::to_string(prn) + " tow " +
                             std::to_string(p->tow) + " SV ID " +
                             std::to_string(svid));
                words += expectSameBits(sf, p->sf, maskFor(p->id, svid));
            }
            cycles++;
            cycle.clear();
        }
    }
    EXPECT_GE(cycles, 4);
    std::printf("[ encode almanac ] %d cycles, %d words compared\n", cycles,
                words);
}
