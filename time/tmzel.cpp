/*
 * Receiver time to calendar dates. The calendar treats every fourth year
 * from 2000 on as leap, with no century exception: the receiver's four-year
 * blocks of 1461 days are the whole rule.
 */
#include "tmzel.h"

namespace {

const unsigned int kDay = 86400;
const unsigned int kFourYears = 126230400;  /* 1461 days */
const unsigned int kLeapYear = 31622400;    /* 366 days */
const unsigned int kYear = 31536000;        /* 365 days */
const unsigned int kRsvrOrigin = 630720000; /* 1980-01-06 to 2000-01-01 */

const unsigned int kMonthDays[12] = {31, 28, 31, 30, 31, 30,
                                     31, 31, 30, 31, 30, 31};

}  // namespace

unsigned int TmZel::tmRsvrTotmZel(unsigned int tmRsvr) {
    return tmRsvr - kRsvrOrigin;
}

unsigned int TmZel::tmZelToDate(unsigned int tmZel, unsigned int* date) {
    if (tmZel == 0) return 0;

    unsigned int year = (tmZel / kFourYears) * 4 + 2000;
    unsigned int r = tmZel % kFourYears;
    unsigned int february = 29;
    if (r > kLeapYear - 1) {
        year += (r - kLeapYear) / kYear + 1;
        r = (r - kLeapYear) % kYear;
        february = 28;
    }

    unsigned int month = 1;
    if (r >= 31 * kDay) {
        r -= 31 * kDay;
        month = 2;
        /* At most December: what is left of a year always fits in it. */
        while (month < 12) {
            unsigned int days = month == 2 ? february : kMonthDays[month - 1];
            if (r < days * kDay) break;
            r -= days * kDay;
            month++;
        }
    }

    unsigned int s = r % kDay;
    date[0] = year;
    date[1] = month;
    date[2] = r / kDay + 1;
    date[3] = s / 3600;
    date[4] = (s % 3600) / 60;
    date[5] = s % 60;
    return 1;
}

void TmZel::DateAlmGloToDate(unsigned int n4, int na, unsigned int* date) {
    unsigned int year = 4 * n4 + 1992;
    int d = na;
    if (na >= 367 && na <= 731) {
        year += 1;
        d = na - 366;
    } else if (na >= 732 && na <= 1096) {
        year += 2;
        d = na - 731;
    } else if (na >= 1097 && na <= 1461) {
        year += 3;
        d = na - 1096;
    }
    int february = (year & 3) == 0 ? 29 : 28;

    /* A day number outside the interval (below 1, or past the year's end)
     * has no meaningful date; the walk stops at December whatever is left,
     * so such input gives a day of December (or the raw value in January)
     * rather than a thirteenth month. */
    unsigned int month = 1;
    if (d - 31 >= 1) {
        d -= 31;
        month = 2;
        while (month < 12) {
            int days = month == 2 ? february : (int)kMonthDays[month - 1];
            if (d - days < 1) break;
            d -= days;
            month++;
        }
    }
    date[0] = year;
    date[1] = month;
    date[2] = (unsigned int)d;
}
