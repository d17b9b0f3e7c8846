/*
 * Helpers of the GLONASS CT collector tests: satellite blocks carrying one
 * CT string, receiver times of real recordings, and a reader of the
 * receivers' decoded records in data/rawnav.
 */
#ifndef ZELNAV_TESTS_GLO_CT_TEST_UTIL_H
#define ZELNAV_TESTS_GLO_CT_TEST_UTIL_H

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "real_glo_strings.h"
#include "x0c_writer.h"

namespace glocttest {

/* A GLONASS satellite block whose only content is the CT string `ct` (the
 * writer adds the check bits). */
inline std::vector<uint8_t> ctBlock(const uint8_t ct[10]) {
    x0c::SatBlock sat;
    sat.num = 1;
    sat.hasCt = true;
    std::memcpy(sat.ct, ct, 10);
    std::vector<uint8_t> blk;
    x0c::appendBlock(sat, blk);
    return blk;
}

/* Feeds string `ct` received at `tm` to a collector. */
template <class C>
void feed(C& c, const uint8_t ct[10], unsigned int tm) {
    std::vector<uint8_t> blk = ctBlock(ct);
    c.upx0c(blk.data(), tm);
}

/* Receiver time (GLONASS time since 2000) of a GPS week and second, with
 * the 18 leap seconds of 2017 onwards. */
inline unsigned int tmZelOfGps(int week, double tow) {
    long long gps = (long long)week * 604800 + (long long)std::llround(tow);
    return (unsigned int)(gps - 18 - 630709200LL);
}

/* Records of an sbf_*.txt file by slot (column 3); every column as a
 * number, in file order. */
inline std::map<int, std::vector<double>> loadRefs(const char* name) {
    std::map<int, std::vector<double>> out;
    std::ifstream in(std::string(ZELNAV_DATA_DIR) + "/rawnav/" + name);
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream ls(line);
        std::vector<double> v;
        std::string w;
        while (ls >> w) v.push_back(std::strtod(w.c_str(), nullptr));
        if (v.size() > 3) out[(int)v[2]] = v;
    }
    return out;
}

}  // namespace glocttest

#endif
