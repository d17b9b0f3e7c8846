#include <gtest/gtest.h>

#include <cstdio>

#include "rinex_test_files.h"
#include "zlog.h"

namespace {

/* A message shaped like a 0x0C one: type byte, own length, then bytes
 * that differ from message to message. */
std::vector<uint8_t> message(std::size_t len, uint8_t seed) {
    std::vector<uint8_t> m(len);
    m[0] = 0x0C;
    m[1] = static_cast<uint8_t>(len);
    m[2] = static_cast<uint8_t>(len >> 8);
    for (std::size_t i = 3; i < len; ++i) m[i] = static_cast<uint8_t>(seed + 7 * i);
    return m;
}

zlog::FileHeader tlseHeader() {
    zlog::FileHeader h;
    h.hasPosition = true;
    h.position[0] = 4627852.5264;
    h.position[1] = 119640.5140;
    h.position[2] = 4372994.8358;
    h.station = "TLSE";
    h.sources = {"TLSE00FRA_R_20240011200_05M_01S_MO.rnx.gz", "BRDC00IGS_R_20240010000_01D_MN.rnx.gz"};
    return h;
}

/* Three records: 25, 300 (interpolated) and 1000 bytes. */
const std::size_t kLens[3] = {25, 300, 1000};

std::string writeLog(rinextest::ScratchDir& dir, const std::string& name, const zlog::FileHeader& h) {
    std::string p = dir.file(name);
    zlog::Writer w;
    EXPECT_TRUE(w.open(p, h)) << w.error();
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(w.write(message(kLens[i], static_cast<uint8_t>(i)), i == 1 ? zlog::kInterpolated : 0))
            << w.error();
    EXPECT_EQ(w.records(), 3);
    EXPECT_TRUE(w.close());
    return p;
}

struct ReadBack {
    bool opened = false;
    zlog::FileHeader header;
    std::vector<zlog::Record> records;
    std::vector<std::string> errors;
    bool truncated = false;
};

ReadBack readLog(const std::string& path) {
    ReadBack rb;
    zlog::Reader r;
    rb.opened = r.open(path);
    zlog::Record rec;
    while (r.next(rec)) rb.records.push_back(rec);
    rb.header = r.header();
    rb.errors = r.errors();
    rb.truncated = r.truncated();
    return rb;
}

bool hasError(const ReadBack& rb, const std::string& what) {
    for (const std::string& e : rb.errors)
        if (e.find(what) != std::string::npos) return true;
    return false;
}

std::string firstError(const ReadBack& rb) { return rb.errors.empty() ? "(none)" : rb.errors[0]; }

TEST(Zlog, RoundTripKeepsHeaderMessagesAndMarks) {
    rinextest::ScratchDir dir;
    const std::string p = writeLog(dir, "a.zlog", tlseHeader());
    ReadBack rb = readLog(p);
    ASSERT_TRUE(rb.opened) << firstError(rb);
    EXPECT_TRUE(rb.errors.empty()) << firstError(rb);
    EXPECT_FALSE(rb.truncated);
    EXPECT_EQ(rb.header.version, zlog::kVersion);
    EXPECT_TRUE(rb.header.hasPosition);
    EXPECT_EQ(rb.header.position[0], 4627852.5264);
    EXPECT_EQ(rb.header.position[1], 119640.5140);
    EXPECT_EQ(rb.header.position[2], 4372994.8358);
    EXPECT_EQ(rb.header.station, "TLSE");
    EXPECT_EQ(rb.header.sources, tlseHeader().sources);
    ASSERT_EQ(rb.records.size(), 3u);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(rb.records[i].message, message(kLens[i], static_cast<uint8_t>(i))) << i;
        EXPECT_EQ(rb.records[i].interpolated(), i == 1) << i;
    }

    /* The documented layout, byte by byte where it is fixed. */
    const std::string bytes = rinextest::slurp(p);
    ASSERT_GT(bytes.size(), 40u);
    EXPECT_EQ(bytes.substr(0, 4), "ZLOG");
    EXPECT_EQ(bytes[4], 1);
    EXPECT_EQ(bytes[5], 0);
    EXPECT_EQ(bytes[6], 1);   /* position present */
    const std::size_t h = static_cast<uint8_t>(bytes[8]) | static_cast<uint8_t>(bytes[9]) << 8;
    EXPECT_EQ(h, 36u + 2 + 4 + 2 + (2 + tlseHeader().sources[0].size()) + (2 + tlseHeader().sources[1].size()));
    EXPECT_EQ(rb.records[0].offset, h);
    EXPECT_EQ(static_cast<uint8_t>(bytes[h]), 0xA5);
    EXPECT_EQ(static_cast<uint8_t>(bytes[h + 1]), 0x5A);
    EXPECT_EQ(bytes[h + 4], 25);
    EXPECT_EQ(rb.records[1].offset, h + 6 + 25);
    EXPECT_EQ(bytes[h + 6 + 25 + 2], zlog::kInterpolated);
    EXPECT_EQ(bytes.size(), h + 3 * 6 + 25 + 300 + 1000);
}

TEST(Zlog, TruncatedLastRecordIsReportedNotReturned) {
    rinextest::ScratchDir dir;
    const std::string whole = rinextest::slurp(writeLog(dir, "w.zlog", tlseHeader()));
    const std::size_t last = whole.size() - 6 - 1000;
    struct {
        const char* name;
        std::size_t keep;
        const char* what;
    } cuts[] = {
        {"in_message", whole.size() - 1, "record cut off by the end of the file (999 of 1000 message bytes)"},
        {"in_record_header", last + 3, "record header cut off by the end of the file (3 bytes)"},
        {"after_length", last + 6, "record cut off by the end of the file (0 of 1000 message bytes)"},
    };
    for (const auto& c : cuts) {
        SCOPED_TRACE(c.name);
        const std::string p = dir.write(std::string(c.name) + ".zlog", whole.substr(0, c.keep));
        ReadBack rb = readLog(p);
        ASSERT_TRUE(rb.opened);
        EXPECT_EQ(rb.records.size(), 2u);
        EXPECT_TRUE(rb.truncated);
        EXPECT_TRUE(hasError(rb, p + "@" + std::to_string(last) + ": " + c.what)) << firstError(rb);
    }
}

}  // namespace
