/*
 * zelnav: navigation processor of a GPS + GLONASS receiver.
 *
 * The host drives the library through these functions. Every stateful
 * facility is an object behind an opaque handle (its address, passed as
 * int*); *_init creates it, *_finit destroys it, *_clear resets it. A null
 * handle stops the process with an assertion. Returned records belong to
 * the handle and stay valid until the next call on it that rewrites them.
 */
#ifndef ZELNAV_ZEL_H
#define ZELNAV_ZEL_H

#include "tbl_crd.h"
#include "tbl_flt.h"
#include "tbl_nav.h"
#include "tbl_pnt.h"
#include "tbl_prg.h"
#include "tbl_sat.h"

#if defined(_WIN32)
#define ZEL_API __declspec(dllexport)
#else
#define ZEL_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Message 0x0C converter. */
ZEL_API void* cnvx0c_init(void);
ZEL_API void cnvx0c_finit(int* h);
/* Decodes one complete message 0x0C; returns the handle's lsttblSat_t*. */
ZEL_API void* cnvx0c_upx0c(int* h, void* msg);
/* Returns the handle's tblGpsUtc_t*. */
ZEL_API void* cnvx0c_getTblGpsUtc(int* h);
ZEL_API void cnvx0c_clear(int* h);

/* Time. date: year, month, day, hour, minute, second. */
ZEL_API int tmZelToDate(unsigned int tmZel, unsigned int* date);
/* Epoch time of a list returned by cnvx0c_upx0c; 0 when it is empty. */
ZEL_API unsigned int getTmZel(void* lst);
/* date: year, month, day. */
ZEL_API void DateAlmGloToDate(unsigned int n4, int na, unsigned int* date);

/* Satellite positions and corrected pseudoranges. lst is a lsttblSat_t*
 * as returned by cnvx0c_upx0c; dUtc the GPS-UTC seconds. The results are
 * the handle's lsttblCrdSat_t lists: crdsat_get (both systems, GLONASS on
 * C1/C2 then GPS on C1) and crdsat_getGps fill list 0, crdsat_getGlo fills
 * list sig1. */
ZEL_API void* crdsat_init(void);
ZEL_API void crdsat_finit(int* h);
ZEL_API void* crdsat_get(int* h, void* lst, unsigned int tm, int dUtc);
ZEL_API void* crdsat_getGlo(int* h, void* lst, unsigned int tm, int sig1, int sig2);
ZEL_API void* crdsat_getGps(int* h, void* lst, unsigned int tm, int dUtc);
/* Receiver reference point: form 0 Cartesian (m), 1 geodetic (degrees,
 * degrees, m); datum 0 WGS-84, 1 PZ-90. */
ZEL_API void crdsat_setPnt(int* h, double* pnt, unsigned int form, unsigned int datum);
/* Empties the five lists; rows and reference point stay. */
ZEL_API void crdsat_clear(int* h);

/* Position solution. mode: 0 GLONASS, 1 GPS, 10 both (set before the
 * first get). lst is a lsttblCrdSat_t* as returned by crdsat_get. get and
 * getTau return the handle's tblCrdPnt_t*, getSpd its tblSpdPnt_t*.
 * getTau: GLONASS fix with the receiver clock offset tau (s) given, in mode
 * 0 only. clear keeps the time offset and the velocity. */
ZEL_API void* crdpnt_init(void);
ZEL_API void crdpnt_finit(int* h);
ZEL_API void crdpnt_set(int* h, int mode);
ZEL_API void* crdpnt_get(int* h, void* lst);
ZEL_API void* crdpnt_getSpd(int* h);
ZEL_API void* crdpnt_getTau(int* h, void* lst, double tau);
ZEL_API void crdpnt_clear(int* h);

/* Almanac prediction of the visible satellites. The almanacs are taken
 * from a converter list (lst: lsttblSat_t* from cnvx0c_upx0c): the newest
 * one of each system, kept from the same satellite while it stays as new.
 * The results are the handle's own tables: tblAlmGlo_t*, tblAlmGps_t* and
 * the prediction list lsttblPrgSat*. */
ZEL_API void* prgns_init(void);
ZEL_API void prgns_finit(int* h);
/* The held GLONASS almanac (tblAlmGlo_t*); `actual` 0 when lst offers none. */
ZEL_API void* prgns_getAlmanGlo(int* h, void* lst);
/* The held GPS almanac (tblAlmGps_t*); the time parameters that came with
 * it are copied to tp (tblTmPrmGps_t*) when it is taken. */
ZEL_API void* prgns_getAlmanGps(int* h, void* lst, void* tp);
ZEL_API void* prgns_getAlmanGps0(int* h, void* lst);
/* Prediction at receiver time t from the almanacs glo (tblAlmGlo_t*) and
 * gps (tblAlmGps_t*), either may be null; get0 takes the GPS-UTC seconds
 * from tp (no GPS without it), get2 as dtLs. get1 takes both almanacs from
 * a converter list at the time of its epoch. Each returns the list. */
