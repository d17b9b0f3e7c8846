/*
 * Screening of the tracked satellites before the fix.
 *
 * A receiver channel can lock on a cross-correlation peak or keep
 * reporting a satellite that has already set: its pseudorange then belongs
 * to no satellite above the horizon and poisons the fix. Before the
 * satellite computation, raimSat compares each tracked satellite of the
 * converter list with the almanac prediction (lsttblPrgSat) or, with no
 * prediction at hand, with the elevation the receiver reported in the
 * satellite's header, and invalidates the observations of those below the
 * mask. Invalidating means clearing the five per-signal `actual` flags of
 * the satellite's tblObs_t; nothing else of its tables changes, so the
 * navigation data keeps flowing and the satellite comes back as soon as it
 * passes.
 *
 * Two rules look wrong and are kept on purpose, because hosts are tuned
 * to them:
 *
 *   - GLONASS against a prediction consults only the first entry of the
 *     list. A GLONASS satellite survives only if it is that entry; every
 *     other one is invalidated, and all of them when the list starts with
 *     GPS. (Hosts that screen GLONASS this way pass a list made for it.)
 *   - GPS without a prediction is judged by the header elevation of the
 *     GLONASS table set at the same list index, not by its own.
 *
 * An elevation equal to the mask keeps the satellite.
 */
#include "integrity/raim.h"
#include "tbl_prg.h"

namespace {

inline uint32_t listRows(uint32_t num) {
    return num < (uint32_t)ZEL_NUM_SLOTS ? num : (uint32_t)ZEL_NUM_SLOTS;
}

/* Entries of a prediction list that may be read: a list without its entry
 * array has none, and the count never reaches past the array. */
inline uint32_t prgRows(const lsttblPrgSat* prg) {
    if (prg->prgSat == nullptr) return 0;
    return prg->numPrg < (uint32_t)ZEL_NUM_PRGSAT ? prg->numPrg : (uint32_t)ZEL_NUM_PRGSAT;
}

void invalidate(tblObs_t* obs) {
    if (obs == nullptr) return;
    for (int s = 0; s < ZEL_NUM_SIG; s++) obs->actual[s] = 0;
}

}  // namespace

/*
 * GLONASS elevation screening. An entry without a header cannot be named
 * or judged and is left as it is.
 */
void raim_t::raimUmGlo(lsttblSat_t* lst, const lsttblPrgSat* prg, double umMin) {
    if (lst == nullptr || lst->numGlo == 0) return;
    const uint32_t n = listRows(lst->numGlo);
    for (uint32_t i = 0; i < n; i++) {
        const tblHdr_t* hdr = lst->tblGlo[i].tblHdr;
        if (hdr == nullptr) continue;
        bool keep;
        if (prg != nullptr) {
            const tblPrgSat_t* p = prgRows(prg) != 0 ? &prg->prgSat[0] : nullptr;
            keep = p != nullptr && p->num == hdr->num && p->sys == 0 && p->um >= umMin;
        } else {
            const double um = hdr->um;
            keep = um >= umMin;
        }
        if (!keep) invalidate(lst->tblGlo[i].tblObs);
    }
}

/*
 * GPS elevation screening. Without a prediction, GPS entry i borrows the
 * header elevation of GLONASS entry i; when the list holds no GLONASS
 * entry at that index (i >= numGlo, or no header) there is no elevation
 * to keep the satellite by and it is invalidated. Entries past numGlo are
 * not read: they are leftovers of earlier epochs.
 */
void raim_t::raimUmGps(lsttblSat_t* lst, const lsttblPrgSat* prg, double umMin) {
    if (lst == nullptr || lst->numGps == 0) return;
    const uint32_t n = listRows(lst->numGps);
    for (uint32_t i = 0; i < n; i++) {
        const tblHdr_t* hdr = lst->tblGps[i].tblHdr;
        if (hdr == nullptr) continue;
        bool keep = false;
        if (prg != nullptr) {
            /* A matching entry below the mask does not end the search. */
            const uint32_t np = prgRows(prg);
            for (uint32_t k = 0; k < np && !keep; k++) {
                const tblPrgSat_t& p = prg->prgSat[k];
                keep = p.num == hdr->num && p.sys == 1 && p.um >= umMin;
            }
        } else if (i < listRows(lst->numGlo) && lst->tblGlo[i].tblHdr != nullptr) {
            const double um = lst->tblGlo[i].tblHdr->um;
            keep = um >= umMin;
        }
        if (!keep) invalidate(lst->tblGps[i].tblObs);
    }
}

/*
 * One second of screening for the systems of `mode` (0 GLONASS, 1 GPS, 10
 * both; any other value does nothing): the elevation screening, then the
 * clock-jump check of second t on what is left, then the removal of the
 * known clock shift dtShift (s).
 */
void raim_t::raimSat(lsttblSat_t* lst, const lsttblPrgSat* prg, unsigned int t, double umMin,
                     double dtShift, unsigned int mode) {
    if (mode == 0 || mode == 10) {
        raimUmGlo(lst, prg, umMin);
        raimTimeGlo(lst, t);
        shiftDtGlo(lst, dtShift);
    }
    if (mode == 1 || mode == 10) {
        raimUmGps(lst, prg, umMin);
        raimTimeGps(lst, t);
        shiftDtGps(lst, dtShift);
    }
}
