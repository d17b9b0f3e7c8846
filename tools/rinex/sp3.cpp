/*
 * SP3-c and SP3-d reader. The file is a fixed-column text format:
 *
 *   #cP2009  4  1  0  0  0.00000000      96 ORBIT IGS05 BHN ESOC
 *   ## 1525 259200.00000000   900.00000000 54922 0.0000000000000
 *   +   48   G32G24G25...          satellite list, 17 per line
 *   ++         5  5  6...          accuracy exponents (skipped)
 *   %c M  cc GPS ccc ...           file type and time system
 *   %f / %i                        base numbers (skipped)
 *   comment lines (slash, star)    skipped
 *   *  2009  4  1  0  0  0.00000000          epoch
 *   PG32  -8588.723867 -20090.643282  15669.151907    280.381686
 *   VG32  ...                      velocity (dm/s) and clock rate
 *   EP / EV                        correlation records (skipped)
 *   EOF
 *
 * SP3-d lets the satellite count take three digits and the comment and
 * list lines run on; the columns read here are the same in both.
 */
#include "sp3.h"

#include <cstdlib>

#include "rinex_lines.h"

namespace rinex {

namespace {

/* Position 0, 0, 0 and clock 999999.999999 mark missing values. */
const double kBadClock = 999999.0;

bool startsWith(const std::string& s, const char* p) {
    return s.compare(0, std::char_traits<char>::length(p), p) == 0;
}

std::string trimmed(const std::string& s) {
    std::size_t b = s.find_first_not_of(' ');
    if (b == std::string::npos) return std::string();
    std::size_t e = s.find_last_not_of(' ');
    return s.substr(b, e - b + 1);
}

/* Satellite identifier "G01", " 1" (old files: GPS), "R04". */
bool parseSatId(const std::string& id, char& sys, int& prn) {
    if (id.size() != 3) return false;
    sys = id[0] == ' ' ? 'G' : id[0];
    if (sys < 'A' || sys > 'Z') return false;
    long v;
    if (parseInt(id, 1, 2, v) != FieldStatus::Ok || v < 0) return false;
    prn = (int)v;
    return true;
}

/* Calendar time in columns 3.. of the first header line or of an epoch
 * line: year 4 digits, month, day, hour, minute 2 digits each, seconds. */
bool parseTime(const std::string& line, std::size_t col, CivilTime& t) {
    long y, mo, d, h, mi;
    double s;
    if (parseInt(line, col, 4, y) != FieldStatus::Ok ||
        parseInt(line, col + 5, 2, mo) != FieldStatus::Ok ||
        parseInt(line, col + 8, 2, d) != FieldStatus::Ok ||
        parseInt(line, col + 11, 2, h) != FieldStatus::Ok ||
        parseInt(line, col + 14, 2, mi) != FieldStatus::Ok ||
        parseReal(line, col + 17, 11, s) != FieldStatus::Ok)
        return false;
    t.year = (int)y;
    t.month = (int)mo;
    t.day = (int)d;
    t.hour = (int)h;
    t.minute = (int)mi;
    t.second = s;
    return t.valid();
}

class Reader {
public:
    Reader(LineSource& src, Sp3File& out, Diagnostics& diag)
        : src_(src), out_(out), diag_(diag) {}

    bool header();
    void body();

private:
    void report(const std::string& what) {
        diag_.add(out_.path, src_.lineNo(), what);
    }
    bool satLine(const std::string& line, Sp3Epoch& ep);
    void velLine(const std::string& line, Sp3Epoch& ep);

