/*
 * The clock checks on the real sample log: its pseudoranges move as real
 * satellites do, with real code noise, under a steered receiver clock
 * that never jumps. Nothing may be flagged there, and a millisecond step
 * of the GLONASS channels, added to the log, must be found at its second
 * and at no other.
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

/* Runs the converter over the log, adding `step` metres to the C1
 * pseudorange of every GLONASS satellite from epoch `from` on, through
 * both jump checks; returns the flag byte after each epoch. */
std::vector<uint8_t> jumpFlags(double step, int from) {
    zlog::Reader rd;
    EXPECT_TRUE(rd.open(kLog)) << kLog;
    solve::Pipeline pl(10);
    std::unique_ptr<raim_t> raim(new raim_t);
    std::vector<uint8_t> flags;
    zlog::Record rec;
    while (rd.next(rec)) {
        lsttblSat_t* lst = static_cast<lsttblSat_t*>(pl.intake(rec.message.data()));
        if (pl.tm() == 0) continue;
        if ((int)flags.size() >= from)
            for (uint32_t i = 0; i < lst->numGlo; i++)
                if (lst->tblGlo[i].tblObs->actual[0] == 1) lst->tblGlo[i].tblObs->psvd[0] += step;
        raim->raimTimeGlo(lst, pl.tm());
        raim->raimTimeGps(lst, pl.tm());
        flags.push_back(raim->getFlag());
    }
    return flags;
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
