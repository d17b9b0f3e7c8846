/*
 * The TLSE recordings converted and decoded back through the library's
 * message converter: what comes out must be what the RINEX files say,
 * to the resolution of the broadcast and of the message fields.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <set>

#include "convert_fixture.h"
#include "rinex_nav.h"
#include "rinex_obs.h"
#include "zlog.h"

namespace {

using convtest::convert;
using convtest::dataPath;

const double kPi = 3.141592653589793;
const double kC = 299792458.0;

double lsb(int n) { return std::ldexp(1.0, n); }

/* Within half a broadcast step of the file's value (and a hair for the
 * arithmetic on the way). */
#define EXPECT_STEP(decoded, file, step) \
    EXPECT_NEAR((decoded), (file), 0.5 * (step) * (1 + 1e-9) + 1e-300) << #decoded

class RoundTrip1s : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        conv_ = convert(dataPath(convtest::kObs1s), {dataPath(convtest::kNav)}).release();
        nav_ = new rinex::NavFile;
        rinex::Diagnostics d;
        rinex::readNavFile(dataPath(convtest::kNav), *nav_, d);
        obs_ = new std::vector<rinex::ObsEpoch>;
        obsHdr_ = new rinex::ObsHeader;
        rinex::readObsFile(dataPath(convtest::kObs1s), *obsHdr_, *obs_, d);
    }
    static void TearDownTestSuite() {
        delete conv_;
        delete nav_;
        delete obs_;
        delete obsHdr_;
    }

    /* The file's GPS record with this PRN, toe and IODE nearest `t`. */
    static const rinex::GpsEph* gpsRecord(int prn, uint32_t toe, int iode) {
        for (const rinex::GpsEph& e : nav_->gps)
            if (e.prn == prn && (uint32_t)e.toe == toe && (int)e.iode == iode) return &e;
        return nullptr;
    }
    /* The file's GLONASS record of this slot whose tb (Moscow time of
     * day) is `tb`, on 2024-01-01 Moscow time. */
    static const rinex::GloEph* gloRecord(int slot, uint32_t tb) {
        for (const rinex::GloEph& e : nav_->glo) {
            int64_t mos = e.tocSec2000 + 10800;
            if (e.slot == slot && mos % 86400 == tb && mos / 86400 == 8766) return &e;
        }
        return nullptr;
    }

    static convtest::Converted* conv_;
    static rinex::NavFile* nav_;
    static std::vector<rinex::ObsEpoch>* obs_;
    static rinex::ObsHeader* obsHdr_;
};

convtest::Converted* RoundTrip1s::conv_ = nullptr;
rinex::NavFile* RoundTrip1s::nav_ = nullptr;
std::vector<rinex::ObsEpoch>* RoundTrip1s::obs_ = nullptr;
rinex::ObsHeader* RoundTrip1s::obsHdr_ = nullptr;

TEST_F(RoundTrip1s, EverySecondIsAMessageAndNoSatelliteIsLost) {
    ASSERT_TRUE(conv_->ok);
    EXPECT_TRUE(conv_->diag.empty()) << conv_->diag.list()[0].text();
    ASSERT_EQ(conv_->msgs.size(), 300u);
    const cvt::Summary& s = conv_->conv->summary();
    EXPECT_EQ(s.recorded, 300);
    EXPECT_EQ(s.interpolated, 0);
    EXPECT_EQ(s.skippedSatellites, 0);
    /* 12:00:00 GPS is 11:59:42 UTC, 14:59:42 receiver time. */
    convtest::Intake in;
    lsttblSat_t* l = in.feed(conv_->msgs[0].bytes);
    EXPECT_EQ(getTmZel(l), 757436382u);   /* 2024-01-01 14:59:42 */
    EXPECT_EQ(in.gpsUtc()->actual, 1);
    EXPECT_EQ(in.gpsUtc()->dtGpsUtc, 18u);
    /* Standard atmosphere at TLSE (about 200 m above the ellipsoid). */
    ASSERT_EQ(l->meteo->actual, 1);
    EXPECT_NEAR(l->meteo->temperature, 13.6, 0.15);
    EXPECT_NEAR(l->meteo->pressure, 989.0, 1.0);
    EXPECT_EQ(double(l->meteo->humidity), 50.0);
}

