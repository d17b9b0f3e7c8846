/*
 * Screening of the tracked satellites against the prediction or the
 * reported elevations, and its place before the clock checks.
 */
#include <gtest/gtest.h>

#include <cstring>

#include "integrity/raim.h"
#include "zel.h"

namespace {

const double kC = 299792458.0;

/* A converter list of up to 6 GLONASS and 6 GPS satellites, each with
 * three valid signal places, and a prediction list of up to 8 entries. */
struct Screen {
    tblHdr_t hdr[2][6];
    tblObs_t obs[2][6];
    lsttblSat_t lst;
    tblPrgSat_t ent[8];
    lsttblPrgSat prg;

    Screen() {
        std::memset(this, 0, sizeof *this);
        prg.prgSat = ent;
    }
    void sat(int sys, int num, double um) {
        const int i = sys == 0 ? (int)lst.numGlo++ : (int)lst.numGps++;
        hdr[sys][i].num = (uint8_t)num;
        hdr[sys][i].sys = (uint8_t)sys;
        hdr[sys][i].um = um;
        for (int s = 0; s < 3; s++) {
            obs[sys][i].actual[s] = 1;
            obs[sys][i].psvd[s] = 2.0e7 + 1000.0 * num + s;
        }
        tblSatGlo* g = &lst.tblGlo[i];
        tblSatGps* p = &lst.tblGps[i];
        if (sys == 0) g->tblHdr = &hdr[0][i], g->tblObs = &obs[0][i];
        else p->tblHdr = &hdr[1][i], p->tblObs = &obs[1][i];
    }
    void predict(int sys, int num, double um) {
        tblPrgSat_t& e = ent[prg.numPrg++];
        e.num = (uint8_t)num;
        e.sys = (uint8_t)sys;
        e.um = um;
        e.actual = 1;
    }
    /* "k" kept (all three places valid), "-" invalidated (all five 0). */
    std::string verdicts(int sys) const {
        std::string v;
        const int n = sys == 0 ? (int)lst.numGlo : (int)lst.numGps;
        for (int i = 0; i < n; i++) {
            int valid = 0;
            for (int s = 0; s < ZEL_NUM_SIG; s++) valid += obs[sys][i].actual[s];
            v += valid == 3 ? 'k' : valid == 0 ? '-' : '?';
        }
        return v;
    }
};

}  // namespace

/* GLONASS consults the first prediction entry only; equality with the
 * mask keeps; a list that starts with GPS, or is empty, drops them all. */
TEST(RaimSat, GlonassAgainstTheFirstPredictionEntry) {
    raim_t raim;
    Screen a;
    for (int n : {3, 5, 7}) a.sat(0, n, 60.0);
    a.predict(0, 5, 10.0);
    a.predict(0, 3, 80.0);                         /* second entry: never looked at */
    a.predict(1, 7, 80.0);
    raim.raimUmGlo(&a.lst, &a.prg, 10.0);
    EXPECT_EQ(a.verdicts(0), "-k-");

    Screen b;
    for (int n : {3, 5}) b.sat(0, n, 60.0);
    b.predict(0, 3, 9.99);
    raim.raimUmGlo(&b.lst, &b.prg, 10.0);
    EXPECT_EQ(b.verdicts(0), "--") << "first entry below the mask";

    Screen c;
    for (int n : {3, 5}) c.sat(0, n, 60.0);
    c.predict(1, 3, 45.0);                          /* GPS PRN 3 is not GLONASS slot 3 */
    c.predict(0, 5, 45.0);
    raim.raimUmGlo(&c.lst, &c.prg, 10.0);
    EXPECT_EQ(c.verdicts(0), "--");

    Screen d;
    d.sat(0, 3, 60.0);
    d.predict(0, 3, 45.0);
    d.prg.numPrg = 0;                               /* the entry is there but not counted */
    raim.raimUmGlo(&d.lst, &d.prg, 10.0);
    EXPECT_EQ(d.verdicts(0), "-");
}

/* GPS searches every entry: the system must match, a matching entry below
 * the mask does not end the search, equality keeps. Invalidation touches
 * only the actual flags. */
