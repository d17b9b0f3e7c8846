#include <gtest/gtest.h>

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <functional>

#include "rinex_obs.h"
#include "rinex_test_files.h"

using namespace rinex;
using rinextest::hline;
using rinextest::joinLines;

namespace {

const char* const kSample = "tlse-2024-001/TLSE00FRA_R_20240011200_05M_01S_MO.rnx.gz";
const char* const kThirty = "tlse-2024-001/TLSE00FRA_R_20240011800_01H_30S_MO.rnx.gz";

const SatObs* findSat(const ObsEpoch& e, char sys, int prn) {
    for (const SatObs& s : e.sats)
        if (s.sys == sys && s.prn == prn) return &s;
    return nullptr;
}

/* Value of `code` of a satellite, checked present, with its indicators. */
void expectValue(const ObsHeader& h, const SatObs* s, const char* code, double value, int lli, int ssi) {
    ASSERT_TRUE(s != nullptr);
    int i = h.obsIndex(s->sys, code);
    ASSERT_GE(i, 0) << code;
    const ObsValue& v = s->values[i];
    EXPECT_TRUE(v.present) << s->sys << s->prn << " " << code;
    EXPECT_DOUBLE_EQ(v.value, value) << s->sys << s->prn << " " << code;
    EXPECT_EQ(v.lli, lli) << code;
    EXPECT_EQ(v.ssi, ssi) << code;
}

void expectAbsent(const ObsHeader& h, const SatObs* s, const char* code) {
    ASSERT_TRUE(s != nullptr);
    int i = h.obsIndex(s->sys, code);
    ASSERT_GE(i, 0) << code;
    EXPECT_FALSE(s->values[i].present) << s->sys << s->prn << " " << code;
}

int countSys(const ObsEpoch& e, char sys) {
    int n = 0;
    for (const SatObs& s : e.sats) n += s.sys == sys;
    return n;
}

/* ---- The real recordings ---- */

TEST(RinexObsReal, SampleRecordingHeader) {
    Diagnostics diag;
    ObsReader r(diag);
    ASSERT_TRUE(r.open(rinextest::dataPath(kSample)));
    const ObsHeader& h = r.header();
    EXPECT_DOUBLE_EQ(h.version, 3.04);
    EXPECT_EQ(h.fileType, 'O');
    EXPECT_EQ(h.system, 'M');
    EXPECT_EQ(h.markerName, "TLSE");
    ASSERT_TRUE(h.hasApproxPos);
    EXPECT_DOUBLE_EQ(h.approxPos[0], 4627852.5264);
    EXPECT_DOUBLE_EQ(h.approxPos[1], 119640.5140);
    EXPECT_DOUBLE_EQ(h.approxPos[2], 4372994.8358);
    ASSERT_TRUE(h.hasAntennaDelta);
    EXPECT_DOUBLE_EQ(h.antennaDeltaHEN[0], 1.0530);
    EXPECT_TRUE(h.hasInterval);
    EXPECT_DOUBLE_EQ(h.interval, 1.0);
    EXPECT_TRUE(h.hasLeapSeconds);
    EXPECT_EQ(h.leapSeconds, 18);
    EXPECT_EQ(h.timeSystem, "GPS");
    EXPECT_TRUE(h.hasFirstObs);
    EXPECT_EQ(h.firstObs.hour, 12);

    /* Types continue on a second line for both systems. */
    ASSERT_EQ(h.obsTypes[kGps].size(), 20u);
    ASSERT_EQ(h.obsTypes[kGlo].size(), 16u);
    EXPECT_EQ(h.obsIndex('G', "C1C"), 0);
    EXPECT_EQ(h.obsIndex('G', "C2W"), 2);
    EXPECT_EQ(h.obsIndex('G', "L2X"), 13);
    EXPECT_EQ(h.obsIndex('G', "S5X"), 19);
    EXPECT_EQ(h.obsIndex('R', "C2P"), 3);
    EXPECT_EQ(h.obsIndex('R', "S2P"), 15);
    EXPECT_EQ(h.obsIndex('R', "C5X"), -1);
    EXPECT_EQ(h.obsIndex('E', "C1X"), -1);

    /* GLONASS SLOT / FRQ #, nine satellites over two lines. */
    const int want[][2] = {{3, 5}, {4, 6}, {5, 1}, {13, -2}, {14, -7}, {15, 0}, {22, -3}, {23, 3}, {24, 2}};
    int known = 0;
    for (int slot = 1; slot <= kMaxGloSlot; ++slot) {
        int k = 0;
        if (h.gloFrequency(slot, k)) ++known;
    }
    EXPECT_EQ(known, 9);
    for (const auto& w : want) {
        int k = 99;
        EXPECT_TRUE(h.gloFrequency(w[0], k)) << w[0];
        EXPECT_EQ(k, w[1]) << w[0];
    }
    EXPECT_TRUE(diag.empty());
}

TEST(RinexObsReal, SampleRecordingEpochs) {
    Diagnostics diag;
    ObsReader r(diag);
    ASSERT_TRUE(r.open(rinextest::dataPath(kSample)));
    const ObsHeader& h = r.header();
    ObsEpoch e;
    long n = 0;
    int64_t first = 0, prev = 0;
    bool steps = true;
    while (r.next(e)) {
        if (n == 0) {
            first = e.sec2000;
            EXPECT_EQ(e.time.text(), "2024-01-01 12:00:00.0000000");
            EXPECT_EQ(countSys(e, 'G'), 11);
            EXPECT_EQ(countSys(e, 'R'), 8);
            EXPECT_EQ(e.otherSystems, 0);
            EXPECT_EQ(e.flag, kEpochOk);
            const SatObs* g10 = findSat(e, 'G', 10);
            expectValue(h, g10, "C1C", 23679950.453, 0, 6);
            expectAbsent(h, g10, "C1X");
            expectValue(h, g10, "C2W", 23679960.352, 0, 4);
            expectValue(h, g10, "L1C", 124438938.430, 0, 6);
            expectValue(h, g10, "D2W", 692.633, 0, 4);
            expectValue(h, g10, "S1C", 40.8, 0, 0);  /* strengths carry no indicators */
            expectAbsent(h, g10, "S1X");
            expectValue(h, g10, "S5X", 45.8, 0, 0);
            const SatObs* r03 = findSat(e, 'R', 3);
            expectValue(h, r03, "C1C", 20554452.664, 0, 8);
            expectValue(h, r03, "C2P", 20554457.410, 0, 7);
            expectValue(h, r03, "D1C", -3348.145, 0, 8);
            expectValue(h, r03, "L2P", 85578557.776, 0, 7);
            const SatObs* r23 = findSat(e, 'R', 23);
            expectAbsent(h, r23, "C2C");
            expectAbsent(h, r23, "L2P");
            expectValue(h, r23, "S1P", 40.6, 0, 0);
        } else {
            steps = steps && e.sec2000 - prev == 1 && e.fraction == 0.0;
        }
        prev = e.sec2000;
        ++n;
    }
    EXPECT_EQ(n, 300);
    EXPECT_TRUE(steps);
    EXPECT_EQ(prev - first, 299);
    EXPECT_EQ(e.time.text(), "2024-01-01 12:04:59.0000000");
    EXPECT_EQ(countSys(e, 'G'), 12);
    expectValue(h, findSat(e, 'G', 14), "L2W", 104529050.628, 0, 2);
    expectValue(h, findSat(e, 'R', 23), "C1P", 23242927.359, 0, 6);
    EXPECT_EQ(r.epochsSkipped(), 0);
    EXPECT_TRUE(diag.empty()) << diag.list()[0].text();
}

/* ---- Small files written here ---- */

std::string fmt(const char* f, ...) __attribute__((format(printf, 1, 2)));
std::string fmt(const char* f, ...) {
    char buf[256];
    va_list ap;
    va_start(ap, f);
    std::vsnprintf(buf, sizeof buf, f, ap);
    va_end(ap);
    return buf;
}

/* One observation field: F14.3 and the two indicator digits (blank < 0). */
std::string obs(double v, int lli = -1, int ssi = -1) {
    std::string s = fmt("%14.3f", v);
    s += lli < 0 ? ' ' : static_cast<char>('0' + lli);
    s += ssi < 0 ? ' ' : static_cast<char>('0' + ssi);
    return s;
}
const std::string kBlankObs(16, ' ');

std::string versionLine(double v, const char* sys) {
    return hline(fmt("%9.2f%11s%-20s%s", v, "", "OBSERVATION DATA", sys), "RINEX VERSION / TYPE");
}

/* RINEX 3: three epochs a second apart, G01, R01 and a Galileo satellite
 * in each. Lines: header 1-8; epochs at 9, 13, 17. */
std::vector<std::string> base3() {
    std::vector<std::string> l = {
        versionLine(3.04, "M"),
        hline("TEST", "MARKER NAME"),
        hline("  4627852.5264   119640.5140  4372994.8358", "APPROX POSITION XYZ"),
        hline("G    4 C1C L1C D1C S1C", "SYS / # / OBS TYPES"),
        hline("R    4 C1C L1C D1C S1C", "SYS / # / OBS TYPES"),
        hline("E    2 C1X L1X", "SYS / # / OBS TYPES"),
        hline("  2 R01  1 R02 -4", "GLONASS SLOT / FRQ #"),
        hline("", "END OF HEADER"),
    };
    for (int e = 0; e < 3; ++e) {
        l.push_back(fmt("> 2024 01 01 12 00%11.7f  0%3d", 1.0 * e, 3));
        l.push_back("G01" + obs(20000000.0 + 100 * e, -1, 7) + obs(105000000.0 + e, 0, 7) +
                    obs(1000.25) + obs(45.0));
        l.push_back("R01" + obs(21000000.0 + 100 * e, -1, 6) + obs(112000000.5, 1, 6) + kBlankObs +
                    obs(40.0));
        l.push_back("E05" + obs(22000000.0) + obs(115000000.0));
    }
    return l;
}

/* RINEX 2.11: ten observation types (a continuation line), thirteen
 * satellites in the first epoch (a continued list, a blank system letter,
 * an SBAS satellite), an event record that renames the marker, a power
 * failure epoch and cycle slip records. Each satellite takes two lines. */
const char* const kTypes2[] = {"C1", "P1", "L1", "D1", "S1", "P2", "L2", "D2", "S2", "C2"};

std::vector<std::string> satRecord2(double base) {
    std::string a, b;
    for (int i = 0; i < 5; ++i) a += obs(base + i, i == 2 ? 1 : -1, 5);
    for (int i = 5; i < 10; ++i) b += i == 9 ? kBlankObs : obs(base + i, -1, 5);
    while (!b.empty() && b.back() == ' ') b.pop_back();
    return {a, b};
}

std::vector<std::string> base2() {
    std::vector<std::string> l = {
        versionLine(2.11, "M (MIXED)"),
        hline("TEST2", "MARKER NAME"),
        hline("  4627852.5264   119640.5140  4372994.8358", "APPROX POSITION XYZ"),
        hline("        1.0530        0.0000        0.0000", "ANTENNA: DELTA H/E/N"),
        hline("    10    C1    P1    L1    D1    S1    P2    L2    D2    S2", "# / TYPES OF OBSERV"),
        hline("          C2", "# / TYPES OF OBSERV"),
        hline("     1.000", "INTERVAL"),
        hline("    18", "LEAP SECONDS"),
        hline("  2024     1     1    12     0    0.0000000     GPS", "TIME OF FIRST OBS"),
        hline("", "END OF HEADER"),
    };
    /* line 11: epoch 1, 13 satellites */
    const char* ids[13] = {" 1", "G02", "G03", "G04", "G05", "G06", "G07", "G08", "G09", "R01", "R02", "S20", "G10"};
    std::string ep = fmt(" 24  1  1 12  0%11.7f  0%3d", 0.0, 13);
    for (int i = 0; i < 12; ++i) ep += std::string(ids[i]).size() == 2 ? std::string(" ") + ids[i] : ids[i];
    ep += fmt("%12.9f", 0.000123456);
    l.push_back(ep);
    l.push_back(std::string(32, ' ') + ids[12]);
    for (int i = 0; i < 13; ++i)
        for (const std::string& s : satRecord2(20000000.0 + 1000.0 * i)) l.push_back(s);
    /* event: two header lines follow */
    l.push_back(fmt("%28s4%3d", "", 2));
    l.push_back(hline("marker renamed", "COMMENT"));
    l.push_back(hline("NEWNAME", "MARKER NAME"));
    /* power failure epoch with two satellites */
    l.push_back(fmt(" 24  1  1 12  0%11.7f  1%3dG01R02", 1.0, 2));
    for (const std::string& s : satRecord2(20000100.0)) l.push_back(s);
    for (const std::string& s : satRecord2(20010100.0)) l.push_back(s);
    /* cycle slip records of the same second */
    l.push_back(fmt(" 24  1  1 12  0%11.7f  6%3dG01", 1.0, 1));
    for (const std::string& s : satRecord2(1.0)) l.push_back(s);
    /* a last ordinary epoch */
    l.push_back(fmt(" 24  1  1 12  0%11.7f  0%3dG01", 2.0, 1));
    for (const std::string& s : satRecord2(20000200.0)) l.push_back(s);
    return l;
}

struct ReadResult {
    bool opened = false;
    std::vector<ObsEpoch> epochs;
    ObsHeader header;
    Diagnostics diag;
    long other = 0, events = 0;
};

void readAll(const std::string& path, ReadResult& res) {
    ObsReader r(res.diag);
    res.opened = r.open(path);
    ObsEpoch e;
    while (r.next(e)) res.epochs.push_back(e);
    res.header = r.header();
    res.other = r.otherSatellites();
    res.events = r.eventRecords();
}

TEST(RinexObsSmall, Rinex2ListsContinuationsEventsAndFlags) {
    rinextest::ScratchDir dir;
    ReadResult res;
    readAll(dir.write("r2.11o", joinLines(base2())), res);
    ASSERT_TRUE(res.opened);
    EXPECT_TRUE(res.diag.empty()) << res.diag.list()[0].text();
    const ObsHeader& h = res.header;
    EXPECT_DOUBLE_EQ(h.version, 2.11);
    EXPECT_TRUE(h.hasAntennaDelta);
    /* RINEX 2 codes in three-character form: phase on a band follows
     * its C/A code if the list has one, else the P code. */
    const char* gps[] = {"C1C", "C1W", "L1C", "D1C", "S1C", "C2W", "L2W", "D2W", "S2W", "C2X"};
    const char* glo[] = {"C1C", "C1P", "L1C", "D1C", "S1C", "C2P", "L2P", "D2P", "S2P", "C2C"};
    ASSERT_EQ(h.obsTypes[kGps].size(), 10u);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(h.obsTypes[kGps][i], gps[i]);
        EXPECT_EQ(h.obsTypes[kGlo][i], glo[i]);
        EXPECT_EQ(h.fileObsTypes[kGlo][i], kTypes2[i]);
    }
    EXPECT_EQ(h.markerName, "NEWNAME");   /* applied from the event record */
    EXPECT_EQ(res.events, 1);

