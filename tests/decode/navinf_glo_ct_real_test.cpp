/*
 * GLONASS CT collectors on real broadcast strings (data/rawnav), compared
 * with what the recording receivers decoded themselves.
 *
 * S1 (Septentrio log): strings 2 to 7 of one frame from ten satellites,
 * with the receiver's ephemerides, almanac and time parameters. String 1
 * is not in the recording, so strings 2 to 4 are completed with a string 1
 * of our own (its fields are not compared).
 * U1 (u-blox log): 74 s of strings 1 to 15 from eight satellites, no
 * reference: the tables must be complete and physically consistent.
 */
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>

#include "decode/navinf_glo_ct.h"
#include "decode/navinf_glo_ct_fields.h"
#include "glo_ct_encode.h"
#include "glo_ct_test_util.h"

using namespace glocttest;

namespace {

/* Equal within half a broadcast count. */
#define EXPECT_RES(got, want, lsb) \
    EXPECT_LE(std::fabs((got) - (want)), (lsb) / 2) << #got
#define LSB(n) std::ldexp(1.0, -(n))

/* The strings of S1 by slot and string number (L1 and L2 carry the same). */
std::map<int, std::map<int, RealGloString>> s1BySlot() {
    std::map<int, std::map<int, RealGloString>> out;
    for (const RealGloString& r : loadRealGloStringsFile("glo_strings_sbf_log0000.txt"))
        if (r.signal == "L1OF" || !out[r.slot].count(r.number)) out[r.slot][r.number] = r;
    return out;
}

unsigned int field(const uint8_t* s, const GloCtField& f) {
    return (unsigned int)NavInfStr_t::GetValueCT(s, f.lsb, f.len, false, 1.0);
}

}  // namespace

