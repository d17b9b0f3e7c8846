/*
 * RINEX navigation files: RINEX 2 GPS (".n"), RINEX 2 GLONASS (".g",
 * versions 2.01 to 2.11) and RINEX 3 navigation files of one or several
 * systems, plain or gzipped. GPS and GLONASS records are kept; records of
 * the other systems are passed over by their line counts and counted.
 *
 * Values are kept as the file writes them, in its units and with its
 * signs: RINEX stores the GLONASS clock bias as -tau_n and the GLONASS
 * header correction of RINEX 2 as -tau_c, and the fields are named so.
 * Blank optional fields read as 0 and set their bit in `blank`.
 */
#ifndef ZELNAV_RINEX_NAV_H
#define ZELNAV_RINEX_NAV_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "rinex_diag.h"
#include "rinex_field.h"

namespace rinex {

/* Polynomial time correction "system - other system = a0 + a1 (t - T)",
 * T in seconds of the week `week`. */
struct TimeCorr {
    bool present = false;
    double a0 = 0.0;
    double a1 = 0.0;
    long t = 0;
    long week = 0;
};

struct NavHeader {
    double version = 0.0;
    char fileType = 0;          /* 'N' navigation (GPS in RINEX 2); 'G' RINEX 2 GLONASS */
    char system = 0;            /* 'G', 'R', 'M', ... */

    bool hasIonAlpha = false;   /* GPS Klobuchar alpha0..3 (ION ALPHA, GPSA) */
    double ionAlpha[4] = {0, 0, 0, 0};
    bool hasIonBeta = false;    /* beta0..3 (ION BETA, GPSB) */
    double ionBeta[4] = {0, 0, 0, 0};

    TimeCorr gpsUtc;            /* GPS - UTC: DELTA-UTC: A0,A1,T,W or GPUT */
    TimeCorr gloUtc;            /* GLUT: GLONASS - UTC(SU), a0 = tau_c */
    TimeCorr gloGps;            /* GLGP: GLONASS - GPS */

    /* RINEX 2 GLONASS CORR TO SYSTEM TIME: reference date and -tau_c. */
    bool hasCorrToSystemTime = false;
    int corrYear = 0, corrMonth = 0, corrDay = 0;
    double minusTauC = 0.0;

    bool hasLeapSeconds = false;
    int leapSeconds = 0;        /* GPS - UTC */
    /* RINEX 3 LEAP SECONDS, columns 7-24: the future or past leap
     * seconds, the week (continuous) and the day they take effect. */
    bool hasLeapFuture = false;
    int leapFuture = 0;
    long leapWeek = 0;
    long leapDay = 0;
};

/* GPS broadcast ephemeris. Times in GPS time; angles in radians (and
 * rad/s); distances in metres; clock terms in s, s/s, s/s^2. */
struct GpsEph {
    int prn = 0;
    CivilTime toc;
    int64_t tocSec2000 = 0;     /* whole seconds of toc since 2000-01-01, GPS time */
    double af0 = 0, af1 = 0, af2 = 0;
    double iode = 0, crs = 0, deltaN = 0, m0 = 0;
    double cuc = 0, e = 0, cus = 0, sqrtA = 0;
    double toe = 0, cic = 0, omega0 = 0, cis = 0;
    double i0 = 0, crc = 0, omega = 0, omegaDot = 0;
    double idot = 0, codesL2 = 0, week = 0, l2pFlag = 0;
    double accuracy = 0, health = 0, tgd = 0, iodc = 0;
    double transmissionTime = 0, fitInterval = 0;   /* s of week; hours */
    uint32_t blank = 0;         /* bit i: field i (af0 = 0, ... fitInterval = 28) was blank */
    long line = 0;              /* first line of the record */
};

/* GLONASS broadcast ephemeris. toc is UTC; positions km, velocities km/s,
 * accelerations km/s^2 (PZ-90), as the files write them. */
struct GloEph {
    int slot = 0;
    CivilTime toc;
    int64_t tocSec2000 = 0;     /* whole seconds of toc since 2000-01-01, UTC */
    double minusTauN = 0;       /* the file's value: -tau_n, s */
    double gammaN = 0;          /* +gamma_n */
    /* Message frame time: seconds of the UTC week in RINEX 2.11 and 3;
     * older writers put seconds of the day here. */
    double tk = 0;
    double x = 0, vx = 0, ax = 0, health = 0;
    double y = 0, vy = 0, ay = 0, freqNum = 0;
    double z = 0, vz = 0, az = 0, age = 0;   /* age of operation information, days */
    /* Fifth line of RINEX 3.05: status flags, L1/L2 group delay
     * difference (s; 0.999999999999e9 = unknown), URAI, health flags. */
    bool hasLine5 = false;
    double statusFlags = 0, l1l2Delay = 0, urai = 0, healthFlags = 0;
    uint32_t blank = 0;         /* bit i: field i (minusTauN = 0, ... healthFlags = 18) was blank */
    long line = 0;
};

struct NavFile {
    std::string path;
    NavHeader header;
    std::vector<GpsEph> gps;
    std::vector<GloEph> glo;
    std::map<char, long> otherRecords;  /* records of other systems passed over */
    long badRecords = 0;                /* damaged records skipped (with a diagnostic) */
};

/* Reads a whole navigation file. False when it cannot be read as one at
 * all; damaged records are reported and skipped, the rest is kept. */
bool readNavFile(const std::string& path, NavFile& out, Diagnostics& diag);

}  // namespace rinex

#endif
