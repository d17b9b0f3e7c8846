/*
 * RINEX to message 0x0C conversion: an observation file and broadcast
 * navigation files become the messages this receiver would have sent, one
 * per second of its time scale (GLONASS time, UTC + 3 h).
 *
 * Each message carries, for every GPS and GLONASS satellite observed at
 * that second and having navigation data:
 *  - its observations in the signal places (convert_obs.h), its
 *    elevation computed from the broadcast orbit, and its own receiver
 *    channel number in sub-block 10 (GPS PRN n: channel n; GLONASS slot n:
 *    channel 32 + n), so that every satellite has a key of its own;
 *  - the navigation string it was broadcasting, with the receiver's
 *    one-second report delay: a GPS subframe that ends at GPS second T is
 *    carried by the messages of T+1 to T+6, a GLONASS CT string that ends
 *    at E by those of E+1 and E+2, a VT string (1 s long) that ends at E by
 *    that of E+1. GPS subframes 1-3 and GLONASS CT strings 1-4 and VT
 *    strings 1-7 and 10 come from the ephemeris on the air at the start of
 *    their frame (convert_nav.h); GPS page 18 from the navigation
 *    header's UTC and ionosphere parameters (a reserved page when the
 *    header has neither), page 25 and the almanac pages from the almanac
 *    derived at the start of the conversion (convert_alm.h); GLONASS
 *    strings 5 and 14 of frame 5, and the VT time parameters, from the
 *    time parameters of the day the conversion starts in; the almanac
 *    strings from the derived GLONASS almanac. A VT string travels in
 *    sub-block 2 with the B1 observation and is sent only when the
 *    satellite has one at that second, so that no B1 measurement is ever
 *    made up.
 * A satellite without a C1 observation at a second is left out of that
 * message (a receiver tracks every satellite on its L1 C/A signal first);
 * one without navigation data is left out until it has some, with one
 * message. At most 24 satellites go into a message, those of the previous
 * message first: the receiver has 24 channels and the intake 24 slots, and
 * a satellite that leaves frees its slot only after the first message
 * without it, so a newcomer is admitted only into a slot the previous
 * message left free.
 *
 * Seconds between recorded epochs up to `maxGap` apart are filled with
 * interpolated observations and marked as such; epochs off the whole
 * second are moved onto it along their Doppler. A recorded epoch is
 * written when the next one has been read (or at end()), since filling
 * the seconds before it takes the phase rates from both sides.
 */
#ifndef ZELNAV_CONVERT_H
#define ZELNAV_CONVERT_H

#include <cstdint>
#include <deque>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "convert_meteo.h"
#include "convert_nav.h"
#include "convert_obs.h"
#include "convert_time.h"
#include "rinex_diag.h"
#include "rinex_obs.h"
#include "tbl_nav.h"

namespace x0c {
struct SatBlock;
}

namespace cvt {

struct Options {
    enum class MeteoMode { Standard, Given, None };
    MeteoMode meteo = MeteoMode::Standard;
    Meteo given;                /* the readings of MeteoMode::Given */
    /* Recorded epochs converted: from..to inclusive, whole seconds since
     * 2000 in the observation file's time scale. */
    bool hasFrom = false, hasTo = false;
    int64_t from = 0, to = 0;
    /* from / to are seconds of the day of the first epoch instead. */
    bool fromTimeOfDay = false, toTimeOfDay = false;
    /* Longest interval between recorded epochs that is filled with
     * interpolated seconds. */
    int maxGap = 120;
};

struct Summary {
    long epochs = 0;            /* recorded epochs converted */
    long messages = 0;
    long recorded = 0;          /* messages of recorded epochs */
    long interpolated = 0;      /* messages of seconds in between */
    long blocks = 0;            /* satellite blocks written */
    long gpsSatellites = 0;     /* distinct satellites written */
    long gloSatellites = 0;
    long skippedSatellites = 0; /* distinct satellites never written */
    long gaps = 0;              /* intervals too long to fill */
    uint64_t bytes = 0;         /* of the messages */
    int64_t firstTmZel = 0, lastTmZel = 0;
};

/* Receives each message; false stops the conversion. */
using MessageSink = std::function<bool(const std::vector<uint8_t>& msg, bool interpolated)>;

class Converter {
public:
    Converter(const Options& opt, rinex::Diagnostics& diag);

