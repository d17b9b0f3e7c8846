/*
 * CSV lines and accuracy figures of `zelnav solve`.
 */
#include "solve_report.h"

#include <algorithm>
#include <cmath>

#include "satpos/geodesy.h"

namespace solve {

const char* const kCsvHeader =
    "utc,fix,sys,x,y,z,lat,lon,h,dt,tau,nglo,ngps,dop,vx,vy,vz";
const char* const kCsvRaimColumns = ",raim,excluded,stats_excluded";

namespace {

/* The receiver time scale runs three hours ahead of UTC. */
const unsigned int kUtcOffset = 10800;

geo::Ellipsoid wgs84() {
    geo::Ellipsoid e;
    geo::datumEllipsoid(0, &e);
    return e;
}

}  // namespace

void fixToWgs84(const tblCrdPnt_t* fix, unsigned int datum, double out[3]) {
    const double p[3] = {fix->xyz[0], fix->xyz[1], fix->xyz[2]};
    if (datum == 1) {
        geo::PZ90_WGS84(p, out);
    } else {
        out[0] = p[0];
        out[1] = p[1];
        out[2] = p[2];
    }
}

void csvLine(std::FILE* out, unsigned int tm, const tblCrdPnt_t* fix,
             const tblSpdPnt_t* spd, unsigned int datum, const char* extra) {
    const char* tail = extra ? "," : "";
    if (!extra) extra = "";
    unsigned int d[6] = {0, 0, 0, 0, 0, 0};
    if (tm >= kUtcOffset) tmZelToDate(tm - kUtcOffset, d);
    std::fprintf(out, "%04u-%02u-%02uT%02u:%02u:%02u", d[0], d[1], d[2], d[3], d[4], d[5]);
    if (fix == nullptr || fix->actual != 1) {
        std::fprintf(out, ",0,,,,,,,,,,,,,,,%s%s\n", tail, extra);
        return;
    }
    double xyz[3], blh[3] = {0, 0, 0};
    fixToWgs84(fix, datum, xyz);
    geo::xyz_blh(xyz, wgs84(), blh);
    /* Longitudes east of 180 degrees are printed as negative ones. */
    const double lon = blh[1] > 180.0 ? blh[1] - 360.0 : blh[1];
    std::fprintf(out, ",1,%u,%.4f,%.4f,%.4f,%.9f,%.9f,%.4f,%.12e,%.12e,%u,%u,%.1f", fix->sys,
                 xyz[0], xyz[1], xyz[2], blh[0], lon, blh[2], fix->dt, fix->tau, fix->numGlo,
                 fix->numGps, fix->dop10 / 10.0);
    if (spd != nullptr && spd->actual == 1)
        std::fprintf(out, ",%.4f,%.4f,%.4f", spd->vxyz[0], spd->vxyz[1], spd->vxyz[2]);
    else
        std::fputs(",,,", out);
    std::fprintf(out, "%s%s\n", tail, extra);
}

Accuracy::Accuracy(const double ref[3]) {
    for (int i = 0; i < 3; i++) ref_[i] = ref[i];
    geo::xyz_blh(ref_, wgs84(), blh_);
}

void Accuracy::add(const double xyz[3]) {
    double diff[3] = {xyz[0] - ref_[0], xyz[1] - ref_[1], xyz[2] - ref_[2]};
    double top[3];  /* north, up, east */
    double blh[3] = {blh_[0], blh_[1], blh_[2]};
    geo::gcsk_tcsk(blh, diff, top);
    d3_.push_back(std::sqrt(diff[0] * diff[0] + diff[1] * diff[1] + diff[2] * diff[2]));
    h_.push_back(std::hypot(top[0], top[2]));
    v_.push_back(std::fabs(top[1]));
}

double Accuracy::rms3d() const {
    if (d3_.empty()) return 0.0;
    double s = 0.0;
    for (double d : d3_) s += d * d;
    return std::sqrt(s / (double)d3_.size());
}

double Accuracy::horizontal95() const { return percentile(h_, 0.95); }
double Accuracy::vertical95() const { return percentile(v_, 0.95); }

double Accuracy::max3d() const {
    return d3_.empty() ? 0.0 : *std::max_element(d3_.begin(), d3_.end());
}

double percentile(std::vector<double> values, double fraction) {
    if (values.empty()) return 0.0;
    std::sort(values.begin(), values.end());
    std::size_t rank = (std::size_t)std::ceil(fraction * (double)values.size());
    if (rank < 1) rank = 1;
    if (rank > values.size()) rank = values.size();
    return values[rank - 1];
}

}  // namespace solve
