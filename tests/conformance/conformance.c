/*
 * Conformance of the installed library, seen from a C host.
 *
 * This program knows the library only as a host does: the installed
 * headers and the shared library. It drives every handle family through
 * the exported functions and checks what a host can check from outside:
 *
 *   1. built-in messages: a few messages 0x0C written here byte by byte,
 *      whose decoded values follow from their bytes and the documented
 *      scales; every family runs on them;
 *   2. the sample log (a .zlog file given as the only argument): every
 *      message of a real recording through the families in the order of
 *      an epoch, with checks that hold for real data (satellite distances,
 *      one receiver clock per system, smoothing bound to the satellites of
 *      the epoch). Without a log this part is skipped, and says so.
 *
 * Each family is one entry of the table `families` below, with the same
 * four steps (built-in checks, start of the log, one epoch, end). A family
 * added to the library gets its own entry; the Epoch record carries what
 * one family hands the next (the converter's list to the satellite
 * computation, its rows to the solution, and so on).
 *
 * Exit code 0 when every check passed, 1 otherwise.
 */
#include <math.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "zel.h"

/* ------------------------------------------------------------------ */
/* Checks                                                              */

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

static int near(double a, double b, double tol) {
    return fabs(a - b) <= tol;
}

/* ------------------------------------------------------------------ */
/* Built-in messages                                                   */

#define C_LIGHT 299792458.0
#define K2_32 (1.0 / 4294967296.0)
#define K2_24 (1.0 / 16777216.0)
#define K2_16 (1.0 / 65536.0)

/* The receiver counts seconds from 1980-01-06, the library from
 * 2000-01-01: 7300 days apart. */
#define RSVR_TO_ZEL 630720000u
/* 2024-01-01 15:00:00 of the library's time scale: six four-year blocks
 * of 1461 days, then 15 hours. */
#define BUILTIN_TM (6u * 126230400u + 54000u)

static void putLE(unsigned char* p, uint64_t v, int n) {
    for (int i = 0; i < n; i++) p[i] = (unsigned char)(v >> (8 * i));
}

/* One satellite of a built-in message: C1 always, C2 when `diff` is not
 * zero; no navigation data (the strings are left zero, which the library
 * refuses), and its own receiver channel. */
typedef struct {
    int gps;
    unsigned char num, lit, chan;
    int64_t psvd;        /* 2^-32 ms */
    int32_t dop;         /* 2^-24 kHz */
    int64_t faze;        /* 2^-16 cycle */
    uint16_t ampl;
    int32_t diff;        /* C2 - C1, 2^-32 ms; 0 = no C2 */
    uint16_t elev10;     /* tenths of a degree */
} BuiltinSat;

static const BuiltinSat builtinSats[3] = {
    {0, 5, 1, 1, 286500000000LL, -25165824, 9830400000000LL, 45, 1000, 453},
    {0, 12, 3, 2, 301234567890LL, 16777216, -65536LL, 38, 0, 127},
    {1, 7, 0, 3, 290000000001LL, 8388608, 123456789LL, 50, -2000, 601},
};

/* Writes one block at `p`; returns its length. Sub-block 0 is 41 bytes
 * for GLONASS (string at 21, elevation at 34) and 59 for GPS (subframe at
 * 21, elevation at 51, parity indicator at 57: 0xFFFF = parity failed). */
