#include "rinex_field.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace rinex {

std::string column(const std::string& line, std::size_t col, std::size_t width) {
    if (col >= line.size()) return std::string();
    return line.substr(col, width);
}

std::string headerLabel(const std::string& line) {
    std::string s = column(line, kLabelColumn, 20);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.pop_back();
    return s;
}

bool blankField(const std::string& line, std::size_t col, std::size_t width) {
    std::string s = column(line, col, width);
    for (char c : s)
        if (c != ' ' && c != '\t') return false;
    return true;
}

/* The trimmed text of a field and whether the line was cut inside it. */
static FieldStatus fieldText(const std::string& line, std::size_t col, std::size_t width,
                             std::string& text) {
    std::string s = column(line, col, width);
    std::size_t b = s.find_first_not_of(" \t");
    if (b == std::string::npos) return FieldStatus::Blank;
    std::size_t e = s.find_last_not_of(" \t");
    text = s.substr(b, e - b + 1);
    /* A right-aligned number whose last character is missing: the line
     * stops inside the field and the text runs up to where it stops. */
    if (s.size() < width && e + 1 == s.size()) return FieldStatus::Cut;
    return FieldStatus::Ok;
}

FieldStatus parseReal(const std::string& line, std::size_t col, std::size_t width, double& out) {
    std::string t;
    FieldStatus st = fieldText(line, col, width, t);
    if (st == FieldStatus::Blank || st == FieldStatus::Cut) return st;
    /* Fortran writes the exponent letter as D; also allow a missing
     * mantissa digit before the point (".1234D+05"). */
    int digits = 0;
    for (char& c : t) {
        if (c == 'D' || c == 'd') c = 'E';
        if (c >= '0' && c <= '9') ++digits;
        else if (!std::strchr("+-.Ee", c)) return FieldStatus::Bad;
    }
    if (digits == 0) return FieldStatus::Bad;
    char* end = nullptr;
    double v = std::strtod(t.c_str(), &end);
    if (end != t.c_str() + t.size() || !std::isfinite(v)) return FieldStatus::Bad;
    out = v;
    return FieldStatus::Ok;
}

FieldStatus parseInt(const std::string& line, std::size_t col, std::size_t width, long& out) {
    std::string t;
    FieldStatus st = fieldText(line, col, width, t);
    if (st == FieldStatus::Blank || st == FieldStatus::Cut) return st;
    for (std::size_t i = 0; i < t.size(); ++i) {
        char c = t[i];
        if (c >= '0' && c <= '9') continue;
        if ((c == '-' || c == '+') && i == 0 && t.size() > 1) continue;
        return FieldStatus::Bad;
    }
    char* end = nullptr;
    long v = std::strtol(t.c_str(), &end, 10);
    if (end != t.c_str() + t.size()) return FieldStatus::Bad;
    out = v;
    return FieldStatus::Ok;
}

std::string quoteField(const std::string& line, std::size_t col, std::size_t width) {
    std::string s = column(line, col, width);
    std::size_t b = s.find_first_not_of(' ');
    std::size_t e = s.find_last_not_of(' ');
    return "'" + (b == std::string::npos ? std::string() : s.substr(b, e - b + 1)) + "'";
}

/* Gregorian day count, the usual era arithmetic (400-year cycles of
 * 146097 days, the year starting in March so February's length is the
 * last thing in it). */
int64_t daysSince2000(int year, int month, int day) {
    int64_t y = year - (month <= 2 ? 1 : 0);
    int64_t era = (y >= 0 ? y : y - 399) / 400;
    int64_t yoe = y - era * 400;
    int64_t mp = (month + 9) % 12;
    int64_t doy = (153 * mp + 2) / 5 + day - 1;
    int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 730425;  /* days from 0000-03-01 to 2000-01-01 */
}

int fullYear(int yy) {
    if (yy >= 100) return yy;
    return yy >= 80 ? 1900 + yy : 2000 + yy;
}

static bool leapYear(int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

bool CivilTime::valid() const {
    static const int mdays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (year < 1980 || year > 2200 || month < 1 || month > 12) return false;
    int md = mdays[month - 1] + (month == 2 && leapYear(year) ? 1 : 0);
    if (day < 1 || day > md) return false;
    if (hour < 0 || hour > 23 || minute < 0 || minute > 59) return false;
    return second >= 0.0 && second < 61.0;
}

int64_t CivilTime::secondsSince2000() const {
    return daysSince2000(year, month, day) * 86400 + hour * 3600 + minute * 60 +
           static_cast<int64_t>(std::floor(second));
}

std::string CivilTime::text() const {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%010.7f", year, month, day, hour,
                  minute, second);
    return buf;
}

}  // namespace rinex
