// Readers of what the library says of monitors and of OTP memories.
#include "tools/import/MessageReaders.h"

namespace replay::import {
namespace {

bool otpLayout(std::string_view m, Event& event) {
    OtpLayout layout;
    Hex golden[4];
    Hex ois[2];
    std::int32_t goldenSize = 0;  // sizes were printed as signed numbers
    std::int32_t oisWords[3] = {};
    if (!scan(m, "sensorId:", layout.sensor, " multiGolden[offset:", golden[0], ", size:", goldenSize,
              ", valid:", golden[1], ", gradient:", golden[2], ", ", golden[3], "] oisCalibration[offset:", ois[0],
              ", size:", oisWords[0], ", valid:", ois[1], ", indexNum:", oisWords[1], ", tableNumber:", oisWords[2],
              "]")) {
        return false;
    }
    const auto word = [](std::int32_t number) { return static_cast<std::uint32_t>(number); };  // as it was before
    layout.multiGolden = {golden[0].value, word(goldenSize), golden[1].value, golden[2].value, golden[3].value};
    layout.oisCalibration = {ois[0].value, word(oisWords[0]), ois[1].value, word(oisWords[1]), word(oisWords[2])};
    event = layout;
    return true;
}

// A block outside the memory; its message goes on with the block's offsets.
bool otpImplausible(std::string_view m, Event& event) {
    OtpImplausible block;
    if (!m.ends_with(" bytes!!!") || !takeText(m, "sensorId:") || !takeValue(m, block.sensor)) return false;
    block.golden = m.starts_with(", multiGolden[");
    event = block;
    return block.golden || m.starts_with(", oisCalibration[") || m.starts_with(", no memory for oisCalibration");
}

}  // namespace

bool registerMonitor(std::string_view m, Event& event) {
    Registered r;
    if (as(m, event, r, "Register Sensor Monitor sensorId:", r.sensor, " sensorType:", r.type)) return true;
    r.before = true;
    return as(m, event, r, "Sensor Monitor already registered sensorId:", r.sensor, " sensorType:", r.type);
}

bool startMonitor(std::string_view m, Event& event) {
    Started s;
    return as(m, event, s, "Enable Sensor Monitor sensorId:", s.sensor) ||
           other(m, event, "Sensor Monitor not registered");
}

bool registerAndStartMonitor(std::string_view m, Event& event) {
    return asWords<StartFailed>(m, event, "Enable Sensor Fail !!!, UnRegisterSensorMonitor");
}

bool unregisterMonitor(std::string_view m, Event& event) {
    Stopped s;
    return as(m, event, s, "Stop sensorId:", s.sensor, ", mSensorMonitors.size:", s.left);
}

bool enableSensor(std::string_view m, Event& event) {
    DeliveryStarted d;
    return as(m, event, d, "enable sensorType ", d.type, " success");
}

bool disableSensor(std::string_view m, Event& event) {
    DeliveryEnded d;
    return as(m, event, d, "disable sensorType ", d.type);
}

bool storeRollingShutter(std::string_view m, Event& event) {
    RollingShutter r;
    return as(m, event, r, "sensorId:", r.sensor, ", rolling_shutter:", r.time, " sensorMode:", r.mode);
}

bool readOtp(std::string_view m, Event& event) {
    OtpGolden g;
    OtpCalibration c;
    return otpLayout(m, event) || asWords<OtpAbsent>(m, event, "Not to stored OTPData !!!") ||
           as(m, event, g, "sensorId:", g.sensor, ", multi_tbl_idx:", g.index, " multiGoldenValid:", g.marker,
              " gradient:", g.gradient, " flag:", g.flag) ||
           as(m, event, g, "sensorId:", g.sensor, ", multiGolden is not valid(", g.marker, ")!!!") ||
           as(m, event, c, "sensorId:", c.sensor, ", oisCalibration is valid(", c.marker, ")") ||
           as(m, event, c, "sensorId:", c.sensor, ", oisCalibration is not valid(", c.marker, ")!!!") ||
           otpImplausible(m, event);
}

bool queryOtp(std::string_view m, Event& event) {
    OtpTableQueried q;
    return as(m, event, q, "sensorId:", q.sensor, ", array_size:", q.length, ", size:", q.size) ||
           other(m, event, "sensorId(");
}

bool multiTableIndex(std::string_view m, Event& event) {
    IndexForced f;
    return as(m, event, f, "Force prop set multi_tbl_idx:", f.index) || other(m, event, "sensorId(");
}

}  // namespace replay::import
