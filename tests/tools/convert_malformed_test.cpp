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

std::vector<std::string> readLines(const std::string& path) {
    rinex::LineSource src(path);
    std::vector<std::string> lines;
    std::string l;
    while (src.next(l)) lines.push_back(l);
    return lines;
}

std::string join(const std::vector<std::string>& lines) {
    std::string s;
    for (const std::string& l : lines) s += l + "\n";
    return s;
}

bool hasSat(const lsttblSat_t* l, bool gps, int num) {
    uint32_t n = gps ? l->numGps : l->numGlo;
    for (uint32_t i = 0; i < n; i++)
        if ((gps ? l->tblGps[i].tblHdr : l->tblGlo[i].tblHdr)->num == num) return true;
    return false;
}

TEST(Malformed, EachProblemIsNamedAndCostsOnlyWhatItTouches) {
    rinextest::ScratchDir dir;
    /* Observations: header and the first six epochs (19 satellites each,
     * G10 G12 G13 ... in that order). */
    std::vector<std::string> all = readLines(dataPath(convtest::kObs1s));
    std::size_t head = 0;
    while (all[head].find("END OF HEADER") == std::string::npos) head++;
    std::vector<std::string> obs(all.begin(), all.begin() + (long)head + 1 + 6 * 20);
    auto epochLine = [&](int k) { return head + 1 + (std::size_t)k * 20; };
    /* Epoch 1: G12 cut inside its first pseudorange. */
    std::size_t cut = epochLine(1) + 2;
    ASSERT_EQ(obs[cut].substr(0, 3), "G12");
    obs[cut] = obs[cut].substr(0, 10);
    /* Epoch 2: G13 turned into a satellite of no known system. */
    std::size_t unknown = epochLine(2) + 3;
    ASSERT_EQ(obs[unknown].substr(0, 3), "G13");
    obs[unknown][0] = 'X';
    /* Epoch 3: month 13. */
    std::size_t badEpoch = epochLine(3);
    ASSERT_EQ(obs[badEpoch].substr(0, 10), "> 2024 01 ");
    obs[badEpoch].replace(7, 2, "13");
    std::string obsPath = dir.write("damaged.rnx", join(obs));

    /* Navigation: everything but G10. */
    std::vector<std::string> nav;
    bool skipping = false;
    for (const std::string& l : readLines(dataPath(convtest::kNav))) {
        if (!l.empty() && l[0] != ' ') skipping = l.compare(0, 3, "G10") == 0;
        if (!skipping) nav.push_back(l);
    }
    std::string navPath = dir.write("nog10.rnx", join(nav));

    auto c = convtest::convert(obsPath, {navPath});
    ASSERT_TRUE(c->ok);
    auto said = [&](std::size_t line0, const std::string& what) {
        std::string at = obsPath + ":" + std::to_string(line0 + 1) + ": ";
        for (const rinex::Diagnostic& d : c->diag.list())
            if (d.text().compare(0, at.size(), at) == 0 && d.text().find(what) != std::string::npos)
                return true;
        return false;
    };
    EXPECT_TRUE(said(cut, "G12")) << obsPath;
    EXPECT_TRUE(said(unknown, "unknown satellite system 'X'"));
    EXPECT_TRUE(said(badEpoch, "epoch skipped"));
    EXPECT_TRUE(said(epochLine(0), "G10: no broadcast ephemeris"));
    for (const rinex::Diagnostic& d : c->diag.list())
        EXPECT_EQ(d.file, obsPath) << d.text();
    EXPECT_EQ(c->diag.count(), 4u);

    /* Six seconds all the same: the lost epoch is filled between its
     * neighbours. */
    ASSERT_EQ(c->msgs.size(), 6u);
    EXPECT_EQ(c->conv->summary().interpolated, 1);
    EXPECT_TRUE(c->msgs[3].interpolated);
    EXPECT_EQ(c->conv->summary().skippedSatellites, 1);

    convtest::Intake in;
    for (std::size_t n = 0; n < c->msgs.size(); n++) {
        SCOPED_TRACE(n);
        lsttblSat_t* l = in.feed(c->msgs[n].bytes);
        for (uint32_t i = 0; i < l->numGps; i++) EXPECT_EQ(l->tblGps[i].tblHdr->badNavInfCt, 0);
        for (uint32_t i = 0; i < l->numGlo; i++) EXPECT_EQ(l->tblGlo[i].tblHdr->badNavInfCt, 0);
        EXPECT_FALSE(hasSat(l, true, 10));
        EXPECT_EQ(hasSat(l, true, 12), n != 1);
        /* The filled second 3 lies between epoch 2, which lost G13, and
         * epoch 4: a satellite is filled only between epochs that have it. */
        EXPECT_EQ(hasSat(l, true, 13), n != 2 && n != 3);
        EXPECT_TRUE(hasSat(l, false, 3));
        EXPECT_EQ(l->numGlo, 8u);
    }
}

TEST(Malformed, FilesThatAreNotRinexFailCleanly) {
    rinextest::ScratchDir dir;
    std::string junk = dir.write("junk.txt", "this is not a RINEX file\n");
    std::string cutGz = dir.file("cut.rnx.gz");
    {
        /* A gzip stream broken off after its header. */
        std::FILE* f = std::fopen(cutGz.c_str(), "wb");
        const unsigned char gz[] = {0x1f, 0x8b, 8, 0, 0, 0, 0, 0, 0, 3, 0x4b};
        std::fwrite(gz, 1, sizeof gz, f);
        std::fclose(f);
    }
    rinex::Diagnostics d;
    cvt::Converter conv(cvt::Options(), d);
    EXPECT_FALSE(conv.addNavFile(junk));
    EXPECT_FALSE(conv.addNavFile(dir.path() + "/missing.rnx"));
    EXPECT_TRUE(conv.addNavFile(dataPath(convtest::kNav)));
    int messages = 0;
    auto sink = [&](const std::vector<uint8_t>&, bool) { return ++messages > 0; };
    EXPECT_FALSE(conv.run(junk, sink));
    EXPECT_FALSE(conv.run(cutGz, sink));
    EXPECT_EQ(messages, 0);
    EXPECT_GE(d.count(), 3u);
    for (const rinex::Diagnostic& x : d.list()) EXPECT_FALSE(x.file.empty()) << x.text();
}

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
