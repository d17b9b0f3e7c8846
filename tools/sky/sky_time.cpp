/*
 * Times on the command line. The user gives GPS time, the scale of the
 * RINEX recordings the logs are made from; the library counts tmZel,
 * seconds from 2000-01-01 in GLONASS time (UTC + 3 h).
 */
#include <cstdio>
#include <cstdlib>

#include "sky.h"

namespace sky {

namespace {

const int64_t kDay = 86400;
const int64_t kMoscow = 10800;               /* GLONASS time - UTC */
const int64_t kGpsOrigin2000 = 630720000;    /* 1980-01-06 to 2000-01-01, s */
const int64_t kWeek = 604800;
const int64_t kRollover = 1024 * kWeek;

/* Days from 2000-01-01 of a Gregorian date. */
int64_t daysFrom2000(int64_t y, int64_t m, int64_t d) {
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const int64_t yoe = y - era * 400;
    const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 730425;   /* 730425: 0000-03-01 to 2000-01-01 */
}

void civilOf(int64_t days, int* y, int* m, int* d) {
    days += 730425;
    const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const int64_t doe = days - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    *d = (int)(doy - (153 * mp + 2) / 5 + 1);
    *m = (int)(mp < 10 ? mp + 3 : mp - 9);
    *y = (int)(yoe + era * 400 + (*m <= 2));
}

bool inDay(int h, int mi, double s) {
    return h >= 0 && h < 24 && mi >= 0 && mi < 60 && s >= 0 && s < 60;
}

/* tmZel of GPS seconds from 2000. */
bool tmOfGps(int64_t gps, int leap, uint32_t* tm) {
    const int64_t t = gps - leap + kMoscow;
    if (t <= 0 || t > 0xFFFFFFFFll) return false;
    *tm = (uint32_t)t;
    return true;
}

}  // namespace

bool tmZelOfGpsText(const std::string& text, int leap, uint32_t* tm) {
    int y, mo, d, h, mi;
    double s = 0;
    char sep, tail;
    int n = std::sscanf(text.c_str(), "%d-%d-%d%c%d:%d:%lf%c", &y, &mo, &d, &sep, &h, &mi, &s, &tail);
    if (n != 6 && n != 7) return false;
    if (sep != ' ' && sep != 'T') return false;
    if (mo < 1 || mo > 12 || d < 1 || d > 31 || !inDay(h, mi, s)) return false;
    const int64_t gps = daysFrom2000(y, mo, d) * kDay + h * 3600 + mi * 60 + (int64_t)s;
    return tmOfGps(gps, leap, tm);
}

bool tmZelOfGpsClock(const std::string& text, int leap, uint32_t dayOf, uint32_t* tm) {
    int h, mi;
    double s = 0;
    char tail;
    int n = std::sscanf(text.c_str(), "%d:%d:%lf%c", &h, &mi, &s, &tail);
    if (n != 2 && n != 3) return false;
    if (!inDay(h, mi, s)) return false;
    const int64_t gpsOfDay = (int64_t)dayOf - kMoscow + leap;
    const int64_t day = (gpsOfDay >= 0 ? gpsOfDay : gpsOfDay - kDay + 1) / kDay;
    return tmOfGps(day * kDay + h * 3600 + mi * 60 + (int64_t)s, leap, tm);
}

std::string gpsText(uint32_t tm, int leap) {
    const int64_t gps = (int64_t)tm - kMoscow + leap;
    const int64_t day = (gps >= 0 ? gps : gps - kDay + 1) / kDay;
    const int64_t sec = gps - day * kDay;
    int y, m, d;
    civilOf(day, &y, &m, &d);
    char buf[40];
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%02d", y, m, d, (int)(sec / 3600),
                  (int)(sec / 60 % 60), (int)(sec % 60));
    return buf;
}

int foldedLeap(uint32_t tm, int leap, uint32_t wna, uint32_t toa) {
    /* GPS seconds from 1980 of the prediction, and of the almanac in the
     * count of rollovers that puts it nearest. */
    const int64_t now = (int64_t)tm - kMoscow + leap + kGpsOrigin2000;
    const int64_t inEra = (int64_t)(wna % 1024) * kWeek + toa;
    int64_t almanac = inEra;
    for (int64_t k = 1; k < 8; k++) {
        const int64_t cand = inEra + k * kRollover;
        if (std::llabs(now - cand) < std::llabs(now - almanac)) almanac = cand;
    }
    /* The argument that makes the library's reference time, computed in
     * its own 32-bit arithmetic (toa + wna weeks + 619326000 - leap, less
     * the 630720000 s from the receiver's origin to tmZel's), land there. */
    const uint32_t want = (uint32_t)(almanac - leap - (kGpsOrigin2000 - kMoscow));
    const uint32_t sum = toa + wna * (uint32_t)kWeek + 619326000u - 630720000u;
    return (int)(int32_t)(sum - want);
}

}  // namespace sky
