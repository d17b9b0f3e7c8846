/*
 * Reading the log. Records are read one at a time from the file, so a
 * day-long log never has to fit in memory.
 *
 * A damaged record (wrong sync bytes, a length that does not agree with
 * the message's own) is reported and the reader looks for the next place
 * where a record checks out: sync bytes, a length of at least three, the
 * whole record inside the file, and the message's length field equal to
 * the record's. A record cut short by the end of the file is the usual
 * sign of a recording that stopped mid-write: it is reported and not
 * returned.
 */
#include <algorithm>
#include <cstring>

#include "zlog.h"

namespace zlog {

namespace {

const std::size_t kFixedHeader = 36;   /* up to and including Z */

}  // namespace

Reader::~Reader() {
    if (f_) std::fclose(f_);
}

void Reader::report(uint64_t offset, const std::string& what) {
    errors_.push_back(path_ + "@" + std::to_string(offset) + ": " + what);
}

/* A file that cannot be read as a log: nothing more comes from it. */
bool Reader::fail(uint64_t offset, const std::string& what) {
    report(offset, what);
    if (f_) std::fclose(f_);
    f_ = nullptr;
    pos_ = size_ = 0;
    return false;
}

bool Reader::readAt(uint64_t offset, uint8_t* buf, std::size_t n) {
    if (offset + n > size_) return false;
    if (std::fseek(f_, static_cast<long>(offset), SEEK_SET) != 0) return false;
    return std::fread(buf, 1, n, f_) == n;
}

bool Reader::open(const std::string& path) {
    if (f_) std::fclose(f_);
    f_ = nullptr;
    path_ = path;
    header_ = FileHeader();
    errors_.clear();
    truncated_ = false;
    pos_ = size_ = 0;
    f_ = std::fopen(path.c_str(), "rb");
    if (!f_)
        return fail(0, "cannot open the file");
    if (std::fseek(f_, 0, SEEK_END) != 0)
        return fail(0, "cannot seek in the file");
    long end = std::ftell(f_);
    size_ = end < 0 ? 0 : static_cast<uint64_t>(end);

    uint8_t fixed[kFixedHeader];
    if (!readAt(0, fixed, sizeof fixed) || std::memcmp(fixed, "ZLOG", 4) != 0)
        return fail(0, "not a log (no ZLOG header)");
    header_.version = get16(fixed + 4);
    if (header_.version != kVersion)
        return fail(4, "log format version " + std::to_string(header_.version) + " is not known");
    const uint16_t flags = get16(fixed + 6);
    const uint32_t hlen = get32(fixed + 8);
    if (hlen < kFixedHeader + 4 || hlen > size_)
        return fail(8, "header length " + std::to_string(hlen) + " does not fit the file");
    header_.hasPosition = (flags & 1) != 0;
    for (int i = 0; i < 3; ++i) header_.position[i] = getF64(fixed + 12 + 8 * i);

    /* The variable part: length-prefixed texts, all inside the header
     * length (a later version may add fields after them). */
    std::vector<uint8_t> h(hlen);
    if (!readAt(0, h.data(), hlen))
        return fail(0, "cannot read the header");
    std::size_t p = kFixedHeader;
    auto text = [&](std::string& out) {
        if (p + 2 > hlen) return false;
        const std::size_t n = get16(&h[p]);
        if (p + 2 + n > hlen) return false;
        out.assign(reinterpret_cast<const char*>(&h[p + 2]), n);
        p += 2 + n;
        return true;
    };
    bool ok = text(header_.station) && p + 2 <= hlen;
    if (ok) {
        const std::size_t count = get16(&h[p]);
        p += 2;
        header_.sources.resize(count);
        for (std::size_t i = 0; i < count && ok; ++i) ok = text(header_.sources[i]);
    }
    if (!ok)
        return fail(p, "header texts run past the header length");
    pos_ = hlen;
    return true;
}

bool Reader::goodRecordAt(uint64_t offset) {
    uint8_t head[kRecordHeader + kMinMessage];
    if (!readAt(offset, head, sizeof head)) return false;
    if (head[0] != kSync0 || head[1] != kSync1) return false;
    const std::size_t len = get16(head + 4);
    return len >= kMinMessage && offset + kRecordHeader + len <= size_ &&
           get16(head + kRecordHeader + 1) == len;
}

/* Looks for the next good record after a damaged one, scanning the file
 * in blocks for the sync bytes. */
bool Reader::resync(uint64_t from) {
    uint8_t buf[1 << 14];
    for (uint64_t at = from; at + 1 < size_;) {
        std::size_t n = static_cast<std::size_t>(std::min<uint64_t>(sizeof buf, size_ - at));
        if (!readAt(at, buf, n)) break;
        for (std::size_t i = 0; i + 1 < n; ++i) {
            if (buf[i] == kSync0 && buf[i + 1] == kSync1 && goodRecordAt(at + i)) {
                report(from, "skipped " + std::to_string(at + i - from) + " bytes to the next good record");
                pos_ = at + i;
                return true;
            }
        }
        at += n - 1;    /* keep the last byte: a sync pair may straddle blocks */
    }
    report(from, "no good record after this point");
    pos_ = size_;
    return false;
}

bool Reader::next(Record& rec) {
    while (f_ && pos_ < size_) {
        const uint64_t at = pos_;
        const uint64_t left = size_ - at;
        uint8_t head[kRecordHeader];
        if (left < kRecordHeader) {
            report(at, "record header cut off by the end of the file (" + std::to_string(left) + " bytes)");
            truncated_ = true;
            pos_ = size_;
            return false;
        }
        if (!readAt(at, head, sizeof head)) {
            report(at, "read failed");
            pos_ = size_;
            return false;
        }
        if (head[0] != kSync0 || head[1] != kSync1) {
            report(at, "bad sync bytes");
            if (!resync(at + 1)) return false;
            continue;
        }
        const std::size_t len = get16(head + 4);
        if (len < kMinMessage) {
            report(at, "record length " + std::to_string(len) + " is too short for a message");
            if (!resync(at + 1)) return false;
            continue;
        }
        if (left - kRecordHeader < len) {
            report(at, "record cut off by the end of the file (" + std::to_string(left - kRecordHeader) +
                           " of " + std::to_string(len) + " message bytes)");
            truncated_ = true;
            pos_ = size_;
            return false;
        }
        rec.offset = at;
        rec.flags = head[2];
        rec.message.resize(len);
        if (!readAt(at + kRecordHeader, rec.message.data(), len)) {
            report(at, "read failed");
            pos_ = size_;
            return false;
        }
        pos_ = at + kRecordHeader + len;
        const std::size_t own = messageLength(rec.message.data(), len);
        if (own != len) {
            /* The record's framing is kept (the next record usually
             * follows it) but the message cannot be trusted. */
            report(at, "record length " + std::to_string(len) + " disagrees with the message length " +
                           std::to_string(own) + "; record skipped");
            if (!goodRecordAt(pos_) && pos_ < size_) {
                if (!resync(at + 1)) return false;
            }
            continue;
        }
        return true;
    }
    return false;
}

}  // namespace zlog
