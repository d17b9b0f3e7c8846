/*
 * zelnav plot: an HTML report with the charts of a solved recording.
 *
 *   zelnav plot LOG_OR_CSV -o REPORT.html [--ref X,Y,Z] [--mode glo|gps|both]
 *                          [--log LOG] [--mask DEG]
 *
 * A log is solved as `zelnav solve` solves it; a CSV written by `zelnav
 * solve` is read as it is. The sky plot is the almanac prediction of the
 * log (the input, or --log beside a CSV) at the last epoch, seen from the
 * reference, the mean fix or the log's approximate position. Exit status:
 * 0 the report was written; 1 the input could not be read or the report
 * not written; 2 the command line is wrong.
 */
#include <cstdio>
#include <cstdlib>
#include <string>

#include "plot.h"
#include "sky.h"
#include "solve_run.h"
#include "zlog.h"

namespace {

const char* const kUsage =
    "usage: zelnav plot LOG_OR_CSV -o REPORT.html [--ref X,Y,Z] [--mode glo|gps|both]\n"
    "                   [--log LOG] [--mask DEG]\n"
    "  LOG_OR_CSV     a log of 0x0C messages, or the CSV of `zelnav solve`\n"
    "  -o FILE        the report: one HTML page, charts inline, no network needed\n"
    "  --ref X,Y,Z    known position (WGS-84 ECEF, m): errors are drawn against\n"
    "                 it; without it, deviations from the mean fix\n"
    "  --mode M       systems of the fix when solving a log (default both)\n"
    "  --log LOG      the log a CSV came from, for the sky plot\n"
    "  --mask DEG     elevation mask of the sky plot, whole degrees (default 5)\n";

int usage(const std::string& why) {
    if (!why.empty()) std::fprintf(stderr, "zelnav plot: %s\n", why.c_str());
    std::fputs(kUsage, stderr);
    return 2;
}

/* The base name of a path, for the page title. */
std::string baseName(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

/* The predicted sky at the last epoch; the reason in `note` when there is
 * none. */
std::string skyOf(const std::string& log, const plot::Track& track, const plot::Report& rep,
                  int mask, std::string& note) {
    if (log.empty()) {
        note = "No sky plot: give the log the CSV came from with --log.";
        return "";
    }
    if (track.epochs.empty()) {
        note = "No sky plot: the recording has no epoch.";
        return "";
    }
    sky::Request req;
    req.at = track.epochs.back().tm;
    req.cartesian = true;
    req.mask = mask;
    if (rep.hasRef) {
        for (int k = 0; k < 3; k++) req.pos[k] = rep.ref[k];
    } else if (!plot::meanFix(track, req.pos)) {
        zlog::Reader rd;
        if (!rd.open(log) || !rd.header().hasPosition) {
            note = "No sky plot: no position to predict for.";
            return "";
        }
        for (int k = 0; k < 3; k++) req.pos[k] = rd.header().position[k];
    }
    sky::Result r;
    std::string error;
    if (!sky::predictFromLog(log, req, r, error)) {
        note = "No sky plot: " + error;
        return "";
    }
    note = "Satellites the log's almanacs predict above " + std::to_string(mask) +
           " degrees at the last epoch; filled: tracked by the receiver then.";
    if (!r.glo.valid) note += " The log holds no complete GLONASS almanac by then.";
    if (!r.gps.valid) note += " The log holds no complete GPS almanac by then.";
    return sky::skySvg(r.predicted, "Predicted sky, " + sky::gpsText(req.at, r.leap) + " GPS");
}

}  // namespace

int cmdPlot(int argc, char** argv) {
    std::string input, output, skyLog;
    int mode = 10, mask = 5;
    plot::Report rep;
    for (int i = 1; i < argc; i++) {
        const std::string a = argv[i];
        const bool more = i + 1 < argc;
        if (a == "-h" || a == "--help") {
            std::fputs(kUsage, stdout);
            return 0;
        } else if (a == "-o") {
            if (!more) return usage("-o needs a file name");
            output = argv[++i];
        } else if (a == "--ref") {
            char tail = 0;
            if (!more || std::sscanf(argv[++i], "%lf,%lf,%lf%c", &rep.ref[0], &rep.ref[1],
                                     &rep.ref[2], &tail) != 3)
                return usage("--ref needs X,Y,Z in metres");
            rep.hasRef = true;
        } else if (a == "--mode") {
            mode = more ? solve::modeOf(argv[++i]) : -1;
            if (mode < 0) return usage("--mode needs glo, gps or both");
        } else if (a == "--log") {
            if (!more) return usage("--log needs a log");
            skyLog = argv[++i];
        } else if (a == "--mask") {
            char* end = nullptr;
            const long m = more ? std::strtol(argv[++i], &end, 10) : -1000;
            if (!end || *end != 0 || m < -90 || m > 90) return usage("--mask: whole degrees, -90 to 90");
            mask = (int)m;
        } else if (a.size() > 1 && a[0] == '-') {
            return usage("unknown option " + a);
        } else if (input.empty()) {
            input = a;
        } else {
            return usage("give one log or CSV");
        }
    }
    if (input.empty()) return usage("give a log or a CSV");
    if (output.empty()) return usage("-o is needed");

    plot::Track track;
    std::string error;
    const bool log = plot::isLog(input);
    if (log) skyLog = input;
    if (!(log ? plot::loadLog(input, mode, track, error) : plot::loadCsv(input, track, error))) {
        std::fprintf(stderr, "zelnav plot: %s\n", error.c_str());
        return 1;
    }
    rep.title = "zelnav report: " + baseName(input) +
                (log ? std::string(", mode ") + solve::modeName(mode) : std::string());
    rep.skySvg = skyOf(skyLog, track, rep, mask, rep.skyNote);

    const std::string page = plot::reportHtml(track, rep);
    std::FILE* f = std::fopen(output.c_str(), "wb");
    if (!f || std::fwrite(page.data(), 1, page.size(), f) != page.size() || std::fclose(f) != 0) {
        std::fprintf(stderr, "zelnav plot: cannot write %s\n", output.c_str());
        return 1;
    }
    std::fprintf(stderr, "zelnav plot: %zu epochs, report %s\n", track.epochs.size(),
                 output.c_str());
    return 0;
}
