/*
 * The charts of the report, drawn as plain SVG: axes with round tick
 * values, lines broken where a value is missing, and the horizontal
 * scatter with its percentile circles.
 */
#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>

#include "plot.h"
#include "svg_text.h"

namespace plot {

namespace {

using svgtext::escaped;
using svgtext::f;

/* Plot area margins inside a chart: room for the title, the tick labels
 * and the axis names. */
const double kLeft = 64, kRight = 110, kTop = 34, kBottom = 44;

/* A tick step of 1, 2 or 5 times a power of ten giving about `n` ticks. */
double tickStep(double span, int n) {
    if (!(span > 0)) return 1.0;
    const double raw = span / n;
    const double p = std::pow(10.0, std::floor(std::log10(raw)));
    const double m = raw / p;
    return (m < 1.5 ? 1.0 : m < 3.5 ? 2.0 : m < 7.5 ? 5.0 : 10.0) * p;
}

/* Tick values as short text: no trailing zeros. */
std::string tickText(double v, double step) {
    if (std::fabs(v) < step * 1e-6) v = 0.0;
    const int decimals = step >= 1 ? 0 : (int)std::ceil(-std::log10(step) - 1e-9);
    return f("%.*f", decimals, v);
}

/* Low and high of the finite values, widened to round ticks; a flat or
 * empty range gets some height. */
void range(const std::vector<const std::vector<double>*>& sets, double* lo, double* hi,
           double* step) {
    double a = HUGE_VAL, b = -HUGE_VAL;
    for (const std::vector<double>* s : sets)
        for (double v : *s)
            if (std::isfinite(v)) {
                a = std::min(a, v);
                b = std::max(b, v);
            }
    if (a > b) a = 0, b = 1;
    if (b - a < 1e-9) a -= 1, b += 1;
    *step = tickStep(b - a, 5);
    *lo = std::floor(a / *step) * *step;
    *hi = std::ceil(b / *step) * *step;
}

struct Frame {
    double x0, y0, w, h;            /* plot area in pixels */
    double xlo, xhi, ylo, yhi;
    double px(double x) const { return x0 + (x - xlo) / (xhi - xlo) * w; }
    double py(double y) const { return y0 + h - (y - ylo) / (yhi - ylo) * h; }
};

std::string header(int width, int height, const std::string& title) {
    std::string s = f("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
                      "viewBox=\"0 0 %d %d\" font-family=\"sans-serif\">\n",
                      width, height, width, height);
    s += f("<rect width=\"%d\" height=\"%d\" fill=\"white\"/>\n", width, height);
    s += f("<text x=\"%d\" y=\"20\" font-size=\"14\" text-anchor=\"middle\">%s</text>\n",
           width / 2, title.c_str());
    return s;
}

/* Grid, ticks and axis names of a frame. */
std::string axes(const Frame& fr, double xstep, double ystep, const std::string& xLabel,
                 const std::string& yLabel) {
    std::string s;
    for (double v = fr.ylo; v <= fr.yhi + ystep * 1e-6; v += ystep) {
        const double y = fr.py(v);
        s += f("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"#e3e3e3\"/>\n",
               fr.x0, y, fr.x0 + fr.w, y);
        s += f("<text x=\"%.1f\" y=\"%.1f\" font-size=\"11\" text-anchor=\"end\" "
               "dominant-baseline=\"middle\">%s</text>\n",
               fr.x0 - 5, y, tickText(v, ystep).c_str());
    }
    for (double v = fr.xlo; v <= fr.xhi + xstep * 1e-6; v += xstep) {
        const double x = fr.px(v);
        s += f("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"#e3e3e3\"/>\n", x,
               fr.y0, x, fr.y0 + fr.h);
        s += f("<text x=\"%.1f\" y=\"%.1f\" font-size=\"11\" text-anchor=\"middle\">%s</text>\n",
               x, fr.y0 + fr.h + 15, tickText(v, xstep).c_str());
    }
    s += f("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"none\" "
           "stroke=\"#555\"/>\n",
           fr.x0, fr.y0, fr.w, fr.h);
    s += f("<text x=\"%.1f\" y=\"%.1f\" font-size=\"12\" text-anchor=\"middle\">%s</text>\n",
           fr.x0 + fr.w / 2, fr.y0 + fr.h + 34, xLabel.c_str());
    s += f("<text x=\"14\" y=\"%.1f\" font-size=\"12\" text-anchor=\"middle\" "
           "transform=\"rotate(-90 14 %.1f)\">%s</text>\n",
           fr.y0 + fr.h / 2, fr.y0 + fr.h / 2, yLabel.c_str());
    return s;
}

}  // namespace

std::string lineChart(const std::string& title, const std::string& xLabel,
                      const std::string& yLabel, const std::vector<double>& x,
                      const std::vector<Series>& series, int width, int height) {
    Frame fr;
    fr.x0 = kLeft;
    fr.y0 = kTop;
    fr.w = width - kLeft - kRight;
    fr.h = height - kTop - kBottom;
    double xstep, ystep;
    range({&x}, &fr.xlo, &fr.xhi, &xstep);
    /* Time runs to the last epoch, not to the next round tick. */
    double xmax = fr.xlo;
    for (double v : x)
        if (std::isfinite(v)) xmax = std::max(xmax, v);
    if (xmax > fr.xlo) fr.xhi = xmax;
    std::vector<const std::vector<double>*> ys;
    for (const Series& s : series) ys.push_back(&s.y);
    range(ys, &fr.ylo, &fr.yhi, &ystep);

    std::string s = header(width, height, title);
    s += axes(fr, xstep, ystep, xLabel, yLabel);
    int row = 0;
    for (const Series& ser : series) {
        /* One path, a new subpath after every gap. */
        std::string d;
        bool pen = false;
        double lastY = 0;
        for (size_t i = 0; i < x.size() && i < ser.y.size(); i++) {
            if (!std::isfinite(ser.y[i]) || !std::isfinite(x[i])) {
                pen = false;
                continue;
            }
            if (pen && ser.step) d += f("H%.1f", fr.px(x[i]));
            if (pen && ser.step && ser.y[i] != lastY) d += f("V%.1f", fr.py(ser.y[i]));
            if (!pen || !ser.step) d += f("%s%.1f,%.1f", pen ? "L" : "M", fr.px(x[i]), fr.py(ser.y[i]));
            pen = true;
            lastY = ser.y[i];
        }
        if (!d.empty())
            s += f("<path fill=\"none\" stroke=\"%s\" stroke-width=\"1.5\" d=\"", ser.colour.c_str()) +
                 d + "\"/>\n";
        /* Legend to the right of the plot area. */
        const double ly = fr.y0 + 12 + 18 * row++;
        s += f("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"%s\" "
               "stroke-width=\"3\"/>\n",
               fr.x0 + fr.w + 10, ly, fr.x0 + fr.w + 28, ly, ser.colour.c_str());
        s += f("<text x=\"%.1f\" y=\"%.1f\" font-size=\"12\" dominant-baseline=\"middle\">%s</text>\n",
               fr.x0 + fr.w + 33, ly, ser.name.c_str());
    }
    s += "</svg>\n";
    return s;
}

std::string scatterChart(const std::string& title, const std::vector<double>& e,
                         const std::vector<double>& n, double r50, double r95, int size) {
    /* Square axes, the same scale both ways, wide enough for the 95 %
     * circle and every fix within three times its radius; fixes farther
     * out are counted instead of flattening the rest into a dot. */
    double reach = r95;
    long outside = 0;
    for (size_t i = 0; i < e.size(); i++) {
        if (!std::isfinite(e[i])) continue;
        const double r = std::hypot(e[i], n[i]);
        if (r <= 3 * r95 || r95 <= 0) reach = std::max(reach, r);
    }
    if (!(reach > 0)) reach = 1;
    const double step = tickStep(2 * reach, 6);
    const double half = std::ceil(reach * 1.05 / step) * step;

    Frame fr;
    fr.x0 = kLeft;
    fr.y0 = kTop;
    fr.w = fr.h = size - kLeft - 20;
    fr.xlo = fr.ylo = -half;
    fr.xhi = fr.yhi = half;

    std::string s = header(size, (int)(kTop + fr.h + kBottom + 20), title);
    s += axes(fr, step, step, "east, m", "north, m");
    const double cx = fr.px(0), cy = fr.py(0), scale = fr.w / (2 * half);
    s += f("<circle cx=\"%.1f\" cy=\"%.1f\" r=\"%.1f\" fill=\"none\" stroke=\"#2a9d3a\" "
           "stroke-width=\"2\"/>\n",
           cx, cy, r50 * scale);
    s += f("<circle cx=\"%.1f\" cy=\"%.1f\" r=\"%.1f\" fill=\"none\" stroke=\"#e08a00\" "
           "stroke-width=\"2\" stroke-dasharray=\"6 4\"/>\n",
           cx, cy, r95 * scale);
    for (size_t i = 0; i < e.size(); i++) {
        if (!std::isfinite(e[i]) || std::fabs(e[i]) > half || std::fabs(n[i]) > half) {
            if (std::isfinite(e[i])) outside++;
            continue;
        }
        s += f("<circle cx=\"%.1f\" cy=\"%.1f\" r=\"2.2\" fill=\"#1f5fbf\" fill-opacity=\"0.6\"/>\n",
               fr.px(e[i]), fr.py(n[i]));
    }
    s += f("<path d=\"M%.1f,%.1fh12M%.1f,%.1fv12\" stroke=\"black\" stroke-width=\"1.5\"/>\n",
           cx - 6, cy, cx, cy - 6);
    const double ly = fr.y0 + fr.h + 56;
    s += f("<text x=\"%.1f\" y=\"%.1f\" font-size=\"12\"><tspan fill=\"#2a9d3a\">&#9711; 50 %%: "
           "%.2f m</tspan>   <tspan fill=\"#e08a00\">&#9711; 95 %%: %.2f m</tspan>%s</text>\n",
           fr.x0, ly, r50, r95,
           outside ? f("   %ld fixes beyond the frame", outside).c_str() : "");
    s += "</svg>\n";
    return s;
}

}  // namespace plot
