/*
 * Clock checks: receiver clock jumps per system, the removal of a known
 * clock shift, and the judgement of the GLONASS-GPS time offset.
 *
 * The converter lists here carry only headers and observations; each
 * satellite's pseudorange moves as a satellite seen from the ground does
 * (a range rate of some hundred m/s changing by a fraction of a m/s each
 * second), plus the receiver clock.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "integrity/raim.h"

namespace {

const double kC = 299792458.0;
const double kMs = kC * 1e-3;   /* a millisecond step of the clock, m */

/* A converter list of up to 8 GLONASS and 8 GPS satellites. */
struct SatList {
    tblHdr_t hdr[2][8];
    tblObs_t obs[2][8];
    tblMeteo meteo;
    lsttblSat_t lst;

    SatList() {
        std::memset(this, 0, sizeof *this);
        lst.meteo = &meteo;
    }
    tblObs_t& add(int sys, int num, double psvd) {
        const int i = sys == 0 ? (int)lst.numGlo++ : (int)lst.numGps++;
        tblHdr_t& h = hdr[sys][i];
        tblObs_t& o = obs[sys][i];
        h.length = 28;
        h.num = (uint8_t)num;
        h.sys = (uint8_t)sys;
        o.length = 156;
        o.actual[0] = 1;
        o.psvd[0] = psvd;
        if (sys == 0) {
            lst.tblGlo[i].tblHdr = &h;
            lst.tblGlo[i].tblObs = &o;
        } else {
            lst.tblGps[i].tblHdr = &h;
            lst.tblGps[i].tblObs = &o;
        }
        return o;
    }
};

/* Pseudorange of satellite i at second s: 20000 km, a range rate between
 * -600 and +500 m/s, an acceleration of up to 0.15 m/s^2, and a few
 * decimetres of code noise. */
double range(int i, int s) {
    const double rate = -600.0 + 137.0 * i;
    const double acc = 0.15 * std::sin(1.0 + i);
    const double noise = 0.4 * std::sin(7.3 * i + 2.1 * s);
    return 2.0e7 + 1.0e5 * i + rate * s + 0.5 * acc * s * s + noise;
}

const uint32_t kT0 = 777000000u;

/* Runs seconds 0..n-1 of six GLONASS and six GPS satellites through the
 * two jump checks; clockGlo/clockGps give the receiver clock term (m) of
 * each system at second s. Returns the flag byte after each second. */
template <class F, class G>
void run(raim_t& raim, int n, F clockGlo, G clockGps, uint8_t* flags,
         int faultySat = -1, double fault = 0.0, int faultFrom = 0) {
    for (int s = 0; s < n; s++) {
        SatList l;
        for (int i = 0; i < 6; i++) {
            const double f = (i == faultySat && s >= faultFrom) ? fault : 0.0;
            l.add(0, 1 + i, range(i, s) + clockGlo(s) + f);
            l.add(1, 10 + i, range(i + 6, s) + clockGps(s));
        }
        raim.raimTimeGlo(&l.lst, kT0 + s);
        raim.raimTimeGps(&l.lst, kT0 + s);
        flags[s] = raim.getFlag();
    }
}

}  // namespace

/* A millisecond step of the GLONASS channels' clock at second 10 is found
 * at that second only (not again, with the opposite sign, at the next),
 * recorded per satellite, and not taken for a GPS jump. A steady clock
 * drift of 300 m/s is no jump. */
