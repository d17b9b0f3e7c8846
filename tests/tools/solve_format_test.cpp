/*
 * The output writers where the sample log (north and east, one track)
 * does not reach: southern and western hemispheres and the rounding of
 * minutes at a degree's edge in NMEA, the course of a westward motion,
 * an epoch without a fix, and a GeoJSON of a single fix (no track).
 * The sample log itself is read back by real parsers in
 * solve_outputs.py.
 */
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "format.h"

namespace {

std::string written(solve::Format f, const std::vector<solve::Epoch>& epochs) {
    std::FILE* out = std::tmpfile();
    {
        std::unique_ptr<solve::Writer> w = solve::makeWriter(f, out);
        solve::RunInfo info;
        info.source = "a \"quoted\" log";
        info.mode = 1;
        w->begin(info);
        for (const solve::Epoch& e : epochs) w->epoch(e);
        w->end();
    }
    std::string s;
    std::rewind(out);
    char buf[4096];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, out)) > 0) s.append(buf, n);
    std::fclose(out);
    return s;
}

/* Every sentence's checksum, computed here from the text. */
bool checksumsHold(const std::string& text) {
    std::size_t at = 0;
    while ((at = text.find('$', at)) != std::string::npos) {
        const std::size_t star = text.find('*', at);
        if (star == std::string::npos || text.compare(star + 3, 2, "\r\n") != 0) return false;
        unsigned int x = 0;
        for (std::size_t i = at + 1; i < star; i++) x ^= (unsigned char)text[i];
        if (std::stoul(text.substr(star + 1, 2), nullptr, 16) != x) return false;
        at = star;
    }
    return true;
}

TEST(SolveFormat, NmeaHemispheresRoundingAndNoFix) {
    tblCrdPnt_t fix;
    std::memset(&fix, 0, sizeof fix);
    fix.actual = 1;
    fix.sys = 1;
    fix.numGps = 7;
    fix.dop10 = 23;
    solve::Epoch e;
    e.fix = &fix;
    e.hasFix = true;
    const unsigned int t[6] = {2024, 3, 9, 23, 59, 58};
    std::copy(t, t + 6, e.utc);
    e.lat = -33.99999999999;    // 33 deg 59.9999999994 min: rounds up to 34 deg
    e.lon = -70.5;
    e.h = -12.25;
    e.hasSpeed = true;
    e.enu[0] = -1.0;            // due west at 1 m/s
    solve::Epoch none = e;
    none.hasFix = false;
    none.fix = nullptr;

    const std::string s = written(solve::Format::Nmea, {e, none});
    EXPECT_TRUE(checksumsHold(s)) << s;
    EXPECT_NE(s.find("$GPGGA,235958.00,3400.00000,S,07030.00000,W,1,07,2.3,-12.250,M,0.0,M,,*"),
              std::string::npos) << s;
    EXPECT_NE(s.find("$GPRMC,235958.00,A,3400.00000,S,07030.00000,W,1.94,270.0,090324,,,A*"),
              std::string::npos) << s;
    EXPECT_NE(s.find("$GPGGA,235958.00,,,,,0,00,,,M,,M,,*"), std::string::npos) << s;
    EXPECT_NE(s.find("$GPRMC,235958.00,V,,,,,,,090324,,,N*"), std::string::npos) << s;
    EXPECT_EQ(std::count(s.begin(), s.end(), '$'), 4);

    // One fix: a Point and no LineString; the source name escaped.
    const std::string g = written(solve::Format::Geojson, {none, e});
    EXPECT_NE(g.find("\"coordinates\":[-70.500000000,-34.000000000,-12.250]"), std::string::npos) << g;
    EXPECT_EQ(g.find("LineString"), std::string::npos);
    EXPECT_EQ(g.find("Feature\",\"geometry\""), g.rfind("Feature\",\"geometry\""));
    const std::string two = written(solve::Format::Geojson, {e, e});
    EXPECT_NE(two.find("\"source\":\"a \\\"quoted\\\" log\""), std::string::npos) << two;

    // .pos: header, and the one fix only.
    const std::string p = written(solve::Format::Pos, {none, e});
    EXPECT_EQ(std::count(p.begin(), p.end(), '\n'), 7);
    EXPECT_NE(p.find("2024/03/09 23:59:58.000  -34.000000000  -70.500000000   -12.2500   5   7"),
              std::string::npos) << p;
}

}  // namespace
