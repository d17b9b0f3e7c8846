/*
 * A log run through the library up to the time of the prediction: every
 * message goes to the converter, whose list offers the almanacs of the
 * tracked satellites to the prediction object. The host keeps its own
 * copy of the last valid almanac of each system (the object's tables are
 * rewritten, and the GLONASS one invalidated, by every list), and at the
 * end asks for the prediction with those copies.
 */
#include <algorithm>
#include <cstring>
#include <set>
#include <utility>

#include "sky.h"
#include "zel.h"
#include "zlog.h"

namespace sky {

namespace {

/* Handles of one run, released however the run ends. */
struct Handles {
    int* cnv = static_cast<int*>(cnvx0c_init());
    int* prg = static_cast<int*>(prgns_init());
    ~Handles() {
        prgns_finit(prg);
        cnvx0c_finit(cnv);
    }
};

/* GLONASS letters -7..-1 travel as 25..31. */
int letterOf(uint8_t lit) { return lit > 24 ? (int)lit - 32 : (int)lit; }

/* Why the almanacs leave a tracked satellite out of the prediction. */
std::string whyLeftOut(const Sat& s, const tblAlmGlo_t& glo, const tblAlmGps_t& gps) {
    if (s.sys == 'R') {
        if (glo.actual != 1) return "no GLONASS almanac";
        for (const tblAlmGloSat_t& e : glo.alm) {
            if (e.num != s.num) continue;
            if (e.onEmpty != 0) return "empty in the almanac";
            if (e.onErrData != 0) return "damaged in the almanac";
            if (e.onSystem != 1) return "not operational in the almanac";
            return "below the mask";
        }
        return "not in the almanac";
    }
    if (gps.actual != 1) return "no GPS almanac";
    if (s.num < 1 || s.num > ZEL_NUM_ALM_GPS) return "not in the almanac";
    const tblAlmGpsSat_t& e = gps.alm[s.num - 1];
    if (e.onEmpty != 0) return "empty in the almanac (health 63 or no page)";
    if (e.healL != 0) return "unhealthy in the almanac";
    return "below the mask";
}

}  // namespace

bool predictFromLog(const std::string& path, const Request& req, Result& out,
                    std::string& error) {
    out = Result();
    zlog::Reader rd;
    if (!rd.open(path)) {
        error = rd.errors().empty() ? path + ": cannot be read as a log" : rd.errors().front();
        return false;
    }
    Handles h;
    tblAlmGlo_t glo;
    tblAlmGps_t gps;
    tblTmPrmGps_t tp;
    std::memset(&glo, 0, sizeof glo);
    std::memset(&gps, 0, sizeof gps);
    std::memset(&tp, 0, sizeof tp);
    std::set<std::pair<char, int>> tracked;
    std::vector<Sat> trackedSats;

    zlog::Record rec;
    while (rd.next(rec)) {
        lsttblSat_t* lst = static_cast<lsttblSat_t*>(cnvx0c_upx0c(h.cnv, rec.message.data()));
        out.messages++;
        const tblGpsUtc_t* utc = static_cast<const tblGpsUtc_t*>(cnvx0c_getTblGpsUtc(h.cnv));
        if (utc->actual == 1) out.leap = (int)utc->dtGpsUtc;
        const uint32_t t = getTmZel(lst);
        if (t == 0) continue;

        const tblAlmGlo_t* g = static_cast<const tblAlmGlo_t*>(prgns_getAlmanGlo(h.prg, lst));
        if (g->actual == 1) {
            glo = *g;
            out.glo.valid = true;
            out.glo.source = prgns_getnumalmglo(h.prg);
            out.glo.received = g->tmResived;
            out.glo.n4 = g->n4;
            out.glo.na = g->na;
        }
        tblTmPrmGps_t tpNow;
        std::memset(&tpNow, 0, sizeof tpNow);
        const tblAlmGps_t* a =
            static_cast<const tblAlmGps_t*>(prgns_getAlmanGps(h.prg, lst, &tpNow));
        if (a->actual == 1) {
            gps = *a;
            if (tpNow.actual == 1) tp = tpNow;
            out.gps.valid = true;
            out.gps.source = prgns_getnumalmgps(h.prg);
            out.gps.received = a->tmResived;
            out.gps.wna = a->wna;
            out.gps.toa = a->toa;
        }

        if (t >= req.at) {
            out.reached = true;
            out.messageTime = t;
            for (uint32_t k = 0; k < lst->numGlo + lst->numGps; k++) {
                const bool isGlo = k < lst->numGlo;
                const tblHdr_t* hd = isGlo ? lst->tblGlo[k].tblHdr
                                           : lst->tblGps[k - lst->numGlo].tblHdr;
                Sat s;
                s.sys = isGlo ? 'R' : 'G';
                s.num = hd->num;
                s.letter = isGlo ? letterOf(hd->lit) : 0;
                s.el = hd->um;
                s.tracked = true;
                tracked.insert(std::make_pair(s.sys, s.num));
                trackedSats.push_back(s);
            }
            break;
        }
    }
    out.problems = rd.errors();

    /* The prediction itself, at the time asked for. */
    double pos[3] = {req.pos[0], req.pos[1], req.pos[2]};
    prgns_set(h.prg, pos, req.cartesian ? 0 : 1, 0, (unsigned)req.mask);
    if (tp.actual == 1) out.leap = tp.dtLs;
    const int leapArg = gps.actual == 1 ? foldedLeap(req.at, out.leap, gps.wna, gps.toa) : 0;
    const lsttblPrgSat* l = static_cast<const lsttblPrgSat*>(
        prgns_get2(h.prg, glo.actual == 1 ? &glo : nullptr, gps.actual == 1 ? &gps : nullptr,
                   req.at, leapArg));
    std::set<std::pair<char, int>> predicted;
    for (uint32_t k = 0; k < l->numPrg; k++) {
        const tblPrgSat_t& e = l->prgSat[k];
        Sat s;
        s.sys = e.sys == 0 ? 'R' : 'G';
        s.num = e.num;
        s.letter = e.sys == 0 ? letterOf(e.lit) : 0;
        s.az = e.az;
        s.el = e.um;
        s.dop = e.dop;
        s.delay = e.delay;
        s.predicted = true;
        s.tracked = tracked.count(std::make_pair(s.sys, s.num)) != 0;
        predicted.insert(std::make_pair(s.sys, s.num));
        out.predicted.push_back(s);
    }
    for (const Sat& s : trackedSats) {
        if (predicted.count(std::make_pair(s.sys, s.num))) continue;
        out.trackedOnly.push_back(s);
        out.trackedOnly.back().why = whyLeftOut(s, glo, gps);
    }
    return true;
}

bool logStart(const std::string& path, uint32_t* tm, int* leap, std::string& error) {
    zlog::Reader rd;
    if (!rd.open(path)) {
        error = rd.errors().empty() ? path + ": cannot be read as a log" : rd.errors().front();
        return false;
    }
    Handles h;
    zlog::Record rec;
    while (rd.next(rec)) {
        lsttblSat_t* lst = static_cast<lsttblSat_t*>(cnvx0c_upx0c(h.cnv, rec.message.data()));
        const tblGpsUtc_t* utc = static_cast<const tblGpsUtc_t*>(cnvx0c_getTblGpsUtc(h.cnv));
        *leap = utc->actual == 1 ? (int)utc->dtGpsUtc : 0;
        *tm = getTmZel(lst);
        if (*tm != 0) return true;
    }
    error = path + ": no message with a time";
    return false;
}

}  // namespace sky
