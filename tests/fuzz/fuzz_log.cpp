/*
 * Fuzz target of the log path: the log reader, the message check, then
 * every handle family of the library on each message the check accepts.
 *
 * Input: one byte P, then the bytes of a log file. The first P % 32
 * messages of the sample recording go through the converter before the
 * log, so that the fuzzed messages meet a library that already holds
 * ephemerides and reach the solution at once (with P = 0 they meet a
 * fresh one). Only the converter: the whole pipeline on every priming
 * message would cost most of the fuzzing time. Every accepted message is
 * copied into a heap block of exactly its length, so that a read past it
 * is caught by the address sanitizer.
 */
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fuzz_file.h"
#include "tools/soak/every_handle.h"
#include "x0ccheck.h"
#include "zlog.h"

namespace {

/* TLSE, the station of the sample recording (WGS-84, m). */
const double kStation[3] = {4627852.3986, 119640.3423, 4372994.4588};
const unsigned int kMaxPrime = 32;

std::vector<std::vector<uint8_t>>& prime() {
    static std::vector<std::vector<uint8_t>> msgs;
    return msgs;
}

void runChecked(soak::EveryHandle& all, const std::vector<uint8_t>& message, bool prime) {
    const x0ccheck::Result r = x0ccheck::check(message.data(), message.size());
    if (!r.ok()) {
        /* The reason is part of the path under test. */
        volatile std::size_t n = x0ccheck::describe(r).size();
        (void)n;
        return;
    }
    std::unique_ptr<uint8_t[]> exact(new uint8_t[r.length]);
    std::memcpy(exact.get(), message.data(), r.length);
    if (prime) {
        all.intake(exact.get());
        return;
    }
    if (!all.run(exact.get())) return;
    /* The calls a host makes besides the pipeline's. */
    lsttblSat_t* lst = all.tables();
    crdsat_getGlo(all.satellites(), lst, all.tm(), 0, 1);
    crdsat_getGps(all.satellites(), lst, all.tm(), 18);
    prgns_getAlmanGlo(all.predictor(), lst);
    tblTmPrmGps_t tp;
    prgns_getAlmanGps(all.predictor(), lst, &tp);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    zlog::Reader rd;
    if (!rd.open(std::string(ZELNAV_DATA_DIR) + "/tlse-2024-001/tlse_1200_5min.zlog")) return 0;
    zlog::Record rec;
    while (prime().size() < kMaxPrime && rd.next(rec)) prime().push_back(rec.message);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    static const std::string path = fuzzfile::scratch(".zlog");
    if (!fuzzfile::write(path, data + 1, size - 1)) return 0;

    soak::EveryHandle all(kStation);
    const unsigned int p = data[0] % kMaxPrime;
    for (unsigned int i = 0; i < p && i < prime().size(); i++) runChecked(all, prime()[i], true);

    zlog::Reader rd;
    if (!rd.open(path)) return 0;
    zlog::Record rec;
    while (rd.next(rec)) runChecked(all, rec.message, false);
    return 0;
}
