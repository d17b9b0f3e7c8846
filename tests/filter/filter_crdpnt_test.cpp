#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>

#include "filter/filter.h"

namespace {

/* The records are packed to 4 bytes, so their doubles may sit off an
 * 8-byte boundary; the test macros bind references, so such fields are
 * read as values (unary +). */

const unsigned int T0 = 900000;
const double P[3] = {4627852.3986, 119640.3423, 4372994.4588};

/* Gaussian noise from the standard Mersenne twister, by Box-Muller, so
 * the same numbers come out with every standard library. */
struct Noise {
    std::mt19937 gen{12345u};
    double uniform() { return (gen() + 0.5) / 4294967296.0; }
    double operator()(double sigma) {
        const double u = uniform(), v = uniform();
        return sigma * std::sqrt(-2.0 * std::log(u)) * std::cos(6.283185307179586 * v);
    }
};

/* A vehicle crossing Toulouse at 17 m/s, north-east, on the ellipsoid
 * tangent: position at second k. */
struct Track {
    double vel[3];
    Track() {
        const double lat = std::atan2(P[2], std::hypot(P[0], P[1]));
        const double lon = std::atan2(P[1], P[0]);
        const double east[3] = {-std::sin(lon), std::cos(lon), 0.0};
        const double north[3] = {-std::sin(lat) * std::cos(lon), -std::sin(lat) * std::sin(lon),
                                 std::cos(lat)};
        for (int i = 0; i < 3; i++) vel[i] = 15.0 * east[i] + 8.0 * north[i];
    }
    void at(double k, double* xyz) const {
        for (int i = 0; i < 3; i++) xyz[i] = P[i] + vel[i] * k;
    }
};

tblCrdPnt_t fixAt(const double* xyz, unsigned char sys = 0, int dop10 = 15) {
    tblCrdPnt_t r;
    std::memset(&r, 0, sizeof r);
    r.length = 100;
    r.actual = 1;
    r.sys = sys;
    r.numGlo = 6;
    r.lstGlo[0] = 3;
    std::memcpy(r.xyz, xyz, sizeof r.xyz);
    r.dt = 1e-4;
    r.dop10 = dop10;
    r.tau = 3e-7;
    return r;
}

double dist(const tblCrdPnt_t* r, const double* b) {
    const double dx = r->xyz[0] - b[0], dy = r->xyz[1] - b[1], dz = r->xyz[2] - b[2];
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

bool samePos(const tblCrdPnt_t* a, const tblCrdPnt_t* b) {
    return std::memcmp(a->xyz, b->xyz, sizeof a->xyz) == 0;
}

/* Feeds `n` fixes of a static receiver at P with noise of `sigma`, from
 * T0 on; returns the time of the last. */
unsigned int settleStatic(Filter_t& f, int n, double sigma, Noise& noise) {
    for (int k = 0; k < n; k++) {
        double xyz[3] = {P[0] + noise(sigma), P[1] + noise(sigma), P[2] + noise(sigma)};
        tblCrdPnt_t r = fixAt(xyz);
        f.KalmanCrdPnt0(T0 + k, &r);
    }
    return T0 + n - 1;
}

TEST(PositionFilter, TracksAConstantVelocityWithoutLag) {
    Track trk;
    Filter_t f;
    for (int k = 0; k < 120; k++) {
        double truth[3];
        trk.at(k, truth);
        tblCrdPnt_t r = fixAt(truth);
        const tblCrdPnt_t* out = f.KalmanCrdPnt0(T0 + k, &r);
        ASSERT_NE(out, &r);
        if (k == 0) {  // the start is the fix
            EXPECT_TRUE(samePos(out, &r));
        }
        if (k >= 60) {
            EXPECT_LT(dist(out, truth), 1e-3) << k;
        }
        EXPECT_EQ(out->actual, 1);
        EXPECT_EQ(out->numGlo, 6);
        EXPECT_EQ(+out->dt, 1e-4);
    }
}

TEST(PositionFilter, RestartsAfterMoreThanTenSecondsWithoutAFix) {
    Filter_t f;
    Noise noise;
    unsigned int t = settleStatic(f, 30, 3.0, noise);
    double xyz[3] = {P[0] + 4.0, P[1] - 3.0, P[2] + 2.0};
    tblCrdPnt_t r = fixAt(xyz);
    const tblCrdPnt_t* out = f.KalmanCrdPnt0(t + 10, &r);
    EXPECT_FALSE(samePos(out, &r));  // ten seconds are bridged
    r = fixAt(xyz);
    out = f.KalmanCrdPnt0(t + 21, &r);
    EXPECT_TRUE(samePos(out, &r));   // eleven are not
}

TEST(PositionFilter, RestartsOnAJumpBeyondTheGate) {
    Filter_t f;
    Noise noise;
    unsigned int t = settleStatic(f, 30, 0.0, noise);
    double small[3] = {P[0] + 8.0, P[1], P[2]};
    tblCrdPnt_t r = fixAt(small);
    const tblCrdPnt_t* out = f.KalmanCrdPnt0(++t, &r);
    EXPECT_FALSE(samePos(out, &r));
    EXPECT_GT(+out->xyz[0], P[0]);

    double jump[3] = {P[0] + 200.0, P[1], P[2] - 50.0};
    r = fixAt(jump);
    out = f.KalmanCrdPnt0(++t, &r);
    EXPECT_TRUE(samePos(out, &r));
    r = fixAt(jump);
    out = f.KalmanCrdPnt0(++t, &r);
    EXPECT_LT(dist(out, jump), 1e-6);  // carries on from the new start
}

TEST(PositionFilter, RestartsWhenTheSystemsChangeOrTimeRunsBack) {
    Filter_t f;
    Noise noise;
    unsigned int t = settleStatic(f, 20, 3.0, noise);
    double xyz[3] = {P[0] + 2.0, P[1], P[2]};
    tblCrdPnt_t r = fixAt(xyz, 10);
    EXPECT_TRUE(samePos(f.KalmanCrdPnt0(t + 1, &r), &r));
    r = fixAt(P, 10);
    EXPECT_FALSE(samePos(f.KalmanCrdPnt0(t + 2, &r), &r));
    r = fixAt(xyz, 10);
    EXPECT_TRUE(samePos(f.KalmanCrdPnt0(t - 5, &r), &r));
}

TEST(PositionFilter, NoFixIsPassedThroughAsAPrediction) {
    Track trk;
    Filter_t f;

    // Nothing to predict from yet: the input comes back as it is.
    tblCrdPnt_t none;
    std::memset(&none, 0, sizeof none);
    none.length = 100;
    none.numGlo = 4;
    const tblCrdPnt_t* out = f.KalmanCrdPnt0(T0 - 1, &none);
    EXPECT_NE(out, &none);
    EXPECT_EQ(out->actual, 0);
    EXPECT_EQ(out->numGlo, 4);
    EXPECT_EQ(out->length, 100);

    int k = 0;
    for (; k < 60; k++) {
        double truth[3];
        trk.at(k, truth);
        tblCrdPnt_t r = fixAt(truth);
        f.KalmanCrdPnt0(T0 + k, &r);
    }
    // A failed epoch: the record keeps an old position with actual 0.
    double truth[3];
    trk.at(k, truth);
    tblCrdPnt_t r = fixAt(P);
    r.actual = 0;
    out = f.KalmanCrdPnt0(T0 + k, &r);
    EXPECT_EQ(out->actual, 1);
    EXPECT_EQ(out->numGlo, 0);
    EXPECT_EQ(out->numGps, 0);
    EXPECT_EQ(out->lstGlo[0], 0);
    EXPECT_LT(dist(out, truth), 1e-3);
    EXPECT_EQ(r.actual, 0);  // the input is not touched
    EXPECT_EQ(+r.xyz[0], P[0]);

    // Non-finite coordinates count as no fix.
    trk.at(++k, truth);
    r = fixAt(truth);
    r.xyz[1] = NAN;
    out = f.KalmanCrdPnt0(T0 + k, &r);
    EXPECT_EQ(out->numGlo, 0);
    EXPECT_LT(dist(out, truth), 1e-3);

    // The next fix continues the track.
    trk.at(++k, truth);
    r = fixAt(truth);
    r.xyz[0] += 1.0;
    out = f.KalmanCrdPnt0(T0 + k, &r);
    EXPECT_FALSE(samePos(out, &r));
    EXPECT_LT(dist(out, truth), 1.0);

    // Predictions stop ten seconds after the last fix.
    const unsigned int tFix = T0 + k;
    r = fixAt(P);
    r.actual = 0;
    for (unsigned int dt = 1; dt <= 10; dt++) {
        out = f.KalmanCrdPnt0(tFix + dt, &r);
        EXPECT_EQ(out->actual, 1) << dt;
    }
    out = f.KalmanCrdPnt0(tFix + 11, &r);
    EXPECT_EQ(out->actual, 0);
    EXPECT_TRUE(samePos(out, &r));
}

TEST(PositionFilter, SecondCallForTheSameFixTimeChangesNothing) {
    Filter_t f;
    Noise noise;
    unsigned int t = settleStatic(f, 10, 3.0, noise);
    double a[3] = {P[0] + 3.0, P[1], P[2]};
    tblCrdPnt_t r = fixAt(a);
    tblCrdPnt_t first;
    std::memcpy(&first, f.KalmanCrdPnt0(t + 1, &r), sizeof first);
    double b[3] = {P[0] - 3.0, P[1], P[2]};
    r = fixAt(b);
    const tblCrdPnt_t* out = f.KalmanCrdPnt0(t + 1, &r);
    EXPECT_EQ(std::memcmp(out, &first, sizeof first), 0);
}

}  // namespace