    /* Reads a navigation file; false when it cannot be read at all. */
    bool addNavFile(const std::string& path);

    /* Converts a whole observation file; false when it cannot be read or
     * the sink refused a message. */
    bool run(const std::string& obsPath, const MessageSink& sink);

    /* The same in steps, for callers that have the epochs already:
     * begin() with the header, addEpoch() in time order, end(). */
    void begin(const rinex::ObsHeader& header, const std::string& obsPath, const MessageSink& sink);
    bool addEpoch(const rinex::ObsEpoch& epoch);
    void end();

    const Summary& summary() const { return sum_; }
    const NavData& nav() const { return nav_; }
    /* The tables broadcast (valid once the first message is out). */
    const tblAlmGps_t& gpsAlmanacTable() const { return almGps_; }
    const tblAlmGlo_t& gloAlmanacTable() const { return almGlo_; }
    const tblTmPrmGlo_t& gloTimeTable() const { return gloTp_; }
    const tblTmPrmGps_t& gpsUtcTable() const { return gpsUtc_; }
    const tblIonGps_t& ionTable() const { return ion_; }
    int leapSeconds() const { return leap_; }
    /* tmZel of a time of the observation file (seconds since 2000). */
    int64_t tmZelOfObs(int64_t t) const { return t + obsToUtc_ + kMoscowOffset; }

private:
    struct SatState {
        bool written = false;       /* at least one block so far */
        bool inLast = false;        /* in the previous message */
        bool reportedNav = false;   /* "no navigation" said for the current gap */
        bool reportedOther = false; /* any other reason said once */
    };

    void startTables(int64_t tmZel);
    bool emit(const ObsSecond& sec);
    void settle(const ObsSecond* next);
    static int freqOf(const void* self, char sys, int prn);
    bool recordedSecond(const rinex::ObsEpoch& e, ObsSecond& out);
    bool buildBlock(const SatSignals& s, int64_t tmZel, long line, x0c::SatBlock& out);
    bool gloFreq(int slot, int& k) const;
    SatState& state(char sys, int prn);
    void note(long line, const std::string& what);

    Options opt_;
    rinex::Diagnostics& diag_;
    NavData nav_;
    std::vector<std::string> navPaths_;

    /* Set by begin(). */
    std::string obsPath_;
    rinex::ObsHeader hdr_;
    SignalMap map_;
    MessageSink sink_;
    int leap_ = 0;
    int64_t obsToUtc_ = 0;      /* UTC - observation time scale, s */
    int16_t meteo_[3] = {0, 0, 0};
    bool started_ = false;
    bool stopped_ = false;
    /* Recorded seconds: the last two written and the one waiting for the
     * next, whose phase rates the filling of its gap needs. */
    std::deque<ObsSecond> hist_;
    bool pending_ = false;
    bool shiftWarned_ = false;
    bool leapKnown_ = false;
    bool rangeSet_ = false;     /* from / to placed on the first epoch's day */

    /* Tables of the broadcast, set up at the first message. */
    tblAlmGps_t almGps_;
    tblAlmGlo_t almGlo_;
    tblTmPrmGlo_t gloTp_;
    tblTmPrmGps_t gpsUtc_;
    tblIonGps_t ion_;
    bool hasUtcPage_ = false;
    int freq_[33];

    SatState gps_[33];
    SatState glo_[33];
    std::set<int> seenGps_, seenGlo_;
    Summary sum_;
};

}  // namespace cvt

#endif
