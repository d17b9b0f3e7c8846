/*
 * Seed corpora of the fuzz targets, cut from the recordings in data/:
 *
 *   OUT/log/    runs of one to four consecutive messages of the sample
 *               log, each as a small log file behind the priming byte
 *               (see fuzz_log.cpp), taken every 20 s of the recording
 *               with priming counts 0, 20 and 30;
 *   OUT/rinex/  the header and first records of each RINEX and SP3 file,
 *               plain, and one of them also with CRLF line ends and one
 *               gzipped.
 *
 * Usage: fuzz_seeds DATA_DIR OUT
 */
#include <sys/stat.h>
#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "rinex_lines.h"
#include "zlog.h"

namespace {

bool writeBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return false;
    const bool ok = std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
    return std::fclose(f) == 0 && ok;
}

bool readBytes(const std::string& path, std::vector<uint8_t>& out) {
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) return false;
    out.clear();
    int c;
    while ((c = std::fgetc(f)) != EOF) out.push_back((uint8_t)c);
    std::fclose(f);
    return true;
}

int logSeeds(const std::string& data, const std::string& out) {
    zlog::Reader rd;
    if (!rd.open(data + "/tlse-2024-001/tlse_1200_5min.zlog")) {
        std::fprintf(stderr, "fuzz_seeds: cannot read the sample log\n");
        return -1;
    }
    std::vector<std::vector<uint8_t>> msgs;
    zlog::Record rec;
    while (rd.next(rec)) msgs.push_back(rec.message);

    zlog::FileHeader hdr = rd.header();
    int n = 0;
    const std::string tmp = out + "/log/.tmp";
    for (std::size_t at = 0; at < msgs.size(); at += 20) {
        for (std::size_t count = 1; count <= 4; count += 3) {
            for (uint8_t primeBy : {0, 20, 30}) {
                zlog::Writer w;
                if (!w.open(tmp, hdr)) return -1;
                for (std::size_t k = at; k < at + count && k < msgs.size(); k++) w.write(msgs[k]);
                if (!w.close()) return -1;
                std::vector<uint8_t> bytes;
                if (!readBytes(tmp, bytes)) return -1;
                bytes.insert(bytes.begin(), primeBy);
                char name[64];
                std::snprintf(name, sizeof name, "/log/m%03zu_n%zu_p%u", at, count, primeBy);
                if (!writeBytes(out + name, bytes)) return -1;
                n++;
            }
        }
    }
    std::remove(tmp.c_str());
    return n;
}

/* The header and the first `body` lines after it. */
std::string cut(const std::string& path, int body) {
    rinex::LineSource src(path);
    std::string text, line;
    bool inBody = false;
    while (src.next(line)) {
        text += line + "\n";
        if (inBody && --body <= 0) break;
        if (!inBody && line.find("END OF HEADER") != std::string::npos) inBody = true;
        /* SP3 has no such line: its body starts at the first epoch. */
        if (!inBody && line.compare(0, 2, "* ") == 0) inBody = true;
    }
    return text;
}

int rinexSeeds(const std::string& data, const std::string& out) {
    struct Source {
        const char* file;
        int body;
        const char* name;
    };
    const Source sources[] = {
        {"tlse-2024-001/TLSE00FRA_R_20240011200_05M_01S_MO.rnx.gz", 45, "obs3_1s"},
        {"tlse-2024-001/TLSE00FRA_R_20240011800_01H_30S_MO.rnx.gz", 45, "obs3_30s"},
        {"tlse-2024-001/BRDC00IGS_R_20240010000_01D_MN.rnx.gz", 80, "nav3_mixed"},
        {"orbits-2009-091/brdc0910.09n", 40, "nav2_gps"},
        {"orbits-2009-091/brdc0910.09g", 32, "nav2_glo"},
        {"rawnav/rinex_nav_coldstart.nav", 40, "nav_coldstart"},
        {"orbits-2009-091/esa15253.sp3", 120, "sp3"},
    };
    int n = 0;
    for (const Source& s : sources) {
        const std::string text = cut(data + "/" + s.file, s.body);
        if (text.empty()) {
            std::fprintf(stderr, "fuzz_seeds: cannot read %s\n", s.file);
            return -1;
        }
        if (!writeBytes(out + "/rinex/" + s.name, std::vector<uint8_t>(text.begin(), text.end())))
            return -1;
        n++;
        if (std::string(s.name) == "nav2_gps") {
            std::string crlf;
            for (char c : text) crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
            writeBytes(out + "/rinex/nav2_gps_crlf", std::vector<uint8_t>(crlf.begin(), crlf.end()));
            gzFile g = gzopen((out + "/rinex/nav2_gps_gz").c_str(), "wb");
            if (!g) return -1;
            gzwrite(g, text.data(), (unsigned)text.size());
            gzclose(g);
            n += 2;
        }
    }
    return n;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: fuzz_seeds DATA_DIR OUT\n");
        return 2;
    }
    const std::string data = argv[1], out = argv[2];
    mkdir(out.c_str(), 0755);
    mkdir((out + "/log").c_str(), 0755);
    mkdir((out + "/rinex").c_str(), 0755);
    const int nLog = logSeeds(data, out);
    const int nRinex = rinexSeeds(data, out);
    if (nLog < 0 || nRinex < 0) return 1;
    std::printf("fuzz_seeds: %d log seeds, %d RINEX seeds in %s\n", nLog, nRinex, out.c_str());
    return 0;
}
