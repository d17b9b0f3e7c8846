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
};

inline std::vector<RealGloString> loadRealGloStrings() {
    std::vector<RealGloString> out;
    const char* files[] = {"glo_strings_sbf_log0000.txt",
                           "glo_strings_ubx_testobsnav.txt"};
    for (const char* f : files) {
        std::ifstream in(std::string(ZELNAV_DATA_DIR) + "/rawnav/" + f);
        std::string line;
        while (std::getline(in, line)) {
            if (line.empty() || line[0] == '#') continue;
            std::istringstream ls(line);
            std::string week, tow, letter, hex;
            RealGloString s{};
            ls >> week >> tow >> s.slot >> letter >> s.number >> hex;
            if (hex.size() != 22) continue;
            for (int i = 0; i < 11; i++)
                s.bytes[i] = (unsigned char)std::strtoul(
                    hex.substr(2 * i, 2).c_str(), nullptr, 16);
            out.push_back(s);
        }
    }
    return out;
}

#endif
