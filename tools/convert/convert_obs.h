/*
 * Observations of the conversion: which RINEX observation goes to which
 * signal place of the message, and the seconds between recorded epochs.
 *
 * Places: GPS C1C -> "C1"; the L2 code C2W, else C2L, else C2X -> "C2"
 * (per satellite and epoch, the first one the record has); GLONASS C1C ->
 * "C1", C2C -> "C2", C1P -> "B1", C2P -> "B2". Doppler, phase and signal
 * strength of a place are those of the same band and tracking code (D1C,
 * L1C, S1C for C1C, ...). A place exists when its pseudorange does; its
 * other values may be missing (they are then sent as 0).
 *
 * Signal strength: the S observation in dB-Hz; without one, the RINEX
 * strength digit 1-9 of the pseudorange (or phase), read as the middle of
 * its 6 dB-Hz band: 6 n + 2.5 dB-Hz.
 *
 * Interpolation between two recorded epochs A and B (t in between): for a
 * place present at both, pseudorange and phase by cubic Hermite
 * interpolation from their values at A and B and their rates there. The
 * rate at an epoch is taken from the phase itself, the derivative of the
 * parabola through the phase at three recorded epochs (the epoch and its
 * neighbours, or at the ends of a run A, B and the one after B, or the one
 * before A, A and B), when the phase runs unbroken through the three (no
 * loss of lock, and agreeing with the Doppler to 5 cycles/s); otherwise from
 * the Doppler (RINEX signs: Doppler positive for an approaching
 * satellite, so phase rate = -Doppler, pseudorange rate = -wavelength x
 * Doppler). The phase's own rate is far less noisy than the Doppler of a
 * weak signal: over 30 s it keeps the filled phase within a fraction of a
 * cycle where the Doppler's would wander by several. The pseudorange
 * takes the same rate in metres. The Doppler of a filled second is minus
 * the rate of the interpolated phase (linear between A and B where there
 * is no phase), the signal strength is linear.
 * The result is checked: when the change of a pseudorange from A to B
 * departs from what its rates predict by more than 50 m (a clock jump, a
 * tracking reset) the place is not interpolated; when a phase departs by
 * more than 20 cycles, or B reports a loss of lock, the phase is not
 * interpolated (it is sent as 0). A place without a Doppler at A or B is
 * not interpolated. Satellites or places present at only one of A and B
 * are left out of the seconds between.
 */
#ifndef ZELNAV_CONVERT_OBS_H
#define ZELNAV_CONVERT_OBS_H

#include <cstdint>
#include <string>
#include <vector>

#include "rinex_obs.h"

namespace cvt {

enum { kPlaceC1 = 0, kPlaceC2 = 1, kPlaceB1 = 2, kPlaceB2 = 3, kPlaces = 4 };

struct SigVal {
    bool present = false;       /* the pseudorange is there */
    double psvd = 0.0;          /* m */
    bool hasDop = false;
    double dop = 0.0;           /* Hz */
    bool hasFaze = false;
    double faze = 0.0;          /* cycles */
    bool hasSnr = false;
    double snr = 0.0;           /* dB-Hz */
    bool lossOfLock = false;    /* LLI bit 0 of the phase */
};

struct SatSignals {
    char sys = 'G';
    int prn = 0;
    SigVal sig[kPlaces];
};

/* The observations of one whole second, in the observation file's time
 * scale. */
struct ObsSecond {
    int64_t t = 0;              /* whole seconds since 2000 */
    bool interpolated = false;
    bool afterBreak = false;    /* power failure before this epoch: no interpolation up to it */
    long line = 0;              /* line of the epoch in the file (recorded seconds) */
    std::vector<SatSignals> sats;
};

/* Carrier wavelength (m) of a place; `k` is the GLONASS frequency number. */
double wavelength(char sys, int k, int place);

/* Where each place's values sit in the records of one file. */
class SignalMap {
public:
    SignalMap() = default;      /* maps nothing */
    explicit SignalMap(const rinex::ObsHeader& h);
    /* The places of one satellite record; false when it has none. */
    bool take(const rinex::SatObs& s, SatSignals& out) const;
    /* True when the file declares the place at all (any system). */
    bool declares(char sys, int place) const;

private:
    struct Code {
        int c = -1, d = -1, l = -1, s = -1;   /* value indices, -1 = absent */
    };
    /* Up to three candidate tracking codes per place, in preference order. */
    Code codes_[2][kPlaces][3];
    int count_[2][kPlaces] = {};
};

/* Moves every place of `s` by `dt` seconds along its Doppler (places
 * without a Doppler stay; false if any did). */
bool shiftAlongDoppler(SatSignals& s, double dt, int k);

/* The recorded seconds around a gap: `a` and `b` bound it; `before` (the
 * recorded second before a) and `after` (the one after b) lend the phase
 * rates, and may be null. */
struct Bracket {
    const ObsSecond* before = nullptr;
    const ObsSecond* a = nullptr;
    const ObsSecond* b = nullptr;
    const ObsSecond* after = nullptr;
};

/* Frequency number of a GLONASS slot (0 for GPS and unknown slots). */
using FreqOf = int (*)(const void* ctx, char sys, int prn);

/* The observations at `t` (a.t < t < b.t). */
void interpolateSecond(const Bracket& br, int64_t t, FreqOf freq, const void* ctx, ObsSecond& out);

}  // namespace cvt

#endif
