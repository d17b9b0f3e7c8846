/*
 * The structural message check: what the writer builds passes; a message
 * cut short, a wrong length field, a block or sub-block past the end, an
 * empty or too short sub-block are refused with a reason that names the
 * place; and whatever the check accepts, the library decodes without
 * reading outside the message (random damage, exact-size buffers, run
 * under AddressSanitizer by the asan preset).
 */
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "x0c_writer.h"
#include "x0ccheck.h"
#include "zel.h"

namespace {

using Bytes = std::vector<uint8_t>;
using x0ccheck::Fault;

x0c::SatBlock glonass(uint8_t num) {
    x0c::SatBlock g;
    g.num = num;
    g.litByte = 3;
    for (int i = 0; i < 4; i++) {
        g.sig[i].present = true;
        g.sig[i].psvd = i % 2 ? 1000 : x0c::psvdToRaw(2.1e7);
        g.sig[i].dop = 12345;
    }
    g.hasCt = true;
    g.ct[0] = 0x01;
    g.hasVt = true;
    g.vt[5] = 0x40;
    g.hasL3 = true;
    g.l3[34] = 0x20;
    g.hasSb7 = true;
    g.hasSb10 = true;
    g.chan = num;
    return g;
}

x0c::SatBlock gps(uint8_t num) {
    x0c::SatBlock p;
    p.gps = true;
    p.num = num;
    p.sig[0].present = true;
    p.sig[0].psvd = x0c::psvdToRaw(2.2e7);
    p.sig[1].present = true;
    p.sig[2].present = true;
    p.hasGps = true;
    p.hasSb10 = true;
    p.chan = 30 + num;
    return p;
}

/* A message of a GLONASS and a GPS satellite, at a valid time. */
Bytes sample() {
    x0c::Header h;
    h.tmRsvr = 1400000000u;
    h.dtGpsUtc = 18;
    return x0c::buildMessage(h, {glonass(4), gps(5)});
}

void setLength(Bytes& m, unsigned int len) {
    m[1] = len & 0xFF;
    m[2] = len >> 8;
}

/* Offset of the first sub-block of block b (blocks walked by the writer's
 * own lengths). */
unsigned int blockAt(const Bytes& m, int b) {
    unsigned int off = m[3];
    for (int k = 0; k < b; k++) {
        unsigned int mask = m[off + 2] | (m[off + 3] << 8), at = off + 4;
        for (int i = 0; i < 16; i++)
            if (mask & (1u << i)) at += m[at];
        off = at;
    }
    return off;
}

/* Shortens the sub-block whose length byte is at `at` to `len` bytes. */
void shrinkSub(Bytes& m, unsigned int at, unsigned int len) {
    m.erase(m.begin() + at + len, m.begin() + at + m[at]);
    m[at] = (uint8_t)len;
    setLength(m, (unsigned int)m.size());
}

x0ccheck::Result run(const Bytes& m) { return x0ccheck::check(m.data(), m.size()); }

TEST(X0cCheck, AcceptsWhatTheReceiverSends) {
    Bytes m = sample();
    x0ccheck::Result r = run(m);
    EXPECT_TRUE(r.ok()) << x0ccheck::describe(r);
    EXPECT_EQ(r.length, m.size());
    EXPECT_EQ(x0ccheck::describe(r), "");
    // Extra bytes behind the message (a stream) do not matter.
    Bytes more = m;
    more.resize(m.size() + 40, 0xEE);
    EXPECT_TRUE(x0ccheck::check(more.data(), more.size()).ok());

    // Messages whose blocks the library does not walk: no data, no time,
    // no block count; their block area is not judged.
    Bytes nodata = m;
    nodata[0] |= 0x80;
    nodata[9] = 200;
    EXPECT_TRUE(run(nodata).ok());
    Bytes notime = m;
    std::memset(&notime[4], 0, 4);
    notime[9] = 200;
    EXPECT_TRUE(run(notime).ok());
    x0c::Header h;
    h.tmRsvr = 5;
    EXPECT_TRUE(run(x0c::buildMessage(h, {})).ok());
}

TEST(X0cCheck, RefusesSubBlocksPastTheEndEmptyOrTooShort) {
    Bytes m = sample();
    const unsigned int gpsBlock = blockAt(m, 1);
    Bytes longer = m;
    longer[gpsBlock + 4] = 250;  // GPS sub-block 0 claims 250 bytes
    x0ccheck::Result r = run(longer);
    EXPECT_EQ(r.fault, Fault::SubBlockPastEnd);
    EXPECT_EQ(r.sub, 0);
    EXPECT_EQ(r.at, gpsBlock + 4);
    EXPECT_EQ(x0ccheck::describe(r).rfind("block 1 (GPS 5): sub-block 0", 0), 0u)
        << x0ccheck::describe(r);

    Bytes empty = m;
    empty[gpsBlock + 4] = 0;
    EXPECT_EQ(run(empty).fault, Fault::SubBlockEmpty);

    // A GPS sub-block 0 of GLONASS size: the subframe and parity indicator
    // the decoder reads are not there.
    Bytes shortGps = m;
    shrinkSub(shortGps, gpsBlock + 4, 41);
    r = run(shortGps);
    EXPECT_EQ(r.fault, Fault::SubBlockShort);
    EXPECT_EQ(r.have, 41u);
    EXPECT_EQ(r.need, 59u);

    // GLONASS sub-blocks: C1 without room for the CT string, B1 without
    // the VT string, an L3 sub-block without its string.
    const unsigned int glo = blockAt(m, 0);
    Bytes c1 = m;
    shrinkSub(c1, glo + 4, 21);
    EXPECT_EQ(run(c1).sub, 0);
    EXPECT_EQ(run(c1).fault, Fault::SubBlockShort);
    unsigned int at = glo + 4;
    at += m[at];  // sub-block 1
    at += m[at];  // sub-block 2
    Bytes b1 = m;
    shrinkSub(b1, at, 24);
    EXPECT_EQ(run(b1).sub, 2);
    at += m[at];  // sub-block 3
    at += m[at];  // sub-block 6
    Bytes l3 = m;
    shrinkSub(l3, at, 40);
    EXPECT_EQ(run(l3).sub, 6);
    EXPECT_EQ(run(l3).need, 73u);
}

/* A message taken apart into header and sub-blocks, to be damaged in
 * ways that keep its framing consistent, and put back together. */
struct Parsed {
    Bytes header;
    struct Block {
        uint8_t head[2];
        std::vector<std::pair<int, Bytes>> subs;  /* (bit, bytes) */
    };
    std::vector<Block> blocks;

