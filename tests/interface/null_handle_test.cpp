/*
 * A null handle, passed to any exported function that takes one, stops the
 * process with the C runtime's assertion message: unit "zel", condition
 * "false" and the function's signature as the interface documents spell
 * it. The signatures below are typed out independently of the library's
 * sources, so a slip in either shows up here. Every build type keeps the
 * assertion, Release included.
 */
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>

#include "zel.h"

namespace {

struct NullCall {
    const char* signature;
    void (*call)();
};

#define N nullptr
const NullCall kCalls[] = {
    {"void cnvx0c_finit(int*)", [] { cnvx0c_finit(N); }},
    {"void* cnvx0c_upx0c(int*, void*)", [] { cnvx0c_upx0c(N, N); }},
    {"void* cnvx0c_getTblGpsUtc(int*)", [] { cnvx0c_getTblGpsUtc(N); }},
    {"void cnvx0c_clear(int*)", [] { cnvx0c_clear(N); }},

    {"void prgns_finit(int*)", [] { prgns_finit(N); }},
    {"void* prgns_getAlmanGlo(int*, void*)", [] { prgns_getAlmanGlo(N, N); }},
    {"void* prgns_getAlmanGps(int*, void*, void*)", [] { prgns_getAlmanGps(N, N, N); }},
    {"void* prgns_getAlmanGps0(int*, void*)", [] { prgns_getAlmanGps0(N, N); }},
    {"void* prgns_get0(int*, void*, void*, void*, unsigned int)",
     [] { prgns_get0(N, N, N, N, 0); }},
    {"void* prgns_get1(int*, void*)", [] { prgns_get1(N, N); }},
    {"void* prgns_get2(int*, void*, void*, unsigned int, int)", [] { prgns_get2(N, N, N, 0, 0); }},
    {"void prgns_set(int*, double*, unsigned int, unsigned int, unsigned int)",
     [] { prgns_set(N, N, 0, 0, 0); }},
    {"void prgns_clear(int*)", [] { prgns_clear(N); }},
    {"unsigned char prgns_getnumalmglo(int*)", [] { prgns_getnumalmglo(N); }},
    {"unsigned char prgns_getnumalmgps(int*)", [] { prgns_getnumalmgps(N); }},

    {"void crdsat_finit(int*)", [] { crdsat_finit(N); }},
    {"void* crdsat_get(int*, void*, unsigned int, int)", [] { crdsat_get(N, N, 0, 0); }},
    {"void* crdsat_getGlo(int*, void*, unsigned int, int, int)",
     [] { crdsat_getGlo(N, N, 0, 0, 1); }},
    {"void* crdsat_getGps(int*, void*, unsigned int, int)", [] { crdsat_getGps(N, N, 0, 0); }},
    {"void crdsat_setPnt(int*, double*, unsigned int, unsigned int)",
     [] { crdsat_setPnt(N, N, 0, 0); }},
    {"void crdsat_clear(int*)", [] { crdsat_clear(N); }},

    {"void crdpnt_finit(int*)", [] { crdpnt_finit(N); }},
    {"void crdpnt_set(int*, int)", [] { crdpnt_set(N, 10); }},
    {"void* crdpnt_get(int*, void*)", [] { crdpnt_get(N, N); }},
    {"void* crdpnt_getSpd(int*)", [] { crdpnt_getSpd(N); }},
    {"void* crdpnt_getTau(int*, void*, double)", [] { crdpnt_getTau(N, N, 0.0); }},
    {"void crdpnt_clear(int*)", [] { crdpnt_clear(N); }},

    {"void raim_finit(int*)", [] { raim_finit(N); }},
    {"void raimSat(int*, void*, void*, unsigned int, double, double, unsigned int)",
     [] { raimSat(N, N, N, 0, 0.0, 0.0, 10); }},
    {"int raimComb(int*, lsttblCrdSat_t*, tblCrdPnt_t*, double, int)",
     [] { raimComb(N, N, N, 100.0, 10); }},
    {"double raimTau(int*, lsttblCrdSat_t*, tblCrdPnt_t*)", [] { raimTau(N, N, N); }},
    {"double raimStats(int*, lsttblCrdSat_t*, tblCrdPnt_t*)", [] { raimStats(N, N, N); }},

    {"void filter_finit(int*)", [] { filter_finit(N); }},
    {"char initStatic(int*, double*, unsigned int, double*, unsigned int, unsigned int, "
     "unsigned char)",
     [] { initStatic(N, N, 0, N, 1, 1, 0); }},
    {"char staticFilter(int*, tblCrdPnt_t*, unsigned int)", [] { staticFilter(N, N, 0); }},
    {"void KalmanFilterObs0(int*, lsttblSat_t*)", [] { KalmanFilterObs0(N, N); }},
    {"void* KalmanFilterObs(int*, lsttblSat_t*)", [] { KalmanFilterObs(N, N); }},
    {"void* KalmanFilterCrdPnt0(int*, unsigned int, tblCrdPnt_t*)",
     [] { KalmanFilterCrdPnt0(N, 0, N); }},
};
#undef N

std::string nameOf(const std::string& signature) {
    std::size_t open = signature.find('(');
    std::size_t start = signature.rfind(' ', open) + 1;
    return signature.substr(start, open - start);
}

/* The signature as a literal part of a regular expression. */
std::string literal(const char* text) {
    std::string out;
    for (const char* p = text; *p; p++) {
        if (std::string("*()[].+?^$|\\{}").find(*p) != std::string::npos) out += '\\';
        out += *p;
    }
    return out;
}

class NullHandleDeathTest : public testing::TestWithParam<NullCall> {};

TEST_P(NullHandleDeathTest, AssertsWithTheSignature) {
    const NullCall& c = GetParam();
    EXPECT_DEATH(c.call(), "zel:[0-9]+: " + literal(c.signature) + ": Assertion `false' failed");
}

INSTANTIATE_TEST_SUITE_P(Zel, NullHandleDeathTest, testing::ValuesIn(kCalls),
                         [](const testing::TestParamInfo<NullCall>& info) {
                             return nameOf(info.param.signature);
                         });

/* Every exported function but the constructors and the three time
 * functions takes a handle, and so has its line above. */
TEST(NullHandle, EveryExportedFunctionWithAHandleIsListed) {
    std::ifstream in(ZELNAV_DATA_DIR "/../tests/interface/exported_symbols.txt");
    ASSERT_TRUE(in.good());
    std::set<std::string> listed;
    for (const NullCall& c : kCalls) listed.insert(nameOf(c.signature));
    std::string name;
    int withHandle = 0;
    while (std::getline(in, name)) {
        if (name.empty() || name[0] == '#' || name == "tmZelToDate" || name == "getTmZel" ||
            name == "DateAlmGloToDate" || name.size() < 5 ||
            name.compare(name.size() - 5, 5, "_init") == 0)
            continue;
        withHandle++;
        EXPECT_EQ(listed.count(name), 1u) << name << " has no null-handle case";
    }
    EXPECT_EQ(withHandle, (int)listed.size());
}

}  // namespace
