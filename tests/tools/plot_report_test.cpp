// The report's data: a log and the CSV that `zelnav solve` writes of it
// give the same epochs; the local frame has its axes the right way round;
// the charts break their lines at epochs without a fix.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

#include "plot.h"
#include "satpos/geodesy.h"
#include "solve_run.h"

namespace {

const std::string kLog = std::string(ZELNAV_DATA_DIR) + "/tlse-2024-001/tlse_1200_5min.zlog";

std::string scratch(const char* name) {
    return std::string(::testing::TempDir()) + "/" + name;
}

TEST(PlotReport, LogAndItsCsvGiveTheSameEpochs) {
    const std::string csv = scratch("plot_solve.csv");
    std::FILE* out = std::fopen(csv.c_str(), "w");
    std::FILE* err = std::fopen("/dev/null", "w");
    ASSERT_TRUE(out && err);
    solve::Options opt;
    opt.mode = 10;
    ASSERT_EQ(solve::run(kLog, opt, out, err), 0);
    std::fclose(out);
    std::fclose(err);

    plot::Track fromLog, fromCsv;
    std::string error;
    ASSERT_TRUE(plot::isLog(kLog));
    ASSERT_FALSE(plot::isLog(csv));
    ASSERT_TRUE(plot::loadLog(kLog, 10, fromLog, error)) << error;
    ASSERT_TRUE(plot::loadCsv(csv, fromCsv, error)) << error;
    ASSERT_EQ(fromLog.epochs.size(), 300u);
    ASSERT_EQ(fromCsv.epochs.size(), fromLog.epochs.size());
    long fixes = 0;
    for (size_t i = 0; i < fromLog.epochs.size(); i++) {
        const plot::Epoch& a = fromLog.epochs[i];
        const plot::Epoch& b = fromCsv.epochs[i];
        ASSERT_EQ(a.utc, b.utc);
        ASSERT_EQ(a.tm, b.tm) << a.utc;
        ASSERT_EQ(a.fix, b.fix) << a.utc;
        if (!a.fix) continue;
        fixes++;
        for (int k = 0; k < 3; k++) EXPECT_NEAR(a.xyz[k], b.xyz[k], 1e-4);
        EXPECT_EQ(a.nglo, b.nglo);
        EXPECT_EQ(a.ngps, b.ngps);
        EXPECT_DOUBLE_EQ(a.dop, b.dop);
    }
    EXPECT_GT(fixes, 250);

    // A file without the solve columns is refused.
    plot::Track none;
    EXPECT_FALSE(plot::loadCsv(kLog, none, error));
}

TEST(PlotReport, EastNorthUpOfKnownOffsets) {
    geo::Ellipsoid wgs84;
    geo::datumEllipsoid(0, &wgs84);
    const double blh[3] = {43.56, 1.48, 200.0};
    double centre[3];
    geo::blh_xyz(blh, wgs84, centre);

    // North by 1e-5 degrees (1.11 m), east by 1e-5 degrees (0.81 m at this
    // latitude), up 3 m; then an epoch without a fix.
    const double moves[3][3] = {{1e-5, 0, 0}, {0, 1e-5, 0}, {0, 0, 3}};
    plot::Track t;
    for (int i = 0; i < 4; i++) {
        plot::Epoch ep;
        ep.tm = 1000 + 10 * i;
        if (i < 3) {
            const double p[3] = {blh[0] + moves[i][0], blh[1] + moves[i][1], blh[2] + moves[i][2]};
            geo::blh_xyz(p, wgs84, ep.xyz);
            ep.fix = true;
        }
        t.epochs.push_back(ep);
    }
    const plot::Enu enu = plot::enuOf(t, centre);
    ASSERT_EQ(enu.t.size(), 4u);
    EXPECT_EQ(enu.t[3], 30.0);
    EXPECT_NEAR(enu.n[0], 1.1095, 0.002);
    EXPECT_NEAR(enu.e[0], 0.0, 1e-3);
    EXPECT_NEAR(enu.e[1], 0.8061, 0.002);
    EXPECT_NEAR(enu.n[1], 0.0, 1e-3);
    EXPECT_NEAR(enu.u[2], 3.0, 1e-3);
    EXPECT_NEAR(std::hypot(enu.e[2], enu.n[2]), 0.0, 1e-3);
    EXPECT_TRUE(std::isnan(enu.e[3]));

    double mean[3];
    ASSERT_TRUE(plot::meanFix(t, mean));   // the epoch without a fix is left out
    EXPECT_NEAR(mean[2], (t.epochs[0].xyz[2] + t.epochs[1].xyz[2] + t.epochs[2].xyz[2]) / 3, 1e-6);
}

TEST(PlotReport, LinesBreakAtMissingValues) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<double> x = {0, 1, 2, 3, 4, 5};
    const std::string svg =
        plot::lineChart("t", "x", "y", x, {{"a", "#000", {1, 2, nan, 3, 4, nan}, false}}, 600, 300);
    // Two runs: two subpaths, the first point of each a move.
    const size_t d = svg.find(" d=\"M");
    ASSERT_NE(d, std::string::npos);
    const std::string path = svg.substr(d, svg.find('"', d + 4) - d);
    size_t moves = 0, lines = 0;
    for (char c : path) moves += c == 'M', lines += c == 'L';
    EXPECT_EQ(moves, 2u);
    EXPECT_EQ(lines, 2u);

    // A fix far outside the 95 % circle is counted, not drawn.
    std::vector<double> e(40, 0.5), n(40, 0.5);
    e[0] = 500;
    const std::string scatter = plot::scatterChart("s", e, n, 0.7, 0.7, 400);
    EXPECT_NE(scatter.find("1 fixes beyond the frame"), std::string::npos);
}

}  // namespace
