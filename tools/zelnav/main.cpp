/*
 * zelnav: command-line host of the navigation library.
 *
 *   zelnav <command> [options]
 *   zelnav --help | help [command]
 *
 * The program only dispatches; every subcommand lives in a file of its own
 * and is listed in the table below.
 */
#include <cstdio>
#include <cstring>

#include "commands.h"

namespace {

const Command kCommands[] = {
    {"demo", "decode a few generated receiver messages and print them",
     demoRun, demoUsage},
};

const Command* findCommand(const char* name) {
    for (const Command& c : kCommands)
        if (std::strcmp(c.name, name) == 0) return &c;
    return nullptr;
}

void usage(FILE* out) {
    std::fprintf(out,
                 "usage: zelnav <command> [options]\n"
                 "       zelnav help [command]\n"
                 "\n"
                 "commands:\n");
    for (const Command& c : kCommands)
        std::fprintf(out, "  %-10s %s\n", c.name, c.summary);
    std::fprintf(out, "\n'zelnav <command> --help' describes a command.\n");
}

bool isHelp(const char* arg) {
    return std::strcmp(arg, "--help") == 0 || std::strcmp(arg, "-h") == 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        usage(stderr);
        return EXIT_USAGE;
    }
    const char* name = argv[1];
    if (isHelp(name) || std::strcmp(name, "help") == 0) {
        if (argc == 2 || isHelp(name)) {
            usage(stdout);
            return 0;
        }
        const Command* c = findCommand(argv[2]);
        if (!c) {
            std::fprintf(stderr, "zelnav: unknown command '%s'\n", argv[2]);
            return EXIT_USAGE;
        }
        c->usage(stdout);
        return 0;
    }
    const Command* c = findCommand(name);
    if (!c) {
        std::fprintf(stderr,
                     "zelnav: unknown command '%s' (try 'zelnav --help')\n",
                     name);
        return EXIT_USAGE;
    }
    return c->run(argc - 1, argv + 1);
}
