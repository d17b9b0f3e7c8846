/*
 * Helpers shared by the message-intake tests: satellite blocks and whole
 * messages built with the message writer, fed to a converter.
 */
#ifndef ZELNAV_TESTS_INTAKE_FIXTURE_H
#define ZELNAV_TESTS_INTAKE_FIXTURE_H

#include <cstring>
#include <vector>

#include "decode/lstsat.h"
#include "tools/x0c/x0c_bits.h"
#include "tools/x0c/x0c_writer.h"

namespace intake {

/* A receiver time on a half-minute boundary, so that the GLONASS CT string
 * due at kT0 + s is ((s - 1) mod 30) / 2 (0 standing for 15). */
const unsigned int kT0 = 600000000u;
const unsigned int kRsvrOrigin = 630720000u; /* receiver origin, 7300 days earlier */

inline x0c::Header header(unsigned int tm) {
    x0c::Header h;
    h.tmRsvr = tm + kRsvrOrigin;
    return h;
}

/* A tracked satellite with place C1 and its own receiver channel. */
inline x0c::SatBlock sat(bool gps, uint8_t num, uint8_t chan) {
    x0c::SatBlock s;
    s.gps = gps;
    s.num = num;
    s.litByte = gps ? 0 : (uint8_t)(num % 14);
    s.sig[0].present = true;
    s.sig[0].psvd = x0c::psvdToRaw(2.0e7 + num);
    s.hasSb10 = true;
    s.chan = chan;
    return s;
}

/* GLONASS CT string number m, information bits otherwise zero. */
inline void ctString(x0c::SatBlock& s, uint8_t m) {
    s.hasCt = true;
    std::memset(s.ct, 0, sizeof s.ct);
    s.ct[0] = m;
}

/* GPS subframe `id`; for subframe 4, `svid` is the page's SV/page ID. */
inline void gpsSubframe(x0c::SatBlock& s, uint8_t id, uint8_t svid = 0) {
    s.hasGps = true;
    std::memset(s.gpsSf, 0, sizeof s.gpsSf);
    s.gpsSf[24] = (uint8_t)(id << 2); /* handover word: subframe ID */
    s.gpsSf[23] = svid;               /* word 3: data ID and SV/page ID */
}

/* The public records are packed to 4 bytes, so a double or a pointer in
 * them can sit off its natural alignment. gtest's assertions bind their
 * arguments to references; reading such a field into a value first keeps
 * that well defined. */
template <class T>
inline T val(T x) {
    return x;
}

/* A converter and the last message fed to it. */
struct Feed {
    lstsat_t conv;
    std::vector<uint8_t> msg;

    lsttblSat_t* operator()(const x0c::Header& h, const std::vector<x0c::SatBlock>& sats) {
        msg = x0c::buildMessage(h, sats);
        return conv.upx0c(msg.data());
    }
    lsttblSat_t* raw(std::vector<uint8_t> m) {
        msg = std::move(m);
        return conv.upx0c(msg.data());
    }
};

}  // namespace intake

#endif
