/*
 * zelnav demo: writes a few epochs of receiver messages for two GLONASS
 * and two GPS satellites moving along straight lines, feeds them through
 * the converter and prints what came out. It shows the whole host side of
 * the converter in one page: build a message, hand it over, read the list.
 *
 * The navigation strings carry correct numbers, check bits and sequence
 * for each epoch but no ephemeris content, so their flags come out 0 (or
 * 16 where a satellite carries no such string) and no ephemeris is made.
 */
#include <cstdlib>
#include <cstring>
#include <exception>
#include <vector>

#include "print_epoch.h"
#include "x0c_bits.h"
#include "x0c_writer.h"
#include "zel.h"

namespace {

/* 2024-01-01 15:00:00 in the receiver's scale, which runs three hours
 * ahead of UTC: 12:00:00 UTC. */
const unsigned int kStartTmZel = 757436400u;
/* The receiver counts seconds from 1980-01-06, 7300 days before tmZel 0. */
const unsigned int kRsvrOrigin = 630720000u;
/* GPS time is tmZel + GPS-UTC + this (the origin less the three hours). */
const unsigned int kGpsFromTmZel = 630709200u;
const unsigned int kGpsUtc = 18;
const int kMaxEpochs = 60;
const int kExitUsage = 2;

struct DemoSat {
    bool gps;
    int num;
    int letter;     /* GLONASS frequency letter */
    int chan;       /* receiver channel: keeps every satellite's key apart */
    double range;   /* metres at the first epoch */
    double rate;    /* metres per second */
    double elev;    /* degrees */
    bool vt;        /* carries high-accuracy strings and the B1 signal */
};

const DemoSat kSats[] = {
    {false, 3, 5, 1, 19950000.0, -350.0, 61.5, true},
    {false, 17, 4, 2, 21400000.0, 510.0, 23.0, false},
    {true, 5, 0, 3, 21100000.0, -120.0, 55.2, false},
    {true, 12, 0, 4, 23650000.0, 640.0, 18.4, false},
};

/* Carrier frequencies, Hz. */
double freqL1(const DemoSat& s) {
    return s.gps ? 1575.42e6 : 1602.0e6 + s.letter * 0.5625e6;
}
double freqL2(const DemoSat& s) {
    return s.gps ? 1227.60e6 : 1246.0e6 + s.letter * 0.4375e6;
}

/* A signal place at `range`: Doppler positive for an approaching
 * satellite, phase in cycles of the carrier. */
x0c::Signal place(double range, double rate, double freq, uint16_t ampl) {
    x0c::Signal g;
    g.present = true;
    g.psvd = x0c::psvdToRaw(range);
    g.dop = x0c::dopToRaw(-rate * freq / x0c::kC);
    g.faze = x0c::fazeToRaw(range * freq / x0c::kC);
    g.ampl = ampl;
    return g;
}

/* The CT string the receiver holds at `tm`: string m ends 2m seconds into
 * the 30-second frame and is delivered for the next two seconds. */
void ctString(unsigned int tm, uint8_t ct[10]) {
    unsigned int m = ((tm - 1) % 30) / 2;
    if (m == 0) m = 15;
    std::memset(ct, 0, 10);
    x0c::putBitsCT(ct, 81, 4, m);
}

void vtString(unsigned int tm, uint8_t vt[7]) {
    std::memset(vt, 0, 7);
    x0c::putBits(vt, 47, 4, 1 + ((tm - 1) / 2) % 10);
}

/* The GPS subframe delivered at `tm`: the last one completed before it
 * (subframes end on multiples of six GPS seconds). Only the TLM and HOW
 * words are filled. */
void gpsSubframe(unsigned int tm, uint8_t sf[30]) {
    unsigned int end = (tm + kGpsUtc + kGpsFromTmZel - 1) / 6;  /* 6 s units */
    unsigned int id = (end - 1) % 5 + 1;
    uint32_t w[10] = {};
    w[0] = 0x8B0000;                                   /* preamble */
    w[1] = ((end % 100800) << 7) | (id << 2);          /* TOW count, ID */
    x0c::gpsWordsToStored(w, sf);
}

x0c::SatBlock satBlock(const DemoSat& s, unsigned int tm, double t) {
    x0c::SatBlock b;
    b.gps = s.gps;
    b.num = (uint8_t)s.num;
    b.litByte = s.gps ? 0 : (uint8_t)s.letter;
    double range = s.range + s.rate * t;
    uint16_t ampl = (uint16_t)(30 + s.elev / 3);
    b.sig[0] = place(range, s.rate, freqL1(s), ampl);
    /* The second frequency lags by the ionosphere's dispersion; as a
     * difference to C1 it takes the raw difference of the two ranges. */
    x0c::Signal c2 = place(range + 2.7, s.rate, freqL2(s), ampl - 4);
    c2.psvd -= b.sig[0].psvd;
    b.sig[1] = c2;
    b.elev10 = (uint16_t)(s.elev * 10 + 0.5);
    b.hasSb10 = true;
    b.chan = (uint8_t)s.chan;
    if (s.gps) {
        b.hasGps = true;
        gpsSubframe(tm, b.gpsSf);
    } else {
        b.hasCt = true;
        ctString(tm, b.ct);
    }
    if (s.vt) {
        b.sig[2] = place(range + 0.4, s.rate, freqL1(s), ampl + 2);
        b.hasVt = true;
        vtString(tm, b.vt);
    }
    return b;
}

std::vector<uint8_t> epochMessage(int epoch) {
    unsigned int tm = kStartTmZel + (unsigned int)epoch;
    x0c::Header h;
    h.tmRsvr = tm + kRsvrOrigin;
    h.dtGpsUtc = (uint8_t)kGpsUtc;
    h.temperature = 85;
    h.pressure = 10132;
    h.humidity = 720;
    std::vector<x0c::SatBlock> sats;
    for (const DemoSat& s : kSats) sats.push_back(satBlock(s, tm, epoch));
    return x0c::buildMessage(h, sats);
}

void demoUsage(FILE* out) {
    std::fprintf(out,
                 "usage: zelnav demo [--epochs N]\n"
                 "  Writes N one-second epochs (default 3, at most %d) of\n"
                 "  receiver messages for two GLONASS and two GPS\n"
                 "  satellites, decodes them with the library and prints\n"
                 "  the satellites, navigation-string flags and\n"
                 "  observations of each epoch.\n",
                 kMaxEpochs);
}

int usageError(const char* fmt, const char* arg) {
    std::fprintf(stderr, "zelnav demo: ");
    std::fprintf(stderr, fmt, arg);
    std::fprintf(stderr, "\n");
    demoUsage(stderr);
    return kExitUsage;
}

}  // namespace