static int putBlock(unsigned char* p, const BuiltinSat* s) {
    int len0 = s->gps ? 59 : 41;
    int off = 4;
    unsigned int mask = 1u | (1u << 10) | (s->diff != 0 ? 2u : 0u);
    p[0] = (unsigned char)(s->num | (s->gps ? 0x80 : 0));
    p[1] = s->lit;
    putLE(p + 2, mask, 2);

    unsigned char* sb = p + off;
    memset(sb, 0, (size_t)len0);
    sb[0] = (unsigned char)len0;
    putLE(sb + 1, (uint64_t)s->psvd, 6);
    putLE(sb + 7, (uint32_t)s->dop, 4);
    putLE(sb + 11, (uint64_t)s->faze, 8);
    putLE(sb + 19, s->ampl, 2);
    putLE(sb + (s->gps ? 51 : 34), s->elev10, 2);
    if (s->gps) putLE(sb + 57, 0xFFFF, 2);
    off += len0;

    if (s->diff != 0) {
        sb = p + off;
        memset(sb, 0, 22);
        sb[0] = 22;
        putLE(sb + 1, (uint32_t)s->diff, 4);
        putLE(sb + 5, (uint32_t)s->dop, 4);
        putLE(sb + 9, (uint64_t)s->faze, 8);
        putLE(sb + 17, (uint16_t)(s->ampl - 3), 2);
        off += 22;
    }

    sb = p + off;
    memset(sb, 0, 4);
    sb[0] = 4;
    sb[1] = s->chan;
    return off + 4;
}

/* A whole message at time `tm` with the first `nSat` built-in satellites;
 * returns its length. Meteo: 21.5 degrees, 1013.2 hPa, 45.5 %. */
static int builtinMessage(unsigned char* msg, unsigned int tm, int nSat) {
    int len = 25;
    memset(msg, 0, 25);
    msg[0] = 12;
    msg[3] = 25;
    putLE(msg + 4, tm + RSVR_TO_ZEL, 4);
    msg[9] = (unsigned char)nSat;
    msg[14] = 18;
    putLE(msg + 19, (uint16_t)215, 2);
    putLE(msg + 21, (uint16_t)10132, 2);
    putLE(msg + 23, (uint16_t)455, 2);
    for (int i = 0; i < nSat; i++) len += putBlock(msg + len, &builtinSats[i]);
    putLE(msg + 1, (uint64_t)len, 2);
    return len;
}

static double psvdMetres(int64_t raw) {
    return (double)raw * C_LIGHT * K2_32 / 1000.0;
}

/* What the built-in checks of one family hand the next. */
typedef struct {
    lsttblSat_t* lst;    /* the converter's list of the first message */
    double pos[3];       /* a receiver position (Toulouse), m */
} Builtin;

/* ------------------------------------------------------------------ */
/* The sample log                                                      */

/* One epoch of the log, as the families see it in turn. */
typedef struct {
    long index;              /* message number in the log, from 0 */
    int interpolated;        /* the log marks the message as interpolated */
    unsigned char* msg;
    lsttblSat_t* lst;        /* converter: the list of this message */
    unsigned int tm;         /* converter: epoch time, 0 = none */
    int dUtc;                /* converter: GPS-UTC seconds (last known) */
    lsttblCrdSat_t* crd;     /* crdsat: rows of this epoch */
} Epoch;

typedef struct {
    int hasPos;
    double pos[3];           /* approximate position of the recording, m */
} LogInfo;

typedef struct {
    FILE* f;
    LogInfo info;
} Log;

static uint64_t getLE(const unsigned char* p, int n) {
    uint64_t v = 0;
    for (int i = n - 1; i >= 0; i--) v = (v << 8) | p[i];
    return v;
}

static double getF64(const unsigned char* p) {
    uint64_t u = getLE(p, 8);
    double d;
    memcpy(&d, &u, sizeof d);
    return d;
}

/* Reads the file header: "ZLOG", version 1, flags (bit 0: position
 * present), header length, then the position. */
static int logOpen(Log* log, const char* path) {
    unsigned char h[36];
    memset(log, 0, sizeof *log);
    log->f = fopen(path, "rb");
    if (log->f == NULL) {
        printf("cannot open %s\n", path);
        return 0;
    }
    if (fread(h, 1, sizeof h, log->f) != sizeof h || memcmp(h, "ZLOG", 4) != 0 ||
        getLE(h + 4, 2) != 1) {
        printf("%s is not a version 1 log\n", path);
        return 0;
    }
    log->info.hasPos = (getLE(h + 6, 2) & 1) != 0;
    for (int i = 0; i < 3; i++) log->info.pos[i] = getF64(h + 12 + 8 * i);
    if (fseek(log->f, (long)getLE(h + 8, 4), SEEK_SET) != 0) return 0;
    return 1;
}

