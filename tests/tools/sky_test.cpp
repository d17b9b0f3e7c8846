/*
 * The predicted sky of a recording (tools/sky): dilution of precision,
 * the sky plot, the times of the command line, the week count handed to
 * the library, and a real recording converted to a log, whose almanacs
 * must predict the satellites the station tracked.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <set>
#include <string>

#include "predict/prgns_sky.h"
#include "sky.h"
#include "sky_log.h"
#include "zel.h"

namespace {

sky::Sat sat(char sys, int num, double az, double el, bool tracked = false) {
    sky::Sat s;
    s.sys = sys;
    s.num = num;
    s.az = az;
    s.el = el;
    s.tracked = tracked;
    return s;
}

}  // namespace

/* Lines of sight along +-east, +-north, +-up: the normal matrix is
 * diagonal, 2 per axis and 6 for the clock. */
TEST(SkyDop, SymmetricConstellation) {
    std::vector<sky::Sat> s = {sat('G', 1, 90, 0),  sat('G', 2, 270, 0), sat('G', 3, 0, 0),
                               sat('G', 4, 180, 0), sat('G', 5, 0, 90),  sat('G', 6, 0, -90)};
    sky::Dop d = sky::dilution(s);
    ASSERT_TRUE(d.valid);
    EXPECT_EQ(d.clocks, 1);
    EXPECT_NEAR(d.h, 1.0, 1e-12);
    EXPECT_NEAR(d.v, std::sqrt(0.5), 1e-12);
    EXPECT_NEAR(d.p, std::sqrt(1.5), 1e-12);
    EXPECT_NEAR(d.t, std::sqrt(1.0 / 6), 1e-12);
    EXPECT_NEAR(d.g, std::sqrt(1.5 + 1.0 / 6), 1e-12);

    // GLONASS east, west and up, GPS north, south and down: a second
    // clock; the up-down axis now shares its satellites with both clocks
    // (worked by hand: Q_uu = 3/4, Q_clock = 5/12 each).
    s[1].sys = s[4].sys = 'R';
    s[0].sys = 'R';
    d = sky::dilution(s);
    ASSERT_TRUE(d.valid);
    EXPECT_EQ(d.clocks, 2);
    EXPECT_NEAR(d.h, 1.0, 1e-12);
    EXPECT_NEAR(d.v, std::sqrt(0.75), 1e-12);
    EXPECT_NEAR(d.p, std::sqrt(1.75), 1e-12);
    EXPECT_NEAR(d.t, std::sqrt(5.0 / 12), 1e-12);
    EXPECT_NEAR(d.g, std::sqrt(1.75 + 10.0 / 12), 1e-12);
    // East, north and up for GLONASS against their opposites for GPS: a
    // shift of the position along (1,1,1) is taken up by the two clocks.
    for (int k = 0; k < 6; k++) s[k].sys = (k % 2 == 0) ? 'R' : 'G';
    EXPECT_FALSE(sky::dilution(s).valid);

    // Four unknowns need four satellites; all of them in one direction
    // leave the geometry singular.
    EXPECT_FALSE(sky::dilution({s[0], s[1], s[2]}).valid);
    EXPECT_FALSE(sky::dilution({sat('G', 1, 10, 30), sat('G', 2, 10, 30), sat('G', 3, 10, 30),
                                sat('G', 4, 10, 30), sat('G', 5, 10, 30)})
                     .valid);
}

/* The leap-second argument puts the library's reference time of a GPS
 * almanac on the almanac's real time in every rollover era: the 90-day
 * limit falls exactly 90 days from it. */
