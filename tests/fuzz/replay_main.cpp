/*
 * Runs a fuzz target over given files, without libFuzzer: the regression
 * inputs are replayed this way by the normal build's tests. Each argument
 * is a file or a folder of files. Exit status 0 when every input ran
 * (a fault stops the process, under the sanitizers with their report).
 */
#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);

namespace {

bool readFile(const std::string& path, std::vector<uint8_t>& out) {
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) return false;
    out.clear();
    uint8_t buf[65536];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) out.insert(out.end(), buf, buf + n);
    std::fclose(f);
    return true;
}

void collect(const std::string& path, std::vector<std::string>& files) {
    struct stat st;
    if (stat(path.c_str(), &st) != 0) {
        files.push_back(path); /* reported as unreadable below */
        return;
    }
    if (!S_ISDIR(st.st_mode)) {
        files.push_back(path);
        return;
    }
    DIR* d = opendir(path.c_str());
    if (!d) return;
    std::vector<std::string> names;
    while (dirent* e = readdir(d))
        if (e->d_name[0] != '.') names.push_back(path + "/" + e->d_name);
    closedir(d);
    std::sort(names.begin(), names.end());
    for (const std::string& n : names) collect(n, files);
}

}  // namespace

int main(int argc, char** argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    std::vector<std::string> files;
    for (int i = 1; i < argc; i++) collect(argv[i], files);
    if (files.empty()) {
        std::fprintf(stderr, "usage: %s FILE|FOLDER...\n", argv[0]);
        return 2;
    }
    int bad = 0;
    for (const std::string& f : files) {
        std::vector<uint8_t> data;
        if (!readFile(f, data)) {
            std::fprintf(stderr, "%s: cannot read\n", f.c_str());
            bad++;
            continue;
        }
        LLVMFuzzerTestOneInput(data.data(), data.size());
        std::printf("%s: ran (%zu bytes)\n", f.c_str(), data.size());
    }
    return bad ? 1 : 0;
}
