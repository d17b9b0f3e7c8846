/*
 * The `zelnav predict` command, compiled here from its command file and
 * run as the program runs it: its command line, its report on a real
 * recording and its sky plot.
 */
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "sky_log.h"
#include "tools/zelnav/cmd_predict.cpp"

namespace {

/* Runs the command with `args` (after "predict"); the exit status, with
 * what it printed on the standard output in `out`. */
int run(std::vector<std::string> args, std::string* out = nullptr) {
    args.insert(args.begin(), "predict");
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(&a[0]);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int rc = cmdPredict((int)argv.size(), argv.data());
    const std::string o = testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    if (out) *out = o;
    return rc;
}

}  // namespace

TEST(CmdPredict, ReportAndSkyPlot) {
    ASSERT_TRUE(convertedLog().ok);
    char name[] = "/tmp/zelnav_sky_svg_XXXXXX";
    const int fd = mkstemp(name);
    ASSERT_GE(fd, 0);
    close(fd);
    std::string out;
    ASSERT_EQ(run({convertedLog().path, "--at", "2024-01-01 18:19:00", "--mask", "5", "--sky",
                   name},
                  &out),
              0);
    EXPECT_NE(out.find("Prediction for 2024-01-01 18:19:00 GPS at X 4627852.4"), std::string::npos)
        << out;
    EXPECT_NE(out.find("GLONASS almanac: day 1 of four-year interval 8"), std::string::npos);
    EXPECT_NE(out.find("GPS almanac: week 247 (10-bit)"), std::string::npos);
    EXPECT_NE(out.find("DOP of the"), std::string::npos);
    EXPECT_NE(out.find("2 clocks"), std::string::npos);
    EXPECT_NE(out.find("Tracked at 2024-01-01 18:19:00 GPS"), std::string::npos);
    EXPECT_NE(out.find("Tracked, not predicted: G27, empty in the almanac"), std::string::npos);
    // Every predicted satellite (all above 5 degrees) was tracked.
    std::istringstream lines(out);
    std::string line;
    int rows = 0, yes = 0;
    while (std::getline(lines, line)) {
        if (line.size() < 5 || line[0] != ' ' || (line[1] != 'G' && line[1] != 'R')) continue;
        rows++;
        yes += line.compare(line.size() - 3, 3, "yes") == 0;
    }
    EXPECT_GE(rows, 12);
    EXPECT_EQ(yes, rows);

    std::ifstream svg(name);
    std::stringstream doc;
    doc << svg.rdbuf();
    std::remove(name);
    EXPECT_EQ(doc.str().rfind("<svg ", 0), 0u);
    EXPECT_NE(doc.str().find("Predicted sky, 2024-01-01 18:19:00 GPS"), std::string::npos);
    int labels = 0;
    for (std::size_t p = doc.str().find("</text>"); p != std::string::npos;
         p = doc.str().find("</text>", p + 1))
        labels++;
    EXPECT_GE(labels, rows);
}
