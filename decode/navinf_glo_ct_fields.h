/*
 * Field positions of the GLONASS standard-accuracy (CT) navigation strings.
 *
 * A CT string has 85 bits, numbered 85 (first transmitted, the idle bit,
 * always 0) down to 1. Bits 84..81 hold the string number m, bits 8..1 the
 * Hamming check bits; everything between is data. Every field is given by
 * the number of its least significant bit, its length and how it is coded:
 * GLONASS signed fields are sign-magnitude (the top bit of the field is the
 * sign, 1 = negative). The scale turns the raw count into the unit the
 * satellite broadcasts (km, km/s, s, semicircles); the collectors convert
 * km-based values to metres themselves, after the range tests.
 *
 * The decoders read these fields with NavInfStr_t::GetValueCT, whose bit
 * numbering is the one used here; the message writer's CT encoder writes
 * them with x0c::putBitsCT. One table per kind of string, indexed by the
 * enumerations below, so that reader and writer cannot disagree.
 *
 * A superframe lasts 150 s and holds five 30-second frames of fifteen
 * 2-second strings each. Strings 1 to 4 (ephemeris) and 5 (time
 * parameters) repeat in every frame; strings 6 to 15 carry the almanac of
 * five satellites per frame, two strings per satellite, except in frame 5,
 * which carries four satellites in strings 6 to 13 and the Earth-rotation
 * parameters in string 14.
 *
 * Header-only and free of library dependencies: the writer library uses it
 * too.
 */
#ifndef ZELNAV_NAVINF_GLO_CT_FIELDS_H
#define ZELNAV_NAVINF_GLO_CT_FIELDS_H

struct GloCtField {
    int lsb;        /* string bit number of the least significant bit */
    int len;        /* bits */
    bool sign;      /* sign-magnitude; unsigned otherwise */
    double scale;   /* broadcast unit per count */
};

/* Powers of two used as scales. */
#define GLO_2P(n) (1.0 / (double)(1ULL << (n)))

/* Common to all strings. */
enum { GLO_CT_IDLE_BIT = 85 };
inline constexpr GloCtField kGloCtStrNum = {81, 4, false, 1.0};

/* String 1: frame time tk (hours, minutes, half-minute) and the X axis. */
enum GloCtStr1 {
    GLO_S1_P1,       /* tb interval flag */
    GLO_S1_TK_H,     /* hours 0..23 */
    GLO_S1_TK_M,     /* minutes 0..59 */
    GLO_S1_TK_S30,   /* 1 = second half of the minute */
    GLO_S1_VX,       /* km/s */
    GLO_S1_AX,       /* km/s^2 */
    GLO_S1_X,        /* km */
    GLO_S1_COUNT
};
inline constexpr GloCtField kGloCtStr1[GLO_S1_COUNT] = {
    {77, 2, false, 1.0},
    {72, 5, false, 1.0},
    {66, 6, false, 1.0},
    {65, 1, false, 1.0},
    {41, 24, true, GLO_2P(20)},
    {36, 5, true, GLO_2P(30)},
    {9, 27, true, GLO_2P(11)},
};

/* String 2: health Bn, tb and the Y axis. */
enum GloCtStr2 {
    GLO_S2_BN,       /* 3 bits; the top one set = unhealthy */
    GLO_S2_P2,       /* tb oddness flag */
    GLO_S2_TB,       /* 15-minute units within the day */
    GLO_S2_VY,
    GLO_S2_AY,
    GLO_S2_Y,
    GLO_S2_COUNT
};
inline constexpr GloCtField kGloCtStr2[GLO_S2_COUNT] = {
    {78, 3, false, 1.0},
    {77, 1, false, 1.0},
    {70, 7, false, 1.0},
    {41, 24, true, GLO_2P(20)},
    {36, 5, true, GLO_2P(30)},
    {9, 27, true, GLO_2P(11)},
};

/* String 3: relative frequency offset and the Z axis. */
enum GloCtStr3 {
    GLO_S3_P3,       /* 1 = five almanac satellites per frame */
    GLO_S3_GAMMA,    /* dimensionless */
    GLO_S3_P,        /* mode of the time corrections */
    GLO_S3_LN,       /* health of this string set, 0 = healthy */
    GLO_S3_VZ,
    GLO_S3_AZ,
    GLO_S3_Z,
    GLO_S3_COUNT
};
inline constexpr GloCtField kGloCtStr3[GLO_S3_COUNT] = {
    {80, 1, false, 1.0},
    {69, 11, true, GLO_2P(40)},
    {66, 2, false, 1.0},
    {65, 1, false, 1.0},
    {41, 24, true, GLO_2P(20)},
    {36, 5, true, GLO_2P(30)},
    {9, 27, true, GLO_2P(11)},
};

/* String 4: satellite clock, accuracy, day number and identity. */
enum GloCtStr4 {
    GLO_S4_TAU,      /* tau_n, s */
    GLO_S4_DTAU,     /* L2 - L1 delay, s */
    GLO_S4_EN,       /* age of the data, days */
    GLO_S4_P4,       /* 1 = ephemeris updated */
    GLO_S4_FT,       /* accuracy index */
    GLO_S4_NT,       /* day within the four-year interval */
    GLO_S4_N,        /* slot number */
    GLO_S4_M,        /* satellite modification */
    GLO_S4_COUNT
};
inline constexpr GloCtField kGloCtStr4[GLO_S4_COUNT] = {
    {59, 22, true, GLO_2P(30)},
    {54, 5, true, GLO_2P(30)},
    {49, 5, false, 1.0},
    {34, 1, false, 1.0},
    {30, 4, false, 1.0},
    {16, 11, false, 1.0},
    {11, 5, false, 1.0},
    {9, 2, false, 1.0},
};

