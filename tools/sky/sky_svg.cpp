/*
 * The sky plot, drawn as GNSS sky plots usually are: the zenith in the
 * middle, the horizon on the outer circle, azimuth clockwise from north
 * at the top. GPS satellites are blue, GLONASS ones red; a filled disc is
 * a satellite the receiver tracked, a ring one that is only predicted.
 */
#include <cmath>
#include <cstdarg>
#include <cstdio>

#include "sky.h"
#include "svg_text.h"

namespace sky {

namespace {

using svgtext::escaped;
using svgtext::f;

const double kRad = 3.141592653589793 / 180.0;
const char* const kGpsColour = "#1f5fbf";
const char* const kGloColour = "#c8281e";

/* Canvas: the plot circle and room for the title and the legend. */
const int kWidth = 520, kHeight = 580;
const double kCx = 260, kCy = 290, kR = 220;

}  // namespace

std::string Sat::name() const { return f("%c%02d", sys, num); }

void plotXY(double az, double el, double cx, double cy, double r, double* x, double* y) {
    double e = el;
    if (e < 0) e = 0;   /* below the horizon: on the rim */
    if (e > 90) e = 90;
    const double rho = r * (90.0 - e) / 90.0;
    *x = cx + rho * std::sin(az * kRad);
    *y = cy - rho * std::cos(az * kRad);
}

std::string skySvg(const std::vector<Sat>& sats, const std::string& title) {
    std::string s;
    s += f("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
           "viewBox=\"0 0 %d %d\" font-family=\"sans-serif\">\n",
           kWidth, kHeight, kWidth, kHeight);
    s += f("<rect width=\"%d\" height=\"%d\" fill=\"white\"/>\n", kWidth, kHeight);
    s += f("<text x=\"%.0f\" y=\"28\" font-size=\"14\" text-anchor=\"middle\">%s</text>\n", kCx,
           escaped(title).c_str());

    /* Elevation rings every 30 degrees, azimuth spokes every 30. */
    for (int el = 0; el < 90; el += 30) {
        const double rho = kR * (90.0 - el) / 90.0;
        s += f("<circle cx=\"%.1f\" cy=\"%.1f\" r=\"%.1f\" fill=\"none\" stroke=\"#999\"/>\n",
               kCx, kCy, rho);
        if (el > 0)
            s += f("<text x=\"%.1f\" y=\"%.1f\" font-size=\"10\" fill=\"#777\">%d</text>\n",
                   kCx + 3, kCy - rho - 2, el);
    }
    for (int az = 0; az < 360; az += 30) {
        double x, y;
        plotXY(az, 0, kCx, kCy, kR, &x, &y);
        s += f("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"#ccc\"/>\n", kCx,
               kCy, x, y);
    }
    const char* const cardinal[4] = {"N", "E", "S", "W"};
    for (int k = 0; k < 4; k++) {
        double x, y;
        plotXY(k * 90.0, 0, kCx, kCy, kR + 16, &x, &y);
        s += f("<text x=\"%.1f\" y=\"%.1f\" font-size=\"13\" text-anchor=\"middle\" "
               "dominant-baseline=\"middle\">%s</text>\n",
               x, y, cardinal[k]);
    }

    for (const Sat& sat : sats) {
        double x, y;
        plotXY(sat.az, sat.el, kCx, kCy, kR, &x, &y);
        const char* colour = sat.sys == 'R' ? kGloColour : kGpsColour;
        s += f("<circle cx=\"%.1f\" cy=\"%.1f\" r=\"7\" stroke=\"%s\" stroke-width=\"2\" "
               "fill=\"%s\"/>\n",
               x, y, colour, sat.tracked ? colour : "white");
        s += f("<text x=\"%.1f\" y=\"%.1f\" font-size=\"11\" fill=\"%s\">%s</text>\n", x + 9,
               y - 7, colour, sat.name().c_str());
    }

    /* Legend. */
    const int ly = kHeight - 30;
    s += f("<circle cx=\"30\" cy=\"%d\" r=\"6\" fill=\"%s\"/>\n", ly, kGpsColour);
    s += f("<text x=\"42\" y=\"%d\" font-size=\"12\">GPS</text>\n", ly + 4);
    s += f("<circle cx=\"100\" cy=\"%d\" r=\"6\" fill=\"%s\"/>\n", ly, kGloColour);
    s += f("<text x=\"112\" y=\"%d\" font-size=\"12\">GLONASS</text>\n", ly + 4);
    s += f("<text x=\"200\" y=\"%d\" font-size=\"12\">filled: tracked; ring: predicted "
           "only</text>\n",
           ly + 4);
    s += "</svg>\n";
    return s;
}

}  // namespace sky
