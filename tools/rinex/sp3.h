/*
 * SP3 precise orbit files, versions c and d, plain or gzipped: satellite
 * positions (km) and clocks (microseconds) at regular epochs, for GPS and
 * GLONASS satellites (other systems are read too and can be asked for by
 * their letter). Velocity records, where the file has them, are kept in
 * the file's units (dm/s).
 *
 * Times are kept as the file writes them, in the file's time system
 * (`timeSystem`, "GPS" for the IGS and ESA products; SP3-c files that
 * predate the field leave it blank, which means GPS).
 */
#ifndef ZELNAV_SP3_H
#define ZELNAV_SP3_H

#include <cstdint>
#include <string>
#include <vector>

#include "rinex_diag.h"
#include "rinex_field.h"

namespace rinex {

/* One satellite at one epoch. */
struct Sp3Sat {
    char sys = 0;               /* 'G' GPS, 'R' GLONASS, ... */
    int prn = 0;                /* PRN (GPS) or slot (GLONASS) */
    bool hasPos = false;        /* false when the file marks the position as missing (0, 0, 0) */
    double pos[3] = {0, 0, 0};  /* km */
    bool hasClk = false;        /* false for the 999999.999999 marker */
    double clk = 0.0;           /* microseconds */
    bool hasVel = false;
    double vel[3] = {0, 0, 0};  /* dm/s */
    double clkRate = 0.0;       /* 1e-4 microseconds/s */
};

struct Sp3Epoch {
    CivilTime time;             /* in the file's time system */
    int64_t sec2000 = 0;        /* whole seconds of `time` since 2000-01-01 */
    std::vector<Sp3Sat> sats;
};

struct Sp3File {
    std::string path;
    char version = 0;           /* 'c' or 'd' */
    char posVel = 0;            /* 'P' positions, 'V' positions and velocities */
    int numEpochs = 0;          /* as the header announces */
    std::string coordSys;       /* "IGS05", "ITRF2014", ... */
    std::string agency;
    std::string timeSystem;     /* "GPS", "GLO", "UTC", "TAI", ...; "GPS" when blank */
    int gpsWeek = 0;            /* of the first epoch */
    double weekSeconds = 0.0;   /* of the first epoch */
    double interval = 0.0;      /* s */
    std::vector<std::string> satIds;   /* "G01", "R04", ... as listed */
    std::vector<Sp3Epoch> epochs;

    /* The record of a satellite at epoch index `k`; null when absent. */
    const Sp3Sat* find(std::size_t k, char sys, int prn) const;
};

/* Reads a whole SP3 file. False when it cannot be read as one at all
 * (missing file, unknown version, damaged header); damaged epoch and
 * satellite lines are reported and skipped, the rest is kept. */
bool readSp3(const std::string& path, Sp3File& out, Diagnostics& diag);

}  // namespace rinex

#endif
