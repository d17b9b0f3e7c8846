/*
 * The message 0x0C converter: walks one message, routes each satellite
 * block to the slot of its satellite, and lists the table sets updated by
 * the message.
 *
 * Slots persist across messages so that each satellite's navigation
 * strings can be collected over many epochs. A satellite keeps its slot as
 * long as every decoded message carries it; the first decoded message
 * without it frees the slot.
 */
#include "decode/lstsat.h"

#include "decode/lstsat_x0c.h"
#include "time/tmzel.h"

namespace {

/* Header of message 0x0C: byte offsets. */
const int kOffType = 0;      /* type in bits 0-3, noData in bit 7 */
const int kOffLength = 1;    /* u16, whole message */
const int kOffSatStart = 3;  /* u8, offset of the first satellite block */
const int kOffTmRsvr = 4;    /* u32, receiver seconds */
const int kOffNumSat = 9;    /* u8 */
const int kOffDtGpsUtc = 14; /* u8 */
const int kOffTemp = 19;     /* i16, tenths of a degree Celsius */
const int kOffPressure = 21; /* i16, tenths of hPa or of mmHg */
const int kOffHumidity = 23; /* i16, tenths of a percent */

const unsigned char kTypeX0C = 12;
const unsigned char kNoData = 0x80;

/* mmHg to hPa. */
const double kMmHgToHPa = 13.157894736842104; /* 1000 / 76 */

/*
 * Decodes the meteorological readings and judges them. The values are
 * stored whatever their range; `actual` says whether they can be used.
 * The pressure sensor reports either hPa or mmHg, and the range tells
 * which: 600..1100 is hPa, 60..110 is mmHg (converted). The upper pressure
 * limits are exclusive, all other limits inclusive. Every comparison is
 * written so that a NaN fails it.
 */
void decodeMeteo(const unsigned char* msg, tblMeteo* m) {
    m->actual = 0;
    m->temperature = x0cle::i16(msg + kOffTemp) / 10.0;
    m->pressure = x0cle::i16(msg + kOffPressure) / 10.0;
    m->humidity = x0cle::i16(msg + kOffHumidity) / 10.0;

    const bool tempOk = m->temperature >= -60.0 && m->temperature <= 60.0;
    const bool humOk = m->humidity >= 0.0 && m->humidity <= 100.0;
    const bool hPa = m->pressure >= 600.0 && m->pressure < 1100.0;
    const bool mmHg = m->pressure >= 60.0 && m->pressure < 110.0;
    if (!(tempOk && humOk && (hPa || mmHg))) return;
    if (mmHg) m->pressure *= kMmHgToHPa;
    m->actual = 1;
}

}  // namespace

lstsat_t::lstsat_t() : sat(nullptr), tbl(nullptr), gpsUtc(nullptr) {
    /* The slots free themselves if one of them fails to build; what was
     * taken here before a failure is given back. */
    sat = new sat_t[ZEL_NUM_SLOTS];
    try {
        tbl = new lsttblSat_t();
        tbl->meteo = new tblMeteo();
        gpsUtc = new tblGpsUtc_t();
    } catch (...) {
        if (tbl != nullptr) delete tbl->meteo;
        delete tbl;
        delete[] sat;
        throw;
    }
}

lstsat_t::~lstsat_t() {
    delete gpsUtc;
    delete tbl->meteo;
    delete tbl;
    delete[] sat;
}

void lstsat_t::clear() {
    for (int i = 0; i < ZEL_NUM_SLOTS; i++) sat[i].clear();
    tbl->numGlo = 0;
    tbl->numGps = 0;
    gpsUtc->actual = 0;
}

lsttblSat_t* lstsat_t::upx0c(unsigned char* msg) {
    /* Not ours: the previous list stays exactly as it was. */
    if ((msg[kOffType] & 0x0Fu) != kTypeX0C) return tbl;

    gpsUtc->actual = 0;
    tbl->numGlo = 0;
    tbl->numGps = 0;
    if (msg[kOffType] & kNoData) return tbl;

    const unsigned int length = x0cle::u16(msg + kOffLength);
    const unsigned int offSat = msg[kOffSatStart];
    const unsigned int tmRsvr = x0cle::u32(msg + kOffTmRsvr);
    const unsigned int numSat = msg[kOffNumSat];
    const unsigned int dtGpsUtc = msg[kOffDtGpsUtc];

    decodeMeteo(msg, tbl->meteo);

    /* Nothing to walk, or no time to stamp it with: the slots are neither
     * aged nor freed by such a message. */
    if (offSat == length || tmRsvr == 0 || numSat == 0) return tbl;

    const unsigned int tm = TmZel::tmRsvrTotmZel(tmRsvr);
    for (int i = 0; i < ZEL_NUM_SLOTS; i++) sat[i].clearResived();

    unsigned int offset = offSat;
    for (unsigned int n = 0; n < numSat; n++) {
        unsigned char* blk = msg + offset;

        /* The key walks the block's sub-blocks: taken once, not once per
         * slot compared. */
        const unsigned int key = sat_t::getKeyx0c(blk);
        sat_t* slot = nullptr;
        for (int i = 0; i < ZEL_NUM_SLOTS && slot == nullptr; i++)
            if (sat[i].hasKey(key)) slot = &sat[i];
        for (int i = 0; i < ZEL_NUM_SLOTS && slot == nullptr; i++)
            if (sat[i].empty()) {
                slot = &sat[i];
                slot->create(blk);
            }
        /* All 24 slots are bound to other satellites. The offset is not
         * advanced past this block, so every remaining iteration would meet
         * it again and fail the same way: the rest of the message is
         * dropped, deliberately, rather than guessing which satellites to
         * evict. Stopping here has exactly that effect. */
        if (slot == nullptr) break;

        /* A satellite repeated within one message is decoded and listed
         * again; the bound only keeps such a message from overrunning the
         * list. */
        void* set = slot->upx0c(blk, tm);
        if (slot->getTblActual() == 0) {
            if (tbl->numGlo < ZEL_NUM_SLOTS)
                tbl->tblGlo[tbl->numGlo++] = *static_cast<tblSatGlo*>(set);
        } else if (slot->getTblActual() == 1) {
            if (tbl->numGps < ZEL_NUM_SLOTS)
                tbl->tblGps[tbl->numGps++] = *static_cast<tblSatGps*>(set);
        }

        offset += sat_t::getOffsetx0c(blk);
    }

    for (int i = 0; i < ZEL_NUM_SLOTS; i++) sat[i].remove();

    if (tbl->numGps != 0) {
        gpsUtc->actual = 1;
        gpsUtc->dtGpsUtc = dtGpsUtc;
    }
    return tbl;
}
