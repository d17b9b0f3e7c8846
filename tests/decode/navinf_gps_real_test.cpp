/*
 * GPS collectors on real broadcast subframes.
 *
 * - Subframes 1-3 of a u-blox recording against the RINEX navigation file
 *   its owner made from the same recording: every ephemeris field within
 *   half a count of its broadcast resolution.
 * - Two whole almanac cycles of another u-blox recording: the almanac
 *   agrees with the ephemerides the same satellites sent, and page 18
 *   carries the leap-second values a Septentrio receiver decoded (they
 *   have not changed since 2017, so another week serves).
 */
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "decode/navinf_gps.h"
#include "decode/navinf_gps_fields.h"
#include "gps_feed.h"
#include "rinex_nav.h"

using gpstest::RealSubframe;

TEST(GpsRealData, EphemeridesMatchTheRinexFile) {
    std::vector<RealSubframe> sfs = gpstest::readSubframes(gpstest::dataPath("rawnav/gps_subframes_ubx_coldstart.txt"));
    rinex::Diagnostics diag;
    rinex::NavFile nav;
    ASSERT_TRUE(rinex::readNavFile(gpstest::dataPath("rawnav/rinex_nav_coldstart.nav"), nav, diag));
    ASSERT_EQ(nav.gps.size(), 9u);

    for (const rinex::GpsEph& r : nav.gps) {
        SCOPED_TRACE("G" + std::to_string(r.prn));
        OprGps_t c;
        int sets = 0;
        for (const RealSubframe& s : sfs) {
            if (s.prn != r.prn || s.id < 1 || s.id > 3) continue;
            gpstest::feed(c, s.prn, s.sf, gpstest::tmZelOf(s.week, s.tow));
            if (s.id != 3 || !c.isCmplt()) continue;
            tblOprGps_t t;
            ASSERT_EQ(c.getTbl(&t), 1);
            /* every satellite kept the RINEX file's upload throughout */
            ASSERT_EQ(t.iode, (int)r.iode);
            ASSERT_EQ(t.toe, (unsigned)r.toe);
            sets++;
            /* 2000-01-01 is 518400 s into its GPS week */
            EXPECT_EQ(t.toc, (unsigned)((r.tocSec2000 + 518400) % 604800));
            const struct {
                const char* name;
                double got, want;
                const GpsField& f;
            } near[] = {
                {"af0", t.af0, r.af0, kGpsSf1.af0},          {"af1", t.af1, r.af1, kGpsSf1.af1},
                {"af2", t.af2, r.af2, kGpsSf1.af2},          {"tgd", t.tgd, r.tgd, kGpsSf1.tgd},
                {"crs", t.crs, r.crs, kGpsSf2.crs},          {"deltaN", t.deltaN, r.deltaN, kGpsSf2.deltaN},
                {"m0", t.m0, r.m0, kGpsSf2.m0},              {"cuc", t.cuc, r.cuc, kGpsSf2.cuc},
                {"e", t.e, r.e, kGpsSf2.e},                  {"cus", t.cus, r.cus, kGpsSf2.cus},
                {"sqrtA", t.sqrtA, r.sqrtA, kGpsSf2.sqrtA},  {"cic", t.cic, r.cic, kGpsSf3.cic},
                {"omega0", t.omega0, r.omega0, kGpsSf3.omega0}, {"cis", t.cis, r.cis, kGpsSf3.cis},
                {"i0", t.i0, r.i0, kGpsSf3.i0},              {"crc", t.crc, r.crc, kGpsSf3.crc},
                {"omega", t.omega, r.omega, kGpsSf3.omega},  {"omegaDot", t.omegaDot, r.omegaDot, kGpsSf3.omegaDot},
                {"idot", t.idot, r.idot, kGpsSf3.idot},
            };
            for (const auto& n : near) EXPECT_NEAR(n.got, n.want, n.f.scale * 0.5000001) << n.name;
            EXPECT_EQ((int)t.wn, (int)r.week % 1024);
            EXPECT_EQ(t.ura, r.accuracy);
            EXPECT_EQ((int)t.health, (int)r.health);
            EXPECT_EQ((int)t.iodc, (int)r.iodc & 255);
        }
        EXPECT_GT(sets, 0);
    }
}

