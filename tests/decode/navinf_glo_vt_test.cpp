/*
 * GLONASS VT collectors, fed with satellite blocks built by the message
 * writer. The strings here are laid out by hand, field by field at bit
 * positions typed in below (not taken from the collectors' position
 * table), so that a wrong position, length, sign or scale in that table
 * shows up as a wrong decoded value.
 *
 * The records are 4-byte packed, so their doubles are compared as copies
 * (+t.x): EXPECT_EQ binds its arguments to references, and a reference
 * to a misaligned double is undefined.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "decode/navinf_glo_vt.h"
#include "x0c_bits.h"
#include "x0c_writer.h"

namespace {

/* A VT string under construction: positions 1..56, 1 = LSB of byte 0. */
struct Vt {
    uint8_t b[7] = {};
    explicit Vt(unsigned num) { x0c::putBits(b, 47, 4, num); }
    Vt& put(int pos, int len, uint64_t raw) {
        x0c::putBits(b, pos, len, raw);
        return *this;
    }
    /* Sign-magnitude field: magnitude and sign bit on top. */
    Vt& sm(int pos, int len, uint64_t mag, bool neg) {
        return put(pos, len, mag | (uint64_t)neg << (len - 1));
    }
};

/* String 1 with a frame time: hours, minutes and tens of seconds. */
Vt str1(unsigned h, unsigned min, unsigned tens) {
    return Vt(1).put(39, 5, h).put(33, 6, min).put(30, 3, tens);
}

std::vector<uint8_t> block(const Vt& s) {
    x0c::SatBlock sb;
    sb.num = 4;
    sb.litByte = 6;
    sb.hasVt = true;
    std::memcpy(sb.vt, s.b, 7);
    std::vector<uint8_t> out;
    x0c::appendBlock(sb, out);
    return out;
}

template <class C>
void feed(C& c, const Vt& s, unsigned tm) {
    std::vector<uint8_t> b = block(s);
    c.upx0c(b.data(), tm);
}

const double k2m13 = std::ldexp(1.0, -13), k2m23 = std::ldexp(1.0, -23);
const double k2m30 = std::ldexp(1.0, -30), k2m40 = std::ldexp(1.0, -40);

/* --------------------------------------------------------------------- */
/* Ephemeris                                                              */

/* The eight ephemeris strings, in storage order 1..7, 10, with every
 * field at a valid, recognisable value (position z exactly 27000 km). */
std::vector<Vt> ephStrings() {
    std::vector<Vt> s;
    s.push_back(str1(13, 47, 5).sm(8, 22, 12345, true));           /* tauN */
    s.push_back(Vt(2).sm(8, 29, 100000000, false).sm(37, 5, 3, true));
    s.push_back(Vt(3).sm(8, 29, 54321, true).put(45, 2, 2));       /* y, m */
    s.push_back(Vt(4).sm(8, 29, 221184000, false).sm(37, 5, 6, true));
    s.push_back(Vt(5).sm(8, 27, 36071014, true).put(40, 7, 95));   /* vx, tb */
    s.push_back(Vt(6).sm(8, 27, 1234567, false).sm(35, 11, 1023, true));
    s.push_back(Vt(7).sm(8, 27, 7654321, false).sm(40, 5, 13, true));
    s.push_back(Vt(10).put(8, 11, 1461));                          /* nt */
    return s;
}

void feedAll(OprGloVt_t& c, const std::vector<Vt>& s, unsigned t0) {
    for (size_t i = 0; i < s.size(); i++) feed(c, s[i], t0 + (unsigned)i);
}

