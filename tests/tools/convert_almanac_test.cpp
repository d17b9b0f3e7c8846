/*
 * Almanacs derived from ephemerides: each must put its satellite where
 * the ephemeris does, within what an almanac can promise (kilometres),
 * whatever day or week boundary lies between the two reference times.
 */
#include <gtest/gtest.h>

#include <cmath>

#include "convert_fixture.h"
#include "tools/convert/convert_alm.h"
#include "tools/convert/convert_orbit.h"
#include "tools/x0c/gps_encode.h"

namespace {

using convtest::dataPath;

double distance(const double a[3], const double b[3]) {
    return std::sqrt((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) +
                     (a[2] - b[2]) * (a[2] - b[2]));
}

/* The navigation file and a converter that has sent its first message
 * (the almanacs are set up then): 2024-01-01 11:59:42 UTC. */
class Almanac : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        cvt::Options opt;
        opt.hasTo = true;
        opt.toTimeOfDay = true;
        opt.to = 12 * 3600;
        conv_ = convtest::convert(dataPath(convtest::kObs1s), {dataPath(convtest::kNav)}, opt).release();
    }
    static void TearDownTestSuite() { delete conv_; }
    static convtest::Converted* conv_;
};
convtest::Converted* Almanac::conv_ = nullptr;

const int64_t kStartUtc = 8766LL * 86400 + 11 * 3600 + 59 * 60 + 42;
const int64_t kDayStartUtc = 8766LL * 86400 - 10800;   /* 2024-01-01 00:00 Moscow */

TEST_F(Almanac, GlonassEntriesFollowTheirEphemerisOrbitForHours) {
    ASSERT_EQ(conv_->msgs.size(), 1u);
    const tblAlmGlo_t& a = conv_->conv->gloAlmanacTable();
    EXPECT_EQ(a.actual, 1);
    int checked = 0;
    for (int k = 0; k < ZEL_NUM_ALM_GLO; k++) {
        const tblAlmGloSat_t& e = a.alm[k];
        if (e.onEmpty) continue;
        const cvt::GloRecord* r = conv_->conv->nav().gloNearest(k + 1, kStartUtc);
        ASSERT_NE(r, nullptr);
        SCOPED_TRACE("R" + std::to_string(k + 1));
        EXPECT_GE(e.lambdaT, 0.0);
        EXPECT_LT(e.lambdaT, 43200.0 + e.dT);
        EXPECT_NEAR(e.dT, -2655.7, 2.0);       /* 11 h 15 min 44 s, the GLONASS period */
        EXPECT_NEAR(e.dI, 0.01, 0.008);        /* 63 deg + about 1.8 */
        EXPECT_LT(e.eps, 0.003);
        EXPECT_EQ(double(e.tauA), double(r->tbl.tauN));   /* packed: compare copies */
        for (double hours : {-6.0, -1.0, 0.0, 1.0, 6.0}) {
            cvt::GloState s = cvt::gloStateAt(r->tbl, hours * 3600);
            double x[3];
            cvt::gloAlmanacPosition(e, (double)(r->tb - kDayStartUtc) + hours * 3600, x);
            EXPECT_LT(distance(x, s.r), 10e3) << hours << " h from tb";
        }
        checked++;
    }
    EXPECT_EQ(checked, 24);
}

TEST_F(Almanac, GlonassNodeIsCarriedAcrossTheDayInBothDirections) {
    /* The same orbit referred to a day that starts just before its tb (the
     * nearest node lies before midnight, so the first node of the day is
     * one revolution later) and to one that starts 23 h before it (the
     * node goes back two revolutions). */
    const cvt::GloRecord* r = conv_->conv->nav().gloNearest(3, kStartUtc);
    ASSERT_NE(r, nullptr);
    for (double since : {600.0, 23 * 3600.0}) {
        SCOPED_TRACE(since);
        tblAlmGloSat_t e;
        cvt::gloAlmanacEmpty(3, e);
        cvt::gloAlmanacOrbit(r->tbl, since, e);
        EXPECT_GE(e.lambdaT, 0.0);
        EXPECT_LT(e.lambdaT, 43200.0 + e.dT);
        for (double hours : {-2.0, 0.0, 2.0}) {
            cvt::GloState s = cvt::gloStateAt(r->tbl, hours * 3600);
            double x[3];
            cvt::gloAlmanacPosition(e, since + hours * 3600, x);
            EXPECT_LT(distance(x, s.r), 10e3) << hours << " h from tb";
        }
    }
}

/* A GPS almanac entry as an ephemeris without corrections, for the
 * orbit model. */
tblOprGps_t asEphemeris(const tblAlmGpsSat_t& a) {
    tblOprGps_t t = {};
    t.sqrtA = a.sqrtA;
    t.e = a.e;
    t.m0 = a.m0;
    t.omega = a.omega;
    t.omega0 = a.omega0;
    t.omegaDot = a.omegaDot;
    t.i0 = 0.3 * 3.141592653589793 + a.deltaI;
    t.toe = a.toa;
    return t;
}

TEST_F(Almanac, GpsEntriesMatchTheEphemerisAtToaInThisWeekAndTheNext) {
    const tblAlmGps_t& a = conv_->conv->gpsAlmanacTable();
    /* 11:59:42 UTC is 12:00:00 GPS, 129600 s into week 2295: the next
     * multiple of 4096 s is 131072. */
    EXPECT_EQ(a.toa, 131072u);
    EXPECT_EQ(a.wna, 2295u % 1024);
    int filled = 0;
    for (int prn = 1; prn <= ZEL_NUM_ALM_GPS; prn++) {
        const tblAlmGpsSat_t& e = a.alm[prn - 1];
        const cvt::GpsRecord* r = conv_->conv->nav().gpsNearest(prn, 2295LL * 604800 + 129600);
        EXPECT_EQ(e.onEmpty, r ? 0 : 1) << prn;
        if (!r) continue;
        filled++;
        SCOPED_TRACE("G" + std::to_string(prn));
        /* 3.5 days later falls in week 2296. */
        for (int64_t toaAbs : {2295LL * 604800 + 131072, 2296LL * 604800 + 4096 * 4}) {
            tblAlmGpsSat_t entry;
            cvt::gpsAlmanacEntry(*r, toaAbs, entry);
            double eph[3], alm[3];
            cvt::gpsPosition(r->tbl, (double)(toaAbs - r->toe), eph);
            cvt::gpsPosition(asEphemeris(entry), 0.0, alm);
            EXPECT_LT(distance(eph, alm), 3e3);
            double dt = (double)(toaAbs - r->toc);
            EXPECT_NEAR(entry.af0, r->tbl.af0 + r->tbl.af1 * dt, 1e-12);
        }
        /* Health 63 stays 63 (all signals bad), health 0 stays 0. */
        EXPECT_EQ(x0c::gpsHealth6(e), (unsigned)r->tbl.health);
    }
    EXPECT_GE(filled, 30);
}

}  // namespace
