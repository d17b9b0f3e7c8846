/*
 * Integrity monitoring and fault injection in `zelnav solve`. See
 * solve_raim.h.
 */
#include "solve_raim.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace solve {

namespace {

/* Rows of a list: it owns 24. */
uint32_t rowsOf(const lsttblCrdSat_t* l) {
    return l->num < (uint32_t)ZEL_NUM_CRDSAT ? l->num : (uint32_t)ZEL_NUM_CRDSAT;
}

bool parseNumber(const std::string& s, double* v) {
    if (s.empty()) return false;
    char* end = nullptr;
    *v = std::strtod(s.c_str(), &end);
    return end && *end == '\0';
}

}  // namespace

bool parseInjection(const std::string& text, Injection* out) {
    std::vector<std::string> f;
    std::size_t start = 0;
    for (;;) {
        const std::size_t colon = text.find(':', start);
        f.push_back(text.substr(start, colon == std::string::npos ? std::string::npos : colon - start));
        if (colon == std::string::npos) break;
        start = colon + 1;
    }
    /* "G24:..." is taken for "G:24:...". */
    if (!f.empty() && f[0].size() > 1 && (f[0][0] == 'G' || f[0][0] == 'R' || f[0][0] == 'g' ||
                                           f[0][0] == 'r')) {
        f.insert(f.begin() + 1, f[0].substr(1));
        f[0].resize(1);
    }
    if (f.size() != 4 && f.size() != 5) return false;
    Injection in;
    if (f[0] == "G" || f[0] == "g")
        in.sys = 1;
    else if (f[0] == "R" || f[0] == "r")
        in.sys = 0;
    else
        return false;
    double num, from;
    if (!parseNumber(f[1], &num) || !parseNumber(f[2], &from) || !parseNumber(f[3], &in.bias))
        return false;
    if (num != (int)num || num < 1 || num > 32 || from != (long)from || from < 0) return false;
    in.num = (int)num;
    in.from = (long)from;
    if (f.size() == 5 && !parseNumber(f[4], &in.rate)) return false;
    *out = in;
    return true;
}

std::string satName(int sys, int num) {
    char buf[8];
    std::snprintf(buf, sizeof buf, "%c%02d", sys == 1 ? 'G' : 'R', num);
    return buf;
}

RaimCheck::RaimCheck(Pipeline& pl, bool raim, double maxSpeed,
                     const std::vector<Injection>& faults)
    : pl_(pl), raim_(raim), maxSpeed_(maxSpeed), faults_(faults) {
    std::memset(&rec_, 0, sizeof rec_);
    rec_.length = ZEL_LEN_CRDPNT;
    if (raim_) monitor_ = static_cast<int*>(raim_init());
    pl_.setRowHook(&RaimCheck::hook, this);
}

RaimCheck::~RaimCheck() {
    pl_.setRowHook(nullptr, nullptr);
    if (monitor_) raim_finit(monitor_);
}

void RaimCheck::hook(lsttblCrdSat_t* rows, void* self) {
    static_cast<RaimCheck*>(self)->beforeFix(rows);
}

std::string RaimCheck::flagged(const lsttblCrdSat_t* rows, const uint8_t* before, long* count,
                               long tally[2][33]) {
    std::string names;
    for (uint32_t i = 0; i < rowsOf(rows); i++) {
        const tblCrdSat_t& r = rows->tbl[i];
        if (r.bad != 1 || before[i] == 1 || r.sys > 1) continue;
        if (!names.empty()) names += ' ';
        names += satName(r.sys, r.num);
        ++*count;
        if (r.num <= 32) tally[r.sys][r.num]++;
    }
    return names;
}

void RaimCheck::beforeFix(lsttblCrdSat_t* rows) {
    rows_ = rows;
    for (const Injection& f : faults_) {
        if (epoch_ < f.from) continue;
        for (uint32_t i = 0; i < rowsOf(rows); i++) {
            tblCrdSat_t& r = rows->tbl[i];
            if (r.sys == f.sys && r.num == f.num) r.psvd += f.bias + f.rate * (double)(epoch_ - f.from);
        }
    }
    if (!raim_) return;

    uint8_t before[ZEL_NUM_CRDSAT];
    for (uint32_t i = 0; i < rowsOf(rows); i++) before[i] = rows->tbl[i].bad;
    outcome_ = raimComb(monitor_, rows, &rec_, maxSpeed_, pl_.mode());
    checkedEpoch_ = epoch_;
    if (outcome_ == 0)
        accepted++;
    else if (outcome_ == -32)
        noExclusion++;
    else
        tooFew++;
    comb_ = flagged(rows, before, &combExclusions, tallyComb_);
}

const tblCrdPnt_t* RaimCheck::finish() {
    const tblCrdPnt_t* fix = pl_.fix();
    checked_ = raim_ && checkedEpoch_ == epoch_;
    epoch_++;
    stats_.clear();
    if (!raim_) return fix;
    if (!checked_) {
        comb_.clear();
        return nullptr;
    }
    if (outcome_ != 0 || rec_.actual != 1 || fix == nullptr || fix->actual != 1) return nullptr;

    uint8_t before[ZEL_NUM_CRDSAT];
    for (uint32_t i = 0; i < rowsOf(rows_); i++) before[i] = rows_->tbl[i].bad;
    tblCrdPnt_t used = *fix;
    raimStats(monitor_, rows_, &used);
    stats_ = flagged(rows_, before, &statsExclusions, tallyStats_);
    if (!stats_.empty()) fix = pl_.solution();
    return fix->actual == 1 ? fix : nullptr;
}

std::string RaimCheck::tally(bool stats) const {
    const long(*t)[33] = stats ? tallyStats_ : tallyComb_;
    std::string out;
    for (int sys = 1; sys >= 0; sys--)
        for (int n = 0; n <= 32; n++) {
            if (t[sys][n] == 0) continue;
            if (!out.empty()) out += ' ';
            out += satName(sys, n) + " x" + std::to_string(t[sys][n]);
        }
    return out.empty() ? "none" : out;
}

}  // namespace solve
