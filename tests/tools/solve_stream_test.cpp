/*
 * `zelnav solve -` on a live stream: the sample log pushed through a pipe
 * in chunks of random size, with garbage and cut-off messages between
 * the records, gives the same epochs line for line as the log read from
 * its file; bare messages and records mixed in one stream come out whole
 * and in order, every garbage byte counted as skipped; a clean stream
 * hands each message out as soon as its last byte is in.
 */
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "solve_run.h"
#include "solve_stream.h"
#include "zlog.h"

namespace {

using solve::slurp;

const std::string kLog = std::string(ZELNAV_DATA_DIR) + "/tlse-2024-001/tlse_1200_5min.zlog";

std::vector<uint8_t> fileBytes(const std::string& path) {
    std::FILE* f = std::fopen(path.c_str(), "rb");
    EXPECT_NE(f, nullptr);
    std::vector<uint8_t> b;
    if (!f) return b;
    const std::string s = slurp(f);
    std::fclose(f);
    return std::vector<uint8_t>(s.begin(), s.end());
}

std::vector<zlog::Record> records() {
    zlog::Reader rd;
    EXPECT_TRUE(rd.open(kLog));
    std::vector<zlog::Record> out;
    zlog::Record r;
    while (rd.next(r)) out.push_back(r);
    return out;
}

std::vector<uint8_t> framed(const zlog::Record& r) {
    const std::size_t n = r.message.size();
    std::vector<uint8_t> b(zlog::kRecordHeader + n);
    b[0] = zlog::kSync0;
    b[1] = zlog::kSync1;
    b[2] = r.flags;
    b[4] = (uint8_t)(n & 0xFF);
    b[5] = (uint8_t)(n >> 8);
    std::copy(r.message.begin(), r.message.end(), b.begin() + zlog::kRecordHeader);
    return b;
}

/* Between two messages: nothing, random bytes, or the front part of
 * another message as a link that dropped mid-message leaves it. */
std::vector<uint8_t> junk(std::mt19937& rng, const std::vector<std::vector<uint8_t>>& units) {
    std::vector<uint8_t> g;
    const int kind = (int)(rng() % 4);
    if (kind == 0) return g;
    const std::size_t n = 1 + rng() % 60;
    for (std::size_t i = 0; i < n; i++) g.push_back((uint8_t)rng());
    if (kind == 3) {
        const std::vector<uint8_t>& u = units[rng() % units.size()];
        g.insert(g.end(), u.begin(), u.begin() + (std::ptrdiff_t)(1 + rng() % (u.size() - 1)));
    }
    return g;
}

TEST(SolveStream, PipedLogWithGarbageSolvesAsTheFile) {
    std::FILE* fileOut = std::tmpfile();
    std::FILE* fileErr = std::tmpfile();
    ASSERT_EQ(solve::run(kLog, solve::Options(), fileOut, fileErr), 0);
    const std::string expected = slurp(fileOut);
    std::fclose(fileOut);
    std::fclose(fileErr);

    // The log as it is on disc (file header included), with junk spliced
    // in before records and after the last one.
    const std::vector<uint8_t> file = fileBytes(kLog);
    const std::vector<zlog::Record> recs = records();
    ASSERT_EQ(recs.size(), 300u);
    std::vector<std::vector<uint8_t>> units;
    for (const zlog::Record& r : recs) units.push_back(framed(r));
    std::mt19937 rng(20240101);
    std::vector<uint8_t> stream(file.begin(), file.begin() + (std::ptrdiff_t)recs[0].offset);
    std::size_t junkBytes = 0;
    for (const std::vector<uint8_t>& u : units) {
        const std::vector<uint8_t> g = junk(rng, units);
        junkBytes += g.size();
        stream.insert(stream.end(), g.begin(), g.end());
        stream.insert(stream.end(), u.begin(), u.end());
    }
    const std::vector<uint8_t>& last = units[7];
    stream.insert(stream.end(), last.begin(), last.begin() + 100);   // cut off at the end
    junkBytes += 100;

    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    std::thread writer([&] {
        std::mt19937 chunks(7);
        for (std::size_t at = 0; at < stream.size();) {
            std::size_t n = std::min<std::size_t>(1 + chunks() % 3000, stream.size() - at);
            const ssize_t w = ::write(fds[1], stream.data() + at, n);
            if (w <= 0) break;
            at += (std::size_t)w;
        }
        ::close(fds[1]);
    });
    std::FILE* out = std::tmpfile();
    std::FILE* err = std::tmpfile();
    solve::Totals t;
    const int rc = solve::runStream(fds[0], "pipe", solve::Options(), out, err, &t);
    writer.join();
    ::close(fds[0]);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(t.messages, 300);
    EXPECT_EQ(t.epochs, 300);
    EXPECT_EQ(t.refused, 0);
    EXPECT_GT(t.logProblems, 100);   // one report per run of junk
    EXPECT_EQ(slurp(out), expected);
    const std::string reports = slurp(err);
    EXPECT_NE(reports.find("pipe@"), std::string::npos);
    EXPECT_NE(reports.find("bytes to the next message"), std::string::npos);
    std::fclose(out);
    std::fclose(err);
    EXPECT_GT(junkBytes, 1000u);
}

TEST(SolveStream, BareAndFramedMessagesMixedComeOutWholeAndInOrder) {
    const std::vector<zlog::Record> recs = records();
    ASSERT_EQ(recs.size(), 300u);
    std::vector<std::vector<uint8_t>> units;
    std::vector<bool> isFramed;
    std::mt19937 rng(11);
    for (zlog::Record r : recs) {
        isFramed.push_back(rng() % 2 == 0);
        r.flags = (uint8_t)(rng() % 2);   // framing carries the flag, bare messages cannot
        units.push_back(isFramed.back() ? framed(r) : r.message);
    }
    std::vector<uint8_t> stream;
    std::size_t junkBytes = 0;
    for (std::size_t k = 0; k < units.size(); k++) {
        const std::vector<uint8_t> g = junk(rng, units);
        junkBytes += g.size();
        stream.insert(stream.end(), g.begin(), g.end());
        stream.insert(stream.end(), units[k].begin(), units[k].end());
    }

    solve::StreamReader rd("mem");
    std::vector<zlog::Record> got;
    zlog::Record r;
    for (std::size_t at = 0; at < stream.size();) {
        const std::size_t n = std::min<std::size_t>(1 + rng() % 700, stream.size() - at);
        rd.feed(stream.data() + at, n);
        at += n;
        while (rd.next(r)) got.push_back(r);
    }
    rd.finish();
    while (rd.next(r)) got.push_back(r);

    ASSERT_EQ(got.size(), recs.size());
    for (std::size_t k = 0; k < got.size(); k++) {
        EXPECT_EQ(got[k].message, recs[k].message) << "message " << k;
        if (isFramed[k]) {
            EXPECT_EQ(got[k].flags, units[k][2]) << "message " << k;
        }
    }
    // Every byte that is not a message was skipped, no more and no less.
    EXPECT_EQ(rd.skipped(), junkBytes);
    EXPECT_FALSE(rd.hasPosition());
}

TEST(SolveStream, AMessageIsHandedOutAsSoonAsItsLastByteArrives) {
    const std::vector<zlog::Record> recs = records();
    solve::StreamReader rd;
    zlog::Record r;
    for (std::size_t k = 0; k < 5; k++) {
        const std::vector<uint8_t>& m = recs[k].message;
        rd.feed(m.data(), m.size() - 1);
        EXPECT_FALSE(rd.next(r)) << "message " << k << " is not complete yet";
        rd.feed(&m.back(), 1);
        ASSERT_TRUE(rd.next(r)) << "message " << k;
        EXPECT_EQ(r.message, m);
    }
    // Noise that starts like a message claiming 60000 bytes is given up
    // as soon as its header shows it is none (first block inside the
    // header), not when 60000 bytes have come.
    const uint8_t falseStart[10] = {0x0C, 0x60, 0xEA, 5, 1, 2, 3, 4, 0, 3};
    rd.feed(falseStart, sizeof falseStart);
    rd.feed(recs[5].message.data(), recs[5].message.size());
    ASSERT_TRUE(rd.next(r));
    EXPECT_EQ(r.message, recs[5].message);
    EXPECT_EQ(rd.skipped(), sizeof falseStart);

    // A log header whose position is set seeds the pipeline: it is kept.
    const std::vector<uint8_t> file = fileBytes(kLog);
    solve::StreamReader withHeader;
    withHeader.feed(file.data(), (std::size_t)recs[0].offset);
    EXPECT_FALSE(withHeader.next(r));
    EXPECT_TRUE(withHeader.hasPosition());
    EXPECT_NEAR(withHeader.position()[0], 4627852.0, 100.0);
    EXPECT_EQ(withHeader.skipped(), 0u);
}

}  // namespace
