/*
 * Subcommands of the zelnav program. Each takes its own argument vector
 * (argv[0] is the subcommand's name) and returns the process exit status:
 * 0 on success, 1 when the work failed, 2 on a usage error.
 */
#ifndef ZELNAV_CLI_COMMANDS_H
#define ZELNAV_CLI_COMMANDS_H

#include <cstdio>

enum { EXIT_USAGE = 2 };

struct Command {
    const char* name;
    const char* summary;
    int (*run)(int argc, char** argv);
    void (*usage)(FILE* out);
};

int demoRun(int argc, char** argv);
void demoUsage(FILE* out);

#endif
