/*
 * crdsat_t: construction, the epoch driver, the receiver reference point
 * and the geodesy entry points on this object's datums.
 *
 * The GPS computation lives in crdsat_gps.cpp, the GLONASS one in
 * crdsat_glo.cpp, the atmosphere in crdsat_atmo.cpp; the transforms
 * themselves are the shared ones of geodesy.cpp.
 */
#include "satpos/crdsat.h"

#include <cstring>

#include "interface/zel_assert.h"
#include "satpos/geodesy.h"

const uint8_t SignalNI[CRDSAT_NUM_LISTS] = {0, 0, 1, 1, 2};

crdsat_t::crdsat_t() : lstCrdSat(), rcvPnt(nullptr) {
    try {
        for (int k = 0; k < CRDSAT_NUM_LISTS; k++) {
            lstCrdSat[k] = new lsttblCrdSat_t();
            lstCrdSat[k]->length = ZEL_LEN_LSTCRDSAT;
            lstCrdSat[k]->tbl = new tblCrdSat_t[ZEL_NUM_CRDSAT]();
            lstCrdSat[k]->num = 0;
            lstCrdSat[k]->tm = 0;
        }
        /* Zeroed, so that `set` reads 0 until setPnt is called. */
        rcvPnt = new rcvPnt_t();
    } catch (...) {
        for (int k = 0; k < CRDSAT_NUM_LISTS; k++) {
            if (lstCrdSat[k]) delete[] lstCrdSat[k]->tbl;
            delete lstCrdSat[k];
        }
        throw;
    }
}

crdsat_t::~crdsat_t() {
    for (int k = 0; k < CRDSAT_NUM_LISTS; k++) {
        delete[] lstCrdSat[k]->tbl;
        delete lstCrdSat[k];
    }
    delete rcvPnt;
}

void crdsat_t::clear() {
    for (int k = 0; k < CRDSAT_NUM_LISTS; k++) {
        lstCrdSat[k]->num = 0;
        lstCrdSat[k]->tm = 0;
    }
}

/*
 * Both systems of one epoch into list 0: GLONASS first (C1 with C2 when
 * both are tracked, standard-accuracy ephemeris), then GPS on C1. A
 * GLONASS row that fails the plausibility bounds is still counted, with
 * `bad` set; a GPS row that fails is not. The converter never lists more
 * than 24 satellites, so the 24 rows are enough.
 */
lsttblCrdSat_t* crdsat_t::get(lsttblSat_t* lst, unsigned int tm, int dUtc) {
    lsttblCrdSat_t* out = lstCrdSat[0];
    out->num = 0;
    for (uint32_t k = 0; k < lst->numGlo; k++) {
        tblSatGlo* s = &lst->tblGlo[k];
        if (calcCrdGlo(tm, s->tblHdr, s->tblObs, s->tblOprGlo[0],
                       &out->tbl[out->num], 0, 1, lst->meteo) == 1)
            out->num++;
    }
    for (uint32_t k = 0; k < lst->numGps; k++) {
        tblSatGps* s = &lst->tblGps[k];
        if (calcCrdGps(tm, dUtc, s->tblHdr, s->tblObs, s->tblOprGps,
                       &out->tbl[out->num], 0, 0, lst->meteo,
                       s->tblIonGps) == 1)
            out->num++;
    }
    if (out->num != 0) out->tm = tm;
    return out;
}

/*
 * The reference point is kept in all four forms: whichever is given, the
 * other three follow through the shared transforms and the datum shift.
 * Two behaviours are kept as they have always been: an unknown datum (with
 * a known form) leaves the point unset and stores nothing, while an
 * unknown form marks the point as set and stores nothing, so the previous
 * coordinates stay in use.
 */
void crdsat_t::setPnt(double* pnt, unsigned int form, unsigned int datum) {
    rcvPnt_t* p = rcvPnt;
    p->set = 0;
    if (form == 1 && datum == 1) {
        std::memcpy(p->blhPZ90, pnt, sizeof p->blhPZ90);
        blh_xyz(p->blhPZ90, 1, p->xyzPZ90);
        PZ90_WGS84(p->xyzPZ90, p->xyzWGS84);
        xyz_blh(p->xyzWGS84, 0, p->blhWGS84);
    } else if (form == 1 && datum == 0) {
        std::memcpy(p->blhWGS84, pnt, sizeof p->blhWGS84);
        blh_xyz(p->blhWGS84, 0, p->xyzWGS84);
        WGS84_PZ90(p->xyzWGS84, p->xyzPZ90);
        xyz_blh(p->xyzPZ90, 1, p->blhPZ90);
    } else if (form == 0 && datum == 1) {
        std::memcpy(p->xyzPZ90, pnt, sizeof p->xyzPZ90);
        xyz_blh(p->xyzPZ90, 1, p->blhPZ90);
        PZ90_WGS84(p->xyzPZ90, p->xyzWGS84);
        xyz_blh(p->xyzWGS84, 0, p->blhWGS84);
    } else if (form == 0 && datum == 0) {
        std::memcpy(p->xyzWGS84, pnt, sizeof p->xyzWGS84);
        xyz_blh(p->xyzWGS84, 0, p->blhWGS84);
        WGS84_PZ90(p->xyzWGS84, p->xyzPZ90);
        xyz_blh(p->xyzPZ90, 1, p->blhPZ90);
    } else if (form == 0 || form == 1) {
        return; /* unknown datum: not set */
    }
    p->set = 1;
}

/* ---- geodesy on the two datums of this object ---- */

void crdsat_t::xyz_blh(double* xyz, unsigned int datum, double* blh) {
    geo::Ellipsoid ell;
    ZEL_ASSERT(geo::datumEllipsoid(datum, &ell), "false", "crdsat",
               "void crdsat_t::xyz_blh(double*, unsigned int, double*)");
    geo::xyz_blh(xyz, ell, blh);
}

void crdsat_t::blh_xyz(double* blh, unsigned int datum, double* xyz) {
    geo::Ellipsoid ell;
    ZEL_ASSERT(geo::datumEllipsoid(datum, &ell), "false", "crdsat",
               "void crdsat_t::blh_xyz(double*, unsigned int, double*)");
    geo::blh_xyz(blh, ell, xyz);
}

void crdsat_t::gcsk_tcsk(double* blh, double* vec, double* top) {
    geo::gcsk_tcsk(blh, vec, top);
}

double crdsat_t::calcUm(double* sat, double* rcv) {
    return geo::calcUm(sat, rcv);
}

double crdsat_t::calcRange(double* a, double* b) {
    return geo::calcRange(a, b);
}

void crdsat_t::PZ90_WGS84(double* in, double* out) {
    geo::PZ90_WGS84(in, out);
}

void crdsat_t::WGS84_PZ90(double* in, double* out) {
    geo::WGS84_PZ90(in, out);
}