TEST(GloCtRealData, S1EphemerisMatchesReceiver) {
    auto refs = loadRefs("sbf_log0000_glonav.txt");
    auto strs = s1BySlot();
    int slots = 0, fields = 0, fed = 0;
    for (auto& [slot, ref] : refs) {
        auto& s = strs[slot];
        if (!s.count(2) || !s.count(3) || !s.count(4)) continue;
        SCOPED_TRACE(slot);
        slots++;
        /* The writer rebuilds exactly the check bits the satellite sent. */
        for (int n = 2; n <= 4; n++) {
            uint8_t full[11];
            x0c::ctWithCheckBits(s[n].bytes.data(), full);
            EXPECT_EQ(0, std::memcmp(full, s[n].bytes.data(), 11));
        }
        unsigned int t2 = tmZelOfGps(s[2].week, s[2].tow);
        tblOprGlo_t zero;
        std::memset(&zero, 0, sizeof zero);
        uint8_t pieces[40];
        x0c::gloCtEncodeStr1(zero, (t2 - 4) % 86400, pieces);
        for (int n = 2; n <= 4; n++) std::memcpy(pieces + 10 * (n - 1), s[n].bytes.data(), 10);

        tblOprGlo_t t, viaBlocks;
        std::memset(&t, 0, sizeof t);
        std::memset(&viaBlocks, 0, sizeof viaBlocks);
        tblHdr_t hdr{};
        OprGloCt_t direct;
        direct.check(pieces, &t, &hdr);
        EXPECT_RES(t.y / 1000, ref[7], LSB(11));
        EXPECT_RES(t.z / 1000, ref[8], LSB(11));
        EXPECT_RES(t.vy / 1000, ref[10], LSB(20));
        EXPECT_RES(t.vz / 1000, ref[11], LSB(20));
        EXPECT_RES(t.ay / 1000, ref[13], LSB(30));
        EXPECT_RES(t.az / 1000, ref[14], LSB(30));
        EXPECT_RES(t.gammaN, ref[15], LSB(40));
        EXPECT_RES(t.tauN, ref[16], LSB(30));
        EXPECT_RES(t.dTauN, ref[17], LSB(30));
        EXPECT_EQ(t.tb, (unsigned int)ref[24] * 60);
        EXPECT_EQ(t.m, ref[25]);
        EXPECT_EQ(t.nt, ref[29]);
        EXPECT_EQ(+t.ft * 100, ref[30]);
        /* Flags the table does not keep, read with the same field table. */
        EXPECT_EQ(field(s[2].bytes.data(), kGloCtStr2[GLO_S2_BN]), ref[23]);
        EXPECT_EQ(field(s[2].bytes.data(), kGloCtStr2[GLO_S2_P2]), ref[21]);
        EXPECT_EQ(field(s[3].bytes.data(), kGloCtStr3[GLO_S3_P]), ref[26]);
        EXPECT_EQ(field(s[3].bytes.data(), kGloCtStr3[GLO_S3_LN]), ref[27]);
        EXPECT_EQ(field(s[4].bytes.data(), kGloCtStr4[GLO_S4_P4]), ref[28]);
        EXPECT_EQ(field(s[4].bytes.data(), kGloCtStr4[GLO_S4_EN]), ref[22]);
        EXPECT_EQ(field(s[4].bytes.data(), kGloCtStr4[GLO_S4_N]), (unsigned int)slot);
        fields += 20;

        /* The same strings as the receiver delivers them, in satellite
         * blocks one second after each string ends. */
        OprGloCt_t c;
        feed(c, pieces, t2 - 1);
        for (int n = 2; n <= 4; n++, fed++)
            feed(c, s[n].bytes.data(), tmZelOfGps(s[n].week, s[n].tow) + 1);
        ASSERT_TRUE(c.isCmplt());
        ASSERT_TRUE(c.getTbl(&viaBlocks, &hdr));
        EXPECT_EQ(0, std::memcmp(&viaBlocks, &t, sizeof t));

        /* The encoder writes back the very bits of every field the table
         * keeps, negative zeros included. */
        uint8_t again[10];
        x0c::gloCtEncodeStr2(t, again);
        for (int i : {GLO_S2_TB, GLO_S2_VY, GLO_S2_AY, GLO_S2_Y})
            EXPECT_EQ(field(again, kGloCtStr2[i]), field(s[2].bytes.data(), kGloCtStr2[i]));
        x0c::gloCtEncodeStr3(t, again);
        for (int i : {GLO_S3_GAMMA, GLO_S3_VZ, GLO_S3_AZ, GLO_S3_Z})
            EXPECT_EQ(field(again, kGloCtStr3[i]), field(s[3].bytes.data(), kGloCtStr3[i]));
        x0c::gloCtEncodeStr4(t, slot, 0, again);
        for (int i : {GLO_S4_TAU, GLO_S4_DTAU, GLO_S4_FT, GLO_S4_NT, GLO_S4_N, GLO_S4_M})
            EXPECT_EQ(field(again, kGloCtStr4[i]), field(s[4].bytes.data(), kGloCtStr4[i]));
    }
    EXPECT_EQ(slots, 9);
    std::printf("S1 ephemeris: %d slots, %d strings fed, %d fields compared\n",
                slots, fed, fields);
}

