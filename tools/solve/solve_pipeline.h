/*
 * One receiver's epoch pipeline over the library's C interface: message
 * converter, satellite computation, position solution.
 *
 * The satellite computation needs a reference point for its atmospheric
 * corrections, and a GPS row computed without one (once the ionosphere
 * parameters are known) is not a number. So the point is seeded before
 * the first fix: from an approximate position when the host has one,
 * otherwise from a first fix on GLONASS rows alone, which need no point;
 * that first epoch is then computed again with the point set. After every
 * good fix the point moves to it.
 *
 * Everything runs on the handles' own storage: nothing is allocated per
 * epoch, so the pipeline can be timed as it is.
 */
#ifndef ZELNAV_SOLVE_PIPELINE_H
#define ZELNAV_SOLVE_PIPELINE_H

#include <cstdint>

#include "zel.h"

namespace solve {

class Pipeline {
public:
    /* mode: 0 GLONASS, 1 GPS, 10 both. */
    explicit Pipeline(int mode);
    ~Pipeline();
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    /* A function run on the satellite rows of every epoch between the
     * satellite computation and the fix (fault injection); none by
     * default. */
    typedef void (*RowHook)(lsttblCrdSat_t* rows, void* ctx);
    void setRowHook(RowHook hook, void* ctx) {
        hook_ = hook;
        hookCtx_ = ctx;
    }

    /* A function run on the converter's list of every epoch before the
     * satellite computation (observation smoothing); none by default. */
    typedef void (*TableHook)(lsttblSat_t* lst, void* ctx);
    void setTableHook(TableHook hook, void* ctx) {
        tableHook_ = hook;
        tableCtx_ = ctx;
    }

    /* Seeds the reference point with an approximate WGS-84 position. */
    void seed(const double xyzWgs84[3]);
    bool pointSet() const { return pointSet_; }

    /* Runs one checked message. Returns true when it is an epoch (it has
     * a time and satellites); fix() and speed() then hold its result. */
    bool run(uint8_t* msg);

    /* The stages one by one, for timing: each works on what the previous
     * one left. */
    void *intake(uint8_t* msg);
    void *satellites();
    const tblCrdPnt_t* solution();

    unsigned int tm() const { return tm_; }
    int mode() const { return mode_; }
    int dUtc() const { return dUtc_; }
    const lsttblSat_t* tables() const { return lst_; }
    const lsttblCrdSat_t* rows() const { return crd_; }
    const tblCrdPnt_t* fix() const { return fix_; }
    const tblSpdPnt_t* speed() const { return spd_; }
    /* Datum of fix(): 1 PZ-90 (GLONASS or combined mode), 0 WGS-84. */
    unsigned int datum() const { return mode_ == 1 ? 0u : 1u; }

private:
    bool bootstrap();
    void follow(const tblCrdPnt_t* fix);

    int mode_;
    int* cnv_;
    int* sat_;
    int* pnt_;
    int* boot_;      /* GLONASS-only solver for the first fix */
    bool pointSet_ = false;
    int dUtc_ = 0;
    unsigned int tm_ = 0;
    lsttblSat_t* lst_ = nullptr;
    lsttblCrdSat_t* crd_ = nullptr;
    const tblCrdPnt_t* fix_ = nullptr;
    const tblSpdPnt_t* spd_ = nullptr;
    RowHook hook_ = nullptr;
    void* hookCtx_ = nullptr;
    TableHook tableHook_ = nullptr;
    void* tableCtx_ = nullptr;
};

/* A fix worth using as the next reference point: finite and within
 * 1000 km of the Earth's surface. */
bool plausible(const tblCrdPnt_t* fix);

}  // namespace solve

#endif
