/*
 * The epoch every output format is written from, and the choice of
 * writer. See format.h.
 */
#include "format.h"

#include <cstdio>

#include "satpos/geodesy.h"
#include "solve_report.h"

namespace solve {

namespace {

/* The receiver time scale runs three hours ahead of UTC. */
const unsigned int kUtcOffset = 10800;

struct Named {
    const char* name;
    Format format;
    const char* extension;
};

const Named kFormats[] = {
    {"csv", Format::Csv, "csv"},
    {"nmea", Format::Nmea, "nmea"},
    {"pos", Format::Pos, "pos"},
    {"geojson", Format::Geojson, "geojson"},
};

}  // namespace

bool formatOf(const std::string& name, Format* out) {
    for (const Named& n : kFormats)
        if (name == n.name) {
            *out = n.format;
            return true;
        }
    return false;
}

const char* formatExtension(Format f) {
    for (const Named& n : kFormats)
        if (n.format == f) return n.extension;
    return "out";
}

Epoch makeEpoch(unsigned int tm, const tblCrdPnt_t* fix, const tblSpdPnt_t* spd,
                unsigned int datum, const char* extra) {
    Epoch e;
    e.tm = tm;
    e.fix = fix;
    e.spd = spd;
    e.datum = datum;
    e.extra = extra;
    if (tm >= kUtcOffset) tmZelToDate(tm - kUtcOffset, e.utc);
    if (fix == nullptr || fix->actual != 1) return e;

    e.hasFix = true;
    fixToWgs84(fix, datum, e.xyz);
    geo::Ellipsoid wgs84;
    geo::datumEllipsoid(0, &wgs84);
    double blh[3] = {0, 0, 0};
    geo::xyz_blh(e.xyz, wgs84, blh);
    e.lat = blh[0];
    e.lon = blh[1] > 180.0 ? blh[1] - 360.0 : blh[1];
    e.h = blh[2];
    if (spd != nullptr && spd->actual == 1) {
        /* The record is packed to 4 bytes: its doubles are copied out
         * rather than read through a pointer. */
        const double v[3] = {spd->vxyz[0], spd->vxyz[1], spd->vxyz[2]};
        double top[3];  /* north, up, east */
        geo::gcsk_tcsk(blh, v, top);
        e.hasSpeed = true;
        e.enu[0] = top[2];
        e.enu[1] = top[0];
        e.enu[2] = top[1];
    }
    return e;
}

std::string isoTime(const Epoch& e) {
    char s[32];
    std::snprintf(s, sizeof s, "%04u-%02u-%02uT%02u:%02u:%02u", e.utc[0], e.utc[1], e.utc[2],
                  e.utc[3], e.utc[4], e.utc[5]);
    return s;
}

std::unique_ptr<Writer> makeWriter(Format f, std::FILE* out) {
    switch (f) {
    case Format::Nmea: return makeNmeaWriter(out);
    case Format::Pos: return makePosWriter(out);
    case Format::Geojson: return makeGeojsonWriter(out);
    case Format::Csv: break;
    }
    return makeCsvWriter(out);
}

}  // namespace solve
