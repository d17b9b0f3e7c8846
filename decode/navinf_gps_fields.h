/*
 * Where every field of the GPS L1 C/A navigation message lies in a stored
 * subframe. The collectors read their tables through these layouts and the
 * message writer builds subframes through the same ones, so a field has
 * exactly one place where its position, length, sign convention and scale
 * are written down.
 *
 * A stored subframe is the ten 24-bit words without parity, 30 bytes in
 * reversed byte order: stored byte k holds transmitted byte 29 - k. Field
 * positions are those of NavInfStr_t::GetValue: position 1 is the least
 * significant bit of stored byte 0, which is the last data bit (bit 24) of
 * word 10; position 240 is the first bit of word 1.
 *
 * Because the parity bits are not stored, the data bits of consecutive
 * words follow one another without a gap: a 32-bit field whose 8 most
 * significant bits end word 4 and whose 24 low bits fill word 5 is one
 * contiguous run of 32 positions. Only a few fields are really split (the
 * almanac af0, the 10-bit IODC); for those the low part has its own run.
 *
 * Fields are written below the way the interface document draws them: the
 * word, the data bit (1..24, 1 = first transmitted) of the field's most
 * significant bit, and the length.
 */
#ifndef ZELNAV_NAVINF_GPS_FIELDS_H
#define ZELNAV_NAVINF_GPS_FIELDS_H

#include <cmath>

/* The value of pi the GPS tables use to turn semicircles into radians. */
#define GPS_PI 3.141592653589793

struct GpsField {
    short pos;          /* position of the least significant bit of the run */
    short len;          /* bits in the run */
    short posLo;        /* split field: run of the low bits, else 0 */
    short lenLo;
    bool twos;          /* two's complement (else unsigned) */
    double scale;       /* value of one count */

    constexpr int bits() const { return len + lenLo; }
};

/* 2^n for the scale factors, usable in constant expressions. */
constexpr double gpsPow2(int n) {
    double v = 1.0;
    for (; n > 0; n--) v *= 2.0;
    for (; n < 0; n++) v *= 0.5;
    return v;
}

/* GetValue position of data bit `bit` of word `word`; bits past 24 run on
 * into the next word. */
constexpr short gpsBitPos(int word, int bit) {
    return (short)(241 - (24 * (word - 1) + bit));
}

/* Field of `len` bits whose most significant bit is data bit `bit` of word
 * `word`. */
constexpr GpsField gpsField(int word, int bit, int len, bool twos,
                            double scale) {
    return GpsField{gpsBitPos(word, bit + len - 1), (short)len, 0, 0, twos,
                    scale};
}

/* Field split in two runs: the high bits at (word, bit, len), the low bits
 * at (wordLo, bitLo, lenLo). */
constexpr GpsField gpsSplitField(int word, int bit, int len, int wordLo,
                                 int bitLo, int lenLo, bool twos,
                                 double scale) {
    return GpsField{gpsBitPos(word, bit + len - 1), (short)len,
                    gpsBitPos(wordLo, bitLo + lenLo - 1), (short)lenLo, twos,
                    scale};
}

/* Telemetry and handover words, and the page identification of subframes
 * 4 and 5: common to every subframe. */
struct GpsCommonLayout {
    GpsField preamble;    /* 0x8B */
    GpsField tlmMessage;
    GpsField integrity;
    GpsField tow;         /* 17-bit count of 6 s: start of the next subframe */
    GpsField alert;
    GpsField antiSpoof;
    GpsField subframeId;
    GpsField dataId;      /* subframes 4 and 5 */
    GpsField svId;        /* subframes 4 and 5: page's SV ID */
};

inline constexpr GpsCommonLayout kGpsCommon = {
    gpsField(1, 1, 8, false, 1),
    gpsField(1, 9, 14, false, 1),
    gpsField(1, 23, 1, false, 1),
    gpsField(2, 1, 17, false, 1),
    gpsField(2, 18, 1, false, 1),
    gpsField(2, 19, 1, false, 1),
    gpsField(2, 20, 3, false, 1),
    gpsField(3, 1, 2, false, 1),
    gpsField(3, 3, 6, false, 1),
};

/* Subframe 1: clock, week, accuracy and health. */
struct GpsSf1Layout {
    GpsField wn;          /* 10-bit week */
    GpsField l2Codes;
    GpsField ura;         /* 4-bit URA index */
    GpsField health;      /* 6 bits */
    GpsField iodcHigh;    /* 2 most significant bits of IODC */
    GpsField l2PFlag;
    GpsField tgd;
    GpsField iodc;        /* 8 low bits of IODC */
    GpsField toc;
    GpsField af2;
    GpsField af1;
    GpsField af0;
};

