#include "tools/import/Messages.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "tools/import/MessageReaders.h"

namespace replay::import {
namespace {

bool pushValue(std::string_view m, Event& event) {
    if (m.starts_with('i')) {
        SampleReceived s;
        return as(m, event, s, "index:", s.index, ", timestamp:", s.timestamp, ", OIS_X:", s.oisX, " OIS_Y:", s.oisY,
                  ", oisHall_X:", s.hallX, " oisHall_Y:", s.hallY);
    }
    BatchDivided d;
    BatchFiled f;
    return as(m, event, f, "F:(", f.frame, ") dataSize:", f.count, " start-end(", f.first, "-", f.last, ")") ||
           as(m, event, d, "split data frameNumber: ", d.frame, " lastData:", d.older, " data:", d.newer,
              " splitTime:", d.time);
}

bool updateSensorData(std::string_view m, Event& event) {
    BatchUpdated u;
    BatchEmpty e;
    return as(m, event, u, "update sensor data F:(", u.frame, ") TS:(", u.timestamp, ") size:", u.count,
              ", queue size:", u.queue, ", timestamp interval:", u.first, " - ", u.last) ||
           as(m, event, e, "no sensor data for type ", e.type);
}

bool fillInfo(std::string_view m, Event& event) {
    ExposureMode mode;
    ValuesFilled filled;
    return as(m, event, mode, "is_multiexp_mode:", mode.multi) ||
           as(m, event, filled, "cust_lsc_type:", filled.type, " fill OIS value success!!!") ||
           asWords<AlreadyWritten>(m, event, "oisValue has been written");
}

bool fillTiming(std::string_view m, Event& event) {
    Timing t;
    return as(m, event, t, "sof_timestamp:", t.sof, " [ne:", t.sofNe, "][se:", t.sofSe, "], exposure_time:", t.exposure,
              " [ne:", t.exposureNe, "][se:", t.exposureSe, "]");
}

bool dataByTimestamp(std::string_view m, Event& event) {
    QueryStarted q;
    Matched found;
    return as(m, event, q, "total data size:", q.total) ||
           as(m, event, found, "match data offset:", found.offset, " timestamp:", found.timestamp) ||
           asWords<NothingMatched>(m, event, "no data matched !!!");
}

bool sensorData(std::string_view m, Event& event) {
    QueryAnswered q;
    return as(m, event, q, "get sensor data F:(", q.frame, ") TS:(", q.timestamp, ") data size:", q.count) ||
           other(m, event, "timestamp and frameNumber");
}

bool querySensorData(std::string_view m, Event& event) {
    QueryEnded q;
    return as(m, event, q, "get sensor data size:", q.count) || other(m, event, "Sensor Monitor not registered");
}

bool sampleUsed(std::string_view m, Event& event) {
    SampleUsed& used = event.emplace<SampleUsed>();
    return scan(m, "get source ois data index = ", used.index, ", timestamp = ", used.timeUs, ", oisHall_x = ", used.x,
                ", oisHall_y = ", used.y);
}

bool searchStep(std::string_view m, Event& event) {
    std::int32_t index = 0;
    std::int32_t next = 0;
    std::int64_t lag = 0;
    std::int64_t nextLag = 0;
    SearchStep step;
    return as(m, event, step, "startIndex, index = ", index, ", timestamp Difference = ", lag) ||
           as(m, event, step, "endIndex, i = ", index, ", timestamp Difference = ", lag) ||
           as(m, event, step, "startIndex = ", index, ", endIndex = ", next) ||
           as(m, event, step, "stamp_up = ", lag, ", i = ", index, ", stamp_down = ", nextLag, ", i+1 = ", next) ||
           as(m, event, step, "activeNum:", index);
}

bool spanEntry(std::string_view m, Event& event) {
    SpanEntry s;
    Decimal x;
    Decimal y;
    std::int64_t time = 0;
    std::int64_t start = 0;  // as it was printed
    if (!scan(m, "Match OIS data, sof_timestamp = ", start, ", activeNum = ", s.count, ", hall = (", x, ", ", y,
              "), timestamp = ", time)) {
        return false;
    }
    s.startUs = static_cast<std::uint64_t>(start);
    event = s;
    return true;
}

bool calculation(std::string_view m, Event& event) {
    Calculation c;
    std::int64_t lag = 0;
    return as(m, event, c, "sensorId = ", c.sensor, ", type = ", c.type, ", oisCount = ", c.count,
              ", sof_timestamp = ", c.startUs, ", exposure_time = ", c.exposureUs, ", shutter_time = ", c.shutterUs,
              ", timeDiff = ", lag);
}

bool matchFailed(std::string_view m, Event& event) {
    MatchFailed f;
    std::size_t sizes[2] = {};
    return as(m, event, f, "Match OIS data fail, transfer the last ois data to tsf. sensorId = ", f.sensor,
              " type = ", f.type, ", frameId = ", f.frame, ", sof_timestamp = ", f.startUs, ", out_frame_ois_size(",
              sizes[0], ", ", sizes[1], ")");
}

bool position(std::string_view m, Event& event) {
    Position p;
    std::size_t sizes[2] = {};
    Decimal last[2];
    return as(m, event, p, "sensorId = ", p.sensor, ", frameId = ", p.frame, ", mOisCalCMode = ", p.mode,
              ", out_frame_ois_size(", sizes[0], ", ", sizes[1], "), out_frame_ois0(x = ", p.x, ", y=", p.y,
              "), out_frame_ois1(x = ", last[0], ", y=", last[1], ")");
}

bool calcOis(std::string_view m, Event& event) {
    if (m.starts_with('g')) return sampleUsed(m, event);
    if (m.starts_with("sensorId")) return position(m, event) || calculation(m, event);
    if (m.starts_with('M')) return spanEntry(m, event) || matchFailed(m, event);
    return searchStep(m, event) || other(m, event, "Unknown type ");
}

struct Named {
    std::string_view name;
    MessageReader read;
};
constexpr Named kFunctions[] = {
    {"CalcOISValue", calcOis},
    {"pushValue", pushValue},
    {"getDataByTimestamp", dataByTimestamp},
    {"getSensorData", sensorData},
    {"QuerySensorData", querySensorData},
    {"updateSensorData", updateSensorData},
    {"fillLscOISCompInfo", fillInfo},
    {"fillLscCalcOISValueInputInfo", fillTiming},
    {"RegisterSensorMonitor", registerMonitor},
    {"StartSensorMonitor", startMonitor},
    {"RegisterAndStartSensorMonitor", registerAndStartMonitor},
    {"UnRegisterSensorMonitor", unregisterMonitor},
    {"enableSensor", enableSensor},
    {"disableSensor", disableSensor},
    {"StoreRollingShutter", storeRollingShutter},
    {"ReadOTPInfo", readOtp},
    {"QueryOTPInfo", queryOtp},
    {"GetMultiTableIndex", multiTableIndex},
};

// Errors end in " (function){#line:path}".
std::string_view withoutSite(std::string_view message, std::string_view function) {
    if (!message.ends_with('}')) return message;
    const std::string site = " (" + std::string(function) + "){#";
    return message.substr(0, message.rfind(site));  // all of it without one
}

}  // namespace

bool isLibraryTag(std::string_view tag) {
    return tag == "TarvoShadingCustomUtil" || tag == "CustomShadingUtil" || tag == "CustomShading";
}

Event parseMessage(std::string_view text) {
    Event event = Unreadable{};
    if (!takeText(text, "[")) return event;
    const std::size_t end = text.find(']');
    if (end == std::string_view::npos || text.substr(end, 2) != "] ") return event;
    const std::string_view name = text.substr(0, end);
    const std::string_view message = withoutSite(text.substr(end + 2), name);
    Refused refused;
    if (as(message, event, refused, "sensorId(", refused.sensor, ") is invalid !!!")) return event;
    const auto* const function = std::ranges::find(kFunctions, name, &Named::name);
    if (function == std::end(kFunctions)) return Other{};
    if (!function->read(message, event)) event = Unreadable{};
    return event;
}

}  // namespace replay::import
