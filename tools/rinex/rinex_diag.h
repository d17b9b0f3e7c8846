/*
 * Diagnostics of the exchange-format readers. Every problem found in a
 * file becomes one line "FILE:LINE: what is wrong"; the reader skips the
 * damaged record or epoch and goes on, so one bad line never costs the
 * rest of a recording. The messages are collected here (up to a limit, so
 * that a file damaged throughout cannot eat the memory) and, if a sink is
 * set, also passed to it as they happen, for tools that print at once.
 */
#ifndef ZELNAV_RINEX_DIAG_H
#define ZELNAV_RINEX_DIAG_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace rinex {

struct Diagnostic {
    std::string file;
    long line = 0;          /* 1-based; 0 = the file as a whole */
    std::string what;

    /* "FILE:LINE: what" (or "FILE: what" when no line applies). */
    std::string text() const;
};

class Diagnostics {
public:
    explicit Diagnostics(std::size_t limit = 1000) : limit_(limit) {}

    void add(const std::string& file, long line, const std::string& what);

    const std::vector<Diagnostic>& list() const { return list_; }
    std::size_t count() const { return list_.size() + dropped_; }
    std::size_t dropped() const { return dropped_; }
    bool empty() const { return count() == 0; }
    void clear() { list_.clear(); dropped_ = 0; }

    /* Called for every diagnostic, also for those over the limit. */
    void setSink(std::function<void(const Diagnostic&)> sink) { sink_ = std::move(sink); }

    /* True when some collected message contains `needle`: for tests and
     * for tools that look for one kind of problem. */
    bool contains(const std::string& needle) const;

private:
    std::vector<Diagnostic> list_;
    std::size_t limit_;
    std::size_t dropped_ = 0;
    std::function<void(const Diagnostic&)> sink_;
};

}  // namespace rinex

#endif
