/*
 * Choice of the almanac to predict with, out of the tables that the
 * converter's satellites carry.
 *
 * Every tracked satellite broadcasts the almanac of the whole system, so
 * one list usually offers several copies of it, of different ages while a
 * new almanac is being uploaded. The newest one is taken: the highest
 * four-year interval and day (GLONASS) or week and reference time (GPS).
 * Among equally new copies the satellite heard best wins, judged by the
 * largest Doppler on the first signal (a satellite still rising, heard
 * longest from now on). Once a satellite has been chosen it stays the
 * source for as long as its copy is as new as the newest: the held
 * almanac does not hop from one satellite to another, and with it the
 * prediction does not jitter, while nothing newer is on the air.
 */
#include <cstring>

#include "predict/prgns.h"

namespace {

/* Doppler below which no satellite can be chosen, Hz. */
const double kNoDoppler = -10000.0;

/* What the choice needs to know of one satellite's almanac. */
struct AlmCand {
    bool valid;       /* its almanac table has `actual` set */
    uint32_t major;   /* n4 or wna */
    uint32_t minor;   /* na or toa */
    double dop;       /* Doppler of signal 0, Hz */
    uint32_t num;     /* satellite number of its header */
};

/*
 * Index of the satellite whose almanac is to be held, or -1 for none;
 * *keep tells that it is the held source `held` keeping its place. The
 * held source stays when its copy is at least as new as the newest
 * (GLONASS), or as new in week and exactly as new in reference time
 * (GPS: `minorEqual`). Zero as the newest week or day, or as the newest
 * reference time, means that the list has nothing usable.
 */
int chooseAlmanac(const AlmCand* c, uint32_t n, uint32_t held, bool minorEqual,
                  bool* keep) {
    *keep = false;
    uint32_t maxMajor = 0;
    for (uint32_t k = 0; k < n; k++)
        if (c[k].valid && c[k].major > maxMajor) maxMajor = c[k].major;
    if (maxMajor == 0) return -1;

    uint32_t maxMinor = 0;
    for (uint32_t k = 0; k < n; k++)
        if (c[k].valid && c[k].major == maxMajor && c[k].minor > maxMinor)
            maxMinor = c[k].minor;
    if (maxMinor == 0) return -1;

    /* Strictly greater: on equal Doppler the earlier satellite wins. */
    int best = -1;
    double bestDop = kNoDoppler;
    for (uint32_t k = 0; k < n; k++) {
        if (!c[k].valid || c[k].major != maxMajor || c[k].minor != maxMinor)
            continue;
        if (c[k].dop > bestDop) {
            bestDop = c[k].dop;
            best = (int)k;
        }
    }
    if (best < 0) return -1;

    /* The held source is looked for by number; a copy of it that is not
     * valid does not end the search, one that is too old does. */
    for (uint32_t k = 0; k < n; k++) {
        if (c[k].num != held || !c[k].valid) continue;
        bool newEnough = c[k].major >= maxMajor &&
                         (minorEqual ? c[k].minor == maxMinor
                                     : c[k].minor >= maxMinor);
        if (newEnough) {
            *keep = true;
            return (int)k;
        }
        break;
    }
    return best;
}

}  // namespace

/*
 * A list without GLONASS satellites leaves no valid GLONASS almanac: the
 * held one is dropped at the start of every call.
 */
tblAlmGlo_t* prgns_t::getAlmanGlo(lsttblSat_t* lst) {
    almGlo->actual = 0;
    const uint32_t n = lst->numGlo;
    if (n == 0) return almGlo;

    AlmCand c[ZEL_NUM_SLOTS];
    for (uint32_t k = 0; k < n; k++) {
        const tblAlmGlo_t* a = lst->tblGlo[k].tblAlmGlo[0];
        c[k].valid = a->actual != 0;
        c[k].major = a->n4;
        c[k].minor = a->na;
        c[k].dop = lst->tblGlo[k].tblObs->dop[0];
        c[k].num = lst->tblGlo[k].tblHdr->num;
    }
    bool keep;
    int pick = chooseAlmanac(c, n, numAlmGlo, false, &keep);
    if (pick < 0) return almGlo;
    const tblAlmGlo_t* a = lst->tblGlo[pick].tblAlmGlo[0];
    std::memcpy(almGlo, a, sizeof *almGlo);
    if (!keep) numAlmGlo = c[pick].num;
    return almGlo;
}

/*
 * Unlike GLONASS, a list without GPS satellites leaves the held GPS
 * almanac valid: GPS satellites come and go from the tracking list more
 * often, and the almanac stays good for weeks.
 */
tblAlmGps_t* prgns_t::takeAlmanGps(lsttblSat_t* lst, tblTmPrmGps_t* tp) {
    const uint32_t n = lst->numGps;
    if (n == 0) return almGps;
    almGps->actual = 0;

    AlmCand c[ZEL_NUM_SLOTS];
    for (uint32_t k = 0; k < n; k++) {
        const tblAlmGps_t* a = lst->tblGps[k].tblAlmGps;
        c[k].valid = a->actual != 0;
        c[k].major = a->wna;
        c[k].minor = a->toa;
        c[k].dop = lst->tblGps[k].tblObs->dop[0];
        c[k].num = lst->tblGps[k].tblHdr->num;
    }
    bool keep;
    int pick = chooseAlmanac(c, n, numAlmGps, true, &keep);
    if (pick < 0) return almGps;
    const tblSatGps& s = lst->tblGps[pick];
    std::memcpy(almGps, s.tblAlmGps, sizeof *almGps);
    /* The time parameters travel with the almanac they came with. */
    std::memcpy(tmPrmGps, s.tblTmPrmGps, sizeof *tmPrmGps);
    if (tp != nullptr) std::memcpy(tp, s.tblTmPrmGps, sizeof *tp);
    if (!keep) numAlmGps = c[pick].num;
    return almGps;
}

tblAlmGps_t* prgns_t::getAlmanGps(lsttblSat_t* lst, tblTmPrmGps_t* tp) {
    return takeAlmanGps(lst, tp);
}

tblAlmGps_t* prgns_t::getAlmanGps0(lsttblSat_t* lst) {
    return takeAlmanGps(lst, nullptr);
}

int32_t prgns_t::getNumAlmGlo() {
    return almGlo->actual == 1 ? (int32_t)numAlmGlo : -1;
}

int32_t prgns_t::getNumAlmGps() {
    return almGps->actual == 1 ? (int32_t)numAlmGps : -1;
}
