/*
 * The clock checks on the real sample log: its pseudoranges move as real
 * satellites do, with real code noise, under a steered receiver clock
 * that never jumps. Nothing may be flagged there; a millisecond step of
 * the GLONASS channels, added to the log, must be found at its second,
 * and a step of the GLONASS pseudoranges shows up in the time offset of
 * the combined fixes.
 */
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "integrity/raim.h"
#include "solve_pipeline.h"
#include "zlog.h"

namespace {

const std::string kLog = std::string(ZELNAV_DATA_DIR) + "/tlse-2024-001/tlse_1200_5min.zlog";
const double kC = 299792458.0;

std::vector<zlog::Record> readLog(zlog::FileHeader* hdr) {
    zlog::Reader rd;
    EXPECT_TRUE(rd.open(kLog)) << kLog;
    *hdr = rd.header();
    std::vector<zlog::Record> out;
    zlog::Record r;
    while (rd.next(r)) out.push_back(r);
    return out;
}

/* Runs the converter over the log, adding `step` metres to the C1
 * pseudorange of every GLONASS satellite from epoch `from` on, through
 * both jump checks; returns the flag byte after each epoch. */
std::vector<uint8_t> jumpFlags(double step, int from) {
    zlog::FileHeader hdr;
    std::vector<zlog::Record> recs = readLog(&hdr);
    solve::Pipeline pl(10);
    std::unique_ptr<raim_t> raim(new raim_t);
    std::vector<uint8_t> flags;
    for (std::size_t k = 0; k < recs.size(); k++) {
        lsttblSat_t* lst = static_cast<lsttblSat_t*>(pl.intake(recs[k].message.data()));
        if (pl.tm() == 0) continue;
        if ((int)k >= from)
            for (uint32_t i = 0; i < lst->numGlo; i++)
                if (lst->tblGlo[i].tblObs->actual[0] == 1) lst->tblGlo[i].tblObs->psvd[0] += step;
        raim->raimTimeGlo(lst, pl.tm());
        raim->raimTimeGps(lst, pl.tm());
        flags.push_back(raim->getFlag());
    }
    return flags;
}

struct Shift {
    double metres;
    int from;
    int epoch = 0;
};

/* Row hook: the GLONASS rows of the fix, `metres` longer from epoch
 * `from` on. */
void shiftGlonass(lsttblCrdSat_t* rows, void* ctx) {
    Shift* s = static_cast<Shift*>(ctx);
    if (s->epoch++ < s->from) return;
    for (uint32_t i = 0; i < rows->num; i++)
        if (rows->tbl[i].sys == 0) rows->tbl[i].psvd += s->metres;
}

/* raimTau on every combined fix; whether it rejected the offset, per
 * epoch (epochs without a combined fix count as accepted). */
std::vector<bool> tauRejections(double metres, int from) {
    zlog::FileHeader hdr;
    std::vector<zlog::Record> recs = readLog(&hdr);
    solve::Pipeline pl(10);
    pl.seed(hdr.position);
    Shift shift = {metres, from};
    pl.setRowHook(shiftGlonass, &shift);
    std::unique_ptr<raim_t> raim(new raim_t);
    std::vector<bool> out;
    for (zlog::Record& r : recs) {
        if (!pl.run(r.message.data())) continue;
        tblCrdPnt_t fix = *pl.fix();
        const double tau = raim->raimTau(const_cast<lsttblCrdSat_t*>(pl.rows()), &fix);
        EXPECT_EQ(tau, fix.actual == 1 && fix.sys == 10 ? fix.tau : 0.0);
        out.push_back((raim->getFlag() & RAIM_FLAG_TAU) != 0);
    }
    return out;
}

}  // namespace

TEST(RaimTimeReal, NoJumpInTheCleanLogAndAMillisecondStepAtItsSecond) {
    const std::vector<uint8_t> clean = jumpFlags(0.0, 0);
    ASSERT_EQ(clean.size(), 300u);
    for (std::size_t k = 0; k < clean.size(); k++) EXPECT_EQ(clean[k], 0) << k;

    const std::vector<uint8_t> step = jumpFlags(kC * 1e-3, 150);
    for (std::size_t k = 0; k < step.size(); k++)
        EXPECT_EQ(step[k], k == 150 ? RAIM_FLAG_JUMP_GLO : 0) << k;
}

TEST(RaimTimeReal, TimeOffsetStepOfTheGlonassChannels) {
    const std::vector<bool> clean = tauRejections(0.0, 0);
    ASSERT_EQ(clean.size(), 300u);
    for (std::size_t k = 0; k < clean.size(); k++) EXPECT_FALSE(clean[k]) << k;

    /* A microsecond (300 m) on every GLONASS row: the offset unknown takes
     * it whole; rejected until the old history has run out. */
    const std::vector<bool> step = tauRejections(kC * 1e-6, 150);
    for (std::size_t k = 0; k < step.size(); k++)
        EXPECT_EQ(step[k], k >= 150 && k < 175) << k;
}
