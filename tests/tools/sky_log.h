/*
 * A real recording as a log for the sky tests: twenty minutes of the
 * 30-second TLSE recording (18:00 to 18:20 GPS time) converted to one-
 * second messages in a temporary file, long enough for a whole GPS
 * almanac cycle of 12.5 minutes. Made once per test program.
 */
#ifndef ZELNAV_TESTS_TOOLS_SKY_LOG_H
#define ZELNAV_TESTS_TOOLS_SKY_LOG_H

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "tools/convert/convert.h"
#include "zlog.h"

struct ConvertedLog {
    std::string path;
    bool ok = false;
    ConvertedLog() {
        char name[] = "/tmp/zelnav_sky_XXXXXX";
        const int fd = mkstemp(name);
        if (fd < 0) return;
        close(fd);
        path = name;
        rinex::Diagnostics diag;
        cvt::Options opt;
        opt.hasFrom = opt.hasTo = true;
        opt.from = 8766LL * 86400 + 18 * 3600;
        opt.to = opt.from + 20 * 60;
        cvt::Converter conv(opt, diag);
        const std::string dir = std::string(ZELNAV_DATA_DIR) + "/tlse-2024-001/";
        if (!conv.addNavFile(dir + "BRDC00IGS_R_20240010000_01D_MN.rnx.gz")) return;
        zlog::Writer w;
        zlog::FileHeader hdr;
        hdr.hasPosition = true;
        hdr.position[0] = 4627852.3986;   /* the TLSE antenna */
        hdr.position[1] = 119640.3423;
        hdr.position[2] = 4372994.4588;
        hdr.station = "TLSE";
        if (!w.open(path, hdr)) return;
        ok = conv.run(dir + "TLSE00FRA_R_20240011800_01H_30S_MO.rnx.gz",
                      [&](const std::vector<uint8_t>& m, bool interp) {
                          return w.write(m, interp ? zlog::kInterpolated : 0);
                      }) &&
             w.close();
    }
    ~ConvertedLog() {
        if (!path.empty()) std::remove(path.c_str());
    }
    ConvertedLog(const ConvertedLog&) = delete;
    ConvertedLog& operator=(const ConvertedLog&) = delete;
};

inline const ConvertedLog& convertedLog() {
    static ConvertedLog log;
    return log;
}

#endif
