/*
 * Navigation file headers. RINEX 2 writes the GPS ionosphere and UTC
 * parameters as ION ALPHA, ION BETA and DELTA-UTC: A0,A1,T,W and the
 * GLONASS time correction as CORR TO SYSTEM TIME; RINEX 3 has one
 * IONOSPHERIC CORR line per parameter set and one TIME SYSTEM CORR line
 * per pair of time scales. Both forms are read whatever the version says,
 * since merged files mix them.
 */
#include "rinex_nav_header.h"

#include <cstring>


namespace rinex {

namespace {

bool knownNavLabel(const std::string& lab) {
    static const char* const labels[] = {
        "RINEX VERSION / TYPE", "PGM / RUN BY / DATE", "COMMENT", "ION ALPHA", "ION BETA",
        "DELTA-UTC: A0,A1,T,W", "LEAP SECONDS", "CORR TO SYSTEM TIME", "IONOSPHERIC CORR",
        "TIME SYSTEM CORR", "END OF HEADER", "MERGED FILE", "DOI", "LICENSE OF USE",
        "STATION INFORMATION"};
    for (const char* l : labels)
        if (lab == l) return true;
    return false;
}

/* Four numbers of 12 columns from `col`: the ionosphere coefficients. */
bool readFour(const std::string& line, std::size_t col, double out[4]) {
    double v[4];
    for (int i = 0; i < 4; ++i)
        if (parseReal(line, col + 12 * i, 12, v[i]) != FieldStatus::Ok) return false;
    std::memcpy(out, v, sizeof v);
    return true;
}

/* The first line of a record, told by its shape: RINEX 3 "G01 2024 ..."
 * (system letter, number, blank, four-digit year), RINEX 2 " 1 24  1 ..."
 * with the point of the seconds in column 21. */
bool looksLikeRecord(const std::string& line, double version) {
    long v = 0;
    if (version >= 3.0)
        return line.size() >= 23 && line[0] >= 'A' && line[0] <= 'Z' && line[3] == ' ' &&
               parseInt(line, 1, 2, v) == FieldStatus::Ok && parseInt(line, 4, 4, v) == FieldStatus::Ok;
    return line.size() >= 22 && line[20] == '.' && parseInt(line, 0, 2, v) == FieldStatus::Ok;
}

}  // namespace

bool navRecordStart(const std::string& line, double version) {
    if (version >= 3.0) return !line.empty() && line[0] != ' ';
    return line.size() > 1 && line[1] != ' ';
}

bool readNavHeader(LineSource& src, NavHeader& h, Diagnostics& diag) {
    auto report = [&](long ln, const std::string& what) { diag.add(src.path(), ln, what); };
    std::string line;
    bool versionSeen = false, anyLine = false, ended = false;
    while (nextLine(src, line, diag)) {
        const long ln = src.lineNo();
        const std::string lab = headerLabel(line);
        if (lab == "END OF HEADER") {
            ended = true;
            break;
        }
        /* A record where the header should go on: the end line is lost. */
        if (versionSeen && !knownNavLabel(lab) && looksLikeRecord(line, h.version)) {
            report(ln, "END OF HEADER missing before the first record");
            src.unget();
            ended = true;
            break;
        }
        const bool first = !anyLine;
        anyLine = true;
        if (lab == "RINEX VERSION / TYPE") {
            /* The one message of a header out of order: lines before
             * the version line are read all the same. */
            if (!first) report(ln, "RINEX VERSION / TYPE is not the first header line");
            versionSeen = true;
            if (parseReal(line, 0, 9, h.version) != FieldStatus::Ok) {
                report(ln, "RINEX version is not a number: " + quoteField(line, 0, 9));
                return false;
            }
            h.fileType = line.size() > 20 ? line[20] : ' ';
            h.system = line.size() > 40 ? line[40] : ' ';
            if (h.version < 3.0) h.system = h.fileType == 'G' ? 'R' : 'G';
            continue;
        }
        if (lab == "ION ALPHA" || lab == "ION BETA") {
            const bool alpha = lab == "ION ALPHA";
            bool ok = readFour(line, 2, alpha ? h.ionAlpha : h.ionBeta);
            (alpha ? h.hasIonAlpha : h.hasIonBeta) = ok;
            if (!ok) report(ln, lab + " is not four numbers");
        } else if (lab == "IONOSPHERIC CORR") {
            const std::string kind = column(line, 0, 4);
            if (kind == "GPSA" || kind == "GPSB") {
                const bool alpha = kind == "GPSA";
                bool ok = readFour(line, 5, alpha ? h.ionAlpha : h.ionBeta);
                (alpha ? h.hasIonAlpha : h.hasIonBeta) = ok;
                if (!ok) report(ln, "IONOSPHERIC CORR " + kind + " is not four numbers");
            }
        } else if (lab == "DELTA-UTC: A0,A1,T,W") {
            TimeCorr c;
            c.present = parseReal(line, 3, 19, c.a0) == FieldStatus::Ok &&
                        parseReal(line, 22, 19, c.a1) == FieldStatus::Ok &&
                        parseInt(line, 41, 9, c.t) == FieldStatus::Ok &&
                        parseInt(line, 50, 9, c.week) == FieldStatus::Ok;
            if (c.present) h.gpsUtc = c;
            else report(ln, "DELTA-UTC: A0,A1,T,W is not two numbers and two integers");
        } else if (lab == "TIME SYSTEM CORR") {
            const std::string kind = column(line, 0, 4);
            TimeCorr* dst = kind == "GPUT" ? &h.gpsUtc : kind == "GLUT" ? &h.gloUtc
                          : kind == "GLGP" ? &h.gloGps : nullptr;
            if (dst) {
                TimeCorr c;
                c.present = parseReal(line, 5, 17, c.a0) == FieldStatus::Ok &&
                            parseReal(line, 22, 16, c.a1) == FieldStatus::Ok &&
                            parseInt(line, 38, 7, c.t) == FieldStatus::Ok &&
                            parseInt(line, 45, 5, c.week) == FieldStatus::Ok;
                if (c.present) *dst = c;
                else report(ln, "TIME SYSTEM CORR " + kind + " is not two numbers and two integers");
            }
        } else if (lab == "CORR TO SYSTEM TIME") {
            long y = 0, m = 0, d = 0;
            double v = 0;
            if (parseInt(line, 0, 6, y) == FieldStatus::Ok && parseInt(line, 6, 6, m) == FieldStatus::Ok &&
                parseInt(line, 12, 6, d) == FieldStatus::Ok && parseReal(line, 21, 19, v) == FieldStatus::Ok) {
                h.hasCorrToSystemTime = true;
                h.corrYear = static_cast<int>(y);
                h.corrMonth = static_cast<int>(m);
                h.corrDay = static_cast<int>(d);
                h.minusTauC = v;
            } else {
                report(ln, "CORR TO SYSTEM TIME is not a date and a number");
            }
        } else if (lab == "LEAP SECONDS") {
            long v = 0;
            if (parseInt(line, 0, 6, v) == FieldStatus::Ok) {
                h.hasLeapSeconds = true;
                h.leapSeconds = static_cast<int>(v);
                long f = 0, w = 0, d = 0;
                if (parseInt(line, 6, 6, f) == FieldStatus::Ok &&
                    parseInt(line, 12, 6, w) == FieldStatus::Ok &&
                    parseInt(line, 18, 6, d) == FieldStatus::Ok) {
                    h.hasLeapFuture = true;
                    h.leapFuture = static_cast<int>(f);
                    h.leapWeek = w;
                    h.leapDay = d;
                }
            } else {
                report(ln, "LEAP SECONDS is not a number: " + quoteField(line, 0, 6));
            }
        } else if (lab.empty()) {
            report(ln, "header line without a label in columns 61-80");
        }
    }
    if (!ended) {
        report(src.lineNo(), "file ends before END OF HEADER");
        return false;
    }
    return true;
}

}  // namespace rinex
