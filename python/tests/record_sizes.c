/* Size of every public record and offset of its last field, one record a
 * line: "NAME SIZE OFFSET". The Python tests hold their ctypes
 * declarations against it. */
#include <stddef.h>
#include <stdio.h>

#include "zel.h"

#define R(T, last) printf("%s %zu %zu\n", #T, sizeof(T), offsetof(T, last))

int main(void) {
    R(tblOprGps_t, iode);
    R(tblTmPrmGps_t, dtLsf);
    R(tblIonGps_t, beta3);
    R(tblAlmGpsSat_t, reserved);
    R(tblAlmGps_t, tmResived);
    R(tblOprGlo_t, m);
    R(tblTmPrmGlo_t, kp);
    R(tblAlmGloSat_t, tauA);
    R(tblAlmGlo_t, tmResived);
    R(tblHdr_t, um);
    R(tblObs_t, ampl);
    R(tblAddInf_t, reserved);
    R(tblMeteo, pressure);
    R(tblGpsUtc_t, dtGpsUtc);
    R(tblSatGlo, tblAlmGlo);
    R(tblSatGps, tblIonGps);
    R(lsttblSat_t, meteo);
    R(tblCrdSat_t, bad);
    R(lsttblCrdSat_t, tm);
    R(tblCrdPnt_t, tau);
    R(tblSpdPnt_t, reserved);
    R(tblPrgSat_t, vz);
    R(lsttblPrgSat, posMask);
    R(tblKalman2_t, error);
    R(tblKalmanObs_t, reserved);
    R(lsttblKalmanObs_t, num);
    return 0;
}
