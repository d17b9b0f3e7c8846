/*
 * One kind of damage at a time, through the whole conversion: the first
 * six seconds of the TLSE recording and the day's navigation file, each
 * damaged one way. Every case must say exactly what it expects, naming the
 * file and line, finish the conversion, and give messages the check
 * accepts; undamaged variants of the files (CRLF line ends, gzip) must
 * give the very same messages as the original.
 */
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "convert_fixture.h"
#include "rinex_lines.h"
#include "rinex_test_files.h"
#include "x0ccheck.h"

namespace {

using Lines = std::vector<std::string>;

Lines readLines(const std::string& path) {
    rinex::LineSource src(path);
    Lines lines;
    std::string l;
    while (src.next(l)) lines.push_back(l);
    return lines;
}

std::string join(const Lines& lines, const char* end = "\n") {
    std::string s;
    for (const std::string& l : lines) s += l + end;
    return s;
}

std::size_t find(const Lines& l, const std::string& start, std::size_t from = 0) {
    for (std::size_t i = from; i < l.size(); i++)
        if (l[i].compare(0, start.size(), start) == 0) return i;
    ADD_FAILURE() << "no line starts with " << start;
    return 0;
}

struct Case {
    const char* name;
    bool nav;                            /* the navigation file is damaged, else the observations */
    /* Damages the lines; returns the 0-based line the message must name
     * (-1: no message), and may set the file's form. */
    std::function<long(Lines&)> damage;
    const char* what;                    /* part of the one message */
    std::size_t messages;                /* messages of the conversion */
    enum Form { kPlain, kCrlf, kGzip, kGzipCut } form = kPlain;
};

TEST(ConvertDamage, EachDamageIsOneMessageAtItsLineAndTheConversionGoesOn) {
    Lines obs = readLines(convtest::dataPath(convtest::kObs1s));
    std::size_t end = 0;
    while (obs[end].find("END OF HEADER") == std::string::npos) end++;
    obs.resize(end + 1 + 6 * 20);   /* six epochs of 19 satellites */
    auto epoch = [&](int k) { return (long)(end + 1 + (std::size_t)k * 20); };
    const Lines nav = readLines(convtest::dataPath(convtest::kNav));
    std::size_t navEnd = 0;
    while (nav[navEnd].find("END OF HEADER") == std::string::npos) navEnd++;

    const std::vector<Case> cases = {
        {"intact", false, [](Lines&) { return -1L; }, "", 6},
        {"crlf", false, [](Lines&) { return -1L; }, "", 6, Case::kCrlf},
        {"gzip", false, [](Lines&) { return -1L; }, "", 6, Case::kGzip},
        {"nav_crlf", true, [](Lines&) { return -1L; }, "", 6, Case::kCrlf},
        {"letters_in_value", false,
         [&](Lines& l) {
             l[epoch(2) + 3].replace(8, 3, "x1y");
             return epoch(2) + 3;
         },
         "is not a number", 6},
        {"line_cut", false,
         [&](Lines& l) {
             l[epoch(4) + 5].resize(12);   /* inside the first value */
             return epoch(4) + 5;
         },
         "line ends inside observation", 6},
        {"header_order", false,
         [](Lines& l) {
             std::swap(l[0], l[1]);
             return 1L;
         },
         "RINEX VERSION / TYPE is not the first header line", 6},
        {"no_end_of_header", false,
         [&](Lines& l) {
             l.erase(l.begin() + (long)end);
             return (long)end;
         },
         "END OF HEADER missing", 6},
        {"epoch_back_in_time", false,
         [&](Lines& l) {
             l[epoch(4)] = l[epoch(1)];
             return epoch(4);
         },
         "is not after the previous epoch; skipped", 6},
        {"gzip_cut", false, [&](Lines&) { return -2L; }, "compressed data ends unexpectedly", 0, Case::kGzipCut},
        {"nav_letters", true,
         [&](Lines& l) {
             const std::size_t g = find(l, "G12", navEnd) + 2;
             l[g].replace(10, 3, "abc");
             return (long)g;
         },
         "is not a number", 6},
        {"nav_unknown_system", true,
         [&](Lines& l) {
             const std::size_t g = find(l, "G12", navEnd);
             l[g][0] = 'X';
             return (long)g;
         },
         "unknown satellite system 'X'; record skipped", 6},
        {"nav_line_lost", true,
         [&](Lines& l) {
             /* A five-line record of RINEX 3.05 that loses its second
              * line: its last line, all but blank, comes where Z is. */
             const std::size_t g = find(l, "R03", navEnd);
             l.erase(l.begin() + (long)g + 1);
             return (long)g + 3;
         },
         "R03 record: Z is missing; record skipped", 6},
        {"nav_no_end_of_header", true,
         [&](Lines& l) {
             l.erase(l.begin() + (long)navEnd);
             return (long)navEnd;
         },
         "END OF HEADER missing", 6},
    };

    rinextest::ScratchDir dir;
    std::vector<std::vector<uint8_t>> intact;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Lines lines = c.nav ? nav : obs;
        long line = c.damage(lines);
        const std::string name = std::string(c.name) + (c.nav ? ".nav" : ".obs");
        std::string path;
        switch (c.form) {
        case Case::kPlain: path = dir.write(name, join(lines)); break;
        case Case::kCrlf: path = dir.write(name, join(lines, "\r\n")); break;
        case Case::kGzip: path = dir.writeGz(name + ".gz", join(lines)); break;
        case Case::kGzipCut: {
            const std::string whole = rinextest::slurp(dir.writeGz(name + ".whole.gz", join(lines)));
            path = dir.write(name + ".gz", whole.substr(0, whole.size() * 2 / 3));
            break;
        }
        }
        const std::string obsPath = c.nav ? dir.write("obs_for_" + name, join(obs)) : path;
        std::vector<std::string> navs = {c.nav ? path : convtest::dataPath(convtest::kNav)};
        auto conv = convtest::convert(obsPath, navs);

        EXPECT_TRUE(conv->ok);
        if (line == -1) {
            EXPECT_TRUE(conv->diag.empty()) << conv->diag.list()[0].text();
        } else {
            std::string all;
            for (const rinex::Diagnostic& d : conv->diag.list()) all += d.text() + "\n";
            ASSERT_EQ(conv->diag.count(), 1u) << all;
            const rinex::Diagnostic& d = conv->diag.list()[0];
            EXPECT_EQ(d.file, path);
            if (line >= 0) EXPECT_EQ(d.line, line + 1);
            else EXPECT_GT(d.line, (long)end + 1);
            EXPECT_NE(d.what.find(c.what), std::string::npos) << d.text();
        }
        if (c.form == Case::kGzipCut) {
            EXPECT_FALSE(conv->msgs.empty());
        } else {
            EXPECT_EQ(conv->msgs.size(), c.messages);
        }
        for (const convtest::Message& m : conv->msgs) {
            const x0ccheck::Result r = x0ccheck::check(m.bytes.data(), m.bytes.size());
            EXPECT_TRUE(r.ok()) << x0ccheck::describe(r);
        }
        if (std::string(c.name) == "intact") {
            for (const convtest::Message& m : conv->msgs) intact.push_back(m.bytes);
        } else if (line == -1) {
            ASSERT_EQ(conv->msgs.size(), intact.size());
            for (std::size_t i = 0; i < intact.size(); i++) EXPECT_EQ(conv->msgs[i].bytes, intact[i]) << i;
        }
    }
}

}  // namespace
