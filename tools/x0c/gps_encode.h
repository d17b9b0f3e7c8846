/*
 * GPS subframe encoder of the message writer: builds the stored 30-byte
 * subframes (ten 24-bit words without parity, reversed byte order, as the
 * receiver delivers them in message 0x0C) from the library's GPS tables,
 * so that tests and the RINEX converter can feed the decoders what a
 * satellite would have sent.
 *
 * Every subframe gets the telemetry word (preamble 0x8B) and the handover
 * word: the 17-bit TOW count of the next subframe's start, that is the end
 * of this one divided by 6, and the subframe ID. Values are rounded to
 * their broadcast resolution; field positions come from the decoders'
 * own layout (decode/navinf_gps_fields.h).
 *
 * Timing of the broadcast: subframe k (1..5) of frame f (counted from the
 * start of the week) runs from (5f + k - 1) * 6 s to (5f + k) * 6 s, and
 * subframes 4 and 5 of frame f carry page f mod 25 + 1.
 */
#ifndef ZELNAV_GPS_ENCODE_H
#define ZELNAV_GPS_ENCODE_H

#include <cstdint>

#include "tbl_nav.h"

namespace x0c {

const uint32_t kGpsWeekSeconds = 604800;

/* The subframe on the air at a moment of the week. */
struct GpsSlot {
    int subframe;     /* 1..5 */
    int page;         /* 1..25 (meaningful for subframes 4 and 5) */
    uint32_t towEnd;  /* end of the subframe, s of week (604800 at the end
                         of the week's last subframe) */
};

/* Which subframe and page is being sent at GPS time of week `tow`
 * (0 <= tow < 604800); a subframe owns its start instant, not its end. */
GpsSlot gpsSlotAt(double tow);

/* SV ID carried by page `page` of subframe 4 or 5 when the page is not an
 * almanac page of an absent PRN: 1..24 and 51 for subframe 5; 25..32, 57,
 * 62, 52..56, 58..61 and 63 for subframe 4. */
int gpsPageSvid(int subframe, int page);

/* URA index (0..15) whose accuracy is nearest to `metres` (on a log
 * scale); the inverse of the decoders' URA table. */
int gpsUraIndex(double metres);

/* 6-bit page-25 health of an almanac entry: the summary bit (any of the
 * three navigation-data health bits set) over the five signal bits of its
 * 8-bit page health; 63 for an empty entry. */
unsigned gpsHealth6(const tblAlmGpsSat_t& entry);

/* Telemetry and handover words of `sf`, for subframe `id` ending at
 * `towEnd`. Alert flag 0, anti-spoofing flag 1. */
void gpsPutTlmHow(uint8_t sf[30], int id, uint32_t towEnd);

/* Subframes 1-3 of an ephemeris. `uraIndex` < 0 takes the index nearest to
 * eph.ura; `iodc` < 0 takes eph.iodc (its two high bits then 0). Health,
 * week, IODE and every orbit and clock term come from the table. */
void gpsEncodeSf1(const tblOprGps_t& eph, int uraIndex, int iodc,
                  uint32_t towEnd, uint8_t sf[30]);
void gpsEncodeSf2(const tblOprGps_t& eph, uint32_t towEnd, uint8_t sf[30]);
void gpsEncodeSf3(const tblOprGps_t& eph, uint32_t towEnd, uint8_t sf[30]);

/* Subframe 4 page 18 (SV ID 56): ionosphere and UTC parameters. */
void gpsEncodePage18(const tblTmPrmGps_t& utc, const tblIonGps_t& ion,
                     uint32_t towEnd, uint8_t sf[30]);

/* Almanac page of `prn` in subframe `id` (5 for PRN 1-24, 4 for 25-32).
 * An entry with onEmpty set is sent as the system sends a PRN it does not
 * have: SV ID 0 and alternating ones and zeros. */
void gpsEncodeAlmPage(const tblAlmGpsSat_t& entry, int prn, int id,
                      uint32_t towEnd, uint8_t sf[30]);

/* Subframe 5 page 25 (SV ID 51): toa, the 8 low bits of wna and the health
 * of PRN 1-24. */
void gpsEncodeHealth5(const tblAlmGps_t& alm, uint32_t towEnd,
                      uint8_t sf[30]);
/* Subframe 4 page 25 (SV ID 63): configurations (all 0b1001: anti-spoofing
 * on, a Block II satellite) and the health of PRN 25-32. */
void gpsEncodeHealth4(const tblAlmGps_t& alm, uint32_t towEnd,
                      uint8_t sf[30]);

/* A page of subframe 4 or 5 whose contents the decoders do not use (the
 * reserved and special pages): its SV ID and alternating ones and zeros. */
void gpsEncodeFillerPage(int id, int svid, uint32_t towEnd, uint8_t sf[30]);

/* Everything a satellite broadcasts; a null table means the data is not
 * known. */
struct GpsBroadcast {
    const tblOprGps_t* eph = nullptr;
    int uraIndex = -1;                 /* as for gpsEncodeSf1 */
    int iodc = -1;
    const tblTmPrmGps_t* utc = nullptr; /* page 18 needs utc and ion */
    const tblIonGps_t* ion = nullptr;
    const tblAlmGps_t* alm = nullptr;   /* almanac and health pages */
};

/* The subframe on the air at `tow` (see gpsSlotAt), built from `b`. False,
 * with `sf` untouched, when the table that subframe needs is not given;
 * pages without data of their own are filler pages. */
bool gpsEncodeAt(const GpsBroadcast& b, double tow, uint8_t sf[30]);

}  // namespace x0c

#endif
