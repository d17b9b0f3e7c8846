/*
 * Fault injection on the real sample log (TLSE, 2024-01-01 12:00-12:05,
 * 8 GLONASS and 11 GPS satellites): the whole chain of `zelnav solve
 * --raim`, from the 0x0C messages to the fix, with a fault added to the
 * corrected pseudorange of one satellite.
 *
 *  - The clean log: no satellite is ever excluded; the only refusals are
 *    the first epochs, before the navigation data give six satellites.
 *  - 100 m on GPS 24 from epoch 100 on: raimComb's gate excludes exactly
 *    that satellite at every epoch from then on, and the fixes made
 *    without it are as good as the clean ones; without the monitor the
 *    same fault costs tens of metres.
 *  - A bias drifting through zero at 3.2 m/s on GLONASS 14 (from -50 m):
 *    inside the gate and the scatter limit of every single epoch, so
 *    raimComb sees nothing; raimStats excludes the satellite by the
 *    scatter of its last 30 residuals, as soon as its span is complete.
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

/* What one run of the log gave, epoch by epoch. */
struct Epoch {
    bool checked = false;
    int outcome = 0;
    std::string comb, stats;
    unsigned rows = 0;
    bool r14 = false;       /* GLONASS 14 among the rows */
    bool fix = false;
    double err = 0.0;       /* 3D distance of the fix from the ARP, m */
};

std::vector<Epoch> runLog(bool raim, const std::vector<solve::Injection>& faults) {
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
        e.checked = check.checked();
        e.outcome = check.outcome();
        e.comb = check.excludedComb();
        e.stats = check.excludedStats();
        e.rows = pl.rows() ? pl.rows()->num : 0;
        for (unsigned i = 0; i < e.rows; i++)
            e.r14 = e.r14 || (pl.rows()->tbl[i].sys == 0 && pl.rows()->tbl[i].num == 14);
        e.fix = fix != nullptr && fix->actual == 1;
        if (e.fix) {
            double w[3];
            solve::fixToWgs84(fix, pl.datum(), w);
            e.err = std::sqrt((w[0] - kArp[0]) * (w[0] - kArp[0]) + (w[1] - kArp[1]) * (w[1] - kArp[1]) +
                              (w[2] - kArp[2]) * (w[2] - kArp[2]));
        }
        out.push_back(e);
    }
    return out;
}

/* RMS of the fix errors over epochs [from, to). */
double rms(const std::vector<Epoch>& ep, std::size_t from, std::size_t to, int* n = nullptr) {
    double s = 0.0;
    int k = 0;
    for (std::size_t i = from; i < to && i < ep.size(); i++)
        if (ep[i].fix) {
            s += ep[i].err * ep[i].err;
            k++;
        }
    if (n) *n = k;
    return k ? std::sqrt(s / k) : 0.0;
}

solve::Injection fault(const char* text) {
    solve::Injection f;
    EXPECT_TRUE(solve::parseInjection(text, &f)) << text;
    return f;
}

}  // namespace

TEST(RaimFault, CleanLogExcludesNothing) {
    const std::vector<Epoch> ep = runLog(true, {});
    ASSERT_EQ(ep.size(), 300u);
    int accepted = 0;
    for (std::size_t i = 0; i < ep.size(); i++) {
        ASSERT_TRUE(ep[i].checked) << i;
        EXPECT_EQ(ep[i].comb, "") << i;
        EXPECT_EQ(ep[i].stats, "") << i;
        if (ep[i].outcome == 0) {
            accepted++;
            EXPECT_TRUE(ep[i].fix) << i;
        } else {
            EXPECT_EQ(ep[i].outcome, -128) << i;
            EXPECT_LT(ep[i].rows, 6u) << "refused although six satellites were there, epoch " << i;
            EXPECT_FALSE(ep[i].fix);
        }
    }
    EXPECT_GT(accepted, 250);
    EXPECT_LT(rms(ep, 0, 300), 8.0);
}

