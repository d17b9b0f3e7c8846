/*
 * Resynchronising reader of a live stream of 0x0C messages. The rules are
 * in solve_stream.h.
 */
#include "solve_stream.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

#include "solve_source.h"
#include "x0ccheck.h"
#include "zlog.h"

namespace solve {

namespace {

using zlog::get32;
using zlog::getF64;

const uint8_t kMagic[4] = {'Z', 'L', 'O', 'G'};
const std::size_t kLogFixedHeader = 40;        /* up to the count of source names */
const uint32_t kLogLongestHeader = 1u << 20;   /* nothing real comes near */

/* Seconds within which the start of a message found inside another must
 * lie of that one's time to count as the start of the next message. */
const uint32_t kNear = 600;

bool near(uint32_t a, uint32_t b) { return (a > b ? a - b : b - a) <= kNear; }

/* The message check, and nothing in the message the library would skip. */
bool wholeMessage(const uint8_t* msg, std::size_t len) {
    const x0ccheck::Result r = x0ccheck::check(msg, len);
    return r.ok() && r.length == len && r.end == len;
}

}  // namespace

void StreamReader::feed(const uint8_t* bytes, std::size_t n) {
    /* Drop what has been consumed once it is most of the buffer, so the
     * buffer stays near the size of one message. */
    if (head_ > 0 && head_ >= buf_.size() / 2) {
        buf_.erase(buf_.begin(), buf_.begin() + static_cast<std::ptrdiff_t>(head_));
        base_ += head_;
        head_ = 0;
    }
    buf_.insert(buf_.end(), bytes, bytes + n);
}

/*
 * A message cut off a few bytes before its end and followed by the next
 * message reads as a whole one: the structure is complete and only the
 * last sub-block's contents come from the next message. What gives it
 * away is the next message's start inside it: a record or a message with
 * data whose header (length, first block, time) is sound and whose time
 * lies within kNear seconds of this one's. Such a start is looked for in
 * the bytes already here; when one is found the candidate is refused, and
 * the scan finds the real message where it starts. In real messages no
 * such pattern occurs (the sample log has none), so this costs nothing in
 * delay: a message is never held back for bytes after its end.
 */
bool StreamReader::startsInside(std::size_t from, std::size_t to, const uint8_t* msg,
                                std::size_t len) const {
    if ((msg[0] & 0x80u) || len < 8) return false;
    const uint32_t tm = get32(msg + 4);
    const uint8_t* b = buf_.data();
    for (std::size_t q = from + 1; q < to; q++) {
        std::size_t m = q;   /* where the inner message starts */
        if (b[q] == zlog::kSync0) {
            if (q + zlog::kRecordHeader + 8 > buf_.size() || b[q + 1] != zlog::kSync1) continue;
            m = q + zlog::kRecordHeader;
            if (zlog::messageLength(b + m, 3) != static_cast<std::size_t>(b[q + 4] | b[q + 5] << 8))
                continue;
        }
        if ((b[m] & 0x8Fu) != 12 || m + 8 > buf_.size()) continue;
        const std::size_t inner = zlog::messageLength(b + m, 3);
        if (inner >= x0ccheck::kHeaderBytes && b[m + 3] >= x0ccheck::kHeaderBytes &&
            b[m + 3] <= inner && near(get32(b + m + 4), tm))
            return true;
    }
    return false;
}

/* A log's file header: kept for its position, then skipped. */
StreamReader::Take StreamReader::tryHeader(std::size_t at, std::size_t* used) {
    const std::size_t avail = buf_.size() - at;
    const uint8_t* p = buf_.data() + at;
    const std::size_t known = avail < 12 ? avail : 12;
    if (std::memcmp(p, kMagic, known < 4 ? known : 4) != 0) return Take::No;
    if (known < 12) return Take::Wait;
    const uint32_t hlen = get32(p + 8);
    if ((p[4] | p[5] << 8) != zlog::kVersion) return Take::No;
    if (hlen < kLogFixedHeader || hlen > kLogLongestHeader) return Take::No;
    if (avail < hlen) return Take::Wait;
    if (p[6] & 1) {
        hasPosition_ = true;
        for (int i = 0; i < 3; i++) position_[i] = getF64(p + 12 + 8 * i);
    }
    *used = hlen;
    return Take::Yes;
}

/* A log record around one message. */
StreamReader::Take StreamReader::tryRecord(std::size_t at, zlog::Record& rec, std::size_t* used) {
    const std::size_t avail = buf_.size() - at;
    const uint8_t* p = buf_.data() + at;
    if (avail < 2) return Take::Wait;
    if (p[1] != zlog::kSync1) return Take::No;
    if (avail < zlog::kRecordHeader + zlog::kMinMessage) return Take::Wait;
    const std::size_t len = static_cast<std::size_t>(p[4] | p[5] << 8);
    if (len < zlog::kMinMessage || zlog::messageLength(p + zlog::kRecordHeader, 3) != len)
        return Take::No;
    if (avail < zlog::kRecordHeader + len)
        return x0ccheck::mayPass(p + zlog::kRecordHeader, avail - zlog::kRecordHeader) ? Take::Wait
                                                                                      : Take::No;
    if (!wholeMessage(p + zlog::kRecordHeader, len) ||
        startsInside(at + zlog::kRecordHeader, at + zlog::kRecordHeader + len,
                     p + zlog::kRecordHeader, len))
        return Take::No;
    rec.offset = base_ + at;
    rec.flags = p[2];
    rec.message.assign(p + zlog::kRecordHeader, p + zlog::kRecordHeader + len);
    *used = zlog::kRecordHeader + len;
    return Take::Yes;
}

/* A bare message. */
StreamReader::Take StreamReader::tryMessage(std::size_t at, zlog::Record& rec, std::size_t* used) {
    const std::size_t avail = buf_.size() - at;
    const uint8_t* p = buf_.data() + at;
    if (avail < zlog::kMinMessage) return Take::Wait;
    const std::size_t len = zlog::messageLength(p, avail);
    if (len < zlog::kMinMessage) return Take::No;
    /* A bare message without data is three bytes (type, length 3) that
     * occur inside real messages and in noise far too often to be told
     * from one, and it gives the solver nothing: only framed ones are
     * taken. A message with data has a time; and a false start is
     * given up as soon as what has arrived of it fails the check, not
     * when all it claims is there. */
    if (p[0] & 0x80u) return Take::No;
    if (avail >= 8 && get32(p + 4) == 0) return Take::No;
    if (avail < len) return x0ccheck::mayPass(p, avail) ? Take::Wait : Take::No;
    if (!wholeMessage(p, len) || startsInside(at, at + len, p, len)) return Take::No;
    rec.offset = base_ + at;
    rec.flags = 0;
    rec.message.assign(p, p + len);
    *used = len;
    return Take::Yes;
}

/* Reports the run of garbage that just ended. */
void StreamReader::endGarbage() {
    if (garbageRun_ == 0) return;
    errors_.push_back(name_ + "@" + std::to_string(garbageFrom_) + ": skipped " +
                      std::to_string(garbageRun_) + " bytes to the next message");
    garbageRun_ = 0;
}

bool StreamReader::next(zlog::Record& rec) {
    while (head_ < buf_.size()) {
        const uint8_t b = buf_[head_];
        std::size_t used = 0;
        Take t = Take::No;
        if (b == kMagic[0])
            t = tryHeader(head_, &used);
        else if (b == zlog::kSync0)
            t = tryRecord(head_, rec, &used);
        else if ((b & 0x0Fu) == 12)
            t = tryMessage(head_, rec, &used);

        if (t == Take::Wait && !finished_) return false;
        if (t == Take::Yes) {
            endGarbage();
            head_ += used;
            if (b != kMagic[0]) return true;
            continue;
        }
        /* Not a start here (or an incomplete one at the end of the
         * input): one byte of garbage. */
        if (garbageRun_ == 0) garbageFrom_ = base_ + head_;
        garbageRun_++;
        skipped_++;
        head_++;
    }
    if (finished_) endGarbage();
    return false;
}

bool FdStream::next(zlog::Record& rec) {
    uint8_t buf[1 << 14];
    for (;;) {
        if (rd_.next(rec)) return true;
        if (rd_.finished()) return false;
        const ssize_t n = ::read(fd_, buf, sizeof buf);
        if (n > 0)
            rd_.feed(buf, static_cast<std::size_t>(n));
        else if (n < 0 && errno == EINTR)
            continue;
        else
            rd_.finish();
    }
}

namespace {

class StreamSource : public Source {
public:
    StreamSource(int fd, const std::string& name) : in_(fd, name) {}
    bool next(zlog::Record& rec) override { return in_.next(rec); }
    const std::vector<std::string>& errors() const override { return in_.reader().errors(); }
    const double* position() const override {
        return in_.reader().hasPosition() ? in_.reader().position() : nullptr;
    }

private:
    FdStream in_;
};

}  // namespace

int runStream(int fd, const std::string& name, const Options& opt, std::FILE* out,
              std::FILE* err, Totals* totals) {
    StreamSource src(fd, name);
    Options live = opt;
    live.flush = true;
    return runSource(src, name, live, out, err, totals);
}

}  // namespace solve
