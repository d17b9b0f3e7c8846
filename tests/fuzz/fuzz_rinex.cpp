/*
 * Fuzz target of the exchange-format readers: the same input is read as
 * a RINEX observation file, as a RINEX navigation file and as an SP3
 * file. The headers decide quickly which reader gets further; each must
 * end with diagnostics, never with a fault, whatever the bytes (gzip
 * input included: the line source takes both).
 */
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz_file.h"
#include "rinex_nav.h"
#include "rinex_obs.h"
#include "sp3.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) { return 0; }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static const std::string path = fuzzfile::scratch(".rnx");
    if (!fuzzfile::write(path, data, size)) return 0;

    rinex::Diagnostics diag;
    {
        rinex::ObsReader rd(diag);
        if (rd.open(path)) {
            rinex::ObsEpoch e;
            while (rd.next(e)) {
            }
        }
    }
    rinex::NavFile nav;
    rinex::readNavFile(path, nav, diag);
    rinex::Sp3File sp3;
    rinex::readSp3(path, sp3, diag);
    for (const rinex::Diagnostic& d : diag.list()) {
        volatile std::size_t n = d.text().size();
        (void)n;
    }
    return 0;
}
