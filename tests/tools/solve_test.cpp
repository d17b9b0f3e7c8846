/*
 * `zelnav solve` on the real sample log (TLSE, 2024-01-01 12:00-12:05 UTC,
 * one message a second): every epoch the solver can fix is fixed, every
 * fix lies within 15 m of the station's ARP, the static station shows no
 * speed; the first point from GLONASS alone when the log has no
 * approximate position; damaged logs and messages skipped with their
 * reason, the rest solved as before; the CSV and the accuracy figures.
 */
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "solve_pipeline.h"
#include "solve_report.h"
#include "solve_run.h"
#include "zlog.h"

namespace {

using solve::slurp;

const std::string kLog = std::string(ZELNAV_DATA_DIR) + "/tlse-2024-001/tlse_1200_5min.zlog";
const double kArp[3] = {4627852.3986, 119640.3423, 4372994.4588};

std::vector<zlog::Record> readAll(const std::string& path, zlog::FileHeader* header = nullptr) {
    zlog::Reader rd;
    EXPECT_TRUE(rd.open(path)) << path;
    if (header) *header = rd.header();
    std::vector<zlog::Record> out;
    zlog::Record r;
    while (rd.next(r)) out.push_back(r);
    EXPECT_TRUE(rd.errors().empty());
    return out;
}

double dist(const double* a, const double* b) {
    return std::sqrt((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) +
                     (a[2] - b[2]) * (a[2] - b[2]));
}

/* Rows the solver of `mode` can use, per system. */
void usable(const lsttblCrdSat_t* l, int* glo, int* gps) {
    *glo = *gps = 0;
    for (uint32_t i = 0; i < l->num; i++) {
        if (l->tbl[i].bad) continue;
        if (l->tbl[i].sys == 0) ++*glo;
        if (l->tbl[i].sys == 1) ++*gps;
    }
}

bool solvable(int mode, int glo, int gps) {
    if (mode == 0) return glo >= 4;
    if (mode == 1) return gps >= 4;
    if (glo == 0 || gps == 0) return glo + gps >= 4;
    return glo + gps >= 5;
}

/* A temporary file removed at the end of the test. */
struct TempFile {
    std::string path;
    explicit TempFile(const char* name) : path(std::string(::testing::TempDir()) + name) {}
    ~TempFile() { std::remove(path.c_str()); }
};

TEST(SolveReal, EveryEpochWithEnoughSatellitesFixesNearTheStation) {
    zlog::FileHeader hdr;
    std::vector<zlog::Record> recs = readAll(kLog, &hdr);
    ASSERT_EQ(recs.size(), 300u);
    ASSERT_TRUE(hdr.hasPosition);
    for (int mode : {10, 0, 1}) {
        solve::Pipeline pl(mode);
        pl.seed(hdr.position);
        int epochs = 0, solvableEpochs = 0, fixes = 0;
        double worst = 0.0, speedSum = 0.0, worstSpeed = 0.0;
        for (zlog::Record& r : recs) {
            ASSERT_TRUE(pl.run(r.message.data()));
            epochs++;
            int glo, gps;
            usable(pl.rows(), &glo, &gps);
            const tblCrdPnt_t* fix = pl.fix();
            if (!solvable(mode, glo, gps)) {
                EXPECT_EQ(fix->actual, 0);
                continue;
            }
            solvableEpochs++;
            ASSERT_EQ(fix->actual, 1) << "mode " << mode << " epoch " << epochs;
            fixes++;
            // Combined mode: both systems whenever both have rows.
            if (mode == 10) {
                EXPECT_EQ(fix->sys, glo && gps ? 10 : glo ? 0 : 1);
            } else {
                EXPECT_EQ(fix->sys, mode);
            }
            double w[3];
            solve::fixToWgs84(fix, pl.datum(), w);
            worst = std::fmax(worst, dist(w, kArp));
            const tblSpdPnt_t* v = pl.speed();
            ASSERT_EQ(v->actual, 1);
            const double s = std::sqrt(v->vxyz[0] * v->vxyz[0] + v->vxyz[1] * v->vxyz[1] +
                                       v->vxyz[2] * v->vxyz[2]);
            speedSum += s;
            worstSpeed = std::fmax(worstSpeed, s);
        }
        // Navigation data take a while to arrive; after that every epoch
        // has enough satellites.
        EXPECT_GT(solvableEpochs, 250) << mode;
        EXPECT_EQ(fixes, solvableEpochs);
        EXPECT_LT(worst, 15.0) << "mode " << mode;
        // The receiver clock is steered (tens of nanoseconds), so the
        // velocity fit sees no clock-induced speed: what is left is
        // Doppler noise.
        EXPECT_LT(worstSpeed, 1.0) << mode;
        EXPECT_LT(speedSum / fixes, 0.3) << mode;
    }
}

TEST(SolveReal, WithoutAnApproximatePositionTheFirstPointComesFromGlonass) {
    zlog::FileHeader hdr;
    std::vector<zlog::Record> recs = readAll(kLog, &hdr);
    std::vector<zlog::Record> copy = recs;
    solve::Pipeline seeded(10), cold(10);
    seeded.seed(hdr.position);
    int firstFix = -1;
    for (std::size_t k = 0; k < recs.size(); k++) {
        seeded.run(recs[k].message.data());
        cold.run(copy[k].message.data());
        if (!cold.pointSet()) {
            EXPECT_TRUE(cold.fix() == nullptr || cold.fix()->actual == 0);
            continue;
        }
        ASSERT_EQ(seeded.fix()->actual, cold.fix()->actual) << k;
        if (cold.fix()->actual != 1) continue;
        if (firstFix < 0) firstFix = (int)k;
        // The first epoch is solved again with the point set, so even the
        // first fix carries its atmospheric terms: the two runs differ
        // only by the reference point's effect on elevations (mm).
        const tblCrdPnt_t *fs = seeded.fix(), *fc = cold.fix();
        const double ps[3] = {fs->xyz[0], fs->xyz[1], fs->xyz[2]};
        const double pc[3] = {fc->xyz[0], fc->xyz[1], fc->xyz[2]};
        EXPECT_LT(dist(ps, pc), 0.05) << k;
        for (uint32_t i = 0; i < cold.rows()->num; i++)
            ASSERT_TRUE(std::isfinite(cold.rows()->tbl[i].psvd)) << k;
    }
    EXPECT_GE(firstFix, 0);
    EXPECT_LT(firstFix, 60);
}

/* Writes `recs` into a log, optionally flagging every other record as
 * interpolated. */
void writeLog(const std::string& path, const zlog::FileHeader& hdr,
              const std::vector<zlog::Record>& recs, bool flagOdd = false) {
    zlog::Writer w;
    ASSERT_TRUE(w.open(path, hdr));
    for (std::size_t k = 0; k < recs.size(); k++)
        ASSERT_TRUE(w.write(recs[k].message, flagOdd && k % 2 ? zlog::kInterpolated : 0));
    ASSERT_TRUE(w.close());
}

solve::Totals runLog(const std::string& path, solve::Options opt, std::string* csv,
                     std::string* err) {
    std::FILE* out = std::tmpfile();
    std::FILE* e = std::tmpfile();
    solve::Totals t;
    EXPECT_EQ(solve::run(path, opt, out, e, &t), 0);
    if (csv) *csv = slurp(out);
    if (err) *err = slurp(e);
    std::fclose(out);
    std::fclose(e);
    return t;
}

TEST(SolveRun, SummaryOfTheSampleAgainstTheStation) {
    solve::Options opt;
    opt.hasRef = true;
    for (int i = 0; i < 3; i++) opt.ref[i] = kArp[i];
    std::string csv, err;
    solve::Totals t = runLog(kLog, opt, &csv, &err);
    EXPECT_EQ(t.messages, 300);
    EXPECT_EQ(t.epochs, 300);
    EXPECT_EQ(t.refused + t.logProblems, 0);
    EXPECT_GT(t.fixes, 250);
    EXPECT_EQ(t.accuracyFixes, t.fixes);
    EXPECT_LT(t.rms3d, 15.0);
    EXPECT_LE(t.h95, t.max3d);
    EXPECT_LE(t.v95, t.max3d);
    EXPECT_GT(t.rms3d, 0.1);  // real data are never exact
    // Header line plus one line per epoch; the summary names the figures.
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 301);
    EXPECT_EQ(csv.rfind(solve::kCsvHeader, 0), 0u);
    EXPECT_NE(err.find("3D RMS"), std::string::npos);
    EXPECT_NE(err.find("95% horizontal"), std::string::npos);
    EXPECT_NE(err.find("skipped 0 messages"), std::string::npos);
    // Without --ref no summary.
    opt.hasRef = false;
    runLog(kLog, opt, nullptr, &err);
    EXPECT_EQ(err, "");
}

