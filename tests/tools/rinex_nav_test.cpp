#include <gtest/gtest.h>

#include <functional>

#include "rinex_nav.h"
#include "rinex_test_files.h"

using namespace rinex;
using rinextest::hline;
using rinextest::joinLines;

namespace {

const char* const kBrdc = "tlse-2024-001/BRDC00IGS_R_20240010000_01D_MN.rnx.gz";
const char* const kGps2 = "orbits-2009-091/brdc0910.09n";
const char* const kGlo2 = "orbits-2009-091/brdc0910.09g";

struct GpsWant {
    const char* name;
    double GpsEph::*member;
    double value;
};
struct GloWant {
    const char* name;
    double GloEph::*member;
    double value;
};

template <class Rec, class Want, std::size_t N>
void expectFields(const Rec& rec, const Want (&want)[N]) {
    for (const Want& w : want) EXPECT_EQ(rec.*(w.member), w.value) << w.name;
}

const GpsEph* findGps(const NavFile& f, long line) {
    for (const GpsEph& e : f.gps)
        if (e.line == line) return &e;
    return nullptr;
}

/* ---- The real files ---- */

TEST(RinexNavReal, Rinex3MixedDayOfTlse) {
    Diagnostics diag;
    NavFile f;
    ASSERT_TRUE(readNavFile(rinextest::dataPath(kBrdc), f, diag));
    EXPECT_TRUE(diag.empty()) << diag.list()[0].text();
    EXPECT_DOUBLE_EQ(f.header.version, 3.05);
    EXPECT_EQ(f.header.fileType, 'N');
    EXPECT_EQ(f.gps.size(), 452u);
    EXPECT_EQ(f.glo.size(), 1199u);
    EXPECT_TRUE(f.otherRecords.empty());
    EXPECT_EQ(f.badRecords, 0);

    const NavHeader& h = f.header;
    ASSERT_TRUE(h.hasIonAlpha && h.hasIonBeta);
    const double alpha[4] = {1.7695E-08, -7.4506E-09, -5.9605E-08, 1.1921E-07};
    const double beta[4] = {1.3722E+05, -1.9661E+05, 6.5536E+04, 1.3107E+05};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(h.ionAlpha[i], alpha[i]) << i;   /* GPSA, not the BDSA/QZSA lines around it */
        EXPECT_EQ(h.ionBeta[i], beta[i]) << i;
    }
    ASSERT_TRUE(h.gpsUtc.present);
    EXPECT_EQ(h.gpsUtc.a0, -1.8626451492E-09);
    EXPECT_EQ(h.gpsUtc.a1, -6.217248938E-15);   /* touches a0: cut by column */
    EXPECT_EQ(h.gpsUtc.t, 319488);
    EXPECT_EQ(h.gpsUtc.week, 2295);
    ASSERT_TRUE(h.gloUtc.present);
    EXPECT_EQ(h.gloUtc.a0, -3.2596290112E-09);
    EXPECT_EQ(h.gloUtc.week, 0);
    EXPECT_FALSE(h.gloGps.present);
    ASSERT_TRUE(h.hasLeapSeconds);
    EXPECT_EQ(h.leapSeconds, 18);

