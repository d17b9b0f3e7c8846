/*
 * Text for the SVG and HTML the tools write: printf into a std::string
 * and escaping of the XML specials. One copy for the sky plot and the
 * report pages.
 */
#ifndef ZELNAV_TOOLS_SKY_SVG_TEXT_H
#define ZELNAV_TOOLS_SKY_SVG_TEXT_H

#include <string>

namespace svgtext {

/* printf into a std::string (at most 1023 characters: one SVG element). */
std::string f(const char* format, ...) __attribute__((format(printf, 1, 2)));

/* Text with <, >, & and " escaped, for element content and attributes. */
std::string escaped(const std::string& s);

}  // namespace svgtext

#endif
