/*
 * Records of the navigation files. A record is a first line (satellite,
 * time of clock, three values) and continuation lines of four values,
 * each value in a 19-column field: columns 23/42/61 of the first line and
 * 4/23/42/61 of the others in RINEX 3, one column less in RINEX 2.
 *
 * Records are cut out by their shape (continuation lines start blank,
 * first lines do not), then checked against the line count their system
 * prescribes, so that a lost or extra line costs one record and is
 * reported, instead of shifting every field after it.
 */
#include <exception>

#include "rinex_nav.h"
#include "rinex_nav_header.h"
#include "rinex_sys.h"

namespace rinex {

namespace {

template <class Rec>
struct Field {
    const char* name;
    double Rec::*member;
    bool required;
};

/* Field order of the records, as the files write them. */
const Field<GpsEph> kGpsFields[] = {
    {"af0", &GpsEph::af0, true},           {"af1", &GpsEph::af1, true},
    {"af2", &GpsEph::af2, true},           {"IODE", &GpsEph::iode, true},
    {"Crs", &GpsEph::crs, true},           {"delta n", &GpsEph::deltaN, true},
    {"M0", &GpsEph::m0, true},             {"Cuc", &GpsEph::cuc, true},
    {"e", &GpsEph::e, true},               {"Cus", &GpsEph::cus, true},
    {"sqrt(A)", &GpsEph::sqrtA, true},     {"toe", &GpsEph::toe, true},
    {"Cic", &GpsEph::cic, true},           {"OMEGA0", &GpsEph::omega0, true},
    {"Cis", &GpsEph::cis, true},           {"i0", &GpsEph::i0, true},
    {"Crc", &GpsEph::crc, true},           {"omega", &GpsEph::omega, true},
    {"OMEGA DOT", &GpsEph::omegaDot, true}, {"IDOT", &GpsEph::idot, true},
    {"codes on L2", &GpsEph::codesL2, true}, {"GPS week", &GpsEph::week, true},
    {"L2 P data flag", &GpsEph::l2pFlag, false}, {"SV accuracy", &GpsEph::accuracy, true},
    {"SV health", &GpsEph::health, true},  {"TGD", &GpsEph::tgd, true},
    {"IODC", &GpsEph::iodc, true},         {"transmission time", &GpsEph::transmissionTime, true},
    {"fit interval", &GpsEph::fitInterval, false},
};

const Field<GloEph> kGloFields[] = {
    {"-tau_n", &GloEph::minusTauN, true},  {"gamma_n", &GloEph::gammaN, true},
    {"tk", &GloEph::tk, true},             {"X", &GloEph::x, true},
    {"X velocity", &GloEph::vx, true},     {"X acceleration", &GloEph::ax, true},
    {"health", &GloEph::health, true},     {"Y", &GloEph::y, true},
    {"Y velocity", &GloEph::vy, true},     {"Y acceleration", &GloEph::ay, true},
    {"frequency number", &GloEph::freqNum, true}, {"Z", &GloEph::z, true},
    {"Z velocity", &GloEph::vz, true},     {"Z acceleration", &GloEph::az, true},
    {"age of information", &GloEph::age, false},
    {"status flags", &GloEph::statusFlags, false}, {"L1/L2 delay difference", &GloEph::l1l2Delay, false},
    {"URAI", &GloEph::urai, false},        {"health flags", &GloEph::healthFlags, false},
};

const int kGloFieldsPerFourLines = 15;

struct RawRecord {
    std::vector<std::string> lines;
    std::vector<long> numbers;
};

/* Lines of a record of each system: GLONASS has four, or five from
 * RINEX 3.05 on (both are accepted in any RINEX 3 file: merged files mix
 * writers), SBAS four, every other system eight. */
bool lineCountOk(char sys, double version, std::size_t n, std::string& expected) {
    if (sys == 'R') {
        expected = version >= 3.0 ? "4 or 5" : "4";
        return n == 4 || (version >= 3.0 && n == 5);
    }
    const std::size_t want = sys == 'S' ? 4 : 8;
    expected = std::to_string(want);
    return n == want;
}

class RecordParser {
public:
    RecordParser(const std::string& path, Diagnostics& diag, bool v3)
        : path_(path), diag_(diag), v3_(v3) {}