TEST(GloCtRealData, U1SuperframeThroughCollectors) {
    std::vector<RealGloString> all = loadRealGloStringsFile("glo_strings_ubx_testobsnav.txt");
    std::stable_sort(all.begin(), all.end(),
                     [](const RealGloString& a, const RealGloString& b) { return a.tow < b.tow; });
    ASSERT_EQ(all.size(), 353u);
    struct Sat {
        OprGloCt_t opr;
        TmPrmGloCt_t prm;
        AlmGloCt_t alm;
        std::vector<tblOprGlo_t> eph;
        std::map<unsigned int, const RealGloString*> byEnd; /* string end -> string */
    };
    std::map<int, Sat> sats;
    std::map<int, int> letter;
    for (const RealGloString& r : all) {
        Sat& s = sats[r.slot];
        letter[r.slot] = r.letter;
        /* Strings end on even seconds; some reports (slot 14 on L2) come
         * one measurement epoch late. With that, the recording's time and
         * the string number agree. */
        unsigned int end = tmZelOfGps(r.week, r.tow);
        end -= end % 2;
        ASSERT_EQ(x0c::gloCtSlotAt(end - 1).str, (unsigned int)r.number);
        s.byEnd[end] = &r;
        for (unsigned int d = 1; d <= 2; d++) {
            feed(s.opr, r.bytes.data(), end + d);
            feed(s.prm, r.bytes.data(), end + d);
            feed(s.alm, r.bytes.data(), end + d);
        }
        tblOprGlo_t t;
        tblHdr_t hdr{};
        std::memset(&t, 0, sizeof t);
        if (!s.opr.isCmplt()) continue;
        ASSERT_TRUE(s.opr.getTbl(&t, &hdr));
        if (!s.eph.empty() && s.eph.back().tk == t.tk) continue;
        EXPECT_EQ(hdr.badNavInfCt, 0);
        s.eph.push_back(t);
        /* Frame time of the collected string 1. */
        unsigned int frameStart = x0c::gloCtSlotAt(end - 1).frameStart;
        EXPECT_EQ(t.tk, frameStart);
        EXPECT_EQ(t.nt, (end / 86400) - 8766 + 1); /* days since 2024-01-01, from 1 */
        EXPECT_LE(std::abs((int)t.tb - (int)t.tk), 3600);
    }
    int ephs = 0, entries = 0;
    for (auto& [slot, s] : sats) {
        SCOPED_TRACE(slot);
        ASSERT_FALSE(s.eph.empty());
        EXPECT_FALSE(s.prm.isCmplt());
        EXPECT_FALSE(s.alm.isCmplt()); /* half a superframe only */
        for (const tblOprGlo_t& t : s.eph) {
            ephs++;
            double r = std::sqrt(t.x * t.x + t.y * t.y + t.z * t.z);
            double v = std::sqrt(t.vx * t.vx + t.vy * t.vy + t.vz * t.vz);
            EXPECT_NEAR(r, 25.5e6, 0.1e6);
            EXPECT_GT(v, 1500.0);
            EXPECT_EQ(field(t.str[3], kGloCtStr4[GLO_S4_N]), (unsigned int)slot);
            EXPECT_EQ(t.m, 1);
            EXPECT_LE(+t.ft, 32.0);
            const tblOprGlo_t& f = s.eph.front();
            if (t.tb == f.tb) {
                EXPECT_EQ(+t.x, +f.x);
                EXPECT_EQ(+t.vy, +f.vy);
                EXPECT_EQ(+t.tauN, +f.tauN);
            }
        }
        /* Almanac pairs sent whole by this satellite: slots in
         * transmission order, the draconic period of a GLONASS orbit, and
         * the carrier numbers of the satellites this recording tracks. */
        for (auto& [end, first] : s.byEnd) {
            x0c::GloCtSlot at = x0c::gloCtSlotAt(end - 1);
            int idx = gloCtAlmIndex(at.frame, at.str);
            if (idx < 0 || idx % 2 || !s.byEnd.count(end + 2)) continue;
            tblAlmGloSat_t e;
            gloCtAlmEntry(first->bytes.data(), s.byEnd[end + 2]->bytes.data(), &e);
            entries++;
            EXPECT_EQ(e.onErrData, 0);
            EXPECT_EQ(e.onEmpty, 0);
            EXPECT_EQ(e.num, idx / 2 + 1);
            EXPECT_NEAR(e.dT, -2656.0, 2.0);
            EXPECT_LE(+e.lambdaT, 86400.0 / 2);
            if (letter.count(e.num)) {
                int k = letter[e.num];
                EXPECT_EQ(e.lit, k < 0 ? k + 32 : k) << (int)e.num;
            }
        }
    }
    EXPECT_EQ(sats.size(), 8u);
    EXPECT_GE(entries, 40);
    std::printf("U1: %zu strings fed, %d ephemerides and %d almanac pairs checked\n",
                all.size(), ephs, entries);
}