TEST_F(RoundTrip1s, DecodedGpsEphemeridesAreTheFilesToTheBroadcastStep) {
    convtest::Intake in;
    std::set<int> complete;
    for (const convtest::Message& m : conv_->msgs) {
        lsttblSat_t* l = in.feed(m.bytes);
        for (uint32_t i = 0; i < l->numGps; i++) {
            const tblOprGps_t& t = *l->tblGps[i].tblOprGps;
            int prn = l->tblGps[i].tblHdr->num;
            if (!t.actual || complete.count(prn)) continue;
            complete.insert(prn);
            const rinex::GpsEph* e = gpsRecord(prn, t.toe, t.iode);
            ASSERT_NE(e, nullptr) << "G" << prn << " toe " << t.toe;
            EXPECT_EQ(t.wn, (int)e->week % 1024);
            EXPECT_EQ(t.health, (int)e->health);
            EXPECT_EQ(t.iodc, (int)e->iodc % 256);
            EXPECT_EQ(t.toc, (uint32_t)((e->tocSec2000 + 630720000) % 604800));
            EXPECT_STEP(t.af0, e->af0, lsb(-31));
            EXPECT_STEP(t.af1, e->af1, lsb(-43));
            EXPECT_STEP(t.af2, e->af2, lsb(-55));
            EXPECT_STEP(t.sqrtA, e->sqrtA, lsb(-19));
            EXPECT_STEP(t.e, e->e, lsb(-33));
            EXPECT_STEP(t.cus, e->cus, lsb(-29));
            EXPECT_STEP(t.cuc, e->cuc, lsb(-29));
            EXPECT_STEP(t.cis, e->cis, lsb(-29));
            EXPECT_STEP(t.cic, e->cic, lsb(-29));
            EXPECT_STEP(t.crs, e->crs, lsb(-5));
            EXPECT_STEP(t.crc, e->crc, lsb(-5));
            EXPECT_STEP(t.m0, e->m0, lsb(-31) * kPi);
            EXPECT_STEP(t.omega0, e->omega0, lsb(-31) * kPi);
            EXPECT_STEP(t.omega, e->omega, lsb(-31) * kPi);
            EXPECT_STEP(t.i0, e->i0, lsb(-31) * kPi);
            EXPECT_STEP(t.deltaN, e->deltaN, lsb(-43) * kPi);
            EXPECT_STEP(t.idot, e->idot, lsb(-43) * kPi);
            EXPECT_STEP(t.omegaDot, e->omegaDot, lsb(-43) * kPi);
            EXPECT_STEP(t.tgd, e->tgd, lsb(-31));
            /* The URA index is the one nearest the file's accuracy. */
            EXPECT_LE(std::fabs(std::log2(t.ura / e->accuracy)), 0.5);
        }
    }
    EXPECT_EQ(complete.size(), 12u);
}

