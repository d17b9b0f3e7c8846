/*
 * The output formats of `zelnav solve` (--format):
 *
 *   csv      one line per epoch with every number the fix holds (the
 *            default; solve_report.h has its columns);
 *   nmea     NMEA 0183 GGA and RMC sentences per epoch, for the tools of
 *            integrators that read a receiver's serial output;
 *   pos      the solution file of RTKLIB (header lines starting with %,
 *            one line per fix), for its plotting and comparison tools;
 *   geojson  a FeatureCollection: one Point per fix with its properties,
 *            and the LineString of the whole track, for map tools.
 *
 * Every writer gets the same Epoch, made once per epoch by makeEpoch():
 * the fix in WGS-84 (PZ-90 fixes shifted), geodetic coordinates, the
 * velocity in the local east/north/up frame, and the time in UTC as the
 * library's tmZelToDate gives it. A writer keeps its own state (the
 * GeoJSON track), so one writer serves one output.
 */
#ifndef ZELNAV_SOLVE_FORMAT_H
#define ZELNAV_SOLVE_FORMAT_H

#include <cstdio>
#include <memory>
#include <string>

#include "zel.h"

namespace solve {

enum class Format { Csv, Nmea, Pos, Geojson };

/* "csv", "nmea", "pos", "geojson"; false for anything else. */
bool formatOf(const std::string& name, Format* out);
/* File name extension of a format, without the dot. */
const char* formatExtension(Format f);

/* What a writer may put in its header. */
struct RunInfo {
    std::string source;     /* the log, or "-" for the standard input */
    int mode = 10;          /* 0 GLONASS, 1 GPS, 10 both */
    bool raim = false;      /* CSV: the RAIM columns follow */
};

struct Epoch {
    unsigned int tm = 0;            /* receiver time of the epoch */
    unsigned int utc[6] = {0, 0, 0, 0, 0, 0};  /* year, month, day, hour, minute, second */
    const tblCrdPnt_t* fix = nullptr;   /* the fix as solved, null when none */
    const tblSpdPnt_t* spd = nullptr;
    unsigned int datum = 0;         /* of fix: 1 PZ-90, 0 WGS-84 */
    bool hasFix = false;
    double xyz[3] = {0, 0, 0};      /* WGS-84 ECEF, m */
    double lat = 0, lon = 0, h = 0; /* degrees (longitude -180..180), m above the ellipsoid */
    bool hasSpeed = false;
    double enu[3] = {0, 0, 0};      /* velocity east, north, up, m/s */
    const char* extra = nullptr;    /* further CSV columns (RAIM), or null */
};

/* The epoch `tm` with its fix (null or not actual: no fix). */
Epoch makeEpoch(unsigned int tm, const tblCrdPnt_t* fix, const tblSpdPnt_t* spd,
                unsigned int datum, const char* extra = nullptr);

/* "2024-01-01T12:00:00" */
std::string isoTime(const Epoch& e);

class Writer {
public:
    explicit Writer(std::FILE* out) : out_(out) {}
    virtual ~Writer() = default;
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    virtual void begin(const RunInfo&) {}
    virtual void epoch(const Epoch& e) = 0;
    /* After the last epoch: what can only be written then. */
    virtual void end() {}

protected:
    std::FILE* out_;
};

std::unique_ptr<Writer> makeWriter(Format f, std::FILE* out);

/* The writers, one file each. */
std::unique_ptr<Writer> makeCsvWriter(std::FILE* out);
std::unique_ptr<Writer> makeNmeaWriter(std::FILE* out);
std::unique_ptr<Writer> makePosWriter(std::FILE* out);
std::unique_ptr<Writer> makeGeojsonWriter(std::FILE* out);

/* NMEA checksum: XOR of the characters between '$' and '*'. */
unsigned int nmeaChecksum(const std::string& body);

}  // namespace solve

#endif
