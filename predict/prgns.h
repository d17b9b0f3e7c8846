/*
 * prgns_t: almanac prediction of the visible constellation.
 *
 * The object picks one GLONASS almanac and one GPS almanac (with the GPS
 * time parameters that came with it) out of the converter's per-satellite
 * tables and keeps them, keeps the user position and elevation mask, and
 * on request propagates the almanacs to a receiver time and lists the
 * satellites at or above the mask with their azimuth, elevation, signal
 * delay and Doppler.
 *
 * Units: positions Earth-centred Earth-fixed metres, velocities m/s,
 * angles in degrees, times in seconds; geodetic triplets are latitude,
 * longitude, height; topocentric triplets north, up, east.
 *
 * Everything runs on the storage the constructor allocates: the list with
 * room for every satellite of both systems and the three held tables.
 * The file split: prgns.cpp (state, set, clear, get), prgns_alm.cpp
 * (almanac choice), prgns_gps.cpp and prgns_glo.cpp (the propagations),
 * prgns_geom.cpp (geometry).
 */
#ifndef ZELNAV_PREDICT_PRGNS_H
#define ZELNAV_PREDICT_PRGNS_H

#include <stdint.h>

#include "tbl_nav.h"
#include "tbl_prg.h"
#include "tbl_sat.h"

/* Source number meaning "no almanac source held". */
#define PRGNS_NO_SOURCE 1000u

class prgns_t {
public:
    prgns_t();
    ~prgns_t();
    prgns_t(const prgns_t&) = delete;
    prgns_t& operator=(const prgns_t&) = delete;

    /* Empties the list and drops both held almanacs and their sources;
     * the user position, mask and GPS time parameters stay. */
    void clear();

    /* User position: posType 1 = latitude, longitude (degrees), height
     * (m) on the datum posSys (0 WGS-84, 1 PZ-90), else Cartesian metres.
     * mask: elevation mask, whole degrees. Predictions need this first. */
    void set(double* pos, unsigned int posType, unsigned int posSys,
             unsigned int mask);

    /* Newest almanac of the list's satellites (or the held source's while
     * it is as new); the held table, `actual` 0 when there is none. */
    tblAlmGlo_t* getAlmanGlo(lsttblSat_t* lst);
    /* The same for GPS; the time parameters of the satellite whose
     * almanac is taken go to tp (and to the held table; tp may be null). */
    tblAlmGps_t* getAlmanGps(lsttblSat_t* lst, tblTmPrmGps_t* tp);
    tblAlmGps_t* getAlmanGps0(lsttblSat_t* lst);

    /* Source of the held almanac (slot or PRN); -1 while it is not valid. */
    int32_t getNumAlmGlo();
    int32_t getNumAlmGps();

    /* Prediction at receiver time t; dtLs: GPS-UTC seconds. */
    lsttblPrgSat* get(tblAlmGlo_t* glo, tblAlmGps_t* gps, unsigned int t,
                      int dtLs);
    /* The same with the leap seconds of tp (GPS only when tp is given). */
    lsttblPrgSat* get(tblAlmGlo_t* glo, tblAlmGps_t* gps, tblTmPrmGps_t* tp,
                      unsigned int t);
    /* Almanacs from the converter's list, at the time of its epoch. */
    void get(lsttblSat_t* lst);

    /* Propagations; both append to lst. */
    void prgnsAlmnGps(tblAlmGps_t* alm, int dtLs, unsigned int t,
                      lsttblPrgSat* lst);
    void prgnsAlmnGps(tblAlmGps_t* alm, tblTmPrmGps_t* tp, unsigned int t,
                      lsttblPrgSat* lst);
    void prgnsAlmnGlo(tblAlmGlo_t* glo, unsigned int t, lsttblPrgSat* lst);

    /* Geometry. */
    double calcUm(double* sat, double* user);
    double calcDelay(double* sat, double* user);
    double calcDop(double* sat, double* satVel, unsigned char sys,
                   unsigned char lit, double* user);
    double calcAz(double* sat, double* user, unsigned int crdSys);
    void xyz_blh(double* xyz, unsigned int datum, double* blh);
    void blh_xyz(double* blh, unsigned int datum, double* xyz);
    void gcsk_tcsk(double* blh, double* vec, double* top);

    /* Read access for the host side and the tests. */
    lsttblPrgSat* getList() { return prg; }
    const tblTmPrmGps_t* getTmPrmGps() const { return tmPrmGps; }
    const double* getPnt() const { return pnt; }
    double getMask() const { return umMask; }

private:
    /* Appends one predicted satellite when it is at or above the mask. */
    void append(lsttblPrgSat* lst, const double* xyz, const double* vxyz,
                uint8_t num, uint8_t lit, uint8_t sys);
    /* The GPS almanac choice behind getAlmanGps and getAlmanGps0. */
    tblAlmGps_t* takeAlmanGps(lsttblSat_t* lst, tblTmPrmGps_t* tp);

    lsttblPrgSat* prg;
    uint32_t numAlmGlo;
    tblAlmGlo_t* almGlo;
    uint32_t numAlmGps;
    tblAlmGps_t* almGps;
    tblTmPrmGps_t* tmPrmGps;
    uint8_t pntSet;
    double pnt[3];
    uint32_t crdSys;
    double umMask;
};

#endif
