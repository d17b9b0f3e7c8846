/*
 * Clock checks on synthetic converter lists: what counts as a receiver
 * clock jump, the removal of a known clock shift, and the judgement of the
 * GLONASS-GPS time offset. (The same checks on the real log are in
 * raim_time_real_test.cpp.)
 *
 * Each satellite's pseudorange moves as one seen from the ground does: a
 * range rate of some hundred m/s changing by a fraction of a m/s each
 * second, decimetres of noise, plus the receiver clock.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "integrity/raim.h"

namespace {

const double kC = 299792458.0;
const double kMs = kC * 1e-3;   /* a millisecond step of the clock, m */
const uint32_t kT0 = 777000000u;

/* A converter list of up to 8 GLONASS and 8 GPS satellites. */
struct SatList {
    tblHdr_t hdr[2][8];
    tblObs_t obs[2][8];
    lsttblSat_t lst;

    SatList() { std::memset(this, 0, sizeof *this); }
    tblObs_t& add(int sys, int num, double psvd) {
        const int i = sys == 0 ? (int)lst.numGlo++ : (int)lst.numGps++;
        hdr[sys][i].num = (uint8_t)num;
        hdr[sys][i].sys = (uint8_t)sys;
        obs[sys][i].actual[0] = 1;
        obs[sys][i].psvd[0] = psvd;
        if (sys == 0) {
            lst.tblGlo[i].tblHdr = &hdr[sys][i];
            lst.tblGlo[i].tblObs = &obs[sys][i];
        } else {
            lst.tblGps[i].tblHdr = &hdr[sys][i];
            lst.tblGps[i].tblObs = &obs[sys][i];
        }
        return obs[sys][i];
    }
};

double range(int i, int s) {
    const double rate = -600.0 + 137.0 * i;
    const double acc = 0.15 * std::sin(1.0 + i);
    return 2.0e7 + 1.0e5 * i + rate * s + 0.5 * acc * s * s + 0.4 * std::sin(7.3 * i + 2.1 * s);
}

/* Twelve seconds of n GLONASS satellites; satellite i steps by step[i]
 * from second 6 on; GPS PRN 10.. steps by gpsStep. Returns the seconds at
 * which the GLONASS (bit 0) and GPS (bit 1) checks found a jump, as a bit
 * mask per second packed into one number (second s -> bits 2s, 2s+1). */
uint64_t jumps(int n, const double* step, double gpsStep = 0.0) {
    raim_t raim;
    uint64_t found = 0;
    for (int s = 0; s < 12; s++) {
        SatList l;
        for (int i = 0; i < n; i++) {
            l.add(0, 1 + i, range(i, s) + (s >= 6 ? step[i] : 0.0));
            l.add(1, 10 + i, range(i + 8, s) + (s >= 6 ? gpsStep : 0.0));
        }
        raim.raimTimeGlo(&l.lst, kT0 + s);
        raim.raimTimeGps(&l.lst, kT0 + s);
        found |= (uint64_t)raim.getFlag() << (2 * s);
    }
    return found;
}

}  // namespace

/* A common step of 1 microsecond (300 m) is a jump, found at its second
 * only; 100 m is left to the fix's clock; one satellite alone, two of six,
 * or half of four (two by 1 ms, the others by 3 ms and -2 ms) are faults
 * of satellites, not of the clock. */
TEST(RaimTime, WhatCountsAsAJump) {
    const double us[6] = {300, 300, 300, 300, 300, 300};
    EXPECT_EQ(jumps(6, us), 1ull << 12);
    EXPECT_EQ(jumps(6, us, 300.0), 3ull << 12);
    const double small[6] = {100, 100, 100, 100, 100, 100};
    EXPECT_EQ(jumps(6, small), 0u);
    const double one[6] = {0, 0, kMs, 0, 0, 0};
    EXPECT_EQ(jumps(6, one), 0u);
    const double two[6] = {kMs, kMs, 0, 0, 0, 0};
    EXPECT_EQ(jumps(6, two), 0u);
    const double half[4] = {kMs, kMs, 3 * kMs, -2 * kMs};
    EXPECT_EQ(jumps(4, half), 0u);
}

/* What a jump leaves: the jump per satellite (statistics block, latest
 * sample) and per second (clock-check block), the history carried into
 * the new clock; a repeated second keeps the verdict and stores nothing;
 * clear() forgets the verdict, not the clock history. A lost second or a
 * lost C1 hides the jump. */