ZEL_API void* prgns_get0(int* h, void* glo, void* gps, void* tp, unsigned int t);
ZEL_API void* prgns_get1(int* h, void* lst);
ZEL_API void* prgns_get2(int* h, void* glo, void* gps, unsigned int t, int dtLs);
/* User position and mask: posType 1 = latitude, longitude (degrees),
 * height (m), else X, Y, Z (m); posSys 0 WGS-84, 1 PZ-90; mask in whole
 * degrees. Nothing is predicted before this is called. */
ZEL_API void prgns_set(int* h, double* pos, unsigned int posType, unsigned int posSys,
                       unsigned int mask);
/* Empties the list and drops both almanacs; position and mask stay. */
ZEL_API void prgns_clear(int* h);
/* Slot / PRN of the satellite the held almanac came from; 255 when the
 * held almanac is not valid. */
ZEL_API unsigned char prgns_getnumalmglo(int* h);
ZEL_API unsigned char prgns_getnumalmgps(int* h);

/* Filtering: observation smoothing, static averaging, position filter. */
ZEL_API void* filter_init(void);
ZEL_API void filter_finit(int* h);
/* Starts the averaging of a receiver at rest. k: end gains of X, Y, Z,
 * clock and time offset (the last only in mode 10); nMax: epochs over
 * which the gain falls to k; dopMax: DOP limit in whole units; mode: 0
 * GLONASS, 1 GPS, 10 both. Returns 0, or -1..-8 for a rejected argument
 * (plain char, signed on the x86 ABIs; read it as signed char). */
ZEL_API char initStatic(int* h, double* pos, unsigned int t0, double* k, unsigned int nMax,
                        unsigned int dopMax, unsigned char mode);
/* Averages one solution in; 0 when `rec` was rewritten with the average,
 * -1..-8 otherwise. */
ZEL_API char staticFilter(int* h, tblCrdPnt_t* rec, unsigned int t);
/* Smooths the GLONASS observations of the list in place. */
ZEL_API void KalmanFilterObs0(int* h, lsttblSat_t* lst);
/* Smooths the GLONASS observations; returns the lsttblKalmanObs_t* of the
 * handle. */
ZEL_API void* KalmanFilterObs(int* h, lsttblSat_t* lst);
/* Filters the position solution of epoch t; returns the tblCrdPnt_t* of
 * the handle. */
ZEL_API void* KalmanFilterCrdPnt0(int* h, unsigned int t, tblCrdPnt_t* rec);

/* Integrity monitor. raimComb solves `lst` (a lsttblCrdSat_t of one
 * epoch) with every usable row and, when that fix fails its limits, with
 * every set that leaves one row out. pnt: in, the previous fix (its DOP is
 * the reference); out, the accepted fix, or actual 0. maxSpd: largest
 * acceptable speed of a fix, m/s; mode: 0 GLONASS, 1 GPS, 10 both. Returns
 * 0 (accepted), -32 (no acceptable exclusion) or -128 (fewer than 6 usable
 * rows); the excluded rows are left with bad = 1.
 * raimStats keeps 30 seconds of residuals per satellite against the fix
 * `pnt` and sets bad = 1 on rows whose mean exceeds 50 m or whose scatter
 * exceeds 18 m; it returns 0.0.
 * raimTau judges the GPS-GLONASS offset of a combined fix against its
 * last 30 seconds and returns the offset judged (0.0 when pnt is not a
 * combined fix).
 * raimSat screens the converter list `lst` (lsttblSat_t*) before the fix:
 * satellites below umMin (degrees) by the prediction `prg` (lsttblPrgSat*;
 * null: by the elevations the receiver reported) lose their observations
 * (every actual 0); then the receiver clock jump of second t is checked
 * and the clock shift dtShift (s) removed from the pseudoranges. mode: 0
 * GLONASS, 1 GPS, 10 both, anything else does nothing. Against a
 * prediction, a GLONASS satellite is kept only when it is the first entry
 * of the list; without one, GPS entry i is judged by the elevation of
 * GLONASS entry i. */
ZEL_API void* raim_init(void);
ZEL_API void raim_finit(int* h);
ZEL_API void raimSat(int* h, void* lst, void* prg, unsigned int t, double umMin, double dtShift,
                     unsigned int mode);
ZEL_API int raimComb(int* h, lsttblCrdSat_t* lst, tblCrdPnt_t* pnt, double maxSpd, int mode);
ZEL_API double raimTau(int* h, lsttblCrdSat_t* lst, tblCrdPnt_t* pnt);
ZEL_API double raimStats(int* h, lsttblCrdSat_t* lst, tblCrdPnt_t* pnt);


#ifdef __cplusplus
}
#endif

#endif