TEST(RaimTime, MillisecondJumpOfOneSystem) {
    std::unique_ptr<raim_t> raim(new raim_t);
    uint8_t flags[20];
    run(*raim, 20, [](int s) { return 300.0 * s + (s >= 10 ? kMs : 0.0); },
        [](int s) { return 300.0 * s; }, flags);
    for (int s = 0; s < 20; s++) {
        EXPECT_EQ(flags[s] & RAIM_FLAG_JUMP_GLO, s == 10 ? RAIM_FLAG_JUMP_GLO : 0) << "second " << s;
        EXPECT_EQ(flags[s] & RAIM_FLAG_JUMP_GPS, 0) << "second " << s;
    }
    /* Second 10 has ring index (kT0 + 10) % 30. */
    const int k10 = (kT0 + 10) % 30, k19 = (kT0 + 19) % 30;
    for (int slot = 1; slot <= 6; slot++) {
        const raimSatBlk_t* b = raim->getTmBlk(slot - 1);
        EXPECT_NEAR(b->prange2[k10], kMs, 5.0);
        EXPECT_NEAR(b->resid[k10], kMs, 5.0);
        EXPECT_EQ(b->prange2[k19], 0.0);
        EXPECT_LT(std::fabs(b->resid[k19]), 5.0);
        /* The statistics block holds the jump of the latest sample: none. */
        EXPECT_EQ(raim->getBlk(slot - 1)->jump, 0.0);
    }
    EXPECT_EQ(raim->getTmBlk(24 + 9)->prange2[k10], 0.0) << "GPS saw no jump";

    /* Stopped right after the jump, the latest sample carries it. */
    std::unique_ptr<raim_t> r2(new raim_t);
    run(*r2, 11, [](int s) { return s >= 10 ? -kMs : 0.0; }, [](int) { return 0.0; }, flags);
    EXPECT_EQ(flags[10], RAIM_FLAG_JUMP_GLO);
    for (int slot = 1; slot <= 6; slot++) EXPECT_NEAR(r2->getBlk(slot - 1)->jump, -kMs, 5.0);
    for (int prn = 10; prn <= 15; prn++) EXPECT_EQ(r2->getBlk(24 + prn - 1)->jump, 0.0);
}

/* Smaller steps: 1 microsecond (300 m) is found; 100 m is left to the
 * fix's clock. One satellite alone stepping by a millisecond is a fault of
 * that satellite, not of the clock. */
TEST(RaimTime, WhatCountsAsAJump) {
    uint8_t flags[12];
    {
        raim_t raim;
        run(raim, 12, [](int s) { return s >= 6 ? kC * 1e-6 : 0.0; },
            [](int s) { return s >= 6 ? kC * 1e-6 : 0.0; }, flags);
        EXPECT_EQ(flags[6], RAIM_FLAG_JUMP_GLO | RAIM_FLAG_JUMP_GPS);
        EXPECT_EQ(flags[7], 0);
    }
    {
        raim_t raim;
        run(raim, 12, [](int s) { return s >= 6 ? 100.0 : 0.0; }, [](int) { return 0.0; }, flags);
        for (int s = 0; s < 12; s++) EXPECT_EQ(flags[s], 0) << "second " << s;
    }
    {
        raim_t raim;
        run(raim, 12, [](int) { return 0.0; }, [](int) { return 0.0; }, flags, 2, kMs, 6);
        for (int s = 0; s < 12; s++) EXPECT_EQ(flags[s], 0) << "second " << s;
    }
    {
        /* Half is not enough: of four satellites two step by 1 ms, the
         * others by 3 ms and -2 ms. The median is 1 ms, but only two agree. */
        const double steps[4] = {kMs, kMs, 3 * kMs, -2 * kMs};
        raim_t raim;
        for (int s = 0; s < 12; s++) {
            SatList l;
            for (int i = 0; i < 4; i++) l.add(0, 1 + i, range(i, s) + (s >= 6 ? steps[i] : 0.0));
            raim.raimTimeGlo(&l.lst, kT0 + s);
            EXPECT_EQ(raim.getFlag(), 0) << "second " << s;
        }
    }
    {
        /* Two of six stepping is a minority. */
        raim_t raim;
        for (int s = 0; s < 12; s++) {
            SatList l;
            for (int i = 0; i < 6; i++)
                l.add(0, 1 + i, range(i, s) + ((i < 2 && s >= 6) ? kMs : 0.0));
            raim.raimTimeGlo(&l.lst, kT0 + s);
            EXPECT_EQ(raim.getFlag(), 0) << "second " << s;
        }
    }
}

/* A jump needs three consecutive seconds of at least two satellites; a
 * missing second, a missing C1 or a repeated call changes what is seen. */
