/*
 * Exported functions of the message 0x0C converter. The handle is the
 * address of the converter object, passed around as int*; every call but
 * init checks it first. A null handle is a host programming error and
 * stops the process with the assertion naming the function as the
 * interface spells it.
 */
#include "decode/lstsat.h"
#include "interface/zel_assert.h"
#include "zel.h"

static lstsat_t* asConverter(int* h) { return reinterpret_cast<lstsat_t*>(h); }

extern "C" {

/* If the constructor throws, the new-expression gives the storage back
 * before the exception leaves. */
ZEL_API void* cnvx0c_init(void) { return new lstsat_t(); }

ZEL_API void cnvx0c_finit(int* h) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void cnvx0c_finit(int*)");
    delete asConverter(h);
}

ZEL_API void* cnvx0c_upx0c(int* h, void* msg) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void* cnvx0c_upx0c(int*, void*)");
    return asConverter(h)->upx0c(static_cast<unsigned char*>(msg));
}

ZEL_API void* cnvx0c_getTblGpsUtc(int* h) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void* cnvx0c_getTblGpsUtc(int*)");
    return asConverter(h)->getTblGpsUtc();
}

ZEL_API void cnvx0c_clear(int* h) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void cnvx0c_clear(int*)");
    asConverter(h)->clear();
}

}  // extern "C"
