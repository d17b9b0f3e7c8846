/*
 * Exported position-solution functions of the zel unit: thin forwarders to
 * crdpnt_t behind an opaque handle. A null handle stops the process with
 * the library's assertion, naming the function as the interface spells it.
 */
#include "interface/zel_assert.h"
#include "solution/crdpnt.h"
#include "zel.h"

static crdpnt_t* crdpntOf(int* h) {
    return reinterpret_cast<crdpnt_t*>(h);
}

extern "C" {

/* If the constructor throws, the new-expression gives the storage back
 * before the exception leaves. */
ZEL_API void* crdpnt_init(void) {
    return new crdpnt_t();
}

ZEL_API void crdpnt_finit(int* h) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void crdpnt_finit(int*)");
    delete crdpntOf(h);
}

ZEL_API void crdpnt_set(int* h, int mode) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void crdpnt_set(int*, int)");
    crdpntOf(h)->set(mode);
}

ZEL_API void* crdpnt_get(int* h, void* lst) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void* crdpnt_get(int*, void*)");
    return crdpntOf(h)->get(static_cast<lsttblCrdSat_t*>(lst));
}

ZEL_API void* crdpnt_getSpd(int* h) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void* crdpnt_getSpd(int*)");
    return crdpntOf(h)->getSpd();
}

ZEL_API void* crdpnt_getTau(int* h, void* lst, double tau) {
    ZEL_ASSERT(h != nullptr, "false", "zel",
               "void* crdpnt_getTau(int*, void*, double)");
    return crdpntOf(h)->getTau(static_cast<lsttblCrdSat_t*>(lst), tau);
}

ZEL_API void crdpnt_clear(int* h) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void crdpnt_clear(int*)");
    crdpntOf(h)->clear();
}

}  // extern "C"