inline constexpr GpsSf1Layout kGpsSf1 = {
    gpsField(3, 1, 10, false, 1),
    gpsField(3, 11, 2, false, 1),
    gpsField(3, 13, 4, false, 1),
    gpsField(3, 17, 6, false, 1),
    gpsField(3, 23, 2, false, 1),
    gpsField(4, 1, 1, false, 1),
    gpsField(7, 17, 8, true, gpsPow2(-31)),
    gpsField(8, 1, 8, false, 1),
    gpsField(8, 9, 16, false, 16),
    gpsField(9, 1, 8, true, gpsPow2(-55)),
    gpsField(9, 9, 16, true, gpsPow2(-43)),
    gpsField(10, 1, 22, true, gpsPow2(-31)),
};

/* Subframe 2: first half of the ephemeris. */
struct GpsSf2Layout {
    GpsField iode;
    GpsField crs;
    GpsField deltaN;
    GpsField m0;
    GpsField cuc;
    GpsField e;
    GpsField cus;
    GpsField sqrtA;
    GpsField toe;
    GpsField fitFlag;
    GpsField aodo;
};

inline constexpr GpsSf2Layout kGpsSf2 = {
    gpsField(3, 1, 8, false, 1),
    gpsField(3, 9, 16, true, gpsPow2(-5)),
    gpsField(4, 1, 16, true, gpsPow2(-43) * GPS_PI),
    gpsField(4, 17, 32, true, gpsPow2(-31) * GPS_PI),
    gpsField(6, 1, 16, true, gpsPow2(-29)),
    gpsField(6, 17, 32, false, gpsPow2(-33)),
    gpsField(8, 1, 16, true, gpsPow2(-29)),
    gpsField(8, 17, 32, false, gpsPow2(-19)),
    gpsField(10, 1, 16, false, 16),
    gpsField(10, 17, 1, false, 1),
    gpsField(10, 18, 5, false, 1),
};

/* Subframe 3: second half of the ephemeris. */
struct GpsSf3Layout {
    GpsField cic;
    GpsField omega0;
    GpsField cis;
    GpsField i0;
    GpsField crc;
    GpsField omega;
    GpsField omegaDot;
    GpsField iode;
    GpsField idot;
};

inline constexpr GpsSf3Layout kGpsSf3 = {
    gpsField(3, 1, 16, true, gpsPow2(-29)),
    gpsField(3, 17, 32, true, gpsPow2(-31) * GPS_PI),
    gpsField(5, 1, 16, true, gpsPow2(-29)),
    gpsField(5, 17, 32, true, gpsPow2(-31) * GPS_PI),
    gpsField(7, 1, 16, true, gpsPow2(-5)),
    gpsField(7, 17, 32, true, gpsPow2(-31) * GPS_PI),
    gpsField(9, 1, 24, true, gpsPow2(-43) * GPS_PI),
    gpsField(10, 1, 8, false, 1),
    gpsField(10, 9, 14, true, gpsPow2(-43) * GPS_PI),
};

/* Subframe 4 page 18 (SV ID 56): ionosphere and UTC parameters. The
 * ionosphere coefficients stay per semicircle powers, unconverted. */
struct GpsPage18Layout {
    GpsField alpha0, alpha1, alpha2, alpha3;
    GpsField beta0, beta1, beta2, beta3;
    GpsField a1;
    GpsField a0;
    GpsField tot;
    GpsField wnt;
    GpsField dtLs;
    GpsField wnLsf;
    GpsField dn;
    GpsField dtLsf;
};

inline constexpr GpsPage18Layout kGpsPage18 = {
    gpsField(3, 9, 8, true, gpsPow2(-30)),
    gpsField(3, 17, 8, true, gpsPow2(-27)),
    gpsField(4, 1, 8, true, gpsPow2(-24)),
    gpsField(4, 9, 8, true, gpsPow2(-24)),
    gpsField(4, 17, 8, true, gpsPow2(11)),
    gpsField(5, 1, 8, true, gpsPow2(14)),
    gpsField(5, 9, 8, true, gpsPow2(16)),
    gpsField(5, 17, 8, true, gpsPow2(16)),
    gpsField(6, 1, 24, true, gpsPow2(-50)),
    gpsField(7, 1, 32, true, gpsPow2(-30)),
    gpsField(8, 9, 8, false, gpsPow2(12)),
    gpsField(8, 17, 8, false, 1),
    gpsField(9, 1, 8, true, 1),
    gpsField(9, 9, 8, false, 1),
    gpsField(9, 17, 8, false, 1),
    gpsField(10, 1, 8, true, 1),
};