    ASSERT_EQ(res.epochs.size(), 4u);
    const ObsEpoch& e0 = res.epochs[0];
    EXPECT_EQ(countSys(e0, 'G'), 10);
    EXPECT_EQ(countSys(e0, 'R'), 2);
    EXPECT_EQ(e0.otherSystems, 1);
    EXPECT_EQ(res.other, 1);
    EXPECT_TRUE(e0.hasClockOffset);
    EXPECT_DOUBLE_EQ(e0.clockOffset, 0.000123456);
    EXPECT_EQ(e0.time.text(), "2024-01-01 12:00:00.0000000");
    /* the blank letter is GPS; the satellite after the list break is G10 */
    expectValue(h, findSat(e0, 'G', 1), "C1C", 20000000.0, 0, 5);
    expectValue(h, findSat(e0, 'G', 1), "L1C", 20000002.0, 1, 5);
    expectValue(h, findSat(e0, 'G', 10), "C1C", 20012000.0, 0, 5);
    expectValue(h, findSat(e0, 'G', 10), "S2W", 20012008.0, 0, 5);
    expectAbsent(h, findSat(e0, 'G', 10), "C2X");
    expectValue(h, findSat(e0, 'R', 2), "C2P", 20010005.0, 0, 5);
    EXPECT_EQ(res.epochs[1].flag, kEpochPowerFailure);
    expectValue(h, findSat(res.epochs[1], 'R', 2), "C1C", 20010100.0, 0, 5);
    EXPECT_EQ(res.epochs[2].flag, kEpochCycleSlips);
    EXPECT_EQ(res.epochs[2].sec2000, res.epochs[1].sec2000);
    EXPECT_EQ(res.epochs[3].sec2000 - res.epochs[0].sec2000, 2);
}

