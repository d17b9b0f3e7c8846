/*
 * --format csv: the report's own lines (solve_report.h).
 */
#include "format.h"
#include "solve_report.h"

namespace solve {

namespace {

class CsvWriter : public Writer {
public:
    using Writer::Writer;

    void begin(const RunInfo& info) override {
        std::fprintf(out_, "%s%s\n", kCsvHeader, info.raim ? kCsvRaimColumns : "");
    }

    void epoch(const Epoch& e) override {
        csvLine(out_, e.tm, e.fix, e.spd, e.datum, e.extra);
    }
};

}  // namespace

std::unique_ptr<Writer> makeCsvWriter(std::FILE* out) {
    return std::unique_ptr<Writer>(new CsvWriter(out));
}

}  // namespace solve
