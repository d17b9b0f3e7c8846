/*
 * SP3 reader: the real ESA file of 2009-04-01 (header, satellite list,
 * epochs, values at both ends of the day), and small files written here
 * for the cases the real one lacks: SP3-d, velocity records, missing
 * markers, damaged lines and files that are no SP3 at all.
 */
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "sp3.h"

namespace {

const std::string kEsa = std::string(ZELNAV_DATA_DIR) + "/orbits-2009-091/esa15253.sp3";

/* A file in the system's temporary folder, removed at the end of the
 * test. */
class TempFile {
public:
    explicit TempFile(const std::string& text) {
        char name[] = "/tmp/zelnav_sp3_XXXXXX";
        int fd = mkstemp(name);
        path_ = name;
        if (fd >= 0) close(fd);
        std::ofstream(path_) << text;
    }
    ~TempFile() { std::remove(path_.c_str()); }
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

const char* kSmallD =
    "#dV2024  1  1 12  0  0.00000000       2 ORBIT IGS20 FIT  TEST\n"
    "## 2295 129600.00000000   300.00000000 60310 0.5000000000000\n"
    "+    3   G01R24E11  0  0  0  0  0  0  0  0  0  0  0  0  0  0\n"
    "++         2  3  4  0  0  0  0  0  0  0  0  0  0  0  0  0  0\n"
    "%c M  cc GPS ccc cccc cccc cccc cccc ccccc ccccc ccccc ccccc\n"
    "%f  1.2500000  1.025000000  0.00000000000  0.000000000000000\n"
    "/* a comment\n"
    "*  2024  1  1 12  0  0.00000000\n"
    "PG01  10000.000000 -20000.000000  15000.500000     12.345678\n"
    "VG01  -1000.000000   2000.000000 -30000.000000      0.500000\n"
    "PR24      0.000000      0.000000      0.000000 999999.999999\n"
    "EP  12  13  14\n"
    "PE11  20000.000000  10000.000000  -5000.000000 999999.999999\n"
    "*  2024  1  1 12  5  0.00000000\n"
    "PG01  10001.000000 -20000.000000  15000.500000     12.345679\n"
    "EOF\n";

TEST(Sp3, ReadsVersionDVelocitiesAndMissingMarkers) {
    TempFile t(kSmallD);
    rinex::Sp3File f;
    rinex::Diagnostics d;
    ASSERT_TRUE(rinex::readSp3(t.path(), f, d));
    for (const auto& x : d.list()) ADD_FAILURE() << x.text();
    EXPECT_EQ(f.version, 'd');
    EXPECT_EQ(f.posVel, 'V');
    EXPECT_EQ(f.interval, 300.0);
    ASSERT_EQ(f.satIds.size(), 3u);
    EXPECT_EQ(f.satIds[2], "E11");
    ASSERT_EQ(f.epochs.size(), 2u);
    const rinex::Sp3Sat* g = f.find(0, 'G', 1);
    ASSERT_NE(g, nullptr);
    EXPECT_TRUE(g->hasVel);
    EXPECT_EQ(g->vel[2], -30000.0);
    EXPECT_EQ(g->clkRate, 0.5);
    EXPECT_EQ(g->pos[2], 15000.5);
    const rinex::Sp3Sat* r = f.find(0, 'R', 24);
    ASSERT_NE(r, nullptr);
    EXPECT_FALSE(r->hasPos);
    EXPECT_FALSE(r->hasClk);
    EXPECT_FALSE(r->hasVel);
    const rinex::Sp3Sat* e = f.find(0, 'E', 11);
    ASSERT_NE(e, nullptr);
    EXPECT_TRUE(e->hasPos);
    EXPECT_FALSE(e->hasClk);
    EXPECT_EQ(f.find(1, 'G', 1)->pos[0], 10001.0);
    EXPECT_EQ(f.epochs[1].sec2000 - f.epochs[0].sec2000, 300);
}

TEST(Sp3, DamagedLinesAreReportedAndSkipped) {
    std::string text = kSmallD;
    // A bad coordinate, a bad epoch (its records skipped with it), a
    // velocity line without its position, and an epoch count that no
    // longer matches.
    text.replace(text.find("-20000.000000  15000.500000     12.345678"), 13, "-2000x.000000");
    text.replace(text.find("*  2024  1  1 12  5"), 19, "*  2024 13  1 12  5");
    text.insert(text.find("EOF"), "VG02      1.000000      2.000000      3.000000      0.000000\n");
    TempFile t(text);
    rinex::Sp3File f;
    rinex::Diagnostics d;
    ASSERT_TRUE(rinex::readSp3(t.path(), f, d));
    EXPECT_TRUE(d.contains("bad coordinate"));
    EXPECT_TRUE(d.contains("bad epoch time"));
    EXPECT_TRUE(d.contains("velocity record without its position record"));
    EXPECT_TRUE(d.contains("header announces 2 epochs, the file has 1"));
    ASSERT_EQ(f.epochs.size(), 1u);
    EXPECT_EQ(f.find(0, 'G', 1), nullptr);
    EXPECT_NE(f.find(0, 'E', 11), nullptr);
}

}  // namespace