    LineSource& src_;
    Sp3File& out_;
    Diagnostics& diag_;
};

bool Reader::header() {
    std::string line;
    if (!src_.next(line)) {
        diag_.add(out_.path, 0, "empty file");
        return false;
    }
    if (line.size() < 3 || line[0] != '#' || (line[1] != 'c' && line[1] != 'd')) {
        report("not an SP3-c or SP3-d file: " + quoteField(line, 0, 2));
        return false;
    }
    out_.version = line[1];
    out_.posVel = line[2];
    if (out_.posVel != 'P' && out_.posVel != 'V') {
        report("position/velocity flag is neither P nor V: " + quoteField(line, 2, 1));
        return false;
    }
    CivilTime first;
    if (!parseTime(line, 3, first)) {
        report("bad start time " + quoteField(line, 3, 28));
        return false;
    }
    long n;
    if (parseInt(line, 32, 7, n) != FieldStatus::Ok || n < 0) {
        report("bad number of epochs " + quoteField(line, 32, 7));
        return false;
    }
    out_.numEpochs = (int)n;
    out_.coordSys = trimmed(column(line, 46, 5));
    out_.agency = trimmed(column(line, 56, 4));

    if (!src_.next(line) || !startsWith(line, "##")) {
        report("second header line (##) missing");
        return false;
    }
    long week;
    if (parseInt(line, 3, 4, week) != FieldStatus::Ok ||
        parseReal(line, 8, 15, out_.weekSeconds) != FieldStatus::Ok ||
        parseReal(line, 24, 14, out_.interval) != FieldStatus::Ok) {
        report("bad GPS week, seconds or interval");
        return false;
    }
    out_.gpsWeek = (int)week;

    /* The rest of the header, up to the first epoch line. */
    std::size_t announced = 0;
    bool haveCount = false, haveTimeSys = false;
    while (src_.next(line)) {
        if (startsWith(line, "* ")) {
            src_.unget();
            break;
        }
        if (startsWith(line, "++")) continue;
        if (startsWith(line, "+")) {
            if (!haveCount) {
                long k;
                if (parseInt(line, 3, 3, k) != FieldStatus::Ok || k < 0) {
                    report("bad number of satellites " + quoteField(line, 3, 3));
                    return false;
                }
                announced = (std::size_t)k;
                haveCount = true;
            }
            /* Seventeen identifiers per line, in columns 10-60. */
            for (std::size_t c = 9; c < 9 + 17 * 3 && c + 3 <= line.size() &&
                                    out_.satIds.size() < announced;
                 c += 3) {
                std::string id = line.substr(c, 3);
                char sys;
                int prn;
                if (!parseSatId(id, sys, prn)) {
                    report("bad satellite identifier " + quoteField(line, c, 3));
                    continue;
                }
                if (prn == 0) continue;  /* padding */
                out_.satIds.push_back(std::string(1, sys) + id.substr(1));
            }
            continue;
        }
        if (startsWith(line, "%c") && !haveTimeSys) {
            out_.timeSystem = trimmed(column(line, 9, 3));
            if (out_.timeSystem.empty() || out_.timeSystem == "ccc") out_.timeSystem = "GPS";
            haveTimeSys = true;
            continue;
        }
        /* %f, %i, comments and anything else of the header. */
    }
    if (!src_.error().empty()) {
        report(src_.error());
        return false;
    }
    if (out_.timeSystem.empty()) out_.timeSystem = "GPS";
    if (out_.satIds.size() != announced)
        report("satellite list has " + std::to_string(out_.satIds.size()) +
               " entries, the header announces " + std::to_string(announced));
    return true;
}

bool Reader::satLine(const std::string& line, Sp3Epoch& ep) {
    Sp3Sat s;
    if (!parseSatId(column(line, 1, 3), s.sys, s.prn)) {
        report("bad satellite identifier " + quoteField(line, 1, 3));
        return false;
    }
    for (int k = 0; k < 3; k++) {
        if (parseReal(line, 4 + 14 * k, 14, s.pos[k]) != FieldStatus::Ok) {
            report("bad coordinate " + quoteField(line, 4 + 14 * k, 14));
            return false;
        }
    }
    s.hasPos = !(s.pos[0] == 0.0 && s.pos[1] == 0.0 && s.pos[2] == 0.0);
    double clk;
    FieldStatus st = parseReal(line, 46, 14, clk);
    if (st == FieldStatus::Ok) {
        s.hasClk = clk < kBadClock;
        s.clk = s.hasClk ? clk : 0.0;
    } else if (st != FieldStatus::Blank) {
        report("bad clock " + quoteField(line, 46, 14));
    }
    ep.sats.push_back(s);
    return true;
}

/* A velocity line belongs to the position line of the same satellite
 * just before it. */
void Reader::velLine(const std::string& line, Sp3Epoch& ep) {
    char sys;
    int prn;
    if (!parseSatId(column(line, 1, 3), sys, prn) || ep.sats.empty() ||
        ep.sats.back().sys != sys || ep.sats.back().prn != prn) {
        report("velocity record without its position record");
        return;
    }
    Sp3Sat& s = ep.sats.back();
    double v[3];
    for (int k = 0; k < 3; k++) {
        if (parseReal(line, 4 + 14 * k, 14, v[k]) != FieldStatus::Ok) {
            report("bad velocity " + quoteField(line, 4 + 14 * k, 14));
            return;
        }
    }
    for (int k = 0; k < 3; k++) s.vel[k] = v[k];
    s.hasVel = true;
    double r;
    if (parseReal(line, 46, 14, r) == FieldStatus::Ok && r < kBadClock) s.clkRate = r;
}

void Reader::body() {
    std::string line;
    Sp3Epoch* ep = nullptr;
    bool skipEpoch = false;
    while (src_.next(line)) {
        if (startsWith(line, "EOF")) break;
        if (startsWith(line, "* ")) {
            CivilTime t;
            if (!parseTime(line, 3, t)) {
                report("bad epoch time " + quoteField(line, 3, 28) + "; epoch skipped");
                skipEpoch = true;
                ep = nullptr;
                continue;
            }
            skipEpoch = false;
            out_.epochs.emplace_back();
            ep = &out_.epochs.back();
            ep->time = t;
            ep->sec2000 = t.secondsSince2000();
            continue;
        }
        if (startsWith(line, "EP") || startsWith(line, "EV")) continue;
        if (line.empty()) continue;
        if (line[0] == 'P' || line[0] == 'V') {
            if (skipEpoch) continue;
            if (ep == nullptr) {
                report("satellite record before the first epoch");
                continue;
            }
            if (line[0] == 'P') satLine(line, *ep);
            else velLine(line, *ep);
            continue;
        }
        report("unexpected line " + quoteField(line, 0, 10));
    }
    if (!src_.error().empty()) report(src_.error());
    if (out_.numEpochs != 0 && (std::size_t)out_.numEpochs != out_.epochs.size())
        diag_.add(out_.path, 0,
                  "header announces " + std::to_string(out_.numEpochs) +
                      " epochs, the file has " + std::to_string(out_.epochs.size()));
}

}  // namespace

const Sp3Sat* Sp3File::find(std::size_t k, char sys, int prn) const {
    if (k >= epochs.size()) return nullptr;
    for (const Sp3Sat& s : epochs[k].sats)
        if (s.sys == sys && s.prn == prn) return &s;
    return nullptr;
}

bool readSp3(const std::string& path, Sp3File& out, Diagnostics& diag) {
    out = Sp3File();
    out.path = path;
    LineSource src;
    if (!src.open(path)) {
        diag.add(path, 0, src.error());
        return false;
    }
    Reader r(src, out, diag);
    if (!r.header()) return false;
    r.body();
    return true;
}

}  // namespace rinex
