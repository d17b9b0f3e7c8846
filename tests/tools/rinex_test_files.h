/*
 * Small files for the reader tests: a scratch folder per test, text
 * written as given (so line ends and damage are exactly what the test
 * says), optionally gzipped.
 */
#ifndef ZELNAV_TESTS_RINEX_TEST_FILES_H
#define ZELNAV_TESTS_RINEX_TEST_FILES_H

#include <gtest/gtest.h>
#include <stdlib.h>
#include <zlib.h>

#include <cstdio>
#include <string>
#include <vector>

namespace rinextest {

inline std::string dataPath(const std::string& rel) { return std::string(ZELNAV_DATA_DIR) + "/" + rel; }

class ScratchDir {
public:
    ScratchDir() {
        std::string tmpl = ::testing::TempDir() + "zelnav_rinex_XXXXXX";
        std::vector<char> buf(tmpl.begin(), tmpl.end());
        buf.push_back('\0');
        const char* d = mkdtemp(buf.data());
        path_ = d ? d : ::testing::TempDir();
    }
    ~ScratchDir() {
        for (const std::string& f : files_) std::remove(f.c_str());
        std::remove(path_.c_str());
    }
    std::string file(const std::string& name) {
        files_.push_back(path_ + "/" + name);
        return files_.back();
    }
    std::string write(const std::string& name, const std::string& text) {
        std::string p = file(name);
        std::FILE* f = std::fopen(p.c_str(), "wb");
        EXPECT_TRUE(f != nullptr) << p;
        if (f) {
            std::fwrite(text.data(), 1, text.size(), f);
            std::fclose(f);
        }
        return p;
    }
    std::string writeGz(const std::string& name, const std::string& text) {
        std::string p = file(name);
        gzFile g = gzopen(p.c_str(), "wb");
        EXPECT_TRUE(g != nullptr) << p;
        if (g) {
            gzwrite(g, text.data(), static_cast<unsigned>(text.size()));
            gzclose(g);
        }
        return p;
    }
    const std::string& path() const { return path_; }

private:
    std::string path_;
    std::vector<std::string> files_;
};

/* Lines joined with `eol` after each. */
inline std::string joinLines(const std::vector<std::string>& lines, const char* eol = "\n") {
    std::string s;
    for (const std::string& l : lines) s += l + eol;
    return s;
}

/* A header line: content padded to column 60, then the label. */
inline std::string hline(const std::string& content, const std::string& label) {
    std::string s = content;
    s.resize(60, ' ');
    return s + label;
}

/* Contents of a file, for damaging it byte by byte. */
inline std::string slurp(const std::string& path) {
    std::string s;
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) return s;
    char buf[4096];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) s.append(buf, n);
    std::fclose(f);
    return s;
}

}  // namespace rinextest

#endif
