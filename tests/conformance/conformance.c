/*
 * Conformance of the installed library, seen from a C host.
 *
 * Built against the installed headers and shared library only, this
 * program runs a recorded log of messages 0x0C (the only argument: the
 * sample log of the station TLSE) through every handle family in the
 * order of an epoch, and checks what a host can check from outside on
 * real data:
 *
 *   converter   both systems decoded, the epoch time on the right day;
 *   crdsat      satellites at orbit height; the per-system calls give the
 *               rows of the combined call;
 *   crdpnt      every fix within 30 m of the station's known position, a
 *               small speed, the GLONASS fix with a given clock offset;
 *   raim        the clean log passes: verdict 0, nothing excluded;
 *   prgns       the log's almanac, of the log's day, predicts a sky that
 *               holds the tracked satellites, the same through its three
 *               calls;
 *   filter      smoothing bound to the epoch's GLONASS satellites and
 *               close to the measurements, static averaging converging on
 *               the station, the position filter's record.
 *
 * Exit code 0 when every check passed, 1 otherwise.
 */
#include <math.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "zel.h"

/* IGS station TLSE, ITRF, m. */
static const double kStation[3] = {4627852.3986, 119640.3423, 4372994.4588};
#define FIX_BOUND 30.0 /* m */

static int nChecks, nFailed;

static void check(int ok, const char* fmt, ...) {
    nChecks++;
    if (ok) return;
    nFailed++;
    va_list ap;
    va_start(ap, fmt);
    printf("FAIL: ");
    vprintf(fmt, ap);
    printf("\n");
    va_end(ap);
}

/* Distance of two points. The records are packed to 4 bytes, so their
 * triplets may sit off an 8-byte boundary: they are copied, not read
 * through a double pointer. */
static double dist(const void* pa, const void* pb) {
    double a[3], b[3];
    memcpy(a, pa, sizeof a);
    memcpy(b, pb, sizeof b);
    double dx = a[0] - b[0], dy = a[1] - b[1], dz = a[2] - b[2];
    return sqrt(dx * dx + dy * dy + dz * dz);
}

/* ------------------------------------------------------------------ */
/* The log: "ZLOG", version 1, flags (bit 0: approximate position      */
/* present), header length, position; then records A5 5A, flags, 0,    */
/* length L, L message bytes.                                          */

static uint64_t getLE(const unsigned char* p, int n) {
    uint64_t v = 0;
    for (int i = n - 1; i >= 0; i--) v = (v << 8) | p[i];
    return v;
}

static int logOpen(FILE* f, double pos[3]) {
    unsigned char h[36];
    if (fread(h, 1, sizeof h, f) != sizeof h || memcmp(h, "ZLOG", 4) != 0 ||
        getLE(h + 4, 2) != 1 || (getLE(h + 6, 2) & 1) == 0)
        return 0;
    for (int i = 0; i < 3; i++) {
        uint64_t u = getLE(h + 12 + 8 * i, 8);
        memcpy(&pos[i], &u, sizeof u);
    }
    return fseek(f, (long)getLE(h + 8, 4), SEEK_SET) == 0;
}

/* Returns the message length, 0 at the end, -1 on a damaged record. */
static long logNext(FILE* f, unsigned char* msg, size_t cap) {
    unsigned char r[6];
    size_t got = fread(r, 1, 6, f);
    if (got == 0) return 0;
    long len = got == 6 && r[0] == 0xA5 && r[1] == 0x5A ? (long)getLE(r + 4, 2) : -1;
    if (len < 3 || (size_t)len > cap || fread(msg, 1, (size_t)len, f) != (size_t)len)
        return -1;
    return len;
}

/* ------------------------------------------------------------------ */

typedef struct {
    long epochs, fixes, tauFixes, raimOk, excluded, predictions;
    long gloSets, gpsSets, rows, smoothed;
    double worstFix, worstTauFix, worstRaimFix, worstSpeed, worstSmooth, worstSmooth0;
    int staticRc;
    double staticErr;
} Tally;

static int isTracked(const lsttblSat_t* lst, int sys, int num) {
    uint32_t n = sys ? lst->numGps : lst->numGlo;
    for (uint32_t i = 0; i < n; i++) {
        const tblHdr_t* h = sys ? lst->tblGps[i].tblHdr : lst->tblGlo[i].tblHdr;
        if (h->num == num) return 1;
    }
    return 0;
}

/* The satellite computation through its three calls. crdsat_getGlo on
 * signals 0 and 1 and crdsat_getGps both write list 0, which crdsat_get
 * then writes with both systems: their row counts must add up. */
