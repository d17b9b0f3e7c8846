/*
 * Broadcast navigation data of the conversion: the ephemeris records of
 * the navigation files turned into the library's tables, and which record
 * a satellite was broadcasting at a given moment.
 *
 * What the files do not carry is chosen here (see README.md of this
 * folder for the list): URA index, FT index, satellite modification, and
 * the like.
 *
 * Which record is on the air:
 *  - GPS: the record whose transmission time (RINEX "transmission time of
 *    message"; two hours before toe when the file leaves it out) is the
 *    latest one not after the moment, as long as the moment lies at most
 *    four hours after its toe (the fit interval, plus one missed upload).
 *  - GLONASS: data with reference time tb are broadcast over the
 *    30-minute interval centred on tb; the record is the latest one whose
 *    interval has begun, as long as the moment lies at most 45 minutes
 *    after tb (one missed update).
 * A satellite without such a record has no navigation data at that
 * moment, and the converter leaves it out of the messages.
 */
#ifndef ZELNAV_CONVERT_NAV_H
#define ZELNAV_CONVERT_NAV_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "rinex_diag.h"
#include "rinex_nav.h"
#include "tbl_nav.h"

namespace cvt {

/* FT index written when the file gives none (2.5 m). */
const int kDefaultFt = 2;
/* Satellite modification written for every GLONASS satellite: GLONASS-M. */
const int kGloModification = 1;

struct GpsRecord {
    int prn = 0;
    int64_t toe = 0;        /* GPS seconds since the GPS origin */
    int64_t toc = 0;
    int64_t start = 0;      /* first second of broadcast, same scale */
    tblOprGps_t tbl;        /* the values as the satellite broadcasts them */
    int uraIndex = 0;
    int iodc = 0;           /* all 10 bits */
    std::string file;
    long line = 0;
};

struct GloRecord {
    int slot = 0;
    int64_t tb = 0;         /* UTC seconds since 2000 of the reference time */
    tblOprGlo_t tbl;
    bool hasFreq = false;
    int freq = 0;           /* frequency number -7..+6 */
    bool healthy = true;
    unsigned age = 0;       /* age of the data, days (En) */
    std::string file;
    long line = 0;
};

/* Header values of the navigation files that the broadcast carries. */
struct NavParams {
    bool hasGpsUtc = false;
    double a0 = 0, a1 = 0;
    long tot = 0, wnt = 0;      /* s of week, full week */
    bool hasIon = false;
    double alpha[4] = {0, 0, 0, 0}, beta[4] = {0, 0, 0, 0};
    bool hasLeap = false;
    int leap = 0;
    bool hasLeapFuture = false; /* RINEX 3 LEAP SECONDS future value, week, day */
    int leapFuture = 0;
    long leapWeek = 0, leapDay = 0;
    bool hasTauC = false;
    double tauC = 0;            /* GLONASS - UTC(SU) correction tau_c, s */
    bool hasTauGps = false;
    double tauGps = 0;          /* GLONASS - GPS fractional offset, s */
};

class NavData {
public:
    explicit NavData(rinex::Diagnostics& diag) : diag_(diag) {}

    /* Takes the records and header values of one file (the first file
     * that has a header value keeps it). */
    void add(const rinex::NavFile& f);
    /* Orders the records; call once after the last add(). */
    void finish();

    const NavParams& params() const { return params_; }
    const GpsRecord* gpsAt(int prn, int64_t gpsSinceOrigin) const;
    const GloRecord* gloAt(int slot, int64_t utc2000) const;
    /* The record of `prn` / `slot` closest in reference time to `t`
     * (same scales as above), for the almanacs; null when there is none. */
    const GpsRecord* gpsNearest(int prn, int64_t gpsSinceOrigin) const;
    const GloRecord* gloNearest(int slot, int64_t utc2000) const;
    bool gloFrequency(int slot, int& k) const;

    std::size_t gpsCount() const { return gpsCount_; }
    std::size_t gloCount() const { return gloCount_; }

private:
    void addGps(const rinex::GpsEph& e, const std::string& file);
    void addGlo(const rinex::GloEph& e, const std::string& file);
    void dropMisfiledGlo();

    rinex::Diagnostics& diag_;
    NavParams params_;
    std::map<int, std::vector<GpsRecord>> gps_;
    std::map<int, std::vector<GloRecord>> glo_;
    std::size_t gpsCount_ = 0, gloCount_ = 0;
};

}  // namespace cvt

#endif
