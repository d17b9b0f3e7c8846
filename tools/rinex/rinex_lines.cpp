#include "rinex_lines.h"

#include <zlib.h>

#include "rinex_diag.h"

namespace rinex {

LineSource::~LineSource() { close(); }

bool LineSource::open(const std::string& path) {
    close();
    path_ = path;
    error_.clear();
    last_.clear();
    pushedBack_ = false;
    damaged_ = false;
    lineNo_ = 0;
    gzFile f = gzopen(path.c_str(), "rb");
    if (!f) {
        error_ = "cannot open the file";
        return false;
    }
    gzbuffer(f, 1 << 16);
    gz_ = f;
    return true;
}

void LineSource::close() {
    if (gz_) gzclose(static_cast<gzFile>(gz_));
    gz_ = nullptr;
}

/* One physical line, however long: gzgets stops at the buffer size, so
 * pieces are joined until the newline or the end of the data. zlib notes
 * a cut stream as soon as it has read the last input, while lines decoded
 * before that are still to come: the error counts only once gzgets has
 * nothing more to give. */
bool LineSource::readRaw(std::string& line) {
    line.clear();
    if (!gz_) return false;
    gzFile f = static_cast<gzFile>(gz_);
    char buf[512];
    bool any = false, end = false;
    for (;;) {
        if (gzgets(f, buf, sizeof buf) == nullptr) {
            end = true;
            break;
        }
        any = true;
        line.append(buf);
        if (!line.empty() && line.back() == '\n') break;
    }
    if (end) {
        int err = Z_OK;
        const char* msg = gzerror(f, &err);
        if (err != Z_OK && err != Z_STREAM_END) {
            /* A cut or corrupt gzip stream: what came before stays good,
             * the piece of line it stops in is dropped. */
            error_ = err == Z_BUF_ERROR ? "compressed data ends unexpectedly"
                                        : std::string("compressed data damaged: ") + (msg ? msg : "");
            damaged_ = true;
            close();
            return false;
        }
    }
    if (!any) return false;
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    return true;
}

bool LineSource::next(std::string& line) {
    if (pushedBack_) {
        pushedBack_ = false;
        line = last_;
        return true;
    }
    if (!readRaw(line)) return false;
    ++lineNo_;
    last_ = line;
    return true;
}

void LineSource::unget() {
    if (lineNo_ > 0) pushedBack_ = true;
}

bool nextLine(LineSource& src, std::string& line, Diagnostics& diag) {
    if (src.next(line)) return true;
    if (!src.error().empty()) {
        diag.add(src.path(), src.lineNo() + 1, src.error());
        src.clearError();
    }
    return false;
}

}  // namespace rinex
