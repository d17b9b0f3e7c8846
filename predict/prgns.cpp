/*
 * prgns_t: construction, the user position, clearing, and the three ways
 * of asking for a prediction.
 */
#include "predict/prgns.h"

#include <cstring>

prgns_t::prgns_t()
    : prg(nullptr),
      numAlmGlo(PRGNS_NO_SOURCE),
      almGlo(nullptr),
      numAlmGps(PRGNS_NO_SOURCE),
      almGps(nullptr),
      tmPrmGps(nullptr),
      pntSet(0),
      pnt{0.0, 0.0, 0.0},
      crdSys(1),
      umMask(0.0) {
    try {
        /* Value-initialised: every field not set below starts at zero. */
        prg = new lsttblPrgSat();
        prg->length = ZEL_LEN_LSTPRGSAT;
        prg->prgSat = new tblPrgSat_t[ZEL_NUM_PRGSAT]();

        almGlo = new tblAlmGlo_t();
        almGlo->length = ZEL_LEN_ALMGLO;
        for (int k = 0; k < ZEL_NUM_ALM_GLO; k++)
            almGlo->alm[k].length = ZEL_LEN_ALMGLO_SAT;

        almGps = new tblAlmGps_t();
        almGps->length = ZEL_LEN_ALMGPS;
        for (int k = 0; k < ZEL_NUM_ALM_GPS; k++)
            almGps->alm[k].length = ZEL_LEN_ALMGPS_SAT;

        tmPrmGps = new tblTmPrmGps_t();
        tmPrmGps->length = ZEL_LEN_TMPRMGPS;
    } catch (...) {
        delete almGps;
        delete almGlo;
        if (prg) delete[] prg->prgSat;
        delete prg;
        throw;
    }
}

prgns_t::~prgns_t() {
    delete tmPrmGps;
    delete almGps;
    delete almGlo;
    delete[] prg->prgSat;
    delete prg;
}

/*
 * Forgets the prediction and both almanacs, so that the next list starts
 * the choice afresh. The user position, the mask and the GPS time
 * parameters belong to the host's setting up, not to the almanac data,
 * and survive.
 */
void prgns_t::clear() {
    prg->numPrg = 0;
    prg->tm = 0;
    almGlo->actual = 0;
    almGps->actual = 0;
    numAlmGlo = PRGNS_NO_SOURCE;
    numAlmGps = PRGNS_NO_SOURCE;
}

/*
 * The list keeps the position exactly as the host gave it (and the three
 * settings cut to a byte each), so that a reader of the list sees what
 * the prediction was asked for; the object works on the Cartesian form.
 */
void prgns_t::set(double* pos, unsigned int posType, unsigned int posSys,
                  unsigned int mask) {
    for (int k = 0; k < 3; k++) prg->pos[k] = pos[k];
    prg->posType = (uint8_t)posType;
    prg->posSys = (uint8_t)posSys;
    prg->posMask = (uint8_t)mask;
    pntSet = 1;
    if (posType == 1) {
        blh_xyz(pos, posSys, pnt);
    } else {
        for (int k = 0; k < 3; k++) pnt[k] = pos[k];
    }
    crdSys = posSys;
    /* The mask travels as an unsigned value; a negative one (a host that
     * wants the satellites below the horizon too, down to -90) arrives
     * in two's complement and is read back as the signed value it was. */
    umMask = (double)(int32_t)mask;
}

/*
 * The propagations append GLONASS first, then GPS. Nothing is predicted
 * before the user position is known: the list comes back empty, stamped
 * with the time asked for.
 */
lsttblPrgSat* prgns_t::get(tblAlmGlo_t* glo, tblAlmGps_t* gps, unsigned int t,
                           int dtLs) {
    prg->numPrg = 0;
    prg->tm = t;
    if (pntSet == 0) return prg;
    if (glo != nullptr) prgnsAlmnGlo(glo, t, prg);
    if (gps != nullptr) prgnsAlmnGps(gps, dtLs, t, prg);
    return prg;
}

lsttblPrgSat* prgns_t::get(tblAlmGlo_t* glo, tblAlmGps_t* gps,
                           tblTmPrmGps_t* tp, unsigned int t) {
    prg->numPrg = 0;
    prg->tm = t;
    if (pntSet == 0) return prg;
    if (glo != nullptr) prgnsAlmnGlo(glo, t, prg);
    if (gps != nullptr && tp != nullptr) prgnsAlmnGps(gps, tp, t, prg);
    return prg;
}

/*
 * The epoch of a converter list is the time of its first GLONASS
 * satellite, else of its first GPS one; a list with neither leaves the
 * prediction empty with no time. The GPS time parameters go through a
 * table of this call alone: GPS is predicted only when this very list
 * delivered (or re-delivered) the almanac's time parameters.
 */
void prgns_t::get(lsttblSat_t* lst) {
    prg->numPrg = 0;
    prg->tm = 0;
    unsigned int t;
    if (lst->numGlo > 0)
        t = lst->tblGlo[0].tblObs->tmZel;
    else if (lst->numGps > 0)
        t = lst->tblGps[0].tblObs->tmZel;
    else
        return;
    prg->tm = t;
    tblAlmGlo_t* glo = getAlmanGlo(lst);
    tblTmPrmGps_t tp;
    std::memset(&tp, 0, sizeof tp);
    tp.length = ZEL_LEN_TMPRMGPS;
    tblAlmGps_t* gps = getAlmanGps(lst, &tp);
    get(glo, gps, &tp, t);
}
