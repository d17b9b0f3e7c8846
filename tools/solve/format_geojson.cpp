/*
 * --format geojson: a FeatureCollection of one Point per fix, with the
 * epoch's time and solution figures as properties, and at the end the
 * LineString of the whole track. Coordinates are longitude, latitude,
 * ellipsoidal height (WGS-84), as GeoJSON orders them.
 *
 * The points are written as they come, so a live run shows its progress;
 * the document is complete (and the track written) when the input ends.
 */
#include <string>

#include "format.h"

namespace solve {

namespace {

class GeojsonWriter : public Writer {
public:
    using Writer::Writer;

    void begin(const RunInfo& info) override {
        source_ = info.source;
        std::fputs("{\"type\":\"FeatureCollection\",\"features\":[\n", out_);
    }

    void epoch(const Epoch& e) override {
        if (!e.hasFix) return;
        char c[96];
        std::snprintf(c, sizeof c, "[%.9f,%.9f,%.3f]", e.lon, e.lat, e.h);
        std::fprintf(out_,
                     "%s{\"type\":\"Feature\",\"geometry\":{\"type\":\"Point\",\"coordinates\":%s},"
                     "\"properties\":{\"utc\":\"%sZ\",\"sys\":%u,\"nglo\":%u,\"ngps\":%u,"
                     "\"dop\":%.1f,\"dt\":%.9e",
                     features_ ? ",\n" : "", c, isoTime(e).c_str(), e.fix->sys, e.fix->numGlo,
                     e.fix->numGps, e.fix->dop10 / 10.0, e.fix->dt);
        if (e.hasSpeed)
            std::fprintf(out_, ",\"ve\":%.3f,\"vn\":%.3f,\"vu\":%.3f", e.enu[0], e.enu[1], e.enu[2]);
        std::fputs("}}", out_);
        features_++;
        if (track_.empty()) first_ = isoTime(e);
        last_ = isoTime(e);
        track_ += track_.empty() ? "" : ",";
        track_ += c;
    }

    void end() override {
        /* A LineString needs two positions; one fix is a Point only. */
        if (features_ >= 2)
            std::fprintf(out_,
                         ",\n{\"type\":\"Feature\",\"geometry\":{\"type\":\"LineString\","
                         "\"coordinates\":[%s]},\"properties\":{\"source\":\"%s\",\"start\":\"%sZ\","
                         "\"end\":\"%sZ\",\"fixes\":%ld}}",
                         track_.c_str(), escaped(source_).c_str(), first_.c_str(), last_.c_str(),
                         features_);
        std::fputs("\n]}\n", out_);
    }

private:
    static std::string escaped(const std::string& s) {
        std::string o;
        for (char ch : s) {
            if (ch == '"' || ch == '\\') o += '\\';
            if (static_cast<unsigned char>(ch) < 0x20) continue;
            o += ch;
        }
        return o;
    }

    std::string source_, track_, first_, last_;
    long features_ = 0;
};

}  // namespace

std::unique_ptr<Writer> makeGeojsonWriter(std::FILE* out) {
    return std::unique_ptr<Writer>(new GeojsonWriter(out));
}

}  // namespace solve
