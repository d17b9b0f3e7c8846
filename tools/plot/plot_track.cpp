/*
 * The epochs of a report, from a log or from a `zelnav solve` CSV, and
 * their local east/north/up offsets.
 */
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <sstream>

#include "plot.h"
#include "satpos/geodesy.h"
#include "sky.h"
#include "solve_pipeline.h"
#include "solve_report.h"
#include "x0ccheck.h"
#include "zlog.h"

namespace plot {

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
/* The receiver time scale runs three hours ahead of UTC. */
const uint32_t kUtcOffset = 10800;

std::string utcText(uint32_t tm) {
    unsigned int d[6] = {0, 0, 0, 0, 0, 0};
    if (tm >= kUtcOffset) tmZelToDate(tm - kUtcOffset, d);
    char buf[32];
    std::snprintf(buf, sizeof buf, "%04u-%02u-%02uT%02u:%02u:%02u", d[0], d[1], d[2], d[3], d[4],
                  d[5]);
    return buf;
}

std::vector<std::string> splitCsv(const std::string& line) {
    std::vector<std::string> out;
    std::stringstream ss(line);
    std::string cell;
    while (std::getline(ss, cell, ',')) out.push_back(cell);
    if (!line.empty() && line.back() == ',') out.push_back("");
    return out;
}

}  // namespace

bool isLog(const std::string& path) {
    char magic[4] = {0, 0, 0, 0};
    std::ifstream in(path, std::ios::binary);
    return in.read(magic, 4) && std::memcmp(magic, "ZLOG", 4) == 0;
}

bool loadLog(const std::string& path, int mode, Track& out, std::string& error) {
    zlog::Reader rd;
    if (!rd.open(path)) {
        error = rd.errors().empty() ? path + ": cannot read" : rd.errors().back();
        return false;
    }
    solve::Pipeline pl(mode);
    if (rd.header().hasPosition) pl.seed(rd.header().position);
    zlog::Record rec;
    while (rd.next(rec)) {
        if (!x0ccheck::check(rec.message.data(), rec.message.size()).ok()) continue;
        if (!pl.run(rec.message.data())) continue;
        Epoch ep;
        ep.tm = pl.tm();
        ep.utc = utcText(ep.tm);
        const tblCrdPnt_t* fix = pl.fix();
        if (fix != nullptr && fix->actual == 1) {
            ep.fix = true;
            solve::fixToWgs84(fix, pl.datum(), ep.xyz);
            ep.nglo = fix->numGlo;
            ep.ngps = fix->numGps;
            ep.dop = fix->dop10 / 10.0;
        }
        out.epochs.push_back(ep);
    }
    return true;
}

bool loadCsv(const std::string& path, Track& out, std::string& error) {
    std::ifstream in(path);
    std::string line;
    if (!in || !std::getline(in, line)) {
        error = path + ": cannot read";
        return false;
    }
    /* Columns by name, so that the RAIM columns or a reordering do not
     * matter. */
    const std::vector<std::string> head = splitCsv(line);
    const char* const wanted[] = {"utc", "fix", "x", "y", "z", "nglo", "ngps", "dop"};
    int col[8];
    for (int k = 0; k < 8; k++) {
        col[k] = -1;
        for (size_t i = 0; i < head.size(); i++)
            if (head[i] == wanted[k]) col[k] = (int)i;
        if (col[k] < 0) {
            error = path + ": not a zelnav solve CSV (no column " + wanted[k] + ")";
            return false;
        }
    }
    long lineNo = 1;
    while (std::getline(in, line)) {
        lineNo++;
        if (line.empty()) continue;
        const std::vector<std::string> c = splitCsv(line);
        Epoch ep;
        if ((int)c.size() < (int)head.size() || !sky::tmZelOfGpsText(c[col[0]], 0, &ep.tm)) {
            error = path + ":" + std::to_string(lineNo) + ": not an epoch line";
            return false;
        }
        ep.utc = c[col[0]];
        ep.fix = c[col[1]] == "1";
        if (ep.fix) {
            for (int k = 0; k < 3; k++) ep.xyz[k] = std::strtod(c[col[2 + k]].c_str(), nullptr);
            ep.nglo = std::atoi(c[col[5]].c_str());
            ep.ngps = std::atoi(c[col[6]].c_str());
            ep.dop = std::strtod(c[col[7]].c_str(), nullptr);
        }
        out.epochs.push_back(ep);
    }
    return true;
}

bool meanFix(const Track& track, double out[3]) {
    double s[3] = {0, 0, 0};
    long n = 0;
    for (const Epoch& ep : track.epochs) {
        if (!ep.fix) continue;
        for (int k = 0; k < 3; k++) s[k] += ep.xyz[k];
        n++;
    }
    if (n == 0) return false;
    for (int k = 0; k < 3; k++) out[k] = s[k] / (double)n;
    return true;
}

Enu enuOf(const Track& track, const double centre[3]) {
    Enu r;
    geo::Ellipsoid wgs84;
    geo::datumEllipsoid(0, &wgs84);
    double blh[3] = {0, 0, 0};
    geo::xyz_blh(centre, wgs84, blh);
    const uint32_t t0 = track.epochs.empty() ? 0 : track.epochs.front().tm;
    for (const Epoch& ep : track.epochs) {
        r.t.push_back((double)ep.tm - (double)t0);
        if (!ep.fix) {
            r.e.push_back(kNaN);
            r.n.push_back(kNaN);
            r.u.push_back(kNaN);
            continue;
        }
        const double d[3] = {ep.xyz[0] - centre[0], ep.xyz[1] - centre[1], ep.xyz[2] - centre[2]};
        double top[3];   /* north, up, east */
        geo::gcsk_tcsk(blh, d, top);
        r.e.push_back(top[2]);
        r.n.push_back(top[0]);
        r.u.push_back(top[1]);
    }
    return r;
}

}  // namespace plot