TEST(RaimTime, ConsecutiveSecondsAndRepeatedCalls) {
    raim_t raim;
    for (int s = 0; s < 8; s++) {
        if (s == 4) continue;   /* the receiver lost second 4 */
        SatList l;
        for (int i = 0; i < 4; i++) l.add(0, 1 + i, range(i, s) + (s >= 5 ? kMs : 0.0));
        raim.raimTimeGlo(&l.lst, kT0 + s);
        EXPECT_EQ(raim.getFlag(), 0) << "no three consecutive seconds across the gap, second " << s;
    }
    const int k4 = (kT0 + 4) % 30;
    EXPECT_EQ(raim.getTmBlk(0)->tag[k4], 0u) << "an old entry of that index is not kept";

    /* A jump at second 10 seen by only one satellite with C1 (the others
     * have lost it) cannot be judged. */
    raim_t one;
    for (int s = 0; s < 12; s++) {
        SatList l;
        for (int i = 0; i < 4; i++) {
            tblObs_t& o = l.add(0, 1 + i, range(i, s) + (s >= 10 ? kMs : 0.0));
            if (s == 10 && i > 0) o.actual[0] = 0;
        }
        one.raimTimeGlo(&l.lst, kT0 + s);
        EXPECT_EQ(one.getFlag(), 0) << "second " << s;
    }

    /* A second call for the jump's second stores nothing and keeps the
     * verdict, even with other pseudoranges. */
    raim_t rep;
    for (int s = 0; s <= 10; s++) {
        SatList l;
        for (int i = 0; i < 4; i++) l.add(0, 1 + i, range(i, s) + (s >= 10 ? kMs : 0.0));
        rep.raimTimeGlo(&l.lst, kT0 + s);
    }
    ASSERT_EQ(rep.getFlag(), RAIM_FLAG_JUMP_GLO);
    const int k10 = (kT0 + 10) % 30;
    const double stored = rep.getTmBlk(2)->prange[k10];
    SatList again;
    for (int i = 0; i < 4; i++) again.add(0, 1 + i, range(i, 10));
    rep.raimTimeGlo(&again.lst, kT0 + 10);
    EXPECT_EQ(rep.getFlag(), RAIM_FLAG_JUMP_GLO);
    EXPECT_EQ(rep.getTmBlk(2)->prange[k10], stored);
    /* clear() forgets the verdict but not the clock history. */
    rep.clear();
    EXPECT_EQ(rep.getFlag(), 0);
    EXPECT_EQ(rep.getTmBlk(2)->prange[k10], stored);
    EXPECT_EQ(rep.getTmBlk(2)->tag[k10], kT0 + 10);
}

/* GPS PRN 0 is PRN 32; numbers a system does not have are ignored. */
TEST(RaimTime, GpsNumbering) {
    raim_t raim;
    SatList l;
    l.add(1, 0, 2.0e7);
    l.add(1, 40, 2.0e7);
    l.add(0, 30, 2.0e7);
    raim.raimTimeGps(&l.lst, kT0);
    raim.raimTimeGlo(&l.lst, kT0);
    EXPECT_EQ(raim.getTmBlk(55)->tag[kT0 % 30], kT0);
    for (int b = 0; b < RAIM_NUM_TMBLK; b++) {
        if (b == 55) continue;
        EXPECT_EQ(raim.getTmBlk(b)->tag[kT0 % 30], 0u) << "block " << b;
    }
}

/* shiftDt removes c * dtShift from every valid pseudorange of its system
 * and nothing else. */
TEST(RaimTime, ShiftRemovesAKnownClockShift) {
    raim_t raim;
    SatList l;
    tblObs_t& g0 = l.add(0, 3, 2.1e7);
    g0.actual[1] = 1;
    g0.psvd[1] = 2.2e7;
    g0.psvd[2] = 5.0;   /* not valid: stays */
    g0.dop[0] = -1234.5;
    g0.faze[0] = 1.0e8;
    tblObs_t& p0 = l.add(1, 7, 2.3e7);

    /* The records are packed: their doubles are read into values. */
    raim.shiftDtGlo(&l.lst, 1e-3);
    double g[5] = {g0.psvd[0], g0.psvd[1], g0.psvd[2], g0.dop[0], g0.faze[0]};
    double p = p0.psvd[0];
    EXPECT_DOUBLE_EQ(g[0], 2.1e7 - kMs);
    EXPECT_DOUBLE_EQ(g[1], 2.2e7 - kMs);
    EXPECT_EQ(g[2], 5.0);
    EXPECT_EQ(g[3], -1234.5);
    EXPECT_EQ(g[4], 1.0e8);
    EXPECT_EQ(p, 2.3e7);
    EXPECT_DOUBLE_EQ(raim.getTmBlk(2)->jump, kMs);

    raim.shiftDtGps(&l.lst, -2e-6);
    p = p0.psvd[0];
    g[0] = g0.psvd[0];
    EXPECT_DOUBLE_EQ(p, 2.3e7 + 2e-6 * kC);
    EXPECT_DOUBLE_EQ(g[0], 2.1e7 - kMs);
    EXPECT_DOUBLE_EQ(raim.getTmBlk(24 + 6)->jump, -2e-6 * kC);

    /* A jump found by the check is removed by shifting the clock by it:
     * the pseudoranges return to their steady course. */
    raim_t r;
    for (int s = 0; s <= 10; s++) {
        SatList x;
        for (int i = 0; i < 4; i++) x.add(0, 1 + i, range(i, s) + (s >= 10 ? kMs : 0.0));
        r.raimTimeGlo(&x.lst, kT0 + s);
        if (s == 10) {
            r.shiftDtGlo(&x.lst, r.getBlk(0)->jump / kC);
            for (int i = 0; i < 4; i++) EXPECT_NEAR(x.obs[0][i].psvd[0], range(i, 10), 5.0);
        }
    }
    r.shiftDtGlo(nullptr, 1.0);   /* no list: nothing happens */
}

