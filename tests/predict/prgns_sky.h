/*
 * The real sky of 2024-01-01 for the prediction tests: almanacs derived
 * from the day's broadcast ephemerides (IGS merged navigation file of
 * data/tlse-2024-001) by the converter, read once per test program, and
 * the times of that day.
 *
 * Times: tmZel is Moscow time (UTC + 3 h) from 2000; GPS time is UTC + 18 s
 * on that day.
 */
#ifndef ZELNAV_TESTS_PREDICT_PRGNS_SKY_H
#define ZELNAV_TESTS_PREDICT_PRGNS_SKY_H

#include <cstdint>
#include <cstdlib>
#include <string>

#include "rinex_nav.h"
#include "tbl_nav.h"
#include "tools/convert/convert_alm.h"
#include "tools/convert/convert_nav.h"

namespace prgns_sky {

const double kPi = 3.141592653589793;
const int kLeap = 18;                              /* GPS - UTC, 2024 */
const int64_t kGpsTo2000 = 630720000;              /* 1980-01-06 to 2000-01-01 */
const uint32_t kWeek = 604800;

/* The library counts almanac weeks from the rollover of August 1999; in
 * 2024 the broadcast week count has rolled over once more (April 2019), so
 * a host hands the extra 1024 weeks in with the leap seconds. */
const int kLeapFolded = kLeap - 1024 * 604800;

/* GPS week 2295 began on Sunday 2023-12-31; its 10-bit count is 247. */
const uint32_t kGpsWeek = 2295;
const uint32_t kWna = kGpsWeek % 1024;

/* 2024-01-01 00:00 Moscow time: day 8766 from 2000; four-year interval 8,
 * day 1. */
const uint32_t kDay0 = 8766u * 86400u;
const uint32_t kN4 = 8, kNa = 1;

/* The TLSE antenna reference point, WGS-84. */
inline void tlse(double* xyz) {
    xyz[0] = 4627852.3986;
    xyz[1] = 119640.3423;
    xyz[2] = 4372994.4588;
}

/* tmZel of a GPS time in seconds from 2000. */
inline uint32_t tmOfGps(int64_t gps) { return (uint32_t)(gps - kLeap + 10800); }

/* The day's ephemerides, read once. */
inline const cvt::NavData& nav() {
    static rinex::Diagnostics diag;
    static cvt::NavData* data = nullptr;
    if (!data) {
        rinex::NavFile file;
        if (!rinex::readNavFile(std::string(ZELNAV_DATA_DIR) + "/tlse-2024-001/BRDC00IGS_R_20240010000_01D_MN.rnx.gz",
                                file, diag))
            std::abort();
        data = new cvt::NavData(diag);
        data->add(file);
        data->finish();
    }
    return *data;
}

/* GPS almanac of reference time toa (a multiple of 4096 s) of week
 * kGpsWeek. */
inline void gpsAlmanac(uint32_t toa, tblAlmGps_t* out) {
    cvt::gpsAlmanac(nav(), (int64_t)kGpsWeek * kWeek + toa, *out);
}

/* GLONASS almanac of day kNa of interval kN4, from the ephemerides of
 * noon UTC. */
inline const tblAlmGlo_t& gloAlmanacOfDay() {
    static tblAlmGlo_t alm;
    static bool built = false;
    if (!built) {
        int freq[33];
        for (int s = 0; s < 33; s++)
            if (!nav().gloFrequency(s, freq[s])) freq[s] = cvt::kNoFreq;
        cvt::GloDay day;
        day.n4 = kN4;
        day.day = kNa;
        cvt::gloAlmanac(nav(), (int64_t)kDay0 + 43200 - 10800, day, (int64_t)kDay0 - 10800, freq, alm);
        built = true;
    }
    return alm;
}

}  // namespace prgns_sky

#endif
