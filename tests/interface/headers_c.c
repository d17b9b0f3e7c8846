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

/* The C host's view of the calls is the conformance program's business;
 * here only what the layout asserts cannot show: a refused parameter
 * comes back negative through the plain char of the C declaration. */
int main(void) {
    int* f = (int*)filter_init();
    double pos[3] = {0.0, 0.0, 0.0};
    double k[5] = {0.5, 0.5, 0.5, 0.5, 2.0};
    signed char rc = (signed char)initStatic(f, pos, 100u, k, 10u, 5u, 10);
    filter_finit(f);
    if (rc != -5) {
        printf("initStatic gave %d, not -5\n", rc);
        return 1;
    }
    return 0;
}