/* Next record: A5 5A, flags, 0, length L, then L message bytes. Returns
 * L, 0 at the end, -1 on a damaged or truncated record (a sample log has
 * none). */
static long logNext(Log* log, unsigned char* msg, size_t cap, int* flags) {
    unsigned char r[6];
    size_t got = fread(r, 1, 6, log->f);
    if (got == 0) return 0;
    if (got != 6 || r[0] != 0xA5 || r[1] != 0x5A) return -1;
    long len = (long)getLE(r + 4, 2);
    if (len < 3 || (size_t)len > cap) return -1;
    if (fread(msg, 1, (size_t)len, log->f) != (size_t)len) return -1;
    if ((long)getLE(msg + 1, 2) != len) return -1;
    *flags = r[2];
    return len;
}

/* ------------------------------------------------------------------ */
/* Family: converter (cnvx0c_*) and the time functions                 */

static int* cnv;
static tblGpsUtc_t* cnvGpsUtc;
static long cnvMessages, cnvGloSets, cnvGpsSets, cnvBadFlags;
static int cnvLastDUtc;

static void timeBuiltin(void) {
    unsigned int date[6] = {77, 77, 77, 77, 77, 77};
    check(tmZelToDate(0, date) == 0 && date[0] == 77 && date[5] == 77,
          "tmZelToDate(0) must refuse and leave the date alone");
    check(tmZelToDate(31622400u, date) == 1 && date[0] == 2001 && date[1] == 1 &&
              date[2] == 1 && date[3] == 0 && date[4] == 0 && date[5] == 0,
          "tmZelToDate(31622400) gave %u-%u-%u %u:%u:%u, not 2001-01-01 00:00:00",
          date[0], date[1], date[2], date[3], date[4], date[5]);
    unsigned int d3[3] = {0, 0, 0};
    DateAlmGloToDate(6, 60, d3);
    check(d3[0] == 2016 && d3[1] == 2 && d3[2] == 29,
          "DateAlmGloToDate(6, 60) gave %u-%u-%u, not 2016-02-29", d3[0], d3[1], d3[2]);
}

/* The observations of one decoded set against the built-in satellite. */
static void checkBuiltinSet(const tblHdr_t* hdr, const tblObs_t* obs, const tblAddInf_t* add,
                            const BuiltinSat* s) {
    check(hdr->length == ZEL_LEN_HDR && obs->length == ZEL_LEN_OBS &&
              add->length == ZEL_LEN_ADDINF,
          "satellite %u: table lengths %u %u %u", s->num, hdr->length, obs->length,
          add->length);
    check(hdr->num == s->num && hdr->lit == s->lit && hdr->sys == s->gps,
          "satellite %u: header says num %u lit %u sys %u", s->num, hdr->num, hdr->lit,
          hdr->sys);
    /* Zero strings and a failed parity: nothing could be taken. */
    check(hdr->badNavInfCt == 16, "satellite %u: badNavInfCt %u, not 16", s->num,
          hdr->badNavInfCt);
    check(near(hdr->um, s->elev10 * 0.1, 1e-9), "satellite %u: elevation %.3f, not %.1f",
          s->num, hdr->um, s->elev10 * 0.1);
    check(obs->tmZel == BUILTIN_TM, "satellite %u: tmZel %u, not %u", s->num, obs->tmZel,
          BUILTIN_TM);

    double c1 = psvdMetres(s->psvd);
    check(obs->actual[0] == 1 && near(obs->psvd[0], c1, 1e-6) &&
              near(obs->dop[0], 1000.0 * s->dop * K2_24, 1e-9) &&
              near(obs->faze[0], (double)s->faze * K2_16, 1e-6) && obs->ampl[0] == s->ampl,
          "satellite %u: C1 is %d %.4f m %.4f Hz %.4f cyc %u", s->num, obs->actual[0],
          obs->psvd[0], obs->dop[0], obs->faze[0], obs->ampl[0]);
    if (s->diff != 0) {
        check(obs->actual[1] == 1 && near(obs->psvd[1], c1 + psvdMetres(s->diff), 1e-6) &&
                  obs->ampl[1] == (uint32_t)(s->ampl - 3),
              "satellite %u: C2 is %d %.4f m, not C1 %+.4f m", s->num, obs->actual[1],
              obs->psvd[1], psvdMetres(s->diff));
    } else {
        check(obs->actual[1] == 0, "satellite %u: C2 valid without its sub-block", s->num);
    }
    check(obs->actual[2] == 0 && obs->actual[3] == 0, "satellite %u: B1/B2 valid", s->num);
    check(add->actual == 1 && add->present[0] == 1 && add->chan == s->chan,
          "satellite %u: additional information actual %u present %u chan %u", s->num,
          add->actual, add->present[0], add->chan);
}

