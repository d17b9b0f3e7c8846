#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "filter/kalman2.h"

namespace {

/* The records are packed to 4 bytes, so their doubles may sit off an
 * 8-byte boundary; the test macros bind references, so such fields are
 * read as values (unary +). */

const unsigned int T0 = 500000;

/* A filter started at x0 whose rate has been re-seeded to v one second
 * later, so that the next update is an ordinary filter step. */
void seeded(Kalman2_t& f, double x0, double v, double r, double q) {
    f.Init(T0, x0, 1.0, r, q);
    f.Update(T0 + 1, x0 + v);
}

TEST(Kalman2, RateReseedAndTheSameSecondRule) {
    Kalman2_t f;
    f.Init(T0, 10.0, 1.0, 4.0, 0.5);
    f.Update(T0 + 1, 13.0);
    const tblKalman2_t* t = f.GetTbl();
    EXPECT_EQ(+t->x, 13.0);
    EXPECT_EQ(+t->v, 3.0);
    EXPECT_EQ(t->tLast, T0 + 1);
    EXPECT_EQ(+t->p11, 4.0);
    EXPECT_EQ(+t->p12, 4.0);
    EXPECT_EQ(+t->p21, 4.0);
    EXPECT_EQ(+t->p22, 8.0);
    EXPECT_EQ(+t->k1, 1.0);

    // With dtRate 2 the difference over two seconds is not divided by two,
    // and the update of the first second is an ordinary step.
    Kalman2_t g;
    g.Init(T0, 10.0, 2.0, 4.0, 0.0);
    g.Update(T0 + 1, 10.0);
    EXPECT_NE(+g.GetTbl()->p11, 4.0);
    const double x1 = g.GetTbl()->x;
    g.Update(T0 + 2, 16.0);
    EXPECT_EQ(+g.GetTbl()->v, 16.0 - x1);
    EXPECT_EQ(+g.GetTbl()->x, 16.0);

    // Only the exact age re-seeds: a later update is filtered. A second
    // update in the same second changes nothing at all.
    f.Update(T0 + 3, 19.0);
    EXPECT_NE(+t->p11, 4.0);
    tblKalman2_t before;
    std::memcpy(&before, t, sizeof before);
    f.Update(T0 + 3, 1e9);
    EXPECT_EQ(std::memcmp(&before, t, sizeof before), 0);
}

TEST(Kalman2, GateLooksOneSecondAheadAndAcceptsItsEdge) {
    // r 4: limit 6. Predicted x is 2, the gate centre x + v is 3.
    const double accept = 9.0;
    const double reject = std::nextafter(accept, 100.0);

    Kalman2_t f;
    seeded(f, 0.0, 1.0, 4.0, 0.0);
    f.Update(T0 + 2, accept);
    EXPECT_EQ(f.GetError(), 0);
    EXPECT_DOUBLE_EQ(+f.GetTbl()->x, 2.0 + f.GetTbl()->k1 * 7.0);

    Kalman2_t g;
    seeded(g, 0.0, 1.0, 4.0, 0.0);
    const double p11 = g.GetTbl()->p11;
    g.Update(T0 + 2, reject);
    EXPECT_EQ(g.GetError(), 1);
    EXPECT_EQ(+g.GetTbl()->x, 2.0);  // prediction kept
    EXPECT_EQ(+g.GetTbl()->v, 1.0);
    EXPECT_EQ(g.GetTbl()->tLast, T0 + 2);
    EXPECT_NE(+g.GetTbl()->p11, p11);  // covariance reduced all the same

    // Six below the predicted value is seven below the gate centre.
    Kalman2_t h;
    seeded(h, 0.0, 1.0, 4.0, 0.0);
    h.Update(T0 + 2, -4.0);
    EXPECT_EQ(h.GetError(), 1);
}

TEST(Kalman2, OutlierCountIsHeldAt255AndComesBack) {
    Kalman2_t f;
    seeded(f, 50.0, 0.0, 1.0, 0.0);
    f.Update(T0 + 2, 50.0);
    EXPECT_EQ(f.GetError(), 0);  // not below zero
    for (unsigned int i = 0; i < 300; i++) f.Update(T0 + 3 + i, 5000.0);
    EXPECT_EQ(f.GetError(), 255);
    EXPECT_EQ(f.GetTbl()->error, 255);
    EXPECT_EQ(+f.GetTbl()->x, 50.0);
    f.Update(T0 + 303, 50.0);
    EXPECT_EQ(f.GetError(), 254);
}

TEST(Kalman2, ZeroNoiseAndNaNAreNotGuarded) {
    // The Doppler setting: r = q = 0. The gains become 0/0.
    Kalman2_t f;
    seeded(f, 100.0, 1.0, 0.0, 0.0);
    f.Update(T0 + 2, 102.0);  // one off the gate centre 103: rejected
    EXPECT_TRUE(std::isnan(f.GetTbl()->k1));
    EXPECT_EQ(+f.GetTbl()->x, 102.0);
    EXPECT_EQ(f.GetError(), 1);
    f.Update(T0 + 3, 104.0);  // exactly on the centre: taken, with a NaN gain
    EXPECT_TRUE(std::isnan(f.GetTbl()->x));
    EXPECT_EQ(f.GetError(), 0);

    // A NaN measurement passes the gate.
    Kalman2_t g;
    seeded(g, 0.0, 0.0, 4.0, 0.0);
    g.Update(T0 + 2, 1000.0);
    ASSERT_EQ(g.GetError(), 1);
    g.Update(T0 + 3, std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(g.GetError(), 0);
    EXPECT_TRUE(std::isnan(g.GetTbl()->x));

    // A negative variance makes the limit NaN: nothing is ever rejected.
    Kalman2_t h;
    seeded(h, 0.0, 0.0, -1.0, 0.0);
    h.Update(T0 + 2, 1e6);
    EXPECT_EQ(h.GetError(), 0);
}

}  // namespace
