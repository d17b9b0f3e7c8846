/*
 * Time scales of the conversion: leap seconds, GLONASS days, civil text.
 */
#include "convert_time.h"

#include <cstdio>

#include "rinex_field.h"

namespace cvt {

namespace {

/* The days at whose start GPS - UTC grew by one second, and the value
 * from then on. GPS time began equal to UTC on 1980-01-06. */
struct Leap {
    int year, month, day, gpsUtc;
};
const Leap kLeaps[] = {
    {1981, 7, 1, 1},  {1982, 7, 1, 2},  {1983, 7, 1, 3},  {1985, 7, 1, 4},
    {1988, 1, 1, 5},  {1990, 1, 1, 6},  {1991, 1, 1, 7},  {1992, 7, 1, 8},
    {1993, 7, 1, 9},  {1994, 7, 1, 10}, {1996, 1, 1, 11}, {1997, 7, 1, 12},
    {1999, 1, 1, 13}, {2006, 1, 1, 14}, {2009, 1, 1, 15}, {2012, 7, 1, 16},
    {2015, 7, 1, 17}, {2017, 1, 1, 18},
};

/* Civil date of a day count since 2000-01-01 (the inverse of
 * rinex::daysSince2000). */
void civilOfDays(int64_t days, int& year, int& month, int& day) {
    int64_t z = days + 730425;  /* days since 0000-03-01 */
    int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    int64_t doe = z - era * 146097;
    int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    int64_t mp = (5 * doy + 2) / 153;
    day = (int)(doy - (153 * mp + 2) / 5 + 1);
    month = (int)(mp < 10 ? mp + 3 : mp - 9);
    year = (int)(yoe + era * 400 + (month <= 2 ? 1 : 0));
}

}  // namespace

int leapSecondsAt(int64_t utc2000) {
    int leap = 0;
    for (const Leap& l : kLeaps)
        if (utc2000 >= rinex::daysSince2000(l.year, l.month, l.day) * kDay) leap = l.gpsUtc;
    return leap;
}

GloDay gloDayOfTmZel(int64_t tmZel) {
    /* Four-year intervals are 1461 days long from 1996-01-01 on (the
     * broadcast knows no century rule before 2100). */
    int64_t d96 = floorDiv(tmZel, kDay) - rinex::daysSince2000(1996, 1, 1);
    GloDay g;
    g.n4 = (unsigned)(d96 / 1461 + 1);
    g.day = (unsigned)(d96 % 1461 + 1);
    return g;
}

std::string civilText(int64_t sec2000) {
    int y, mo, d;
    civilOfDays(floorDiv(sec2000, kDay), y, mo, d);
    int64_t s = floorMod(sec2000, kDay);
    char buf[40];
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%02d", y, mo, d, (int)(s / 3600),
                  (int)(s / 60 % 60), (int)(s % 60));
    return buf;
}

bool parseCivil(const std::string& text, int64_t& sec2000, bool& timeOnly) {
    int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0, n = 0;
    char sep = 0;
    std::string t = text;
    if (std::sscanf(t.c_str(), "%4d-%2d-%2d%c%2d:%2d%n", &y, &mo, &d, &sep, &h, &mi, &n) == 6 &&
        (sep == ' ' || sep == 'T')) {
        timeOnly = false;
    } else if (std::sscanf(t.c_str(), "%2d:%2d%n", &h, &mi, &n) == 2) {
        timeOnly = true;
    } else {
        return false;
    }
    if (t[(size_t)n] == ':') {
        int m = 0;
        if (std::sscanf(t.c_str() + n, ":%2d%n", &s, &m) != 1) return false;
        n += m;
    }
    if ((size_t)n != t.size()) return false;
    if (h < 0 || h > 23 || mi < 0 || mi > 59 || s < 0 || s > 59) return false;
    int64_t tod = h * 3600 + mi * 60 + s;
    if (timeOnly) {
        sec2000 = tod;
        return true;
    }
    rinex::CivilTime c;
    c.year = y;
    c.month = mo;
    c.day = d;
    if (!c.valid()) return false;
    sec2000 = rinex::daysSince2000(y, mo, d) * kDay + tod;
    return true;
}

}  // namespace cvt
