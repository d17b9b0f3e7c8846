/*
 * The epoch pipeline over the C interface. See solve_pipeline.h.
 */
#include "solve_pipeline.h"

#include <cmath>

namespace solve {

namespace {

const double kMinRadius = 6371000.0 - 1000000.0;
const double kMaxRadius = 6371000.0 + 1000000.0;

}  // namespace

bool plausible(const tblCrdPnt_t* fix) {
    if (fix->actual != 1) return false;
    const double r = std::sqrt(fix->xyz[0] * fix->xyz[0] + fix->xyz[1] * fix->xyz[1] +
                               fix->xyz[2] * fix->xyz[2]);
    return std::isfinite(r) && r > kMinRadius && r < kMaxRadius;
}

Pipeline::Pipeline(int mode)
    : mode_(mode),
      cnv_(static_cast<int*>(cnvx0c_init())),
      sat_(static_cast<int*>(crdsat_init())),
      pnt_(static_cast<int*>(crdpnt_init())),
      boot_(static_cast<int*>(crdpnt_init())) {
    crdpnt_set(pnt_, mode);
    crdpnt_set(boot_, 0);
}

Pipeline::~Pipeline() {
    crdpnt_finit(boot_);
    crdpnt_finit(pnt_);
    crdsat_finit(sat_);
    cnvx0c_finit(cnv_);
}

void Pipeline::seed(const double xyzWgs84[3]) {
    double p[3] = {xyzWgs84[0], xyzWgs84[1], xyzWgs84[2]};
    crdsat_setPnt(sat_, p, 0, 0);
    pointSet_ = true;
}

void* Pipeline::intake(uint8_t* msg) {
    lst_ = static_cast<lsttblSat_t*>(cnvx0c_upx0c(cnv_, msg));
    /* The converter's GPS-UTC record is valid when the message carried
     * GPS satellites; otherwise the last value stays in use. */
    const tblGpsUtc_t* utc = static_cast<const tblGpsUtc_t*>(cnvx0c_getTblGpsUtc(cnv_));
    if (utc->actual) dUtc_ = (int)utc->dtGpsUtc;
    tm_ = getTmZel(lst_);
    return lst_;
}

void* Pipeline::satellites() {
    crd_ = static_cast<lsttblCrdSat_t*>(crdsat_get(sat_, lst_, tm_, dUtc_));
    return crd_;
}

const tblCrdPnt_t* Pipeline::solution() {
    fix_ = static_cast<const tblCrdPnt_t*>(crdpnt_get(pnt_, crd_));
    spd_ = static_cast<const tblSpdPnt_t*>(crdpnt_getSpd(pnt_));
    return fix_;
}

/* The first point from GLONASS rows alone: they carry no ionospheric
 * term, so they are sound without a point. Without enough GLONASS rows a
 * fix in the chosen mode may still do: GPS rows are sound too as long as
 * no ionosphere table has arrived, and NaN rows never give a plausible
 * fix. */
bool Pipeline::bootstrap() {
    satellites();
    const tblCrdPnt_t* first = static_cast<const tblCrdPnt_t*>(crdpnt_get(boot_, crd_));
    unsigned int datum = 1;
    if (!plausible(first)) {
        first = solution();
        datum = this->datum();
        if (!plausible(first)) return false;
    }
    double p[3] = {first->xyz[0], first->xyz[1], first->xyz[2]};
    crdsat_setPnt(sat_, p, 0, datum);
    pointSet_ = true;
    return true;
}

void Pipeline::follow(const tblCrdPnt_t* fix) {
    if (!plausible(fix)) return;
    double p[3] = {fix->xyz[0], fix->xyz[1], fix->xyz[2]};
    crdsat_setPnt(sat_, p, 0, datum());
}

bool Pipeline::run(uint8_t* msg) {
    intake(msg);
    fix_ = nullptr;
    spd_ = nullptr;
    if (tm_ == 0) return false;
    if (tableHook_) tableHook_(lst_, tableCtx_);
    if (!pointSet_ && !bootstrap()) {
        /* No point yet: the epoch is reported without a fix. */
        return true;
    }
    satellites();
    if (hook_) hook_(crd_, hookCtx_);
    solution();
    follow(fix_);
    return true;
}

}  // namespace solve