TEST(RaimSat, GpsSearchesTheWholePrediction) {
    raim_t raim;
    Screen s;
    for (int n : {4, 9, 12, 20, 31}) s.sat(1, n, 70.0);
    s.predict(0, 9, 50.0);                          /* GLONASS slot 9 */
    s.predict(1, 12, 3.0);
    s.predict(1, 4, 15.0);                          /* exactly the mask */
    s.predict(1, 12, 40.0);                         /* a later, higher match */
    s.predict(1, 20, 14.999999);
    s.predict(1, 31, 88.0);
    const tblHdr_t hdr0 = s.hdr[1][1];
    const double psvd0 = s.obs[1][1].psvd[0];
    raim.raimUmGps(&s.lst, &s.prg, 15.0);
    EXPECT_EQ(s.verdicts(1), "k-k-k");
    EXPECT_EQ(std::memcmp(&hdr0, &s.hdr[1][1], sizeof hdr0), 0);
    EXPECT_EQ(+s.obs[1][1].psvd[0], psvd0);

    s.prg.numPrg = 0;
    raim.raimUmGps(&s.lst, &s.prg, 15.0);
    EXPECT_EQ(s.verdicts(1), "-----");
}

/* Without a prediction GLONASS is judged by its own reported elevation and
 * GPS entry i by that of GLONASS entry i; a GPS entry with no GLONASS
 * entry beside it has nothing to be kept by. */
TEST(RaimSat, ReportedElevationsWithoutPrediction) {
    raim_t raim;
    Screen s;
    s.sat(0, 1, 12.0);
    s.sat(0, 2, 5.0);
    s.sat(0, 8, 10.0);
    s.sat(1, 5, 80.0);                              /* beside GLONASS 12 deg */
    s.sat(1, 6, 80.0);                              /* beside 5 deg: dropped */
    s.sat(1, 7, 1.0);                               /* beside 10 deg: kept */
    s.sat(1, 9, 80.0);                              /* no GLONASS entry 3 */
    raim.raimUmGlo(&s.lst, nullptr, 10.0);
    raim.raimUmGps(&s.lst, nullptr, 10.0);
    EXPECT_EQ(s.verdicts(0), "k-k");
    EXPECT_EQ(s.verdicts(1), "k-k-");
}

/* raimSat screens first, then checks the clock of second t on what is
 * left, then removes the shift, all only for the systems of the mode;
 * any other mode changes nothing. */
TEST(RaimSat, ModeSelectsTheSystemsAndOrdersTheSteps) {
    const double dt = 1e-6;
    for (unsigned mode : {0u, 1u, 10u, 5u, 2u, 11u}) {
        raim_t raim;
        Screen s, ref;
        for (Screen* x : {&s, &ref}) {
            x->sat(0, 4, 30.0);
            x->sat(0, 6, 2.0);
            x->sat(1, 4, 30.0);
            x->sat(1, 6, 2.0);
        }
        raim.raimSat(&s.lst, nullptr, 1000u, 10.0, dt, mode);
        const bool glo = mode == 0 || mode == 10, gps = mode == 1 || mode == 10;
        EXPECT_EQ(s.verdicts(0), glo ? "k-" : "kk") << mode;
        EXPECT_EQ(s.verdicts(1), gps ? "k-" : "kk") << mode;
        for (int sys = 0; sys < 2; sys++) {
            const bool on = sys == 0 ? glo : gps;
            /* The kept satellite is shifted; the dropped one is neither
             * shifted nor sampled by the clock check. */
            EXPECT_DOUBLE_EQ(+s.obs[sys][0].psvd[1], +ref.obs[sys][0].psvd[1] - (on ? kC * dt : 0.0));
            EXPECT_EQ(+s.obs[sys][1].psvd[1], +ref.obs[sys][1].psvd[1]);
            const int blk4 = sys == 0 ? 3 : RAIM_NUM_GLO + 3;
            EXPECT_EQ(raim.getTmBlk(blk4)->tag[1000 % RAIM_SPAN], on ? 1000u : 0u) << mode;
            EXPECT_EQ(raim.getTmBlk(blk4 + 2)->tag[1000 % RAIM_SPAN], 0u) << mode;
        }
    }
}

/* The exported function forwards through the handle (a null prediction
 * pointer meaning none) and asserts on a null handle. */
TEST(RaimSat, ExportedForwarder) {
    int* h = static_cast<int*>(raim_init());
    Screen s;
    s.sat(0, 1, 20.0);
    s.sat(1, 3, 0.0);
    s.predict(1, 3, 25.0);
    raimSat(h, &s.lst, &s.prg, 7u, 20.0, 0.0, 10u);
    EXPECT_EQ(s.verdicts(0), "-");
    EXPECT_EQ(s.verdicts(1), "k");
    raimSat(h, &s.lst, nullptr, 8u, 20.5, 0.0, 10u);
    EXPECT_EQ(s.verdicts(1), "-");
    raim_finit(h);
}
