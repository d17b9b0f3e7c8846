/*
 * Exported time functions of the zel unit (no handle).
 */
#include <cstring>

#include "time/tmzel.h"
#include "zel.h"

extern "C" {

ZEL_API int tmZelToDate(unsigned int tmZel, unsigned int* date) {
    unsigned int local[6];
    unsigned int ok = TmZel::tmZelToDate(tmZel, local);
    if (ok == 1) std::memcpy(date, local, sizeof local);
    return (int)ok;
}

ZEL_API unsigned int getTmZel(void* lst) {
    const lsttblSat_t* l = static_cast<const lsttblSat_t*>(lst);
    if (l->numGlo != 0) return l->tblGlo[0].tblObs->tmZel;
    if (l->numGps != 0) return l->tblGps[0].tblObs->tmZel;
    return 0;
}

ZEL_API void DateAlmGloToDate(unsigned int n4, int na, unsigned int* date) {
    unsigned int local[3];
    TmZel::DateAlmGloToDate(n4, na, local);
    std::memcpy(date, local, sizeof local);
}

}  // extern "C"
