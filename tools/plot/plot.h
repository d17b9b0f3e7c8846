/*
 * The report of `zelnav plot`: one self-contained HTML page with inline
 * SVG charts of a solved recording (no script or style from outside, so
 * it opens without a network):
 *
 *   plot-scatter  horizontal scatter around the reference, or around the
 *                 mean position, with the circles holding 50 % and 95 %
 *                 of the fixes;
 *   plot-enu      east, north and up error (or deviation from the mean)
 *                 versus time;
 *   plot-sats     satellites used per system, and DOP, versus time;
 *   plot-sky      the predicted sky at the last epoch (tools/sky).
 *
 * The epochs come either from a log, run through the solve pipeline of
 * tools/solve, or from the CSV that `zelnav solve` writes.
 */
#ifndef ZELNAV_PLOT_H
#define ZELNAV_PLOT_H

#include <cstdint>
#include <string>
#include <vector>

namespace plot {

/* One reported epoch. */
struct Epoch {
    std::string utc;          /* "YYYY-MM-DDTHH:MM:SS" */
    uint32_t tm = 0;          /* receiver time (tmZel) */
    bool fix = false;
    double xyz[3] = {0, 0, 0};   /* WGS-84, m */
    int nglo = 0, ngps = 0;
    double dop = 0.0;
};

struct Track {
    std::vector<Epoch> epochs;
};

/* The epochs of a log solved in `mode` (0 GLONASS, 1 GPS, 10 both), as
 * `zelnav solve` reports them; false (with `error`) when the log cannot
 * be read. Damaged records and refused messages are left out. */
bool loadLog(const std::string& path, int mode, Track& out, std::string& error);

/* The epochs of a `zelnav solve` CSV; false (with `error`) when the file
 * cannot be read or is not such a CSV. */
bool loadCsv(const std::string& path, Track& out, std::string& error);

/* A log starts with "ZLOG". */
bool isLog(const std::string& path);

struct Report {
    std::string title;
    bool hasRef = false;
    double ref[3] = {0, 0, 0};       /* known WGS-84 position, m */
    std::string skySvg;              /* sky plot (sky::skySvg), or empty */
    std::string skyNote;             /* said instead when there is no sky plot */
};

/* The fixes of a track as east, north, up offsets (m) from `centre`. */
struct Enu {
    std::vector<double> t;           /* s since the first epoch of the track */
    std::vector<double> e, n, u;     /* NaN where the epoch has no fix */
};
Enu enuOf(const Track& track, const double centre[3]);

/* Mean of the fixes; false when there are none. */
bool meanFix(const Track& track, double out[3]);

/* The whole page. */
std::string reportHtml(const Track& track, const Report& rep);

/* The charts, each an <svg> element. */
struct Series {
    std::string name, colour;
    std::vector<double> y;           /* NaN breaks the line */
    bool step = false;               /* held until the next value */
};
std::string lineChart(const std::string& title, const std::string& xLabel,
                      const std::string& yLabel, const std::vector<double>& x,
                      const std::vector<Series>& series, int width, int height);
std::string scatterChart(const std::string& title, const std::vector<double>& e,
                         const std::vector<double>& n, double r50, double r95, int size);

}  // namespace plot

#endif
