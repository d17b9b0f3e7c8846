/*
 * Damaged input: the first seconds of the TLSE recording with a truncated
 * line, a satellite of an unknown system, an epoch with an impossible
 * date, and a navigation file that lacks one satellite. Each problem is
 * named with its file and line, costs only the satellite or epoch it is
 * in, and every message that does come out decodes cleanly.
 */
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "convert_fixture.h"
#include "rinex_lines.h"
#include "rinex_test_files.h"

namespace {

using convtest::dataPath;

}  // namespace

namespace {

/* More satellites than the receiver has channels (and the intake slots):
 * 24 go in, those already tracked first, and the others are named once. */
TEST(Channels, TwentyFourSatellitesAtMostThoseTrackedFirst) {
    rinex::Diagnostics d;
    rinex::ObsHeader hdr;
    std::vector<rinex::ObsEpoch> all;
    ASSERT_TRUE(rinex::readObsFile(dataPath(convtest::kObs1s), hdr, all, d));
    cvt::Converter conv(cvt::Options(), d);
    ASSERT_TRUE(conv.addNavFile(dataPath(convtest::kNav)));
    std::vector<convtest::Message> msgs;
    conv.begin(hdr, "crowded", [&](const std::vector<uint8_t>& m, bool interp) {
        msgs.push_back({m, interp});
        return true;
    });
    /* G10's values lent to PRNs 1-20, and the eight GLONASS satellites:
     * 28 in all. From the third epoch on PRNs 1-4 are gone; their slots are
     * free for the fourth. */
    for (int k = 0; k < 4; k++) {
        rinex::ObsEpoch e = all[(std::size_t)k];
        std::vector<rinex::SatObs> glo, gps;
        for (const rinex::SatObs& s : e.sats) (s.sys == 'R' ? glo : gps).push_back(s);
        ASSERT_EQ(glo.size(), 8u);
        e.sats.clear();
        for (int prn = k >= 2 ? 5 : 1; prn <= 20; prn++) {
            rinex::SatObs s = gps[0];
            s.prn = prn;
            e.sats.push_back(s);
        }
        e.sats.insert(e.sats.end(), glo.begin(), glo.end());
        conv.addEpoch(e);
    }
    conv.end();
    ASSERT_EQ(msgs.size(), 4u);
    convtest::Intake in;
    const int gloIn[4] = {4, 4, 4, 8};
    for (std::size_t n = 0; n < 4; n++) {
        lsttblSat_t* l = in.feed(msgs[n].bytes);
        /* The message carries exactly what the intake keeps. */
        EXPECT_EQ(msgs[n].bytes[9], l->numGps + l->numGlo);
        EXPECT_EQ(l->numGps, n >= 2 ? 16u : 20u);
        EXPECT_EQ(l->numGlo, (uint32_t)gloIn[n]);
        /* Every satellite in a slot of its own, with its own channel. */
        for (uint32_t i = 0; i < l->numGps; i++)
            EXPECT_EQ(l->tblGps[i].tblAddInf->chan, l->tblGps[i].tblHdr->num);
        for (uint32_t i = 0; i < l->numGlo; i++)
            EXPECT_EQ(l->tblGlo[i].tblAddInf->chan, 32 + l->tblGlo[i].tblHdr->num);
    }
    /* The four GLONASS satellites that found no channel, once each. */
    long said = 0;
    for (const rinex::Diagnostic& x : d.list()) said += x.what.find("more than 24 satellites") != std::string::npos;
    EXPECT_EQ(said, 4);
    EXPECT_EQ(conv.summary().skippedSatellites, 0);
}

}  // namespace