/* The offset of combined fixes is judged against the last 29 seconds once
 * five are there; a step of more than 50 m / c is rejected and kept out of
 * the history. A real change of level is accepted once the old history has
 * run out, 25 seconds later. */
TEST(RaimTime, TimeOffsetAgainstItsHistory) {
    raim_t raim;
    tblCrdSat_t rows[ZEL_NUM_CRDSAT];
    std::memset(rows, 0, sizeof rows);
    lsttblCrdSat_t lst = {16, rows, 8, 0};
    tblCrdPnt_t pnt;
    std::memset(&pnt, 0, sizeof pnt);
    pnt.actual = 1;
    pnt.sys = 10;
    const double base = 25e-9, step = 60.0 / kC;
    const raimSatBlk_t* h = raim.getTmBlk(RAIM_BLK_TAU);

    auto judge = [&](uint32_t s, double tau) {
        lst.tm = kT0 + s;
        pnt.tau = tau;
        EXPECT_EQ(raim.raimTau(&lst, &pnt), tau) << "returns the offset judged";
        return (raim.getFlag() & RAIM_FLAG_TAU) != 0;
    };
    auto noise = [](uint32_t s) { return 2e-9 * std::sin(0.9 * s); };

    for (uint32_t s = 0; s < 10; s++) EXPECT_FALSE(judge(s, base + noise(s))) << s;
    const int k10 = (kT0 + 10) % 30;
    EXPECT_TRUE(judge(10, base + step));
    EXPECT_EQ(h->tag[k10], 0u) << "a rejected offset stays out of the history";
    EXPECT_EQ(h->prange2[k10], base + step);
    EXPECT_NEAR(h->mean, base, 3e-9);
    EXPECT_NEAR(h->resid[k10], step, 3e-9);
    /* 45 m is inside the gate. */
    EXPECT_FALSE(judge(11, base + 45.0 / kC));
    /* A repeated second judges again but stores nothing. */
    const int k11 = (kT0 + 11) % 30;
    EXPECT_TRUE(judge(11, base + 2 * step));
    EXPECT_EQ(h->tag[k11], kT0 + 11);
    EXPECT_EQ(h->prange[k11], base + 45.0 / kC);
    for (uint32_t s = 12; s < 20; s++) EXPECT_FALSE(judge(s, base + noise(s))) << s;

    /* The offset moves to a new level at second 20 for good. */
    int firstAccepted = -1;
    for (uint32_t s = 20; s < 60 && firstAccepted < 0; s++)
        if (!judge(s, base + step + noise(s))) firstAccepted = (int)s;
    EXPECT_EQ(firstAccepted, 45);
    for (uint32_t s = 46; s < 60; s++) EXPECT_FALSE(judge(s, base + step + noise(s))) << s;

    /* No combined fix: nothing judged, 0.0, flag cleared. */
    EXPECT_TRUE(judge(60, base));
    pnt.sys = 0;
    lst.tm = kT0 + 61;
    EXPECT_EQ(raim.raimTau(&lst, &pnt), 0.0);
    EXPECT_EQ(raim.getFlag() & RAIM_FLAG_TAU, 0);
    pnt.sys = 10;
    pnt.actual = 0;
    EXPECT_EQ(raim.raimTau(&lst, &pnt), 0.0);
}
