/*
 * Almanacs derived from broadcast ephemerides, for navigation files that
 * come without an almanac: one entry per satellite that has an ephemeris,
 * the others marked empty.
 *
 * GPS: the almanac shares the ephemeris' Keplerian model, so each entry
 * is the satellite's ephemeris moved to the almanac reference time toa
 * (mean anomaly advanced with the mean motion, node with its rate,
 * inclination with its rate, clock bias with its drift) and stripped of
 * the harmonic corrections.
 *
 * GLONASS: the almanac model of the GLONASS interface document describes
 * the orbit by the first ascending node of the almanac day NA: its time
 * t_lambda (s of the Moscow day) and Earth-fixed longitude lambda, the
 * draconic period 43200 s + dT (and its rate dTdot), the inclination
 * 63 deg + dI, the eccentricity eps and the argument of perigee omega; the
 * node regresses and the perigee turns at the rates that the second zonal
 * harmonic gives for that orbit. The conversion from an ephemeris state
 * vector:
 *   1. the state at tb is integrated (central body and second zonal
 *      harmonic, in the Earth-fixed frame) to the ascending node nearest
 *      tb (z = 0, rising), and on over one revolution to the next one: the
 *      time between the two is the draconic period; dTdot is set to 0;
 *   2. eps, omega and the inclination are the averages over that
 *      revolution of the osculating values (eccentricity vector taken in
 *      the frame of the node line), so that the short-period terms of the
 *      second harmonic drop out as they do from the model's mean elements;
 *   3. lambda at that node is the longitude of the satellite as it
 *      crosses the equator;
 *   4. the node is carried back by whole revolutions W to the first one
 *      of day NA with the model's own rates: t_lambda = t_node - W T,
 *      lambda = lambda_node - (Omega' - omega_E) W T,
 *      omega = omega_node - omega' W T, where Omega' and omega' follow from
 *      the semi-major axis that the model derives from T;
 *   5. tauA = tau_n of the ephemeris, the carrier number is the frequency
 *      number (negative ones as number + 32), Cn = 1 when the ephemeris
 *      says the satellite is healthy.
 * gloAlmanacPosition evaluates the model (secular terms, without its
 * short-period corrections), which is how the tests hold the derivation
 * against the ephemeris orbit.
 */
#ifndef ZELNAV_CONVERT_ALM_H
#define ZELNAV_CONVERT_ALM_H

#include <cstdint>

#include "convert_nav.h"
#include "convert_time.h"
#include "tbl_nav.h"

namespace cvt {

/* GPS almanac of all 32 PRNs for a conversion that starts at `gpsT`
 * (seconds since the GPS origin): toa is the first multiple of 4096 s of
 * the week at or after `gpsT`, each entry from the ephemeris on the air at
 * `gpsT` (or the nearest one). */
void gpsAlmanac(const NavData& nav, int64_t gpsT, tblAlmGps_t& out);

/* One GPS entry: `rec` moved to the absolute time toaAbs (GPS seconds
 * since the origin). */
void gpsAlmanacEntry(const GpsRecord& rec, int64_t toaAbs, tblAlmGpsSat_t& out);

/* Frequency number of a slot that has none known. */
const int kNoFreq = 127;

/* GLONASS almanac of slots 1 to 24 for the Moscow day `day` beginning at
 * UTC `dayStartUtc` (seconds since 2000), each entry from the ephemeris on
 * the air at `utcT` (or the nearest one). `freq[slot]` is the frequency
 * number of a slot; a slot without one (kNoFreq) or without an ephemeris
 * is left empty. */
void gloAlmanac(const NavData& nav, int64_t utcT, const GloDay& day, int64_t dayStartUtc,
                const int freq[33], tblAlmGlo_t& out);

/* The orbit part of one GLONASS entry (lambda, lambdaT, dI, dT, dTdot, eps,
 * omega) from an ephemeris whose tb lies `tbSinceDayStart` seconds after
 * the start of the almanac day. */
void gloAlmanacOrbit(const tblOprGlo_t& eph, double tbSinceDayStart, tblAlmGloSat_t& out);

/* Earth-fixed position (m) that the almanac model gives for entry `a` at
 * `t` seconds after the start of its day. */
void gloAlmanacPosition(const tblAlmGloSat_t& a, double t, double xyz[3]);

/* An empty GLONASS entry for slot `slot`: the carrier number 24 that marks
 * an unoccupied slot. */
void gloAlmanacEmpty(unsigned slot, tblAlmGloSat_t& out);

}  // namespace cvt

#endif
