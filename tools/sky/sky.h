/*
 * The predicted sky of a recording: the almanacs that a log of 0x0C
 * messages delivers, propagated by the library's almanac prediction to a
 * chosen time and place, side by side with the satellites the receiver
 * was tracking at that time; the dilution of precision of the predicted
 * constellation; and a sky plot of it as SVG.
 *
 * Everything here drives the library through its exported C functions
 * only (zel.h), as any host would.
 */
#ifndef ZELNAV_SKY_H
#define ZELNAV_SKY_H

#include <cstdint>
#include <string>
#include <vector>

#include "tbl_nav.h"

namespace sky {

/* One satellite of the sky. */
struct Sat {
    char sys = 'G';          /* 'G' GPS, 'R' GLONASS */
    int num = 0;             /* PRN or slot */
    int letter = 0;          /* GLONASS frequency letter -7..+24 (GPS: 0) */
    double az = 0.0;         /* degrees */
    double el = 0.0;         /* degrees */
    double dop = 0.0;        /* Doppler, Hz */
    double delay = 0.0;      /* signal travel time, s */
    bool tracked = false;    /* the receiver was tracking it at that time */
    bool predicted = false;  /* it is in the prediction */
    std::string why;         /* of a tracked satellite left out of the prediction */

    /* "G05", "R14". */
    std::string name() const;
};

/* Where an almanac came from. */
struct AlmInfo {
    bool valid = false;
    int source = -1;         /* slot or PRN of the satellite it was taken from */
    uint32_t received = 0;   /* tmZel at which it was complete */
    uint32_t n4 = 0, na = 0; /* GLONASS date */
    uint32_t wna = 0, toa = 0; /* GPS week (10-bit count) and reference time */
};

/* What to predict. */
struct Request {
    uint32_t at = 0;             /* tmZel of the prediction */
    double pos[3] = {0, 0, 0};   /* WGS-84: latitude, longitude (degrees), height (m),
                                    or X, Y, Z (m) when `cartesian` */
    bool cartesian = false;
    int mask = 0;                /* elevation mask, whole degrees */
};

struct Result {
    AlmInfo glo, gps;
    int leap = 0;                    /* GPS - UTC seconds used */
    bool reached = false;            /* the log has a message at or after `at` */
    uint32_t messageTime = 0;        /* tmZel of that message */
    uint32_t messages = 0;           /* messages fed to the library */
    std::vector<Sat> predicted;      /* in the library's order: GLONASS, then GPS */
    std::vector<Sat> trackedOnly;    /* tracked, not in the prediction: the
                                        receiver's own elevation, and why */
    std::vector<std::string> problems;   /* damaged records of the log */
};

/* The time of the log's first message with one, and the GPS - UTC seconds
 * it carries; false (with `error`) when the log cannot be read or has no
 * such message. */
bool logStart(const std::string& path, uint32_t* tm, int* leap, std::string& error);

/* Runs the log through the converter up to the first message at or after
 * req.at, collects the almanacs on the way and predicts the sky at req.at.
 * False (with `error`) when the log cannot be read. */
bool predictFromLog(const std::string& path, const Request& req, Result& out,
                    std::string& error);

/* Dilution of precision of a constellation seen from one place, with one
 * receiver clock per system present (GLONASS and GPS time differ). */
struct Dop {
    bool valid = false;     /* enough satellites for the unknowns */
    int clocks = 0;
    double g = 0, p = 0, h = 0, v = 0, t = 0;
};
Dop dilution(const std::vector<Sat>& sats);

/* Position on the sky plot of radius `r` centred at (cx, cy): the zenith
 * in the middle, the horizon on the circle, north up, east to the right. */
void plotXY(double az, double el, double cx, double cy, double r, double* x, double* y);

/* The SVG document of the sky plot: GPS and GLONASS satellites in two
 * colours, each labelled; filled when tracked, hollow when only
 * predicted. */
std::string skySvg(const std::vector<Sat>& sats, const std::string& title);

/* Receiver time (tmZel) of a GPS time "YYYY-MM-DD HH:MM:SS" (or with a T,
 * seconds optional), given GPS - UTC; false when the text is not such a
 * time. */
bool tmZelOfGpsText(const std::string& text, int leap, uint32_t* tm);
/* The same for "HH:MM[:SS]" on the GPS day of `dayOf` (a tmZel). */
bool tmZelOfGpsClock(const std::string& text, int leap, uint32_t dayOf, uint32_t* tm);
/* "YYYY-MM-DD HH:MM:SS" in GPS time of a tmZel. */
std::string gpsText(uint32_t tm, int leap);

/* The leap-second argument of the GPS almanac propagation for a
 * prediction at `tm` from an almanac of week `wna` (10-bit count) and
 * reference time `toa`: the library counts almanac weeks from the
 * rollover of August 1999, so after the rollover of April 2019 the host
 * hands the further 1024 weeks in with the leap seconds (and before
 * August 1999, takes them out). The rollover count is the one that puts
 * the almanac nearest `tm`. */
int foldedLeap(uint32_t tm, int leap, uint32_t wna, uint32_t toa);

}  // namespace sky

#endif
