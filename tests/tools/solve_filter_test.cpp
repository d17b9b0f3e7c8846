/*
 * `zelnav solve --smooth / --static / --filter` on the real sample log
 * (TLSE, a station at rest, 300 one-second epochs).
 */
#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "solve_run.h"

namespace {

using solve::slurp;

const std::string kLog = std::string(ZELNAV_DATA_DIR) + "/tlse-2024-001/tlse_1200_5min.zlog";
const double kArp[3] = {4627852.3986, 119640.3423, 4372994.4588};

solve::Options withRef(int mode) {
    solve::Options opt;
    opt.mode = mode;
    opt.hasRef = true;
    for (int i = 0; i < 3; i++) opt.ref[i] = kArp[i];
    return opt;
}

solve::Totals runLog(const solve::Options& opt, std::string* csv) {
    std::FILE* out = std::tmpfile();
    std::FILE* err = std::tmpfile();
    solve::Totals t;
    EXPECT_EQ(solve::run(kLog, opt, out, err, &t), 0);
    *csv = slurp(out);
    std::fclose(out);
    std::fclose(err);
    return t;
}

/* The CSV split into lines, each into its fields. */
std::vector<std::vector<std::string>> table(const std::string& csv) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream in(csv);
    std::string line;
    while (std::getline(in, line)) {
        std::vector<std::string> f;
        std::istringstream ls(line);
        std::string field;
        while (std::getline(ls, field, ',')) f.push_back(field);
        rows.push_back(f);
    }
    return rows;
}

TEST(SolveFilter, StaticAverageLandsOnTheStationAndLeavesTheFixesAlone) {
    std::string raw, avg;
    const solve::Totals r = runLog(withRef(10), &raw);
    solve::Options opt = withRef(10);
    opt.filt.average = true;
    const solve::Totals t = runLog(opt, &avg);

    // The averaging starts from the Earth's centre and halves its way to
    // within 1 km of the fixes: 6367 km / 2^13 < 1 km. The first fixes of
    // the log are GPS-only, which an average of mode both refuses.
    EXPECT_EQ(t.staticCoarse, 13);
    EXPECT_EQ(t.staticRefused, 8);
    EXPECT_EQ(t.staticAveraged, r.fixes - 13 - 8);
    // Better than the typical single fix, and well inside the scatter.
    EXPECT_LT(t.staticError, 5.0);
    EXPECT_LT(t.staticError, r.rms3d);
    // The library rewrites the record it averages: the CSV must still
    // carry the fixes themselves.
    EXPECT_EQ(avg, raw);
}

TEST(SolveFilter, FilteredTrackKeepsTheAccuracyAndPredictsOverMissingFixes) {
    std::string raw, flt;
    const solve::Totals r = runLog(withRef(10), &raw);
    solve::Options opt = withRef(10);
    opt.filt.filter = true;
    const solve::Totals t = runLog(opt, &flt);
    EXPECT_EQ(t.fixes, r.fixes);
    EXPECT_EQ(t.predicted, 0);
    EXPECT_EQ(t.rawFixes, r.fixes);
    EXPECT_DOUBLE_EQ(t.rawRms3d, r.rms3d);
    // The errors of these fixes are slow (see the filter's own test on
    // this log), so the filter neither gains nor loses much here.
    EXPECT_NEAR(t.rms3d, r.rms3d, 0.1);
    EXPECT_NE(flt, raw);

    // Two faulty satellites from epoch 150 on: the integrity monitor finds
    // no acceptable exclusion and the epochs lose their fix. The filter
    // bridges the first ten seconds with its prediction, which uses no
    // satellite, and then stops.
    std::string csv;
    solve::Options gated = withRef(1);
    gated.raim = true;
    gated.filt.filter = true;
    solve::Injection a, b;
    ASSERT_TRUE(solve::parseInjection("G14:150:300", &a));
    ASSERT_TRUE(solve::parseInjection("G22:150:-300", &b));
    gated.inject = {a, b};
    const solve::Totals g = runLog(gated, &csv);
    ASSERT_GT(g.raimNoExclusion, 100);
    EXPECT_EQ(g.predicted, 10);
    long bridged = 0;
    for (const auto& f : table(csv))
        if (f.size() > 12 && f[1] == "1" && f[11] == "0" && f[12] == "0") bridged++;  // nglo, ngps
    EXPECT_EQ(bridged, g.predicted);
}

TEST(SolveFilter, SmoothingTouchesGlonassOnly) {
    std::string raw, smooth;
    solve::Options opt = withRef(1);
    runLog(opt, &raw);
    opt.filt.smooth = true;
    runLog(opt, &smooth);
    EXPECT_EQ(smooth, raw);

    opt = withRef(0);
    const solve::Totals r = runLog(opt, &raw);
    opt.filt.smooth = true;
    const solve::Totals t = runLog(opt, &smooth);
    EXPECT_EQ(t.fixes, r.fixes);
    EXPECT_NE(smooth, raw);
}

}  // namespace
