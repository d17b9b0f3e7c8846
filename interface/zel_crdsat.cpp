/*
 * Exported satellite-computation functions of the zel unit: thin
 * forwarders to crdsat_t behind an opaque handle. A null handle stops the
 * process with the library's assertion, naming the function as the
 * interface spells it.
 */
#include "interface/zel_assert.h"
#include "satpos/crdsat.h"
#include "zel.h"

static crdsat_t* crdsatOf(int* h) {
    return reinterpret_cast<crdsat_t*>(h);
}

extern "C" {

ZEL_API void* crdsat_init(void) {
    return new crdsat_t();
}

ZEL_API void crdsat_finit(int* h) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void crdsat_finit(int*)");
    delete crdsatOf(h);
}

ZEL_API void* crdsat_get(int* h, void* lst, unsigned int tm, int dUtc) {
    ZEL_ASSERT(h != nullptr, "false", "zel",
               "void* crdsat_get(int*, void*, unsigned int, int)");
    return crdsatOf(h)->get(static_cast<lsttblSat_t*>(lst), tm, dUtc);
}

ZEL_API void* crdsat_getGlo(int* h, void* lst, unsigned int tm, int sig1,
                            int sig2) {
    ZEL_ASSERT(h != nullptr, "false", "zel",
               "void* crdsat_getGlo(int*, void*, unsigned int, int, int)");
    return crdsatOf(h)->getGlo(static_cast<lsttblSat_t*>(lst), tm, sig1,
                               sig2);
}

ZEL_API void* crdsat_getGps(int* h, void* lst, unsigned int tm, int dUtc) {
    ZEL_ASSERT(h != nullptr, "false", "zel",
               "void* crdsat_getGps(int*, void*, unsigned int, int)");
    return crdsatOf(h)->getGps(static_cast<lsttblSat_t*>(lst), tm, dUtc);
}

ZEL_API void crdsat_setPnt(int* h, double* pnt, unsigned int form,
                           unsigned int datum) {
    ZEL_ASSERT(h != nullptr, "false", "zel",
               "void crdsat_setPnt(int*, double*, unsigned int, unsigned int)");
    crdsatOf(h)->setPnt(pnt, form, datum);
}

ZEL_API void crdsat_clear(int* h) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void crdsat_clear(int*)");
    crdsatOf(h)->clear();
}

}  // extern "C"