    void report(long line, const std::string& what) { diag_.add(path_, line, what); }

    /* Columns of value i (0 = first after the time on the first line). */
    std::size_t lineOf(int i) const { return static_cast<std::size_t>(i + 1) / 4; }
    std::size_t colOf(int i) const { return (v3_ ? 4 : 3) + 19 * static_cast<std::size_t>((i + 1) % 4); }

    bool time(const RawRecord& r, const std::string& sat, CivilTime& t) {
        const std::string& l = r.lines[0];
        long f[5] = {0, 0, 0, 0, 0};
        bool ok = true;
        double sec = 0;
        if (v3_) {
            static const std::size_t cols[5] = {4, 9, 12, 15, 18};
            for (int i = 0; i < 5; ++i)
                ok = ok && parseInt(l, cols[i], i == 0 ? 4 : 2, f[i]) == FieldStatus::Ok;
            long s = 0;
            ok = ok && parseInt(l, 21, 2, s) == FieldStatus::Ok;
            sec = static_cast<double>(s);
        } else {
            static const std::size_t cols[5] = {3, 6, 9, 12, 15};
            for (int i = 0; i < 5; ++i) ok = ok && parseInt(l, cols[i], 2, f[i]) == FieldStatus::Ok;
            ok = ok && parseReal(l, 17, 5, sec) == FieldStatus::Ok;
            f[0] = fullYear(static_cast<int>(f[0]));
        }
        t.year = static_cast<int>(f[0]);
        t.month = static_cast<int>(f[1]);
        t.day = static_cast<int>(f[2]);
        t.hour = static_cast<int>(f[3]);
        t.minute = static_cast<int>(f[4]);
        t.second = sec;
        if (!ok || !t.valid()) {
            report(r.numbers[0], sat + " record: time of clock is not valid: " +
                                     quoteField(l, v3_ ? 4 : 3, 19) + "; record skipped");
            return false;
        }
        return true;
    }

