/*
 * Header of the navigation files, for the navigation reader.
 */
#ifndef ZELNAV_RINEX_NAV_HEADER_H
#define ZELNAV_RINEX_NAV_HEADER_H

#include "rinex_diag.h"
#include "rinex_lines.h"
#include "rinex_nav.h"

namespace rinex {

/* Reads up to END OF HEADER (or up to the first record when that line is
 * missing, which is reported). False when the file is not a navigation
 * file this reader knows. */
bool readNavHeader(LineSource& src, NavHeader& h, Diagnostics& diag);

/* A first line of a record: RINEX 3 "G01 2024 01 01 ...", RINEX 2
 * " 1 24  1  1  0  0  0.0..." (the PRN ends in column 2). */
bool navRecordStart(const std::string& line, double version);

}  // namespace rinex

#endif
