/*
 * Message 0x0C converter: the message gate, the meteorological check, the
 * slot lifecycle across messages, and the decoding of observations and
 * additional information.
 */
#include <gtest/gtest.h>

#include "decode/intake_fixture.h"

using namespace intake;
using x0c::SatBlock;

namespace {

const double kMs = 299792.458; /* metres of light time per millisecond */

}  // namespace

/* A block written by hand: GPS satellite 5, letter byte 3, sub-blocks 0
 * (5 bytes) and 10 (4 bytes, channel 0x2A). */
TEST(IntakeSlots, KeyAndLengthOfABlock) {
    const unsigned char blk[] = {0x85, 0x03, 0x01, 0x04, 5, 0, 0, 0, 0, 4, 0x2A, 0, 0};
    sat_t slot;
    EXPECT_EQ(slot.getKeyx0c(blk), ((5u << 8 | 3u) << 8) | 0x2Au);
    EXPECT_EQ(sat_t::getOffsetx0c(blk), sizeof blk);
    EXPECT_TRUE(slot.empty());
    slot.create(blk);
    EXPECT_FALSE(slot.empty());
    EXPECT_EQ(slot.getTblActual(), 1u);
    EXPECT_TRUE(slot.thisSat(blk));
    unsigned char glo[sizeof blk];
    std::memcpy(glo, blk, sizeof blk);
    glo[0] = 0x05; /* the system bit is not part of the key */
    EXPECT_TRUE(slot.thisSat(glo));
    glo[10] = 0x2B;
    EXPECT_FALSE(slot.thisSat(glo));
    slot.clear();
    EXPECT_TRUE(slot.empty());
}

TEST(IntakeGate, WrongTypeLeavesThePreviousListUntouched) {
    Feed feed;
    x0c::Header h = header(kT0 + 3);
    h.dtGpsUtc = 18;
    lsttblSat_t* l = feed(h, {sat(false, 1, 1), sat(true, 2, 2)});
    const lsttblSat_t before = *l;
    const double psvd = l->tblGlo[0].tblObs->psvd[0];
    const double temp = l->meteo->temperature;

    x0c::Header other = header(kT0 + 4);
    other.type = 11;
    other.temperature = -300;
    SatBlock moved = sat(false, 1, 1);
    moved.sig[0].psvd = x0c::psvdToRaw(2.1e7);
    EXPECT_EQ(feed(other, {moved}), l);
    EXPECT_EQ(l->numGlo, before.numGlo);
    EXPECT_EQ(l->numGps, before.numGps);
    EXPECT_EQ(val(l->tblGlo[0].tblObs), val(before.tblGlo[0].tblObs));
    EXPECT_EQ(val(l->tblGps[0].tblHdr), val(before.tblGps[0].tblHdr));
    EXPECT_EQ(l->tblGlo[0].tblObs->psvd[0], psvd);
    EXPECT_EQ(l->tblGlo[0].tblObs->tmZel, kT0 + 3);
    EXPECT_EQ(val(l->meteo->temperature), temp);
    EXPECT_EQ(feed.conv.getTblGpsUtc()->actual, 1);
    EXPECT_EQ(feed.conv.getTblGpsUtc()->dtGpsUtc, 18u);

    /* Only the low nibble is the type: bits 4-6 do not matter. */
    std::vector<uint8_t> m = x0c::buildMessage(header(kT0 + 5), {moved});
    m[0] |= 0x70;
    l = feed.raw(m);
    EXPECT_EQ(l->numGlo, 1u);
    EXPECT_EQ(l->numGps, 0u);
    EXPECT_EQ(feed.conv.getTblGpsUtc()->actual, 0);
}

