/*
 * One satellite block of a message: observations, elevation, channel and
 * the navigation string on the air (see convert.h for the timing).
 */
#include <cmath>
#include <cstdint>
#include <limits>

#include "convert.h"
#include "convert_orbit.h"
#include "glo_ct_encode.h"
#include "glo_vt_encode.h"
#include "gps_encode.h"
#include "rinex_sys.h"
#include "x0c_writer.h"

namespace cvt {

namespace {

/* Receiver channel of a satellite: fixed per satellite, distinct over
 * both systems, so that no two satellites ever share a slot key. */
uint8_t channelOf(char sys, int prn) { return (uint8_t)(sys == 'G' ? prn : 32 + prn); }

/* Amplitude field: the carrier-to-noise density in tenths of a dB-Hz. */
uint16_t amplitude(const SigVal& v) {
    if (!v.hasSnr || !(v.snr > 0)) return 0;
    double a = std::round(v.snr * 10.0);
    return (uint16_t)(a > 65535.0 ? 65535.0 : a);
}

void putSignal(const SigVal& v, x0c::Signal& out) {
    out.present = true;
    out.psvd = x0c::psvdToRaw(v.psvd);
    out.dop = v.hasDop ? x0c::dopToRaw(v.dop) : 0;
    out.faze = v.hasFaze ? x0c::fazeToRaw(v.faze) : 0;
    out.ampl = amplitude(v);
}

/* A place carried as the difference to its base place; false when the
 * difference does not fit 32 bits (more than half a millisecond). */
bool putDifference(const SigVal& v, const x0c::Signal& base, x0c::Signal& out) {
    putSignal(v, out);
    int64_t d = out.psvd - base.psvd;
    if (d > std::numeric_limits<int32_t>::max() || d < std::numeric_limits<int32_t>::min()) {
        out = x0c::Signal();
        return false;
    }
    out.psvd = d;
    return true;
}

uint16_t elevationField(double deg) {
    if (!(deg > 0)) return 0;
    double t = std::round(deg * 10.0);
    return (uint16_t)(t > 900.0 ? 900.0 : t);
}

/* Subframe 4 page ID of the reserved pages, sent in place of page 18 when
 * there is nothing to put in it. */
const int kReservedPage = 57;

}  // namespace

bool Converter::buildBlock(const SatSignals& s, int64_t tmZel, long line, x0c::SatBlock& b) {
    SatState& st = state(s.sys, s.prn);
    std::string name = rinex::satName(s.sys, s.prn);
    if (!s.sig[kPlaceC1].present) return false;
    b = x0c::SatBlock();
    b.gps = s.sys == 'G';
    b.num = (uint8_t)s.prn;
    b.hasSb10 = true;
    b.chan = channelOf(s.sys, s.prn);

    auto noNav = [&](const std::string& when) {
        if (!st.reportedNav)
            note(line, name + ": no broadcast ephemeris on the air at " + when +
                           " in the navigation files; left out until there is one");
        st.reportedNav = true;
        return false;
    };

    double sat[3] = {0, 0, 0};
    if (b.gps) {
        if (s.prn < 1 || s.prn > ZEL_NUM_ALM_GPS) return false;
        /* GPS time of the message, and of the subframe it carries: the one
         * that ended 1 to 6 s before. */
        int64_t gps = tmZel - kMoscowOffset + leap_ + kRsvrOrigin;
        int64_t carried = gps - 7;
        int64_t week = floorDiv(carried, kWeek);
        double tow = (double)floorMod(carried, kWeek);
        x0c::GpsSlot slot = x0c::gpsSlotAt(tow);
        int64_t frameStart = week * kWeek + slot.towEnd - 6 * slot.subframe;
        const GpsRecord* rec = nav_.gpsAt(s.prn, frameStart);
        if (!rec) return noNav(civilText(gps - kRsvrOrigin) + " GPS");
        x0c::GpsBroadcast bc;
        bc.eph = &rec->tbl;
        bc.uraIndex = rec->uraIndex;
        bc.iodc = rec->iodc;
        bc.utc = hasUtcPage_ ? &gpsUtc_ : nullptr;
        bc.ion = hasUtcPage_ ? &ion_ : nullptr;
        bc.alm = &almGps_;
        if (!x0c::gpsEncodeAt(bc, tow, b.gpsSf))
            x0c::gpsEncodeFillerPage(slot.subframe, kReservedPage, slot.towEnd, b.gpsSf);
        b.hasGps = true;
        gpsPosition(rec->tbl, (double)(gps - rec->toe), sat);
    } else {
        int k = 0;
        if (!gloFreq(s.prn, k)) {
            if (!st.reportedOther)
                note(line, name + ": no frequency number in the observation header or the "
                                  "navigation files; left out");
            st.reportedOther = true;
            return false;
        }
        b.litByte = (uint8_t)(k < 0 ? k + 32 : k);
        /* CT: the string that ended 1 or 2 s before, from the ephemeris of
         * its frame. */
        int64_t c = tmZel - 3;
        int64_t frameStart = c - floorMod(c, 30);
        const GloRecord* rec = nav_.gloAt(s.prn, frameStart - kMoscowOffset);
        if (!rec) return noNav(civilText(tmZel - kMoscowOffset) + " UTC");
        x0c::GloCtSlot cs = x0c::gloCtSlotAt((unsigned)floorMod(c, kDay));
        x0c::GloCtSource src;
        src.opr = &rec->tbl;
        src.tmPrm = &gloTp_;
        src.alm = &almGlo_;
        src.slot = (unsigned)s.prn;
        src.en = rec->age;
        b.hasCt = x0c::gloCtEncode(src, cs.frame, cs.str, cs.frameStart, b.ct);
        /* VT: the 1-s string that ended 1 s before, with the B1 place. */
        if (s.sig[kPlaceB1].present) {
            int64_t v = tmZel - 2;
            const GloRecord* rv = nav_.gloAt(s.prn, v - floorMod(v, 10) - kMoscowOffset);
            if (rv) {
                x0c::vtStringAt((uint32_t)floorMod(v, kDay), rv->tbl, gloTp_, almGlo_, b.vt);
                b.hasVt = true;
            }
        }
        GloState gs = gloStateAt(rec->tbl, (double)(tmZel - kMoscowOffset - rec->tb));
        for (int i = 0; i < 3; i++) sat[i] = gs.r[i];
    }
    st.reportedNav = false;
    if (hdr_.hasApproxPos) b.elev10 = elevationField(elevationDeg(hdr_.approxPos, sat));

    putSignal(s.sig[kPlaceC1], b.sig[0]);
    bool fits = true;
    if (s.sig[kPlaceC2].present) fits &= putDifference(s.sig[kPlaceC2], b.sig[0], b.sig[1]);
    if (!b.gps && s.sig[kPlaceB1].present) {
        putSignal(s.sig[kPlaceB1], b.sig[2]);
        /* B2 goes as a difference to B1, so only with it. */
        if (s.sig[kPlaceB2].present) fits &= putDifference(s.sig[kPlaceB2], b.sig[2], b.sig[3]);
    }
    if (!fits && !st.reportedOther) {
        note(line, name + ": an L2 pseudorange lies more than half a millisecond from its L1 one; "
                          "that place is left out");
        st.reportedOther = true;
    }
    return true;
}

}  // namespace cvt