    /* The first GPS record, every field against the file's text. */
    const GpsEph* g = findGps(f, 98);
    ASSERT_TRUE(g != nullptr);
    EXPECT_EQ(g->prn, 1);
    EXPECT_EQ(g->toc.text(), "2024-01-01 00:00:00.0000000");
    EXPECT_EQ(g->tocSec2000, 24 * 365 * 86400LL + 6 * 86400LL);  /* 2000..2023 hold six 29 Februaries */
    const GpsWant gw[] = {
        {"af0", &GpsEph::af0, 1.649968326092e-04}, {"af1", &GpsEph::af1, 7.958078640513e-13},
        {"af2", &GpsEph::af2, 0.0}, {"iode", &GpsEph::iode, 72.0},
        {"crs", &GpsEph::crs, 6.956250000000e+01}, {"deltaN", &GpsEph::deltaN, 3.974094108400e-09},
        {"m0", &GpsEph::m0, 2.047872163810e-01}, {"cuc", &GpsEph::cuc, 3.783032298088e-06},
        {"e", &GpsEph::e, 1.305347960442e-02}, {"cus", &GpsEph::cus, 6.282702088356e-06},
        {"sqrtA", &GpsEph::sqrtA, 5.154024417877e+03}, {"toe", &GpsEph::toe, 86400.0},
        {"cic", &GpsEph::cic, -8.009374141693e-08}, {"omega0", &GpsEph::omega0, -1.609681262806e+00},
        {"cis", &GpsEph::cis, 1.192092895508e-07}, {"i0", &GpsEph::i0, 9.903294508767e-01},
        {"crc", &GpsEph::crc, 2.726875000000e+02}, {"omega", &GpsEph::omega, 9.986756881767e-01},
        {"omegaDot", &GpsEph::omegaDot, -8.096765834225e-09}, {"idot", &GpsEph::idot, 8.143196339671e-11},
        {"codesL2", &GpsEph::codesL2, 1.0}, {"week", &GpsEph::week, 2295.0},
        {"l2pFlag", &GpsEph::l2pFlag, 0.0}, {"accuracy", &GpsEph::accuracy, 2.8},
        {"health", &GpsEph::health, 63.0}, {"tgd", &GpsEph::tgd, 5.122274160385e-09},
        {"iodc", &GpsEph::iodc, 72.0}, {"transmissionTime", &GpsEph::transmissionTime, 79218.0},
        {"fitInterval", &GpsEph::fitInterval, 4.0},
    };
    expectFields(*g, gw);
    EXPECT_EQ(g->blank, 0u);

    /* The first GLONASS record, with the fifth line of 3.05. */
    const GloEph* r = nullptr;
    for (const GloEph& e : f.glo)
        if (e.line == 3714) r = &e;
    ASSERT_TRUE(r != nullptr);
    EXPECT_EQ(r->slot, 1);
    EXPECT_EQ(r->toc.text(), "2023-12-31 23:45:00.0000000");
    const GloWant rw[] = {
        {"minusTauN", &GloEph::minusTauN, 7.346738129854e-05}, {"gammaN", &GloEph::gammaN, 9.094947017729e-13},
        {"tk", &GloEph::tk, 8.460000000000e+04}, {"x", &GloEph::x, -1.590860058594e+04},
        {"vx", &GloEph::vx, 2.358419418335e+00}, {"ax", &GloEph::ax, -1.862645149231e-09},
        {"health", &GloEph::health, 0.0}, {"y", &GloEph::y, -9.789697265625e+03},
        {"vy", &GloEph::vy, 3.281402587891e-01}, {"ay", &GloEph::ay, -1.862645149231e-09},
        {"freqNum", &GloEph::freqNum, 1.0}, {"z", &GloEph::z, -1.737410107422e+04},
        {"vz", &GloEph::vz, -2.343545913696e+00}, {"az", &GloEph::az, 0.0},
        {"age", &GloEph::age, 0.0}, {"statusFlags", &GloEph::statusFlags, 0.0},
        {"l1l2Delay", &GloEph::l1l2Delay, .999999999999e+09}, {"urai", &GloEph::urai, 15.0},
        {"healthFlags", &GloEph::healthFlags, 0.0},
    };
    expectFields(*r, rw);
    EXPECT_TRUE(r->hasLine5);
    EXPECT_EQ(r->blank, (1u << 15) | (1u << 18));   /* status and health flags are blank */

    /* Every record of the day: a slot, a time on the day, all GLONASS
     * with their fifth line and a frequency number in range. */
    for (const GloEph& e : f.glo) {
        ASSERT_TRUE(e.hasLine5) << e.line;
        ASSERT_TRUE(e.freqNum >= -7 && e.freqNum <= 6) << e.line;
        ASSERT_TRUE(e.slot >= 1 && e.slot <= 25) << e.line;   /* R25 is in the day's data */
    }
    for (const GpsEph& e : f.gps) ASSERT_EQ(e.week, 2295.0) << e.line;
}

