/*
 * One receiver's messages through every handle family of the library, in
 * the order a host that uses all of it would call them: converter,
 * observation smoothing, almanac prediction, satellite computation,
 * integrity monitor, position solution and velocity, position filter and
 * static averaging.
 *
 * It is the common driver of the long-run test (the soak program), the
 * fuzz target of the log and the mutation test of the message check, so
 * that all three exercise the same calls. It must only be given messages
 * the message check (tools/x0ccheck) has accepted: the library trusts the
 * lengths inside a message.
 *
 * Header only, on the C interface alone, so that programs linking either
 * the shared or the static library can use it.
 */
#ifndef ZELNAV_EVERY_HANDLE_H
#define ZELNAV_EVERY_HANDLE_H

#include <cmath>
#include <cstdint>

#include "zel.h"

namespace soak {

class EveryHandle {
public:
    /* Combined GPS + GLONASS solutions; the reference point of the
     * atmospheric corrections starts at `approx` (WGS-84 XYZ, m) and
     * follows every plausible fix. */
    explicit EveryHandle(const double approx[3])
        : cnv_(static_cast<int*>(cnvx0c_init())),
          sat_(static_cast<int*>(crdsat_init())),
          pnt_(static_cast<int*>(crdpnt_init())),
          prg_(static_cast<int*>(prgns_init())),
          flt_(static_cast<int*>(filter_init())),
          raim_(static_cast<int*>(raim_init())) {
        double p[3] = {approx[0], approx[1], approx[2]};
        crdsat_setPnt(sat_, p, 0, 0);
        crdpnt_set(pnt_, kMode);
        prgns_set(prg_, p, 0, 0, 5);
        prev_ = tblCrdPnt_t();
    }
    ~EveryHandle() {
        raim_finit(raim_);
        filter_finit(flt_);
        prgns_finit(prg_);
        crdpnt_finit(pnt_);
        crdsat_finit(sat_);
        cnvx0c_finit(cnv_);
    }
    EveryHandle(const EveryHandle&) = delete;
    EveryHandle& operator=(const EveryHandle&) = delete;

    /* The converter alone on one checked message: brings navigation data
     * in without running the rest (a host catching up on a backlog). */
    void intake(uint8_t* msg) { lst_ = static_cast<lsttblSat_t*>(cnvx0c_upx0c(cnv_, msg)); }

    /* Runs one checked message. True when it is an epoch (a time and
     * satellites); fix() is then this epoch's solution. */
    bool run(uint8_t* msg) {
        lst_ = static_cast<lsttblSat_t*>(cnvx0c_upx0c(cnv_, msg));
        lsttblSat_t* lst = lst_;
        const tblGpsUtc_t* utc = static_cast<const tblGpsUtc_t*>(cnvx0c_getTblGpsUtc(cnv_));
        if (utc->actual) dUtc_ = (int)utc->dtGpsUtc;
        tm_ = getTmZel(lst);
        fix_ = nullptr;
        if (tm_ == 0) return false;
        unsigned int date[6];
        tmZelToDate(tm_, date);

        KalmanFilterObs0(flt_, lst);
        const lsttblPrgSat* seen = static_cast<const lsttblPrgSat*>(prgns_get1(prg_, lst));
        visible_ = (int)seen->numPrg;

        lsttblCrdSat_t* rows = static_cast<lsttblCrdSat_t*>(crdsat_get(sat_, lst, tm_, dUtc_));
        raim_code_ = raimComb(raim_, rows, &prev_, 100.0, kMode);
        raimTau(raim_, rows, &prev_);
        fix_ = static_cast<const tblCrdPnt_t*>(crdpnt_get(pnt_, rows));
        spd_ = static_cast<const tblSpdPnt_t*>(crdpnt_getSpd(pnt_));
        if (fix_->actual != 1) return true;

        tblCrdPnt_t rec = *fix_;
        raimStats(raim_, rows, &rec);
        if (plausible(fix_)) {
            double p[3] = {fix_->xyz[0], fix_->xyz[1], fix_->xyz[2]};
            crdsat_setPnt(sat_, p, 0, 1);
        }
        filtered_ = *static_cast<const tblCrdPnt_t*>(KalmanFilterCrdPnt0(flt_, tm_, &rec));
        if (!staticOn_) {
            double k[5] = {0.01, 0.01, 0.01, 0.01, 0.01};
            double p[3] = {fix_->xyz[0], fix_->xyz[1], fix_->xyz[2]};
            staticOn_ = initStatic(flt_, p, tm_, k, 600, 10, kMode) == 0;
        }
        if (staticOn_) {
            rec = *fix_;
            staticFilter(flt_, &rec, tm_);
        }
        return true;
    }

    unsigned int tm() const { return tm_; }
    /* The converter's list of the last message. */
    lsttblSat_t* tables() const { return lst_; }
    /* This epoch's solution (PZ-90, the combined mode's datum); null when
     * the message was no epoch. */
    const tblCrdPnt_t* fix() const { return fix_; }
    const tblSpdPnt_t* speed() const { return spd_; }
    int raimCode() const { return raim_code_; }
    /* Satellites the almanac prediction lists for this epoch. */
    int visible() const { return visible_; }

    /* Raw handles, for callers that exercise further calls. */
    int* converter() { return cnv_; }
    int* satellites() { return sat_; }
    int* solver() { return pnt_; }
    int* predictor() { return prg_; }

private:
    static const int kMode = 10;

    static bool plausible(const tblCrdPnt_t* f) {
        const double r = std::sqrt(f->xyz[0] * f->xyz[0] + f->xyz[1] * f->xyz[1] +
                                   f->xyz[2] * f->xyz[2]);
        return std::isfinite(r) && r > 5371000.0 && r < 7371000.0;
    }

    int* cnv_;
    int* sat_;
    int* pnt_;
    int* prg_;
    int* flt_;
    int* raim_;
    lsttblSat_t* lst_ = nullptr;
    int dUtc_ = 0;
    unsigned int tm_ = 0;
    const tblCrdPnt_t* fix_ = nullptr;
    const tblSpdPnt_t* spd_ = nullptr;
    tblCrdPnt_t prev_;
    tblCrdPnt_t filtered_;
    bool staticOn_ = false;
    int raim_code_ = 0;
    int visible_ = 0;
};

}  // namespace soak

#endif
