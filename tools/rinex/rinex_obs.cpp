/*
 * Epochs of the observation files.
 *
 * RINEX 3 makes resynchronising easy: every epoch starts with '>' and
 * every satellite has one line. RINEX 2 has no marker, so the reader
 * relies on the counts the epoch line announces (satellites, and lines
 * per satellite from the number of observation types, five values to a
 * line) and, when a line is not what the counts promise, looks for the
 * next line shaped like an epoch line (the point of the seconds in
 * column 19, where an observation line never has one).
 */
#include <cmath>
#include <exception>

#include "rinex_obs.h"

namespace rinex {

namespace {

const std::size_t kValueWidth = 14;  /* F14.3, then the LLI and SSI digits */
const std::size_t kObsWidth = 16;

bool blankLine(const std::string& line) { return blankField(line, 0, line.size()); }

bool readTime(const std::string& line, const std::size_t cols[6], std::size_t yearWidth,
              bool twoDigitYear, CivilTime& t) {
    long f[5];
    if (parseInt(line, cols[0], yearWidth, f[0]) != FieldStatus::Ok) return false;
    for (int i = 1; i < 5; ++i)
        if (parseInt(line, cols[i], 2, f[i]) != FieldStatus::Ok) return false;
    double sec = 0;
    if (parseReal(line, cols[5], 11, sec) != FieldStatus::Ok) return false;
    t.year = twoDigitYear ? fullYear(static_cast<int>(f[0])) : static_cast<int>(f[0]);
    t.month = static_cast<int>(f[1]);
    t.day = static_cast<int>(f[2]);
    t.hour = static_cast<int>(f[3]);
    t.minute = static_cast<int>(f[4]);
    t.second = sec;
    return t.valid();
}

void setTime(ObsEpoch& e, const CivilTime& t) {
    e.time = t;
    e.sec2000 = t.secondsSince2000();
    e.fraction = t.second - std::floor(t.second);
}

}  // namespace

/* An epoch line of RINEX 2: " yy mm dd hh mm ss.sssssss  f nnn...", the
 * point of the seconds in column 19, the flag a digit in column 29 (the
 * time may be blank for an event record). */
bool ObsReader::looksLikeEpoch2(const std::string& line) {
    if (line.size() < 29 || line[0] != ' ') return false;
    if (line[28] < '0' || line[28] > '6') return false;
    if (line.size() > 18 && line[18] == '.' && line[2] >= '0' && line[2] <= '9') return true;
    return blankField(line, 0, 28) && line[28] >= '2';
}

void ObsReader::report(long line, const std::string& what) { diag_.add(src_.path(), line, what); }

bool ObsReader::takeLine(std::string& line) { return nextLine(src_, line, diag_); }

bool ObsReader::open(const std::string& path) {
    hdr_ = ObsHeader();
    types2_.clear();
    open_ = haveLast_ = false;
    epochsRead_ = epochsSkipped_ = otherSats_ = events_ = 0;
    try {
        if (!src_.open(path)) {
            report(0, src_.error());
            src_.clearError();
            return false;
        }
        open_ = readHeader();
    } catch (const std::exception& ex) {
        report(src_.lineNo(), std::string("read failed: ") + ex.what());
        open_ = false;
    }
    return open_;
}

bool ObsReader::next(ObsEpoch& epoch) {
    if (!open_) return false;
    try {
        bool got = hdr_.version < 3.0 ? next2(epoch) : next3(epoch);
        if (got) ++epochsRead_;
        else open_ = false;
        return got;
    } catch (const std::exception& ex) {
        report(src_.lineNo(), std::string("read failed: ") + ex.what());
        open_ = false;
        return false;
    }
}

/* Epochs must come in time order; cycle-slip records (flag 6) may repeat
 * the time of the epoch they belong to. */
bool ObsReader::acceptTime(const ObsEpoch& e) {
    if (haveLast_) {
        const double d = static_cast<double>(e.sec2000 - lastSec_) + (e.fraction - lastFrac_);
        const bool ok = e.flag == kEpochCycleSlips ? d > -5e-8 : d > 5e-8;
        if (!ok) {
            report(e.line, "epoch " + e.time.text() + " is not after the previous epoch; skipped");
            return false;
        }
    }
    if (e.flag != kEpochCycleSlips) {
        haveLast_ = true;
        lastSec_ = e.sec2000;
        lastFrac_ = e.fraction;
    }
    return true;
}

/* Event records (flags 2 to 5) carry `count` special lines instead of
 * satellites: for a new site or changed header (3, 4) they are header
 * lines, and they are applied so that later epochs read right. */
bool ObsReader::skipEvent(int flag, long count, long line) {
    ++events_;
    HeaderState st;
    st.anyLine = st.versionSeen = true;
    std::string l;
    for (long i = 0; i < count; ++i) {
        if (!takeLine(l)) {
            if (!src_.damaged()) report(line, "file ends inside the event record");
            return false;
        }
        const bool epochLine = hdr_.version >= 3.0 ? (!l.empty() && l[0] == '>') : looksLikeEpoch2(l);
        if (epochLine) {
            report(line, "event record announces " + std::to_string(count) + " lines but has " +
                             std::to_string(i));
            src_.unget();
            break;
        }
        if (flag == 3 || flag == 4) applyHeaderLine(l, st);
    }
    if (flag == 3 || flag == 4) finishHeader();
    return true;
}

char ObsReader::satSystem(char c) const {
    if (c != ' ') return c;
    /* RINEX 2 allows a blank system letter in single-system files. */
    return hdr_.system == 'R' ? 'R' : 'G';
}

/* `count` values from column `col` into the values of `sat` from
 * `firstValue` on; false (reported) when the satellite must be skipped. */
bool ObsReader::readSatValues(const std::string& line, std::size_t col, std::size_t count,
                              std::size_t firstValue, SatObs& sat) {
    const std::vector<std::string>& codes = hdr_.obsTypes[systemIndex(sat.sys)];
    for (std::size_t k = 0; k < count; ++k) {
        const std::size_t c = col + kObsWidth * k;
        ObsValue& v = sat.values[firstValue + k];
        const std::string& code = codes[firstValue + k];
        FieldStatus fs = parseReal(line, c, kValueWidth, v.value);
        if (fs == FieldStatus::Cut) {
            report(src_.lineNo(), "line ends inside observation " + code + " of " +
                                      satName(sat.sys, sat.prn) + "; satellite skipped");
            return false;
        }
        if (fs == FieldStatus::Bad) {
            report(src_.lineNo(), "observation " + code + " of " + satName(sat.sys, sat.prn) +
                                      " is not a number: " + quoteField(line, c, kValueWidth) +
                                      "; satellite skipped");
            return false;
        }
        v.present = fs == FieldStatus::Ok;
        if (!v.present) v.value = 0.0;
        for (int i = 0; i < 2; ++i) {
            const std::size_t cc = c + kValueWidth + i;
            const char ch = cc < line.size() ? line[cc] : ' ';
            uint8_t d = 0;
            if (ch >= '0' && ch <= '9') {
                d = static_cast<uint8_t>(ch - '0');
            } else if (ch != ' ') {
                report(src_.lineNo(), std::string(i == 0 ? "loss-of-lock indicator" : "signal strength") +
                                          " of " + code + " of " + satName(sat.sys, sat.prn) +
                                          " is not a digit; satellite skipped");
                return false;
            }
            (i == 0 ? v.lli : v.ssi) = d;
        }
    }
    return true;
}

bool ObsReader::next3(ObsEpoch& epoch) {
    static const std::size_t tcols[6] = {2, 7, 10, 13, 16, 18};
    std::string line;
    bool skipping = false;
    for (;;) {
        if (!takeLine(line)) return false;
        if (blankLine(line)) continue;
        const long eln = src_.lineNo();
        if (line[0] != '>') {
            if (!skipping) report(eln, "expected an epoch line starting with '>'; skipped up to the next one");
            skipping = true;
            continue;
        }
        skipping = false;
        long flag = 0, n = 0;
        if (parseInt(line, 31, 1, flag) != FieldStatus::Ok || flag < 0 || flag > 6 ||
            parseInt(line, 32, 3, n) != FieldStatus::Ok || n < 0) {
            report(eln, "epoch line has no valid flag and satellite count; skipped");
            ++epochsSkipped_;
            skipping = true;
            continue;
        }
        if (flag >= 2 && flag <= 5) {
            skipEvent(static_cast<int>(flag), n, eln);
            continue;
        }
        epoch = ObsEpoch();
        epoch.line = eln;
        epoch.flag = static_cast<int>(flag);
        CivilTime t;
        const bool timeOk = readTime(line, tcols, 4, false, t);
        if (!timeOk) report(eln, "epoch time is not valid: " + quoteField(line, 2, 27) + "; epoch skipped");
        else setTime(epoch, t);
        FieldStatus cs = parseReal(line, 41, 15, epoch.clockOffset);
        epoch.hasClockOffset = cs == FieldStatus::Ok;
        if (cs == FieldStatus::Bad || cs == FieldStatus::Cut) {
            report(eln, "receiver clock offset is not a number: " + quoteField(line, 41, 15));
            epoch.clockOffset = 0.0;
        }

        bool complete = true;
        for (long i = 0; i < n; ++i) {
            if (!takeLine(line)) {
                if (!src_.damaged()) report(eln, "file ends inside the epoch (" + std::to_string(i) + " of " +
                                std::to_string(n) + " satellites); epoch skipped");
                ++epochsSkipped_;
                return false;
            }
            const long ln = src_.lineNo();
            if (!line.empty() && line[0] == '>') {
                report(eln, "epoch announces " + std::to_string(n) + " satellites but has " +
                                std::to_string(i) + "; epoch skipped");
                src_.unget();
                complete = false;
                break;
            }
            const char sc = line.empty() ? ' ' : line[0];
            if (!knownSystem(sc)) {
                report(ln, std::string("unknown satellite system '") + sc + "'; satellite skipped");
                continue;
            }
            const int s = systemIndex(sc);
            if (s < 0) {
                ++epoch.otherSystems;
                continue;
            }
            long prn = 0;
            if (parseInt(line, 1, 2, prn) != FieldStatus::Ok || prn < 1 ||
                prn > (s == kGlo ? kMaxGloSlot : 99)) {
                report(ln, "satellite number not valid: " + quoteField(line, 0, 3) + "; satellite skipped");
                continue;
            }
            const std::size_t nt = hdr_.obsTypes[s].size();
            if (nt == 0) {
                report(ln, std::string("no observation types declared for system ") + sc +
                               "; satellite skipped");
                continue;
            }
            SatObs sat;
            sat.sys = sc;
            sat.prn = static_cast<int>(prn);
            sat.values.assign(nt, ObsValue());
            if (readSatValues(line, 3, nt, 0, sat)) epoch.sats.push_back(std::move(sat));
        }
        if (!complete || !timeOk) {
            ++epochsSkipped_;
            continue;
        }
        if (!acceptTime(epoch)) {
            ++epochsSkipped_;
            continue;
        }
        otherSats_ += epoch.otherSystems;
        return true;
    }
}

bool ObsReader::next2(ObsEpoch& epoch) {
    static const std::size_t tcols[6] = {1, 4, 7, 10, 13, 15};
    std::string line;
    bool skipping = false;
    std::vector<std::pair<char, long>> list;
    for (;;) {
        if (!takeLine(line)) return false;
        if (blankLine(line)) continue;
        const long eln = src_.lineNo();
        if (!looksLikeEpoch2(line)) {
            if (!skipping) report(eln, "expected an epoch line; skipped up to the next one");
            skipping = true;
            continue;
        }
        skipping = false;
        long flag = line[28] - '0', n = 0;
        if (parseInt(line, 29, 3, n) != FieldStatus::Ok || n < 0) {
            report(eln, "epoch line has no valid satellite count; skipped");
            ++epochsSkipped_;
            skipping = true;
            continue;
        }
        if (flag >= 2 && flag <= 5) {
            skipEvent(static_cast<int>(flag), n, eln);
            continue;
        }
        /* Five values to a line; an event may have changed the list. */
        const std::size_t nt = types2_.size();
        const long linesPerSat = nt == 0 ? 1 : static_cast<long>((nt + 4) / 5);
        epoch = ObsEpoch();
        epoch.line = eln;
        epoch.flag = static_cast<int>(flag);
        CivilTime t;
        const bool timeOk = readTime(line, tcols, 2, true, t);
        if (!timeOk) report(eln, "epoch time is not valid: " + quoteField(line, 1, 25) + "; epoch skipped");
        else setTime(epoch, t);
        FieldStatus cs = parseReal(line, 68, 12, epoch.clockOffset);
        epoch.hasClockOffset = cs == FieldStatus::Ok;
        if (cs == FieldStatus::Bad || cs == FieldStatus::Cut) {
            report(eln, "receiver clock offset is not a number: " + quoteField(line, 68, 12));
            epoch.clockOffset = 0.0;
        }

        /* The satellite list: twelve to a line, continued on lines blank
         * up to column 32. */
        list.clear();
        bool complete = true;
        for (long k = 0; k < n; ++k) {
            if (k > 0 && k % 12 == 0) {
                if (!takeLine(line)) {
                    if (!src_.damaged()) report(eln, "file ends inside the epoch's satellite list; epoch skipped");
                    ++epochsSkipped_;
                    return false;
                }
                if (!blankField(line, 0, 32)) {
                    report(src_.lineNo(), "satellite list continuation line expected; epoch skipped");
                    src_.unget();
                    complete = false;
                    break;
                }
            }
            const std::size_t c = 32 + 3 * static_cast<std::size_t>(k % 12);
            long prn = 0;
            char sc = satSystem(c < line.size() ? line[c] : ' ');
            if (parseInt(line, c + 1, 2, prn) != FieldStatus::Ok || prn < 1) sc = 0;
            list.emplace_back(sc, prn);
        }
        if (!complete) {
            ++epochsSkipped_;
            skipping = true;
            continue;
        }

        for (long k = 0; k < n && complete; ++k) {
            const char sc = list[k].first;
            const long prn = list[k].second;
            const int s = systemIndex(sc);
            SatObs sat;
            sat.sys = sc;
            sat.prn = static_cast<int>(prn);
            if (s >= 0) sat.values.assign(nt, ObsValue());
            bool bad = false;
            if (sc == 0) {
                report(eln, "satellite " + std::to_string(k + 1) + " of the list is not valid: " +
                                quoteField(line, 32 + 3 * (k % 12), 3) + "; satellite skipped");
                bad = true;
            } else if (!knownSystem(sc)) {
                report(eln, std::string("unknown satellite system '") + sc + "'; satellite skipped");
                bad = true;
            } else if (s < 0) {
                ++epoch.otherSystems;
                bad = true;
            } else if (s == kGlo && prn > kMaxGloSlot) {
                report(eln, "GLONASS slot " + std::to_string(prn) + " not valid; satellite skipped");
                bad = true;
            }
            for (long j = 0; j < linesPerSat; ++j) {
                if (!takeLine(line)) {
                    if (!src_.damaged()) report(eln, "file ends inside the epoch; epoch skipped");
                    ++epochsSkipped_;
                    return false;
                }
                if (looksLikeEpoch2(line)) {
                    report(src_.lineNo(), "epoch of line " + std::to_string(eln) +
                                              " ends early (an epoch line comes before its records end); epoch skipped");
                    src_.unget();
                    complete = false;
                    break;
                }
                if (bad) continue;
                const std::size_t first = static_cast<std::size_t>(j) * 5;
                const std::size_t count = nt - first < 5 ? nt - first : 5;
                bad = !readSatValues(line, 0, count, first, sat);
            }
            if (!bad && complete) epoch.sats.push_back(std::move(sat));
        }
        if (!complete || !timeOk) {
            ++epochsSkipped_;
            continue;
        }
        if (!acceptTime(epoch)) {
            ++epochsSkipped_;
            continue;
        }
        otherSats_ += epoch.otherSystems;
        return true;
    }
}

bool readObsFile(const std::string& path, ObsHeader& header, std::vector<ObsEpoch>& epochs,
                 Diagnostics& diag) {
    ObsReader r(diag);
    epochs.clear();
    if (!r.open(path)) return false;
    header = r.header();
    ObsEpoch e;
    while (r.next(e)) epochs.push_back(e);
    header = r.header();
    return true;
}

}  // namespace rinex
