/*
 * Filtering facility: construction and the observation smoothing.
 *
 * Only GLONASS satellites are smoothed. Trackers are matched to table sets
 * by system and satellite number; a tracker whose satellite is absent from
 * an epoch is cleared at once, so a one-epoch dropout costs the smoothing.
 */
#include "filter.h"

#include <cstring>
#include <new>

Filter_t::Filter_t() : lastObs(nullptr), stat(nullptr), pnt(nullptr), pntOut(nullptr) {
    for (int j = 0; j < FILTER_NUM_OBS; j++) obs[j] = nullptr;
    lstObs.reserved = 0;
    lstObs.tbl = nullptr;
    lstObs.num = 0;
    try {
        for (int j = 0; j < FILTER_NUM_OBS; j++) obs[j] = new KalmanObs_t;
        lstObs.tbl = new tblKalmanObs_t[FILTER_NUM_OBS];
        std::memset(lstObs.tbl, 0, sizeof(tblKalmanObs_t) * FILTER_NUM_OBS);
        stat = new Static_t;
        pnt = new PntState;
        std::memset(pnt, 0, sizeof *pnt);
        pntOut = new tblCrdPnt_t;
        std::memset(pntOut, 0, sizeof *pntOut);
        pntOut->length = ZEL_LEN_CRDPNT;
    } catch (...) {
        release();
        throw;
    }
}

Filter_t::~Filter_t() { release(); }

void Filter_t::release() {
    for (int j = 0; j < FILTER_NUM_OBS; j++) {
        delete obs[j];
        obs[j] = nullptr;
    }
    delete[] lstObs.tbl;
    lstObs.tbl = nullptr;
    delete stat;
    stat = nullptr;
    delete pnt;
    pnt = nullptr;
    delete pntOut;
    pntOut = nullptr;
}

/* Same satellite: system and number of the tracker and the set's header. */
static bool sameSat(const KalmanObs_t* o, const tblSatGlo& s) {
    return o->GetSys() == s.tblHdr->sys && o->GetNum() == s.tblHdr->num;
}

void Filter_t::KalmanObs0(lsttblSat_t* lst) {
    /* Step 1: feed each set to its tracker, or bind a free one. The
     * receiver's additional information must confirm the first signal
     * before a bound tracker takes the epoch; when it does not, the set
     * counts as unmatched and is bound to a second tracker if one is free
     * (the first one then loses its satellite in step 2). */
    for (unsigned int i = 0; i < lst->numGlo; i++) {
        const tblSatGlo& s = lst->tblGlo[i];
        const bool confirmed = s.tblAddInf->actual == 1 && s.tblAddInf->present[0] != 0;
        bool done = false;
        for (int j = 0; j < FILTER_NUM_OBS && !done; j++) {
            if (obs[j]->GetActual() == 1 && sameSat(obs[j], s) && confirmed) {
                obs[j]->Update(s.tblObs);
                done = true;
            }
        }
        for (int j = 0; j < FILTER_NUM_OBS && !done; j++) {
            if (obs[j]->GetActual() != 1) {
                obs[j]->Init(s.tblHdr, s.tblObs);
                done = true;
            }
        }
    }

    /* Step 2: write the estimates back; a tracker whose satellite did not
     * take part at this very epoch is cleared. */
    for (int j = 0; j < FILTER_NUM_OBS; j++) {
        if (obs[j]->GetActual() != 1) continue;
        tblObs_t* match = nullptr;
        for (unsigned int i = 0; i < lst->numGlo && match == nullptr; i++) {
            const tblSatGlo& s = lst->tblGlo[i];
            if (sameSat(obs[j], s) && s.tblObs->tmZel == obs[j]->GetTime()) match = s.tblObs;
        }
        if (match == nullptr) {
            obs[j]->Clear();
            continue;
        }
        const tblKalmanObs_t* t = obs[j]->GetObs();
        lastObs = t;
        for (int p = 0; p < ZEL_NUM_SIG; p++) {
            if (t->psvd[p].actual == 1) match->psvd[p] = t->psvd[p].x;
            if (t->dop[p].actual == 1) match->dop[p] = t->dop[p].x;
            if (t->faze[p].actual == 1) match->faze[p] = t->faze[p].x;
        }
    }
}

lsttblKalmanObs_t* Filter_t::KalmanObs(lsttblSat_t* lst) {
    lstObs.num = 0;

    /* Feed each set to its tracker. A satellite without one takes every
     * free tracker at once; the output then carries it once per tracker,
     * and satellites that appear later find none free until it leaves. */
    for (unsigned int i = 0; i < lst->numGlo; i++) {
        const tblSatGlo& s = lst->tblGlo[i];
        bool done = false;
        for (int j = 0; j < FILTER_NUM_OBS && !done; j++) {
            if (obs[j]->GetActual() == 1 && sameSat(obs[j], s)) {
                obs[j]->Update(s.tblObs);
                done = true;
            }
        }
        if (done) continue;
        for (int j = 0; j < FILTER_NUM_OBS; j++)
            if (obs[j]->GetActual() != 1) obs[j]->Init(s.tblHdr, s.tblObs);
    }

    /* Copy out every tracker whose satellite is present (at any time);
     * clear the others. */
    for (int j = 0; j < FILTER_NUM_OBS; j++) {
        if (obs[j]->GetActual() != 1) continue;
        bool present = false;
        for (unsigned int i = 0; i < lst->numGlo && !present; i++)
            present = sameSat(obs[j], lst->tblGlo[i]);
        if (!present) {
            obs[j]->Clear();
            continue;
        }
        std::memcpy(&lstObs.tbl[lstObs.num], obs[j]->GetObs(), sizeof(tblKalmanObs_t));
        lstObs.num++;
    }
    return &lstObs;
}
