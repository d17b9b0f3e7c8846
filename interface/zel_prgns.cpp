/*
 * Exported functions of the almanac prediction (handle prefix `prgns`):
 * thin forwarders to prgns_t behind an opaque handle. A null handle stops
 * the process with the library's assertion, naming the function as the
 * interface spells it.
 */
#include "interface/zel_assert.h"
#include "predict/prgns.h"
#include "zel.h"

static prgns_t* prgnsOf(int* h) { return reinterpret_cast<prgns_t*>(h); }

extern "C" {

ZEL_API void* prgns_init(void) { return new prgns_t(); }

ZEL_API void prgns_finit(int* h) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void prgns_finit(int*)");
    delete prgnsOf(h);
}

ZEL_API void* prgns_getAlmanGlo(int* h, void* lst) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void* prgns_getAlmanGlo(int*, void*)");
    return prgnsOf(h)->getAlmanGlo(static_cast<lsttblSat_t*>(lst));
}

ZEL_API void* prgns_getAlmanGps(int* h, void* lst, void* tp) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void* prgns_getAlmanGps(int*, void*, void*)");
    return prgnsOf(h)->getAlmanGps(static_cast<lsttblSat_t*>(lst),
                                   static_cast<tblTmPrmGps_t*>(tp));
}

ZEL_API void* prgns_getAlmanGps0(int* h, void* lst) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void* prgns_getAlmanGps0(int*, void*)");
    return prgnsOf(h)->getAlmanGps0(static_cast<lsttblSat_t*>(lst));
}

ZEL_API void* prgns_get0(int* h, void* glo, void* gps, void* tp, unsigned int t) {
    ZEL_ASSERT(h != nullptr, "false", "zel",
               "void* prgns_get0(int*, void*, void*, void*, unsigned int)");
    return prgnsOf(h)->get(static_cast<tblAlmGlo_t*>(glo), static_cast<tblAlmGps_t*>(gps),
                           static_cast<tblTmPrmGps_t*>(tp), t);
}

/* The method fills the handle's list and returns nothing; the list is
 * what the host reads, so it is handed back. */
ZEL_API void* prgns_get1(int* h, void* lst) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void* prgns_get1(int*, void*)");
    prgns_t* p = prgnsOf(h);
    p->get(static_cast<lsttblSat_t*>(lst));
    return p->getList();
}

ZEL_API void* prgns_get2(int* h, void* glo, void* gps, unsigned int t, int dtLs) {
    ZEL_ASSERT(h != nullptr, "false", "zel",
               "void* prgns_get2(int*, void*, void*, unsigned int, int)");
    return prgnsOf(h)->get(static_cast<tblAlmGlo_t*>(glo), static_cast<tblAlmGps_t*>(gps), t,
                           dtLs);
}

ZEL_API void prgns_set(int* h, double* pos, unsigned int posType, unsigned int posSys,
                       unsigned int mask) {
    ZEL_ASSERT(h != nullptr, "false", "zel",
               "void prgns_set(int*, double*, unsigned int, unsigned int, unsigned int)");
    prgnsOf(h)->set(pos, posType, posSys, mask);
}

ZEL_API void prgns_clear(int* h) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "void prgns_clear(int*)");
    prgnsOf(h)->clear();
}

/* -1 (no valid almanac) arrives as 255. */
ZEL_API unsigned char prgns_getnumalmglo(int* h) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "unsigned char prgns_getnumalmglo(int*)");
    return (unsigned char)prgnsOf(h)->getNumAlmGlo();
}

ZEL_API unsigned char prgns_getnumalmgps(int* h) {
    ZEL_ASSERT(h != nullptr, "false", "zel", "unsigned char prgns_getnumalmgps(int*)");
    return (unsigned char)prgnsOf(h)->getNumAlmGps();
}

}  // extern "C"
