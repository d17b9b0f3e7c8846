#include "print_epoch.h"

namespace {

const char* const kSigName[4] = {"C1", "C2", "B1", "B2"};

void printSat(FILE* out, char sys, const tblHdr_t* h, const tblObs_t* o) {
    std::fprintf(out, "  %c%02u", sys, h->num);
    if (sys == 'R') std::fprintf(out, " letter %u", h->lit);
    std::fprintf(out, "  elev %.1f  flags CT %u", h->um, h->badNavInfCt);
    if (sys == 'R')
        std::fprintf(out, " VT %u L3 %u", h->badNavInfVt, h->badNavInfL3);
    std::fputc('\n', out);
    for (int k = 0; k < 4; k++) {
        if (!o->actual[k]) continue;
        std::fprintf(out, "      %s %15.3f m %12.3f Hz %17.3f cyc  ampl %u\n",
                     kSigName[k], o->psvd[k], o->dop[k], o->faze[k],
                     o->ampl[k]);
    }
}

}  // namespace

void printEpoch(FILE* out, const lsttblSat_t* lst, const tblGpsUtc_t* gpsUtc) {
    /* getTmZel takes the list as the host received it, hence the cast. */
    unsigned int tm = getTmZel(const_cast<lsttblSat_t*>(lst));
    unsigned int d[6];
    if (tmZelToDate(tm, d) == 1)
        std::fprintf(out,
                     "epoch %04u-%02u-%02u %02u:%02u:%02u receiver time"
                     " (tmZel %u)",
                     d[0], d[1], d[2], d[3], d[4], d[5], tm);
    else
        std::fprintf(out, "epoch without time");
    std::fprintf(out, ": %u GLONASS, %u GPS", lst->numGlo, lst->numGps);
    if (gpsUtc->actual) std::fprintf(out, ", GPS-UTC %u s", gpsUtc->dtGpsUtc);
    std::fputc('\n', out);

    const tblMeteo* m = lst->meteo;
    if (m->actual)
        std::fprintf(out, "  meteo %.1f C  %.1f hPa  %.1f %%\n",
                     m->temperature, m->pressure, m->humidity);
    else
        std::fprintf(out, "  meteo not valid\n");

    for (unsigned i = 0; i < lst->numGlo; i++)
        printSat(out, 'R', lst->tblGlo[i].tblHdr, lst->tblGlo[i].tblObs);
    for (unsigned i = 0; i < lst->numGps; i++)
        printSat(out, 'G', lst->tblGps[i].tblHdr, lst->tblGps[i].tblObs);
}
