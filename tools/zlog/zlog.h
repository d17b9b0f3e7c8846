/*
 * The log: a file of complete 0x0C receiver messages, one record per
 * message, behind a header with what a solver needs and the messages do
 * not carry. The byte layout is in README.md next to this file; in short
 * (all numbers little-endian):
 *
 *   file header   "ZLOG", u16 version, u16 flags, u32 header length,
 *                 3 x f64 position, u16+bytes station, u16 count of
 *                 (u16+bytes) source names
 *   record        A5 5A, u8 flags, u8 0, u16 length L, L message bytes
 *
 * A record's L must equal the message's own length (its bytes 1-2). The
 * reader checks the sync bytes and both lengths, reports a damaged
 * record and looks for the next good one, and reports a truncated last
 * record instead of returning it.
 */
#ifndef ZELNAV_ZLOG_H
#define ZELNAV_ZLOG_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace zlog {

/* Little-endian fields of the log and of the messages it frames. */
inline uint16_t get16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }

inline uint32_t get32(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
           static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
}

inline double getF64(const uint8_t* p) {
    uint64_t v = 0;
    for (int i = 7; i >= 0; --i) v = v << 8 | p[i];
    double d;
    std::memcpy(&d, &v, sizeof d);
    return d;
}

const uint16_t kVersion = 1;
const uint8_t kSync0 = 0xA5, kSync1 = 0x5A;
const std::size_t kRecordHeader = 6;
const std::size_t kMinMessage = 3;      /* type byte and the length field */

/* Record flags. */
enum : uint8_t {
    kInterpolated = 0x01    /* a second between recorded epochs, not a recorded epoch */
};

struct FileHeader {
    uint16_t version = kVersion;
    bool hasPosition = false;
    double position[3] = {0.0, 0.0, 0.0};   /* approximate ECEF XYZ of the recording, metres */
    std::string station;
    std::vector<std::string> sources;       /* file names the log was made from */
};

struct Record {
    uint64_t offset = 0;        /* of the record header in the file */
    uint8_t flags = 0;
    std::vector<uint8_t> message;

    bool interpolated() const { return (flags & kInterpolated) != 0; }
};

/* Length field of a message (bytes 1-2), 0 if it is shorter than that. */
std::size_t messageLength(const uint8_t* msg, std::size_t len);

class Writer {
public:
    Writer() = default;
    ~Writer();
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /* Creates the file and writes its header. */
    bool open(const std::string& path, const FileHeader& header);
    /* One message; refused (false, error()) when its length field does
     * not say `len` or it is longer than a record can hold. */
    bool write(const uint8_t* msg, std::size_t len, uint8_t flags = 0);
    bool write(const std::vector<uint8_t>& msg, uint8_t flags = 0) {
        return write(msg.data(), msg.size(), flags);
    }
    /* Flushes and closes; false if anything failed on the way. */
    bool close();

    const std::string& error() const { return error_; }
    long records() const { return records_; }

private:
    std::FILE* f_ = nullptr;
    std::string path_;
    std::string error_;
    long records_ = 0;
    bool failed_ = false;
};

class Reader {
public:
    Reader() = default;
    ~Reader();
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    /* Opens the log and reads its header; false (with errors()) when it
     * is not a log this reader understands. */
    bool open(const std::string& path);
    const FileHeader& header() const { return header_; }

    /* The next good record; false at the end of the file or at a
     * truncated last record (then truncated() is true). Damaged records
     * on the way are reported in errors() and skipped. */
    bool next(Record& rec);

    bool truncated() const { return truncated_; }
    /* "FILE@OFFSET: what is wrong", one per problem. */
    const std::vector<std::string>& errors() const { return errors_; }

private:
    void report(uint64_t offset, const std::string& what);
    bool fail(uint64_t offset, const std::string& what);
    bool readAt(uint64_t offset, uint8_t* buf, std::size_t n);
    bool goodRecordAt(uint64_t offset);
    bool resync(uint64_t from);

    std::FILE* f_ = nullptr;
    std::string path_;
    FileHeader header_;
    uint64_t size_ = 0;
    uint64_t pos_ = 0;
    bool truncated_ = false;
    std::vector<std::string> errors_;
};

}  // namespace zlog

#endif