TEST(RaimFault, HundredMetresOnOneSatelliteAreExcluded) {
    const std::vector<Epoch> clean = runLog(true, {});
    const std::vector<Epoch> hit = runLog(true, {fault("G:24:100:100")});
    const std::vector<Epoch> blind = runLog(false, {fault("G:24:100:100")});
    ASSERT_EQ(hit.size(), 300u);
    int excluded = 0;
    for (std::size_t i = 0; i < hit.size(); i++) {
        EXPECT_EQ(hit[i].stats, "") << i;
        if (i < 100) {
            EXPECT_EQ(hit[i].comb, "") << i;
            continue;
        }
        ASSERT_EQ(hit[i].outcome, 0) << i;
        EXPECT_EQ(hit[i].comb, "G24") << i;
        EXPECT_TRUE(hit[i].fix) << i;
        excluded += hit[i].comb == "G24";
    }
    EXPECT_EQ(excluded, 200);

    int n0 = 0, n1 = 0;
    const double cleanRms = rms(clean, 100, 300, &n0);
    const double hitRms = rms(hit, 100, 300, &n1);
    const double blindRms = rms(blind, 100, 300);
    EXPECT_EQ(n0, n1) << "every epoch keeps its fix";
    EXPECT_LT(std::fabs(hitRms - cleanRms), 1.0) << "clean " << cleanRms << " m, excluded " << hitRms << " m";
    EXPECT_GT(blindRms, cleanRms + 20.0) << "the fault costs " << blindRms << " m without the monitor";
    /* Before the fault the two runs are the same run. */
    for (std::size_t i = 0; i < 100; i++) EXPECT_EQ(hit[i].err, clean[i].err) << i;
}

/* First epochs at which raimStats and raimComb exclude GLONASS 14; fails
 * the test if either excludes anything else. */
void firstExclusions(const std::vector<Epoch>& ep, int* stats, int* comb) {
    *stats = *comb = -1;
    for (std::size_t i = 0; i < ep.size(); i++) {
        if (*stats < 0 && ep[i].stats == "R14") *stats = (int)i;
        if (*comb < 0 && ep[i].comb == "R14") *comb = (int)i;
        if (ep[i].comb != "" && ep[i].comb != "R14") ADD_FAILURE() << "raimComb excluded " << ep[i].comb << " at " << i;
        if (ep[i].stats != "" && ep[i].stats != "R14") ADD_FAILURE() << "raimStats excluded " << ep[i].stats << " at " << i;
    }
}

/* The drift starts at epoch 250, with a full history behind it. Its
 * residual stays inside the gate for some 35 seconds and never lifts the
 * scatter of an epoch to 18 m, so raimComb sees nothing; the scatter of
 * the satellite's last 30 residuals passes 18 m before the drift has
 * filled them. */
TEST(RaimFault, DriftingBiasIsCaughtByTheStatistics) {
    const std::vector<Epoch> ep = runLog(true, {fault("R:14:250:-50:3.2")});
    ASSERT_EQ(ep.size(), 300u);
    int firstStats, firstComb;
    firstExclusions(ep, &firstStats, &firstComb);
    EXPECT_GT(firstStats, 250);
    EXPECT_LE(firstStats, 279);
    EXPECT_GT(firstComb, firstStats) << "the gate only sees it once it has grown";
    /* From then on the satellite stays out, by one test or the other, and
     * the fixes stay as good as before the fault. */
    for (std::size_t i = firstStats; i < 300; i++)
        EXPECT_TRUE(ep[i].comb == "R14" || ep[i].stats == "R14") << i;
    EXPECT_LT(rms(ep, firstStats, 300), 8.0);
}

/* The same drift from the first epoch GLONASS 14 is tracked: no history
 * to judge it by until its span is complete, 29 seconds later; then
 * raimStats excludes it at once. */
