/*
 * zelnav solve: position, clock offset, time offset and velocity of every
 * epoch of a log, through the library's C interface.
 *
 *   zelnav solve LOG [--mode glo|gps|both] [--ref X,Y,Z] [--recorded-only]
 *                    [--raim [--max-speed V]] [--inject SYS:NUM:FROM:BIAS[:RATE]]...
 *                    [--smooth] [--static [--static-gain K] [--static-epochs N]] [--filter]
 *                    [--format csv|nmea|pos|geojson]
 *   zelnav solve -   (a live stream on the standard input)
 *   zelnav solve [--jobs N] -o DIR LOG...
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

#include <cstdlib>
#include <vector>

#include "solve_jobs.h"
#include "solve_run.h"
#include "solve_stream.h"

namespace {

const char* const kUsage =
    "usage: zelnav solve LOG [--mode glo|gps|both] [--ref X,Y,Z] [--recorded-only]\n"
    "                    [--raim [--max-speed V]] [--inject SYS:NUM:FROM:BIAS[:RATE]]...\n"
    "                    [--smooth] [--static [--static-gain K] [--static-epochs N]] [--filter]\n"
    "                    [--format csv|nmea|pos|geojson] [--jobs N -o DIR LOG...]\n"
    "  LOG            a log of 0x0C messages (tools/zlog/README.md); - reads a live\n"
    "                 stream of messages, framed as in a log or bare, from the\n"
    "                 standard input and writes each epoch as soon as it is complete\n"
    "  --format F     csv (default), nmea (GGA and RMC), pos (RTKLIB solution file)\n"
    "                 or geojson (points and the track)\n"
    "  -o DIR         write the output of each LOG to DIR/NAME.F (NAME: the log's file\n"
    "                 name without .zlog, F: the format); needed for several logs\n"
    "  --jobs N       solve up to N logs at once, each on its own thread (default 1);\n"
    "                 a progress line per log on the standard error\n"
    "  --mode M       systems of the fix: glo, gps or both (default both)\n"
    "  --ref X,Y,Z    known position (WGS-84 ECEF, metres): print the accuracy\n"
    "                 of the fixes against it on the standard error\n"
    "  --recorded-only  report only the recorded epochs, not the seconds the\n"
    "                 converter interpolated between them\n"
    "  --raim         integrity monitoring: every epoch raimComb and raimStats judge\n"
    "                 the satellites; the fix reported is made without the ones\n"
    "                 they exclude, and only when raimComb accepts the epoch\n"
    "  --max-speed V  largest speed of an acceptable fix for --raim, m/s (default\n"
    "                 100, a ground receiver)\n"
    "  --inject F     add a pseudorange fault, for trying the monitor: F is\n"
    "                 SYS:NUM:FROM:BIAS[:RATE], SYS G or R, NUM the PRN or slot\n"
    "                 (G:24 may be written G24),\n"
    "                 FROM the first epoch (0 = the first of the log), BIAS metres,\n"
    "                 RATE metres added per epoch after that; may be repeated\n"
    "  --smooth       smooth the GLONASS pseudoranges, Doppler values and carrier\n"
    "                 phases (two-state Kalman filters) before the satellite\n"
    "                 computation; GPS observations are used as received\n"
    "  --static       average the fixes of a receiver at rest; the summary gives\n"
    "                 the averaged position (and its error against --ref); fixes\n"
    "                 with a DOP above 10 or made in another mode (a GPS-only fix\n"
    "                 in mode both) are left out\n"
    "  --static-gain K  end gain of the average, 1e-9..1 (default 0.01, a memory\n"
    "                 of about 100 s); the gain falls linearly from 1 to K\n"
    "  --static-epochs N  over the first N epochs, 1..1000000000 (default 60)\n"
    "  --filter       position filter for a moving receiver: the CSV carries the\n"
    "                 filtered position (an epoch without a fix, its prediction,\n"
    "                 with nglo and ngps 0) and the accuracy summary is of those;\n"
    "                 the unfiltered fixes' accuracy follows\n"
    "Output: CSV, one line per epoch: utc (time of the epoch), fix (1 = solved),\n"
    "sys (0 GLONASS, 1 GPS, 10 both), x,y,z (WGS-84 ECEF, m; PZ-90 fixes are\n"
    "shifted), lat,lon (degrees), h (m), dt (receiver clock offset, s), tau\n"
    "(GPS minus GLONASS time, s), nglo,ngps (satellites used), dop,\n"
    "vx,vy,vz (m/s); with --raim also raim (raimComb code: 0 accepted, -32 no\n"
    "acceptable exclusion, -128 too few satellites), excluded (satellites\n"
    "excluded by raimComb), stats_excluded (by raimStats), and a RAIM summary\n"
    "on the standard error.\n";

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
    std::vector<std::string> logs;
    std::string dir;
    int jobs = 1;
    bool toDir = false;
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
        } else if (a == "--raim") {
            opt.raim = true;
        } else if (a == "--max-speed") {
            char tail = 0;
            if (i + 1 >= argc || std::sscanf(argv[++i], "%lf%c", &opt.maxSpeed, &tail) != 1 ||
                !(opt.maxSpeed > 0.0))
                return usage("--max-speed needs a speed in m/s, for instance 100");
        } else if (a == "--inject") {
            solve::Injection f;
            if (i + 1 >= argc || !solve::parseInjection(argv[++i], &f))
                return usage("--inject needs SYS:NUM:FROM:BIAS[:RATE], for instance G:24:100:100");
            opt.inject.push_back(f);
        } else if (a == "--smooth") {
            opt.filt.smooth = true;
        } else if (a == "--static") {
            opt.filt.average = true;
        } else if (a == "--static-gain") {
            char tail = 0;
            double k = 0.0;
            if (i + 1 >= argc || std::sscanf(argv[++i], "%lf%c", &k, &tail) != 1 ||
                !(k >= 1e-9 && k <= 1.0))
                return usage("--static-gain needs a gain from 1e-9 to 1, for instance 0.01");
            opt.filt.staticGain = k;
        } else if (a == "--static-epochs") {
            char tail = 0;
            unsigned long n = 0;
            if (i + 1 >= argc || std::sscanf(argv[++i], "%lu%c", &n, &tail) != 1 || n < 1 ||
                n > 1000000000ul)
                return usage("--static-epochs needs a count from 1 to 1000000000, for instance 60");
            opt.filt.staticEpochs = (unsigned int)n;
        } else if (a == "--filter") {
            opt.filt.filter = true;
        } else if (a == "--format") {
            if (i + 1 >= argc || !solve::formatOf(argv[++i], &opt.format))
                return usage("--format needs csv, nmea, pos or geojson");
        } else if (a == "--jobs") {
            char* end = nullptr;
            if (i + 1 < argc) jobs = (int)std::strtol(argv[++i], &end, 10);
            if (end == nullptr || *end != 0 || jobs < 1 || jobs > 256)
                return usage("--jobs needs a number of logs to solve at once, 1 to 256");
        } else if (a == "-o") {
            if (i + 1 >= argc) return usage("-o needs a folder");
            dir = argv[++i];
            toDir = true;
        } else if (a.size() > 1 && a[0] == '-') {
            return usage("unknown option " + a);
        } else {
            logs.push_back(a);
        }
    }
    if (logs.empty()) return usage("give the log to solve");
    if (toDir) {
        for (const std::string& l : logs)
            if (l == "-") return usage("-o takes logs, not the standard input");
        return solve::runJobs(logs, jobs, dir, opt, stderr);
    }
    if (logs.size() > 1) return usage("give one log, or -o DIR for several");
    if (logs[0] == "-") return solve::runStream(0, "-", opt, stdout, stderr);
    return solve::run(logs[0], opt, stdout, stderr);
}
