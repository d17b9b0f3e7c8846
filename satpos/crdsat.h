/*
 * crdsat_t: satellite positions and corrected pseudoranges of one epoch.
 *
 * The object owns five result lists, one per signal index (list k is the
 * one getGlo fills for signal k; get and getGps fill list 0), and the
 * receiver reference point that the atmospheric corrections need. For
 * every usable satellite of a converter list it computes the position and
 * velocity at signal emission in the Earth-fixed frame of the reception
 * instant (WGS-84 for GPS, PZ-90 for GLONASS) and the pseudorange
 * corrected for the satellite clock, relativity and the atmosphere.
 *
 * Everything runs on the fixed storage allocated by the constructor.
 */
#ifndef ZELNAV_SATPOS_CRDSAT_H
#define ZELNAV_SATPOS_CRDSAT_H

#include <stdint.h>

#include "tbl_crd.h"
#include "tbl_nav.h"
#include "tbl_sat.h"

/* Lists held by one crdsat_t: one per signal index. */
#define CRDSAT_NUM_LISTS 5

/* The receiver reference point, kept in all four forms at once. */
struct rcvPnt_t {
    uint8_t set;          /* 1 once setPnt has given the point */
    double blhPZ90[3];    /* degrees, degrees, m on PZ-90 */
    double xyzPZ90[3];    /* m */
    double blhWGS84[3];   /* degrees, degrees, m on WGS-84 */
    double xyzWGS84[3];   /* m */
};

/* Navigation source (ephemeris index of tblSatGlo) of each signal index:
 * C1 and C2 use the standard-accuracy strings, B1 and B2 the
 * high-accuracy ones, the fifth signal the third source. */
extern const uint8_t SignalNI[CRDSAT_NUM_LISTS];

class crdsat_t {
public:
    crdsat_t();
    ~crdsat_t();
    crdsat_t(const crdsat_t&) = delete;
    crdsat_t& operator=(const crdsat_t&) = delete;

    /* Empties all five lists (num and tm to 0); rows and point stay. */
    void clear();

    /* One epoch, both systems, into list 0: GLONASS rows on C1/C2 from the
     * standard-accuracy ephemeris, then GPS rows on C1. */
    lsttblCrdSat_t* get(lsttblSat_t* lst, unsigned int tm, int dUtc);
    /* GPS rows on C1 into list 0. */
    lsttblCrdSat_t* getGps(lsttblSat_t* lst, unsigned int tm, int dUtc);
    /* GLONASS rows on the signal pair (sig1, sig2) into list sig1. */
    lsttblCrdSat_t* getGlo(lsttblSat_t* lst, unsigned int tm, int sig1,
                           int sig2);

    /* Receiver reference point: form 0 Cartesian, 1 geodetic; datum 0
     * WGS-84, 1 PZ-90. */
    void setPnt(double* pnt, unsigned int form, unsigned int datum);

    /* One satellite; 1 when `out` holds a row (GPS: a plausible one). */
    int calcCrdGps(unsigned int tm, int dUtc, tblHdr_t* hdr, tblObs_t* obs,
                   tblOprGps_t* opr, tblCrdSat_t* out, int sig1, int sig2,
                   tblMeteo* meteo, tblIonGps_t* ion);
    int calcCrdGlo(unsigned int tm, tblHdr_t* hdr, tblObs_t* obs,
                   tblOprGlo_t* opr, tblCrdSat_t* out, int sig1, int sig2,
                   tblMeteo* meteo);
    /* GLONASS equations of motion in the inertial frame at `r`. */
    void calc_F(double* r, double* accLS, double* acc);

    /* Eccentric anomaly by Newton; passes taken (1..9), 0 when refused. */
    static int keplerE(double M, double e, double* E);
    /* Number of GLONASS integration steps over tau seconds. */
    static int gloSteps(double tau);

    /* Single-frequency ionospheric delay, s. */
    double calcKlobuchara(double* alpha, double* beta, double* sat,
                          double* rcvXyz, double* rcvBlh, unsigned int tl);
    /* Tropospheric delay, m, for elevation `el` (degrees) and range R. */
    double calcTrop(tblMeteo* meteo, double el, double R);

    /* Geodesy on this object's datums; an unknown datum asserts. */
    void xyz_blh(double* xyz, unsigned int datum, double* blh);
    void blh_xyz(double* blh, unsigned int datum, double* xyz);
    void gcsk_tcsk(double* blh, double* vec, double* top);
    double calcUm(double* sat, double* rcv);
    double calcRange(double* a, double* b);
    void PZ90_WGS84(double* in, double* out);
    void WGS84_PZ90(double* in, double* out);

    /* Read access for the users of the results. */
    lsttblCrdSat_t* getList(int k) { return lstCrdSat[k]; }
    const rcvPnt_t* getPnt() const { return rcvPnt; }

private:
    lsttblCrdSat_t* lstCrdSat[CRDSAT_NUM_LISTS];
    rcvPnt_t* rcvPnt;
};

#endif
