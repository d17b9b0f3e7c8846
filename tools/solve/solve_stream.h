/*
 * Messages out of a live byte stream: a receiver piped in from a serial
 * port, a log piped through a network link, or a mixture cut short and
 * restarted.
 *
 * The stream may hold any of:
 *   - a log's file header ("ZLOG"...), from which the approximate position
 *     is kept, and the log's records (A5 5A, flags, 0, u16 L, message);
 *   - bare 0x0C messages with data, one after the other, without
 *     framing (a bare message without data, three bytes, is not told
 *     from noise and is skipped: it carries nothing for the solver);
 *   - garbage anywhere: line noise, a message cut off when the link
 *     dropped, a different protocol.
 * The three starts are told apart by their first byte (A5, 'Z', and a
 * type byte whose low nibble is 12), so both framings may be mixed.
 *
 * At each position the reader tries to take what starts there; when that
 * fails it moves on by one byte and tries again (resynchronisation). A
 * candidate is taken only when the message check passes and the
 * message's structure accounts for exactly its length (x0ccheck's end):
 * a receiver puts nothing after the last satellite block, and a message
 * cut off and followed by the next one almost never walks to its claimed
 * length exactly. A record must in addition carry the message's own
 * length. A message cut off near its end and followed by the next one
 * does walk to its length; it is told by the next message's header found
 * inside it (a sound length and first block, and a time within ten
 * minutes of its own).
 *
 * A candidate still incomplete waits for more bytes as long as what has
 * arrived of it passes the check so far (x0ccheck::mayPass), so a message
 * is handed out as soon as its last byte has arrived, and a false start
 * in noise is mostly given up within a few bytes. At the end of the
 * input an incomplete candidate is given up and the bytes it covered are
 * searched like any others, so nothing real is lost to a false start.
 *
 * The reader works on what it is fed (feed()), so it is the same code
 * whether the bytes come from a pipe, a socket or a test.
 */
#ifndef ZELNAV_SOLVE_STREAM_H
#define ZELNAV_SOLVE_STREAM_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "solve_run.h"
#include "zlog.h"

namespace solve {

class StreamReader {
public:
    /* `name` prefixes the reports ("NAME@OFFSET: ..."). */
    explicit StreamReader(const std::string& name = "-") : name_(name) {}

    /* More bytes of the stream. */
    void feed(const uint8_t* bytes, std::size_t n);
    /* No more bytes will come. */
    void finish() { finished_ = true; }
    bool finished() const { return finished_; }

    /* The next message complete in what has been fed; false when more
     * bytes are needed (or, after finish(), at the end). rec.offset is
     * the stream offset where the message (or its record) starts. */
    bool next(zlog::Record& rec);

    /* The approximate position of a log header seen in the stream. */
    bool hasPosition() const { return hasPosition_; }
    const double* position() const { return position_; }

    /* Bytes skipped as garbage so far, and one report per skipped run. */
    uint64_t skipped() const { return skipped_; }
    const std::vector<std::string>& errors() const { return errors_; }

private:
    enum class Take { Yes, No, Wait };
    Take tryHeader(std::size_t at, std::size_t* used);
    Take tryRecord(std::size_t at, zlog::Record& rec, std::size_t* used);
    Take tryMessage(std::size_t at, zlog::Record& rec, std::size_t* used);
    bool startsInside(std::size_t from, std::size_t to, const uint8_t* msg, std::size_t len) const;
    void endGarbage();

    std::string name_;
    std::vector<uint8_t> buf_;
    std::size_t head_ = 0;      /* first unread byte in buf_ */
    uint64_t base_ = 0;         /* stream offset of buf_[0] */
    bool finished_ = false;
    bool hasPosition_ = false;
    double position_[3] = {0.0, 0.0, 0.0};
    uint64_t skipped_ = 0;
    uint64_t garbageFrom_ = 0;  /* start of the current skipped run */
    uint64_t garbageRun_ = 0;   /* its length so far */
    std::vector<std::string> errors_;
};

/* Reads a file descriptor (standard input: 0) into a StreamReader as
 * bytes arrive: read() returns whatever is there, so a message is handed
 * out as soon as it is complete, not when a buffer fills. */
class FdStream {
public:
    FdStream(int fd, const std::string& name) : fd_(fd), rd_(name) {}
    /* The next message; false at the end of the input. */
    bool next(zlog::Record& rec);
    const StreamReader& reader() const { return rd_; }

private:
    int fd_;
    StreamReader rd_;
};

/* `zelnav solve -`: runs the stream read from `fd` as run() runs a log,
 * flushing the output after every epoch. */
int runStream(int fd, const std::string& name, const Options& opt, std::FILE* out,
              std::FILE* err, Totals* totals = nullptr);

}  // namespace solve

#endif
