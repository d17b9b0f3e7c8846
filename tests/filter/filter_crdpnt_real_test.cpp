/*
 * The position filter on the real sample log (TLSE, a station at rest,
 * five minutes at one fix a second, both systems).
 *
 * The errors of these fixes are mostly slow: the broadcast orbits and
 * clocks and the atmosphere move the fix by metres over minutes, and no
 * filter with a memory of seconds can take that out. What the filter
 * must remove is the second-to-second jitter, without pulling the track
 * away from the fixes.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "filter/filter.h"
#include "solve_pipeline.h"
#include "zlog.h"

namespace {

struct Xyz {
    double v[3];
};

double dist(const Xyz& a, const Xyz& b) {
    return std::sqrt((a.v[0] - b.v[0]) * (a.v[0] - b.v[0]) + (a.v[1] - b.v[1]) * (a.v[1] - b.v[1]) +
                     (a.v[2] - b.v[2]) * (a.v[2] - b.v[2]));
}

/* RMS of the step from one fix to the next. */
double jitter(const std::vector<Xyz>& track) {
    double s = 0.0;
    for (std::size_t i = 1; i < track.size(); i++) {
        const double d = dist(track[i], track[i - 1]);
        s += d * d;
    }
    return std::sqrt(s / (double)(track.size() - 1));
}

Xyz mean(const std::vector<Xyz>& track) {
    Xyz m = {{0.0, 0.0, 0.0}};
    for (const Xyz& p : track)
        for (int i = 0; i < 3; i++) m.v[i] += p.v[i] / (double)track.size();
    return m;
}

TEST(PositionFilterReal, StaticStationJittersLessAndStaysOnItsFixes) {
    zlog::Reader rd;
    ASSERT_TRUE(rd.open(std::string(ZELNAV_DATA_DIR) + "/tlse-2024-001/tlse_1200_5min.zlog"));
    solve::Pipeline pl(10);
    if (rd.header().hasPosition) pl.seed(rd.header().position);
    Filter_t f;

    std::vector<Xyz> raw, flt;
    double largest = 0.0, largestStep = 0.0;
    zlog::Record rec;
    while (rd.next(rec)) {
        if (!pl.run(rec.message.data()) || pl.fix() == nullptr) continue;
        tblCrdPnt_t in = *pl.fix();
        const tblCrdPnt_t* out = f.KalmanCrdPnt0(pl.tm(), &in);
        /* The first seconds are GPS-only fixes (a restart when the
         * GLONASS ephemerides arrive): the combined fixes are compared. */
        if (in.actual != 1 || in.sys != 10) continue;
        ASSERT_EQ(out->actual, 1);
        raw.push_back({{in.xyz[0], in.xyz[1], in.xyz[2]}});
        flt.push_back({{out->xyz[0], out->xyz[1], out->xyz[2]}});
        largest = std::fmax(largest, dist(raw.back(), flt.back()));
        if (raw.size() > 1) largestStep = std::fmax(largestStep, dist(raw.back(), raw[raw.size() - 2]));
    }
    ASSERT_GT(raw.size(), 250u);

    const double jr = jitter(raw), jf = jitter(flt);
    EXPECT_LT(jf, 0.7 * jr) << "raw " << jr << " m, filtered " << jf << " m";
    /* On a station at rest the filter adds no offset of its own, and it
     * never strays from the fixes by more than they jump in one second
     * (they jump by 8 m once, when the satellites change; the filter takes
     * about half of such a step at once and the rest over the next
     * seconds, without overshooting it). */
    EXPECT_LT(dist(mean(raw), mean(flt)), 0.3);
    EXPECT_LT(largest, largestStep);
}

}  // namespace
