/*
 * Counting replacements of the allocation functions. The program's own
 * definitions take the place of the C and C++ runtime's for the whole
 * process, so the shared library's allocations are counted too. malloc is
 * forwarded to glibc's own entry points; operator new goes through malloc
 * and is therefore counted once, by its own counter.
 */
#include "alloc_count.h"

#include <cstddef>
#include <cstdlib>
#include <new>

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);
}

namespace {

/* One thread runs the benchmarks; a plain counter is enough. */
unsigned long g_news = 0;
unsigned long g_mallocs = 0;
bool g_inNew = false;

void* newBytes(std::size_t n) {
    ++g_news;
    g_inNew = true;
    void* p = std::malloc(n == 0 ? 1 : n);
    g_inNew = false;
    if (!p) throw std::bad_alloc();
    return p;
}

}  // namespace

namespace bench {

unsigned long allocations() { return g_news + g_mallocs; }

}  // namespace bench

extern "C" {

void* malloc(std::size_t n) {
    if (!g_inNew) ++g_mallocs;
    return __libc_malloc(n);
}

void* calloc(std::size_t n, std::size_t size) {
    ++g_mallocs;
    return __libc_calloc(n, size);
}

void* realloc(void* p, std::size_t n) {
    ++g_mallocs;
    return __libc_realloc(p, n);
}

void free(void* p) { __libc_free(p); }

}  // extern "C"

void* operator new(std::size_t n) { return newBytes(n); }
void* operator new[](std::size_t n) { return newBytes(n); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
    try {
        return newBytes(n);
    } catch (...) {
        return nullptr;
    }
}
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept {
    try {
        return newBytes(n);
    } catch (...) {
        return nullptr;
    }
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