static void converterBuiltin(Builtin* b) {
    static unsigned char msg[1024];
    timeBuiltin();

    cnv = (int*)cnvx0c_init();
    check(cnv != NULL, "cnvx0c_init returned no handle");
    builtinMessage(msg, BUILTIN_TM, 3);
    lsttblSat_t* lst = (lsttblSat_t*)cnvx0c_upx0c(cnv, msg);
    b->lst = lst;
    check(lst != NULL, "cnvx0c_upx0c returned no list");
    if (lst == NULL) return;
    check(lst->numGlo == 2 && lst->numGps == 1, "%u GLONASS and %u GPS sets, not 2 and 1",
          lst->numGlo, lst->numGps);
    if (lst->numGlo == 2 && lst->numGps == 1) {
        for (int i = 0; i < 2; i++) {
            const tblSatGlo* g = &lst->tblGlo[i];
            checkBuiltinSet(g->tblHdr, g->tblObs, g->tblAddInf, &builtinSats[i]);
            check(g->tblOprGlo[0]->length == ZEL_LEN_OPRGLO && g->tblOprGlo[0]->actual == 0 &&
                      g->tblTmPrmGlo[1]->length == ZEL_LEN_TMPRMGLO &&
                      g->tblAlmGlo[0]->length == ZEL_LEN_ALMGLO && g->tblAlmGlo[0]->actual == 0,
                  "GLONASS set %d: navigation tables wrong without strings", i);
        }
        const tblSatGps* s = &lst->tblGps[0];
        checkBuiltinSet(s->tblHdr, s->tblObs, s->tblAddInf, &builtinSats[2]);
        check(s->tblAlmGps->length == ZEL_LEN_ALMGPS && s->tblAlmGps->actual == 0 &&
                  s->tblTmPrmGps->length == ZEL_LEN_TMPRMGPS && s->tblOprGps->actual == 0,
              "GPS set: navigation tables wrong without subframes");
    }
    check(lst->meteo != NULL && lst->meteo->actual == 1 &&
              near(lst->meteo->temperature, 21.5, 1e-9) &&
              near(lst->meteo->pressure, 1013.2, 1e-9) && near(lst->meteo->humidity, 45.5, 1e-9),
          "meteo not 21.5 C, 1013.2 hPa, 45.5 %%");

    unsigned int tm = getTmZel(lst);
    unsigned int date[6] = {0, 0, 0, 0, 0, 0};
    check(tm == BUILTIN_TM, "getTmZel gave %u, not %u", tm, BUILTIN_TM);
    check(tmZelToDate(tm, date) == 1 && date[0] == 2024 && date[1] == 1 && date[2] == 1 &&
              date[3] == 15 && date[4] == 0 && date[5] == 0,
          "the epoch is not 2024-01-01 15:00:00");

    tblGpsUtc_t* utc = (tblGpsUtc_t*)cnvx0c_getTblGpsUtc(cnv);
    check(utc != NULL && utc->actual == 1 && utc->dtGpsUtc == 18,
          "GPS-UTC record not 18 s with a GPS satellite in the message");

    /* Another type leaves the list as it was. */
    static unsigned char other[1024];
    memcpy(other, msg, sizeof other);
    other[0] = 11;
    check(cnvx0c_upx0c(cnv, other) == lst && lst->numGlo == 2 && lst->numGps == 1,
          "a message of type 11 changed the list");

    /* A second handle is a second receiver: feeding it changes nothing
     * here. */
    int* cnv2 = (int*)cnvx0c_init();
    builtinMessage(other, BUILTIN_TM + 1, 1);
    lsttblSat_t* lst2 = (lsttblSat_t*)cnvx0c_upx0c(cnv2, other);
    check(lst2 != lst && lst2->numGlo == 1 && lst2->numGps == 0 && lst->numGlo == 2,
          "two converter handles are not independent");
    cnvx0c_clear(cnv2);
    check(lst2->numGlo == 0 && lst2->numGps == 0, "cnvx0c_clear left the list filled");
    cnvx0c_finit(cnv2);
}

