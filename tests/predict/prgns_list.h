/*
 * A converter list built by hand for the almanac choice: GLONASS and GPS
 * table sets with header, observations, almanac and (GPS) time parameters,
 * each almanac stamped with its age so that the choice can be followed.
 */
#ifndef ZELNAV_TESTS_PREDICT_PRGNS_LIST_H
#define ZELNAV_TESTS_PREDICT_PRGNS_LIST_H

#include <cstring>
#include <vector>

#include "tbl_nav.h"
#include "tbl_sat.h"

struct AlmList {
    /* Tables of one satellite; every table set of the list points here. */
    struct Sat {
        tblHdr_t hdr;
        tblObs_t obs;
        tblAddInf_t add;
        tblOprGlo_t oprGlo[3];
        tblTmPrmGlo_t tmpGlo[3];
        tblAlmGlo_t almGlo[3];
        tblOprGps_t oprGps;
        tblTmPrmGps_t tmpGps;
        tblAlmGps_t almGps;
        tblIonGps_t ion;
    };
    std::vector<Sat> sats;
    lsttblSat_t lst;

    AlmList() : sats(2 * ZEL_NUM_SLOTS) {
        std::memset(sats.data(), 0, sats.size() * sizeof(Sat));
        std::memset(&lst, 0, sizeof lst);
    }

    /* A GLONASS satellite whose CT almanac has date (n4, na), valid
     * unless `valid` is false; its first Doppler is dop. Its almanac
     * carries `mark` in tmResived, to tell the copies apart. */
    tblAlmGlo_t* glo(unsigned char num, unsigned n4, unsigned na, double dop, unsigned t = 1000,
                     bool valid = true, unsigned mark = 0) {
        Sat& s = next();
        fill(s, num, 0, dop, t);
        tblAlmGlo_t& a = s.almGlo[0];
        a.length = ZEL_LEN_ALMGLO;
        a.actual = valid ? 1 : 0;
        a.n4 = n4;
        a.na = na;
        a.tmResived = mark;
        tblSatGlo& g = lst.tblGlo[lst.numGlo++];
        g.tblHdr = &s.hdr;
        g.tblObs = &s.obs;
        g.tblAddInf = &s.add;
        for (int k = 0; k < 3; k++) {
            g.tblOprGlo[k] = &s.oprGlo[k];
            g.tblTmPrmGlo[k] = &s.tmpGlo[k];
            g.tblAlmGlo[k] = &s.almGlo[k];
        }
        return &a;
    }

    /* A GPS satellite whose almanac has week wna and reference time toa,
     * with time parameters whose leap seconds are `leap`. */
    tblAlmGps_t* gps(unsigned char num, unsigned wna, unsigned toa, double dop, unsigned t = 1000,
                     bool valid = true, unsigned mark = 0, int leap = 18) {
        Sat& s = next();
        fill(s, num, 1, dop, t);
        tblAlmGps_t& a = s.almGps;
        a.length = ZEL_LEN_ALMGPS;
        a.actual = valid ? 1 : 0;
        a.wna = wna;
        a.toa = toa;
        a.tmResived = mark;
        s.tmpGps.length = ZEL_LEN_TMPRMGPS;
        s.tmpGps.actual = 1;
        s.tmpGps.dtLs = leap;
        s.tmpGps.tot = mark;
        tblSatGps& g = lst.tblGps[lst.numGps++];
        g.tblHdr = &s.hdr;
        g.tblObs = &s.obs;
        g.tblAddInf = &s.add;
        g.tblOprGps = &s.oprGps;
        g.tblTmPrmGps = &s.tmpGps;
        g.tblAlmGps = &s.almGps;
        g.tblIonGps = &s.ion;
        return &a;
    }

    /* Back to an empty list (the tables stay allocated). */
    void reset() {
        std::memset(sats.data(), 0, sats.size() * sizeof(Sat));
        std::memset(&lst, 0, sizeof lst);
        used = 0;
    }

private:
    Sat& next() { return sats[used++]; }
    static void fill(Sat& s, unsigned char num, unsigned char sys, double dop, unsigned t) {
        s.hdr.length = ZEL_LEN_HDR;
        s.hdr.num = num;
        s.hdr.sys = sys;
        s.obs.length = ZEL_LEN_OBS;
        s.obs.tmZel = t;
        s.obs.actual[0] = 1;
        s.obs.dop[0] = dop;
    }
    unsigned used = 0;
};

#endif
