/*
 * zelnav predict: the satellites that the almanacs of a log put above the
 * horizon of a place at a time, beside the ones the receiver tracked then.
 *
 *   zelnav predict LOG --at TIME [--pos LAT,LON,H] [--mask DEG] [--sky FILE.svg]
 *
 * The almanacs are those the library collects from the log's messages up
 * to TIME; the prediction goes through the library's almanac prediction
 * (the prgns_* functions). TIME is GPS time, the scale of the RINEX files
 * the logs are made from. Exit status: 0 the prediction was printed; 1
 * the log could not be read or the sky plot not written; 2 the command
 * line is wrong.
 */
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "sky.h"
#include "zlog.h"

namespace {

const char* const kUsage =
    "usage: zelnav predict LOG --at TIME [--pos LAT,LON,H] [--mask DEG] [--sky FILE.svg]\n"
    "  LOG        log of 0x0C messages (tools/zlog/README.md)\n"
    "  --at TIME  GPS time of the prediction: \"YYYY-MM-DD HH:MM:SS\",\n"
    "             \"YYYY-MM-DDTHH:MM:SS\" or \"HH:MM[:SS]\" (on the log's first day);\n"
    "             the almanacs are those the log delivered up to then\n"
    "  --pos LAT,LON,H  place: latitude, longitude (degrees), height (m), WGS-84;\n"
    "             default: the log's approximate position\n"
    "  --mask DEG elevation mask in whole degrees (default 5; negative lists\n"
    "             satellites below the horizon too)\n"
    "  --sky FILE.svg  also draw the predicted sky as an SVG sky plot\n";

int usage(const std::string& why) {
    if (!why.empty()) std::fprintf(stderr, "zelnav predict: %s\n", why.c_str());
    std::fputs(kUsage, stderr);
    return 2;
}

std::string almanacLine(const char* sys, const sky::AlmInfo& a, int leap, bool glo) {
    if (!a.valid) return std::string(sys) + " almanac: none complete in the log by then";
    char buf[200];
    if (glo)
        std::snprintf(buf, sizeof buf, "%s almanac: day %u of four-year interval %u, from R%02d, "
                      "received %s GPS", sys, a.na, a.n4, a.source,
                      sky::gpsText(a.received, leap).c_str());
    else
        std::snprintf(buf, sizeof buf, "%s almanac: week %u (10-bit), toa %u s, from G%02d, "
                      "received %s GPS", sys, a.wna, a.toa, a.source,
                      sky::gpsText(a.received, leap).c_str());
    return buf;
}

}  // namespace