static void converterStart(const LogInfo* info) {
    (void)info;
    cnvx0c_clear(cnv);
    cnvGpsUtc = (tblGpsUtc_t*)cnvx0c_getTblGpsUtc(cnv);
}

static void converterEpoch(Epoch* e) {
    e->lst = (lsttblSat_t*)cnvx0c_upx0c(cnv, e->msg);
    e->tm = getTmZel(e->lst);
    if (cnvGpsUtc->actual) cnvLastDUtc = (int)cnvGpsUtc->dtGpsUtc;
    e->dUtc = cnvLastDUtc;
    cnvMessages++;
    cnvGloSets += e->lst->numGlo;
    cnvGpsSets += e->lst->numGps;
    /* The sample is a clean recording: every string is taken and in
     * sequence, and every set carries this epoch's time. */
    for (uint32_t i = 0; i < e->lst->numGlo; i++) {
        const tblSatGlo* g = &e->lst->tblGlo[i];
        if (g->tblHdr->badNavInfCt != 0 || g->tblObs->tmZel != e->tm) cnvBadFlags++;
    }
    for (uint32_t i = 0; i < e->lst->numGps; i++) {
        const tblSatGps* s = &e->lst->tblGps[i];
        if (s->tblHdr->badNavInfCt != 0 || s->tblObs->tmZel != e->tm) cnvBadFlags++;
    }
}

static void converterFinish(void) {
    if (cnvMessages > 0) {
        printf("converter: %ld messages, %ld GLONASS and %ld GPS table sets\n", cnvMessages,
               cnvGloSets, cnvGpsSets);
        check(cnvGloSets > 0 && cnvGpsSets > 0, "the log gave no GLONASS or no GPS sets");
        check(cnvBadFlags == 0, "%ld sets with a header flag or a foreign time", cnvBadFlags);
    }
    cnvx0c_finit(cnv);
}

/* ------------------------------------------------------------------ */
/* Family: satellite computation (crdsat_*)                            */

static int* crd;
static long crdEpochs, crdEpochsGlo, crdEpochsGps, crdRows, crdRowsBad;
static int crdHasPos;
static double crdPos[3];

static void crdsatBuiltin(Builtin* b) {
    crd = (int*)crdsat_init();
    check(crd != NULL, "crdsat_init returned no handle");
    crdsat_setPnt(crd, b->pos, 0, 0);
    /* No ephemeris yet: no satellite can be computed. */
    lsttblCrdSat_t* l0 = (lsttblCrdSat_t*)crdsat_get(crd, b->lst, BUILTIN_TM, 18);
    check(l0 != NULL && l0->length == ZEL_LEN_LSTCRDSAT && l0->num == 0 && l0->tm == 0,
          "crdsat_get without ephemerides: a list with rows");
    lsttblCrdSat_t* l1 = (lsttblCrdSat_t*)crdsat_getGlo(crd, b->lst, BUILTIN_TM, 1, 0);
    check(l1 != NULL && l1 != l0 && l1->num == 0, "crdsat_getGlo on signal 1: not list 1");
    check(crdsat_getGps(crd, b->lst, BUILTIN_TM, 18) == l0, "crdsat_getGps: not list 0");
    crdsat_clear(crd);
}