TEST(SolveRun, RecordedOnlyLeavesInterpolatedSecondsOutOfTheReport) {
    zlog::FileHeader hdr;
    std::vector<zlog::Record> recs = readAll(kLog, &hdr);
    TempFile tmp("solve_interp.zlog");
    writeLog(tmp.path, hdr, recs, true);
    solve::Options opt;
    solve::Totals all = runLog(tmp.path, opt, nullptr, nullptr);
    opt.recordedOnly = true;
    std::string csv;
    solve::Totals rec = runLog(tmp.path, opt, &csv, nullptr);
    EXPECT_EQ(all.epochs, 300);
    EXPECT_EQ(rec.epochs, 150);
    EXPECT_EQ(rec.messages, 300);  // all still went through the pipeline
    // Exactly the fixes of the even seconds.
    std::string allCsv;
    opt.recordedOnly = false;
    runLog(tmp.path, opt, &allCsv, nullptr);
    long evenFixes = 0, line = -1;
    for (std::size_t at = 0; at < allCsv.size(); at = allCsv.find('\n', at) + 1, line++)
        if (line >= 0 && line % 2 == 0 && allCsv.compare(at + 19, 3, ",1,") == 0) evenFixes++;
    EXPECT_GT(evenFixes, 100);
    EXPECT_EQ(rec.fixes, evenFixes);
    // The report holds the even seconds only.
    EXPECT_NE(csv.find("T11:59:42,"), std::string::npos);
    EXPECT_EQ(csv.find("T11:59:43,"), std::string::npos);
}