/* String 5: system time parameters, repeated in every frame. */
enum GloCtStr5 {
    GLO_S5_NA,       /* almanac day within the four-year interval */
    GLO_S5_TAUC,     /* GLONASS - UTC(SU), s */
    GLO_S5_N4,       /* four-year interval number */
    GLO_S5_TAUGPS,   /* fractional GLONASS - GPS offset, s */
    GLO_S5_LN,
    GLO_S5_COUNT
};
inline constexpr GloCtField kGloCtStr5[GLO_S5_COUNT] = {
    {70, 11, false, 1.0},
    {38, 32, true, GLO_2P(31)},
    {32, 5, false, 1.0},
    {10, 22, true, GLO_2P(30)},
    {9, 1, false, 1.0},
};

/* First string of an almanac pair (strings 6, 8, 10, 12, 14). */
enum GloCtAlmA {
    GLO_AA_CN,       /* health, 1 = usable */
    GLO_AA_MN,       /* satellite modification */
    GLO_AA_NA,       /* slot number */
    GLO_AA_TAU,      /* coarse clock offset, s */
    GLO_AA_LAMBDA,   /* longitude of the first ascending node, semicircles */
    GLO_AA_DI,       /* inclination correction, semicircles */
    GLO_AA_EPS,      /* eccentricity */
    GLO_AA_COUNT
};
inline constexpr GloCtField kGloCtAlmA[GLO_AA_COUNT] = {
    {80, 1, false, 1.0},
    {78, 2, false, 1.0},
    {73, 5, false, 1.0},
    {63, 10, true, GLO_2P(18)},
    {42, 21, true, GLO_2P(20)},
    {24, 18, true, GLO_2P(20)},
    {9, 15, false, GLO_2P(20)},
};

/* Second string of an almanac pair (strings 7, 9, 11, 13, 15). */
enum GloCtAlmB {
    GLO_AB_OMEGA,    /* argument of perigee, semicircles */
    GLO_AB_TLAMBDA,  /* time of the first ascending node, s of day */
    GLO_AB_DT,       /* draconic period correction, s */
    GLO_AB_DTDOT,    /* its rate, s/orbit^2 */
    GLO_AB_HA,       /* carrier number; 24 marks an empty slot */
    GLO_AB_LN,
    GLO_AB_COUNT
};
inline constexpr GloCtField kGloCtAlmB[GLO_AB_COUNT] = {
    {65, 16, true, GLO_2P(15)},
    {44, 21, false, GLO_2P(5)},
    {22, 22, true, GLO_2P(9)},
    {15, 7, true, GLO_2P(14)},
    {10, 5, false, 1.0},
    {9, 1, false, 1.0},
};

/* Frame 5, string 14: Earth rotation and the leap-second announcement. */
enum GloCtStr14F5 {
    GLO_S14_B1,      /* UT1 - UTC(SU) at the start of the day, s */
    GLO_S14_B2,      /* its daily change, s/day */
    GLO_S14_KP,      /* leap-second announcement */
    GLO_S14_COUNT
};
inline constexpr GloCtField kGloCtStr14F5[GLO_S14_COUNT] = {
    {70, 11, true, GLO_2P(10)},
    {60, 10, true, GLO_2P(16)},
    {58, 2, false, 1.0},
};

/* Frame 5, string 15: reserved bits, then the health bit. */
enum GloCtStr15F5 { GLO_S15_LN, GLO_S15_COUNT };
inline constexpr GloCtField kGloCtStr15F5[GLO_S15_COUNT] = {
    {9, 1, false, 1.0},
};

/* Carrier-number value of an almanac entry that describes no satellite. */
enum { GLO_CT_EMPTY_CARRIER = 24 };

/* Almanac strings of one superframe: frames 1 to 4 carry strings 6 to 15,
 * frame 5 strings 6 to 13; 48 strings, 24 pairs, in transmission order. */
enum { GLO_CT_ALM_STRINGS = 48, GLO_CT_ALM_PER_FRAME = 10 };

/* Superframe timing. The superframe is aligned to the start of the
 * GLONASS day (576 superframes a day); a frame lasts 30 s and a string 2 s.
 * `tod` is a GLONASS time of day in whole seconds. */
enum { GLO_CT_STRING_S = 2, GLO_CT_FRAME_S = 30, GLO_CT_SUPERFRAME_S = 150 };

/* Frame 1..5 of the superframe in which `tod` lies. */
constexpr unsigned int gloCtFrameOf(unsigned int tod) {
    return (tod % GLO_CT_SUPERFRAME_S) / GLO_CT_FRAME_S + 1;
}

/* String 1..15 being broadcast at `tod`. */
constexpr unsigned int gloCtStringOf(unsigned int tod) {
    return (tod % GLO_CT_FRAME_S) / GLO_CT_STRING_S + 1;
}

/* Storage index 0..47 of almanac string `str` of frame `frame`, or -1 when
 * that frame carries no almanac string of that number. */
constexpr int gloCtAlmIndex(unsigned int frame, unsigned int str) {
    return (frame >= 1 && frame <= 4 && str >= 6 && str <= 15)
               ? (int)((frame - 1) * GLO_CT_ALM_PER_FRAME + (str - 6))
           : (frame == 5 && str >= 6 && str <= 13)
               ? (int)(4 * GLO_CT_ALM_PER_FRAME + (str - 6))
               : -1;
}

#undef GLO_2P

#endif
