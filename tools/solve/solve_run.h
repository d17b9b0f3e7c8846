/*
 * `zelnav solve` without its command line: runs a log through the
 * pipeline, checking each message first, and writes the CSV and the
 * summary.
 */
#ifndef ZELNAV_SOLVE_RUN_H
#define ZELNAV_SOLVE_RUN_H

#include <cstdio>
#include <string>
#include <vector>

#include "solve_filter.h"
#include "format.h"
#include "solve_raim.h"

namespace solve {

struct Options {
    int mode = 10;              /* 0 GLONASS, 1 GPS, 10 both */
    bool hasRef = false;
    double ref[3] = {0.0, 0.0, 0.0};   /* known WGS-84 position, m */
    bool recordedOnly = false;  /* report recorded epochs only */
    /* Integrity monitoring (solve_raim.h): the fix reported is the one
     * the monitor accepts; maxSpeed is the largest speed of a fix, m/s. */
    bool raim = false;
    double maxSpeed = 100.0;
    std::vector<Injection> inject;   /* faults added to the pseudoranges */
    FilterOptions filt;              /* --smooth, --static, --filter (solve_filter.h) */
    Format format = Format::Csv;     /* of the epochs written to the output */
    bool flush = false;              /* flush the output after every epoch (live input) */
};

struct Totals {
    long messages = 0;      /* records read from the log */
    long refused = 0;       /* messages the check refused */
    long logProblems = 0;   /* damaged or cut-off records the log reader skipped */
    long epochs = 0;        /* epochs reported */
    long fixes = 0;         /* of which with a fix */
    long accuracyFixes = 0; /* fixes compared with the reference */
    double rms3d = 0.0, h95 = 0.0, v95 = 0.0, max3d = 0.0;
    /* With --raim: epochs per raimComb code (0, -32, -128) and the
     * satellite-epochs excluded by raimComb and by raimStats. */
    long raimAccepted = 0, raimNoExclusion = 0, raimTooFew = 0;
    long combExclusions = 0, statsExclusions = 0;
    /* With --filter the figures above are of the filtered fixes; these
     * are of the unfiltered ones. predicted: filtered epochs without a
     * fix. */
    double rawRms3d = 0.0;
    long rawFixes = 0, predicted = 0;
    /* With --static: staticFilter steps averaged in, coarse and refused;
     * the final average (WGS-84) and, with a reference, its 3D error and
     * the 3D RMS of the running average. */
    long staticAveraged = 0, staticCoarse = 0, staticRefused = 0;
    double staticXyz[3] = {0.0, 0.0, 0.0};
    double staticError = 0.0, staticRms3d = 0.0;
};

/* Runs the log at `path`. CSV to `out`, problems and the summary to
 * `err`. Returns 0, or 1 when the log cannot be read at all. */
int run(const std::string& path, const Options& opt, std::FILE* out, std::FILE* err,
        Totals* totals = nullptr);

/* "glo", "gps", "both" to 0, 1, 10; -1 for anything else. */
int modeOf(const std::string& name);
const char* modeName(int mode);

/* Everything a file holds, from its start (it is rewound first). */
std::string slurp(std::FILE* f);

}  // namespace solve

#endif
