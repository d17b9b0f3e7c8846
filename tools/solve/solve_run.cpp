/*
 * The log loop of `zelnav solve`.
 *
 * Every record of the log is checked before the library sees it: the log
 * reader has already compared the record with the message's length field
 * and the bytes left in the file, and the message check walks the blocks
 * inside that length. A message that fails is reported on one line and
 * left out; the run goes on. Interpolated seconds (the converter's fill
 * between recorded epochs) still pass through the pipeline, so that the
 * navigation strings keep their cadence, but --recorded-only keeps them
 * out of the report.
 */
#include "solve_run.h"

#include "solve_pipeline.h"
#include "solve_report.h"
#include "solve_source.h"
#include "x0ccheck.h"
#include "zlog.h"

namespace solve {

int modeOf(const std::string& name) {
    if (name == "glo") return 0;
    if (name == "gps") return 1;
    if (name == "both") return 10;
    return -1;
}

const char* modeName(int mode) {
    return mode == 0 ? "glo" : mode == 1 ? "gps" : mode == 10 ? "both" : "?";
}

namespace {

/* Prints the source's reports not printed yet; returns how many. */
long flushLogProblems(const Source& src, std::size_t* printed, std::FILE* err) {
    long n = 0;
    for (; *printed < src.errors().size(); ++*printed, ++n)
        std::fprintf(err, "%s\n", src.errors()[*printed].c_str());
    return n;
}

/* A log file, record by record. */
class LogSource : public Source {
public:
    bool open(const std::string& path) { return rd_.open(path); }
    bool next(zlog::Record& rec) override { return rd_.next(rec); }
    const std::vector<std::string>& errors() const override { return rd_.errors(); }
    const double* position() const override {
        return rd_.header().hasPosition ? rd_.header().position : nullptr;
    }

private:
    zlog::Reader rd_;
};

}  // namespace

int run(const std::string& path, const Options& opt, std::FILE* out, std::FILE* err,
        Totals* totals) {
    LogSource src;
    if (!src.open(path)) {
        const std::string why = src.errors().empty() ? path + ": cannot read" : src.errors().back();
        std::fprintf(err, "zelnav solve: %s\n", why.c_str());
        return 1;
    }
    return runSource(src, path, opt, out, err, totals);
}

int runSource(Source& src, const std::string& path, const Options& opt, std::FILE* out,
              std::FILE* err, Totals* totals) {
    Totals t;
    Pipeline pl(opt.mode);
    bool seeded = false;
    Accuracy acc(opt.ref);
    RaimCheck check(pl, opt.raim, opt.maxSpeed, opt.inject);
    FilterStage filt(pl, opt.filt, opt.hasRef ? opt.ref : nullptr);

    RunInfo info;
    info.source = path;
    info.mode = opt.mode;
    info.raim = opt.raim;
    std::unique_ptr<Writer> writer = makeWriter(opt.format, out);
    writer->begin(info);
    std::size_t printed = 0;
    zlog::Record rec;
    while (src.next(rec)) {
        t.logProblems += flushLogProblems(src, &printed, err);
        t.messages++;
        if (!seeded && src.position() != nullptr) {
            pl.seed(src.position());
            seeded = true;
        }
        const x0ccheck::Result r = x0ccheck::check(rec.message.data(), rec.message.size());
        if (!r.ok()) {
            std::fprintf(err, "%s@%llu: message skipped: %s\n", path.c_str(),
                         (unsigned long long)rec.offset, x0ccheck::describe(r).c_str());
            t.refused++;
            continue;
        }
        if (!pl.run(rec.message.data())) continue;
        const tblCrdPnt_t* fix = filt.finish(check.finish());
        if (opt.recordedOnly && rec.interpolated()) continue;

        t.epochs++;
        filt.reported();
        std::string raimColumns;
        if (opt.raim)
            raimColumns = (check.checked() ? std::to_string(check.outcome()) : std::string()) +
                          "," + check.excludedComb() + "," + check.excludedStats();
        writer->epoch(makeEpoch(pl.tm(), fix, pl.speed(), pl.datum(),
                                opt.raim ? raimColumns.c_str() : nullptr));
        if (opt.flush) std::fflush(out);
        if (fix == nullptr || fix->actual != 1) continue;
        t.fixes++;
        if (opt.hasRef) {
            double w[3];
            fixToWgs84(fix, pl.datum(), w);
            acc.add(w);
        }
    }
    t.logProblems += flushLogProblems(src, &printed, err);
    writer->end();

    t.raimAccepted = check.accepted;
    t.raimNoExclusion = check.noExclusion;
    t.raimTooFew = check.tooFew;
    t.combExclusions = check.combExclusions;
    t.statsExclusions = check.statsExclusions;
    if (opt.raim) {
        std::fprintf(err,
                     "zelnav solve: RAIM (max speed %.1f m/s): %ld epochs accepted (0), %ld "
                     "without an acceptable exclusion (-32), %ld with too few satellites (-128)\n",
                     opt.maxSpeed, t.raimAccepted, t.raimNoExclusion, t.raimTooFew);
        std::fprintf(err, "zelnav solve: RAIM excluded by raimComb: %s; by raimStats: %s\n",
                     check.tally(false).c_str(), check.tally(true).c_str());
    }
    if (opt.hasRef) {
        t.accuracyFixes = acc.count();
        t.rms3d = acc.rms3d();
        t.h95 = acc.horizontal95();
        t.v95 = acc.vertical95();
        t.max3d = acc.max3d();
        std::fprintf(err,
                     "zelnav solve: %s, mode %s: %ld epochs, %ld fixes; skipped %ld messages "
                     "(%ld refused by the check, %ld log problems)\n",
                     path.c_str(), modeName(opt.mode), t.epochs, t.fixes,
                     t.refused + t.logProblems, t.refused, t.logProblems);
        std::fprintf(err,
                     "zelnav solve: against %.4f,%.4f,%.4f: 3D RMS %.2f m, 95%% horizontal "
                     "%.2f m, 95%% vertical %.2f m, largest 3D %.2f m (%ld fixes)\n",
                     opt.ref[0], opt.ref[1], opt.ref[2], t.rms3d, t.h95, t.v95, t.max3d,
                     t.accuracyFixes);
    }
    filt.summary(err);
    t.rawRms3d = filt.raw().rms3d();
    t.rawFixes = filt.raw().count();
    t.predicted = filt.predicted;
    t.staticAveraged = filt.averaged;
    t.staticCoarse = filt.coarse;
    t.staticRefused = filt.refused;
    for (int i = 0; i < 3; i++) t.staticXyz[i] = filt.average[i];
    t.staticError = filt.averageError();
    t.staticRms3d = filt.running().rms3d();
    if (totals) *totals = t;
    return 0;
}

std::string slurp(std::FILE* f) {
    std::string s;
    std::rewind(f);
    char buf[4096];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) s.append(buf, n);
    return s;
}

}  // namespace solve