/* Exit status: 0 done, 1 a message could not be written, 2 bad usage. */
int cmdDemo(int argc, char** argv) {
    int epochs = 3;
    for (int i = 1; i < argc; i++) {
        if (std::strcmp(argv[i], "--help") == 0 ||
            std::strcmp(argv[i], "-h") == 0) {
            demoUsage(stdout);
            return 0;
        }
        if (std::strcmp(argv[i], "--epochs") == 0) {
            if (i + 1 >= argc) return usageError("%s needs a value", argv[i]);
            const char* v = argv[++i];
            char* end = nullptr;
            long n = std::strtol(v, &end, 10);
            if (*v == '\0' || *end != '\0' || n < 1 || n > kMaxEpochs)
                return usageError("bad number of epochs '%s'", v);
            epochs = (int)n;
            continue;
        }
        return usageError("unknown option '%s'", argv[i]);
    }

    int* conv = static_cast<int*>(cnvx0c_init());
    int status = 0;
    try {
        for (int e = 0; e < epochs; e++) {
            std::vector<uint8_t> msg = epochMessage(e);
            const lsttblSat_t* lst = static_cast<const lsttblSat_t*>(
                cnvx0c_upx0c(conv, msg.data()));
            const tblGpsUtc_t* utc =
                static_cast<const tblGpsUtc_t*>(cnvx0c_getTblGpsUtc(conv));
            printEpoch(stdout, lst, utc);
        }
    } catch (const std::exception& ex) {
        std::fprintf(stderr, "zelnav demo: %s\n", ex.what());
        status = 1;
    }
    cnvx0c_finit(conv);
    return status;
}