TEST(RinexNavReal, Rinex2Glonass) {
    Diagnostics diag;
    NavFile f;
    ASSERT_TRUE(readNavFile(rinextest::dataPath(kGlo2), f, diag));
    EXPECT_TRUE(diag.empty());
    EXPECT_DOUBLE_EQ(f.header.version, 2.01);
    EXPECT_EQ(f.header.fileType, 'G');
    EXPECT_EQ(f.glo.size(), 912u);
    EXPECT_TRUE(f.gps.empty());
    const NavHeader& h = f.header;
    ASSERT_TRUE(h.hasCorrToSystemTime);
    EXPECT_EQ(h.corrYear, 2009);
    EXPECT_EQ(h.corrMonth, 4);
    EXPECT_EQ(h.corrDay, 1);
    EXPECT_EQ(h.minusTauC, 0.158790498972E-06);
    EXPECT_EQ(h.leapSeconds, 15);
    EXPECT_FALSE(h.hasIonAlpha);

    const GloEph& r = f.glo[0];
    EXPECT_EQ(r.slot, 2);
    EXPECT_EQ(r.line, 8);
    EXPECT_EQ(r.toc.text(), "2009-04-01 00:15:00.0000000");
    EXPECT_FALSE(r.hasLine5);
    const GloWant rw[] = {
        {"minusTauN", &GloEph::minusTauN, 0.206762924790E-04}, {"gammaN", &GloEph::gammaN, -0.272848410532E-11},
        {"tk", &GloEph::tk, 0.900000000000E+03}, {"x", &GloEph::x, 0.936473925781E+04},
        {"vx", &GloEph::vx, -0.267867088318E+00}, {"ax", &GloEph::ax, 0.0},
        {"health", &GloEph::health, 0.0}, {"y", &GloEph::y, -0.159087973633E+05},
        {"vy", &GloEph::vy, 0.239853191376E+01}, {"ay", &GloEph::ay, 0.186264514923E-08},
        {"freqNum", &GloEph::freqNum, 1.0}, {"z", &GloEph::z, -0.176143896484E+05},
        {"vz", &GloEph::vz, -0.230765628815E+01}, {"az", &GloEph::az, 0.186264514923E-08},
        {"age", &GloEph::age, 0.0},
    };
    expectFields(r, rw);
    EXPECT_EQ(r.blank, 0u);
    const GloEph& last = f.glo.back();  /* "23 09  4  1 23 45  0.0-0.200188718736E-03 ..." */
    EXPECT_EQ(last.slot, 23);
    EXPECT_EQ(last.toc.text(), "2009-04-01 23:45:00.0000000");
    EXPECT_EQ(last.minusTauN, -0.200188718736E-03);
    EXPECT_EQ(last.tk, 0.846000000000E+05);
}

/* ---- Small files written here ---- */

/* A RINEX 3.04 mixed file: lines 1-8 header; G01 at 9 (8 lines), R01 at
 * 17 (4 lines), E11 at 21 (8), S36 at 29 (4), G25 at 33 (8, Fortran D
 * exponents, no leading zeros, trailing blanks dropped), R02 at 41 (5). */
