/*
 * Reading one field of a stored GPS subframe through its layout entry.
 *
 * NavInfStr_t::GetValue knows the sign-magnitude fields of GLONASS; GPS
 * fields are two's complement or unsigned. So the runs are read unsigned
 * and the sign is applied here, once, for every GPS field.
 */
#ifndef ZELNAV_NAVINF_GPS_READ_H
#define ZELNAV_NAVINF_GPS_READ_H

#include "decode/navinf_gps_fields.h"
#include "decode/navinf_str.h"

/* The field's raw count: unsigned, or two's complement made negative. */
inline double gpsRawCount(const unsigned char* sf, const GpsField& f) {
    double v = NavInfStr_t::GetValue(sf, f.pos, f.len, false, 1.0);
    if (f.lenLo > 0)
        v = v * gpsPow2(f.lenLo) +
            NavInfStr_t::GetValue(sf, f.posLo, f.lenLo, false, 1.0);
    if (f.twos && v >= gpsPow2(f.bits() - 1)) v -= gpsPow2(f.bits());
    return v;
}

/* The field in its unit. */
inline double gpsValue(const unsigned char* sf, const GpsField& f) {
    return gpsRawCount(sf, f) * f.scale;
}

/* An unsigned integer field in its unit (toc, toe, toa and plain counts). */
inline unsigned int gpsUnsigned(const unsigned char* sf, const GpsField& f) {
    return (unsigned int)gpsValue(sf, f);
}

/* A signed integer field (leap seconds). */
inline int gpsSigned(const unsigned char* sf, const GpsField& f) {
    return (int)gpsValue(sf, f);
}

/* The 17-bit TOW count of the handover word: start of the next subframe in
 * units of 6 s. */
inline unsigned int gpsTowCount(const unsigned char* sf) {
    return gpsUnsigned(sf, kGpsCommon.tow);
}

#endif
