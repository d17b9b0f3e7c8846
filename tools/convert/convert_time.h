/*
 * Time scales of the conversion.
 *
 * Observation files tag their epochs in GPS time (sometimes GLONASS or
 * another system's time); the receiver counts seconds of GLONASS system
 * time, which runs with UTC(SU) three hours ahead of UTC. Every instant is
 * carried here as whole seconds from 2000-01-01 00:00:00 of some scale
 * (the plain day count of the civil calendar, no leap seconds inside):
 *
 *   GPS seconds   gps2000
 *   UTC seconds   utc2000 = gps2000 - (GPS-UTC leap seconds)
 *   receiver time tmZel   = utc2000 + 10800
 *   message time  tmRsvr  = tmZel + 630720000 (seconds from 1980-01-06)
 *   GPS seconds since the GPS origin (1980-01-06) = gps2000 + 630720000,
 *   which splits into the week and the second of the week.
 */
#ifndef ZELNAV_CONVERT_TIME_H
#define ZELNAV_CONVERT_TIME_H

#include <cstdint>
#include <string>

namespace cvt {

const int64_t kMoscowOffset = 10800;       /* GLONASS time - UTC */
const int64_t kRsvrOrigin = 630720000;     /* 1980-01-06 to 2000-01-01, 7300 days */
const int64_t kWeek = 604800;
const int64_t kDay = 86400;

/* GPS - UTC in whole seconds at a UTC instant (seconds since 2000), from
 * the table of leap seconds since 1980; for files that do not say it. */
int leapSecondsAt(int64_t utc2000);

/* tmZel of a UTC instant, and the receiver-time field of the message. */
inline int64_t tmZelOfUtc(int64_t utc2000) { return utc2000 + kMoscowOffset; }
inline uint32_t tmRsvrOfTmZel(int64_t tmZel) { return (uint32_t)(tmZel + kRsvrOrigin); }

/* Seconds since the GPS origin of a GPS instant given since 2000. */
inline int64_t gpsSinceOrigin(int64_t gps2000) { return gps2000 + kRsvrOrigin; }

/* Floor division and the matching non-negative remainder. */
inline int64_t floorDiv(int64_t a, int64_t b) { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }
inline int64_t floorMod(int64_t a, int64_t b) { return a - floorDiv(a, b) * b; }

/* A GLONASS calendar day as the broadcast gives it: the four-year interval
 * N4 (interval 1 began on 1996-01-01) and the day N within it (1 on
 * 1 January of the interval's leap year, up to 1461). */
struct GloDay {
    unsigned n4 = 0;
    unsigned day = 0;
};
/* The GLONASS day of a receiver-time instant (Moscow date). */
GloDay gloDayOfTmZel(int64_t tmZel);

/* "2024-01-01 12:00:00" of seconds since 2000 in any scale. */
std::string civilText(int64_t sec2000);

/* Seconds since 2000 from "YYYY-MM-DD HH:MM:SS" (a 'T' may replace the
 * blank; seconds may be left out). False when the text is not such a
 * date. `timeOnly` is set when only "HH:MM[:SS]" was given: then the
 * result is seconds of the day, for the caller to place on a date. */
bool parseCivil(const std::string& text, int64_t& sec2000, bool& timeOnly);

}  // namespace cvt

#endif