std::vector<std::string> baseNav3() {
    std::vector<std::string> l = {
        hline("     3.04           N: GNSS NAV DATA    M: MIXED", "RINEX VERSION / TYPE"),
        hline("test", "PGM / RUN BY / DATE"),
        hline("GPSA   1.7695E-08 -7.4506E-09 -5.9605E-08  1.1921E-07", "IONOSPHERIC CORR"),
        hline("GPSB   1.3722E+05 -1.9661E+05  6.5536E+04  1.3107E+05", "IONOSPHERIC CORR"),
        hline("GPUT -1.8626451492E-09-6.217248938E-15 319488 2295", "TIME SYSTEM CORR"),
        hline("GLGP  2.7939677238E-09 0.000000000E+00      0    0", "TIME SYSTEM CORR"),
        hline("    18    18  1929     7", "LEAP SECONDS"),
        hline("", "END OF HEADER"),
        "G01 2024 01 01 00 00 00 1.649968326092e-04 7.958078640513e-13 0.000000000000e+00",
        "     7.200000000000e+01 6.956250000000e+01 3.974094108400e-09 2.047872163810e-01",
        "     3.783032298088e-06 1.305347960442e-02 6.282702088356e-06 5.154024417877e+03",
        "     8.640000000000e+04-8.009374141693e-08-1.609681262806e+00 1.192092895508e-07",
        "     9.903294508767e-01 2.726875000000e+02 9.986756881767e-01-8.096765834225e-09",
        "     8.143196339671e-11 1.000000000000e+00 2.295000000000e+03 0.000000000000e+00",
        "     2.800000000000e+00 6.300000000000e+01 5.122274160385e-09 7.200000000000e+01",
        "     7.921800000000e+04 4.000000000000e+00                                      ",
        "R01 2023 12 31 23 45 00 7.346738129854e-05 9.094947017729e-13 8.460000000000e+04",
        "    -1.590860058594e+04 2.358419418335e+00-1.862645149231e-09 0.000000000000e+00",
        "    -9.789697265625e+03 3.281402587891e-01-1.862645149231e-09 1.000000000000e+00",
        "    -1.737410107422e+04-2.343545913696e+00-0.000000000000e+00 0.000000000000e+00",
    };
    l.push_back("E11 2024 01 01 00 10 00 1.0e-04 0.0 0.0");
    for (int i = 0; i < 7; ++i) l.push_back("     1.000000000000e+00");
    l.push_back("S36 2024 01 01 00 01 04 0.0 0.0 0.0");
    for (int i = 0; i < 3; ++i) l.push_back("     0.000000000000e+00");
    const char* g25[] = {
        "G25 2025 04 25 08 00 00  .489457976073D-03 -.113686837722D-11  .000000000000D+00",
        "      .730000000000D+02  .102875000000D+03  .492199073496D-08  .121826291176D+01",
        "      .531040132046D-05  .122986361384D-01  .974535942078D-05  .515364361000D+04",
        "      .460800000000D+06 -.210478901863D-06  .298942350206D+00  .223517417908D-07",
        "      .949063522065D+00  .186875000000D+03  .112541674290D+01 -.848285334489D-08",
        "      .352514683652D-09  .100000000000D+01  .236300000000D+04  .000000000000D+00",
        "      .200000000000D+01  .000000000000D+00  .558793544769D-08  .730000000000D+02",
        "      .455886000000D+06  .400000000000D+01",
    };
    for (const char* s : g25) l.push_back(s);
    const char* r02[] = {
        "R02 2024 01 01 00 15 00-1.234567890123e-05 0.000000000000e+00 8.640000000000e+04",
        "     1.000000000000e+04 1.000000000000e+00 0.000000000000e+00 0.000000000000e+00",
        "     2.000000000000e+04-2.000000000000e+00 0.000000000000e+00-4.000000000000e+00",
        "     3.000000000000e+04 3.000000000000e+00 0.000000000000e+00 2.000000000000e+00",
        "     1.000000000000e+00 2.793967723846e-09 3.000000000000e+00 0.000000000000e+00",
    };
    for (const char* s : r02) l.push_back(s);
    return l;
}

struct NavCase {
    const char* name;
    std::function<void(std::vector<std::string>&)> damage;
    long line;
    const char* what;
    std::size_t gps, glo;
    long other;     /* Galileo + SBAS records passed over */
};

