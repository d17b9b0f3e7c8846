/*
 * GLONASS standard-accuracy time-parameter collector: string 5 (day
 * number, four-year interval, tau_c, tau_GPS), broadcast in every frame,
 * and string 14 of frame 5 (B1, B2, KP), broadcast once per superframe.
 *
 * The frame number comes from the frame time tk of string 1; frame 1 of
 * a superframe restarts the collection.
 *
 * This table is, on purpose, never produced from the CT strings: the set
 * counts as complete only while the frame is still unknown, but string 14
 * is kept only in frame 5, so by the time it is stored the frame is known.
 * The receiver takes its time parameters from the high-accuracy strings;
 * the collector is kept so that its strings stay available and the rule
 * can be lifted in one place.
 */
#include "decode/navinf_glo_ct.h"
#include "decode/navinf_glo_ct_fields.h"

TmPrmGloCt_t::TmPrmGloCt_t() { clear(); }

void TmPrmGloCt_t::clear() {
    str5.clear();
    str14.clear();
    frame = GLO_FRAME_UNKNOWN;
}

void TmPrmGloCt_t::upx0c(unsigned char* blk, unsigned int tm) {
    NavInfStr_t s;
    if (!s.createFromx0c(NAVSTR_GLO_CT, blk, tm)) return;
    switch (s.getNum()) {
    case 1: {
        unsigned int f = gloCtFrameOf(gloCtTk(s.getData()));
        if (f == 1) clear();
        frame = f;
        break;
    }
    case 5:
        str5 = s;
        break;
    case 14:
        if (frame == 5) str14 = s;
        break;
    default:
        break;
    }
}

bool TmPrmGloCt_t::isCmplt() const {
    if (frame != GLO_FRAME_UNKNOWN) return false;
    if (!str5.isCmplt() || !str14.isCmplt()) return false;
    unsigned int t5 = str5.getTmResived();
    unsigned int t14 = str14.getTmResived();
    return t5 <= t14 && t14 - t5 <= 150;
}

bool TmPrmGloCt_t::getTbl(tblTmPrmGlo_t* tbl, tblHdr_t* hdr) {
    (void)hdr;
    if (!isCmplt()) return true;
    const unsigned char* s5 = str5.getData();
    const unsigned char* s14 = str14.getData();
    tbl->na = (uint32_t)gloCtValue(s5, kGloCtStr5[GLO_S5_NA]);
    tbl->tauC = gloCtValue(s5, kGloCtStr5[GLO_S5_TAUC]);
    tbl->n4 = (uint32_t)gloCtValue(s5, kGloCtStr5[GLO_S5_N4]);
    tbl->tauGps = gloCtValue(s5, kGloCtStr5[GLO_S5_TAUGPS]);
    tbl->b1 = gloCtValue(s14, kGloCtStr14F5[GLO_S14_B1]);
    tbl->b2 = gloCtValue(s14, kGloCtStr14F5[GLO_S14_B2]);
    tbl->kp = (uint8_t)gloCtValue(s14, kGloCtStr14F5[GLO_S14_KP]);
    tbl->actual = 1;
    return true;
}
