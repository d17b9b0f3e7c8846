/*
 * Test support for the GPS collectors: satellite blocks carrying one
 * subframe, the receive-time convention, and the real subframe files.
 *
 * Receive times: a subframe that ends at GPS week W, second of week T is
 * handed to the collectors one second later, in the receiver's time scale
 * (seconds since 2000-01-01 00:00 UTC + 3 h):
 *     tmZel = W * 604800 + T + 1 - 630709200 - 18
 * (630709200 = GPS seconds from 1980-01-06 to 2000-01-01 less the
 * three hours; 18 = GPS - UTC in the years of the recordings). Only
 * differences of these times matter to the collectors.
 */
#ifndef ZELNAV_TESTS_GPS_FEED_H
#define ZELNAV_TESTS_GPS_FEED_H

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "gps_encode.h"
#include "x0c_writer.h"

namespace gpstest {

inline unsigned tmZelOf(int week, uint32_t towEnd) {
    return (unsigned)((int64_t)week * 604800 + towEnd + 1 - 630709200 - 18);
}

/* A GPS satellite block carrying the stored subframe `sf`. */
inline std::vector<uint8_t> blockWith(int prn, const uint8_t sf[30]) {
    x0c::SatBlock b;
    b.gps = true;
    b.num = (uint8_t)prn;
    b.hasGps = true;
    std::memcpy(b.gpsSf, sf, 30);
    b.gpsParity = 0;
    std::vector<uint8_t> out;
    x0c::appendBlock(b, out);
    return out;
}

/* Feeds one subframe to a collector as the receiver would deliver it. */
template <class Collector>
void feed(Collector& c, int prn, const uint8_t sf[30], unsigned tm) {
    std::vector<uint8_t> blk = blockWith(prn, sf);
    c.upx0c(blk.data(), tm);
}

/* Word w (1..10) of a stored subframe, first transmitted bit highest. */
inline uint32_t wordOf(const uint8_t sf[30], int w) {
    int t = 3 * (w - 1); /* transmitted byte of the word's start */
    return (uint32_t)sf[29 - t] << 16 | (uint32_t)sf[28 - t] << 8 |
           sf[27 - t];
}

/* One line of a real subframe file. */
struct RealSubframe {
    int week;
    uint32_t tow;     /* end of the subframe */
    int prn;
    int id;
    uint8_t sf[30];   /* stored form */
};

inline std::string dataPath(const char* name) {
    return std::string(ZELNAV_DATA_DIR) + "/" + name;
}

/* Reads `gps_week tow prn subframe_id w1 .. w10` lines. */
inline std::vector<RealSubframe> readSubframes(const std::string& path) {
    std::vector<RealSubframe> v;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream ss(line);
        RealSubframe r;
        uint32_t words[10];
        ss >> r.week >> r.tow >> r.prn >> r.id;
        for (uint32_t& w : words) ss >> std::hex >> w;
        if (!ss) continue;
        x0c::gpsWordsToStored(words, r.sf);
        v.push_back(r);
    }
    return v;
}

}  // namespace gpstest

#endif
