/*
 * A host program as a user of the installed library writes it: it knows
 * only the installed headers and the shared library. It checks that the
 * records it sees have the sizes the library writes, that a handle can be
 * created, used and freed, and that a plain C call reaches the library.
 */
#include <stdio.h>

#include "zel.h"

int main(void) {
    int bad = 0;
    if (sizeof(tblObs_t) != ZEL_LEN_OBS || sizeof(tblAlmGlo_t) != ZEL_LEN_ALMGLO) {
        printf("records do not have their lengths: tblObs_t %u, tblAlmGlo_t %u\n",
               (unsigned)sizeof(tblObs_t), (unsigned)sizeof(tblAlmGlo_t));
        bad = 1;
    }

    /* 2024-01-01 15:00:00: six four-year blocks of 1461 days after 2000. */
    unsigned int date[6] = {0, 0, 0, 0, 0, 0};
    unsigned int tm = 6u * 126230400u + 54000u;
    if (tmZelToDate(tm, date) != 1 || date[0] != 2024 || date[1] != 1 || date[2] != 1 ||
        date[3] != 15 || date[4] != 0 || date[5] != 0) {
        printf("tmZelToDate(%u) gave %u-%u-%u %u:%u:%u\n", tm, date[0], date[1], date[2],
               date[3], date[4], date[5]);
        bad = 1;
    }

    int* sat = (int*)crdsat_init();
    if (sat == NULL) {
        printf("crdsat_init returned no handle\n");
        return 1;
    }
    crdsat_clear(sat);
    crdsat_finit(sat);

    if (!bad) printf("zelnav host: linked and ran\n");
    return bad;
}