TEST(IntakeGate, MeteoLimits) {
    const double mmHg = 13.157894736842104;
    struct Case {
        int16_t t, p, h;
        int actual;
        double pressure;
    } cases[] = {
        {150, 11000, 500, 0, 1100.0},  {150, 10999, 500, 1, 1099.9},
        {150, 6000, 500, 1, 600.0},    {150, 5999, 500, 0, 599.9},
        {150, 1099, 500, 1, 109.9 * mmHg}, {150, 1100, 500, 0, 110.0},
        {150, 600, 500, 1, 60.0 * mmHg},   {150, 599, 500, 0, 59.9},
        {-600, 10132, 500, 1, 1013.2}, {600, 10132, 500, 1, 1013.2},
        {-601, 10132, 500, 0, 1013.2}, {601, 10132, 500, 0, 1013.2},
        {150, 10132, 0, 1, 1013.2},    {150, 10132, 1000, 1, 1013.2},
        {150, 10132, -1, 0, 1013.2},   {150, 10132, 1001, 0, 1013.2},
    };
    Feed feed;
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.t << " " << c.p << " " << c.h);
        x0c::Header h = header(kT0 + 3);
        h.temperature = c.t;
        h.pressure = c.p;
        h.humidity = c.h;
        const tblMeteo* m = feed(h, {sat(false, 1, 1)})->meteo;
        EXPECT_EQ(m->actual, c.actual);
        EXPECT_DOUBLE_EQ(val(m->temperature), c.t / 10.0);
        EXPECT_DOUBLE_EQ(val(m->humidity), c.h / 10.0);
        EXPECT_DOUBLE_EQ(val(m->pressure), c.pressure);
    }
    x0c::Header h = header(kT0 + 3);
    h.pressure = 1099;
    EXPECT_NEAR(val(feed(h, {})->meteo->pressure), 1446.0526315789, 1e-9);
}

TEST(IntakeSlots, MissingSatelliteFreesItsSlotAndClearsItsTables) {
    Feed feed;
    SatBlock a = sat(false, 1, 1), g = sat(true, 5, 5);
    const SatBlock b = sat(false, 2, 2);
    a.sig[1].present = true;
    lsttblSat_t* l = feed(header(kT0 + 3), {a, b, g});
    const tblSatGlo setA = l->tblGlo[0];
    const tblSatGps setG = l->tblGps[0];
    for (int i = 0; i < 3; i++) /* as if the navigation tables had been filled */
        setA.tblOprGlo[i]->actual = setA.tblTmPrmGlo[i]->actual = setA.tblAlmGlo[i]->actual = 1;
    setG.tblOprGps->actual = setG.tblTmPrmGps->actual = 1;
    setG.tblAlmGps->actual = setG.tblIonGps->actual = 1;

    l = feed(header(kT0 + 4), {b});
    EXPECT_EQ(l->numGlo, 1u);
    EXPECT_EQ(l->numGps, 0u);
    EXPECT_EQ(setA.tblObs->actual[0] + setA.tblObs->actual[1], 0);
    EXPECT_EQ(setA.tblAddInf->actual, 0);
    EXPECT_EQ(setA.tblAddInf->present[0], 0);
    for (int i = 0; i < 2; i++) {
        EXPECT_EQ(setA.tblOprGlo[i]->actual, 0);
        EXPECT_EQ(setA.tblTmPrmGlo[i]->actual, 0);
        EXPECT_EQ(setA.tblAlmGlo[i]->actual, 0);
    }
    /* The third source is never cleared by removal. */
    EXPECT_EQ(setA.tblOprGlo[2]->actual, 1);
    EXPECT_EQ(setG.tblOprGps->actual + setG.tblTmPrmGps->actual, 0);
    EXPECT_EQ(setG.tblAlmGps->actual + setG.tblIonGps->actual + setG.tblObs->actual[0], 0);
    /* Identity and length survive the clear. */
    EXPECT_EQ(setA.tblHdr->num, 1);
    EXPECT_EQ(setA.tblHdr->length, 28);
    EXPECT_EQ(setG.tblHdr->sys, 1);

    /* The freed slot is the first empty one: the next new satellite takes it. */
    l = feed(header(kT0 + 5), {b, sat(false, 9, 9)});
    ASSERT_EQ(l->numGlo, 2u);
    EXPECT_EQ(val(l->tblGlo[1].tblObs), val(setA.tblObs));
    EXPECT_EQ(setA.tblHdr->num, 9);
}