TEST(RaimTime, JumpRecordAndHistory) {
    std::unique_ptr<raim_t> raim(new raim_t);
    const int k10 = (kT0 + 10) % 30;
    for (int s = 0; s <= 10; s++) {
        SatList l;
        for (int i = 0; i < 4; i++) l.add(0, 1 + i, range(i, s) + (s >= 10 ? -kMs : 0.0));
        l.add(1, 0, range(7, s));   /* PRN 0 is PRN 32 */
        raim->raimTimeGlo(&l.lst, kT0 + s);
        raim->raimTimeGps(&l.lst, kT0 + s);
    }
    EXPECT_EQ(raim->getFlag(), RAIM_FLAG_JUMP_GLO);
    for (int b = 0; b < 4; b++) {
        EXPECT_NEAR(raim->getBlk(b)->jump, -kMs, 5.0);
        EXPECT_NEAR(raim->getTmBlk(b)->prange2[k10], -kMs, 5.0);
        const int k9 = (kT0 + 9) % 30;
        EXPECT_NEAR(raim->getTmBlk(b)->prange[k9], range(b, 9) - kMs, 5.0) << "carried into the new clock";
    }
    EXPECT_EQ(raim->getBlk(55)->jump, 0.0);
    EXPECT_EQ(raim->getTmBlk(55)->tag[k10], kT0 + 10);

    SatList again;
    for (int i = 0; i < 4; i++) again.add(0, 1 + i, range(i, 10));
    const double stored = raim->getTmBlk(2)->prange[k10];
    raim->raimTimeGlo(&again.lst, kT0 + 10);
    EXPECT_EQ(raim->getFlag(), RAIM_FLAG_JUMP_GLO);
    EXPECT_EQ(raim->getTmBlk(2)->prange[k10], stored);
    raim->clear();
    EXPECT_EQ(raim->getFlag(), 0);
    EXPECT_EQ(raim->getTmBlk(2)->tag[k10], kT0 + 10);

    raim_t lost;
    for (int s = 0; s < 12; s++) {
        if (s == 4) continue;   /* the receiver lost second 4 */
        SatList l;
        for (int i = 0; i < 4; i++) {
            tblObs_t& o = l.add(0, 1 + i, range(i, s) + (s >= 5 ? kMs : 0.0) + (s >= 10 ? kMs : 0.0));
            if (s == 10 && i > 0) o.actual[0] = 0;   /* C1 lost on three */
        }
        lost.raimTimeGlo(&l.lst, kT0 + s);
        EXPECT_EQ(lost.getFlag(), 0) << s;
    }
    EXPECT_EQ(lost.getTmBlk(0)->tag[(kT0 + 4) % 30], 0u);
}

/* shiftDt removes c * dtShift from every valid pseudorange of its system
 * and from nothing else; a jump removed that way leaves the pseudoranges
 * on their steady course. */
TEST(RaimTime, ShiftRemovesAKnownClockShift) {
    raim_t raim;
    SatList l;
    tblObs_t& g = l.add(0, 3, 2.1e7);
    g.actual[1] = 1;
    g.psvd[1] = 2.2e7;
    g.psvd[2] = 5.0;
    g.faze[0] = 1.0e8;
    tblObs_t& p = l.add(1, 7, 2.3e7);
    raim.shiftDtGlo(&l.lst, 1e-3);
    raim.shiftDtGps(&l.lst, -2e-6);
    /* The records are packed: their doubles are read into values. */
    const double v[6] = {g.psvd[0], g.psvd[1], g.psvd[2], g.faze[0], p.psvd[0], 0};
    EXPECT_DOUBLE_EQ(v[0], 2.1e7 - kMs);
    EXPECT_DOUBLE_EQ(v[1], 2.2e7 - kMs);
    EXPECT_EQ(v[2], 5.0);
    EXPECT_EQ(v[3], 1.0e8);
    EXPECT_DOUBLE_EQ(v[4], 2.3e7 + 2e-6 * kC);
    EXPECT_DOUBLE_EQ(raim.getTmBlk(2)->jump, kMs);
    EXPECT_DOUBLE_EQ(raim.getTmBlk(24 + 6)->jump, -2e-6 * kC);

    raim_t r;
    for (int s = 0; s <= 10; s++) {
        SatList x;
        for (int i = 0; i < 4; i++) x.add(0, 1 + i, range(i, s) + (s >= 10 ? kMs : 0.0));
        r.raimTimeGlo(&x.lst, kT0 + s);
        if (s < 10) continue;
        r.shiftDtGlo(&x.lst, r.getBlk(0)->jump / kC);
        for (int i = 0; i < 4; i++) EXPECT_NEAR(x.obs[0][i].psvd[0], range(i, 10), 5.0);
    }
}