TEST_F(RoundTrip1s, DecodedGlonassEphemeridesAreTheFilesFromBothStringKinds) {
    convtest::Intake in;
    std::set<int> ct, vt;
    for (const convtest::Message& m : conv_->msgs) {
        lsttblSat_t* l = in.feed(m.bytes);
        for (uint32_t i = 0; i < l->numGlo; i++) {
            const tblSatGlo& g = l->tblGlo[i];
            int slot = g.tblHdr->num;
            for (int kind = 0; kind < 2; kind++) {
                const tblOprGlo_t& t = *g.tblOprGlo[kind];
                std::set<int>& done = kind == 0 ? ct : vt;
                if (!t.actual || done.count(slot)) continue;
                done.insert(slot);
                const rinex::GloEph* e = gloRecord(slot, t.tb);
                ASSERT_NE(e, nullptr) << "R" << slot << " tb " << t.tb;
                double pos = (kind == 0 ? lsb(-11) : lsb(-13)) * 1000;
                double vel = (kind == 0 ? lsb(-20) : lsb(-23)) * 1000;
                EXPECT_STEP(t.x, e->x * 1000, pos);
                EXPECT_STEP(t.y, e->y * 1000, pos);
                EXPECT_STEP(t.z, e->z * 1000, pos);
                EXPECT_STEP(t.vx, e->vx * 1000, vel);
                EXPECT_STEP(t.vy, e->vy * 1000, vel);
                EXPECT_STEP(t.vz, e->vz * 1000, vel);
                EXPECT_STEP(t.ax, e->ax * 1000, lsb(-30) * 1000);
                EXPECT_STEP(t.ay, e->ay * 1000, lsb(-30) * 1000);
                EXPECT_STEP(t.az, e->az * 1000, lsb(-30) * 1000);
                EXPECT_STEP(t.gammaN, e->gammaN, lsb(-40));
                /* RINEX keeps -tau_n. */
                EXPECT_STEP(t.tauN, -e->minusTauN, lsb(-30));
                EXPECT_EQ(t.nt, 1);   /* 2024-01-01: first day of the four-year interval */
                EXPECT_EQ(t.m, 1);
                /* The file's accuracy index is 15 (not known): the default. */
                EXPECT_EQ(double(t.ft), kind == 0 ? 2.5 : 0.0);
            }
        }
    }
    EXPECT_EQ(ct.size(), 8u);
    EXPECT_EQ(vt, ct);
}

TEST_F(RoundTrip1s, ObservationsComeBackAtFullResolution) {
    convtest::Intake in;
    const char* gloCodes[4] = {"C1C", "C2C", "C1P", "C2P"};
    long compared = 0;
    ASSERT_EQ(obs_->size(), conv_->msgs.size());
    for (std::size_t n = 0; n < conv_->msgs.size(); n++) {
        lsttblSat_t* l = in.feed(conv_->msgs[n].bytes);
        const rinex::ObsEpoch& ep = (*obs_)[n];
        ASSERT_EQ((int64_t)getTmZel(l), ep.sec2000 - 18 + 10800);
        auto find = [&](char sys, int prn) -> const rinex::SatObs* {
            for (const rinex::SatObs& s : ep.sats)
                if (s.sys == sys && s.prn == prn) return &s;
            return nullptr;
        };
        auto check = [&](char sys, const rinex::SatObs& s, const tblObs_t& o, int place,
                         const std::string& code) {
            int ic = obsHdr_->obsIndex(sys, code);
            const rinex::ObsValue& c = s.values[(std::size_t)ic];
            ASSERT_TRUE(c.present);
            ASSERT_EQ(o.actual[place], 1);
            std::string rest = code.substr(1);
            const rinex::ObsValue& d = s.values[(std::size_t)obsHdr_->obsIndex(sys, "D" + rest)];
            const rinex::ObsValue& p = s.values[(std::size_t)obsHdr_->obsIndex(sys, "L" + rest)];
            const rinex::ObsValue& a = s.values[(std::size_t)obsHdr_->obsIndex(sys, "S" + rest)];
            double unit = kC * lsb(-32) / 1000;
            /* The second places go as differences: two roundings. */
            EXPECT_NEAR(o.psvd[place], c.value, (place % 2 ? 1.0 : 0.5) * unit + 1e-7);
            EXPECT_NEAR(o.dop[place], d.present ? d.value : 0.0, 0.5 * 1000 * lsb(-24) + 1e-9);
            EXPECT_NEAR(o.faze[place], p.present ? p.value : 0.0, 0.5 * lsb(-16) + 1e-7);
            EXPECT_EQ(o.ampl[place], a.present ? (uint32_t)std::lround(a.value * 10) : 0u);
            compared++;
        };
        for (uint32_t i = 0; i < l->numGps; i++) {
            const tblSatGps& g = l->tblGps[i];
            const rinex::SatObs* s = find('G', g.tblHdr->num);
            ASSERT_NE(s, nullptr);
            check('G', *s, *g.tblObs, 0, "C1C");
            if (g.tblObs->actual[1]) {
                const rinex::ObsValue& w = s->values[(std::size_t)obsHdr_->obsIndex('G', "C2W")];
                check('G', *s, *g.tblObs, 1, w.present ? "C2W" : "C2X");
            }
        }
        for (uint32_t i = 0; i < l->numGlo; i++) {
            const tblSatGlo& g = l->tblGlo[i];
            const rinex::SatObs* s = find('R', g.tblHdr->num);
            ASSERT_NE(s, nullptr);
            for (int p = 0; p < 4; p++) {
                const rinex::ObsValue& v = s->values[(std::size_t)obsHdr_->obsIndex('R', gloCodes[p])];
                bool expected = v.present && (p < 3 || g.tblObs->actual[2]);
                EXPECT_EQ(g.tblObs->actual[p], expected ? 1 : 0);
                if (expected) check('R', *s, *g.tblObs, p, gloCodes[p]);
            }
            int k = 0;
            ASSERT_TRUE(obsHdr_->gloFrequency(g.tblHdr->num, k));
            EXPECT_EQ(g.tblHdr->lit, k < 0 ? k + 32 : k);
        }
        /* Every GPS and GLONASS satellite of the epoch is in the message. */
        EXPECT_EQ(l->numGps + l->numGlo, ep.sats.size());
    }
    EXPECT_GT(compared, 10000);
}

}  // namespace

