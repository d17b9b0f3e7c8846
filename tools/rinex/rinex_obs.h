/*
 * RINEX observation files, versions 2.1x and 3.0x, plain or gzipped.
 *
 * The reader streams: open() reads the header, next() returns one epoch
 * at a time. Only GPS ('G'; a blank system letter in RINEX 2) and GLONASS
 * ('R') satellites are returned; satellites of the other known systems
 * (Galileo, BeiDou, QZSS, SBAS, IRNSS) are skipped without a word but
 * counted. Damage is reported through Diagnostics as "FILE:LINE: ..." and
 * costs only the satellite or epoch it is in.
 *
 * Observation codes are given in the three-character form of RINEX 3
 * ("C1C", "L2W") whatever the version of the file, so that users look
 * them up one way; see rinex3Code() for how RINEX 2 codes are read.
 */
#ifndef ZELNAV_RINEX_OBS_H
#define ZELNAV_RINEX_OBS_H

#include <cstdint>
#include <string>
#include <vector>

#include "rinex_diag.h"
#include "rinex_field.h"
#include "rinex_lines.h"
#include "rinex_sys.h"

namespace rinex {

const int kNoGloFreq = 127;

struct ObsHeader {
    double version = 0.0;
    char fileType = 0;          /* 'O' */
    char system = 0;            /* 'G', 'R', 'M', ...; RINEX 2 blank read as 'G' */
    std::string markerName;
    bool hasApproxPos = false;
    double approxPos[3] = {0.0, 0.0, 0.0};           /* ECEF metres */
    bool hasAntennaDelta = false;
    double antennaDeltaHEN[3] = {0.0, 0.0, 0.0};     /* height, east, north, metres */

    /* Observation codes of the values of a GPS / GLONASS record, in
     * record order, three-character form. */
    std::vector<std::string> obsTypes[kSystems];
    /* The same codes as the file writes them (two characters in RINEX 2). */
    std::vector<std::string> fileObsTypes[kSystems];

    /* GLONASS frequency numbers by slot (-7..+6), kNoGloFreq if unknown. */
    int gloFreq[kMaxGloSlot + 1];

    bool hasInterval = false;
    double interval = 0.0;      /* seconds */
    bool hasLeapSeconds = false;
    int leapSeconds = 0;        /* GPS - UTC */
    bool hasFirstObs = false;
    CivilTime firstObs;
    std::string timeSystem;     /* "GPS", "GLO", ... (of TIME OF FIRST OBS or implied) */

    ObsHeader();
    /* Position of `code` (three-character form) in the list of `sys`, or -1. */
    int obsIndex(char sys, const std::string& code) const;
    /* Frequency number of a GLONASS slot; false when the header has none. */
    bool gloFrequency(int slot, int& k) const;
};

struct ObsValue {
    double value = 0.0;
    bool present = false;       /* blank field = absent */
    uint8_t lli = 0;            /* loss-of-lock indicator, 0 when blank */
    uint8_t ssi = 0;            /* signal strength 1-9, 0 when blank */
};

struct SatObs {
    char sys = 'G';
    int prn = 0;                /* GPS PRN or GLONASS slot */
    std::vector<ObsValue> values;   /* one per obsTypes[systemIndex(sys)] */
};

/* Epoch flags kept in returned epochs; event records (flags 2 to 5) are
 * consumed by the reader (header lines they carry are applied). */
enum { kEpochOk = 0, kEpochPowerFailure = 1, kEpochCycleSlips = 6 };

struct ObsEpoch {
    CivilTime time;             /* in the header's time system */
    int64_t sec2000 = 0;        /* whole seconds of `time` since 2000-01-01 */
    double fraction = 0.0;      /* and the fraction of the second */
    /* 0 ok; 1 power failure between the previous epoch and this one;
     * 6: the records are cycle slips detected at this time, not
     * observations. */
    int flag = 0;
    bool hasClockOffset = false;
    double clockOffset = 0.0;   /* receiver clock offset, seconds */
    std::vector<SatObs> sats;   /* GPS and GLONASS, in file order */
    int otherSystems = 0;       /* satellites of other systems skipped */
    long line = 0;              /* line of the epoch record */
};

class ObsReader {
public:
    explicit ObsReader(Diagnostics& diag) : diag_(diag) {}

    /* Opens the file and reads its header. False when it cannot be read
     * as an observation file at all (the reason is in the diagnostics). */
    bool open(const std::string& path);
    const ObsHeader& header() const { return hdr_; }

    /* The next epoch, or false at the end of the file. */
    bool next(ObsEpoch& epoch);

    long epochsRead() const { return epochsRead_; }
    long epochsSkipped() const { return epochsSkipped_; }
    long otherSatellites() const { return otherSats_; }
    long eventRecords() const { return events_; }

private:
    /* Where the header reading stands, for the lines that continue
     * others. */
    struct HeaderState {
        bool anyLine = false;     /* a header line was seen */
        bool versionSeen = false;
        long types2Left = 0;      /* RINEX 2 types still to come on continuation lines */
        char sys3 = 0;            /* RINEX 3 system whose types continue */
        long types3Left = 0;
    };
    bool readHeader();
    bool applyHeaderLine(const std::string& line, HeaderState& st);
    void finishHeader();
    bool next2(ObsEpoch& epoch);
    bool next3(ObsEpoch& epoch);
    bool skipEvent(int flag, long count, long line);
    bool acceptTime(const ObsEpoch& e);
    bool readSatValues(const std::string& line, std::size_t col, std::size_t count,
                       std::size_t firstValue, SatObs& sat);
    char satSystem(char c) const;
    static bool looksLikeEpoch2(const std::string& line);
    void report(long line, const std::string& what);
    bool takeLine(std::string& line);

    Diagnostics& diag_;
    LineSource src_;
    ObsHeader hdr_;
    std::vector<std::string> types2_;   /* RINEX 2 shared list, file form */
    bool open_ = false;
    bool haveLast_ = false;
    int64_t lastSec_ = 0;
    double lastFrac_ = 0.0;
    long epochsRead_ = 0, epochsSkipped_ = 0, otherSats_ = 0, events_ = 0;
};

/* A RINEX 2 observation code in three-character form for `sys`, given the
 * whole list of the file (phase, Doppler and strength on a band go with
 * the code the list has for that band: C/A if C1/C2 is there, else P). */
std::string rinex3Code(char sys, const std::string& code2, const std::vector<std::string>& all);

/* Whole-file convenience: header and every epoch. */
bool readObsFile(const std::string& path, ObsHeader& header, std::vector<ObsEpoch>& epochs,
                 Diagnostics& diag);

}  // namespace rinex

#endif