int cmdPredict(int argc, char** argv) {
    std::string log, at, pos, svg;
    int mask = 5;
    for (int i = 1; i < argc; i++) {
        const std::string a = argv[i];
        auto value = [&](std::string& v) {
            if (i + 1 >= argc) return false;
            v = argv[++i];
            return true;
        };
        std::string v;
        if (a == "-h" || a == "--help") {
            std::fputs(kUsage, stdout);
            return 0;
        } else if (a == "--at") {
            if (!value(at)) return usage("--at needs a time");
        } else if (a == "--pos") {
            if (!value(pos)) return usage("--pos needs LAT,LON,H");
        } else if (a == "--mask") {
            char* end = nullptr;
            if (!value(v)) return usage("--mask needs degrees");
            const long m = std::strtol(v.c_str(), &end, 10);
            if (*end != 0 || m < -90 || m > 90) return usage("--mask: whole degrees, -90 to 90");
            mask = (int)m;
        } else if (a == "--sky") {
            if (!value(svg)) return usage("--sky needs a file name");
        } else if (!a.empty() && a[0] == '-') {
            return usage("unknown option " + a);
        } else if (log.empty()) {
            log = a;
        } else {
            return usage("one log only");
        }
    }
    if (log.empty()) return usage("no log given");
    if (at.empty()) return usage("--at is needed");

    std::string error;
    uint32_t first = 0;
    int leap = 0;
    if (!sky::logStart(log, &first, &leap, error)) {
        std::fprintf(stderr, "zelnav predict: %s\n", error.c_str());
        return 1;
    }
    sky::Request req;
    req.mask = mask;
    if (!sky::tmZelOfGpsText(at, leap, &req.at) && !sky::tmZelOfGpsClock(at, leap, first, &req.at))
        return usage("--at: not a time: " + at);

    std::string place;
    if (!pos.empty()) {
        char tail;
        if (std::sscanf(pos.c_str(), "%lf,%lf,%lf%c", &req.pos[0], &req.pos[1], &req.pos[2],
                        &tail) != 3 ||
            std::fabs(req.pos[0]) > 90)
            return usage("--pos needs LAT,LON,H, for instance 43.5607,1.4809,207");
        char buf[120];
        std::snprintf(buf, sizeof buf, "%.5f %.5f %.1f m", req.pos[0], req.pos[1], req.pos[2]);
        place = buf;
    } else {
        zlog::Reader rd;
        if (!rd.open(log) || !rd.header().hasPosition)
            return usage("the log has no position: give --pos");
        for (int k = 0; k < 3; k++) req.pos[k] = rd.header().position[k];
        req.cartesian = true;
        char buf[160];
        std::snprintf(buf, sizeof buf, "X %.1f Y %.1f Z %.1f m (the log's position)", req.pos[0],
                      req.pos[1], req.pos[2]);
        place = buf;
    }

    sky::Result r;
    if (!sky::predictFromLog(log, req, r, error)) {
        std::fprintf(stderr, "zelnav predict: %s\n", error.c_str());
        return 1;
    }
    for (const std::string& p : r.problems) std::fprintf(stderr, "%s\n", p.c_str());

    std::printf("Prediction for %s GPS at %s, mask %d deg\n",
                sky::gpsText(req.at, r.leap).c_str(), place.c_str(), mask);
    std::printf("%s\n", almanacLine("GLONASS", r.glo, r.leap, true).c_str());
    std::printf("%s\n", almanacLine("GPS", r.gps, r.leap, false).c_str());
    std::printf("\n sat  let  azimuth  elevation  Doppler Hz  delay ms  tracked\n");
    for (const sky::Sat& s : r.predicted) {
        std::string let = s.sys == 'R' ? std::to_string(s.letter) : "";
        std::printf(" %s  %3s  %7.2f  %9.2f  %10.1f  %8.3f  %s\n", s.name().c_str(), let.c_str(),
                    s.az, s.el, s.dop, s.delay * 1e3, s.tracked ? "yes" : "no");
    }
    const sky::Dop d = sky::dilution(r.predicted);
    int nGlo = 0, nGps = 0;
    for (const sky::Sat& s : r.predicted) (s.sys == 'R' ? nGlo : nGps)++;
    if (d.valid)
        std::printf("\nDOP of the %d predicted (%d GLONASS, %d GPS; %d clock%s): GDOP %.2f  "
                    "PDOP %.2f  HDOP %.2f  VDOP %.2f  TDOP %.2f\n",
                    nGlo + nGps, nGlo, nGps, d.clocks, d.clocks > 1 ? "s" : "", d.g, d.p, d.h, d.v,
                    d.t);
    else
        std::printf("\nDOP: too few predicted satellites\n");

    if (!r.reached) {
        std::printf("The log ends before that time: no tracking to compare with.\n");
    } else {
        int tracked = 0;
        std::string names;
        for (const sky::Sat& s : r.predicted)
            if (s.tracked) {
                tracked++;
                names += " " + s.name();
            }
        for (const sky::Sat& s : r.trackedOnly) names += " " + s.name();
        std::printf("Tracked at %s GPS (%zu):%s\n", sky::gpsText(r.messageTime, r.leap).c_str(),
                    (size_t)tracked + r.trackedOnly.size(), names.c_str());
        std::printf("Predicted and tracked: %d of %zu predicted\n", tracked, r.predicted.size());
        for (const sky::Sat& s : r.trackedOnly)
            std::printf("Tracked, not predicted: %s, %s (receiver's elevation %.1f deg)\n",
                        s.name().c_str(), s.why.c_str(), s.el);
    }

    if (!svg.empty()) {
        const std::string title = "Predicted sky, " + sky::gpsText(req.at, r.leap) + " GPS";
        const std::string doc = sky::skySvg(r.predicted, title);
        std::FILE* f = std::fopen(svg.c_str(), "wb");
        if (!f || std::fwrite(doc.data(), 1, doc.size(), f) != doc.size() || std::fclose(f) != 0) {
            std::fprintf(stderr, "zelnav predict: cannot write %s\n", svg.c_str());
            return 1;
        }
        std::printf("Sky plot: %s\n", svg.c_str());
    }
    return 0;
}
