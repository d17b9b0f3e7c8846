/*
 * Diagnostic printing of the decoded tables of one satellite.
 *
 * Each operation writes a few short lines to standard output, every line
 * beginning with "p " and the record's type name, so that the text of a
 * run can be filtered out of other output with a grep. The printer holds
 * no state; nothing inside the library calls it, it is there for a host
 * or a tool that wants to see what the converter produced.
 *
 * Only identity, validity and a few telling fields are printed, not whole
 * records: the aim is to see at a glance which tables a satellite has and
 * whether they are valid, not to dump them.
 */
#ifndef ZELNAV_PRNT_TBL_H
#define ZELNAV_PRNT_TBL_H

#include "tbl_nav.h"
#include "tbl_sat.h"

class prntTbl_t {
public:
    static void tblHdr(const tblHdr_t* t);
    /* Signal places 0 to 3 only; the reserved place 4 is never filled by
     * the converter and is not printed. */
    static void tblObs(const tblObs_t* t);
    static void tblAddInf(const tblAddInf_t* t);

    /* The GLONASS navigation tables come in pairs by source: `pair`
     * points at the CT table pointer, followed by the VT one (the
     * tblOprGlo / tblTmPrmGlo arrays of a tblSatGlo). */
    static void tblOprGlo(tblOprGlo_t* const* pair);
    static void tblTmPrmGlo(tblTmPrmGlo_t* const* pair);
    /* One line per almanac entry follows the table line only when the
     * table is valid. */
    static void tblAlmGlo(const tblAlmGlo_t* t);

    static void tblOprGps(const tblOprGps_t* t);
    static void tblTmPrmGps(const tblTmPrmGps_t* t);
    static void tblAlmGps(const tblAlmGps_t* t);
    static void tblIonGps(const tblIonGps_t* t);

    /* A whole set: header and observations of a GLONASS satellite;
     * header and almanac of a GPS satellite (its observations are left
     * out on purpose, the almanac being what one looks for there). */
    static void tblSatGlo(const ::tblSatGlo* set);
    static void tblSatGps(const ::tblSatGps* set);
};

#endif
