#include "tools/replay/import/Messages.h"

#include <algorithm>
#include <optional>
#include <string>

namespace replay::import {
namespace {

using Function = Event (*)(std::string_view message);

// Tries one message after the other: the first that fits makes the event.
template <typename... Attempts>
Event firstOf(std::string_view message, Attempts... attempts) {
    Event event = Unreadable{};
    (attempts(message, event) || ...);
    return event;
}

// An attempt: reads the pattern's values into the fields of a T, in this order.
template <typename T, typename... Fields>
auto as(std::string_view pattern, Fields T::*... fields) {
    return [=](std::string_view message, Event& event) {
        T made;
        if (!scan(message, pattern, made.*fields...)) return false;
        event = made;
        return true;
    };
}

// An attempt at a message that is known but needs no reading.
auto other(std::string_view beginning) {
    return [=](std::string_view message, Event& event) {
        if (message.starts_with(beginning)) event = Other{};
        return message.starts_with(beginning);
    };
}

Event pushValue(std::string_view m) {
    using S = SampleReceived;
    using D = BatchDivided;
    using F = BatchFiled;
    return firstOf(
        m,
        as("index:%, timestamp:%, OIS_X:% OIS_Y:%, oisHall_X:% oisHall_Y:%", &S::index, &S::timestamp, &S::oisX,
           &S::oisY, &S::hallX, &S::hallY),
        as("split data frameNumber: % lastData:% data:% splitTime:%", &D::frame, &D::older, &D::newer, &D::time),
        as("F:(%) dataSize:% start-end(%-%)", &F::frame, &F::count, &F::first, &F::last));
}

Event updateSensorData(std::string_view m) {
    using U = BatchUpdated;
    return firstOf(m,
                   as("update sensor data F:(%) TS:(%) size:%, queue size:%, timestamp interval:% - %", &U::frame,
                      &U::timestamp, &U::count, &U::queue, &U::first, &U::last),
                   as("no sensor data for type %", &BatchEmpty::type));
}

Event registerMonitor(std::string_view m) {
    using R = Registered;
    return firstOf(m, as("Register Sensor Monitor sensorId:% sensorType:%", &R::sensor, &R::type),
                   as("Sensor Monitor already registered sensorId:% sensorType:%", &R::sensor, &R::type));
}

Event startMonitor(std::string_view m) {
    return firstOf(m, as("Enable Sensor Monitor sensorId:%", &Started::sensor), other("Sensor Monitor not registered"));
}

Event registerAndStartMonitor(std::string_view m) {
    return firstOf(m, as<StartFailed>("Enable Sensor Fail !!!, UnRegisterSensorMonitor"));
}

Event unregisterMonitor(std::string_view m) {
    return firstOf(m, as("Stop sensorId:%, mSensorMonitors.size:%", &Stopped::sensor, &Stopped::left));
}

Event enableSensor(std::string_view m) {
    return firstOf(m, as("enable sensorType % success", &DeliveryStarted::type));
}

Event disableSensor(std::string_view m) {
    return firstOf(m, as("disable sensorType %", &DeliveryEnded::type));
}

Event storeRollingShutter(std::string_view m) {
    using R = RollingShutter;
    return firstOf(m, as("sensorId:%, rolling_shutter:% sensorMode:%", &R::sensor, &R::time, &R::mode));
}

bool otpLayout(std::string_view m, Event& event) {
    OtpLayout layout;
    Hex golden[4];
    Hex ois[2];
    std::int32_t goldenSize = 0;  // sizes were printed as signed numbers
    std::int32_t oisWords[3] = {};
    if (!scan(m,
              "sensorId:% multiGolden[offset:%, size:%, valid:%, gradient:%, %] oisCalibration[offset:%, size:%, "
              "valid:%, indexNum:%, tableNumber:%]",
              layout.sensor, golden[0], goldenSize, golden[1], golden[2], golden[3], ois[0], oisWords[0], ois[1],
              oisWords[1], oisWords[2])) {
        return false;
    }
    const auto word = [](std::int32_t number) { return static_cast<std::uint32_t>(number); };  // as it was before
    layout.multiGolden = {golden[0].value, word(goldenSize), golden[1].value, golden[2].value, golden[3].value};
    layout.oisCalibration = {ois[0].value, word(oisWords[0]), ois[1].value, word(oisWords[1]), word(oisWords[2])};
    event = layout;
    return true;
}

Event readOtp(std::string_view m) {
    using G = OtpGolden;
    using C = OtpCalibration;
    return firstOf(m, otpLayout, as<OtpAbsent>("Not to stored OTPData !!!"),
                   as("sensorId:%, multi_tbl_idx:% multiGoldenValid:% gradient:% flag:%", &G::sensor, &G::index,
                      &G::marker, &G::gradient, &G::flag),
                   as("sensorId:%, multiGolden is not valid(%)!!!", &G::sensor, &G::marker),
                   as("sensorId:%, oisCalibration is valid(%)", &C::sensor, &C::marker),
                   as("sensorId:%, oisCalibration is not valid(%)!!!", &C::sensor, &C::marker), other("sensorId:"));
}

Event queryOtp(std::string_view m) {
    using Q = OtpTableQueried;
    return firstOf(m, as("sensorId:%, array_size:%, size:%", &Q::sensor, &Q::length, &Q::size), other("sensorId("));
}

Event multiTableIndex(std::string_view m) {
    return firstOf(m, as("Force prop set multi_tbl_idx:%", &IndexForced::index), other("sensorId("));
}

Event fillInfo(std::string_view m) {
    return firstOf(m, as("is_multiexp_mode:%", &ExposureMode::multi), as<AlreadyWritten>("oisValue has been written"),
                   as("cust_lsc_type:% fill OIS value success!!!", &ValuesFilled::type));
}

Event fillTiming(std::string_view m) {
    using T = Timing;
    return firstOf(m, as("sof_timestamp:% [ne:%][se:%], exposure_time:% [ne:%][se:%]", &T::sof, &T::sofNe, &T::sofSe,
                         &T::exposure, &T::exposureNe, &T::exposureSe));
}

Event dataByTimestamp(std::string_view m) {
    return firstOf(m, as<NothingMatched>("no data matched !!!"), other("match data offset:"),
                   [](std::string_view message, Event& event) {
                       std::size_t total = 0;
                       if (!scan(message, "total data size:%", total)) return false;
                       event = QueryStarted{};
                       return true;
                   });
}

Event sensorData(std::string_view m) {
    using Q = QueryEnded;
    return firstOf(m, as("get sensor data F:(%) TS:(%) data size:%", &Q::frame, &Q::timestamp, &Q::count),
                   other("timestamp and frameNumber"));
}

bool calculation(std::string_view m, Event& event) {
    Calculation c;
    std::int64_t lag = 0;
    if (!scan(m,
              "sensorId = %, type = %, oisCount = %, sof_timestamp = %, exposure_time = %, shutter_time = %, timeDiff "
              "= %",
              c.sensor, c.type, c.count, c.startUs, c.exposureUs, c.shutterUs, lag)) {
        return false;
    }
    event = c;
    return true;
}

bool sampleUsed(std::string_view m, Event& event) {
    SampleUsed used;
    std::int32_t index = 0;
    if (!scan(m, "get source ois data index = %, timestamp = %, oisHall_x = %, oisHall_y = %", index, used.timeUs,
              used.x, used.y)) {
        return false;
    }
    event = used;
    return true;
}

bool matchFailed(std::string_view m, Event& event) {
    MatchFailed failed;
    std::uint32_t frame = 0;
    std::int64_t start = 0;
    std::size_t sizes[2] = {};
    if (!scan(m,
              "Match OIS data fail, transfer the last ois data to tsf. sensorId = % type = %, frameId = %, "
              "sof_timestamp = %, out_frame_ois_size(%, %)",
              failed.sensor, failed.type, frame, start, sizes[0], sizes[1])) {
        return false;
    }
    event = failed;
    return true;
}

bool position(std::string_view m, Event& event) {
    Position p;
    std::size_t sizes[2] = {};
    Decimal last[2];
    if (!scan(m,
              "sensorId = %, frameId = %, mOisCalCMode = %, out_frame_ois_size(%, %), out_frame_ois0(x = %, y=%), "
              "out_frame_ois1(x = %, y=%)",
              p.sensor, p.frame, p.mode, sizes[0], sizes[1], p.x, p.y, last[0], last[1])) {
        return false;
    }
    event = p;
    return true;
}

Event calcOis(std::string_view m) {
    return firstOf(m, sampleUsed, position, calculation, matchFailed, other("activeNum:"), other("startIndex"),
                   other("stamp_up"), other("endIndex"), other("Match OIS data, "), other("Unknown type "));
}

struct Named {
    std::string_view name;
    Function read;
};
constexpr Named kFunctions[] = {
    {"CalcOISValue", calcOis},
    {"pushValue", pushValue},
    {"getDataByTimestamp", dataByTimestamp},
    {"getSensorData", sensorData},
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
    if (!takeText(text, "[")) return Unreadable{};
    const std::size_t end = text.find("] ");
    if (end == std::string_view::npos) return Unreadable{};
    const std::string_view name = text.substr(0, end);
    const auto* const function = std::ranges::find(kFunctions, name, &Named::name);
    if (function == std::end(kFunctions)) return Other{};
    return function->read(withoutSite(text.substr(end + 2), name));
}

}  // namespace replay::import
