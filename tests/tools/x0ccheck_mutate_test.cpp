/*
 * The message check against damaged real messages: every message of the
 * sample recording is damaged a few ways (bit flips, cuts, changed length
 * fields of the message, of its blocks and of their sub-blocks), and
 * whatever the check accepts runs through every handle family of the
 * library in a buffer of exactly its length, interleaved with the
 * undamaged recording so that the damage meets a library holding
 * ephemerides and a fix. Under the asan preset a read outside an accepted
 * message stops the test. The damage is drawn from a fixed seed.
 */
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tools/soak/every_handle.h"
#include "x0ccheck.h"
#include "zlog.h"

namespace {

using Bytes = std::vector<uint8_t>;

const double kStation[3] = {4627852.3986, 119640.3423, 4372994.4588};

/* splitmix64: the same sequence on every platform. */
struct Rng {
    uint64_t s;
    uint64_t next() {
        uint64_t z = (s += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    unsigned int below(unsigned int n) { return (unsigned int)(next() % n); }
};

/* Offsets of the length bytes of the message's blocks' sub-blocks, found
 * by walking an undamaged message. */
std::vector<unsigned int> subBlockLengths(const Bytes& m) {
    std::vector<unsigned int> at;
    unsigned int off = m[3];
    for (unsigned int b = 0; b < m[9] && off + 4 <= m.size(); b++) {
        const unsigned int mask = m[off + 2] | m[off + 3] << 8;
        off += 4;
        for (int i = 0; i < 16; i++)
            if (mask & (1u << i)) {
                at.push_back(off);
                off += m[off];
            }
    }
    return at;
}

void setLength(Bytes& m, unsigned int len) {
    m[1] = (uint8_t)len;
    m[2] = (uint8_t)(len >> 8);
}

enum Kind { kFlip, kCut, kCutKeepLength, kLength, kSubBlock, kHeader, kKinds };
const char* const kKindName[kKinds] = {"bit flips", "cut", "cut, length kept", "length field",
                                       "sub-block length", "block offset or count"};

Bytes damage(const Bytes& orig, Kind kind, Rng& rng) {
    Bytes m = orig;
    switch (kind) {
    case kFlip:
        for (unsigned int n = 1 + rng.below(4); n > 0; n--) m[rng.below((unsigned)m.size())] ^= 1u << rng.below(8);
        break;
    case kCut:
        m.resize(rng.below((unsigned)m.size()));
        if (m.size() >= 3) setLength(m, (unsigned)m.size());
        break;
    case kCutKeepLength:
        m.resize(rng.below((unsigned)m.size()));
        break;
    case kLength: {
        /* Any other value: lower cuts into the blocks, higher claims
         * bytes that are not there. */
        const unsigned int len = rng.below((unsigned)m.size() + 64);
        setLength(m, len == m.size() ? len + 1 : len);
        break;
    }
    case kSubBlock: {
        const std::vector<unsigned int> at = subBlockLengths(orig);
        if (!at.empty()) m[at[rng.below((unsigned)at.size())]] = (uint8_t)rng.below(256);
        break;
    }
    case kHeader:
        m[rng.below(2) ? 3 : 9] = (uint8_t)rng.below(256);
        break;
    default:
        break;
    }
    return m;
}

TEST(X0cCheckMutation, WhatItAcceptsOfDamagedRecordingsRunsThroughTheWholeLibrary) {
    zlog::Reader rd;
    ASSERT_TRUE(rd.open(std::string(ZELNAV_DATA_DIR) + "/tlse-2024-001/tlse_1200_5min.zlog"));
    std::vector<Bytes> log;
    zlog::Record rec;
    while (rd.next(rec)) log.push_back(rec.message);
    ASSERT_GT(log.size(), 200u);

    soak::EveryHandle all(kStation);
    Rng rng{20240101};
    long accepted[kKinds] = {}, refused[kKinds] = {};
    long fixes = 0;
    auto runExact = [&](const Bytes& m, unsigned int len) {
        std::unique_ptr<uint8_t[]> exact(new uint8_t[len]);
        std::memcpy(exact.get(), m.data(), len);
        return all.run(exact.get());
    };
    for (const Bytes& orig : log) {
        for (int k = 0; k < kKinds; k++) {
            for (int rep = 0; rep < (k == kSubBlock ? 6 : 2); rep++) {
                const Bytes m = damage(orig, (Kind)k, rng);
                const x0ccheck::Result r = x0ccheck::check(m.data(), m.size());
                if (!r.ok()) {
                    refused[k]++;
                    EXPECT_FALSE(x0ccheck::describe(r).empty());
                    continue;
                }
                ASSERT_LE(r.length, m.size());
                accepted[k]++;
                runExact(m, r.length);
            }
        }
        const x0ccheck::Result r = x0ccheck::check(orig.data(), orig.size());
        ASSERT_TRUE(r.ok()) << x0ccheck::describe(r);
        if (runExact(orig, r.length) && all.fix()->actual == 1) fixes++;
    }
    /* A recorded message fills its length with its blocks: cut anywhere,
     * or given another length, it can never pass. The other kinds of
     * damage reach both sides of the check. */
    for (int k = 0; k < kKinds; k++) {
        SCOPED_TRACE(kKindName[k]);
        EXPECT_GT(refused[k], 20);
        if (k == kCut || k == kCutKeepLength || k == kLength)
            EXPECT_EQ(accepted[k], 0);
        else
            EXPECT_GT(accepted[k], k == kFlip ? 100 : 5);
    }
    /* Damage in between does not keep the library from solving the
     * recording. */
    EXPECT_GT(fixes, (long)log.size() / 2);
}

}  // namespace
