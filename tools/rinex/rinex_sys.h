/*
 * Satellite systems as RINEX names them. The readers keep GPS and
 * GLONASS and pass over the others, which they still have to recognise to
 * tell a satellite they skip from a damaged line.
 */
#ifndef ZELNAV_RINEX_SYS_H
#define ZELNAV_RINEX_SYS_H

#include <cstring>
#include <string>

namespace rinex {

/* Index of a kept system in per-system arrays. */
enum { kGps = 0, kGlo = 1, kSystems = 2 };

/* 0 for GPS ('G'), 1 for GLONASS ('R'), -1 for every other letter. */
inline int systemIndex(char sys) { return sys == 'G' ? kGps : sys == 'R' ? kGlo : -1; }

/* GPS, GLONASS, Galileo, BeiDou, QZSS, SBAS, IRNSS. */
inline bool knownSystem(char sys) { return sys != 0 && std::strchr("GRECJSI", sys) != nullptr; }

/* "G05", "R14": the name of a satellite in messages. */
inline std::string satName(char sys, long prn) {
    std::string s(1, sys);
    if (prn >= 0 && prn < 10) s += '0';
    return s + std::to_string(prn);
}

/* GLONASS slots go up to 24 in the constellation; the files carry test
 * and new satellites above that. */
const int kMaxGloSlot = 32;

}  // namespace rinex

#endif
