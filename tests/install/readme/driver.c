/*
 * Runs the README's example on a log: hands it the messages one by one
 * and the approximate position from the log's header. Fails when the
 * log cannot be read; the example itself prints its fixes.
 */
#include <stdint.h>
#include <stdio.h>
#include <string.h>

void run(unsigned char* (*next)(void), double approx[3]);

static FILE* logFile;
static unsigned char msg[65536];

static uint64_t getLE(const unsigned char* p, int n) {
    uint64_t v = 0;
    for (int i = n - 1; i >= 0; i--) v = (v << 8) | p[i];
    return v;
}

/* Records: A5 5A, flags, 0, length L, then L message bytes. */
static unsigned char* next(void) {
    unsigned char r[6];
    if (fread(r, 1, 6, logFile) != 6 || r[0] != 0xA5 || r[1] != 0x5A) return NULL;
    size_t len = (size_t)getLE(r + 4, 2);
    if (len > sizeof msg || fread(msg, 1, len, logFile) != len) return NULL;
    return msg;
}

/* Header: "ZLOG", version, flags, header length, position (3 doubles). */
int main(int argc, char** argv) {
    unsigned char h[36];
    double approx[3];
    logFile = argc > 1 ? fopen(argv[1], "rb") : NULL;
    if (logFile == NULL || fread(h, 1, sizeof h, logFile) != sizeof h ||
        memcmp(h, "ZLOG", 4) != 0 || fseek(logFile, (long)getLE(h + 8, 4), SEEK_SET) != 0) {
        printf("usage: readme_example LOG.zlog\n");
        return 1;
    }
    for (int i = 0; i < 3; i++) {
        uint64_t u = getLE(h + 12 + 8 * i, 8);
        memcpy(&approx[i], &u, sizeof u);
    }
    run(next, approx);
    int atEnd = fgetc(logFile) == EOF;
    fclose(logFile);
    return atEnd ? 0 : 1;
}