    explicit Parsed(const Bytes& m) : header(m.begin(), m.begin() + m[3]) {
        unsigned int off = m[3];
        for (unsigned int k = 0; k < m[9]; k++) {
            Block blk;
            blk.head[0] = m[off];
            blk.head[1] = m[off + 1];
            unsigned int mask = m[off + 2] | (m[off + 3] << 8), at = off + 4;
            for (int i = 0; i < 16; i++) {
                if (!(mask & (1u << i))) continue;
                blk.subs.emplace_back(i, Bytes(m.begin() + at, m.begin() + at + m[at]));
                at += m[at];
            }
            blocks.push_back(blk);
            off = at;
        }
    }

    Bytes build() const {
        Bytes m = header;
        m[9] = (uint8_t)blocks.size();
        for (const Block& blk : blocks) {
            unsigned int mask = 0;
            for (const auto& sb : blk.subs) mask |= 1u << sb.first;
            m.push_back(blk.head[0]);
            m.push_back(blk.head[1]);
            m.push_back(mask & 0xFF);
            m.push_back(mask >> 8);
            for (const auto& sb : blk.subs) m.insert(m.end(), sb.second.begin(), sb.second.end());
        }
        setLength(m, (unsigned int)m.size());
        return m;
    }
};

TEST(X0cCheck, WhatItAcceptsTheLibraryDecodesInsideTheMessage) {
    // Damage of three kinds: sub-blocks dropped or cut shorter (framing
    // kept consistent), single bytes changed (lengths, masks, counts,
    // offsets), messages cut. Each accepted message goes to the converter
    // in a buffer of exactly its length, so a read past it is caught by
    // the sanitizers.
    x0c::Header h;
    h.tmRsvr = 1400000000u;
    const Bytes bases[4] = {x0c::buildMessage(h, {glonass(4), gps(5)}),
                            x0c::buildMessage(h, {gps(5), glonass(4)}),
                            x0c::buildMessage(h, {glonass(4)}),
                            x0c::buildMessage(h, {gps(5)})};
    std::mt19937 rng(12345);
    int accepted = 0, refused = 0;
    int* cnv = static_cast<int*>(cnvx0c_init());
    for (int round = 0; round < 8000; round++) {
        Parsed p(bases[round % 4]);
        for (Parsed::Block& blk : p.blocks) {
            for (std::size_t k = 0; k < blk.subs.size();) {
                const unsigned int pick = rng() % 4;
                if (pick < 2) {
                    blk.subs.erase(blk.subs.begin() + k);
                    continue;
                }
                Bytes& sb = blk.subs[k].second;
                if (pick == 2) {
                    sb.resize(1 + rng() % sb.size());
                    sb[0] = (uint8_t)sb.size();
                }
                k++;
            }
        }
        Bytes m = p.build();
        if (rng() % 2) {
            const int edits = 1 + (int)(rng() % 3);
            for (int e = 0; e < edits; e++) m[rng() % m.size()] = (uint8_t)rng();
        }
        if (rng() % 8 == 0) m.resize(rng() % m.size());
        x0ccheck::Result r = run(m);
        if (!r.ok()) {
            refused++;
            EXPECT_FALSE(x0ccheck::describe(r).empty());
            continue;
        }
        accepted++;
        std::vector<uint8_t>* exact = new std::vector<uint8_t>(m.begin(), m.begin() + r.length);
        cnvx0c_upx0c(cnv, exact->data());
        delete exact;
    }
    cnvx0c_finit(cnv);
    EXPECT_GT(accepted, 200);
    EXPECT_GT(refused, 200);
}

}  // namespace
