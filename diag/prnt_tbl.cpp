/*
 * Table printing. Integer fields are widened to int or unsigned int and
 * floating fields passed as double, so the formats below are the whole
 * story of what a line looks like.
 */
#include "diag/prnt_tbl.h"

#include <cstdio>

/* Names of the signal places 0..3, in place order. */
static const char* const kSigName[4] = {"C1", "C2", "B1", "B2"};

void prntTbl_t::tblHdr(const tblHdr_t* t) {
    std::fprintf(stdout,
                 "p tblHdr_t length:%03d num:%02d lit:%02d sys:%02d "
                 "badNavInfCt:%02d badNavInfVt:%02d\n",
                 (int)t->length, (int)t->num, (int)t->lit, (int)t->sys,
                 (int)t->badNavInfCt, (int)t->badNavInfVt);
}

void prntTbl_t::tblObs(const tblObs_t* t) {
    std::fprintf(stdout, "p tblObs_t length:%03d tmZel:%06x \n",
                 (int)t->length, (unsigned int)t->tmZel);
    for (int k = 0; k < 4; k++) {
        std::fprintf(stdout, "%2s ", kSigName[k]);
        if (t->actual[k] != 0) {
            std::fprintf(stdout,
                         "actual:%02d psvd:%15.3f dop:%5.3f faze:%15.3f "
                         "ampl:%03u\n",
                         (int)t->actual[k], (double)t->psvd[k],
                         (double)t->dop[k], (double)t->faze[k],
                         (unsigned int)t->ampl[k]);
        } else {
            std::fprintf(stdout, "actual:%02d\n", 0);
        }
    }
}

void prntTbl_t::tblAddInf(const tblAddInf_t* t) {
    std::fprintf(stdout, "p tblAddInf_t length:%03d actual:%02d\n",
                 (int)t->length, (int)t->actual);
}

void prntTbl_t::tblOprGlo(tblOprGlo_t* const* pair) {
    for (int src = 0; src < 2; src++)
        std::fprintf(stdout, "p tblOprGlo_t length:%03d actual:%02d\n",
                     (int)pair[src]->length, (int)pair[src]->actual);
}

void prntTbl_t::tblTmPrmGlo(tblTmPrmGlo_t* const* pair) {
    for (int src = 0; src < 2; src++)
        std::fprintf(stdout, "p tblTmPrmGlo_t length:%03d actual:%02d\n",
                     (int)pair[src]->length, (int)pair[src]->actual);
}

void prntTbl_t::tblAlmGlo(const tblAlmGlo_t* t) {
    std::fprintf(stdout,
                 "p tblAlmGlo_t length:%03d actual:%02d na:%05u n4:%03u\n",
                 (int)t->length, (int)t->actual, (unsigned int)t->na,
                 (unsigned int)t->n4);
    if (t->actual == 0) return;
    for (int i = 0; i < ZEL_NUM_ALM_GLO; i++) {
        const tblAlmGloSat_t* a = &t->alm[i];
        std::fprintf(stdout,
                     "onErrData:%02d onEmpty:%02d onSystem:%02d num:%02d "
                     "lit:%02d lambda:%f lambdaT:%f dI:%f\n",
                     (int)a->onErrData, (int)a->onEmpty, (int)a->onSystem,
                     (int)a->num, (int)a->lit, (double)a->lambda,
                     (double)a->lambdaT, (double)a->dI);
    }
}

void prntTbl_t::tblOprGps(const tblOprGps_t* t) {
    std::fprintf(stdout, "p tblOprGps_t length:%03d actual:%02d\n",
                 (int)t->length, (int)t->actual);
}

void prntTbl_t::tblTmPrmGps(const tblTmPrmGps_t* t) {
    std::fprintf(stdout, "p tblTmPrmGps_t length:%03d actual:%02d\n",
                 (int)t->length, (int)t->actual);
}

void prntTbl_t::tblAlmGps(const tblAlmGps_t* t) {
    std::fprintf(stdout, "p tblAlmGps_t length:%03d actual:%02d\n",
                 (int)t->length, (int)t->actual);
    if (t->actual == 0) return;
    /* Health in hexadecimal: the 8-bit page health is a bit field. */
    for (int i = 0; i < ZEL_NUM_ALM_GPS; i++)
        std::fprintf(stdout, "onEmpty:%02x healL:%02x\n",
                     (unsigned int)t->alm[i].onEmpty,
                     (unsigned int)t->alm[i].healL);
}

void prntTbl_t::tblIonGps(const tblIonGps_t* t) {
    std::fprintf(stdout, "p tblIonGps_t length:%03d actual:%02d\n",
                 (int)t->length, (int)t->actual);
}

void prntTbl_t::tblSatGlo(const ::tblSatGlo* set) {
    tblHdr(set->tblHdr);
    tblObs(set->tblObs);
}

void prntTbl_t::tblSatGps(const ::tblSatGps* set) {
    tblHdr(set->tblHdr);
    tblAlmGps(set->tblAlmGps);
}
