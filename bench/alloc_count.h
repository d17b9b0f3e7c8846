/*
 * Allocation counter of the benchmark program. Every operator new and
 * every malloc/calloc/realloc of the process, the library's included,
 * goes through the replacements in alloc_count.cpp and adds one.
 */
#ifndef ZELNAV_BENCH_ALLOC_COUNT_H
#define ZELNAV_BENCH_ALLOC_COUNT_H

namespace bench {

/* Allocations made so far. */
unsigned long allocations();

}  // namespace bench

#endif
