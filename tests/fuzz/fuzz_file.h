/*
 * The readers under fuzzing take a path, as the tools give them: each
 * input is written to a scratch file of this process first (in TMPDIR,
 * /tmp by default) and read back from there.
 */
#ifndef ZELNAV_FUZZ_FILE_H
#define ZELNAV_FUZZ_FILE_H

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzzfile {

inline std::string scratch(const char* suffix) {
    const char* dir = std::getenv("TMPDIR");
    return std::string(dir && *dir ? dir : "/tmp") + "/zelnav_fuzz_" +
           std::to_string((long)getpid()) + suffix;
}

/* Writes the input to `path`; false when it cannot. */
inline bool write(const std::string& path, const uint8_t* data, std::size_t size) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return false;
    const bool ok = std::fwrite(data, 1, size, f) == size;
    return std::fclose(f) == 0 && ok;
}

}  // namespace fuzzfile

#endif
