/*
 * Receiver time scale. `tmZel` counts seconds from 2000-01-01 00:00:00 in
 * GLONASS system time (UTC + 3 h); 0 means "no time". The receiver counts
 * from 1980-01-06, 630720000 s (7300 days) earlier.
 */
#ifndef ZELNAV_TMZEL_H
#define ZELNAV_TMZEL_H

class TmZel {
public:
    /* Receiver seconds to tmZel (unsigned wrap, no check). */
    static unsigned int tmRsvrTotmZel(unsigned int tmRsvr);
    /* tmZel to year, month, day, hour, minute, second; 0 (date untouched)
     * when tmZel is 0, else 1. */
    static unsigned int tmZelToDate(unsigned int tmZel, unsigned int* date);
    /* GLONASS almanac date (four-year interval n4, day na) to year, month,
     * day. */
    static void DateAlmGloToDate(unsigned int n4, int na, unsigned int* date);
};

#endif
