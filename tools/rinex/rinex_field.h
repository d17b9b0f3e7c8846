/*
 * Fixed-column fields of the RINEX formats and the calendar arithmetic of
 * their time tags. Fields are cut by column, never by whitespace: in the
 * navigation records a negative value touches its neighbour
 * ("1.0E-09-6.2E-15"), and a blank field means "absent", not "zero".
 * Lines shorter than the format are normal (writers drop trailing blanks),
 * so a field past the end of the line is blank; a field that the line
 * ends in the middle of is a truncation.
 */
#ifndef ZELNAV_RINEX_FIELD_H
#define ZELNAV_RINEX_FIELD_H

#include <cstdint>
#include <string>

namespace rinex {

enum class FieldStatus { Ok, Blank, Bad, Cut };

/* The text of columns [col, col+width), blanks kept; shorter or empty
 * where the line ends. */
std::string column(const std::string& line, std::size_t col, std::size_t width);

/* The header label: columns 60-79 with the trailing blanks removed. */
std::string headerLabel(const std::string& line);

/* True when columns [col, col+width) hold only blanks or lie past the
 * end of the line. */
bool blankField(const std::string& line, std::size_t col, std::size_t width);

/* A real number in Fortran E, D or F notation ("-.1234D+05", "1.5e-3",
 * "  42"). Bad for anything else (also "nan", hexadecimal and embedded
 * blanks); Cut when the line ends inside the field after some text. */
FieldStatus parseReal(const std::string& line, std::size_t col, std::size_t width, double& out);

/* An integer, same rules. */
FieldStatus parseInt(const std::string& line, std::size_t col, std::size_t width, long& out);

/* Readable quote of the field for messages: 'text'. */
std::string quoteField(const std::string& line, std::size_t col, std::size_t width);

/* Calendar time tag as written in the files, in the file's time scale. */
struct CivilTime {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0;
    double second = 0.0;

    /* Plausible date and time (month 1-12, day of the month, second
     * 0 <= s < 61 to let a leap second through). */
    bool valid() const;
    /* Whole seconds from 2000-01-01 00:00:00 in the same time scale;
     * the fraction of the second is second - floor(second). */
    int64_t secondsSince2000() const;
    /* "2024-01-01 12:00:00.0000000" */
    std::string text() const;
};

/* Days from 2000-01-01 of a Gregorian date (negative before it). */
int64_t daysSince2000(int year, int month, int day);

/* Two-digit years of the RINEX 2 formats: 80-99 are 1980-1999. */
int fullYear(int yy);

/* Header lines: content in columns 1-60, label in 61-80. */
const std::size_t kLabelColumn = 60;

}  // namespace rinex

#endif
