/*
 * Where a run of `zelnav solve` takes its messages from: a log file read
 * record by record, or a live stream (solve_stream.h). The run loop is
 * the same for both.
 */
#ifndef ZELNAV_SOLVE_SOURCE_H
#define ZELNAV_SOLVE_SOURCE_H

#include <cstdio>
#include <string>
#include <vector>

#include "solve_run.h"
#include "zlog.h"

namespace solve {

class Source {
public:
    virtual ~Source() = default;
    /* The next message; false at the end. */
    virtual bool next(zlog::Record& rec) = 0;
    /* Problems met so far, one line each ("NAME@OFFSET: what"). */
    virtual const std::vector<std::string>& errors() const = 0;
    /* The approximate WGS-84 position the source carries, null while
     * there is none (a stream carries it once its log header has come). */
    virtual const double* position() const = 0;
};

/* The run loop over any source; `name` names it in the summary. Returns
 * 0 (a source that cannot be read at all fails before). */
int runSource(Source& src, const std::string& name, const Options& opt, std::FILE* out,
              std::FILE* err, Totals* totals = nullptr);

}  // namespace solve

#endif