/* One damaged file per row: what is done to the text, the message it
 * must give (file and line included), and what must still be read. */
struct BadCase {
    const char* name;
    int version;
    std::function<void(std::vector<std::string>&)> damage;
    long line;                  /* of the message; 0 = any */
    const char* what;           /* part of the message */
    std::size_t epochs;         /* still read */
    std::size_t sats;           /* GPS + GLONASS over all epochs */
};

TEST(RinexObsSmall, DamagedFilesReportFileAndLineAndReadTheRest) {
    const std::vector<BadCase> cases = {
        {"cut_value", 3, [](auto& l) { l[13] = l[13].substr(0, 25); }, 14,
         "line ends inside observation L1C of G01; satellite skipped", 3, 5},
        {"no_end_of_header", 3, [](auto& l) { l.erase(l.begin() + 7); }, 8,
         "END OF HEADER missing before the first epoch", 3, 6},
        {"epoch_back_in_time", 3, [](auto& l) { l[16] = "> 2024 01 01 12 00  0.5000000  0  3"; }, 17,
         "epoch 2024-01-01 12:00:00.5000000 is not after the previous epoch; skipped", 2, 4},
        {"missing_satellite_line", 3, [](auto& l) { l.erase(l.begin() + 15); }, 13,
         "epoch announces 3 satellites but has 2; epoch skipped", 2, 4},
        {"file_ends_in_epoch", 3, [](auto& l) { l.pop_back(); l.pop_back(); }, 17,
         "file ends inside the epoch (1 of 3 satellites); epoch skipped", 2, 4},
        {"bad_epoch_time", 3, [](auto& l) { l[12].replace(7, 2, "13"); }, 13,
         "epoch time is not valid: '2024 13 01 12 00  1.0000000'; epoch skipped", 2, 4},
        {"r2_stray_line", 2, [](auto& l) { l.insert(l.begin() + 38, "garbage between epochs"); }, 39,
         "expected an epoch line; skipped up to the next one", 4, 16},
        {"r2_epoch_ends_early", 2, [](auto& l) { l.erase(l.begin() + 44, l.begin() + 46); }, 45,
         "epoch of line 42 ends early", 3, 14},
        {"r2_list_not_continued", 2, [](auto& l) { l[11] = l[12]; }, 12,
         "satellite list continuation line expected; epoch skipped", 3, 4},
    };
    rinextest::ScratchDir dir;
    for (const BadCase& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<std::string> lines = c.version == 3 ? base3() : base2();
        c.damage(lines);
        const std::string path = dir.write(std::string(c.name) + ".rnx", joinLines(lines));
        ReadResult res;
        readAll(path, res);
        EXPECT_TRUE(res.opened);
        const std::string want = c.line > 0 ? path + ":" + std::to_string(c.line) + ": " + c.what : c.what;
        EXPECT_TRUE(res.diag.contains(want)) << "want: " << want << "\ngot:  "
                                              << (res.diag.empty() ? "(nothing)" : res.diag.list()[0].text());
        EXPECT_EQ(res.epochs.size(), c.epochs);
        std::size_t sats = 0;
        for (const ObsEpoch& e : res.epochs) sats += e.sats.size();
        EXPECT_EQ(sats, c.sats);
    }
}

TEST(RinexObsSmall, CutCompressedFileKeepsWhatCameBefore) {
    rinextest::ScratchDir dir;
    /* Enough epochs that the compressed stream spans many blocks. */
    std::vector<std::string> lines = base3();
    for (int e = 3; e < 2000; ++e) {
        lines.push_back(fmt("> 2024 01 01 %02d %02d%11.7f  0  1", 12 + e / 3600, (e / 60) % 60, 1.0 * (e % 60)));
        lines.push_back("G01" + obs(20000000.0 + 7919.0 * e, -1, 7) + obs(105000000.0 + 31.0 * e, 0, 7));
    }
    const std::string whole = rinextest::slurp(dir.writeGz("whole.rnx.gz", joinLines(lines)));
    const std::string path = dir.write("cut.rnx.gz", whole.substr(0, whole.size() / 2));
    ReadResult res;
    readAll(path, res);
    EXPECT_TRUE(res.opened);
    EXPECT_TRUE(res.diag.contains("compressed data ends unexpectedly")) << res.diag.list().size();
    EXPECT_GT(res.epochs.size(), 100u);
    EXPECT_LT(res.epochs.size(), 2000u);
}

}  // namespace