namespace {

/* The project's sample log, made by `zelnav convert` from the 1-s
 * recording: it reads back whole, says where it comes from, and every
 * message decodes cleanly, one a second. */
TEST(SampleLog, ReadsBackAndDecodes) {
    zlog::Reader r;
    ASSERT_TRUE(r.open(dataPath("tlse-2024-001/tlse_1200_5min.zlog")));
    const zlog::FileHeader& h = r.header();
    EXPECT_TRUE(h.hasPosition);
    EXPECT_NEAR(h.position[0], 4627852.5264, 1e-4);
    EXPECT_NEAR(h.position[1], 119640.5140, 1e-4);
    EXPECT_NEAR(h.position[2], 4372994.8358, 1e-4);
    EXPECT_EQ(h.station, "TLSE");
    ASSERT_EQ(h.sources.size(), 2u);
    EXPECT_EQ(h.sources[0], "TLSE00FRA_R_20240011200_05M_01S_MO.rnx.gz");
    EXPECT_EQ(h.sources[1], "BRDC00IGS_R_20240010000_01D_MN.rnx.gz");
    convtest::Intake in;
    zlog::Record rec;
    uint32_t n = 0;
    while (r.next(rec)) {
        EXPECT_FALSE(rec.interpolated());
        lsttblSat_t* l = in.feed(rec.message);
        ASSERT_EQ(getTmZel(l), 757436382u + n);
        EXPECT_GE(l->numGps, 11u);
        EXPECT_EQ(l->numGlo, 8u);
        for (uint32_t i = 0; i < l->numGlo; i++) EXPECT_EQ(l->tblGlo[i].tblHdr->badNavInfCt, 0);
        for (uint32_t i = 0; i < l->numGps; i++) EXPECT_EQ(l->tblGps[i].tblHdr->badNavInfCt, 0);
        n++;
    }
    EXPECT_FALSE(r.truncated());
    EXPECT_TRUE(r.errors().empty());
    EXPECT_EQ(n, 300u);
}

}  // namespace