namespace {

struct PrnResult {
    std::vector<tblAlmGps_t> alm;
    bool hasEph = false, hasUtc = false;
    tblOprGps_t eph;
    tblTmPrmGps_t utc;
};

/* Feeds every subframe of the file to one set of collectors per PRN,
 * keeping each almanac as it completes, the last ephemeris and page 18. */
std::map<int, PrnResult> runAlmanacFile() {
    std::vector<RealSubframe> sfs =
        gpstest::readSubframes(gpstest::dataPath("rawnav/gps_subframes_ubx_rxmsfrbx_2cycles.txt"));
    struct Collectors {
        AlmGps_t alm;
        OprGps_t opr;
        TmPrmGps_t utc;
    };
    std::map<int, Collectors> col;
    std::map<int, PrnResult> res;
    for (const RealSubframe& s : sfs) {
        Collectors& c = col[s.prn];
        PrnResult& r = res[s.prn];
        unsigned tm = gpstest::tmZelOf(s.week, s.tow);
        gpstest::feed(c.alm, s.prn, s.sf, tm);
        gpstest::feed(c.opr, s.prn, s.sf, tm);
        gpstest::feed(c.utc, s.prn, s.sf, tm);
        if (s.id == 5 && c.alm.isCmplt()) {
            tblAlmGps_t a;
            EXPECT_EQ(c.alm.getTbl(&a), 1);
            if (r.alm.empty() || r.alm.back().tmResived != a.tmResived) r.alm.push_back(a);
        }
        if (s.id == 3 && c.opr.isCmplt()) r.hasEph = c.opr.getTbl(&r.eph) == 1;
        if (c.utc.isCmplt()) r.hasUtc = c.utc.getTbl(&r.utc) == 1;
    }
    return res;
}

}  // namespace

TEST(GpsRealData, AlmanacAndUtcCycles) {
    std::map<int, PrnResult> res = runAlmanacFile();

    /* The almanac agrees with the ephemerides the same satellites sent:
     * the orbit shape directly, the node and the argument of latitude
     * after carrying the almanac to the ephemeris' toe. The almanac is
     * referenced to week 2415 (wna 367), the ephemerides to week 2414.
     * Mean elements fitted over days against osculating ones over hours
     * agree to about 1e-3 rad along the orbit; the limits stay far below
     * what a wrong sign, scale or bit position gives. */
    const double gm = 3.986005e14, we = 7.2921151467e-5;
    const tblAlmGps_t& a = res[13].alm.at(0);
    ASSERT_EQ(a.wna, 367u);
    int againstEph = 0;
    for (auto& pr : res) {
        for (const tblAlmGps_t& other : pr.second.alm) {
            EXPECT_EQ(other.toa, a.toa); /* every satellite sends the same upload */
            EXPECT_EQ(other.wna, a.wna);
        }
        if (!pr.second.hasEph) continue;
        const tblOprGps_t& eph = pr.second.eph;
        const tblAlmGpsSat_t& e = a.alm[pr.first - 1];
        SCOPED_TRACE("PRN " + std::to_string(pr.first));
        ASSERT_EQ(e.onEmpty, 0);
        EXPECT_EQ(e.toa, a.toa);
        EXPECT_NEAR(e.sqrtA, eph.sqrtA, 0.2);
        EXPECT_NEAR(e.e, eph.e, 2e-4);
        EXPECT_NEAR(0.3 * GPS_PI + e.deltaI, eph.i0, 2e-3);
        EXPECT_NEAR(e.omegaDot, eph.omegaDot, 1e-9);
        EXPECT_NEAR(e.af0, eph.af0, 1e-5);
        EXPECT_NEAR(e.af1, eph.af1, 1e-11);
        double t = (double)eph.toe - 604800.0; /* toe on the almanac's week */
        double dt = t - (double)a.toa;
        double nodeAlm = e.omega0 + e.omegaDot * dt - we * t;
        double nodeEph = eph.omega0 - we * eph.toe;
        EXPECT_NEAR(std::remainder(nodeAlm - nodeEph, 2 * GPS_PI), 0.0, 5e-3);
        double n = std::sqrt(gm) / (e.sqrtA * e.sqrtA * e.sqrtA);
        EXPECT_NEAR(std::remainder(e.m0 + n * dt + e.omega - eph.m0 - eph.omega, 2 * GPS_PI), 0.0, 5e-3);
        againstEph++;
    }
    EXPECT_GE(againstEph, 6);

    /* Page 18 against the receiver's record: DEL_t_LS, WN_LSF, DN,
     * DEL_t_LSF are its columns 9-12. */
    int leap[4] = {};
    std::ifstream in(gpstest::dataPath("rawnav/sbf_allblocks_gpsutc.txt"));
    for (std::string line, skip; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream ss(line);
        for (int i = 0; i < 8; i++) ss >> skip;
        ss >> leap[0] >> leap[1] >> leap[2] >> leap[3];
    }
    ASSERT_EQ(leap[0], 18);
    int pages = 0;
    for (auto& pr : res) {
        if (!pr.second.hasUtc) continue;
        const tblTmPrmGps_t& u = pr.second.utc;
        pages++;
        EXPECT_EQ(u.dtLs, leap[0]);
        EXPECT_EQ((int)u.wnLsf, leap[1]);
        EXPECT_EQ((int)u.dn, leap[2]);
        EXPECT_EQ(u.dtLsf, leap[3]);
        EXPECT_TRUE(u.wnt == 2414 % 256 || u.wnt == 2415 % 256) << u.wnt;
    }
    EXPECT_GE(pages, 6);
}