TEST(GloVtEphemeris, HandPlacedFieldsDecode) {
    OprGloVt_t c;
    feedAll(c, ephStrings(), 1000);
    ASSERT_TRUE(c.isCmplt());
    tblOprGlo_t t;
    std::memset(&t, 0xA5, sizeof t);
    ASSERT_TRUE(c.getTbl(&t));
    EXPECT_EQ(t.actual, 1);
    EXPECT_EQ(t.tk, 13u * 3600 + 47 * 60 + 50);
    EXPECT_EQ(t.tb, 95u * 900);
    EXPECT_EQ(+t.tauN, -12345 * k2m30);
    EXPECT_EQ(+t.x, 100000000 * k2m13 * 1000);
    EXPECT_EQ(+t.y, -54321 * k2m13 * 1000);
    EXPECT_EQ(+t.z, 27000000.0);
    EXPECT_EQ(+t.vx, -36071014 * k2m23 * 1000);
    EXPECT_EQ(+t.vy, 1234567 * k2m23 * 1000);
    EXPECT_EQ(+t.vz, 7654321 * k2m23 * 1000);
    EXPECT_EQ(+t.ax, -3 * k2m30 * 1000);
    EXPECT_EQ(+t.ay, 0.0);
    EXPECT_EQ(+t.az, -6 * k2m30 * 1000);
    EXPECT_EQ(+t.gammaN, -1023 * k2m40);
    EXPECT_EQ(+t.dTauN, -13 * k2m30);
    EXPECT_EQ(+t.ft, 0.0);
    EXPECT_EQ(t.nt, 1461);
    EXPECT_EQ(t.m, 2);
    /* Raw slots: the strings in storage order, 7 bytes each, rest 0. */
    const unsigned nums[8] = {1, 2, 3, 4, 5, 6, 7, 10};
    for (int i = 0; i < 8; i++) {
        EXPECT_EQ(NavInfStr_t::GetValue(t.str[i], 47, 4, false, 1), nums[i]);
        EXPECT_EQ(t.str[i][7] | t.str[i][8] | t.str[i][9], 0);
    }
}

TEST(GloVtEphemeris, CompletenessNeedsOrderedStringsWithin720s) {
    std::vector<Vt> s = ephStrings();
    {   /* string 4 arrives before string 3 in time */
        OprGloVt_t c;
        unsigned t[8] = {100, 101, 103, 102, 104, 105, 106, 107};
        for (int i = 0; i < 8; i++) feed(c, s[i], t[i]);
        EXPECT_FALSE(c.isCmplt());
        tblOprGlo_t tbl;
        std::memset(&tbl, 0x5A, sizeof tbl);
        tblOprGlo_t before = tbl;
        EXPECT_TRUE(c.getTbl(&tbl));
        EXPECT_EQ(std::memcmp(&tbl, &before, sizeof tbl), 0);
    }
    {   /* equal times and a gap of exactly 720 s are fine, 721 is not */
        OprGloVt_t c;
        unsigned t[8] = {100, 100, 820, 821, 821, 822, 823, 824};
        for (int i = 0; i < 8; i++) feed(c, s[i], t[i]);
        EXPECT_TRUE(c.isCmplt());
        feed(c, s[2], 821);  /* now 1 s too late after string 2 */
        feed(c, s[3], 822);
        EXPECT_FALSE(c.isCmplt());
    }
    {   /* string 1 opens a new set; strings 8 and 9 are not kept */
        OprGloVt_t c;
        feedAll(c, s, 10);
        feed(c, Vt(8).put(8, 39, ~0ull), 30);
        feed(c, Vt(9), 31);
        EXPECT_TRUE(c.isCmplt());
        feed(c, s[0], 10);  /* same time: only the emptying can fail it */
        EXPECT_FALSE(c.isCmplt());
    }
}

/* --------------------------------------------------------------------- */
/* Time parameters                                                        */

/* One 30-s cycle of hand-placed strings: n4 only in the strings 10 of the
 * first two frames, b1/b2/kp only in the last, tauC split over 8 and 9. */
void feedTpCycle(TmPrmGloVt_t& c, unsigned t0, uint64_t tauCHigh,
                 bool tauCNeg, uint64_t tauCLow) {
    feed(c, str1(5, 0, 0), t0);
    feed(c, Vt(8), t0 + 7);
    feed(c, Vt(9).put(42, 4, 15), t0 + 8);            /* not kept */
    feed(c, Vt(10).put(19, 5, 4), t0 + 9);            /* place 1: n4 */
    feed(c, str1(5, 0, 1), t0 + 10);
    feed(c, Vt(8), t0 + 17);
    feed(c, Vt(10).put(19, 5, 4), t0 + 19);
    feed(c, str1(5, 0, 2), t0 + 20);
    feed(c, Vt(8).sm(8, 28, tauCHigh, tauCNeg).put(36, 11, 457), t0 + 27);
    feed(c, Vt(9).put(42, 4, tauCLow), t0 + 28);
    feed(c, Vt(10).put(24, 2, 1).sm(26, 10, 300, true).sm(36, 11, 700, false),
         t0 + 29);
}

