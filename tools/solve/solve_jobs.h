/*
 * `zelnav solve --jobs N -o DIR LOG...`: many recordings at once, for
 * test stations that process a day's logs unattended.
 *
 * Each log runs on its own thread with its own pipeline (its own library
 * handles: they share nothing), at most N at a time, and writes
 * DIR/NAME.EXT, NAME being the log's file name without its .zlog and EXT
 * the format's (csv, nmea, pos, geojson). What a run reports on the
 * standard error is held back and printed in one piece when its log is
 * done, followed by one progress line:
 *
 *   zelnav solve: [3/12] logs/tlse.zlog -> out/tlse.csv: 300 epochs, 300 fixes, 0 skipped
 */
#ifndef ZELNAV_SOLVE_JOBS_H
#define ZELNAV_SOLVE_JOBS_H

#include <cstdio>
#include <string>
#include <vector>

#include "solve_run.h"

namespace solve {

/* DIR/NAME.EXT for `log`. */
std::string outputPath(const std::string& log, const std::string& dir, Format f);

/* Runs every log; returns 0 when all were read, 1 when one or more could
 * not be (the others still run), 2 when two logs would write the same
 * output or DIR cannot be made (nothing runs). */
int runJobs(const std::vector<std::string>& logs, int jobs, const std::string& dir,
            const Options& opt, std::FILE* err);

}  // namespace solve

#endif
