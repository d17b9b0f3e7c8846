/*
 * zelnav solve: position, clock offset, time offset and velocity of every
 * epoch of a log, through the library's C interface.
 *
 *   zelnav solve LOG [--mode glo|gps|both] [--ref X,Y,Z] [--recorded-only]
 *
 * One CSV line per epoch on the standard output. Messages that fail the
 * structural check, and damaged records of the log, are reported on the
 * standard error as "LOG@OFFSET: reason" and left out. With --ref a
 * summary of the accuracy against that position ends the run on the
 * standard error. Exit status: 0 the log was read; 1 it could not be
 * read; 2 the command line is wrong.
 */
#include <cstdio>
#include <string>

#include "solve_run.h"

namespace {

const char* const kUsage =
    "usage: zelnav solve LOG [--mode glo|gps|both] [--ref X,Y,Z] [--recorded-only]\n"
    "  LOG            a log of 0x0C messages (tools/zlog/README.md)\n"
    "  --mode M       systems of the fix: glo, gps or both (default both)\n"
    "  --ref X,Y,Z    known position (WGS-84 ECEF, metres): print the accuracy\n"
    "                 of the fixes against it on the standard error\n"
    "  --recorded-only  report only the recorded epochs, not the seconds the\n"
    "                 converter interpolated between them\n"
    "Output: CSV, one line per epoch: utc (time of the epoch), fix (1 = solved),\n"
    "sys (0 GLONASS, 1 GPS, 10 both), x,y,z (WGS-84 ECEF, m; PZ-90 fixes are\n"
    "shifted), lat,lon (degrees), h (m), dt (receiver clock offset, s), tau\n"
    "(GPS minus GLONASS time, s), nglo,ngps (satellites used), dop,\n"
    "vx,vy,vz (m/s).\n";

int usage(const std::string& why) {
    if (!why.empty()) std::fprintf(stderr, "zelnav solve: %s\n", why.c_str());
    std::fputs(kUsage, stderr);
    return 2;
}

bool parseXyz(const std::string& text, double xyz[3]) {
    char tail = 0;
    return std::sscanf(text.c_str(), "%lf,%lf,%lf%c", &xyz[0], &xyz[1], &xyz[2], &tail) == 3;
}

}  // namespace

int cmdSolve(int argc, char** argv) {
    solve::Options opt;
    std::string log;
    for (int i = 1; i < argc; i++) {
        const std::string a = argv[i];
        if (a == "-h" || a == "--help") {
            std::fputs(kUsage, stdout);
            return 0;
        } else if (a == "--mode") {
            if (i + 1 >= argc) return usage("--mode needs glo, gps or both");
            opt.mode = solve::modeOf(argv[++i]);
            if (opt.mode < 0) return usage("--mode needs glo, gps or both");
        } else if (a == "--ref") {
            if (i + 1 >= argc || !parseXyz(argv[++i], opt.ref))
                return usage("--ref needs X,Y,Z in metres, for instance 4627852.4,119640.3,4372994.5");
            opt.hasRef = true;
        } else if (a == "--recorded-only") {
            opt.recordedOnly = true;
        } else if (a.size() > 1 && a[0] == '-') {
            return usage("unknown option " + a);
        } else if (log.empty()) {
            log = a;
        } else {
            return usage("give one log");
        }
    }
    if (log.empty()) return usage("give the log to solve");
    return solve::run(log, opt, stdout, stderr);
}