TEST(GloVtTimeParams, HandPlacedFieldsAndTauCExtension) {
    const double k2m27 = std::ldexp(1.0, -27), k2m31 = std::ldexp(1.0, -31);
    struct {
        uint64_t high;
        bool neg;
        uint64_t low;
        double tauC;
    } cases[] = {
        {21, true, 5, -(21 * k2m27 + 5 * k2m31)},  /* away from zero */
        {21, false, 5, 21 * k2m27 + 5 * k2m31},
        {0, true, 5, 5 * k2m31},                   /* -0 counts as positive */
    };
    for (const auto& k : cases) {
        auto c = std::make_unique<TmPrmGloVt_t>();
        feedTpCycle(*c, 2000, k.high, k.neg, k.low);
        ASSERT_TRUE(c->isCmplt());
        tblTmPrmGlo_t t;
        std::memset(&t, 0xFF, sizeof t);
        EXPECT_TRUE(c->getTbl(&t));
        EXPECT_EQ(t.actual, 1);
        EXPECT_EQ(+t.tauC, k.tauC);
        EXPECT_EQ(t.na, 457u);
        EXPECT_EQ(t.n4, 4u);
        EXPECT_EQ(+t.tauGps, 0.0);
        EXPECT_EQ(+t.b1, 700 * std::ldexp(1.0, -10));
        EXPECT_EQ(+t.b2, -300 * std::ldexp(1.0, -16));
        EXPECT_EQ(t.kp, 1);
    }
}

TEST(GloVtTimeParams, PlacesMustFollowPlaceZeroWithin720s) {
    TmPrmGloVt_t c;
    /* string 10 of the first frame before its string 8 */
    feed(c, str1(5, 0, 0), 0);
    feed(c, Vt(10), 5);
    feed(c, Vt(8), 7);
    feed(c, str1(5, 0, 1), 10);
    feed(c, Vt(8), 17);
    feed(c, str1(5, 0, 2), 20);
    feed(c, Vt(8), 27);
    feed(c, Vt(9), 28);
    feed(c, Vt(10), 29);
    EXPECT_FALSE(c.isCmplt());
    feed(c, str1(5, 0, 1), 30);      /* cycle 1: string 10 refills place 1 */
    feed(c, Vt(10), 727);            /* exactly 720 s after place 0 */
    EXPECT_TRUE(c.isCmplt());
    feed(c, Vt(10), 728);
    EXPECT_FALSE(c.isCmplt());
}

/* --------------------------------------------------------------------- */
/* Almanac                                                                */

/* Raw broadcast fields of one almanac entry (sign bits included). */
struct RawAlm {
    unsigned health = 0, num = 0, lit = 0;
    uint64_t lambda = 0, lambdaT = 0, dI = 0, dT = 0, dTdot = 0, eps = 0,
             omega = 0, tauA = 0;
};

uint64_t smRaw(int len, uint64_t mag, bool neg) {
    return mag | (uint64_t)neg << (len - 1);
}

/* Distinct, valid values for entry k, signs alternating. */
RawAlm rawEntry(unsigned k) {
    RawAlm e;
    bool neg = k % 2;
    e.health = k % 3 == 0;
    e.num = k + 1;
    e.lit = (k * 5) % 24;
    e.lambda = smRaw(21, 1000 + 977 * k, neg);
    e.lambdaT = 100 + 50000 * k;
    e.dI = smRaw(18, 200 + 31 * k, !neg);
    e.dT = smRaw(22, 1300000 + 7 * k, neg);
    e.dTdot = smRaw(7, 1 + k, !neg);
    e.eps = 10 + 1000 * k;
    e.omega = smRaw(16, 500 + 1201 * k, neg);
    e.tauA = smRaw(10, 10 + 9 * k, neg);
    return e;
}

/* One whole 12-minute cycle, hand-placed: per satellite three frames of
 * string 1 (step = v + 6u), 8, 9, 10. */
void feedAlmCycle(AlmGloVt_t& c, const RawAlm (&e)[24], unsigned t0,
                  unsigned firstStep = 0) {
    unsigned mask = 0;
    for (int k = 0; k < 24; k++) mask |= (e[k].health & 1u) << (23 - k);
    for (unsigned step = firstStep; step < 72; step++) {
        unsigned k = step / 3, phase = step % 3, t = t0 + step * 10;
        const RawAlm& r = e[k];
        feed(c, str1(7, step / 6, step % 6), t);
        Vt s8(8), s9(9);
        if (phase == 0) {
            s8.put(8, 24, mask).put(32, 10, r.tauA).put(42, 5, r.num);
            s9.put(8, 21, r.lambda).put(29, 16, r.omega);
        } else if (phase == 1) {
            s8.put(32, 15, r.eps);
            s9.put(8, 21, r.lambdaT).put(29, 18, r.dI);
        } else {
            s8.put(36, 11, 457);
            s9.put(8, 22, r.dT).put(30, 7, r.dTdot).put(37, 5, r.lit);
        }
        feed(c, s8, t + 7);
        feed(c, s9, t + 8);
        feed(c, Vt(10).put(19, 5, 4), t + 9);
    }
}

