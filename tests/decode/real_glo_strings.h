/* The real GLONASS CT strings of data/rawnav, as the 11 bytes a message
 * carries them in (check bits in the last byte). */
#ifndef ZELNAV_TESTS_REAL_GLO_STRINGS_H
#define ZELNAV_TESTS_REAL_GLO_STRINGS_H

#include <array>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

struct RealGloString {
    std::array<unsigned char, 11> bytes;
    unsigned int number; /* as the file lists it */
    unsigned int slot;
    int week;            /* GPS week and second of the report */
    double tow;
    int letter;          /* frequency letter k, -7..+6 */
    std::string signal;  /* "L1OF" or "L2OF" */
};

/* The strings of one file of data/rawnav, in file order. */
inline std::vector<RealGloString> loadRealGloStringsFile(const char* f) {
    std::vector<RealGloString> out;
    std::ifstream in(std::string(ZELNAV_DATA_DIR) + "/rawnav/" + f);
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream ls(line);
        std::string hex, ok;
        RealGloString s{};
        ls >> s.week >> s.tow >> s.slot >> s.letter >> s.number >> hex >> ok >>
            s.signal;
        if (hex.size() != 22) continue;
        for (int i = 0; i < 11; i++)
            s.bytes[i] = (unsigned char)std::strtoul(
                hex.substr(2 * i, 2).c_str(), nullptr, 16);
        out.push_back(s);
    }
    return out;
}

inline std::vector<RealGloString> loadRealGloStrings() {
    std::vector<RealGloString> out = loadRealGloStringsFile("glo_strings_sbf_log0000.txt");
    std::vector<RealGloString> u = loadRealGloStringsFile("glo_strings_ubx_testobsnav.txt");
    out.insert(out.end(), u.begin(), u.end());
    return out;
}

#endif
