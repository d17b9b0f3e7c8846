/*
 * A converter list built by hand: GLONASS (and GPS) table sets whose
 * tables live in this object, for driving the smoothers without messages.
 */
#ifndef ZELNAV_TESTS_GLO_LIST_H
#define ZELNAV_TESTS_GLO_LIST_H

#include <cstring>

#include "tbl_sat.h"

struct GloList {
    tblHdr_t hdr[2 * ZEL_NUM_SLOTS];
    tblObs_t obs[2 * ZEL_NUM_SLOTS];
    tblAddInf_t add[2 * ZEL_NUM_SLOTS];
    lsttblSat_t lst;
    unsigned int used = 0;

    GloList() {
        std::memset(hdr, 0, sizeof hdr);
        std::memset(obs, 0, sizeof obs);
        std::memset(add, 0, sizeof add);
        std::memset(&lst, 0, sizeof lst);
    }

    /* Adds a satellite whose places 0 and 1 carry psvd, psvd + 1 m,
     * dop, faze; returns its observation table for further changes. */
    tblObs_t* glo(unsigned char num, unsigned int t, double psvd, double dop = -500.0,
                  double faze = 1.0e6) {
        const unsigned int i = used++;
        hdr[i].length = 28;
        hdr[i].num = num;
        hdr[i].sys = 0;
        obs[i].length = 156;
        obs[i].tmZel = t;
        for (int p = 0; p < 2; p++) {
            obs[i].actual[p] = 1;
            obs[i].psvd[p] = psvd + p;
            obs[i].dop[p] = dop;
            obs[i].faze[p] = faze + p;
        }
        add[i].length = 60;
        add[i].actual = 1;
        add[i].present[0] = 1;
        tblSatGlo& s = lst.tblGlo[lst.numGlo++];
        s.tblHdr = &hdr[i];
        s.tblObs = &obs[i];
        s.tblAddInf = &add[i];
        return &obs[i];
    }

    /* Adds a GPS set (never smoothed). */
    tblObs_t* gps(unsigned char num, unsigned int t, double psvd) {
        const unsigned int i = used++;
        hdr[i].num = num;
        hdr[i].sys = 1;
        obs[i].tmZel = t;
        obs[i].actual[0] = 1;
        obs[i].psvd[0] = psvd;
        add[i].actual = 1;
        add[i].present[0] = 1;
        tblSatGps& s = lst.tblGps[lst.numGps++];
        s.tblHdr = &hdr[i];
        s.tblObs = &obs[i];
        s.tblAddInf = &add[i];
        return &obs[i];
    }

    tblAddInf_t* addInf(unsigned int k) { return lst.tblGlo[k].tblAddInf; }
};

#endif
