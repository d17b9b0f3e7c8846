/*
 * Exported functions of the filtering facility (handle prefix `filter`).
 */

#include "filter/filter.h"
#include "interface/zel_assert.h"
#include "zel.h"

static Filter_t* filterOf(int* h) { return reinterpret_cast<Filter_t*>(h); }

extern "C" {

ZEL_API void* filter_init(void) { return new Filter_t; }

ZEL_API void filter_finit(int* h) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void filter_finit(int*)");
    delete filterOf(h);
}

/* The interface returns the filter's signed codes as plain char. */
ZEL_API char initStatic(int* h, double* pos, unsigned int t0, double* k, unsigned int nMax,
                        unsigned int dopMax, unsigned char mode) {
    ZEL_ASSERT(h != nullptr, "false", "zel",
               "char initStatic(int*, double*, unsigned int, double*, unsigned int, "
               "unsigned int, unsigned char)");
    return (char)filterOf(h)->InitStatic(pos, t0, k, nMax, dopMax, mode);
}

ZEL_API char staticFilter(int* h, tblCrdPnt_t* rec, unsigned int t) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "char staticFilter(int*, tblCrdPnt_t*, unsigned int)");
    return (char)filterOf(h)->StaticFilter(rec, t);
}

ZEL_API void KalmanFilterObs0(int* h, lsttblSat_t* lst) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void KalmanFilterObs0(int*, lsttblSat_t*)");
    filterOf(h)->KalmanObs0(lst);
}

ZEL_API void* KalmanFilterObs(int* h, lsttblSat_t* lst) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void* KalmanFilterObs(int*, lsttblSat_t*)");
    return filterOf(h)->KalmanObs(lst);
}

ZEL_API void* KalmanFilterCrdPnt0(int* h, unsigned int t, tblCrdPnt_t* rec) {
    ZEL_ASSERT(h != nullptr, "false", "zel",
               "void* KalmanFilterCrdPnt0(int*, unsigned int, tblCrdPnt_t*)");
    return filterOf(h)->KalmanCrdPnt0(t, rec);
}

}  // extern "C"
