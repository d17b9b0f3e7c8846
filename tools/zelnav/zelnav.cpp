/*
 * zelnav: the command-line tools over the library, one command per
 * cmd_*.cpp file.
 *
 *   zelnav COMMAND [ARGS...]
 *
 * Each command takes its own name as argv[0] and returns the exit status.
 */
#include <cstdio>
#include <cstring>

int cmdConvert(int argc, char** argv);
int cmdDemo(int argc, char** argv);
int cmdSolve(int argc, char** argv);
int cmdPredict(int argc, char** argv);
int cmdPlot(int argc, char** argv);

namespace {

struct Command {
    const char* name;
    int (*run)(int argc, char** argv);
    const char* what;
};

const Command kCommands[] = {
    {"convert", cmdConvert, "RINEX observation and navigation files to a log of 0x0C messages"},
    {"demo", cmdDemo, "decode a few generated 0x0C messages and print them"},
    {"solve", cmdSolve, "position, clock and velocity of every epoch of a log"},
    {"predict", cmdPredict, "the satellites a log's almanacs predict at a time and place"},
    {"plot", cmdPlot, "an HTML report with charts of a log or of a solve CSV"},
};

int usage(std::FILE* to) {
    std::fputs("usage: zelnav COMMAND [ARGS...]\ncommands:\n", to);
    for (const Command& c : kCommands) std::fprintf(to, "  %-10s %s\n", c.name, c.what);
    std::fputs("zelnav COMMAND --help tells more.\n", to);
    return to == stdout ? 0 : 2;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return usage(stderr);
    if (!std::strcmp(argv[1], "-h") || !std::strcmp(argv[1], "--help")) return usage(stdout);
    for (const Command& c : kCommands)
        if (!std::strcmp(argv[1], c.name)) return c.run(argc - 1, argv + 1);
    std::fprintf(stderr, "zelnav: no command '%s'\n", argv[1]);
    return usage(stderr);
}