TEST(IntakeSlots, TwentyFifthSatelliteAndEveryBlockAfterItAreDropped) {
    Feed feed;
    std::vector<SatBlock> first;
    for (uint8_t n = 1; n <= 24; n++) first.push_back(sat(false, n, n));
    lsttblSat_t* l = feed(header(kT0 + 3), first);
    ASSERT_EQ(l->numGlo, 24u);
    tblObs_t* obs1 = l->tblGlo[0].tblObs;

    /* Satellites 2..24, a new one, then satellite 1 again: the new one finds
     * no slot, and satellite 1 behind it is not reached, so it loses its
     * slot when the unreceived slots are freed. */
    std::vector<SatBlock> second(first.begin() + 1, first.end());
    second.push_back(sat(true, 30, 30));
    second.push_back(first[0]);
    l = feed(header(kT0 + 4), second);
    EXPECT_EQ(l->numGlo, 23u);
    EXPECT_EQ(l->numGps, 0u);
    EXPECT_EQ(feed.conv.getTblGpsUtc()->actual, 0);
    EXPECT_EQ(obs1->actual[0], 0);

    /* Blocks are walked before unreceived slots are freed: with all others
     * gone, the new satellite takes the one slot freed above. */
    l = feed(header(kT0 + 5), {sat(true, 30, 30), first[0]});
    EXPECT_EQ(l->numGps, 1u);
    EXPECT_EQ(l->numGlo, 0u);
    l = feed(header(kT0 + 6), {sat(true, 30, 30), first[0]});
    EXPECT_EQ(l->numGps, 1u);
    EXPECT_EQ(l->numGlo, 1u);
}

TEST(IntakeObs, PlacesAreScaledFromTheirRawUnits) {
    SatBlock s = sat(false, 1, 1);
    x0c::Signal* g = s.sig;
    g[0].psvd = INT64_C(1) << 32; /* 1 ms */
    g[0].dop = 1 << 24;           /* 1 kHz */
    g[0].faze = 1 << 16;          /* 1 cycle */
    g[0].ampl = 54321;
    g[1].present = true;
    g[1].psvd = 1 << 30; /* +0.25 ms on place 0 */
    g[1].dop = -(1 << 22);
    g[1].faze = -(INT64_C(3) << 40);
    g[1].ampl = 1;
    g[2].present = true;
    g[2].psvd = -(INT64_C(1) << 47); /* most negative 48-bit value */
    g[2].dop = -(1 << 24);
    g[2].faze = INT64_C(5) << 40;
    g[2].ampl = 65535;
    g[3].present = true;
    g[3].psvd = INT32_MIN; /* -0.5 ms on place 2 */
    Feed feed;
    const tblObs_t* o = feed(header(kT0 + 3), {s})->tblGlo[0].tblObs;
    EXPECT_EQ(o->tmZel, kT0 + 3);
    for (int i = 0; i < 4; i++) EXPECT_EQ(o->actual[i], 1) << i;
    EXPECT_EQ(o->actual[4], 0);
    EXPECT_DOUBLE_EQ(o->psvd[0], kMs);
    EXPECT_DOUBLE_EQ(o->dop[0], 1000.0);
    EXPECT_DOUBLE_EQ(o->faze[0], 1.0);
    EXPECT_EQ(o->ampl[0], 54321u);
    EXPECT_DOUBLE_EQ(o->psvd[1], 1.25 * kMs);
    EXPECT_DOUBLE_EQ(o->dop[1], -250.0);
    EXPECT_DOUBLE_EQ(o->faze[1], -3.0 * 16777216.0);
    EXPECT_EQ(o->ampl[1], 1u);
    EXPECT_DOUBLE_EQ(o->psvd[2], -32768.0 * kMs);
    EXPECT_DOUBLE_EQ(o->dop[2], -1000.0);
    EXPECT_DOUBLE_EQ(o->faze[2], 5.0 * 16777216.0);
    EXPECT_EQ(o->ampl[2], 65535u);
    EXPECT_DOUBLE_EQ(o->psvd[3], -32768.5 * kMs);
}

