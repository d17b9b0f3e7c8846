/*
 * Observation smoothing, static averaging and the position filter in
 * `zelnav solve`. See solve_filter.h.
 */
#include "solve_filter.h"

#include <cmath>
#include <cstring>

namespace solve {

namespace {

const double kNoRef[3] = {0.0, 0.0, 0.0};

}  // namespace

FilterStage::FilterStage(Pipeline& pl, const FilterOptions& opt, const double* ref)
    : pl_(pl),
      opt_(opt),
      hasRef_(ref != nullptr),
      h_(nullptr),
      raw_(ref ? ref : kNoRef),
      running_(ref ? ref : kNoRef) {
    if (ref) std::memcpy(ref_, ref, sizeof ref_);
    if (!opt_.smooth && !opt_.average && !opt_.filter) return;
    h_ = static_cast<int*>(filter_init());
    if (opt_.smooth) pl_.setTableHook(smoothHook, this);
}

FilterStage::~FilterStage() {
    if (h_ == nullptr) return;
    if (opt_.smooth) pl_.setTableHook(nullptr, nullptr);
    filter_finit(h_);
}

void FilterStage::smoothHook(lsttblSat_t* lst, void* self) {
    KalmanFilterObs0(static_cast<FilterStage*>(self)->h_, lst);
}

/* staticFilter rewrites the record it is given, so it gets a copy: the
 * fix itself is still to be reported (and filtered). */
void FilterStage::averageIn(const tblCrdPnt_t* fix) {
    const unsigned int t = pl_.tm();
    if (!started_) {
        double pos[3] = {fix->xyz[0], fix->xyz[1], fix->xyz[2]};
        const double g = opt_.staticGain;
        double k[5] = {g, g, g, g, g};
        /* Started one second back, so that this first fix is a step. */
        initCode_ = initStatic(h_, pos, t - 1, k, opt_.staticEpochs, opt_.staticDopMax,
                               (unsigned char)pl_.mode());
        started_ = true;
    }
    if (initCode_ != 0) return;
    tblCrdPnt_t rec = *fix;
    lastCode_ = staticFilter(h_, &rec, t);
    if (lastCode_ == 0) {
        averaged++;
        fixToWgs84(&rec, pl_.datum(), average);
    } else if (lastCode_ == -8) {
        coarse++;
    } else {
        refused++;
    }
}

const tblCrdPnt_t* FilterStage::finish(const tblCrdPnt_t* fix) {
    rawFix_ = fix;
    lastCode_ = 1;
    lastPredicted_ = false;
    const bool hasFix = fix != nullptr && fix->actual == 1;
    if (opt_.average && hasFix) averageIn(fix);
    if (!opt_.filter) return fix;

    /* An epoch without a fix still goes in, as a record with actual 0:
     * the filter answers with its prediction while it runs. */
    tblCrdPnt_t in;
    if (fix) {
        in = *fix;
    } else {
        std::memset(&in, 0, sizeof in);
        in.length = ZEL_LEN_CRDPNT;
        in.sys = (uint8_t)pl_.mode();
    }
    const tblCrdPnt_t* out =
        static_cast<const tblCrdPnt_t*>(KalmanFilterCrdPnt0(h_, pl_.tm(), &in));
    lastPredicted_ = out->actual == 1 && !hasFix;
    return out;
}

void FilterStage::reported() {
    if (lastPredicted_) predicted++;
    if (!hasRef_) return;
    if (opt_.filter && rawFix_ != nullptr && rawFix_->actual == 1) {
        double w[3];
        fixToWgs84(rawFix_, pl_.datum(), w);
        raw_.add(w);
    }
    if (lastCode_ == 0) running_.add(average);
}

double FilterStage::averageError() const {
    if (!hasRef_ || averaged == 0) return 0.0;
    const double d[3] = {average[0] - ref_[0], average[1] - ref_[1], average[2] - ref_[2]};
    return std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
}

void FilterStage::summary(std::FILE* err) const {
    if (opt_.filter) {
        std::fprintf(err, "zelnav solve: position filter: %ld epochs predicted without a fix\n",
                     predicted);
        if (hasRef_)
            std::fprintf(err,
                         "zelnav solve: unfiltered fixes: 3D RMS %.2f m, 95%% horizontal %.2f m, "
                         "95%% vertical %.2f m, largest 3D %.2f m (%ld fixes)\n",
                         raw_.rms3d(), raw_.horizontal95(), raw_.vertical95(), raw_.max3d(),
                         raw_.count());
    }
    if (!opt_.average) return;
    if (initCode_ != 0) {
        std::fprintf(err, "zelnav solve: static averaging refused its parameters (code %d)\n",
                     initCode_);
        return;
    }
    std::fprintf(err,
                 "zelnav solve: static average (end gain %g after %u epochs): %ld fixes "
                 "averaged in, %ld coarse steps, %ld refused\n",
                 opt_.staticGain, opt_.staticEpochs, averaged, coarse, refused);
    if (averaged == 0) return;
    std::fprintf(err, "zelnav solve: static average position (WGS-84) %.4f,%.4f,%.4f", average[0],
                 average[1], average[2]);
    if (hasRef_)
        std::fprintf(err, ": 3D error %.2f m; running average 3D RMS %.2f m (%ld epochs)",
                     averageError(), running_.rms3d(), running_.count());
    std::fputc('\n', err);
}

}  // namespace solve
