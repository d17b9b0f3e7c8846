/*
 * Writing the log. Numbers are written byte by byte, low byte first, so
 * the file is the same on any host.
 */
#include <cstring>

#include "zlog.h"

namespace zlog {

namespace {

void put16(std::vector<uint8_t>& b, uint16_t v) {
    b.push_back(static_cast<uint8_t>(v));
    b.push_back(static_cast<uint8_t>(v >> 8));
}

void put32(std::vector<uint8_t>& b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

void putF64(std::vector<uint8_t>& b, double d) {
    uint64_t v;
    std::memcpy(&v, &d, sizeof v);
    for (int i = 0; i < 8; ++i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

bool putText(std::vector<uint8_t>& b, const std::string& s) {
    if (s.size() > 0xFFFF) return false;
    put16(b, static_cast<uint16_t>(s.size()));
    b.insert(b.end(), s.begin(), s.end());
    return true;
}

}  // namespace

std::size_t messageLength(const uint8_t* msg, std::size_t len) {
    if (len < kMinMessage) return 0;
    return static_cast<std::size_t>(msg[1]) | static_cast<std::size_t>(msg[2]) << 8;
}

Writer::~Writer() { close(); }

bool Writer::open(const std::string& path, const FileHeader& h) {
    close();
    path_ = path;
    error_.clear();
    failed_ = false;
    records_ = 0;

    std::vector<uint8_t> b;
    b.insert(b.end(), {'Z', 'L', 'O', 'G'});
    put16(b, kVersion);
    put16(b, h.hasPosition ? 1 : 0);
    put32(b, 0);                /* header length, set below */
    for (int i = 0; i < 3; ++i) putF64(b, h.hasPosition ? h.position[i] : 0.0);
    bool ok = putText(b, h.station) && h.sources.size() <= 0xFFFF;
    if (ok) {
        put16(b, static_cast<uint16_t>(h.sources.size()));
        for (const std::string& s : h.sources) ok = ok && putText(b, s);
    }
    if (!ok) {
        error_ = path + ": station or source names too long for the log header";
        return false;
    }
    const uint32_t n = static_cast<uint32_t>(b.size());
    for (int i = 0; i < 4; ++i) b[8 + i] = static_cast<uint8_t>(n >> (8 * i));

    f_ = std::fopen(path.c_str(), "wb");
    if (!f_) {
        error_ = path + ": cannot create the file";
        return false;
    }
    if (std::fwrite(b.data(), 1, b.size(), f_) != b.size()) {
        error_ = path + ": write failed";
        failed_ = true;
        return false;
    }
    return true;
}

bool Writer::write(const uint8_t* msg, std::size_t len, uint8_t flags) {
    if (!f_) {
        error_ = path_ + ": log not open";
        return false;
    }
    if (len < kMinMessage || len > 0xFFFF) {
        error_ = path_ + ": message of " + std::to_string(len) + " bytes cannot be logged";
        return false;
    }
    const std::size_t own = messageLength(msg, len);
    if (own != len) {
        error_ = path_ + ": message length field says " + std::to_string(own) + " but the message has " +
                 std::to_string(len) + " bytes";
        return false;
    }
    const uint8_t head[kRecordHeader] = {kSync0, kSync1, flags, 0, static_cast<uint8_t>(len),
                                         static_cast<uint8_t>(len >> 8)};
    if (std::fwrite(head, 1, sizeof head, f_) != sizeof head || std::fwrite(msg, 1, len, f_) != len) {
        error_ = path_ + ": write failed";
        failed_ = true;
        return false;
    }
    ++records_;
    return true;
}

bool Writer::close() {
    if (!f_) return !failed_;
    if (std::fclose(f_) != 0) {
        error_ = path_ + ": write failed on close";
        failed_ = true;
    }
    f_ = nullptr;
    return !failed_;
}

}  // namespace zlog
