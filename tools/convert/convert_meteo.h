/*
 * Meteorological readings of the messages. A recording rarely comes with
 * them, so by default the converter sends the standard atmosphere at the
 * station's height: 15 C and 1013.25 hPa at sea level, temperature falling
 * 6.5 C per kilometre, pressure from the barometric formula of that
 * atmosphere, humidity 50 %. The height is the ellipsoidal height of the
 * recording's approximate position (the geoid separation, tens of metres,
 * changes the pressure by a few hectopascals; sea level when the position
 * is not known).
 */
#ifndef ZELNAV_CONVERT_METEO_H
#define ZELNAV_CONVERT_METEO_H

#include <cstdint>

namespace cvt {

struct Meteo {
    double temperature = 15.0;  /* C */
    double pressure = 1013.25;  /* hPa */
    double humidity = 50.0;     /* % */
};

Meteo standardAtmosphere(double height);

/* The message fields (tenths) of readings, rounded and kept within 16
 * bits. */
void meteoFields(const Meteo& m, int16_t& temperature, int16_t& pressure, int16_t& humidity);

/* Readings that every receiver check refuses: what --no-meteo sends. */
const int16_t kNoReading = INT16_MIN;

}  // namespace cvt

#endif
