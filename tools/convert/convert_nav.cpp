/*
 * Broadcast navigation data of the conversion: records into tables, and
 * the record on the air at a moment.
 */
#include "convert_nav.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "convert_time.h"
#include "decode/navinf_gps_fields.h"
#include "gps_encode.h"
#include "rinex_sys.h"

namespace cvt {

namespace {

/* Accuracy in metres of each GLONASS FT index. */
const double kFtMetres[16] = {1, 2, 2.5, 4, 5, 7, 10, 12, 14, 16, 32, 64, 128, 256, 512, 1024};

/* RINEX writes 0.999999999999e9 for an unknown value in some fields. */
bool unknownValue(double v) { return !(std::fabs(v) < 1e8); }

bool blank(uint32_t mask, int field) { return (mask >> field) & 1u; }

/* Field numbers of the blank masks (record order of the readers). */
enum { kGpsTransmission = 27 };
enum { kGloL1L2Delay = 16, kGloUrai = 17 };

/* How long a record stays on the air after its reference time. */
const int64_t kGpsKeep = 4 * 3600;
const int64_t kGpsLead = 2 * 3600;    /* broadcast start when the file gives none */
const int64_t kGloHalfInterval = 900;
const int64_t kGloKeep = 2700;

}  // namespace

void NavData::add(const rinex::NavFile& f) {
    const rinex::NavHeader& h = f.header;
    NavParams& p = params_;
    if (!p.hasGpsUtc && h.gpsUtc.present) {
        p.hasGpsUtc = true;
        p.a0 = h.gpsUtc.a0;
        p.a1 = h.gpsUtc.a1;
        p.tot = h.gpsUtc.t;
        p.wnt = h.gpsUtc.week;
    }
    if (!p.hasIon && h.hasIonAlpha && h.hasIonBeta) {
        p.hasIon = true;
        for (int i = 0; i < 4; i++) {
            p.alpha[i] = h.ionAlpha[i];
            p.beta[i] = h.ionBeta[i];
        }
    }
    if (!p.hasLeap && h.hasLeapSeconds) {
        p.hasLeap = true;
        p.leap = h.leapSeconds;
        if (h.hasLeapFuture) {
            p.hasLeapFuture = true;
            p.leapFuture = h.leapFuture;
            p.leapWeek = h.leapWeek;
            p.leapDay = h.leapDay;
        }
    }
    /* tau_c: RINEX 3 GLUT gives it as a0; RINEX 2 writes -tau_c. */
    if (!p.hasTauC && h.gloUtc.present) {
        p.hasTauC = true;
        p.tauC = h.gloUtc.a0;
    } else if (!p.hasTauC && h.hasCorrToSystemTime) {
        p.hasTauC = true;
        p.tauC = -h.minusTauC;
    }
    if (!p.hasTauGps && h.gloGps.present) {
        p.hasTauGps = true;
        p.tauGps = h.gloGps.a0;
    }
    for (const rinex::GpsEph& e : f.gps) addGps(e, f.path);
    for (const rinex::GloEph& e : f.glo) addGlo(e, f.path);
}

void NavData::addGps(const rinex::GpsEph& e, const std::string& file) {
    if (e.prn < 1 || e.prn > ZEL_NUM_ALM_GPS) {
        diag_.add(file, e.line, rinex::satName('G', e.prn) + ": PRN outside 1-32; record not used");
        return;
    }
    if (!(e.sqrtA > 1000.0) || e.week < 0 || e.toe < 0 || e.toe >= kWeek) {
        diag_.add(file, e.line,
                  rinex::satName('G', e.prn) + ": orbit or week not usable; record not used");
        return;
    }
    GpsRecord r;
    r.prn = e.prn;
    r.file = file;
    r.line = e.line;
    int64_t week = (int64_t)std::llround(e.week);
    r.toe = week * kWeek + (int64_t)std::llround(e.toe);
    r.toc = gpsSinceOrigin(e.tocSec2000);
    if (blank(e.blank, kGpsTransmission) || unknownValue(e.transmissionTime)) {
        r.start = r.toe - kGpsLead;
    } else {
        r.start = week * kWeek + (int64_t)std::floor(e.transmissionTime);
        while (r.start - r.toe > kWeek / 2) r.start -= kWeek;
        while (r.toe - r.start > kWeek / 2) r.start += kWeek;
    }
    r.uraIndex = x0c::gpsUraIndex(e.accuracy);
    r.iodc = (int)std::llround(e.iodc) & 1023;

    tblOprGps_t& t = r.tbl;
    std::memset(&t, 0, sizeof t);
    t.length = ZEL_LEN_OPRGPS;
    t.actual = 1;
    t.health = (uint8_t)((int)std::llround(e.health) & 63);
    t.wn = (uint16_t)(week & 1023);
    t.af0 = e.af0;
    t.af1 = e.af1;
    t.af2 = e.af2;
    t.toc = (uint32_t)floorMod(r.toc, kWeek);
    t.toe = (uint32_t)floorMod(r.toe, kWeek);
    t.sqrtA = e.sqrtA;
    t.cus = e.cus;
    t.e = e.e;
    t.cuc = e.cuc;
    t.m0 = e.m0;
    t.deltaN = e.deltaN;
    t.crs = e.crs;
    t.idot = e.idot;
    t.omegaDot = e.omegaDot;
    t.omega = e.omega;
    t.crc = e.crc;
    t.i0 = e.i0;
    t.cis = e.cis;
    t.omega0 = e.omega0;
    t.cic = e.cic;
    t.ura = gpsUraMetres(r.uraIndex);
    t.tgd = e.tgd;
    t.iodc = (uint8_t)(r.iodc & 255);
    t.iode = (uint8_t)((int)std::llround(e.iode) & 255);
    gps_[r.prn].push_back(r);
    gpsCount_++;
}

void NavData::addGlo(const rinex::GloEph& e, const std::string& file) {
    if (e.slot < 1 || e.slot > rinex::kMaxGloSlot) {
        diag_.add(file, e.line, rinex::satName('R', e.slot) + ": slot not valid; record not used");
        return;
    }
    GloRecord r;
    r.slot = e.slot;
    r.file = file;
    r.line = e.line;
    r.tb = e.tocSec2000;
    /* tb is counted in 15-minute steps of Moscow time; RINEX gives the
     * same instant in UTC. */
    int64_t tbTod = floorMod(r.tb + kMoscowOffset, kDay);
    if (tbTod % 900 != 0 || std::fabs(e.toc.second - std::floor(e.toc.second)) > 1e-6) {
        diag_.add(file, e.line, rinex::satName('R', e.slot) +
                  ": reference time not on a 15-minute step; record not used");
        return;
    }
    r.hasFreq = !blank(e.blank, 10) && e.freqNum >= -7 && e.freqNum <= 6;
    r.freq = r.hasFreq ? (int)std::llround(e.freqNum) : 0;
    r.healthy = std::llround(e.health) == 0;
    r.age = (unsigned)std::min<long long>(31, std::max<long long>(0, std::llround(e.age)));

    tblOprGlo_t& t = r.tbl;
    std::memset(&t, 0, sizeof t);
    t.length = ZEL_LEN_OPRGLO;
    t.actual = 1;
    t.tb = (uint32_t)tbTod;
    t.x = e.x * 1000.0;
    t.y = e.y * 1000.0;
    t.z = e.z * 1000.0;
    t.vx = e.vx * 1000.0;
    t.vy = e.vy * 1000.0;
    t.vz = e.vz * 1000.0;
    t.ax = e.ax * 1000.0;
    t.ay = e.ay * 1000.0;
    t.az = e.az * 1000.0;
    t.gammaN = e.gammaN;
    t.tauN = -e.minusTauN;
    t.dTauN = 0.0;
    if (e.hasLine5 && !blank(e.blank, kGloL1L2Delay) && !unknownValue(e.l1l2Delay))
        t.dTauN = e.l1l2Delay;
    int ft = kDefaultFt;
    /* Index 15 is what merged files write when the index is not known. */
    if (e.hasLine5 && !blank(e.blank, kGloUrai) && e.urai >= 0 && e.urai <= 14)
        ft = (int)std::llround(e.urai);
    t.ft = kFtMetres[ft];
    t.nt = (uint16_t)gloDayOfTmZel(tmZelOfUtc(r.tb)).day;
    t.m = kGloModification;
    glo_[r.slot].push_back(r);
    gloCount_++;
}

void NavData::finish() {
    for (auto& kv : gps_) {
        std::vector<GpsRecord>& v = kv.second;
        std::stable_sort(v.begin(), v.end(), [](const GpsRecord& a, const GpsRecord& b) {
            return a.start != b.start ? a.start < b.start : a.toe < b.toe;
        });
    }
    for (auto& kv : glo_) {
        std::vector<GloRecord>& v = kv.second;
        std::stable_sort(v.begin(), v.end(),
                         [](const GloRecord& a, const GloRecord& b) { return a.tb < b.tb; });
        /* Merged files repeat a record as each station received it: keep
         * the first of each reference time. */
        v.erase(std::unique(v.begin(), v.end(),
                            [](const GloRecord& a, const GloRecord& b) { return a.tb == b.tb; }),
                v.end());
    }
    dropMisfiledGlo();
}

/*
 * Merged files also carry GLONASS records filed under the wrong slot: a
 * station that confused two satellites of the same frequency letter (the
 * antipodal partners of one plane) reports one satellite's ephemeris under
 * the other's slot. Two satellites cannot be at the same place, so a
 * record whose position at tb is within a metre of another slot's record
 * of the same tb is one satellite's data twice. The copy is the record
 * whose clock offset tauN is off its own slot's usual value (the median
 * of the slot's records) by more than a microsecond, while the other
 * record's is not: a satellite clock drifts by nanoseconds a day, and the
 * clocks of two satellites differ by microseconds. The copy is not used,
 * silently, like the repeats above. When the clocks cannot tell which is
 * which, both records stay.
 */
void NavData::dropMisfiledGlo() {
    const double kSamePlace = 1.0;    /* m */
    const double kClockOff = 1e-6;    /* s */
    std::map<int, double> usual;
    for (const auto& kv : glo_) {
        std::vector<double> tau;
        for (const GloRecord& r : kv.second) tau.push_back(double(r.tbl.tauN));  /* packed: copy, never bind */
        if (tau.empty()) continue;
        std::nth_element(tau.begin(), tau.begin() + tau.size() / 2, tau.end());
        usual[kv.first] = tau[tau.size() / 2];
    }
    auto off = [&](const GloRecord& r) {
        return std::fabs(r.tbl.tauN - usual[r.slot]) > kClockOff;
    };
    std::vector<std::pair<int, int64_t>> copies;
    for (auto a = glo_.begin(); a != glo_.end(); ++a)
        for (auto b = std::next(a); b != glo_.end(); ++b)
            for (const GloRecord& ra : a->second)
                for (const GloRecord& rb : b->second) {
                    if (ra.tb != rb.tb) continue;
                    const double d = std::sqrt((ra.tbl.x - rb.tbl.x) * (ra.tbl.x - rb.tbl.x) +
                                               (ra.tbl.y - rb.tbl.y) * (ra.tbl.y - rb.tbl.y) +
                                               (ra.tbl.z - rb.tbl.z) * (ra.tbl.z - rb.tbl.z));
                    if (d > kSamePlace || off(ra) == off(rb)) continue;
                    const GloRecord& copy = off(ra) ? ra : rb;
                    copies.push_back(std::make_pair(copy.slot, copy.tb));
                }
    for (const auto& c : copies) {
        std::vector<GloRecord>& v = glo_[c.first];
        v.erase(std::remove_if(v.begin(), v.end(),
                               [&](const GloRecord& r) { return r.tb == c.second; }),
                v.end());
    }
}

const GpsRecord* NavData::gpsAt(int prn, int64_t t) const {
    auto it = gps_.find(prn);
    if (it == gps_.end()) return nullptr;
    const GpsRecord* best = nullptr;
    for (const GpsRecord& r : it->second) {
        if (r.start > t) break;
        if (t - r.toe <= kGpsKeep) best = &r;
    }
    return best;
}

const GloRecord* NavData::gloAt(int slot, int64_t utc) const {
    auto it = glo_.find(slot);
    if (it == glo_.end()) return nullptr;
    const GloRecord* best = nullptr;
    for (const GloRecord& r : it->second) {
        if (r.tb - kGloHalfInterval > utc) break;
        best = &r;
    }
    if (best && utc - best->tb > kGloKeep) return nullptr;
    return best;
}

const GpsRecord* NavData::gpsNearest(int prn, int64_t t) const {
    const GpsRecord* r = gpsAt(prn, t);
    if (r) return r;
    auto it = gps_.find(prn);
    if (it == gps_.end()) return nullptr;
    for (const GpsRecord& c : it->second)
        if (!r || std::llabs(c.toe - t) < std::llabs(r->toe - t)) r = &c;
    return r;
}

const GloRecord* NavData::gloNearest(int slot, int64_t utc) const {
    const GloRecord* r = gloAt(slot, utc);
    if (r) return r;
    auto it = glo_.find(slot);
    if (it == glo_.end()) return nullptr;
    for (const GloRecord& c : it->second)
        if (!r || std::llabs(c.tb - utc) < std::llabs(r->tb - utc)) r = &c;
    return r;
}

bool NavData::gloFrequency(int slot, int& k) const {
    auto it = glo_.find(slot);
    if (it == glo_.end()) return false;
    for (auto r = it->second.rbegin(); r != it->second.rend(); ++r)
        if (r->hasFreq) {
            k = r->freq;
            return true;
        }
    return false;
}

}  // namespace cvt