/* Almanac page of one satellite (subframe 5 pages 1-24, subframe 4 pages
 * 2-5 and 7-10). The inclination is broadcast as its offset from 0.3
 * semicircles and kept so. af0 is the one truly split field: its 8 high
 * bits start word 10 and its 3 low bits follow af1. */
struct GpsAlmLayout {
    GpsField e;
    GpsField toa;
    GpsField deltaI;
    GpsField omegaDot;
    GpsField health;      /* 8-bit health of the almanac page */
    GpsField sqrtA;
    GpsField omega0;
    GpsField omega;
    GpsField m0;
    GpsField af0;
    GpsField af1;
};

inline constexpr GpsAlmLayout kGpsAlm = {
    gpsField(3, 9, 16, false, gpsPow2(-21)),
    gpsField(4, 1, 8, false, gpsPow2(12)),
    gpsField(4, 9, 16, true, gpsPow2(-19) * GPS_PI),
    gpsField(5, 1, 16, true, gpsPow2(-38) * GPS_PI),
    gpsField(5, 17, 8, false, 1),
    gpsField(6, 1, 24, false, gpsPow2(-11)),
    gpsField(7, 1, 24, true, gpsPow2(-23) * GPS_PI),
    gpsField(8, 1, 24, true, gpsPow2(-23) * GPS_PI),
    gpsField(9, 1, 24, true, gpsPow2(-23) * GPS_PI),
    gpsSplitField(10, 1, 8, 10, 20, 3, true, gpsPow2(-20)),
    gpsField(10, 9, 11, true, gpsPow2(-38)),
};

/* The health pages. Subframe 5 page 25 (SV ID 51) carries the almanac
 * reference time and week and the 6-bit health of PRN 1-24, four to a
 * word from word 4 on, the lowest PRN first. Subframe 4 page 25 (SV ID 63)
 * carries the 4-bit configuration of PRN 1-32 from word 3 bit 9 on and
 * the health of PRN 25-32: PRN 25 ends word 8, PRN 26-29 fill word 9, PRN
 * 30-32 start word 10. Both health runs are contiguous in the stored
 * layout, so one formula per page gives every PRN. */
struct GpsHealthLayout {
    GpsField toa;         /* subframe 5 page 25 */
    GpsField wna;         /* subframe 5 page 25, 8 bits */
    GpsField health[32];  /* PRN 1-24 in subframe 5, 25-32 in subframe 4 */
    GpsField config[32];  /* subframe 4 page 25 */
};

constexpr GpsHealthLayout gpsHealthLayout() {
    GpsHealthLayout l{};
    l.toa = gpsField(3, 9, 8, false, gpsPow2(12));
    l.wna = gpsField(3, 17, 8, false, 1);
    for (int k = 0; k < 24; k++)
        l.health[k] = gpsField(4, 1 + 6 * k, 6, false, 1);
    for (int k = 24; k < 32; k++)
        l.health[k] = gpsField(8, 19 + 6 * (k - 24), 6, false, 1);
    for (int k = 0; k < 32; k++)
        l.config[k] = gpsField(3, 9 + 4 * k, 4, false, 1);
    return l;
}

inline constexpr GpsHealthLayout kGpsHealth = gpsHealthLayout();

/* Page IDs of the pages the collectors look for. */
enum {
    GPS_SVID_DUMMY = 0,   /* almanac page of a PRN not in the constellation */
    GPS_SVID_HEALTH5 = 51,
    GPS_SVID_PAGE18 = 56,
    GPS_SVID_HEALTH4 = 63
};

/* 6-bit health value that marks a PRN as absent from the constellation. */
#define GPS_HEALTH_ABSENT 63

/* User range accuracy in metres from the 4-bit URA index: 2^(1 + N/2) up to
 * index 6, 2^(N - 2) above. Index 15 nominally means "no accuracy
 * prediction"; it is kept as 8192 m so that such a satellite is simply
 * weighted very low rather than treated as a special case. */
inline double gpsUraMetres(int index) {
    double n = (double)index;
    return index < 7 ? std::pow(2.0, 1.0 + n / 2.0) : std::pow(2.0, n - 2.0);
}

#endif