double smVal(uint64_t raw, int len, double scale) {
    uint64_t mag = raw & ((1ull << (len - 1)) - 1);
    return (raw >> (len - 1) & 1 ? -1.0 : 1.0) * (double)mag * scale;
}

void expectEntry(const tblAlmGloSat_t& a, const RawAlm& r, unsigned k) {
    EXPECT_EQ(a.onSystem, r.health) << k;
    EXPECT_EQ(a.num, r.num) << k;
    EXPECT_EQ(a.lit, r.lit) << k;
    EXPECT_EQ(+a.lambda, smVal(r.lambda, 21, std::ldexp(1.0, -20))) << k;
    EXPECT_EQ(+a.lambdaT, r.lambdaT * std::ldexp(1.0, -5)) << k;
    EXPECT_EQ(+a.dI, smVal(r.dI, 18, std::ldexp(1.0, -20))) << k;
    EXPECT_EQ(+a.dT, smVal(r.dT, 22, std::ldexp(1.0, -9))) << k;
    EXPECT_EQ(+a.dTdot, smVal(r.dTdot, 7, std::ldexp(1.0, -14))) << k;
    EXPECT_EQ(+a.eps, r.eps * std::ldexp(1.0, -20)) << k;
    EXPECT_EQ(+a.omega, smVal(r.omega, 16, std::ldexp(1.0, -15))) << k;
    EXPECT_EQ(+a.tauA, smVal(r.tauA, 10, std::ldexp(1.0, -18))) << k;
}

struct AlmFixture : ::testing::Test {
    std::unique_ptr<AlmGloVt_t> c = std::make_unique<AlmGloVt_t>();
    RawAlm e[24];
    std::unique_ptr<tblAlmGlo_t> t = std::make_unique<tblAlmGlo_t>();
    AlmFixture() {
        for (unsigned k = 0; k < 24; k++) e[k] = rawEntry(k);
        std::memset(t.get(), 0xEE, sizeof *t);
    }
};

TEST_F(AlmFixture, HandPlacedFieldsDecode) {
    feedAlmCycle(*c, e, 50000);
    ASSERT_TRUE(c->isCmplt());
    EXPECT_TRUE(c->getTbl(t.get()));
    EXPECT_EQ(t->actual, 1);
    EXPECT_EQ(t->na, 457u);
    EXPECT_EQ(t->n4, 4u);
    EXPECT_EQ(t->tmResived, 50000u + 71 * 10 + 8);  /* string 9, step 71 */
    for (unsigned k = 0; k < 24; k++) {
        expectEntry(t->alm[k], e[k], k);
        EXPECT_EQ(t->alm[k].onErrData, 0) << k;
        EXPECT_EQ(t->alm[k].onEmpty, 0) << k;
    }
}

TEST_F(AlmFixture, StepOf72OrMoreDropsStringsUntilTheNextStringOne) {
    feedAlmCycle(*c, e, 0);
    ASSERT_TRUE(c->getTbl(t.get()));
    tblAlmGlo_t before = *t;
    /* minute 11 with v = 6 and 7: steps 72 and 73, satellite index 24 */
    const uint64_t ones = (1ull << 39) - 1;
    for (unsigned v : {6u, 7u}) {
        feed(*c, str1(8, 11, v), 900);
        feed(*c, Vt(8).put(8, 39, ones), 907);
        feed(*c, Vt(9).put(8, 39, ones), 908);
        feed(*c, Vt(10).put(8, 39, ones), 909);
    }
    EXPECT_TRUE(c->isCmplt());
    EXPECT_TRUE(c->getTbl(t.get()));
    EXPECT_EQ(std::memcmp(t.get(), &before, sizeof before), 0);
    /* a sound string 1 resumes filing: step 3 is satellite 1, phase 0 */
    feed(*c, str1(8, 0, 3), 910);
    feed(*c, Vt(9).put(8, 21, smRaw(21, 77, true)), 918);
    EXPECT_TRUE(c->getTbl(t.get()));
    EXPECT_EQ(+t->alm[1].lambda, -77 * std::ldexp(1.0, -20));
    /* v = 6 early in the cycle is taken literally: step 6 + 6 = 12 */
    feed(*c, str1(8, 1, 6), 920);
    feed(*c, Vt(8).put(42, 5, 30), 927);
    EXPECT_TRUE(c->getTbl(t.get()));
    EXPECT_EQ(t->alm[4].num, 30);
}

}  // namespace
