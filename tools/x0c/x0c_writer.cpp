/*
 * Message 0x0C writer: unit conversions of the observation fields and the
 * message header. The satellite blocks are written by x0c_block.cpp.
 */
#include "x0c_writer.h"

#include <cmath>
#include <stdexcept>
#include <string>

#include "x0c_bytes.h"

namespace x0c {

namespace {

/* Header field offsets. Byte 8 and the gaps 10-13 and 15-18 stay 0. */
enum {
    HDR_TYPE = 0,
    HDR_LENGTH = 1,
    HDR_OFFSAT = 3,
    HDR_TMRSVR = 4,
    HDR_NUMSAT = 9,
    HDR_DTGPSUTC = 14,
    HDR_TEMPERATURE = 19,
    HDR_PRESSURE = 21,
    HDR_HUMIDITY = 23,
    HDR_SIZE = 25
};

/* Rounds `counts` to the nearest integer (half away from zero), refusing
 * what an int64_t cannot hold: NaN and infinities included. */
int64_t roundCounts(double counts, const char* what) {
    if (!(std::fabs(counts) < 9.2e18))
        throw std::out_of_range(std::string(what) + " is out of range");
    return std::llround(counts);
}

}  // namespace

/* One count is 2^-32 ms of light travel time: metres -> seconds -> ms. */
int64_t psvdToRaw(double metres) {
    return roundCounts(metres / kC * 1000.0 * 4294967296.0, "pseudorange");
}

/* One count is 2^-24 kHz. */
int32_t dopToRaw(double hertz) {
    int64_t v = roundCounts(hertz / 1000.0 * 16777216.0, "Doppler");
    requireSigned(v, 32, "Doppler");
    return (int32_t)v;
}

/* One count is 2^-16 cycle. */
int64_t fazeToRaw(double cycles) {
    return roundCounts(cycles * 65536.0, "carrier phase");
}

void gpsWordsToStored(const uint32_t words[10], uint8_t out[30]) {
    /* Transmitted byte t is byte 2 - t % 3 (counting from the least
     * significant) of word t / 3; the message keeps them back to front. */
    for (int t = 0; t < 30; t++)
        out[29 - t] = (uint8_t)(words[t / 3] >> (8 * (2 - t % 3)));
}

std::vector<uint8_t> buildMessage(const Header& hdr,
                                  const std::vector<SatBlock>& sats) {
    if (sats.size() > 255)
        throw std::out_of_range("more than 255 satellite blocks");

    /* The length field cannot overflow: the largest block this writer
     * makes is 211 bytes, and 25 + 255 * 211 < 65536. */
    std::vector<uint8_t> msg(HDR_SIZE, 0);
    for (const SatBlock& s : sats) appendBlock(s, msg);

    uint8_t* h = msg.data();
    h[HDR_TYPE] = (uint8_t)((hdr.type & 0x0F) | (hdr.noData ? 0x80 : 0));
    putLE(h + HDR_LENGTH, msg.size(), 2);
    h[HDR_OFFSAT] = HDR_SIZE;
    putLE(h + HDR_TMRSVR, hdr.tmRsvr, 4);
    h[HDR_NUMSAT] = (uint8_t)sats.size();
    h[HDR_DTGPSUTC] = hdr.dtGpsUtc;
    putLE(h + HDR_TEMPERATURE, (uint16_t)hdr.temperature, 2);
    putLE(h + HDR_PRESSURE, (uint16_t)hdr.pressure, 2);
    putLE(h + HDR_HUMIDITY, (uint16_t)hdr.humidity, 2);
    return msg;
}

}  // namespace x0c
