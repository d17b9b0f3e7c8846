/*
 * crdpnt_t: construction, mode, clearing, the epoch entry point and the
 * datum shift.
 *
 * The selections live in crdpnt_select.cpp, the position solvers in
 * crdpnt_solve.cpp, the fixed-clock GLONASS fix in crdpnt_tau.cpp, the
 * velocity in crdpnt_spd.cpp and the linear algebra in crdpnt_lsolve.cpp.
 */
#include "solution/crdpnt.h"

#include <cstring>

#include "satpos/geodesy.h"
#include "solution/crdpnt_math.h"

/* The mode is left unset on purpose: the host chooses it with set()
 * before the first get(). It is stored as -1 here, which get() treats like
 * any other unknown mode (no solution), instead of leaving it undefined. */
crdpnt_t::crdpnt_t() : pnt(nullptr), mode(-1), spd(nullptr) {
    pnt = new tblCrdPnt_t();
    try {
        spd = new tblSpdPnt_t();
    } catch (...) {
        delete pnt;
        throw;
    }
    pnt->length = ZEL_LEN_CRDPNT;
    pnt->tau = 0.0;
    spd->length = ZEL_LEN_SPDPNT;
    spd->actual = 0;
}

crdpnt_t::~crdpnt_t() {
    delete pnt;
    delete spd;
}

void crdpnt_t::set(int m) {
    mode = m;
}

/* The time offset survives a clear: it changes slowly, and a host that
 * restarts the fix still wants the last estimate. The velocity record is
 * likewise left to its own `actual` flag. */
void crdpnt_t::clear() {
    pnt->actual = 0;
    pnt->sys = 0;
    pnt->numGlo = 0;
    std::memset(pnt->lstGlo, 0, sizeof pnt->lstGlo);
    pnt->numGps = 0;
    std::memset(pnt->lstGps, 0, sizeof pnt->lstGps);
    pnt->xyz[0] = pnt->xyz[1] = pnt->xyz[2] = 0.0;
    pnt->dt = 0.0;
    pnt->dop10 = 0;
}

tblCrdPnt_t* crdpnt_t::get(lsttblCrdSat_t* lst) {
    pnt->actual = 0;
    switch (mode) {
    case CRDPNT_MODE_GLO:
        clcCrdPntGlo(lst, pnt);
        break;
    case CRDPNT_MODE_GPS:
        clcCrdPntGps(lst, pnt);
        break;
    case CRDPNT_MODE_GLOGPS:
        clcCrdPntGloGps(lst, pnt);
        break;
    default:
        break;
    }
    return pnt;
}

double crdpnt_t::omegaEOfMode() const {
    return mode == CRDPNT_MODE_GPS ? crdpnt_math::kOmegaGps
                                   : crdpnt_math::kOmegaGlo;
}

void crdpnt_t::WGS84_PZ90(double* in, double* out) {
    geo::WGS84_PZ90(in, out);
}

void crdpnt_t::PZ90_WGS84(double* in, double* out) {
    geo::PZ90_WGS84(in, out);
}
