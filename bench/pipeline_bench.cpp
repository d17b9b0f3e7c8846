/*
 * The epoch pipeline on the real sample log (TLSE, 300 one-second
 * messages of GPS and GLONASS): intake, satellite computation and position
 * solution together, as `zelnav solve` runs them, and each stage alone.
 * Every benchmark reports epochs per second (items per second) and the
 * allocations made inside its timed loop, which must be none: a loop that
 * allocates ends with an error.
 *
 *   build/release/bench/zelnav_bench [--benchmark_filter=Pipeline]
 */
#include <benchmark/benchmark.h>

#include <cstdio>
#include <vector>

#include "alloc_count.h"
#include "solve_pipeline.h"
#include "x0ccheck.h"
#include "zel.h"
#include "zlog.h"

namespace {

struct Sample {
    std::vector<std::vector<uint8_t>> messages;
    double position[3] = {0, 0, 0};
    bool ok = false;

    Sample() {
        zlog::Reader rd;
        if (!rd.open(ZELNAV_SAMPLE_LOG)) return;
        for (int i = 0; i < 3; i++) position[i] = rd.header().position[i];
        zlog::Record r;
        while (rd.next(r)) messages.push_back(r.message);
        ok = !messages.empty();
    }
};

const Sample& sample() {
    static const Sample s;
    return s;
}

/* Copies of the messages the timed loops may hand to the library (its CT
 * check corrects single bits in place). */
std::vector<std::vector<uint8_t>> copies() { return sample().messages; }

bool ready(benchmark::State& state) {
    if (sample().ok) return true;
    state.SkipWithError("sample log not found: " ZELNAV_SAMPLE_LOG);
    return false;
}

/* Checks the allocation count of a timed loop and reports it. */
void finish(benchmark::State& state, unsigned long before, long epochs) {
    const unsigned long n = bench::allocations() - before;
    state.counters["allocs"] = (double)n;
    state.SetItemsProcessed(epochs);
    if (n != 0) state.SkipWithError("allocation inside the timed loop");
}

/* The whole pipeline: one message per iteration, the log over and over.
 * The first pass collects the navigation data, as a receiver starting
 * up would; later passes find it in place. */
void BM_Pipeline(benchmark::State& state) {
    if (!ready(state)) return;
    auto msgs = copies();
    solve::Pipeline pl(10);
    pl.seed(sample().position);
    for (auto& m : msgs) pl.run(m.data());  // first pass: warm-up
    std::size_t k = 0;
    long fixes = 0, epochs = 0;
    const unsigned long before = bench::allocations();
    for (auto _ : state) {
        pl.run(msgs[k].data());
        fixes += pl.fix() != nullptr && pl.fix()->actual == 1;
        epochs++;
        if (++k == msgs.size()) k = 0;
    }
    finish(state, before, epochs);
    state.counters["fix%"] = epochs ? 100.0 * (double)fixes / (double)epochs : 0.0;
}
BENCHMARK(BM_Pipeline);

/* The structural check of each message, as `zelnav solve` runs it first. */
void BM_MessageCheck(benchmark::State& state) {
    if (!ready(state)) return;
    const auto& msgs = sample().messages;
    std::size_t k = 0;
    long epochs = 0;
    const unsigned long before = bench::allocations();
    for (auto _ : state) {
        x0ccheck::Result r = x0ccheck::check(msgs[k].data(), msgs[k].size());
        benchmark::DoNotOptimize(r);
        epochs++;
        if (++k == msgs.size()) k = 0;
    }
    finish(state, before, epochs);
}
BENCHMARK(BM_MessageCheck);

/* Intake alone: message unpacking and navigation data collection. */
void BM_Intake(benchmark::State& state) {
    if (!ready(state)) return;
    auto msgs = copies();
    int* cnv = static_cast<int*>(cnvx0c_init());
    for (auto& m : msgs) cnvx0c_upx0c(cnv, m.data());
    std::size_t k = 0;
    long epochs = 0;
    const unsigned long before = bench::allocations();
    for (auto _ : state) {
        benchmark::DoNotOptimize(cnvx0c_upx0c(cnv, msgs[k].data()));
        epochs++;
        if (++k == msgs.size()) k = 0;
    }
    finish(state, before, epochs);
    cnvx0c_finit(cnv);
}
BENCHMARK(BM_Intake);

/* The pipeline brought to the log's last epoch (all navigation data in),
 * for the stages that follow the intake. */
struct LastEpoch {
    std::vector<std::vector<uint8_t>> msgs = copies();
    solve::Pipeline pl{10};
    LastEpoch() {
        pl.seed(sample().position);
        for (auto& m : msgs) pl.run(m.data());
    }
};

/* Satellite computation alone: the last epoch's satellites, over and over. */
void BM_Satellites(benchmark::State& state) {
    if (!ready(state)) return;
    LastEpoch e;
    long epochs = 0;
    const unsigned long before = bench::allocations();
    for (auto _ : state) {
        benchmark::DoNotOptimize(e.pl.satellites());
        epochs++;
    }
    finish(state, before, epochs);
    state.counters["rows"] = (double)e.pl.rows()->num;
}
BENCHMARK(BM_Satellites);

/* Position and velocity solution alone, on the last epoch's rows. */
void BM_Solution(benchmark::State& state) {
    if (!ready(state)) return;
    LastEpoch e;
    long epochs = 0;
    const unsigned long before = bench::allocations();
    for (auto _ : state) {
        benchmark::DoNotOptimize(e.pl.solution());
        epochs++;
    }
    finish(state, before, epochs);
    state.counters["fix"] = e.pl.fix()->actual;
}
BENCHMARK(BM_Solution);

/* The counter itself: a loop that allocates must be caught. */
void BM_AllocationIsCaught(benchmark::State& state) {
    const unsigned long before = bench::allocations();
    for (auto _ : state) {
        std::vector<int>* v = new std::vector<int>(4);
        benchmark::DoNotOptimize(v->data());
        delete v;
    }
    const unsigned long n = bench::allocations() - before;
    state.counters["allocs"] = (double)n;
    if (n < (unsigned long)state.iterations())
        state.SkipWithError("the allocation counter missed allocations");
}
BENCHMARK(BM_AllocationIsCaught);

}  // namespace

BENCHMARK_MAIN();
