/*
 * GLONASS records filed under the wrong slot in the merged broadcast file
 * of 2024-01-01: R18's records of 11:45 to 12:45 and R16's of 11:15 and
 * 11:45 are copies of those of their antipodal partners R22 and R12 (same
 * frequency letters). The copies are not used; the partners keep theirs.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "convert_nav.h"
#include "rinex_nav.h"

namespace {

const std::string kNav =
    std::string(ZELNAV_DATA_DIR) + "/tlse-2024-001/BRDC00IGS_R_20240010000_01D_MN.rnx.gz";

/* Reference time (UTC seconds since 2000) and clock of slot's record at
 * hh:mm of the day. */
bool record(const rinex::NavFile& f, int slot, int hh, int mm, int64_t* tb, double* tau) {
    for (const rinex::GloEph& e : f.glo)
        if (e.slot == slot && e.toc.hour == hh && e.toc.minute == mm) {
            *tb = e.tocSec2000;
            *tau = -e.minusTauN;
            return true;
        }
    return false;
}

}  // namespace

TEST(ConvertMisfiled, CopiesOfTheAntipodalPartnerAreDropped) {
    rinex::Diagnostics diag;
    rinex::NavFile f;
    ASSERT_TRUE(rinex::readNavFile(kNav, f, diag));
    cvt::NavData nav(diag);
    nav.add(f);
    nav.finish();

    struct Case { int copy, owner, hh, mm; };
    int kept = 0;
    for (const Case& c : {Case{18, 22, 11, 45}, Case{18, 22, 12, 45}, Case{16, 12, 11, 45}}) {
        int64_t tb, tbOwner;
        double tau, tauOwner;
        ASSERT_TRUE(record(f, c.copy, c.hh, c.mm, &tb, &tau));
        ASSERT_TRUE(record(f, c.owner, c.hh, c.mm, &tbOwner, &tauOwner));
        ASSERT_EQ(tau, tauOwner) << "the file no longer holds the copy";

        const cvt::GloRecord* own = nav.gloAt(c.owner, tb);
        ASSERT_NE(own, nullptr);
        EXPECT_EQ(own->tb, tb) << c.owner;
        /* The slot's own earlier record while it is still on the air,
         * else none. */
        const cvt::GloRecord* r = nav.gloAt(c.copy, tb);
        if (r != nullptr) {
            EXPECT_NE(r->tb, tb) << c.copy << " " << c.hh << ":" << c.mm;
            EXPECT_GT(std::fabs(r->tbl.tauN - tauOwner), 1e-6) << c.copy;
            kept++;
        }
    }
    EXPECT_GE(kept, 1);
    /* Records of the same satellites at other times are all there. */
    int64_t tb;
    double tau;
    ASSERT_TRUE(record(f, 18, 10, 45, &tb, &tau));
    ASSERT_NE(nav.gloAt(18, tb), nullptr);
    EXPECT_EQ(nav.gloAt(18, tb)->tb, tb);
    EXPECT_EQ(diag.count(), 0u);
}