static void crdsatStart(const LogInfo* info) {
    crdHasPos = info->hasPos;
    if (!crdHasPos) {
        printf("crdsat: the log has no position: satellite geometry not checked\n");
        return;
    }
    memcpy(crdPos, info->pos, sizeof crdPos);
    crdsat_setPnt(crd, crdPos, 0, 0);
}

/* Rows of one system: at orbit height, at a distance a satellite above
 * the horizon can have, and (corrected pseudorange less geometric
 * distance) the same receiver clock for all of them, to within what the
 * broadcast orbits, the atmosphere models and the signals' biases leave. */
static void crdsatCheckRows(const Epoch* e, int sys) {
    double lo = 1e300, hi = -1e300;
    int n = 0;
    for (uint32_t i = 0; i < e->crd->num; i++) {
        const tblCrdSat_t* r = &e->crd->tbl[i];
        if (r->sys != sys || r->bad) continue;
        double x = r->xyz[0], y = r->xyz[1], z = r->xyz[2];
        double radius = sqrt(x * x + y * y + z * z);
        double dx = x - crdPos[0], dy = y - crdPos[1], dz = z - crdPos[2];
        double range = sqrt(dx * dx + dy * dy + dz * dz);
        check(radius > 25.0e6 && radius < 27.0e6 && range > 19.0e6 && range < 26.0e6,
              "message %ld: %s %u at radius %.0f m, range %.0f m", e->index,
              sys ? "GPS" : "GLONASS", r->num, radius, range);
        double clk = r->psvd - range;
        if (clk < lo) lo = clk;
        if (clk > hi) hi = clk;
        n++;
    }
    if (n >= 2)
        check(hi - lo < 100.0, "message %ld: %s clock terms spread over %.1f m", e->index,
              sys ? "GPS" : "GLONASS", hi - lo);
}

static void crdsatEpoch(Epoch* e) {
    e->crd = NULL;
    if (e->tm == 0) return;
    e->crd = (lsttblCrdSat_t*)crdsat_get(crd, e->lst, e->tm, e->dUtc);
    crdEpochs++;
    if (e->crd->num == 0) return;
    check(e->crd->tm == e->tm, "message %ld: rows of time %u, not %u", e->index, e->crd->tm,
          e->tm);
    int glo = 0, gps = 0;
    for (uint32_t i = 0; i < e->crd->num; i++) {
        const tblCrdSat_t* r = &e->crd->tbl[i];
        crdRows++;
        if (r->bad) crdRowsBad++;
        if (r->sys == 0) glo = 1;
        if (r->sys == 1) gps = 1;
    }
    crdEpochsGlo += glo;
    crdEpochsGps += gps;
    if (crdHasPos) {
        crdsatCheckRows(e, 0);
        crdsatCheckRows(e, 1);
    }
}

static void crdsatFinish(void) {
    if (crdEpochs > 0) {
        printf("crdsat: %ld epochs, %ld rows (%ld flagged bad); GLONASS rows in %ld, GPS rows "
               "in %ld\n",
               crdEpochs, crdRows, crdRowsBad, crdEpochsGlo, crdEpochsGps);
        /* Ephemerides are complete after half a minute at most: from
         * then on every epoch has rows of both systems. */
        check(crdEpochsGlo > crdEpochs / 2 && crdEpochsGps > crdEpochs / 2,
              "too few epochs with satellite rows");
        check(crdRowsBad == 0, "%ld rows failed the plausibility check", crdRowsBad);
    }
    crdsat_finit(crd);
}

