/*
 * Exported functions of the integrity monitor (handle prefix `raim`).
 */
#include "integrity/raim.h"
#include "interface/zel_assert.h"
#include "zel.h"

static raim_t* raimOf(int* h) { return reinterpret_cast<raim_t*>(h); }

extern "C" {

ZEL_API void* raim_init(void) { return new raim_t; }

ZEL_API void raim_finit(int* h) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void raim_finit(int*)");
    delete raimOf(h);
}

ZEL_API void raimSat(int* h, void* lst, void* prg, unsigned int t, double umMin, double dtShift,
                     unsigned int mode) {
    ZEL_ASSERT(h != nullptr, "false", "zel",
               "void raimSat(int*, void*, void*, unsigned int, double, double, unsigned int)");
    raimOf(h)->raimSat(static_cast<lsttblSat_t*>(lst), static_cast<const lsttblPrgSat*>(prg), t,
                       umMin, dtShift, mode);
}

ZEL_API int raimComb(int* h, lsttblCrdSat_t* lst, tblCrdPnt_t* pnt, double maxSpd, int mode) {
    ZEL_ASSERT(h != nullptr, "false", "zel",
               "int raimComb(int*, lsttblCrdSat_t*, tblCrdPnt_t*, double, int)");
    return raimOf(h)->raimComb(lst, pnt, maxSpd, mode);
}

ZEL_API double raimTau(int* h, lsttblCrdSat_t* lst, tblCrdPnt_t* pnt) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "double raimTau(int*, lsttblCrdSat_t*, tblCrdPnt_t*)");
    return raimOf(h)->raimTau(lst, pnt);
}

ZEL_API double raimStats(int* h, lsttblCrdSat_t* lst, tblCrdPnt_t* pnt) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "double raimStats(int*, lsttblCrdSat_t*, tblCrdPnt_t*)");
    return raimOf(h)->raimStats(lst, pnt);
}

}  // extern "C"