TEST(SolveRun, DamagedMessagesAndRecordsAreSkippedWithTheirReason) {
    zlog::FileHeader hdr;
    std::vector<zlog::Record> recs = readAll(kLog, &hdr);
    std::vector<zlog::Record> bad = recs;
    // Message 100 announces one block more than it carries; message 200
    // has a sub-block running past its end. Both keep a length field that
    // the log itself accepts.
    bad[100].message[9]++;
    {
        std::vector<uint8_t>& m = bad[200].message;
        m[m[3] + 4] = 0xFF;  // first sub-block of the first block
    }
    TempFile tmp("solve_damaged.zlog");
    writeLog(tmp.path, hdr, bad);
    // And the recording stops in the middle of a record.
    {
        std::FILE* f = std::fopen(tmp.path.c_str(), "ab");
        ASSERT_NE(f, nullptr);
        std::vector<uint8_t> cut = {0xA5, 0x5A, 0, 0, 0x40, 0x02, 0x0C, 0x40};
        std::fwrite(cut.data(), 1, cut.size(), f);
        std::fclose(f);
    }
    solve::Options opt;
    opt.hasRef = true;
    for (int i = 0; i < 3; i++) opt.ref[i] = kArp[i];
    std::string csv, err;
    solve::Totals t = runLog(tmp.path, opt, &csv, &err);
    EXPECT_EQ(t.messages, 300);
    EXPECT_EQ(t.refused, 2);
    EXPECT_EQ(t.logProblems, 1);
    EXPECT_EQ(t.epochs, 298);
    EXPECT_NE(err.find("message skipped: block"), std::string::npos) << err;
    EXPECT_NE(err.find("@" + std::to_string(recs[100].offset) + ": message skipped"),
              std::string::npos)
        << err;
    EXPECT_NE(err.find("skipped 3 messages (2 refused by the check, 1 log problems)"),
              std::string::npos)
        << err;
    EXPECT_LT(t.rms3d, 15.0);
}

TEST(SolveRun, AMissingOrForeignFileIsAnError) {
    std::FILE* out = std::tmpfile();
    std::FILE* err = std::tmpfile();
    EXPECT_EQ(solve::run("/nonexistent/x.zlog", solve::Options(), out, err), 1);
    EXPECT_NE(slurp(err).find("x.zlog"), std::string::npos);
    EXPECT_EQ(slurp(out), "");
    TempFile junk("solve_junk.zlog");
    std::FILE* f = std::fopen(junk.path.c_str(), "wb");
    std::fputs("not a log at all\n", f);
    std::fclose(f);
    EXPECT_EQ(solve::run(junk.path, solve::Options(), out, err), 1);
    std::fclose(out);
    std::fclose(err);
}