TEST(RaimFault, StatisticsJudgeOnceTheSpanIsComplete) {
    const std::vector<Epoch> clean = runLog(true, {});
    int appears = -1;
    for (std::size_t i = 0; i < clean.size() && appears < 0; i++)
        if (clean[i].r14) appears = (int)i;
    ASSERT_GT(appears, 0);
    for (int i = appears; i < appears + 40; i++) ASSERT_TRUE(clean[i].r14) << i;

    const std::string spec = "R:14:" + std::to_string(appears) + ":-50:3.2";
    std::vector<Epoch> ep = runLog(true, {fault(spec.c_str())});
    ep.resize(appears + 35);   /* the drift grows without end: judge its start */
    int firstStats, firstComb;
    firstExclusions(ep, &firstStats, &firstComb);
    EXPECT_EQ(firstStats, appears + 29);
    EXPECT_TRUE(firstComb < 0 || firstComb > firstStats) << firstComb;
}

/* The same runs through `zelnav solve --raim`: the counts of the summary
 * and the RAIM columns of the CSV. */
TEST(RaimFault, SolveCommandCountsOutcomesAndReportsExclusions) {
    solve::Options opt;
    opt.raim = true;
    opt.hasRef = true;
    for (int i = 0; i < 3; i++) opt.ref[i] = kArp[i];
    opt.inject.push_back(fault("G24:100:100"));
    std::FILE* out = std::tmpfile();
    std::FILE* err = std::tmpfile();
    solve::Totals t;
    ASSERT_EQ(solve::run(kLog, opt, out, err, &t), 0);
    EXPECT_EQ(t.raimAccepted + t.raimNoExclusion + t.raimTooFew, 300);
    EXPECT_EQ(t.raimNoExclusion, 0);
    EXPECT_GT(t.raimAccepted, 250);
    EXPECT_EQ(t.combExclusions, 200);
    EXPECT_EQ(t.statsExclusions, 0);
    EXPECT_EQ(t.fixes, t.raimAccepted);
    EXPECT_LT(t.rms3d, 8.0);

    std::string csv, summary;
    char buf[4096];
    std::size_t n;
    std::rewind(out);
    while ((n = std::fread(buf, 1, sizeof buf, out)) > 0) csv.append(buf, n);
    std::rewind(err);
    while ((n = std::fread(buf, 1, sizeof buf, err)) > 0) summary.append(buf, n);
    std::fclose(out);
    std::fclose(err);
    EXPECT_EQ(csv.rfind(std::string(solve::kCsvHeader) + solve::kCsvRaimColumns + "\n", 0), 0u);
    /* Epoch 100 is the 102nd line. */
    std::size_t pos = 0;
    for (int line = 1; line < 102; line++) pos = csv.find('\n', pos) + 1;
    const std::string line102 = csv.substr(pos, csv.find('\n', pos) - pos);
    EXPECT_EQ(line102.substr(line102.size() - 7), ",0,G24,") << line102;
    EXPECT_NE(summary.find("excluded by raimComb: G24 x200; by raimStats: none"), std::string::npos)
        << summary;
}

TEST(RaimFault, InjectionSpecifications) {
    solve::Injection f;
    ASSERT_TRUE(solve::parseInjection("R:14:250:-50:3.2", &f));
    EXPECT_EQ(f.sys, 0);
    EXPECT_EQ(f.num, 14);
    EXPECT_EQ(f.from, 250);
    EXPECT_EQ(f.bias, -50.0);
    EXPECT_EQ(f.rate, 3.2);
    ASSERT_TRUE(solve::parseInjection("G7:0:100", &f));
    EXPECT_EQ(f.sys, 1);
    EXPECT_EQ(f.num, 7);
    EXPECT_EQ(f.rate, 0.0);
    for (const char* bad : {"", "G:24:100", "E:5:0:100", "G:33:0:100", "G:24:-1:100", "G:24:1.5:100",
                            "G:24:0:1e2x", "G:24:0:100:1:2", "G::0:100"})
        EXPECT_FALSE(solve::parseInjection(bad, &f)) << bad;
}
