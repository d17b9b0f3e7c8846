/*
 * Recordings with epochs further apart than a second: the seconds between
 * are filled, marked as interpolated, and the navigation data keeps
 * flowing at its own cadence, so that even the almanacs, which take a
 * quarter of an hour to go round, arrive complete.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "convert_fixture.h"
#include "rinex_obs.h"

namespace {

using convtest::convert;
using convtest::dataPath;

#define EXPECT_STEP(decoded, sent, step) \
    EXPECT_NEAR((decoded), (sent), 0.5 * (step) * (1 + 1e-9)) << #decoded

/* The 30-s recording from 18:00:00 to 18:20:00 GPS: long enough for a
 * GPS almanac cycle (12.5 min, starting at 18:05:00) and a VT one (12 min,
 * starting at 18:00:18). */
class Interval30s : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        cvt::Options opt;
        opt.hasTo = true;
        opt.toTimeOfDay = true;
        opt.to = 18 * 3600 + 20 * 60;
        conv_ = convert(dataPath(convtest::kObs30s), {dataPath(convtest::kNav)}, opt).release();
    }
    static void TearDownTestSuite() { delete conv_; }
    static convtest::Converted* conv_;
};
convtest::Converted* Interval30s::conv_ = nullptr;

TEST_F(Interval30s, EverySecondGetsAMessageAndOnlyRecordedOnesAreUnmarked) {
    ASSERT_TRUE(conv_->ok);
    EXPECT_TRUE(conv_->diag.empty()) << conv_->diag.list()[0].text();
    ASSERT_EQ(conv_->msgs.size(), 20u * 60 + 1);
    const cvt::Summary& s = conv_->conv->summary();
    EXPECT_EQ(s.recorded, 41);
    EXPECT_EQ(s.interpolated, 20 * 60 + 1 - 41);
    convtest::Intake in;
    uint32_t first = 0;
    for (std::size_t n = 0; n < conv_->msgs.size(); n++) {
        lsttblSat_t* l = in.feed(conv_->msgs[n].bytes);
        uint32_t t = getTmZel(l);
        if (n == 0) first = t;
        ASSERT_EQ(t, first + n);
        /* Recorded epochs fall on 18:00:00, 18:00:30, ... GPS. */
        EXPECT_EQ(conv_->msgs[n].interpolated, n % 30 != 0) << n;
        ASSERT_GT(l->numGps, 5u);
        ASSERT_GT(l->numGlo, 3u);
    }
}

/* The 1-s recording thinned to one epoch in 30: the filled seconds against
 * what the receiver really measured at them. */
TEST(Interpolation, FilledSecondsMatchTheRecordedOnes) {
    rinex::Diagnostics d;
    rinex::ObsHeader hdr;
    std::vector<rinex::ObsEpoch> all;
    ASSERT_TRUE(rinex::readObsFile(dataPath(convtest::kObs1s), hdr, all, d));
    cvt::Converter conv(cvt::Options(), d);
    ASSERT_TRUE(conv.addNavFile(dataPath(convtest::kNav)));
    std::vector<convtest::Message> msgs;
    conv.begin(hdr, "thinned", [&](const std::vector<uint8_t>& m, bool interp) {
        msgs.push_back({m, interp});
        return true;
    });
    for (std::size_t i = 0; i < all.size(); i += 30) conv.addEpoch(all[i]);
    conv.end();
    ASSERT_EQ(msgs.size(), 271u);   /* 12:00:00 .. 12:04:30 */
    EXPECT_EQ(conv.summary().interpolated, 270 - 9);

    convtest::Intake in;
    double worstPsvd = 0, worstFaze = 0, worstDop = 0;
    long compared = 0, fazeCompared = 0;
    int c1 = hdr.obsIndex('G', "C1C"), l1 = hdr.obsIndex('G', "L1C");
    int r1 = hdr.obsIndex('R', "C1C"), rl1 = hdr.obsIndex('R', "L1C");
    for (std::size_t n = 0; n < msgs.size(); n++) {
        lsttblSat_t* l = in.feed(msgs[n].bytes);
        const rinex::ObsEpoch& truth = all[n];
        /* A satellite is filled in where both recorded epochs around the
         * second have it. */
        std::size_t a = n - n % 30, b = std::min(a + 30, all.size() - 1);
        auto find = [](const rinex::ObsEpoch& e, const rinex::SatObs& s) -> const rinex::SatObs* {
            for (const rinex::SatObs& o : e.sats)
                if (o.sys == s.sys && o.prn == s.prn) return &o;
            return nullptr;
        };
        auto has = [&](const rinex::ObsEpoch& e, const rinex::SatObs& s) { return find(e, s) != nullptr; };
        for (const rinex::SatObs& s : truth.sats) {
            if (!has(all[a], s) || !has(all[b], s)) continue;
            const tblObs_t* o = nullptr;
            if (s.sys == 'G')
                for (uint32_t i = 0; i < l->numGps; i++)
                    if (l->tblGps[i].tblHdr->num == s.prn) o = l->tblGps[i].tblObs;
            if (s.sys == 'R')
                for (uint32_t i = 0; i < l->numGlo; i++)
                    if (l->tblGlo[i].tblHdr->num == s.prn) o = l->tblGlo[i].tblObs;
            ASSERT_NE(o, nullptr) << s.sys << s.prn << " at " << n;
            int ic = s.sys == 'G' ? c1 : r1, il = s.sys == 'G' ? l1 : rl1;
            worstPsvd = std::max(worstPsvd, std::fabs(o->psvd[0] - s.values[(size_t)ic].value));
            const rinex::ObsValue& phase = s.values[(size_t)il];
            if (o->faze[0] != 0.0 && phase.present) {
                worstFaze = std::max(worstFaze, std::fabs(o->faze[0] - phase.value));
                fazeCompared++;
                /* The measured Doppler of a weak signal is noisier than the
                 * filled one: hold the filled one against the rate of the
                 * measured phase around that second. */
                const rinex::SatObs* p0 = n > 0 ? find(all[n - 1], s) : nullptr;
                const rinex::SatObs* p1 = n + 1 < all.size() ? find(all[n + 1], s) : nullptr;
                if (msgs[n].interpolated && p0 && p1 && p0->values[(size_t)il].present && p1->values[(size_t)il].present) {
                    double rate = (p1->values[(size_t)il].value - p0->values[(size_t)il].value) / 2;
                    worstDop = std::max(worstDop, std::fabs(o->dop[0] + rate));
                }
            }
            compared++;
        }
    }
    EXPECT_GT(compared, 5000);
    EXPECT_GT(fazeCompared, compared * 9 / 10);
    /* The code of the weak satellites is noisy to a metre or two; the
     * filled phase stays within half a cycle (with Doppler rates alone it
     * wandered by ten on the weak ones), its rate within a tenth of a
     * hertz. */
    EXPECT_LT(worstPsvd, 3.0);
    EXPECT_LT(worstFaze, 0.5);
    EXPECT_LT(worstDop, 0.2);
}

}  // namespace
