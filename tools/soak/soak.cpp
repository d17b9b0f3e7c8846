/*
 * zelnav_soak: replays one recording again and again through every handle
 * family of the library (see every_handle.h) until a given number of
 * one-second epochs has passed, and prints the accuracy of each replay
 * against a known position, so that memory (under valgrind or heaptrack)
 * and drift can be watched over a simulated day.
 *
 * Each replay is the recording moved on by a whole number of weeks (the
 * receiver time of every message grows by `--shift`, 604800 s by
 * default). Time so keeps moving forward, and the broadcast orbits inside
 * the messages, which are referred to the time of week (GPS) and of day
 * (GLONASS), stay as valid as they were: every replay should solve
 * exactly as well as the first one. The library meets each replay with
 * the state the previous one left, a week old.
 *
 * Usage: zelnav_soak LOG [--epochs N] [--shift S] [--ref X,Y,Z]
 *   --epochs N  epochs to run (default 86400, a day of 1-s epochs)
 *   --shift S   seconds added per replay (default 604800)
 *   --ref X,Y,Z known WGS-84 position (default: the log header's)
 *
 * Output: one line per replay, then the first and the last whole replay
 * side by side. Exit status 1 when the log cannot be read.
 */
#include <malloc.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "solve_report.h"
#include "tools/soak/every_handle.h"
#include "x0ccheck.h"
#include "zlog.h"

namespace {

struct Replay {
    long epochs = 0, fixes = 0, refused = 0;
    std::size_t heap = 0;   /* bytes in use as the replay starts */
    double rms3d = 0, h95 = 0, v95 = 0, max3d = 0;
};

void print(const char* label, const Replay& r) {
    std::printf("%-9s %5ld epochs %5ld fixes  3D RMS %6.2f m  95%% H %6.2f m  95%% V %6.2f m  "
                "max %6.2f m  heap %zu B%s\n",
                label, r.epochs, r.fixes, r.rms3d, r.h95, r.v95, r.max3d, r.heap,
                r.refused ? "  (messages refused!)" : "");
}

bool parseXyz(const char* s, double out[3]) {
    return std::sscanf(s, "%lf,%lf,%lf", &out[0], &out[1], &out[2]) == 3;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: zelnav_soak LOG [--epochs N] [--shift S] [--ref X,Y,Z]\n");
        return 2;
    }
    long epochs = 86400;
    unsigned long shift = 604800;
    bool hasRef = false;
    double ref[3];
    for (int i = 2; i + 1 < argc; i += 2) {
        const std::string opt = argv[i];
        if (opt == "--epochs") epochs = std::atol(argv[i + 1]);
        else if (opt == "--shift") shift = std::strtoul(argv[i + 1], nullptr, 10);
        else if (opt == "--ref" && parseXyz(argv[i + 1], ref)) hasRef = true;
        else {
            std::fprintf(stderr, "zelnav_soak: unknown option %s\n", argv[i]);
            return 2;
        }
    }

    zlog::Reader rd;
    if (!rd.open(argv[1])) {
        std::fprintf(stderr, "zelnav_soak: %s\n", rd.errors().empty() ? argv[1] : rd.errors().back().c_str());
        return 1;
    }
    if (!hasRef && rd.header().hasPosition) {
        std::memcpy(ref, rd.header().position, sizeof ref);
        hasRef = true;
    }
    if (!hasRef) {
        std::fprintf(stderr, "zelnav_soak: no position in the log, give --ref\n");
        return 1;
    }
    std::vector<std::vector<uint8_t>> log;
    zlog::Record rec;
    while (rd.next(rec)) log.push_back(rec.message);
    if (log.empty()) {
        std::fprintf(stderr, "zelnav_soak: %s holds no message\n", argv[1]);
        return 1;
    }

    soak::EveryHandle all(ref);
    std::vector<uint8_t> msg(65536);
    Replay first, last;
    long done = 0;
    for (unsigned long k = 0; done < epochs; k++) {
        Replay r;
        /* The heap in use as the replay starts: the same figure every
         * replay when nothing grows. */
        r.heap = mallinfo2().uordblks;
        solve::Accuracy acc(ref);
        for (const std::vector<uint8_t>& orig : log) {
            if (done >= epochs) break;
            std::memcpy(msg.data(), orig.data(), orig.size());
            uint32_t t;
            std::memcpy(&t, msg.data() + 4, 4);   /* receiver time, little-endian */
            if (orig.size() >= 8 && t != 0) {
                t += (uint32_t)(k * shift);
                for (int b = 0; b < 4; b++) msg[4 + b] = (uint8_t)(t >> (8 * b));
            }
            if (!x0ccheck::check(msg.data(), orig.size()).ok()) {
                r.refused++;
                continue;
            }
            if (!all.run(msg.data())) continue;
            r.epochs++;
            done++;
            const tblCrdPnt_t* fix = all.fix();
            if (fix->actual != 1) continue;
            r.fixes++;
            double w[3];
            solve::fixToWgs84(fix, 1, w);
            acc.add(w);
        }
        r.rms3d = acc.rms3d();
        r.h95 = acc.horizontal95();
        r.v95 = acc.vertical95();
        r.max3d = acc.max3d();
        char label[32];
        std::snprintf(label, sizeof label, "replay %lu", k + 1);
        print(label, r);
        std::fflush(stdout);
        if (k == 0) first = r;
        /* The last whole replay: one cut short by --epochs is no hour. */
        if (r.epochs == first.epochs) last = r;
    }
    std::printf("%ld epochs in all\n", done);
    print("first", first);
    print("last", last);
    return 0;
}
