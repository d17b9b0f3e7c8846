/*
 * Helpers of the conversion tests: converting the TLSE recordings into
 * messages kept in memory, and feeding them to the library's converter.
 */
#ifndef ZELNAV_TESTS_CONVERT_FIXTURE_H
#define ZELNAV_TESTS_CONVERT_FIXTURE_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tools/convert/convert.h"
#include "zel.h"

namespace convtest {

inline std::string dataPath(const std::string& name) {
    return std::string(ZELNAV_DATA_DIR) + "/" + name;
}

const char* const kObs1s = "tlse-2024-001/TLSE00FRA_R_20240011200_05M_01S_MO.rnx.gz";
const char* const kObs30s = "tlse-2024-001/TLSE00FRA_R_20240011800_01H_30S_MO.rnx.gz";
const char* const kNav = "tlse-2024-001/BRDC00IGS_R_20240010000_01D_MN.rnx.gz";

struct Message {
    std::vector<uint8_t> bytes;
    bool interpolated = false;
};

/* A finished conversion: the converter (for its tables), its messages and
 * what it said. */
struct Converted {
    rinex::Diagnostics diag;
    std::unique_ptr<cvt::Converter> conv;
    std::vector<Message> msgs;
    bool ok = false;
};

inline std::unique_ptr<Converted> convert(const std::string& obs,
                                          const std::vector<std::string>& navs,
                                          const cvt::Options& opt = cvt::Options()) {
    std::unique_ptr<Converted> c(new Converted);
    c->conv.reset(new cvt::Converter(opt, c->diag));
    for (const std::string& n : navs) c->conv->addNavFile(n);
    Converted* raw = c.get();
    c->ok = c->conv->run(obs, [raw](const std::vector<uint8_t>& m, bool interp) {
        raw->msgs.push_back({m, interp});
        return true;
    });
    return c;
}

/* What the receiver says of a GPS block's navigation data: 32 when the
 * broadcast health marks the data bad (summary bit of subframe 1), else
 * nothing. */
inline int gpsNavFlag(const cvt::Converter& c, int prn, uint32_t tmZel) {
    const cvt::GpsRecord* r = c.nav().gpsNearest(prn, (int64_t)tmZel + c.leapSeconds() + 630709200);
    return r && (r->tbl.health & 0x20) ? 32 : 0;
}

/* The library's message converter behind its C interface. */
class Intake {
public:
    Intake() : h_(static_cast<int*>(cnvx0c_init())) {}
    ~Intake() { cnvx0c_finit(h_); }
    Intake(const Intake&) = delete;
    Intake& operator=(const Intake&) = delete;

    /* Decodes a copy of `msg` (the intake may correct bits in place). */
    lsttblSat_t* feed(const std::vector<uint8_t>& msg) {
        buf_ = msg;
        return static_cast<lsttblSat_t*>(cnvx0c_upx0c(h_, buf_.data()));
    }
    const tblGpsUtc_t* gpsUtc() { return static_cast<tblGpsUtc_t*>(cnvx0c_getTblGpsUtc(h_)); }

private:
    int* h_;
    std::vector<uint8_t> buf_;
};

}  // namespace convtest

#endif
