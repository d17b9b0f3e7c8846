/*
 * Line source over a text file that may be gzip-compressed. zlib reads a
 * plain file unchanged, so one path serves both. Lines come without their
 * end ("\n", "\r\n" or a lone "\r" before "\n"); the source counts them so
 * that every message can name the line, and one line can be pushed back,
 * which is all the look-ahead the record formats need.
 */
#ifndef ZELNAV_RINEX_LINES_H
#define ZELNAV_RINEX_LINES_H

#include <string>

namespace rinex {

class LineSource {
public:
    LineSource() = default;
    explicit LineSource(const std::string& path) { open(path); }
    ~LineSource();
    LineSource(const LineSource&) = delete;
    LineSource& operator=(const LineSource&) = delete;

    /* False when the file cannot be opened; error() says why. */
    bool open(const std::string& path);
    void close();
    bool isOpen() const { return gz_ != nullptr; }

    /* Next line into `line`; false at the end of the file or when the
     * compressed data is damaged (error() is then non-empty). */
    bool next(std::string& line);

    /* The line last returned by next() comes again on the next call. */
    void unget();

    const std::string& path() const { return path_; }
    /* Number of the line last returned (1-based; 0 before the first). */
    long lineNo() const { return lineNo_; }
    /* Empty while all is well. */
    const std::string& error() const { return error_; }
    void clearError() { error_.clear(); }
    /* The data stopped on damage (cut or corrupt compression) rather than
     * at its end: a record it stops in has been told of already, by the
     * one message of the damage. */
    bool damaged() const { return damaged_; }

private:
    bool readRaw(std::string& line);

    void* gz_ = nullptr;      /* gzFile, kept opaque to spare users zlib.h */
    std::string path_;
    std::string error_;
    std::string last_;
    bool pushedBack_ = false;
    bool damaged_ = false;
    long lineNo_ = 0;
};

class Diagnostics;

/* src.next(), and when the data turns out damaged, one diagnostic naming
 * the line where it stops. */
bool nextLine(LineSource& src, std::string& line, Diagnostics& diag);

}  // namespace rinex

#endif