TEST(IntakeObs, SubBlock7ReplacesOnlyValidDifferencePlacesWithUnsignedRanges) {
    SatBlock s = sat(false, 1, 1);
    s.sig[1].present = true;
    s.sig[1].psvd = 1 << 30;
    s.hasSb7 = true;
    s.sb7[0] = UINT64_C(1) << 47; /* negative if it were read signed */
    s.sb7[1] = UINT64_C(1) << 33;
    Feed feed;
    const tblObs_t* o = feed(header(kT0 + 3), {s})->tblGlo[0].tblObs;
    EXPECT_DOUBLE_EQ(o->psvd[1], 32768.0 * kMs);
    EXPECT_EQ(o->actual[3], 0);
    EXPECT_EQ(o->psvd[3], 0.0);

    s.sig[3].present = true;
    o = feed(header(kT0 + 4), {s})->tblGlo[0].tblObs;
    EXPECT_DOUBLE_EQ(o->psvd[3], 2.0 * kMs);
}

TEST(IntakeObs, DifferenceWithoutItsBaseAddsToTheStaleBase) {
    SatBlock s = sat(false, 1, 1);
    s.sig[0].psvd = INT64_C(4) << 32;
    s.sig[1].present = true;
    s.sig[1].psvd = 1 << 30;
    Feed feed;
    feed(header(kT0 + 3), {s});
    s.sig[0].present = false;
    s.sig[1].psvd = INT32_MIN;
    const tblObs_t* o = feed(header(kT0 + 4), {s})->tblGlo[0].tblObs;
    EXPECT_EQ(o->actual[0], 0);
    EXPECT_EQ(o->actual[1], 1);
    EXPECT_DOUBLE_EQ(o->psvd[1], 3.5 * kMs);
}

TEST(IntakeAddInf, PerSignalValuesAtTheirSystemsOffsets) {
    for (bool gps : {false, true}) {
        SCOPED_TRACE(gps ? "GPS" : "GLONASS");
        SatBlock s = sat(gps, 4, 9);
        s.elev10 = 456;
        s.aux = 1234;
        s.sig[0].angle = 1024;
        s.sig[0].aux8 = 0x11;
        for (int i = 1; i < 4; i++) {
            s.sig[i].present = true;
            s.sig[i].aux8 = (uint8_t)(0x11 * (i + 1));
        }
        s.sig[1].angle = 512;
        s.sig[2].angle = 2048;
        s.sig[3].angle = 1;
        s.sb10Flags = 0xA0;
        if (gps) {
            gpsSubframe(s, 2);
            s.gpsParity = 0x0134;
        }
        Feed feed;
        lsttblSat_t* l = feed(header(kT0 + 3), {s});
        const tblHdr_t* hdr = gps ? l->tblGps[0].tblHdr : l->tblGlo[0].tblHdr;
        const tblAddInf_t* a = gps ? l->tblGps[0].tblAddInf : l->tblGlo[0].tblAddInf;
        EXPECT_DOUBLE_EQ(val(hdr->um), 456 * 0.1);
        EXPECT_EQ(val(hdr->aux), 1234.0);
        EXPECT_EQ(a->actual, 1);
        EXPECT_DOUBLE_EQ(val(a->angle[0]), 180.0);
        EXPECT_DOUBLE_EQ(val(a->angle[1]), 90.0);
        EXPECT_DOUBLE_EQ(val(a->angle[2]), 360.0);
        EXPECT_DOUBLE_EQ(val(a->angle[3]), 360.0 / 2048);
        /* A GPS place 0 shares its aux8 byte with the parity indicator. */
        EXPECT_EQ(a->aux8[0], gps ? 0x34 : 0x11);
        EXPECT_EQ(a->aux8[1], 0x22);
        EXPECT_EQ(a->aux8[2], 0x33);
        EXPECT_EQ(a->aux8[3], 0x44);
        EXPECT_EQ(a->chan, 9);
        EXPECT_EQ(a->flagB5, 1);
        EXPECT_EQ(a->flagB7, 1);
        for (int i = 0; i < 4; i++) EXPECT_EQ(a->present[i], 1);

        s.sig[1].present = s.sig[2].present = s.sig[3].present = false;
        s.sb10Flags = 0x80;
        feed(header(kT0 + 4), {s});
        EXPECT_EQ(a->present[0] + a->present[1] + a->present[2] + a->present[3], 1);
        EXPECT_EQ(a->flagB5, 0);
        EXPECT_EQ(a->flagB7, 1);
    }
}