static lsttblCrdSat_t* satellites(int* sat, lsttblSat_t* lst, unsigned int tm, int dUtc,
                                  Tally* t) {
    uint32_t nGps = ((lsttblCrdSat_t*)crdsat_getGps(sat, lst, tm, dUtc))->num;
    uint32_t nGlo = ((lsttblCrdSat_t*)crdsat_getGlo(sat, lst, tm, 0, 1))->num;
    lsttblCrdSat_t* rows = (lsttblCrdSat_t*)crdsat_get(sat, lst, tm, dUtc);
    check(rows->num == nGlo + nGps, "tm %u: %u rows, not %u GLONASS + %u GPS", tm, rows->num,
          nGlo, nGps);
    for (uint32_t i = 0; i < rows->num; i++) {
        const tblCrdSat_t* r = &rows->tbl[i];
        double zero[3] = {0, 0, 0}, radius = dist(r->xyz, zero);
        check(r->bad == 0 && radius > 25.0e6 && radius < 27.0e6 && rows->tm == tm,
              "tm %u: row of %s %u (bad %u) at radius %.0f m", tm, r->sys ? "GPS" : "GLONASS",
              r->num, r->bad, radius);
    }
    t->rows += rows->num;
    return rows;
}

/* Prediction from the almanacs the log carries, at the epoch's time:
 * prgns_get1 takes them from the list itself, prgns_get0 and prgns_get2
 * from the tables the handle holds, and all three agree. Five minutes
 * give a whole GLONASS almanac (a 2.5-minute frame) but no GPS one (12.5
 * minutes), so the sky is GLONASS's. */
static void predict(int* prg, lsttblSat_t* lst, unsigned int tm, Tally* t) {
    tblTmPrmGps_t tp;
    memset(&tp, 0, sizeof tp);
    void* glo = prgns_getAlmanGlo(prg, lst);
    void* gps = prgns_getAlmanGps(prg, lst, &tp);
    check(prgns_getAlmanGps0(prg, lst) == gps, "prgns_getAlmanGps0: another table");
    if (prgns_getnumalmglo(prg) == 255) return;
    const tblAlmGlo_t* a = (const tblAlmGlo_t*)glo;
    unsigned int day[3] = {0, 0, 0};
    DateAlmGloToDate(a->n4, (int)a->na, day);
    check(a->actual == 1 && day[0] == 2024 && day[1] == 1 && day[2] == 1,
          "GLONASS almanac of %u-%u-%u, not of the log's day", day[0], day[1], day[2]);

    lsttblPrgSat* sky = (lsttblPrgSat*)prgns_get1(prg, lst);
    uint32_t n = sky->numPrg;
    uint32_t tracked = 0;
    for (uint32_t i = 0; i < n; i++) {
        const tblPrgSat_t* p = &sky->prgSat[i];
        check(p->actual == 1 && p->sys == 0 && p->um >= sky->posMask,
              "tm %u: predicted %u/%u at %.1f deg", tm, p->sys, p->num, p->um);
        tracked += isTracked(lst, p->sys, p->num);
    }
    /* The tracked satellites are in the prediction. */
    check(n > 0 && tracked == lst->numGlo, "tm %u: %u predicted, %u of the %u tracked", tm, n,
          tracked, lst->numGlo);
    check(prgns_get0(prg, glo, gps, &tp, tm) == sky && sky->numPrg == n &&
              prgns_get2(prg, glo, gps, tm, (int)tp.dtLs) == sky && sky->numPrg == n,
          "tm %u: prgns_get0/get2 do not predict what prgns_get1 did", tm);
    t->predictions++;
}

/* Every smoothing table belongs to a GLONASS satellite of this epoch and
 * its pseudorange stays near the measurement. */
static void smooth(int* flt, lsttblSat_t* lst, unsigned int tm, Tally* t) {
    lsttblKalmanObs_t* out = (lsttblKalmanObs_t*)KalmanFilterObs(flt, lst);
    check(out->num <= ZEL_NUM_SLOTS, "tm %u: %u smoothing tables", tm, out->num);
    for (uint32_t i = 0; i < out->num && i < ZEL_NUM_SLOTS; i++) {
        const tblKalmanObs_t* k = &out->tbl[i];
        check(k->actual == 1 && k->sys == 0 && isTracked(lst, 0, k->num),
              "tm %u: smoothing table %u for %u/%u", tm, i, k->sys, k->num);
        for (uint32_t j = 0; j < lst->numGlo; j++) {
            const tblObs_t* o = lst->tblGlo[j].tblObs;
            if (lst->tblGlo[j].tblHdr->num != k->num || k->tmZel != tm || !o->actual[0]) continue;
            double d = fabs(k->psvd[0].x - o->psvd[0]);
            if (d > t->worstSmooth) t->worstSmooth = d;
            t->smoothed++;
        }
    }
}

