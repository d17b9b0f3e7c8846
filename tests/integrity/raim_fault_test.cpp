/*
 * Fault injection on the real sample log (TLSE, 2024-01-01 12:00-12:05,
 * 8 GLONASS and 11 GPS satellites): the chain of `zelnav solve --raim`
 * from the 0x0C messages to the fix, with a fault added to the corrected
 * pseudorange of one satellite.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "solve_pipeline.h"
#include "solve_raim.h"
#include "solve_report.h"
#include "solve_run.h"
#include "zlog.h"

namespace {

const std::string kLog = std::string(ZELNAV_DATA_DIR) + "/tlse-2024-001/tlse_1200_5min.zlog";
const double kArp[3] = {4627852.3986, 119640.3423, 4372994.4588};

struct Epoch {
    int outcome = 0;
    std::string comb, stats;   /* excluded by raimComb, by raimStats */
    unsigned rows = 0;
    bool r14 = false;          /* GLONASS 14 among the rows */
    bool fix = false;
    double err = 0.0;          /* 3D distance of the fix from the ARP, m */
};

std::vector<Epoch> runLog(bool raim, const char* fault = nullptr) {
    std::vector<solve::Injection> faults(fault ? 1 : 0);
    if (fault) {
        EXPECT_TRUE(solve::parseInjection(fault, &faults[0])) << fault;
    }
    zlog::Reader rd;
    EXPECT_TRUE(rd.open(kLog)) << kLog;
    solve::Pipeline pl(10);
    pl.seed(rd.header().position);
    solve::RaimCheck check(pl, raim, 100.0, faults);
    std::vector<Epoch> out;
    zlog::Record rec;
    while (rd.next(rec)) {
        if (!pl.run(rec.message.data())) continue;
        const tblCrdPnt_t* fix = check.finish();
        Epoch e;
        EXPECT_EQ(check.checked(), raim);
        e.outcome = check.outcome();
        e.comb = check.excludedComb();
        e.stats = check.excludedStats();
        e.rows = pl.rows()->num;
        for (unsigned i = 0; i < e.rows; i++)
            e.r14 = e.r14 || (pl.rows()->tbl[i].sys == 0 && pl.rows()->tbl[i].num == 14);
        if ((e.fix = fix != nullptr && fix->actual == 1)) {
            double w[3];
            solve::fixToWgs84(fix, pl.datum(), w);
            e.err = std::sqrt((w[0] - kArp[0]) * (w[0] - kArp[0]) + (w[1] - kArp[1]) * (w[1] - kArp[1]) +
                              (w[2] - kArp[2]) * (w[2] - kArp[2]));
        }
        out.push_back(e);
    }
    EXPECT_EQ(out.size(), 300u);
    return out;
}

/* RMS of the fix errors over epochs [from, 300); n fixes. */
double rms(const std::vector<Epoch>& ep, std::size_t from, int* n = nullptr) {
    double s = 0.0;
    int k = 0;
    for (std::size_t i = from; i < ep.size(); i++)
        if (ep[i].fix) s += ep[i].err * ep[i].err, k++;
    if (n) *n = k;
    return k ? std::sqrt(s / k) : 0.0;
}

/* First epochs at which raimStats and raimComb exclude GLONASS 14 before
 * `end`; fails if either excludes anything else. */
void firstR14(const std::vector<Epoch>& ep, std::size_t end, int* stats, int* comb) {
    *stats = *comb = -1;
    for (std::size_t i = 0; i < end; i++) {
        if (*stats < 0 && ep[i].stats == "R14") *stats = (int)i;
        if (*comb < 0 && ep[i].comb == "R14") *comb = (int)i;
        EXPECT_TRUE(ep[i].comb == "" || ep[i].comb == "R14") << ep[i].comb << " at " << i;
        EXPECT_TRUE(ep[i].stats == "" || ep[i].stats == "R14") << ep[i].stats << " at " << i;
    }
}

}  // namespace

/* The clean log: nothing excluded, every refusal an epoch with fewer than
 * six satellites (before the navigation data have arrived). 100 m on GPS
 * 24 from epoch 100: the gate excludes exactly that satellite from then
 * on, and the fixes made without it are as good as the clean ones; without
 * the monitor the same fault costs tens of metres. */
TEST(RaimFault, HundredMetresOnOneSatelliteAreExcluded) {
    const std::vector<Epoch> clean = runLog(true);
    int accepted = 0;
    for (std::size_t i = 0; i < clean.size(); i++) {
        EXPECT_EQ(clean[i].comb + clean[i].stats, "") << i;
        if (clean[i].outcome == 0) accepted++;
        EXPECT_TRUE(clean[i].outcome == 0 || (clean[i].outcome == -128 && clean[i].rows < 6)) << i;
        EXPECT_EQ(clean[i].fix, clean[i].outcome == 0) << i;
    }
    EXPECT_GT(accepted, 250);

    const std::vector<Epoch> hit = runLog(true, "G:24:100:100");
    for (std::size_t i = 0; i < hit.size(); i++) {
        EXPECT_EQ(hit[i].stats, "") << i;
        EXPECT_EQ(hit[i].comb, i < 100 ? "" : "G24") << i;
        EXPECT_TRUE(i < 100 ? hit[i].err == clean[i].err : hit[i].outcome == 0) << i;
    }
    int n0 = 0, n1 = 0;
    const double cleanRms = rms(clean, 100, &n0), hitRms = rms(hit, 100, &n1);
    EXPECT_EQ(n0, n1);
    EXPECT_LT(cleanRms, 8.0);
    EXPECT_LT(std::fabs(hitRms - cleanRms), 1.0) << cleanRms << " m clean, " << hitRms << " m";
    EXPECT_GT(rms(runLog(false, "G:24:100:100"), 100), cleanRms + 20.0);
}

/* A bias drifting through zero at 3.2 m/s from -50 m: each epoch's
 * residual stays inside the gate long enough, and the epoch's scatter
 * under 18 m, so raimComb sees nothing at first; raimStats excludes the
 * satellite by the scatter of its last 30 residuals. From epoch 250, with
 * a full history behind it, before the drift has filled the span; from
 * the first epoch the satellite is tracked, exactly when its span is
 * complete, 29 seconds later. */
TEST(RaimFault, DriftingBiasIsCaughtByTheStatistics) {
    const std::vector<Epoch> late = runLog(true, "R:14:250:-50:3.2");
    int stats, comb;
    firstR14(late, 300, &stats, &comb);
    EXPECT_GT(stats, 250);
    EXPECT_LE(stats, 279);
    EXPECT_GT(comb, stats);
    for (int i = stats; i < 300; i++) EXPECT_TRUE(late[i].comb == "R14" || late[i].stats == "R14") << i;
    EXPECT_LT(rms(late, stats), 8.0);

    const std::vector<Epoch> clean = runLog(true);
    int appears = 0;
    while (appears < 300 && !clean[appears].r14) appears++;
    ASSERT_LT(appears + 40, 300);
    for (int i = appears; i < appears + 40; i++) ASSERT_TRUE(clean[i].r14) << i;
    const std::string spec = "R:14:" + std::to_string(appears) + ":-50:3.2";
    const std::vector<Epoch> early = runLog(true, spec.c_str());
    firstR14(early, appears + 35, &stats, &comb);   /* the drift grows on: judge its start */
    EXPECT_EQ(stats, appears + 29);
    EXPECT_TRUE(comb < 0 || comb > stats) << comb;
}
