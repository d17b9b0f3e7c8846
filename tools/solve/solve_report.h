/*
 * What `zelnav solve` prints: one CSV line per epoch, and the accuracy of
 * the fixes against a known position.
 *
 * Positions are printed in WGS-84 whatever the mode: a PZ-90 fix
 * (GLONASS or combined) is moved by the datum shift first, so that every
 * mode can be compared with the same reference. Velocities are in the
 * Earth-fixed frame (the shift is a translation and does not touch them).
 */
#ifndef ZELNAV_SOLVE_REPORT_H
#define ZELNAV_SOLVE_REPORT_H

#include <cstdio>
#include <vector>

#include "zel.h"

namespace solve {

/* Column names of the CSV; with --raim the RAIM columns follow (raimComb
 * code, satellites excluded by raimComb, by raimStats). */
extern const char* const kCsvHeader;
extern const char* const kCsvRaimColumns;

/* The fix in WGS-84, given its datum (1 PZ-90, 0 WGS-84). */
void fixToWgs84(const tblCrdPnt_t* fix, unsigned int datum, double out[3]);

/* One CSV line for the epoch `tm` (receiver time); fix and speed may be
 * null (no fix yet). Fields of a missing fix or velocity are empty.
 * `extra`, when given, is appended as further columns. */
void csvLine(std::FILE* out, unsigned int tm, const tblCrdPnt_t* fix,
             const tblSpdPnt_t* spd, unsigned int datum, const char* extra = nullptr);

/* Errors of WGS-84 fixes against a reference position. */
class Accuracy {
public:
    explicit Accuracy(const double ref[3]);
    void add(const double xyz[3]);
    long count() const { return (long)d3_.size(); }
    double rms3d() const;
    /* 95th percentile (nearest rank) of the horizontal and of the
     * absolute vertical error in the reference's local frame. */
    double horizontal95() const;
    double vertical95() const;
    /* Largest 3D error. */
    double max3d() const;

private:
    double ref_[3];
    double blh_[3];
    std::vector<double> d3_, h_, v_;
};

/* Value at `fraction` (0..1] of the sorted values, nearest rank; 0 when
 * there are none. */
double percentile(std::vector<double> values, double fraction);

}  // namespace solve

#endif