int main(int argc, char** argv) {
    FILE* f = argc > 1 ? fopen(argv[1], "rb") : NULL;
    double approx[3];
    if (f == NULL || !logOpen(f, approx)) {
        printf("usage: conformance LOG.zlog (a log with the station's position)\n");
        return 1;
    }

    int* cnv = (int*)cnvx0c_init();
    int* sat = (int*)crdsat_init();
    int* pnt = (int*)crdpnt_init();
    int* pntGlo = (int*)crdpnt_init();
    int* rm = (int*)raim_init();
    int* prg = (int*)prgns_init();
    int* flt = (int*)filter_init();
    int* stat = (int*)filter_init();
    crdsat_setPnt(sat, approx, 0, 0);
    crdpnt_set(pnt, 10);
    crdpnt_set(pntGlo, 0);
    double station[3] = {kStation[0], kStation[1], kStation[2]};
    prgns_set(prg, station, 0, 0, 5);
    double k[5] = {0.01, 0.01, 0.01, 0.01, 0.01};

    Tally t;
    memset(&t, 0, sizeof t);
    tblCrdPnt_t raimPnt, avg;
    memset(&raimPnt, 0, sizeof raimPnt);
    raimPnt.length = ZEL_LEN_CRDPNT;
    int dUtc = 0;
    lsttblSat_t* last = NULL;
    static unsigned char msg[65536];
    long len;
    while ((len = logNext(f, msg, sizeof msg)) > 0) {
        lsttblSat_t* lst = (lsttblSat_t*)cnvx0c_upx0c(cnv, msg);
        unsigned int tm = getTmZel(lst);
        const tblGpsUtc_t* utc = (const tblGpsUtc_t*)cnvx0c_getTblGpsUtc(cnv);
        if (utc->actual) dUtc = (int)utc->dtGpsUtc;
        if (tm == 0) continue;
        last = lst;
        if (t.epochs++ == 0) {
            /* The log starts at 12:00:00 GPS time, 11:59:42 UTC: 14:59:42 on
             * the receiver's scale, which runs three hours ahead of UTC. */
            unsigned int d[6] = {0, 0, 0, 0, 0, 0};
            int rc = tmZelToDate(tm, d);
            check(rc == 1 && d[0] == 2024 && d[1] == 1 && d[2] == 1 && d[3] == 14 &&
                      d[4] == 59 && d[5] == 42,
                  "first epoch %u-%u-%u %u:%u:%u, not 2024-01-01 14:59:42", d[0], d[1], d[2],
                  d[3], d[4], d[5]);
            check(initStatic(stat, approx, tm, k, 100, 5, 10) == 0, "initStatic refused");
        }
        t.gloSets += lst->numGlo;
        t.gpsSets += lst->numGps;

        lsttblCrdSat_t* rows = satellites(sat, lst, tm, dUtc, &t);

        /* A clean log passes, once an epoch has enough satellites. */
        int code = raimComb(rm, rows, &raimPnt, 100.0, 10);
        check(code == 0 || (code == -128 && rows->num < 6), "tm %u: raimComb %d with %u rows",
              tm, code, rows->num);
        t.raimOk += code == 0;
        for (uint32_t i = 0; i < rows->num; i++) t.excluded += rows->tbl[i].bad != 0;
        if (code == 0 && raimPnt.actual == 1 && dist(raimPnt.xyz, kStation) > t.worstRaimFix)
            t.worstRaimFix = dist(raimPnt.xyz, kStation);

        tblCrdPnt_t* fix = (tblCrdPnt_t*)crdpnt_get(pnt, rows);
        if (fix->actual == 1) {
            t.fixes++;
            if (dist(fix->xyz, kStation) > t.worstFix) t.worstFix = dist(fix->xyz, kStation);
            const tblSpdPnt_t* v = (const tblSpdPnt_t*)crdpnt_getSpd(pnt);
            double zero[3] = {0, 0, 0};
            if (v->actual == 1 && dist(v->vxyz, zero) > t.worstSpeed)
                t.worstSpeed = dist(v->vxyz, zero);
            check(isfinite(raimTau(rm, rows, fix)), "tm %u: raimTau not finite", tm);
            check(raimStats(rm, rows, fix) == 0.0, "tm %u: raimStats not 0", tm);
            for (uint32_t i = 0; i < rows->num; i++) t.excluded += rows->tbl[i].bad != 0;

            /* The GLONASS fix again, with the clock offset of the first. */
            tblCrdPnt_t* g = (tblCrdPnt_t*)crdpnt_get(pntGlo, rows);
            double dt = g->dt;
            g = (tblCrdPnt_t*)crdpnt_getTau(pntGlo, rows, dt);
            if (g->actual == 1) {
                t.tauFixes++;
                if (dist(g->xyz, kStation) > t.worstTauFix) t.worstTauFix = dist(g->xyz, kStation);
            }

            avg = *fix;
            t.staticRc = staticFilter(stat, &avg, tm);
            t.staticErr = dist(avg.xyz, kStation);
            const tblCrdPnt_t* kf = (const tblCrdPnt_t*)KalmanFilterCrdPnt0(flt, tm, fix);
            check(kf != fix && kf->length == ZEL_LEN_CRDPNT, "KalmanFilterCrdPnt0: no record");
        }

        predict(prg, lst, tm, &t);
        smooth(flt, lst, tm, &t);
        /* Smoothing in place rewrites the list: last in the epoch. */
        double raw = lst->numGlo ? lst->tblGlo[0].tblObs->psvd[0] : 0.0;
        KalmanFilterObs0(stat, lst);
        if (lst->numGlo && fabs(lst->tblGlo[0].tblObs->psvd[0] - raw) > t.worstSmooth0)
            t.worstSmooth0 = fabs(lst->tblGlo[0].tblObs->psvd[0] - raw);
    }
    check(len == 0, "the log is damaged after %ld epochs", t.epochs);
    fclose(f);

    printf("%ld epochs: %ld GLONASS and %ld GPS table sets, %ld satellite rows\n", t.epochs,
           t.gloSets, t.gpsSets, t.rows);
    printf("fixes %ld (worst %.1f m, speed %.2f m/s), GLONASS with tau %ld (worst %.1f m)\n",
           t.fixes, t.worstFix, t.worstSpeed, t.tauFixes, t.worstTauFix);
    printf("raim: %ld epochs accepted, %ld rows excluded, worst fix %.1f m\n", t.raimOk,
           t.excluded, t.worstRaimFix);
    printf("predictions %ld; smoothed pseudoranges %ld (worst %.2f m, in place %.2f m); static "
           "average %.1f m\n",
           t.predictions, t.smoothed, t.worstSmooth, t.worstSmooth0, t.staticErr);
    check(t.epochs > 250 && t.gloSets > 0 && t.gpsSets > 0, "too few epochs or systems");
    check(t.fixes > t.epochs * 9 / 10 && t.worstFix < FIX_BOUND, "combined fixes");
    check(t.tauFixes > t.epochs * 9 / 10 && t.worstTauFix < FIX_BOUND, "GLONASS fixes with tau");
    check(t.worstSpeed < 1.0, "a static receiver moving at %.2f m/s", t.worstSpeed);
    check(t.raimOk >= t.fixes && t.excluded == 0 && t.worstRaimFix < FIX_BOUND,
          "raim on the clean log");
    check(t.predictions > t.epochs / 3, "the log's almanac predicted nothing");
    check(t.smoothed > t.epochs && t.worstSmooth < 10.0 && t.worstSmooth0 < 10.0, "smoothing");
    check(t.staticRc == 0 && t.staticErr < FIX_BOUND, "static average %.1f m off (code %d)",
          t.staticErr, t.staticRc);

    cnvx0c_clear(cnv);
    check(last != NULL && last->numGlo == 0 && last->numGps == 0 &&
              ((const tblGpsUtc_t*)cnvx0c_getTblGpsUtc(cnv))->actual == 0,
          "cnvx0c_clear left the list or the GPS-UTC record filled");
    crdsat_clear(sat);
    crdpnt_clear(pnt);
    prgns_clear(prg);
    check(prgns_getnumalmglo(prg) == 255 && prgns_getnumalmgps(prg) == 255,
          "prgns_clear kept an almanac");
    filter_finit(stat);
    filter_finit(flt);
    prgns_finit(prg);
    raim_finit(rm);
    crdpnt_finit(pntGlo);
    crdpnt_finit(pnt);
    crdsat_finit(sat);
    cnvx0c_finit(cnv);
    printf("conformance: %d checks, %d failed\n", nChecks, nFailed);
    return nFailed == 0 ? 0 : 1;
}
