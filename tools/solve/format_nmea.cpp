/*
 * --format nmea: a GGA and an RMC sentence per epoch, NMEA 0183 4.x, the
 * way a receiver writes them on its serial port.
 *
 * Choices where the solution does not carry what the sentences ask for:
 *   - talker GN for combined fixes, GP for GPS, GL for GLONASS;
 *   - the altitude field holds the height above the WGS-84 ellipsoid and
 *     the geoid separation field 0 (there is no geoid model here), so
 *     that altitude + separation is still the ellipsoidal height;
 *   - the HDOP field holds the solution's DOP, which is the position DOP:
 *     never smaller than the HDOP;
 *   - an epoch without a fix gives GGA with quality 0 and RMC status V,
 *     so that a listener sees the receiver alive.
 */
#include <cmath>
#include <string>

#include "format.h"

namespace solve {

unsigned int nmeaChecksum(const std::string& body) {
    unsigned int x = 0;
    for (char c : body) x ^= static_cast<unsigned char>(c);
    return x;
}

namespace {

/* ddmm.mmmmm or dddmm.mmmmm and the hemisphere letter, rounded to
 * 1e-5 minute as a whole (so 59.999999' never prints as 60). */
std::string angle(double deg, int degDigits, char pos, char neg) {
    const double a = std::fabs(deg);
    const long long units = std::llround(a * 60.0 * 1e5);
    const long long d = units / 6000000;
    const long long m = units % 6000000;
    char s[32];
    std::snprintf(s, sizeof s, "%0*lld%02lld.%05lld,%c", degDigits, d, m / 100000, m % 100000,
                  deg < 0 ? neg : pos);
    return s;
}

class NmeaWriter : public Writer {
public:
    using Writer::Writer;

    void begin(const RunInfo& info) override {
        talker_ = info.mode == 0 ? "GL" : info.mode == 1 ? "GP" : "GN";
    }

    void epoch(const Epoch& e) override {
        char hms[16];
        std::snprintf(hms, sizeof hms, "%02u%02u%02u.00", e.utc[3], e.utc[4], e.utc[5]);
        char date[8];
        std::snprintf(date, sizeof date, "%02u%02u%02u", e.utc[2], e.utc[1], e.utc[0] % 100);
        char buf[160];
        if (!e.hasFix) {
            std::snprintf(buf, sizeof buf, "%sGGA,%s,,,,,0,00,,,M,,M,,", talker_, hms);
            sentence(buf);
            std::snprintf(buf, sizeof buf, "%sRMC,%s,V,,,,,,,%s,,,N", talker_, hms, date);
            sentence(buf);
            return;
        }
        const std::string lat = angle(e.lat, 2, 'N', 'S');
        const std::string lon = angle(e.lon, 3, 'E', 'W');
        const unsigned int used = e.fix->numGlo + e.fix->numGps;
        std::snprintf(buf, sizeof buf, "%sGGA,%s,%s,%s,1,%02u,%.1f,%.3f,M,0.0,M,,", talker_, hms,
                      lat.c_str(), lon.c_str(), used, e.fix->dop10 / 10.0, e.h);
        sentence(buf);
        std::string course = ",";
        if (e.hasSpeed) {
            const double knots = std::hypot(e.enu[0], e.enu[1]) * 3600.0 / 1852.0;
            double cog = std::atan2(e.enu[0], e.enu[1]) * 180.0 / M_PI;
            if (cog < 0) cog += 360.0;
            char c[48];
            std::snprintf(c, sizeof c, "%.2f,%.1f", knots, cog);
            course = c;
        }
        std::snprintf(buf, sizeof buf, "%sRMC,%s,A,%s,%s,%s,%s,,,A", talker_, hms, lat.c_str(),
                      lon.c_str(), course.c_str(), date);
        sentence(buf);
    }

private:
    void sentence(const char* body) {
        std::fprintf(out_, "$%s*%02X\r\n", body, nmeaChecksum(body));
    }

    const char* talker_ = "GN";
};

}  // namespace

std::unique_ptr<Writer> makeNmeaWriter(std::FILE* out) {
    return std::unique_ptr<Writer>(new NmeaWriter(out));
}

}  // namespace solve
