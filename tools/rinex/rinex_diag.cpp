#include "rinex_diag.h"

namespace rinex {

std::string Diagnostic::text() const {
    if (line > 0) return file + ":" + std::to_string(line) + ": " + what;
    return file + ": " + what;
}

void Diagnostics::add(const std::string& file, long line, const std::string& what) {
    Diagnostic d;
    d.file = file;
    d.line = line;
    d.what = what;
    if (sink_) sink_(d);
    if (list_.size() < limit_) list_.push_back(std::move(d));
    else ++dropped_;
}

bool Diagnostics::contains(const std::string& needle) const {
    for (const Diagnostic& d : list_)
        if (d.text().find(needle) != std::string::npos) return true;
    return false;
}

}  // namespace rinex
