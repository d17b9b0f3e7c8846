/*
 * The conversion driver: epochs in, seconds out (see convert.h).
 */
#include "convert.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>

#include "convert_alm.h"
#include "convert_orbit.h"
#include "rinex_nav.h"
#include "rinex_sys.h"
#include "tbl_sat.h"
#include "x0c_writer.h"

namespace cvt {

Converter::Converter(const Options& opt, rinex::Diagnostics& diag)
    : opt_(opt), diag_(diag), nav_(diag) {
    std::memset(&almGps_, 0, sizeof almGps_);
    std::memset(&almGlo_, 0, sizeof almGlo_);
    std::memset(&gloTp_, 0, sizeof gloTp_);
    std::memset(&gpsUtc_, 0, sizeof gpsUtc_);
    std::memset(&ion_, 0, sizeof ion_);
    for (int& k : freq_) k = kNoFreq;
}

bool Converter::addNavFile(const std::string& path) {
    rinex::NavFile f;
    if (!rinex::readNavFile(path, f, diag_)) return false;
    nav_.add(f);
    navPaths_.push_back(path);
    return true;
}

bool Converter::run(const std::string& obsPath, const MessageSink& sink) {
    rinex::ObsReader reader(diag_);
    if (!reader.open(obsPath)) return false;
    begin(reader.header(), obsPath, sink);
    rinex::ObsEpoch e;
    while (!stopped_ && reader.next(e)) addEpoch(e);
    end();
    return !stopped_;
}

void Converter::note(long line, const std::string& what) { diag_.add(obsPath_, line, what); }

Converter::SatState& Converter::state(char sys, int prn) {
    SatState* table = sys == 'G' ? gps_ : glo_;
    return table[prn >= 0 && prn <= 32 ? prn : 0];
}

bool Converter::gloFreq(int slot, int& k) const {
    if (slot < 1 || slot > 32 || freq_[slot] == kNoFreq) return false;
    k = freq_[slot];
    return true;
}

void Converter::begin(const rinex::ObsHeader& header, const std::string& obsPath,
                      const MessageSink& sink) {
    hdr_ = header;
    obsPath_ = obsPath;
    sink_ = sink;
    map_ = SignalMap(header);
    nav_.finish();
    if (header.hasLeapSeconds) {
        leap_ = header.leapSeconds;
        leapKnown_ = true;
    } else if (nav_.params().hasLeap) {
        leap_ = nav_.params().leap;
        leapKnown_ = true;
    }
    for (int slot = 1; slot <= 32; slot++) {
        int k = 0;
        if (header.gloFrequency(slot, k) || nav_.gloFrequency(slot, k)) freq_[slot] = k;
    }
    Meteo m;
    switch (opt_.meteo) {
    case Options::MeteoMode::Standard: {
        double lat = 0, lon = 0, h = 0;
        if (header.hasApproxPos) geodetic(header.approxPos, lat, lon, h);
        m = standardAtmosphere(h);
        meteoFields(m, meteo_[0], meteo_[1], meteo_[2]);
        break;
    }
    case Options::MeteoMode::Given:
        meteoFields(opt_.given, meteo_[0], meteo_[1], meteo_[2]);
        break;
    case Options::MeteoMode::None:
        meteo_[0] = meteo_[1] = meteo_[2] = kNoReading;
        break;
    }
    if (!map_.declares('G', kPlaceC1) && !map_.declares('R', kPlaceC1))
        note(0, "the file declares no C1C observations of GPS or GLONASS: nothing to convert");
}

/* GPS - UTC and the file's time scale, once the first epoch says when. */
static int64_t obsScaleToUtc(const std::string& system, int leap) {
    if (system == "GLO") return 0;              /* RINEX GLONASS time is UTC(SU) */
    if (system == "BDT") return -(leap - 14);   /* BeiDou time is GPS - 14 s */
    return -leap;                               /* GPS, and Galileo and QZSS that keep with it */
}

bool Converter::recordedSecond(const rinex::ObsEpoch& e, ObsSecond& out) {
    out = ObsSecond();
    double exact = (double)e.sec2000 + e.fraction;
    out.t = e.sec2000 + (e.fraction >= 0.5 ? 1 : 0);
    out.line = e.line;
    out.afterBreak = e.flag == rinex::kEpochPowerFailure;
    double dt = (double)out.t - exact;
    for (const rinex::SatObs& s : e.sats) {
        SatSignals ss;
        if (!map_.take(s, ss)) continue;
        if (std::fabs(dt) > 1e-9) {
            int k = 0;
            gloFreq(s.prn, k);
            if (!shiftAlongDoppler(ss, dt, s.sys == 'R' ? k : 0) && !shiftWarned_) {
                note(e.line, "epoch off the whole second and " + rinex::satName(s.sys, s.prn) +
                                 " has no Doppler to move it by: values kept as recorded");
                shiftWarned_ = true;
            }
        }
        out.sats.push_back(ss);
    }
    std::stable_sort(out.sats.begin(), out.sats.end(), [](const SatSignals& a, const SatSignals& b) {
        return a.sys != b.sys ? a.sys == 'G' : a.prn < b.prn;
    });
    return true;
}

bool Converter::addEpoch(const rinex::ObsEpoch& e) {
    if (stopped_) return false;
    if (e.flag == rinex::kEpochCycleSlips) return true;
    if (!leapKnown_) {
        leap_ = leapSecondsAt(e.sec2000);
        leapKnown_ = true;
        note(0, "no LEAP SECONDS in the files: GPS-UTC taken as " + std::to_string(leap_) +
                    " s from the table of leap seconds");
    }
    obsToUtc_ = obsScaleToUtc(hdr_.timeSystem, leap_);
    ObsSecond sec;
    recordedSecond(e, sec);
    if (!rangeSet_) {
        int64_t day0 = floorDiv(sec.t, kDay) * kDay;
        if (opt_.hasFrom && opt_.fromTimeOfDay) opt_.from += day0;
        if (opt_.hasTo && opt_.toTimeOfDay) opt_.to += day0;
        rangeSet_ = true;
    }
    if ((opt_.hasFrom && sec.t < opt_.from) || (opt_.hasTo && sec.t > opt_.to)) return true;
    if (pending_ && sec.t <= hist_.back().t) {
        note(e.line, "epoch falls on second " + civilText(sec.t) + ", already converted; skipped");
        return true;
    }
    if (pending_) settle(&sec);
    hist_.push_back(sec);
    if (hist_.size() > 3) hist_.pop_front();
    pending_ = true;
    return !stopped_;
}

int Converter::freqOf(const void* self, char sys, int prn) {
    int k = 0;
    if (sys == 'R') static_cast<const Converter*>(self)->gloFreq(prn, k);
    return k;
}

/* Writes the waiting recorded second, after the seconds of the gap before
 * it. `next` is the recorded second after it, if any. */
void Converter::settle(const ObsSecond* next) {
    std::size_t n = hist_.size();
    const ObsSecond& b = hist_[n - 1];
    if (n >= 2) {
        const ObsSecond& a = hist_[n - 2];
        int64_t g = b.t - a.t;
        if (g > 1 && g <= opt_.maxGap && !b.afterBreak) {
            Bracket br;
            br.a = &a;
            br.b = &b;
            /* The neighbours lend rates only across gaps that could be
             * filled themselves. */
            if (n >= 3 && a.t - hist_[n - 3].t <= opt_.maxGap && !a.afterBreak) br.before = &hist_[n - 3];
            if (next && next->t - b.t <= opt_.maxGap && !next->afterBreak) br.after = next;
            ObsSecond mid;
            for (int64_t t = a.t + 1; t < b.t && !stopped_; t++) {
                interpolateSecond(br, t, freqOf, this, mid);
                emit(mid);
            }
        } else if (g > 1) {
            note(b.line, "no observations for the " + std::to_string(g - 1) + " s before this epoch" +
                             (b.afterBreak ? " (power failure)" : "") + ": nothing written for them");
            sum_.gaps++;
        }
    }
    sum_.epochs++;
    emit(b);
    pending_ = false;
}

void Converter::end() {
    if (pending_ && !stopped_) settle(nullptr);
    long observed = (long)(seenGps_.size() + seenGlo_.size());
    sum_.skippedSatellites = observed - sum_.gpsSatellites - sum_.gloSatellites;
}

void Converter::startTables(int64_t tmZel) {
    const NavParams& np = nav_.params();
    int64_t utc0 = tmZel - kMoscowOffset;
    int64_t gps0 = gpsSinceOrigin(utc0 + leap_);
    gpsAlmanac(nav_, gps0, almGps_);
    GloDay day = gloDayOfTmZel(tmZel);
    int64_t dayStartUtc = floorDiv(tmZel, kDay) * kDay - kMoscowOffset;
    gloAlmanac(nav_, utc0, day, dayStartUtc, freq_, almGlo_);

    gloTp_.length = ZEL_LEN_TMPRMGLO;
    gloTp_.actual = 1;
    gloTp_.na = day.day;
    gloTp_.n4 = day.n4;
    gloTp_.tauC = np.tauC;
    gloTp_.tauGps = np.tauGps;
    gloTp_.b1 = 0.0;
    gloTp_.b2 = 0.0;
    gloTp_.kp = 0;

    hasUtcPage_ = np.hasGpsUtc && np.hasIon;
    if (!hasUtcPage_)
        note(0, "the navigation files give no GPS UTC and ionosphere parameters: subframe 4 "
                "page 18 is not sent");
    gpsUtc_.length = ZEL_LEN_TMPRMGPS;
    gpsUtc_.actual = hasUtcPage_ ? 1 : 0;
    gpsUtc_.a0 = np.a0;
    gpsUtc_.a1 = np.a1;
    gpsUtc_.tot = (uint32_t)np.tot;
    gpsUtc_.wnt = (uint32_t)(np.wnt & 255);
    gpsUtc_.dtLs = leap_;
    /* Without an announced change the satellites repeat the current
     * value; week and day then stay those of the reference week. */
    gpsUtc_.wnLsf = (uint32_t)((np.hasLeapFuture ? np.leapWeek : np.wnt) & 255);
    gpsUtc_.dn = (uint32_t)(np.hasLeapFuture ? np.leapDay : 1);
    gpsUtc_.dtLsf = np.hasLeapFuture ? np.leapFuture : leap_;
    ion_.length = ZEL_LEN_IONGPS;
    ion_.actual = hasUtcPage_ ? 1 : 0;
    ion_.alpha0 = np.alpha[0];
    ion_.alpha1 = np.alpha[1];
    ion_.alpha2 = np.alpha[2];
    ion_.alpha3 = np.alpha[3];
    ion_.beta0 = np.beta[0];
    ion_.beta1 = np.beta[1];
    ion_.beta2 = np.beta[2];
    ion_.beta3 = np.beta[3];
}

bool Converter::emit(const ObsSecond& sec) {
    int64_t tmZel = tmZelOfObs(sec.t);
    if (!started_) {
        startTables(tmZel);
        started_ = true;
    }
    x0c::Header h;
    h.tmRsvr = tmRsvrOfTmZel(tmZel);
    h.dtGpsUtc = (uint8_t)leap_;
    h.temperature = meteo_[0];
    h.pressure = meteo_[1];
    h.humidity = meteo_[2];

    /* Satellites of the previous message keep their channels first. */
    std::vector<const SatSignals*> order;
    for (const SatSignals& s : sec.sats) {
        (s.sys == 'G' ? seenGps_ : seenGlo_).insert(s.prn);
        if (state(s.sys, s.prn).inLast) order.push_back(&s);
    }
    for (const SatSignals& s : sec.sats)
        if (!state(s.sys, s.prn).inLast) order.push_back(&s);

    /* The intake frees the slot of a satellite that a message no longer
     * carries only after that message: a newcomer gets one of the slots
     * the previous message left empty, or none. */
    long busy = 0;
    for (const SatState& st : gps_) busy += st.inLast;
    for (const SatState& st : glo_) busy += st.inLast;
    long newcomers = ZEL_NUM_SLOTS - busy;

    std::vector<x0c::SatBlock> blocks;
    std::vector<SatState*> written;
    for (const SatSignals* s : order) {
        SatState& st = state(s->sys, s->prn);
        x0c::SatBlock b;
        try {
            if (!buildBlock(*s, tmZel, sec.line, b)) continue;
            /* The writer refuses what does not fit its fields: try the
             * block alone so that one bad value costs only this block. */
            std::vector<uint8_t> probe;
            x0c::appendBlock(b, probe);
        } catch (const std::exception& ex) {
            if (!st.reportedOther) {
                note(sec.line, rinex::satName(s->sys, s->prn) + ": values do not fit the message (" +
                                   ex.what() + "); left out of that second");
                st.reportedOther = true;
            }
            continue;
        }
        if (!st.inLast && newcomers <= 0) {
            if (!st.reportedOther) {
                note(sec.line, rinex::satName(s->sys, s->prn) + ": more than " +
                                   std::to_string(ZEL_NUM_SLOTS) + " satellites at " +
                                   civilText(sec.t) + ": left out while the channels are full");
                st.reportedOther = true;
            }
            continue;
        }
        if (!st.inLast) newcomers--;
        blocks.push_back(b);
        written.push_back(&st);
        if (!st.written) {
            st.written = true;
            (s->sys == 'G' ? sum_.gpsSatellites : sum_.gloSatellites)++;
        }
    }
    for (SatState& st : gps_) st.inLast = false;
    for (SatState& st : glo_) st.inLast = false;
    for (SatState* st : written) st->inLast = true;

    std::vector<uint8_t> msg = x0c::buildMessage(h, blocks);
    sum_.messages++;
    (sec.interpolated ? sum_.interpolated : sum_.recorded)++;
    sum_.blocks += (long)blocks.size();
    sum_.bytes += msg.size();
    if (sum_.firstTmZel == 0) sum_.firstTmZel = tmZel;
    sum_.lastTmZel = tmZel;
    if (sink_ && !sink_(msg, sec.interpolated)) stopped_ = true;
    return !stopped_;
}

}  // namespace cvt
