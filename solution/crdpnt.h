/*
 * crdpnt_t: the receiver's position, clock offset, GLONASS-GPS time offset
 * and velocity from one epoch of satellite rows (lsttblCrdSat_t).
 *
 * A mode set by the host chooses the systems: 0 GLONASS only, 1 GPS only,
 * 10 both (a second clock unknown then absorbs the offset between the two
 * system time scales). The fit is an iterated linearised least-squares
 * solution that starts from the centre of the Earth; after every position
 * fix the Doppler values of the same rows give the velocity.
 *
 * The object owns its two result records; every epoch runs on fixed
 * storage (rows copied to the stack, normal matrices of at most 7
 * unknowns), so nothing is allocated after construction.
 *
 * Units: metres, seconds, metres per second. Positions are PZ-90 whenever
 * GLONASS takes part or the combined mode is chosen, WGS-84 for GPS only.
 */
#ifndef ZELNAV_SOLUTION_CRDPNT_H
#define ZELNAV_SOLUTION_CRDPNT_H

#include <stdint.h>

#include "tbl_crd.h"
#include "tbl_pnt.h"

/* Values of `mode`. */
#define CRDPNT_MODE_GLO 0
#define CRDPNT_MODE_GPS 1
#define CRDPNT_MODE_GLOGPS 10

/* Largest system lsolve accepts. */
#define CRDPNT_MAX_UNKNOWNS 7

class crdpnt_t {
public:
    crdpnt_t();
    ~crdpnt_t();
    crdpnt_t(const crdpnt_t&) = delete;
    crdpnt_t& operator=(const crdpnt_t&) = delete;

    void set(int mode);
    int getMode() const { return mode; }
    /* Forgets the last fix; the time offset and the velocity stay. */
    void clear();

    /* One epoch in the current mode; always returns the object's record. */
    tblCrdPnt_t* get(lsttblCrdSat_t* lst);
    /* GLONASS fix with the receiver clock given from outside (seconds);
     * only in mode 0. */
    tblCrdPnt_t* getTau(lsttblCrdSat_t* lst, double tau);
    tblSpdPnt_t* getSpd() { return spd; }

    /* Row selection per mode, then the solver and the velocity task. */
    void clcCrdPntGlo(lsttblCrdSat_t* lst, tblCrdPnt_t* out);
    void clcCrdPntGps(lsttblCrdSat_t* lst, tblCrdPnt_t* out);
    void clcCrdPntGloGps(lsttblCrdSat_t* lst, tblCrdPnt_t* out);
    void clcCrdPntGloTau(lsttblCrdSat_t* lst, tblCrdPnt_t* out, double tau);

    /* Solvers over n rows: X, Y, Z and one clock; X, Y, Z, the clock and
     * the GPS time offset; X, Y, Z with the clock fixed at c * tau. */
    void navSolveOneSystem(int n, tblCrdSat_t* rows, tblCrdPnt_t* out);
    void navSolveTwoSystem(int n, tblCrdSat_t* rows, tblCrdPnt_t* out);
    void navSolveOneSystemTau(int n, tblCrdSat_t* rows, tblCrdPnt_t* out,
                              double tau);

    /* Velocity and clock drift from the Doppler values of the rows of a
     * fix; writes the velocity record. */
    void navSpeedTask(tblCrdPnt_t* pnt, tblCrdSat_t* rows, int n);

    /* Gauss-Jordan on the n x (n + 1) augmented normal matrix `m`
     * (row-major); on success `m` holds [inverse | solution]. Returns 0,
     * -1 for n outside 1..7 (m untouched), -2 for a vanishing pivot. */
    static int lsolve(int n, double* m);
    /* Distance between the first three elements of a and b. */
    static double r_xyz(double* a, double* b);
    /* Range plus the clock term state[3]: the predicted pseudorange. */
    static double r_xyzt(double* sat, double* state);

    void WGS84_PZ90(double* in, double* out);
    void PZ90_WGS84(double* in, double* out);

private:
    /* Earth rotation rate used to carry a fix through the receiver clock
     * offset: the GPS value in GPS-only mode, the GLONASS one otherwise. */
    double omegaEOfMode() const;

    tblCrdPnt_t* pnt;
    int mode;
    tblSpdPnt_t* spd;
};

#endif
