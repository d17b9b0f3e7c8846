/*
 * raim_t: construction, clearing and destruction.
 *
 * The snapshot test lives in raim_comb.cpp, the 30-second statistics in
 * raim_stats.cpp and the clock checks in raim_time.cpp.
 */
#include "integrity/raim.h"

#include <cstring>

/*
 * clear() leaves the pseudorange rings, probInteg, devNorm, statValid and
 * the clock-check area as they are, so the constructor zeroes the whole
 * state first: a fresh monitor has no statistics to judge by and no clock
 * history.
 */
raim_t::raim_t() : flag(0), crdpnt(nullptr) {
    std::memset(fact, 0, sizeof fact);
    std::memset(blk, 0, sizeof blk);
    std::memset(tmBlk, 0, sizeof tmBlk);
    clear();
    crdpnt = new crdpnt_t;
}

raim_t::~raim_t() {
    clear();
    delete crdpnt;
}

void raim_t::clear() {
    for (int i = 0; i < RAIM_NUM_BLK; i++) {
        raimSatBlk_t& b = blk[i];
        b.jump = 0.0;
        std::memset(b.tag, 0, sizeof b.tag);
        std::memset(b.resid, 0, sizeof b.resid);
        b.mean = 0.0;
        b.sigma = 0.0;
        b.meanSq = 0.0;
    }
    flag = 0;
    fact[0] = 1;
    for (int k = 1; k <= 20; k++) fact[k] = fact[k - 1] * (uint64_t)k;
}
