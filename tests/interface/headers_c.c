/* The public headers compile as C, and every record has the size its
 * `length` field announces under the 4-byte packing. */
#include <stddef.h>
#include <stdio.h>

#include "zel.h"
#include "tbl_flt.h"
#include "tbl_pnt.h"

_Static_assert(sizeof(tblHdr_t) == 28, "tblHdr_t");
_Static_assert(sizeof(tblObs_t) == 156, "tblObs_t");
_Static_assert(sizeof(tblAddInf_t) == 60, "tblAddInf_t");
_Static_assert(sizeof(tblOprGlo_t) == 200, "tblOprGlo_t");
_Static_assert(sizeof(tblTmPrmGlo_t) == 48, "tblTmPrmGlo_t");
_Static_assert(sizeof(tblAlmGloSat_t) == 72, "tblAlmGloSat_t");
_Static_assert(sizeof(tblAlmGlo_t) == 1744, "tblAlmGlo_t");
_Static_assert(sizeof(tblTmPrmGps_t) == 44, "tblTmPrmGps_t");
_Static_assert(sizeof(tblAlmGpsSat_t) == 84, "tblAlmGpsSat_t");
_Static_assert(sizeof(tblAlmGps_t) == 2704, "tblAlmGps_t");
_Static_assert(sizeof(tblCrdPnt_t) == 100, "tblCrdPnt_t");
_Static_assert(sizeof(tblSpdPnt_t) == 48, "tblSpdPnt_t");
_Static_assert(sizeof(tblKalman2_t) == 80, "tblKalman2_t");
_Static_assert(sizeof(tblKalmanObs_t) == 1220, "tblKalmanObs_t");
_Static_assert(offsetof(tblKalmanObs_t, psvd) == 12, "tblKalmanObs_t.psvd");
_Static_assert(offsetof(tblKalmanObs_t, faze) == 812, "tblKalmanObs_t.faze");
_Static_assert(offsetof(tblKalman2_t, error) == 76, "tblKalman2_t.error");
_Static_assert(offsetof(tblObs_t, psvd) == 16, "doubles aligned to 4");
_Static_assert(offsetof(tblOprGlo_t, tb) == 84, "tblOprGlo_t.tb");
_Static_assert(sizeof(tblPrgSat_t) == 88, "tblPrgSat_t");
_Static_assert(offsetof(lsttblPrgSat, numPrg) == 4 + sizeof(void*), "lsttblPrgSat.numPrg");
_Static_assert(ZEL_NUM_PRGSAT == 56, "room for both systems");
/* A result list announces 16 bytes, its size with 32-bit pointers. */
_Static_assert(sizeof(lsttblCrdSat_t) == ZEL_LEN_LSTCRDSAT - 4 + sizeof(void*),
               "lsttblCrdSat_t");
_Static_assert(offsetof(lsttblCrdSat_t, num) == 4 + sizeof(void*),
               "lsttblCrdSat_t.num");
_Static_assert(offsetof(tblCrdSat_t, xyz) == 4, "tblCrdSat_t.xyz");
_Static_assert(sizeof(tblCrdSat_t) == 96, "tblCrdSat_t");

int main(void) {
    /* Link against the C entry points, to prove the names are unmangled. */
    unsigned int date[6] = {0};
    int ok = tmZelToDate(1, date);
    if (ok != 1 || date[0] != 2000 || date[5] != 1) {
        printf("tmZelToDate(1) gave %d %u\n", ok, date[0]);
        return 1;
    }

    /* A converter from C: an empty message (noData) gives an empty list. */
    void* h = cnvx0c_init();
    unsigned char msg[25] = {0};
    msg[0] = 0x80 | 12;
    msg[1] = 25;
    msg[3] = 25;
    const lsttblSat_t* lst = (const lsttblSat_t*)cnvx0c_upx0c((int*)h, msg);
    const tblGpsUtc_t* utc = (const tblGpsUtc_t*)cnvx0c_getTblGpsUtc((int*)h);
    int bad = lst == NULL || lst->numGlo != 0 || lst->numGps != 0 || lst->meteo == NULL ||
              utc == NULL || utc->actual != 0 || getTmZel((void*)lst) != 0;
    cnvx0c_clear((int*)h);
    cnvx0c_finit((int*)h);
    if (bad) {
        printf("converter from C misbehaved\n");
        return 1;
    }

    /* A position solver from C: an empty list gives no fix and the
     * records announce their lengths. */
    void* p = crdpnt_init();
    tblCrdSat_t rows[ZEL_NUM_CRDSAT];
    lsttblCrdSat_t none = {16, rows, 0, 0};
    crdpnt_set((int*)p, 10);
    const tblCrdPnt_t* fix = (const tblCrdPnt_t*)crdpnt_get((int*)p, &none);
    const tblSpdPnt_t* spd = (const tblSpdPnt_t*)crdpnt_getSpd((int*)p);
    bad = fix == NULL || fix->length != ZEL_LEN_CRDPNT || fix->actual != 0 ||
          spd == NULL || spd->length != ZEL_LEN_SPDPNT ||
          crdpnt_getTau((int*)p, &none, 0.0) != fix;
    crdpnt_clear((int*)p);
    crdpnt_finit((int*)p);
    if (bad) {
        printf("position solver from C misbehaved\n");
        return 1;
    }

    /* A refused parameter comes back negative through the C declaration. */
    int* f = (int*)filter_init();
    double pos[3] = {0.0, 0.0, 0.0};
    double k[5] = {0.5, 0.5, 0.5, 0.5, 2.0};
    signed char rc = initStatic(f, pos, 100u, k, 10u, 5u, 10);
    filter_finit(f);
    if (rc != -5) {
        printf("initStatic gave %d\n", rc);
        return 1;
    }
    return 0;
}
