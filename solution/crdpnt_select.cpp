/*
 * Row selection: which satellite rows of an epoch take part in the fix of
 * each mode, and what the solution record says about them.
 *
 * Only rows whose `bad` flag is 0 are used. The rows are copied onto the
 * stack (at most 24; a longer list is cut there) so that the solver may
 * work on them without touching the caller's list, in particular the
 * datum shift of GPS rows in the combined mode.
 *
 * A selection that finds too few rows ends without calling the solver;
 * whatever it had already written to the record (counts, lists, `sys`)
 * stays, with `actual` 0.
 */
#include <cstring>

#include "solution/crdpnt.h"

namespace {

/* Rows of one epoch the solvers can see. */
inline uint32_t rowsOf(const lsttblCrdSat_t* lst) {
    return lst->num < ZEL_NUM_CRDSAT ? lst->num : ZEL_NUM_CRDSAT;
}

/* Copies the usable rows of system `sys`; returns their number. */
int copyRows(const lsttblCrdSat_t* lst, uint8_t sys, tblCrdSat_t* rows) {
    int count = 0;
    const uint32_t n = rowsOf(lst);
    for (uint32_t i = 0; i < n; i++) {
        const tblCrdSat_t& r = lst->tbl[i];
        if (r.sys == sys && r.bad == 0) rows[count++] = r;
    }
    return count;
}

}  // namespace

void crdpnt_t::clcCrdPntGlo(lsttblCrdSat_t* lst, tblCrdPnt_t* out) {
    if (lst->num == 0) return;
    tblCrdSat_t rows[ZEL_NUM_CRDSAT];
    std::memset(rows, 0, sizeof rows);
    const int count = copyRows(lst, 0, rows);
    if (count < 4) return;

    out->numGlo = (uint8_t)count;
    for (int k = 0; k < count; k++) out->lstGlo[k] = rows[k].num;
    out->sys = 0;
    out->numGps = 0;
    std::memset(out->lstGps, 0, sizeof out->lstGps);

    navSolveOneSystem(count, rows, out);
    navSpeedTask(out, rows, count);
}

/*
 * The GPS numbers are copied for as many rows as `numGlo` held before this
 * epoch, not for the rows just counted, and only then is `numGlo` zeroed.
 * The order is old and is kept: hosts read `numGps` for the count, and
 * after the first GPS-only epoch (numGlo 0) no numbers are copied at all.
 */
void crdpnt_t::clcCrdPntGps(lsttblCrdSat_t* lst, tblCrdPnt_t* out) {
    if (lst->num == 0) return;
    tblCrdSat_t rows[ZEL_NUM_CRDSAT];
    std::memset(rows, 0, sizeof rows);
    const int count = copyRows(lst, 1, rows);
    if (count < 4) return;

    out->numGps = (uint8_t)count;
    for (int k = 0; k < out->numGlo && k < ZEL_NUM_CRDSAT; k++)
        out->lstGps[k] = rows[k].num;
    out->sys = 1;
    out->numGlo = 0;
    std::memset(out->lstGlo, 0, sizeof out->lstGlo);

    navSolveOneSystem(count, rows, out);
    navSpeedTask(out, rows, count);
}

/*
 * Both systems. The rows keep their list positions: a row of neither
 * system is not copied but still takes its place (left zero) and counts
 * towards the total, so the solver sees it. The converter only ever
 * produces GLONASS and GPS rows, so this matters to hand-made lists only.
 * GPS coordinates are shifted to PZ-90 so that one frame serves both.
 */
void crdpnt_t::clcCrdPntGloGps(lsttblCrdSat_t* lst, tblCrdPnt_t* out) {
    if (lst->num == 0) return;
    tblCrdSat_t rows[ZEL_NUM_CRDSAT];
    std::memset(rows, 0, sizeof rows);
    int total = 0, nGlo = 0, nGps = 0;
    const uint32_t n = rowsOf(lst);
    for (uint32_t i = 0; i < n; i++) {
        const tblCrdSat_t& r = lst->tbl[i];
        if (r.bad != 0) continue;
        if (r.sys == 1) {
            rows[total] = r;
            double wgs[3] = {r.xyz[0], r.xyz[1], r.xyz[2]};
            double pz[3];
            WGS84_PZ90(wgs, pz);
            rows[total].xyz[0] = pz[0];
            rows[total].xyz[1] = pz[1];
            rows[total].xyz[2] = pz[2];
            out->lstGps[nGps++] = r.num;
        } else if (r.sys == 0) {
            rows[total] = r;
            out->lstGlo[nGlo++] = r.num;
        }
        total++;
    }
    if (total < 4) return;

    if (nGlo > 0 && nGps == 0) {
        out->sys = 0;
        out->numGlo = (uint8_t)nGlo;
        out->numGps = 0;
        navSolveOneSystem(total, rows, out);
    } else if (nGps > 0 && nGlo == 0) {
        out->sys = 1;
        out->numGps = (uint8_t)nGps;
        out->numGlo = 0;
        navSolveOneSystem(total, rows, out);
    } else if (nGps > 0 && nGlo > 0) {
        /* Two clock unknowns need a fifth row. */
        if (total == 4) return;
        out->sys = 10;
        out->numGps = (uint8_t)nGps;
        out->numGlo = (uint8_t)nGlo;
        navSolveTwoSystem(total, rows, out);
    } else {
        return; /* rows of neither system only: nothing to solve for */
    }
    navSpeedTask(out, rows, total);
}