TEST(RinexNavSmall, DamagedRecordsAreReportedAndSkipped) {
    const std::vector<NavCase> cases = {
        {"intact", [](auto&) {}, 0, "", 2, 2, 2},
        {"cut_field", [](auto& l) { l[10].resize(30); }, 11, "G01 record: line ends inside e; record skipped", 1, 2, 2},
        {"missing_required", [](auto& l) { l[11].replace(4, 19, std::string(19, ' ')); }, 12,
         "G01 record: toe is missing; record skipped", 1, 2, 2},
        {"extra_line_skipped_system", [](auto& l) { l.insert(l.begin() + 22, "     9.0e+00"); }, 21,
         "E11 record has 9 lines, expected 8; record skipped", 2, 2, 1},
        {"bad_slot", [](auto& l) { l[40].replace(1, 2, "77"); }, 41, "satellite number is not valid: 'R77'", 2, 1, 2},
        {"stray_continuation", [](auto& l) { l.insert(l.begin() + 8, "     1.0e+00"); }, 9,
         "line does not start a record; skipped up to the next record", 2, 2, 2},
    };
    rinextest::ScratchDir dir;
    for (const NavCase& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<std::string> lines = baseNav3();
        c.damage(lines);
        const std::string path = dir.write(std::string(c.name) + ".rnx", joinLines(lines));
        Diagnostics diag;
        NavFile f;
        EXPECT_TRUE(readNavFile(path, f, diag));
        if (c.line == 0) {
            EXPECT_TRUE(diag.empty()) << diag.list()[0].text();
        } else {
            const std::string want = path + ":" + std::to_string(c.line) + ": " + c.what;
            EXPECT_TRUE(diag.contains(want)) << "want: " << want << "\ngot:  "
                                             << (diag.empty() ? "(nothing)" : diag.list()[0].text());
        }
        EXPECT_EQ(f.gps.size(), c.gps);
        EXPECT_EQ(f.glo.size(), c.glo);
        long other = 0;
        for (const auto& kv : f.otherRecords) other += kv.second;
        EXPECT_EQ(other, c.other);
    }
}

TEST(RinexNavSmall, FortranNotationLineEndsAndCompression) {
    rinextest::ScratchDir dir;
    const std::vector<std::string> lines = baseNav3();
    const std::string paths[] = {dir.write("plain.rnx", joinLines(lines)),
                                 dir.write("crlf.rnx", joinLines(lines, "\r\n")),
                                 dir.writeGz("packed.rnx.gz", joinLines(lines))};
    for (const std::string& p : paths) {
        SCOPED_TRACE(p);
        Diagnostics diag;
        NavFile f;
        ASSERT_TRUE(readNavFile(p, f, diag));
        EXPECT_TRUE(diag.empty()) << diag.list()[0].text();
        ASSERT_EQ(f.gps.size(), 2u);
        ASSERT_EQ(f.glo.size(), 2u);
        EXPECT_EQ(f.otherRecords['E'], 1);
        EXPECT_EQ(f.otherRecords['S'], 1);
        ASSERT_TRUE(f.header.gloGps.present);
        EXPECT_EQ(f.header.gloGps.a0, 2.7939677238E-09);
        /* D exponents, a bare leading point, the short last line. */
        const GpsEph& g = f.gps[1];
        EXPECT_EQ(g.prn, 25);
        EXPECT_EQ(g.af0, .489457976073e-03);
        EXPECT_EQ(g.af1, -.113686837722e-11);
        EXPECT_EQ(g.sqrtA, .515364361000e+04);
        EXPECT_EQ(g.omegaDot, -.848285334489e-08);
        EXPECT_EQ(g.transmissionTime, .455886000000e+06);
        EXPECT_EQ(g.fitInterval, 4.0);
        EXPECT_EQ(g.blank, 0u);
        /* A 3.04 four-line GLONASS record next to a five-line one. */
        EXPECT_FALSE(f.glo[0].hasLine5);
        const GloEph& r = f.glo[1];
        EXPECT_TRUE(r.hasLine5);
        EXPECT_EQ(r.minusTauN, -1.234567890123e-05);   /* touches the time: cut by column */
        EXPECT_EQ(r.freqNum, -4.0);
        EXPECT_EQ(r.age, 2.0);
        EXPECT_EQ(r.statusFlags, 1.0);
        EXPECT_EQ(r.l1l2Delay, 2.793967723846e-09);
        EXPECT_EQ(r.urai, 3.0);
        EXPECT_EQ(r.blank, 0u);
    }
}

}  // namespace
