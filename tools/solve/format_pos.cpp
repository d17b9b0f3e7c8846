/*
 * --format pos: RTKLIB's solution file, latitude/longitude/height form,
 * times in UTC, so that its plotting and comparison tools open it as one
 * of their own.
 *
 * Header lines start with '%'; the line naming the columns tells a reader
 * the time system (UTC) and the coordinate form. Every fix is quality 5
 * (single point): there is no differential correction here. The standard
 * deviation columns are 0: the solution carries no covariance. Epochs
 * without a fix are left out, as RTKLIB leaves them out.
 */
#include "format.h"

namespace solve {

namespace {

const char* modeText(int mode) {
    return mode == 0 ? "single (GLONASS)" : mode == 1 ? "single (GPS)" : "single (GPS+GLONASS)";
}

class PosWriter : public Writer {
public:
    using Writer::Writer;

    void begin(const RunInfo& info) override {
        std::fprintf(out_, "%% program   : zelnav solve\n");
        std::fprintf(out_, "%% inp file  : %s\n", info.source.c_str());
        std::fprintf(out_, "%% pos mode  : %s\n", modeText(info.mode));
        std::fprintf(out_, "%%\n");
        std::fprintf(out_, "%% (lat/lon/height=WGS84/ellipsoidal,Q=1:fix,2:float,3:sbas,4:dgps,"
                           "5:single,6:ppp,ns=# of satellites)\n");
        std::fprintf(out_, "%%  UTC                   latitude(deg) longitude(deg)  height(m)   Q  "
                           "ns   sdn(m)   sde(m)   sdu(m)  sdne(m)  sdeu(m)  sdun(m) age(s)  ratio\n");
    }

    void epoch(const Epoch& e) override {
        if (!e.hasFix) return;
        std::fprintf(out_,
                     "%04u/%02u/%02u %02u:%02u:%02u.000 %14.9f %14.9f %10.4f %3d %3u %8.4f %8.4f "
                     "%8.4f %8.4f %8.4f %8.4f %6.2f %6.1f\n",
                     e.utc[0], e.utc[1], e.utc[2], e.utc[3], e.utc[4], e.utc[5], e.lat, e.lon, e.h,
                     5, (unsigned)(e.fix->numGlo + e.fix->numGps), 0.0, 0.0, 0.0, 0.0, 0.0, 0.0,
                     0.0, 0.0);
    }
};

}  // namespace

std::unique_ptr<Writer> makePosWriter(std::FILE* out) {
    return std::unique_ptr<Writer>(new PosWriter(out));
}

}  // namespace solve
