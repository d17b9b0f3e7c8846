/*
 * The library's assertion. A null handle at the boundary, or a programming
 * error inside, stops the process with the C runtime's own assertion
 * message: condition text, unit name, line and the function's signature
 * exactly as the interface documents spell it (not the compiler's
 * spelling). Unlike assert() it is never compiled out: a Release build
 * (NDEBUG) keeps it.
 */
#ifndef ZELNAV_ZEL_ASSERT_H
#define ZELNAV_ZEL_ASSERT_H

#include <cstdio>
#include <cstdlib>

#if defined(__GLIBC__)
/* The C runtime's assertion routine. <assert.h> declares it only when
 * NDEBUG is not defined, and a Release build defines NDEBUG, so it is
 * declared here as glibc declares it. */
extern "C" void __assert_fail(const char* assertion, const char* file, unsigned int line,
                              const char* function) noexcept __attribute__((__noreturn__));
#endif

[[noreturn]] inline void zelAssertFail(const char* cond, const char* unit,
                                       unsigned int line, const char* func) {
#if defined(__GLIBC__)
    __assert_fail(cond, unit, line, func);
#else
    std::fprintf(stderr, "%s:%u: %s: Assertion `%s' failed.\n", unit, line,
                 func, cond);
    std::abort();
#endif
}

/* Fails when `ok` is false; `cond` is the text printed as the condition. */
#define ZEL_ASSERT(ok, cond, unit, func)                      \
    do {                                                      \
        if (!(ok)) zelAssertFail(cond, unit, __LINE__, func); \
    } while (0)

#endif
