/*
 * Header of the observation files. The header is a list of 80-column
 * lines with their label in columns 61-80; the order of the lines is free
 * except that RINEX VERSION / TYPE comes first and END OF HEADER last,
 * and that long lists go on in continuation lines right after their first
 * line. Labels this reader does not use are passed over.
 */

#include "rinex_obs.h"

namespace rinex {

ObsHeader::ObsHeader() {
    for (int& k : gloFreq) k = kNoGloFreq;
}

int ObsHeader::obsIndex(char sys, const std::string& code) const {
    int s = systemIndex(sys);
    if (s < 0) return -1;
    for (std::size_t i = 0; i < obsTypes[s].size(); ++i)
        if (obsTypes[s][i] == code) return static_cast<int>(i);
    return -1;
}

bool ObsHeader::gloFrequency(int slot, int& k) const {
    if (slot < 1 || slot > kMaxGloSlot || gloFreq[slot] == kNoGloFreq) return false;
    k = gloFreq[slot];
    return true;
}

/* RINEX 2 writes one list of two-character codes for every system:
 * C1 is the C/A code, P1/P2 the P code, C2 the civil L2 code, and L, D, S
 * the phase, Doppler and strength of whichever code the receiver tracked
 * on that band. That last one is not written down, so it is taken from
 * the list: with the C/A (or civil) code on the band, the phase is that
 * signal's, otherwise the P code's. GPS P is "W" in RINEX 3 (it is the
 * encrypted code that receivers track semi-codelessly); GLONASS P is "P".
 * Bands 5 to 8 have no P code and are given the combined "X" tracking. */
std::string rinex3Code(char sys, const std::string& code2, const std::vector<std::string>& all) {
    if (code2.size() != 2) return code2;
    char kind = code2[0], band = code2[1];
    auto has = [&](const char* c) {
        for (const std::string& a : all)
            if (a == c) return true;
        return false;
    };
    const char pAttr = sys == 'R' ? 'P' : 'W';
    char attr = 'X';
    if (band == '1') {
        if (kind == 'P') attr = pAttr;
        else if (kind == 'C') attr = 'C';
        else attr = has("C1") || !has("P1") ? 'C' : pAttr;
    } else if (band == '2') {
        /* GLONASS civil L2 is C/A ("C"); GPS L2C is written "X" here, the
         * combined data+pilot tracking most receivers report. */
        const char civil = sys == 'R' ? 'C' : 'X';
        if (kind == 'P') attr = pAttr;
        else if (kind == 'C') attr = civil;
        else attr = has("P2") || !has("C2") ? pAttr : civil;
    }
    if (kind == 'P') kind = 'C';
    return std::string{kind, band, attr};
}

static bool knownLabel(const std::string& lab) {
    static const char* const labels[] = {
        "RINEX VERSION / TYPE", "PGM / RUN BY / DATE", "COMMENT", "MARKER NAME",
        "MARKER NUMBER", "MARKER TYPE", "OBSERVER / AGENCY", "REC # / TYPE / VERS",
        "ANT # / TYPE", "APPROX POSITION XYZ", "ANTENNA: DELTA H/E/N", "ANTENNA: DELTA X/Y/Z",
        "WAVELENGTH FACT L1/2", "# / TYPES OF OBSERV", "SYS / # / OBS TYPES", "INTERVAL",
        "TIME OF FIRST OBS", "TIME OF LAST OBS", "RCV CLOCK OFFS APPL", "LEAP SECONDS",
        "# OF SATELLITES", "PRN / # OF OBS", "GLONASS SLOT / FRQ #", "END OF HEADER",
        "SIGNAL STRENGTH UNIT", "SYS / PHASE SHIFT", "GLONASS COD/PHS/BIS", "SYS / DCBS APPLIED",
        "SYS / PCVS APPLIED", "SYS / SCALE FACTOR", "ANTENNA: PHASECENTER", "ANTENNA: B.SIGHT XYZ",
        "ANTENNA: ZERODIR AZI", "ANTENNA: ZERODIR XYZ", "CENTER OF MASS: XYZ", "DOI", "LICENSE OF USE",
        "STATION INFORMATION"};
    for (const char* l : labels)
        if (lab == l) return true;
    return false;
}

static bool readXyz(const std::string& line, double out[3]) {
    double v[3];
    for (int i = 0; i < 3; ++i)
        if (parseReal(line, 14 * i, 14, v[i]) != FieldStatus::Ok) return false;
    for (int i = 0; i < 3; ++i) out[i] = v[i];
    return true;
}

static std::string trimRight(std::string s) {
    while (!s.empty() && s.back() == ' ') s.pop_back();
    return s;
}

bool ObsReader::applyHeaderLine(const std::string& line, HeaderState& st) {
    const long ln = src_.lineNo();
    const std::string lab = headerLabel(line);
    const bool first = !st.anyLine;
    st.anyLine = true;
    if (lab == "RINEX VERSION / TYPE") {
        /* The one message of a header out of order: lines before the
         * version line are read all the same. */
        if (!first) report(ln, "RINEX VERSION / TYPE is not the first header line");
        st.versionSeen = true;
        double v = 0;
        if (parseReal(line, 0, 9, v) != FieldStatus::Ok) {
            report(ln, "RINEX version is not a number: " + quoteField(line, 0, 9));
            return false;
        }
        hdr_.version = v;
        hdr_.fileType = line.size() > 20 ? line[20] : ' ';
        hdr_.system = line.size() > 40 && line[40] != ' ' ? line[40] : 'G';
        return true;
    }
    if (lab.empty()) {
        report(ln, "header line without a label in columns 61-80");
        return false;
    }
    if (lab == "MARKER NAME") {
        hdr_.markerName = trimRight(column(line, 0, 60));
    } else if (lab == "APPROX POSITION XYZ") {
        hdr_.hasApproxPos = readXyz(line, hdr_.approxPos);
        if (!hdr_.hasApproxPos) report(ln, "APPROX POSITION XYZ is not three numbers");
    } else if (lab == "ANTENNA: DELTA H/E/N") {
        hdr_.hasAntennaDelta = readXyz(line, hdr_.antennaDeltaHEN);
        if (!hdr_.hasAntennaDelta) report(ln, "ANTENNA: DELTA H/E/N is not three numbers");
    } else if (lab == "# / TYPES OF OBSERV") {
        long n = 0;
        FieldStatus fs = parseInt(line, 0, 6, n);
        if (fs == FieldStatus::Blank) {
            if (st.types2Left <= 0) {
                report(ln, "# / TYPES OF OBSERV continuation line without its first line");
                return false;
            }
        } else if (fs != FieldStatus::Ok || n < 0 || n > 99) {
            report(ln, "number of observation types is not valid: " + quoteField(line, 0, 6));
            return false;
        } else {
            types2_.clear();
            st.types2Left = n;
        }
        for (int k = 0; k < 9 && st.types2Left > 0; ++k, --st.types2Left) {
            std::string c = trimRight(column(line, 10 + 6 * k, 2));
            if (c.size() != 2) {
                report(ln, "observation type " + std::to_string(types2_.size() + 1) + " missing");
                st.types2Left = 0;
                return false;
            }
            types2_.push_back(c);
        }
    } else if (lab == "SYS / # / OBS TYPES") {
        char sys = line.empty() ? ' ' : line[0];
        if (sys == ' ') {
            if (st.types3Left <= 0) {
                report(ln, "SYS / # / OBS TYPES continuation line without its first line");
                return false;
            }
            sys = st.sys3;
        } else {
            long n = 0;
            if (!knownSystem(sys)) {
                report(ln, std::string("unknown satellite system '") + sys + "'");
                st.types3Left = 0;
                return false;
            }
            if (parseInt(line, 3, 3, n) != FieldStatus::Ok || n < 0 || n > 999) {
                report(ln, "number of observation types is not valid: " + quoteField(line, 3, 3));
                st.types3Left = 0;
                return false;
            }
            st.sys3 = sys;
            st.types3Left = n;
            int s = systemIndex(sys);
            if (s >= 0) {
                hdr_.obsTypes[s].clear();
                hdr_.fileObsTypes[s].clear();
            }
        }
        int s = systemIndex(sys);
        for (int k = 0; k < 13 && st.types3Left > 0; ++k, --st.types3Left) {
            std::string c = trimRight(column(line, 7 + 4 * k, 3));
            if (c.size() != 3) {
                report(ln, std::string("observation type missing for system ") + sys);
                st.types3Left = 0;
                return false;
            }
            if (s >= 0) {
                hdr_.obsTypes[s].push_back(c);
                hdr_.fileObsTypes[s].push_back(c);
            }
        }
    } else if (lab == "GLONASS SLOT / FRQ #") {
        for (int k = 0; k < 8; ++k) {
            const std::size_t c = 4 + 7 * k;
            if (blankField(line, c, 6)) continue;
            long slot = 0, f = 0;
            if (column(line, c, 1) != "R" || parseInt(line, c + 1, 2, slot) != FieldStatus::Ok ||
                parseInt(line, c + 4, 2, f) != FieldStatus::Ok || slot < 1 ||
                slot > kMaxGloSlot || f < -7 || f > 12) {
                report(ln, "GLONASS slot and frequency not valid: " + quoteField(line, c, 6));
                continue;
            }
            hdr_.gloFreq[slot] = static_cast<int>(f);
        }
    } else if (lab == "INTERVAL") {
        double v = 0;
        if (parseReal(line, 0, 10, v) == FieldStatus::Ok && v >= 0) {
            hdr_.hasInterval = true;
            hdr_.interval = v;
        } else {
            report(ln, "INTERVAL is not a number: " + quoteField(line, 0, 10));
        }
    } else if (lab == "LEAP SECONDS") {
        long v = 0;
        if (parseInt(line, 0, 6, v) == FieldStatus::Ok) {
            hdr_.hasLeapSeconds = true;
            hdr_.leapSeconds = static_cast<int>(v);
        } else {
            report(ln, "LEAP SECONDS is not a number: " + quoteField(line, 0, 6));
        }
    } else if (lab == "TIME OF FIRST OBS") {
        long f[5];
        double sec = 0;
        bool ok = true;
        for (int i = 0; i < 5; ++i) ok = ok && parseInt(line, 6 * i, 6, f[i]) == FieldStatus::Ok;
        ok = ok && parseReal(line, 30, 13, sec) == FieldStatus::Ok;
        CivilTime t;
        if (ok) {
            t.year = static_cast<int>(f[0]);
            t.month = static_cast<int>(f[1]);
            t.day = static_cast<int>(f[2]);
            t.hour = static_cast<int>(f[3]);
            t.minute = static_cast<int>(f[4]);
            t.second = sec;
        }
        if (!ok || !t.valid()) {
            report(ln, "TIME OF FIRST OBS is not a valid time");
            return false;
        }
        hdr_.hasFirstObs = true;
        hdr_.firstObs = t;
        std::string ts = trimRight(column(line, 48, 3));
        if (!ts.empty()) hdr_.timeSystem = ts;
    }
    return true;
}

void ObsReader::finishHeader() {
    if (hdr_.version < 3.0) {
        for (int s = 0; s < kSystems; ++s) {
            const char sys = s == kGps ? 'G' : 'R';
            hdr_.fileObsTypes[s] = types2_;
            hdr_.obsTypes[s].clear();
            for (const std::string& c : types2_) hdr_.obsTypes[s].push_back(rinex3Code(sys, c, types2_));
        }
    }
    /* Without TIME OF FIRST OBS (optional in RINEX 2), a GLONASS-only file
     * is in GLONASS time and every other file in GPS time. */
    if (hdr_.timeSystem.empty()) hdr_.timeSystem = hdr_.system == 'R' ? "GLO" : "GPS";
}

bool ObsReader::readHeader() {
    HeaderState st;
    std::string line;
    bool ended = false;
    while (takeLine(line)) {
        const std::string lab = headerLabel(line);
        const bool v3 = st.versionSeen && hdr_.version >= 3.0;
        const bool v2 = st.versionSeen && hdr_.version < 3.0;
        const bool data = (!v2 && !line.empty() && line[0] == '>') ||
                          (!v3 && !knownLabel(lab) && looksLikeEpoch2(line));
        if (data && st.anyLine) {
            report(src_.lineNo(), "END OF HEADER missing before the first epoch");
            src_.unget();
            ended = true;
            break;
        }
        if (lab == "END OF HEADER") {
            ended = true;
            break;
        }
        applyHeaderLine(line, st);
    }
    if (!ended) {
        report(src_.lineNo(), "file ends before END OF HEADER");
        return false;
    }
    if (!st.versionSeen) {
        report(0, "no RINEX VERSION / TYPE line: not a RINEX file");
        return false;
    }
    if (hdr_.version < 2.0 || hdr_.version >= 4.0) {
        report(1, "RINEX version " + std::to_string(hdr_.version).substr(0, 4) + " is not supported");
        return false;
    }
    if (hdr_.fileType != 'O') {
        report(1, "not an observation file (type '" + std::string(1, hdr_.fileType) + "')");
        return false;
    }
    finishHeader();
    if (hdr_.obsTypes[kGps].empty() && hdr_.obsTypes[kGlo].empty() &&
        (hdr_.version >= 3.0 || types2_.empty())) {
        report(src_.lineNo(), "no observation types declared for GPS or GLONASS");
        if (hdr_.version < 3.0) return false;
    }
    return true;
}

}  // namespace rinex
