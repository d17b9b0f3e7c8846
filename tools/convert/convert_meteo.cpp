/*
 * Standard atmosphere and the meteorological fields of the messages.
 */
#include "convert_meteo.h"

#include <cmath>

namespace cvt {

Meteo standardAtmosphere(double height) {
    Meteo m;
    m.temperature = 15.0 - 0.0065 * height;
    m.pressure = 1013.25 * std::pow(1.0 - 2.25577e-5 * height, 5.25588);
    m.humidity = 50.0;
    return m;
}

static int16_t tenths(double v) {
    double t = std::round(v * 10.0);
    if (!(t > -32768.0)) return kNoReading;
    if (t > 32767.0) return 32767;
    return (int16_t)t;
}

void meteoFields(const Meteo& m, int16_t& temperature, int16_t& pressure, int16_t& humidity) {
    temperature = tenths(m.temperature);
    pressure = tenths(m.pressure);
    humidity = tenths(m.humidity);
}

}  // namespace cvt
