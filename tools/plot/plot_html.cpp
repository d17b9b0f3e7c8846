/*
 * The report page: a short summary table and the four charts, each in a
 * <figure> with a fixed id (plot-scatter, plot-enu, plot-sats, plot-sky)
 * so that tools and tests can find them.
 *
 * The page carries one small inline script: once the page is laid out it
 * counts the charts the browser really drew (an SVG element with an area)
 * and writes the count into the <html> element's data-plots attribute.
 * A headless browser test reads it back; a reader never sees it.
 */
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <limits>

#include "plot.h"
#include "solve_report.h"
#include "svg_text.h"

namespace plot {

namespace {

using svgtext::escaped;
using svgtext::f;

const char* const kGlo = "#c8281e";
const char* const kGps = "#1f5fbf";

const char* const kStyle =
    "body{font-family:sans-serif;margin:24px;color:#222;max-width:1100px}"
    "h1{font-size:20px}table{border-collapse:collapse;margin-bottom:16px}"
    "td{padding:2px 12px 2px 0}td:first-child{color:#555}"
    "figure{margin:0 0 24px 0}figcaption{font-size:13px;color:#555;margin-top:4px}"
    ".row{display:flex;flex-wrap:wrap;gap:24px;align-items:flex-start}.row figure{width:520px}";

const char* const kCheck =
    "<script>addEventListener('load',function(){var n=0;"
    "['plot-scatter','plot-enu','plot-sats','plot-sky'].forEach(function(id){"
    "var s=document.querySelector('#'+id+' svg');"
    "if(s&&s.getBBox().width>0&&s.getBBox().height>0)n++;});"
    "document.documentElement.setAttribute('data-plots',String(n));});</script>\n";

}  // namespace

std::string reportHtml(const Track& track, const Report& rep) {
    double centre[3] = {0, 0, 0};
    const bool haveFix = meanFix(track, centre);
    if (rep.hasRef)
        for (int k = 0; k < 3; k++) centre[k] = rep.ref[k];
    const Enu enu = enuOf(track, centre);

    std::vector<double> horiz, vert;
    double sum3 = 0;
    for (size_t i = 0; i < enu.e.size(); i++)
        if (std::isfinite(enu.e[i])) {
            horiz.push_back(std::hypot(enu.e[i], enu.n[i]));
            vert.push_back(std::fabs(enu.u[i]));
            sum3 += enu.e[i] * enu.e[i] + enu.n[i] * enu.n[i] + enu.u[i] * enu.u[i];
        }
    const double r50 = solve::percentile(horiz, 0.50), r95 = solve::percentile(horiz, 0.95);
    const double v95 = solve::percentile(vert, 0.95);
    const double rms = horiz.empty() ? 0.0 : std::sqrt(sum3 / (double)horiz.size());

    const char* about = rep.hasRef ? "the reference" : "the mean position";
    const char* what = rep.hasRef ? "error" : "deviation from the mean";
    std::string first = track.epochs.empty() ? "-" : track.epochs.front().utc;
    std::string last = track.epochs.empty() ? "-" : track.epochs.back().utc;

    std::string h = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n";
    h += "<title>" + escaped(rep.title) + "</title>\n<style>" + kStyle + "</style>\n";
    h += kCheck;
    h += "</head>\n<body>\n<h1>" + escaped(rep.title) + "</h1>\n<table>\n";
    h += f("<tr><td>epochs</td><td>%zu, %s to %s UTC</td></tr>\n", track.epochs.size(),
           first.c_str(), last.c_str());
    h += f("<tr><td>fixes</td><td>%zu</td></tr>\n", horiz.size());
    if (haveFix || rep.hasRef)
        h += f("<tr><td>centre</td><td>%s: X %.3f  Y %.3f  Z %.3f m (WGS-84)</td></tr>\n", about,
               centre[0], centre[1], centre[2]);
    h += f("<tr><td>horizontal</td><td>50 %% %.2f m, 95 %% %.2f m</td></tr>\n", r50, r95);
    h += f("<tr><td>vertical</td><td>95 %% %.2f m</td></tr>\n", v95);
    h += f("<tr><td>3D RMS</td><td>%.2f m</td></tr>\n", rms);
    h += "</table>\n";

    std::vector<double> up = enu.u, glo, gps, all, dop;
    for (const Epoch& ep : track.epochs) {
        const double nan = std::numeric_limits<double>::quiet_NaN();
        glo.push_back(ep.fix ? ep.nglo : nan);
        gps.push_back(ep.fix ? ep.ngps : nan);
        all.push_back(ep.fix ? ep.nglo + ep.ngps : nan);
        dop.push_back(ep.fix ? ep.dop : nan);
    }
    const std::string xLabel = "seconds from " + first + " UTC";

    h += "<div class=\"row\">\n<figure id=\"plot-scatter\">\n";
    h += scatterChart(rep.hasRef ? "Horizontal error around the reference"
                                  : "Horizontal scatter around the mean position", enu.e, enu.n, r50, r95, 520);
    h += f("<figcaption>East and north of %s; circles hold 50 %% and 95 %% of the "
           "fixes.</figcaption>\n</figure>\n", about);

    h += "<figure id=\"plot-sky\">\n";
    if (!rep.skySvg.empty())
        h += rep.skySvg;
    else
        h += "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"520\" height=\"60\">"
             "<text x=\"10\" y=\"30\" font-size=\"13\">No sky plot</text></svg>\n";
    h += "<figcaption>" + escaped(rep.skyNote) + "</figcaption>\n</figure>\n</div>\n";

    h += "<figure id=\"plot-enu\">\n";
    h += lineChart(f("East, north, up %s", what), xLabel, "m", enu.t,
                   {{"east", "#1f5fbf", enu.e, false},
                    {"north", "#2a9d3a", enu.n, false},
                    {"up", "#c8281e", up, false}},
                   1060, 320);
    h += "</figure>\n";

    h += "<figure id=\"plot-sats\">\n";
    h += lineChart("Satellites used", xLabel, "satellites", enu.t,
                   {{"GLONASS", kGlo, glo, true}, {"GPS", kGps, gps, true}, {"total", "#444", all, true}},
                   1060, 260);
    h += lineChart("Dilution of precision", xLabel, "DOP", enu.t, {{"DOP", "#7a3fb0", dop, true}},
                   1060, 220);
    h += "<figcaption>Epochs without a fix leave gaps.</figcaption>\n</figure>\n";
    h += "</body>\n</html>\n";
    return h;
}

}  // namespace plot