/* ------------------------------------------------------------------ */
/* Family: filtering (filter_*, initStatic, staticFilter, KalmanFilter*) */

static int* flt;
static long fltEpochs, fltTables;

/* Static averaging from outside: the average starts at the Earth's
 * centre, halves its way towards the solutions while they are more than
 * 1000 m away (-8), then averages them in (0). */
static void staticBuiltin(const double pos[3]) {
    int* h = (int*)filter_init();
    double k[5] = {0.01, 0.01, 0.01, 0.01, 0.01};
    double start[3] = {pos[0], pos[1], pos[2]};
    check(initStatic(h, start, 100, k, 0, 5, 0) == -6, "initStatic with nMax 0 not -6");
    check(initStatic(h, start, 100, k, 50, 5, 3) == -8, "initStatic with mode 3 not -8");
    check(initStatic(h, start, 100, k, 50, 5, 0) == 0, "initStatic refused good values");

    tblCrdPnt_t rec;
    int coarse = 0, rc = -8;
    unsigned int t = 100;
    while (rc == -8 && coarse < 40) {
        memset(&rec, 0, sizeof rec);
        rec.length = ZEL_LEN_CRDPNT;
        rec.actual = 1;
        rec.sys = 0;
        rec.xyz[0] = pos[0];
        rec.xyz[1] = pos[1];
        rec.xyz[2] = pos[2];
        rec.dop10 = 15;
        rc = staticFilter(h, &rec, ++t);
        if (rc == -8) coarse++;
    }
    /* 6400 km halved to below 1 km: thirteen coarse steps. */
    check(rc == 0 && coarse == 13, "static averaging: %d coarse steps, then %d", coarse, rc);
    double dx = rec.xyz[0] - pos[0], dy = rec.xyz[1] - pos[1], dz = rec.xyz[2] - pos[2];
    check(sqrt(dx * dx + dy * dy + dz * dz) < 1000.0,
          "static averaging: first average not within 1000 m");
    rec.sys = 1;
    check(staticFilter(h, &rec, ++t) == -3, "a GPS solution in GLONASS mode not -3");
    filter_finit(h);
}

static void filterBuiltin(Builtin* b) {
    staticBuiltin(b->pos);

    flt = (int*)filter_init();
    check(flt != NULL, "filter_init returned no handle");
    const tblSatGlo* g = &b->lst->tblGlo[0];
    double c1 = g->tblObs->psvd[0];

    /* The first new satellite binds every free tracker. */
    lsttblKalmanObs_t* out = (lsttblKalmanObs_t*)KalmanFilterObs(flt, b->lst);
    check(out != NULL && out->num == ZEL_NUM_SLOTS, "KalmanFilterObs: %u tables, not 24",
          out ? out->num : 0);
    if (out != NULL && out->num > 0) {
        const tblKalmanObs_t* t = &out->tbl[0];
        check(t->length == ZEL_LEN_KALMANOBS && t->actual == 1 && t->num == g->tblHdr->num &&
                  t->tmZel == BUILTIN_TM && t->psvd[0].actual == 1 &&
                  near(t->psvd[0].x, c1, 1e-6) && t->psvd[2].actual == 0,
              "KalmanFilterObs: first table not bound to satellite %u at its C1",
              g->tblHdr->num);
    }

    /* Smoothing in place starts each filter at the measurement. */
    int* h = (int*)filter_init();
    KalmanFilterObs0(h, b->lst);
    check(near(g->tblObs->psvd[0], c1, 1e-6), "KalmanFilterObs0 moved a first measurement");
    filter_finit(h);
}

static void filterStart(const LogInfo* info) {
    (void)info;
    filter_finit(flt);
    flt = (int*)filter_init();
}

/* Every table handed out belongs to a GLONASS satellite of this epoch.
 * A satellite may hold several trackers (a new one takes every free
 * tracker), but only the first of them follows it; the others keep the
 * time they were bound at. The tables come in tracker order, so the
 * first table of each satellite carries this epoch's time. */
