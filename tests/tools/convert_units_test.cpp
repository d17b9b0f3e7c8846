/*
 * The small rules of the conversion: time scales, GLONASS days, times on
 * the command line, the standard atmosphere and the meteo readings sent,
 * which RINEX observation feeds which signal place.
 */
#include <gtest/gtest.h>

#include <cmath>

#include "convert_fixture.h"
#include "tools/convert/convert_meteo.h"
#include "tools/convert/convert_obs.h"
#include "tools/convert/convert_time.h"

namespace {

using convtest::dataPath;

int64_t at(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
    return rinex::daysSince2000(y, mo, d) * 86400 + h * 3600 + mi * 60 + s;
}

TEST(ConvertTime, LeapSecondsChangeAtTheStartOfTheirDay) {
    EXPECT_EQ(cvt::leapSecondsAt(at(1980, 1, 6)), 0);
    EXPECT_EQ(cvt::leapSecondsAt(at(1999, 1, 1) - 1), 12);
    EXPECT_EQ(cvt::leapSecondsAt(at(1999, 1, 1)), 13);
    EXPECT_EQ(cvt::leapSecondsAt(at(2016, 12, 31, 23, 59, 59)), 17);
    EXPECT_EQ(cvt::leapSecondsAt(at(2017, 1, 1)), 18);
    EXPECT_EQ(cvt::leapSecondsAt(at(2024, 1, 1)), 18);
}

TEST(ConvertTime, ReceiverTimeIsUtcPlusThreeHoursFromTheTwoOrigins) {
    EXPECT_EQ(cvt::tmZelOfUtc(at(1999, 12, 31, 21)), 0);
    EXPECT_EQ(cvt::tmRsvrOfTmZel(0), 630720000u);
    EXPECT_EQ(cvt::gpsSinceOrigin(0), 630720000);
    /* 2024-01-01 12:00:00 GPS is 11:59:42 UTC, 14:59:42 receiver time,
     * in GPS week 2295 at second 129600. */
    int64_t gps = at(2024, 1, 1, 12);
    int64_t tmZel = cvt::tmZelOfUtc(gps - 18);
    EXPECT_EQ(cvt::civilText(tmZel), "2024-01-01 14:59:42");
    EXPECT_EQ(cvt::gpsSinceOrigin(gps) / 604800, 2295);
    EXPECT_EQ(cvt::gpsSinceOrigin(gps) % 604800, 129600);
    /* The library's own rule: GPS time = tmZel + GPS-UTC + 630709200. */
    EXPECT_EQ(tmZel + 18 + 630709200, cvt::gpsSinceOrigin(gps));
}

TEST(ConvertTime, GlonassDaysAgreeWithTheLibrarysAlmanacDates) {
    struct Case {
        int y, m, d;
        unsigned n4, day;
    } cases[] = {{2024, 1, 1, 8, 1}, {2023, 12, 31, 7, 1461}, {2000, 1, 1, 2, 1},
                 {2000, 12, 31, 2, 366}, {2001, 1, 1, 2, 367}, {2027, 12, 31, 8, 1461}};
    for (const Case& c : cases) {
        /* Moscow midnight and the last second of the Moscow day. */
        for (int64_t s : {int64_t(0), int64_t(86399)}) {
            cvt::GloDay g = cvt::gloDayOfTmZel(at(c.y, c.m, c.d) + s);
            EXPECT_EQ(g.n4, c.n4) << c.y << "-" << c.m << "-" << c.d;
            EXPECT_EQ(g.day, c.day) << c.y << "-" << c.m << "-" << c.d;
        }
    }
    /* Every day of two four-year intervals, against DateAlmGloToDate. */
    for (int64_t d = rinex::daysSince2000(2019, 1, 1); d < rinex::daysSince2000(2028, 1, 1); d++) {
        cvt::GloDay g = cvt::gloDayOfTmZel(d * 86400 + 43200);
        unsigned date[3];
        DateAlmGloToDate(g.n4, (int)g.day, date);
        ASSERT_EQ(rinex::daysSince2000((int)date[0], (int)date[1], (int)date[2]), d);
    }
}

/* The first message of the sample recording with the given meteo option. */
const tblMeteo* firstMeteo(const cvt::Options& base, convtest::Intake& in,
                           std::unique_ptr<convtest::Converted>& keep) {
    cvt::Options opt = base;
    opt.hasTo = true;
    opt.toTimeOfDay = true;
    opt.to = 12 * 3600;
    keep = convtest::convert(dataPath(convtest::kObs1s), {dataPath(convtest::kNav)}, opt);
    EXPECT_EQ(keep->msgs.size(), 1u);
    return in.feed(keep->msgs[0].bytes)->meteo;
}

TEST(ConvertMeteo, GivenReadingsArriveAndNoMeteoFailsTheReceiversCheck) {
    std::unique_ptr<convtest::Converted> keep;
    cvt::Options opt;
    opt.meteo = cvt::Options::MeteoMode::Given;
    opt.given.temperature = -12.5;
    opt.given.pressure = 1008.2;
    opt.given.humidity = 71.0;
    convtest::Intake in1;
    const tblMeteo* m = firstMeteo(opt, in1, keep);
    ASSERT_EQ(m->actual, 1);
    EXPECT_NEAR(m->temperature, -12.5, 1e-9);
    EXPECT_NEAR(m->pressure, 1008.2, 1e-9);
    EXPECT_NEAR(m->humidity, 71.0, 1e-9);
    opt.meteo = cvt::Options::MeteoMode::None;
    convtest::Intake in2;
    EXPECT_EQ(firstMeteo(opt, in2, keep)->actual, 0);
}

/* A header declaring GPS codes in the given order. */
rinex::ObsHeader gpsHeader(const std::vector<std::string>& codes) {
    rinex::ObsHeader h;
    h.obsTypes[rinex::kGps] = codes;
    return h;
}

rinex::SatObs gpsSat(std::size_t n) {
    rinex::SatObs s;
    s.sys = 'G';
    s.prn = 7;
    s.values.resize(n);
    return s;
}

void put(rinex::SatObs& s, std::size_t i, double v, int ssi = 0, int lli = 0) {
    s.values[i].present = true;
    s.values[i].value = v;
    s.values[i].ssi = (uint8_t)ssi;
    s.values[i].lli = (uint8_t)lli;
}

TEST(ConvertSignals, TheL2CodeIsW_ThenL_ThenX_WithItsOwnDopplerAndPhase) {
    rinex::ObsHeader h = gpsHeader({"C1C", "C2X", "C2W", "D2X", "D2W", "L2X", "L2W", "S2W"});
    cvt::SignalMap map(h);
    rinex::SatObs s = gpsSat(8);
    put(s, 0, 2.0e7, 7);
    put(s, 1, 2.0e7 + 5);
    put(s, 2, 2.0e7 + 6);
    put(s, 3, -11);
    put(s, 4, -12);
    put(s, 5, 1.1e8);
    put(s, 6, 1.2e8, 0, 1);
    put(s, 7, 44.5);
    cvt::SatSignals out;
    ASSERT_TRUE(map.take(s, out));
    EXPECT_EQ(out.sig[cvt::kPlaceC2].psvd, 2.0e7 + 6);
    EXPECT_EQ(out.sig[cvt::kPlaceC2].dop, -12);
    EXPECT_EQ(out.sig[cvt::kPlaceC2].faze, 1.2e8);
    EXPECT_TRUE(out.sig[cvt::kPlaceC2].lossOfLock);
    EXPECT_EQ(out.sig[cvt::kPlaceC2].snr, 44.5);
    /* C1 has no S observation: its strength digit 7, the middle of 42-47. */
    EXPECT_TRUE(out.sig[cvt::kPlaceC1].hasSnr);
    EXPECT_EQ(out.sig[cvt::kPlaceC1].snr, 44.5);
    EXPECT_FALSE(out.sig[cvt::kPlaceC1].hasDop);
    /* Without C2W in the record, C2X and its own values. */
    s.values[2].present = false;
    ASSERT_TRUE(map.take(s, out));
    EXPECT_EQ(out.sig[cvt::kPlaceC2].psvd, 2.0e7 + 5);
    EXPECT_EQ(out.sig[cvt::kPlaceC2].dop, -11);
    EXPECT_EQ(out.sig[cvt::kPlaceC2].faze, 1.1e8);
    EXPECT_FALSE(out.sig[cvt::kPlaceC2].hasSnr);
    /* No pseudorange at all: no places. */
    s.values[0].present = s.values[1].present = false;
    EXPECT_FALSE(map.take(s, out));
    EXPECT_FALSE(map.declares('G', cvt::kPlaceB1));
    EXPECT_FALSE(map.declares('R', cvt::kPlaceC1));
}

TEST(ConvertSignals, EpochsOffTheSecondMoveAlongTheDoppler) {
    cvt::SatSignals s;
    s.sys = 'R';
    s.prn = 14;
    s.sig[cvt::kPlaceB2].present = true;
    s.sig[cvt::kPlaceB2].psvd = 2.0e7;
    s.sig[cvt::kPlaceB2].hasDop = true;
    s.sig[cvt::kPlaceB2].dop = 1000.0;   /* approaching */
    s.sig[cvt::kPlaceB2].hasFaze = true;
    s.sig[cvt::kPlaceB2].faze = 5.0e7;
    /* Letter -7 on L2: 1246 MHz - 7 x 437.5 kHz. */
    double lambda = 299792458.0 / (1246.0e6 - 7 * 0.4375e6);
    EXPECT_DOUBLE_EQ(cvt::wavelength('R', -7, cvt::kPlaceB2), lambda);
    ASSERT_TRUE(cvt::shiftAlongDoppler(s, 0.25, -7));
    EXPECT_NEAR(s.sig[cvt::kPlaceB2].psvd, 2.0e7 - 250.0 * lambda, 1e-6);
    EXPECT_NEAR(s.sig[cvt::kPlaceB2].faze, 5.0e7 - 250.0, 1e-6);
    s.sig[cvt::kPlaceC1].present = true;   /* without a Doppler: stays, and says so */
    s.sig[cvt::kPlaceC1].psvd = 1.0;
    EXPECT_FALSE(cvt::shiftAlongDoppler(s, 0.25, -7));
    EXPECT_EQ(s.sig[cvt::kPlaceC1].psvd, 1.0);
}

}  // namespace