    template <class Rec>
    bool fields(const RawRecord& r, const Field<Rec>* f, int n, const std::string& sat, Rec& rec) {
        for (int i = 0; i < n; ++i) {
            const std::size_t li = lineOf(i), c = colOf(i);
            const std::string& l = r.lines[li];
            double v = 0;
            switch (parseReal(l, c, 19, v)) {
            case FieldStatus::Ok:
                rec.*(f[i].member) = v;
                break;
            case FieldStatus::Blank:
                if (f[i].required) {
                    report(r.numbers[li], sat + " record: " + f[i].name + " is missing; record skipped");
                    return false;
                }
                rec.*(f[i].member) = 0.0;
                rec.blank |= 1u << i;
                break;
            case FieldStatus::Cut:
                report(r.numbers[li], sat + " record: line ends inside " + f[i].name + "; record skipped");
                return false;
            case FieldStatus::Bad:
                report(r.numbers[li], sat + " record: " + f[i].name + " is not a number: " +
                                          quoteField(l, c, 19) + "; record skipped");
                return false;
            }
        }
        return true;
    }

private:
    const std::string& path_;
    Diagnostics& diag_;
    bool v3_;
};

void parseRecord(const RawRecord& r, NavFile& out, Diagnostics& diag) {
    const NavHeader& h = out.header;
    const bool v3 = h.version >= 3.0;
    RecordParser p(out.path, diag, v3);
    const std::string& first = r.lines[0];
    const char sys = v3 ? first[0] : h.system;
    if (!knownSystem(sys)) {
        p.report(r.numbers[0], std::string("unknown satellite system '") + sys + "'; record skipped");
        ++out.badRecords;
        return;
    }
    long prn = 0;
    const FieldStatus ps = v3 ? parseInt(first, 1, 2, prn) : parseInt(first, 0, 2, prn);
    const std::string sat = satName(sys, prn);
    std::string expected;
    if (!lineCountOk(sys, h.version, r.lines.size(), expected)) {
        p.report(r.numbers[0], sat + " record has " + std::to_string(r.lines.size()) +
                                   " lines, expected " + expected + "; record skipped");
        ++out.badRecords;
        return;
    }
    if (systemIndex(sys) < 0) {
        ++out.otherRecords[sys];
        return;
    }
    if (ps != FieldStatus::Ok || prn < 1 || prn > (sys == 'R' ? kMaxGloSlot : 63)) {
        p.report(r.numbers[0], "satellite number is not valid: " + quoteField(first, 0, v3 ? 3 : 2) +
                                   "; record skipped");
        ++out.badRecords;
        return;
    }
    CivilTime t;
    if (!p.time(r, sat, t)) {
        ++out.badRecords;
        return;
    }
    if (sys == 'G') {
        GpsEph e;
        e.prn = static_cast<int>(prn);
        e.toc = t;
        e.tocSec2000 = t.secondsSince2000();
        e.line = r.numbers[0];
        const int n = static_cast<int>(sizeof kGpsFields / sizeof kGpsFields[0]);
        if (p.fields(r, kGpsFields, n, sat, e)) out.gps.push_back(e);
        else ++out.badRecords;
    } else {
        GloEph e;
        e.slot = static_cast<int>(prn);
        e.toc = t;
        e.tocSec2000 = t.secondsSince2000();
        e.line = r.numbers[0];
        e.hasLine5 = r.lines.size() == 5;
        const int n = e.hasLine5 ? static_cast<int>(sizeof kGloFields / sizeof kGloFields[0])
                                 : kGloFieldsPerFourLines;
        if (p.fields(r, kGloFields, n, sat, e)) out.glo.push_back(e);
        else ++out.badRecords;
    }
}

bool blankLine(const std::string& line) { return blankField(line, 0, line.size()); }

bool readRecords(LineSource& src, NavFile& out, Diagnostics& diag) {
    const double version = out.header.version;
    RawRecord r;
    std::string line;
    bool orphan = false;
    bool have = nextLine(src, line, diag);
    while (have) {
        if (blankLine(line) || !navRecordStart(line, version)) {
            if (!blankLine(line) && !orphan)
                diag.add(out.path, src.lineNo(), "line does not start a record; skipped up to the next record");
            orphan = orphan || !blankLine(line);
            have = nextLine(src, line, diag);
            continue;
        }
        orphan = false;
        r.lines.assign(1, line);
        r.numbers.assign(1, src.lineNo());
        while ((have = nextLine(src, line, diag))) {
            if (blankLine(line)) continue;
            if (navRecordStart(line, version)) break;
            r.lines.push_back(line);
            r.numbers.push_back(src.lineNo());
        }
        /* A record the damaged data stops in has its message already. */
        if (!have && src.damaged()) {
            out.badRecords++;
            break;
        }
        parseRecord(r, out, diag);
    }
    return true;
}

}  // namespace

bool readNavFile(const std::string& path, NavFile& out, Diagnostics& diag) {
    out = NavFile();
    out.path = path;
    LineSource src;
    try {
        if (!src.open(path)) {
            diag.add(path, 0, src.error());
            return false;
        }
        if (!readNavHeader(src, out.header, diag)) return false;
        const NavHeader& h = out.header;
        if (h.version < 2.0 || h.version >= 4.0) {
            diag.add(path, 1, "RINEX version " + std::to_string(h.version).substr(0, 4) + " is not supported");
            return false;
        }
        const bool typeOk = h.version >= 3.0 ? h.fileType == 'N' : (h.fileType == 'N' || h.fileType == 'G');
        if (!typeOk) {
            diag.add(path, 1, std::string("not a GPS or GLONASS navigation file (type '") + h.fileType + "')");
            return false;
        }
        return readRecords(src, out, diag);
    } catch (const std::exception& ex) {
        diag.add(path, src.lineNo(), std::string("read failed: ") + ex.what());
        return false;
    }
}

}  // namespace rinex