TEST(SolveReport, CsvLineInWgs84WithEmptyFieldsWithoutAFix) {
    tblCrdPnt_t fix = {};
    fix.length = 100;
    fix.actual = 1;
    fix.sys = 10;
    fix.numGlo = 7;
    fix.numGps = 9;
    fix.xyz[0] = kArp[0] + 0.36;  // the ARP in PZ-90
    fix.xyz[1] = kArp[1] - 0.08;
    fix.xyz[2] = kArp[2] - 0.18;
    fix.dt = 1.5e-7;
    fix.tau = -2.5e-8;
    fix.dop10 = 13;
    tblSpdPnt_t spd = {};
    spd.actual = 1;
    spd.vxyz[0] = 0.25;
    std::FILE* f = std::tmpfile();
    // 2024-01-01 12:00:00 UTC is 15:00 receiver time, day 8766 from 2000.
    const unsigned int tm = 8766u * 86400u + 15u * 3600u;
    solve::csvLine(f, tm, &fix, &spd, 1);
    solve::csvLine(f, tm + 1, nullptr, nullptr, 1);
    fix.actual = 0;
    solve::csvLine(f, tm + 2, &fix, &spd, 1);
    const std::string s = slurp(f);
    std::fclose(f);
    std::vector<std::string> fields;
    std::size_t nl = s.find('\n');
    for (std::size_t at = 0; at <= nl;) {
        std::size_t end = std::min(s.find(',', at), nl);
        fields.push_back(s.substr(at, end - at));
        at = end + 1;
    }
    ASSERT_EQ(fields.size(), 17u);
    const char* want[17] = {"2024-01-01T12:00:00", "1", "10", "4627852.3986", "119640.3423",
                            "4372994.4588", nullptr, nullptr, nullptr, "1.500000000000e-07",
                            "-2.500000000000e-08", "7", "9", "1.3", "0.2500", "0.0000", "0.0000"};
    for (int k = 0; k < 17; k++) {
        if (!want[k]) continue;
        EXPECT_EQ(fields[k], want[k]) << k;
    }
    // Geodetic coordinates of the ARP on WGS-84 (computed independently).
    EXPECT_NEAR(std::stod(fields[6]), 43.560697070, 1e-7);
    EXPECT_NEAR(std::stod(fields[7]), 1.480894283, 1e-9);
    EXPECT_NEAR(std::stod(fields[8]), 208.2304, 2e-3);
    EXPECT_EQ(s.substr(nl + 1),
              "2024-01-01T12:00:01,0,,,,,,,,,,,,,,,\n"
              "2024-01-01T12:00:02,0,,,,,,,,,,,,,,,\n");
}

TEST(SolveReport, AccuracyInTheLocalFrameAndNearestRankPercentiles) {
    solve::Accuracy acc(kArp);
    // 3 m north and 4 m up of the ARP, built from its local frame.
    const double lat = 43.560697070 * M_PI / 180.0, lon = 1.480894283 * M_PI / 180.0;
    const double north[3] = {-std::sin(lat) * std::cos(lon), -std::sin(lat) * std::sin(lon),
                             std::cos(lat)};
    const double up[3] = {std::cos(lat) * std::cos(lon), std::cos(lat) * std::sin(lon),
                          std::sin(lat)};
    double p[3];
    for (int i = 0; i < 3; i++) p[i] = kArp[i] + 3.0 * north[i] + 4.0 * up[i];
    acc.add(p);
    acc.add(kArp);
    EXPECT_EQ(acc.count(), 2);
    EXPECT_NEAR(acc.max3d(), 5.0, 1e-6);
    EXPECT_NEAR(acc.rms3d(), std::sqrt(25.0 / 2.0), 1e-6);
    EXPECT_NEAR(acc.horizontal95(), 3.0, 1e-3);
    EXPECT_NEAR(acc.vertical95(), 4.0, 1e-3);

    std::vector<double> v;
    for (int i = 20; i >= 1; i--) v.push_back(i);
    EXPECT_EQ(solve::percentile(v, 0.95), 19.0);  // rank ceil(19) = 19
    v.push_back(21);
    EXPECT_EQ(solve::percentile(v, 0.95), 20.0);  // rank ceil(19.95) = 20
    EXPECT_EQ(solve::percentile({}, 0.95), 0.0);
    EXPECT_EQ(solve::percentile({7.0}, 0.95), 7.0);
}

}  // namespace
