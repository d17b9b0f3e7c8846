/*
 * zelnav convert: a RINEX observation file and its broadcast navigation
 * files into a log of one-second 0x0C messages.
 *
 *   zelnav convert OBS NAV... -o LOG [--meteo T,P,H | --no-meteo]
 *                  [--from TIME] [--to TIME]
 *
 * Problems found in the files are printed to the standard error as
 * "FILE:LINE: what" while the conversion goes on; the summary goes to the
 * standard output. Exit status: 0 the log was written; 1 it was not (a
 * file could not be read, no message came out, the log could not be
 * written); 2 the command line is wrong.
 */
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "convert.h"
#include "rinex_obs.h"
#include "zlog.h"

namespace {

const char* const kUsage =
    "usage: zelnav convert OBS NAV... -o LOG [--meteo T,P,H | --no-meteo]\n"
    "                      [--from TIME] [--to TIME]\n"
    "  OBS        RINEX 2.1x or 3.0x observation file (plain or .gz)\n"
    "  NAV...     RINEX navigation files (GPS, GLONASS or mixed)\n"
    "  -o LOG     the log to write (format: tools/zlog/README.md)\n"
    "  --meteo T,P,H  temperature (C), pressure (hPa), humidity (%) to send;\n"
    "             default: standard atmosphere at the station's height\n"
    "  --no-meteo send readings that the receiver's meteo check refuses\n"
    "  --from, --to   first and last recorded epoch to convert, in the\n"
    "             observation file's time scale: \"YYYY-MM-DD HH:MM:SS\",\n"
    "             \"YYYY-MM-DDTHH:MM:SS\" or \"HH:MM[:SS]\" (on the first epoch's day)\n";

int usage(const std::string& why) {
    if (!why.empty()) std::fprintf(stderr, "zelnav convert: %s\n", why.c_str());
    std::fputs(kUsage, stderr);
    return 2;
}

std::string baseName(const std::string& path) {
    std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool parseMeteo(const std::string& text, cvt::Meteo& m) {
    char tail = 0;
    return std::sscanf(text.c_str(), "%lf,%lf,%lf%c", &m.temperature, &m.pressure, &m.humidity,
                       &tail) == 3;
}

}  // namespace

int cmdConvert(int argc, char** argv) {
    cvt::Options opt;
    std::vector<std::string> files;
    std::string out;
    bool meteoSet = false;
    for (int i = 1; i < argc; i++) {
        std::string a = argv[i];
        auto value = [&](std::string& v) {
            if (i + 1 >= argc) return false;
            v = argv[++i];
            return true;
        };
        std::string v;
        if (a == "-h" || a == "--help") {
            std::fputs(kUsage, stdout);
            return 0;
        } else if (a == "-o") {
            if (!value(out)) return usage("-o needs a file name");
        } else if (a == "--meteo") {
            if (meteoSet) return usage("give --meteo or --no-meteo once");
            if (!value(v) || !parseMeteo(v, opt.given))
                return usage("--meteo needs T,P,H, for instance 12.5,1008.2,71");
            opt.meteo = cvt::Options::MeteoMode::Given;
            meteoSet = true;
        } else if (a == "--no-meteo") {
            if (meteoSet) return usage("give --meteo or --no-meteo once");
            opt.meteo = cvt::Options::MeteoMode::None;
            meteoSet = true;
        } else if (a == "--from" || a == "--to") {
            bool from = a == "--from";
            int64_t t = 0;
            bool tod = false;
            if (!value(v) || !cvt::parseCivil(v, t, tod))
                return usage(a + " needs a time such as \"2024-01-01 12:00:00\" or 12:00:00");
            (from ? opt.hasFrom : opt.hasTo) = true;
            (from ? opt.from : opt.to) = t;
            (from ? opt.fromTimeOfDay : opt.toTimeOfDay) = tod;
        } else if (a.size() > 1 && a[0] == '-') {
            return usage("unknown option " + a);
        } else {
            files.push_back(a);
        }
    }
    if (files.size() < 2) return usage("give an observation file and at least one navigation file");
    if (out.empty()) return usage("give the log to write with -o");

    auto started = std::chrono::steady_clock::now();
    rinex::Diagnostics diag;
    diag.setSink([](const rinex::Diagnostic& d) { std::fprintf(stderr, "%s\n", d.text().c_str()); });

    cvt::Converter conv(opt, diag);
    for (std::size_t i = 1; i < files.size(); i++)
        if (!conv.addNavFile(files[i])) {
            std::fprintf(stderr, "zelnav convert: %s is not a navigation file it can read\n",
                         files[i].c_str());
            return 1;
        }
    rinex::ObsReader reader(diag);
    if (!reader.open(files[0])) {
        std::fprintf(stderr, "zelnav convert: %s is not an observation file it can read\n",
                     files[0].c_str());
        return 1;
    }
    const rinex::ObsHeader& h = reader.header();
    zlog::FileHeader lh;
    lh.hasPosition = h.hasApproxPos;
    for (int i = 0; i < 3; i++) lh.position[i] = h.approxPos[i];
    lh.station = h.markerName;
    for (const std::string& f : files) lh.sources.push_back(baseName(f));
    zlog::Writer log;
    if (!log.open(out, lh)) {
        std::fprintf(stderr, "zelnav convert: %s\n", log.error().c_str());
        return 1;
    }
    conv.begin(h, files[0], [&log](const std::vector<uint8_t>& msg, bool interpolated) {
        return log.write(msg, interpolated ? zlog::kInterpolated : 0);
    });
    rinex::ObsEpoch e;
    while (reader.next(e))
        if (!conv.addEpoch(e)) break;
    conv.end();
    bool closed = log.close();
    double secs = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();

    const cvt::Summary& s = conv.summary();
    std::printf("%s -> %s\n", files[0].c_str(), out.c_str());
    std::printf("  recorded epochs  %ld\n", s.epochs);
    if (s.messages > 0)
        std::printf("  messages         %ld, one a second, %s .. %s receiver time (UTC+3)\n",
                    s.messages, cvt::civilText(s.firstTmZel).c_str(),
                    cvt::civilText(s.lastTmZel).c_str());
    else
        std::printf("  messages         0\n");
    std::printf("                   %ld recorded, %ld interpolated\n", s.recorded, s.interpolated);
    if (s.gaps > 0) std::printf("  gaps left empty  %ld\n", s.gaps);
    std::printf("  satellites       %ld GPS, %ld GLONASS; %ld left out\n", s.gpsSatellites,
                s.gloSatellites, s.skippedSatellites);
    std::printf("  satellite blocks %ld\n", s.blocks);
    std::printf("  bytes            %llu of messages\n", (unsigned long long)s.bytes);
    std::printf("  diagnostics      %zu\n", diag.count());
    std::printf("  time             %.2f s\n", secs);
    if (!closed) {
        std::fprintf(stderr, "zelnav convert: %s\n", log.error().c_str());
        return 1;
    }
    if (s.messages == 0) {
        std::fprintf(stderr, "zelnav convert: no message written\n");
        return 1;
    }
    return 0;
}