static void filterEpoch(Epoch* e) {
    if (e->tm == 0) return;
    lsttblKalmanObs_t* out = (lsttblKalmanObs_t*)KalmanFilterObs(flt, e->lst);
    fltEpochs++;
    check(out->num <= ZEL_NUM_SLOTS, "message %ld: %u smoothing tables", e->index, out->num);
    int seen[128];
    memset(seen, 0, sizeof seen);
    for (uint32_t i = 0; i < out->num && i < ZEL_NUM_SLOTS; i++) {
        const tblKalmanObs_t* t = &out->tbl[i];
        int found = 0;
        for (uint32_t j = 0; j < e->lst->numGlo; j++)
            if (e->lst->tblGlo[j].tblHdr->num == t->num && t->sys == 0) found = 1;
        int first = !seen[t->num & 127];
        seen[t->num & 127] = 1;
        check(found && t->actual == 1 && (first ? t->tmZel == e->tm : t->tmZel <= e->tm),
              "message %ld: smoothing table %u for satellite %u (sys %u) at %u", e->index, i,
              t->num, t->sys, t->tmZel);
        fltTables++;
    }
}

static void filterFinish(void) {
    if (fltEpochs > 0)
        printf("filter: %ld epochs, %ld smoothing tables\n", fltEpochs, fltTables);
    filter_finit(flt);
}

/* ------------------------------------------------------------------ */
/* The families, in the order of an epoch. The solution (crdpnt_*),      */
/* integrity (raim*) and prediction (prgns_*) families take their places */
/* after crdsat when they are added.                                     */

typedef struct {
    const char* name;
    void (*builtin)(Builtin*);
    void (*start)(const LogInfo*);
    void (*epoch)(Epoch*);
    void (*finish)(void);
} Family;

static const Family families[] = {
    {"converter", converterBuiltin, converterStart, converterEpoch, converterFinish},
    {"crdsat", crdsatBuiltin, crdsatStart, crdsatEpoch, crdsatFinish},
    {"filter", filterBuiltin, filterStart, filterEpoch, filterFinish},
};
#define N_FAMILIES (int)(sizeof families / sizeof families[0])

static int runLog(const char* path) {
    Log log;
    if (!logOpen(&log, path)) {
        if (log.f) fclose(log.f);
        check(0, "the sample log %s could not be read", path);
        return 0;
    }
    for (int i = 0; i < N_FAMILIES; i++) families[i].start(&log.info);

    static unsigned char msg[65536];
    Epoch e;
    long len;
    int flags = 0;
    memset(&e, 0, sizeof e);
    e.msg = msg;
    while ((len = logNext(&log, msg, sizeof msg, &flags)) > 0) {
        e.interpolated = (flags & 1) != 0;
        for (int i = 0; i < N_FAMILIES; i++) families[i].epoch(&e);
        e.index++;
    }
    check(len == 0, "the sample log is damaged after %ld messages", e.index);
    check(e.index > 0, "the sample log holds no message");
    fclose(log.f);
    return 1;
}

int main(int argc, char** argv) {
    Builtin b;
    memset(&b, 0, sizeof b);
    /* Toulouse, near the IGS station TLSE. */
    b.pos[0] = 4627851.6;
    b.pos[1] = 119640.3;
    b.pos[2] = 4372993.7;

    for (int i = 0; i < N_FAMILIES; i++) families[i].builtin(&b);
    printf("built-in messages: %d checks, %d failed\n", nChecks, nFailed);

    if (argc > 1 && argv[1][0] != '\0') {
        printf("sample log: %s\n", argv[1]);
        runLog(argv[1]);
    } else {
        printf("SKIPPED: no sample log given; the real-data checks did not run\n");
    }
    for (int i = 0; i < N_FAMILIES; i++) families[i].finish();

    printf("conformance: %d checks, %d failed\n", nChecks, nFailed);
    return nFailed == 0 ? 0 : 1;
}