TEST(SkyTime, WeekCountHandedToTheLibrary) {
    using namespace prgns_sky;
    const uint32_t toa = 32u * 4096u;
    tblAlmGps_t alm;
    gpsAlmanac(toa, &alm);
    const uint32_t T = tmOfGps((int64_t)kGpsWeek * kWeek + toa - kGpsTo2000);
    EXPECT_EQ(sky::foldedLeap(T, 18, kWna, toa), kLeapFolded);
    int* h = static_cast<int*>(prgns_init());
    double st[3];
    tlse(st);
    prgns_set(h, st, 0, 0, (unsigned)-90);
    auto listed = [&](uint32_t t) {
        return static_cast<lsttblPrgSat*>(prgns_get2(h, nullptr, &alm, t, sky::foldedLeap(t, 18, kWna, toa)))
            ->numPrg;
    };
    EXPECT_GT(listed(T + 7776000u), 0u);
    EXPECT_EQ(listed(T + 7776001u), 0u);
    EXPECT_GT(listed(T - 7776000u), 0u);
    EXPECT_EQ(listed(T - 7776001u), 0u);
    prgns_finit(h);
    // In the era the library counts from (1999-2019) nothing is added;
    // before it, the 1024 weeks are taken back out.
    const uint32_t t2009 = 3378u * 86400u + 40000;   // 2009-04-01, week 1525
    EXPECT_EQ(sky::foldedLeap(t2009, 15, 1525 % 1024, 300000), 15);
    const uint32_t t1998 = 100;                       // 2000-01-01, week 1042
    EXPECT_EQ(sky::foldedLeap(t1998, 13, 1000, 0), 13 + 1024 * 604800);
}

TEST(SkyLog, AlmanacsOfTheLogPredictTheTrackedSky) {
    const ConvertedLog& log = convertedLog();
    ASSERT_TRUE(log.ok);
    uint32_t first = 0;
    int leap = 0;
    std::string err;
    ASSERT_TRUE(sky::logStart(log.path, &first, &leap, err)) << err;
    EXPECT_EQ(leap, 18);
    EXPECT_EQ(sky::gpsText(first, leap), "2024-01-01 18:00:00");

    sky::Request req;
    ASSERT_TRUE(sky::tmZelOfGpsText("2024-01-01 18:19:30", leap, &req.at));
    prgns_sky::tlse(req.pos);
    req.cartesian = true;
    req.mask = 0;
    sky::Result r;
    ASSERT_TRUE(sky::predictFromLog(log.path, req, r, err)) << err;
    EXPECT_TRUE(r.problems.empty());
    ASSERT_TRUE(r.reached);
    EXPECT_EQ(r.messageTime, req.at);
    EXPECT_TRUE(r.glo.valid);
    EXPECT_EQ(r.glo.n4, 8u);
    EXPECT_TRUE(r.gps.valid);
    EXPECT_EQ(r.gps.wna, 2295u % 1024u);
    EXPECT_GE(r.predicted.size(), 15u);

    // Every tracked satellite is predicted, except those the almanac
    // itself marks unusable: G27 broadcasts health 63 all day, and R02's
    // ephemeris of 17:45 said unhealthy when the almanac was derived.
    // Every satellite predicted above 10 degrees was tracked.
    std::set<std::string> left;
    for (const sky::Sat& s : r.trackedOnly) {
        left.insert(s.name() + ": " + s.why);
        EXPECT_GT(s.el, 0.0);
    }
    EXPECT_EQ(left, (std::set<std::string>{"G27: empty in the almanac (health 63 or no page)",
                                           "R02: not operational in the almanac"}));
    int tracked = 0;
    for (const sky::Sat& s : r.predicted) {
        tracked += s.tracked;
        if (s.el > 10) {
            EXPECT_TRUE(s.tracked) << s.name();
        }
    }
    EXPECT_GE(tracked, 15);

    // Before the GPS almanac was complete: GLONASS only.
    ASSERT_TRUE(sky::tmZelOfGpsText("2024-01-01 18:04:00", leap, &req.at));
    ASSERT_TRUE(sky::predictFromLog(log.path, req, r, err));
    EXPECT_TRUE(r.glo.valid);
    EXPECT_FALSE(r.gps.valid);
    for (const sky::Sat& s : r.predicted) EXPECT_EQ(s.sys, 'R');
    EXPECT_FALSE(r.trackedOnly.empty());   // the GPS satellites

    // Beyond the end of the log: a prediction without tracking.
    ASSERT_TRUE(sky::tmZelOfGpsText("2024-01-01 20:00:00", leap, &req.at));
    ASSERT_TRUE(sky::predictFromLog(log.path, req, r, err));
    EXPECT_FALSE(r.reached);
    EXPECT_GE(r.predicted.size(), 10u);
}
