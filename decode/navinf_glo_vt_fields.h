/*
 * Field positions of the GLONASS high-accuracy (VT) strings: the one table
 * that both the collectors (decode/navinf_glo_vt*.cpp) and the message
 * writer's VT encoder read, so that the two cannot drift apart.
 *
 * A VT string is 7 bytes. Positions count from 1 at the least significant
 * bit of byte 0, upward through each byte and on into the next, which is
 * the numbering of NavInfStr_t::GetValue. Positions 1-6 hold the check
 * bits, 7 the overall parity, 8-50 the protected data with the string
 * number in 47-50; 51-56 are not covered by the code and carry nothing.
 *
 * A field names its source in `src`, whose meaning depends on the group:
 *  - ephemeris fields: the VT string number (1..7, 10);
 *  - time-parameter fields: the collector's place (0..5, see kTpPlace);
 *  - almanac fields: the array A0..A6 of the almanac collector (see
 *    kAlmArray); every array holds one string per almanac satellite.
 * Signed fields are sign-magnitude with the sign in their highest bit.
 * Scales are in the broadcast unit: kilometres for the ephemeris vectors,
 * seconds, semicircles for the almanac angles.
 */
#ifndef ZELNAV_NAVINF_GLO_VT_FIELDS_H
#define ZELNAV_NAVINF_GLO_VT_FIELDS_H

struct GloVtField {
    unsigned char src;
    unsigned char pos;
    unsigned char len;
    bool sign;
    double scale;
};

namespace glovt {

/* Every string: its number, 1..10. */
constexpr GloVtField kNum = {0, 47, 4, false, 1.0};

/*
 * String 1 carries the frame time, and the two counters that steer the
 * time-parameter and almanac collectors are nothing but parts of it:
 * v = the tens of seconds (0..5), u = the minutes modulo 12. v is the
 * 10-second frame within a 30-second cycle of three (time parameters) and
 * v + 6u the 10-second step within the 12-minute almanac cycle. They read
 * the same bits as the seconds and minutes of tk, unscaled.
 */
constexpr GloVtField kStepV = {1, 30, 3, false, 1.0};
constexpr GloVtField kStepU = {1, 33, 6, false, 1.0};

/* Ephemeris: src = string number. */
constexpr GloVtField kTb = {5, 40, 7, false, 1.0};          /* x 900 s */
constexpr GloVtField kTkHours = {1, 39, 5, false, 1.0};
constexpr GloVtField kTkMinutes = {1, 33, 6, false, 1.0};
constexpr GloVtField kTkSeconds = {1, 30, 3, false, 10.0};  /* 10-s steps */
constexpr GloVtField kPos[3] = {                            /* km */
    {2, 8, 29, true, 0x1p-13},
    {3, 8, 29, true, 0x1p-13},
    {4, 8, 29, true, 0x1p-13}};
constexpr GloVtField kVel[3] = {                            /* km/s */
    {5, 8, 27, true, 0x1p-23},
    {6, 8, 27, true, 0x1p-23},
    {7, 8, 27, true, 0x1p-23}};
constexpr GloVtField kAcc[3] = {                            /* km/s^2 */
    {2, 37, 5, true, 0x1p-30},
    {3, 37, 5, true, 0x1p-30},
    {4, 37, 5, true, 0x1p-30}};
constexpr GloVtField kGammaN = {6, 35, 11, true, 0x1p-40};
constexpr GloVtField kTauN = {1, 8, 22, true, 0x1p-30};     /* s */
constexpr GloVtField kDTauN = {7, 40, 5, true, 0x1p-30};    /* s */
constexpr GloVtField kNt = {10, 8, 11, false, 1.0};
constexpr GloVtField kM = {3, 45, 2, false, 1.0};

/*
 * Time parameters: src = place. The collector files strings 8, 9 and 10
 * by the cycle counter (v mod 3) into six places; kTpPlace[cycle][string
 * - 8] is the place, -1 when that string is not kept in that cycle.
 * Places 0 and 2 carry no field: place 0 is the time anchor of the set.
 * tauC is 31 bits of magnitude split over two strings: the sign and the
 * high 27 bits in place 3 (units of 2^-27 s), the low 4 bits in place 4
 * (units of 2^-31 s).
 */
constexpr int kTpPlace[3][3] = {{0, -1, 1}, {2, -1, 1}, {3, 4, 5}};
constexpr GloVtField kTpNa = {3, 36, 11, false, 1.0};
constexpr GloVtField kTpN4 = {1, 19, 5, false, 1.0};
constexpr GloVtField kTpTauC = {3, 8, 28, true, 0x1p-27};
constexpr GloVtField kTpTauCLow = {4, 42, 4, false, 0x1p-31};
constexpr GloVtField kTpB1 = {5, 36, 11, true, 0x1p-10};    /* s */
constexpr GloVtField kTpB2 = {5, 26, 10, true, 0x1p-16};    /* s/day */
constexpr GloVtField kTpKp = {5, 24, 2, false, 1.0};

/*
 * Almanac: src = array. Strings 8 and 9 go to kAlmArray[phase][string -
 * 8] with phase = step mod 3; string 10 goes to A2 in every phase. The
 * element within the array is the satellite index step / 3.
 */
constexpr int kAlmArray[3][2] = {{0, 1}, {3, 4}, {5, 6}};
constexpr int kAlmArrayStr10 = 2;
constexpr int kAlmSats = 24;
constexpr int kAlmSteps = 72;   /* 24 satellites x 3 phases */

/* The almanac's day and four-year numbers: read from satellite index 0
 * only; the bits are those of the time parameters' kTpNa and kTpN4. */
constexpr GloVtField kAlmNa = {5, 36, 11, false, 1.0};
constexpr GloVtField kAlmN4 = {2, 19, 5, false, 1.0};

/* Per-satellite entry fields. kAlmHealth is a mask of all 24 satellites'
 * health bits; entry k takes its bit 23 - k. */
constexpr GloVtField kAlmHealth = {0, 8, 24, false, 1.0};
constexpr GloVtField kAlmNum = {0, 42, 5, false, 1.0};
constexpr GloVtField kAlmLit = {6, 37, 5, false, 1.0};
constexpr GloVtField kAlmLambda = {1, 8, 21, true, 0x1p-20};  /* semicircles */
constexpr GloVtField kAlmLambdaT = {4, 8, 21, false, 0x1p-5}; /* s */
constexpr GloVtField kAlmDI = {4, 29, 18, true, 0x1p-20};     /* semicircles */
constexpr GloVtField kAlmDT = {6, 8, 22, true, 0x1p-9};       /* s */
constexpr GloVtField kAlmDTdot = {6, 30, 7, true, 0x1p-14};   /* s/orbit^2 */
constexpr GloVtField kAlmEps = {3, 32, 15, false, 0x1p-20};
constexpr GloVtField kAlmOmega = {1, 29, 16, true, 0x1p-15};  /* semicircles */
constexpr GloVtField kAlmTauA = {0, 32, 10, true, 0x1p-18};   /* s */

/* The carrier-number value that marks an empty almanac slot. */
constexpr unsigned kAlmLitEmpty = 24;

}  // namespace glovt

#endif
