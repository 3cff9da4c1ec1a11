#include "tests/import/Assembly.h"

#include <algorithm>

#include <fmt/format.h>

#include "tools/import/Recalculation.h"

namespace assembly {
namespace {

constexpr std::size_t kListed = 100;

std::string word(const HandOver& batch) {
    if (batch.emptyType) return fmt::format("E{}", *batch.emptyType);
    std::string text = std::to_string(batch.samples.size()) + ":F";
    text += batch.frame() ? std::to_string(*batch.frame()) : "?";
    if (batch.skipped != 0) text += fmt::format("-{}", batch.skipped);
    if (batch.divided) text += "/";
    return text + (batch.updated ? "" : "!");
}

std::string word(const Exposure& exposure) {
    if (!exposure.calculation) return "query";
    std::string text = fmt::format("s{}t{}", exposure.calculation->sensor, exposure.calculation->type);
    text += exposure.outcome == Exposure::Outcome::kNone ? "n" : exposure.isOver() ? "p" : "?";
    return text + (exposure.whole ? "*" : "");
}

std::string word(const Frame& frame) {
    std::string text = frame.written ? "W" : frame.timing ? "T" : frame.multi ? "M" : "";
    for (const Exposure& exposure : frame.exposures)
        text += "[" + word(exposure) + "]";
    return text;
}

std::string word(const RegisterCall& call) {
    return fmt::format("R{}{}{}", call.sensor, call.started ? "" : "failed", call.hadProvider ? "" : "-");
}
std::string word(const UnregisterCall& call) {
    return fmt::format("U{}", call.sensor);
}
std::string word(const OtpRead& read) {
    return fmt::format("O{}{}{}{}", read.sensor, read.layout ? "L" : "", read.golden ? "G" : "",
                       read.calibration ? "C" : "");
}
std::string word(const RollingShutter& shutter) {
    return fmt::format("S{}", shutter.sensor);
}
std::string word(const Doubt& doubt) {
    return "\"" + doubt.text + "\"";
}
std::string word(const OtpTableQueried&) {
    return "table";
}
std::string word(const IndexForced&) {
    return "index";
}

}  // namespace

std::string sample(std::size_t index, std::int64_t us, std::string_view x) {
    return fmt::format(
        "[pushValue] index:{}, timestamp:{}, OIS_X:{} OIS_Y:0.250000, oisHall_X:2048.000000 oisHall_Y:0.000000", index,
        us * 1000, x);
}

std::string filed(std::uint32_t frame, std::size_t count, std::int64_t firstUs, std::int64_t lastUs) {
    return fmt::format("[pushValue] F:({}) dataSize:{} start-end({}-{})", frame, count, firstUs * 1000, lastUs * 1000);
}

std::string updated(std::uint32_t frame, std::size_t count, std::size_t queue, std::int64_t firstUs,
                    std::int64_t lastUs) {
    return fmt::format(
        "[updateSensorData] update sensor data F:({}) TS:({}) size:{}, queue size:{}, timestamp interval:{} - {}",
        frame, firstUs * 1000, count, queue, firstUs * 1000, lastUs * 1000);
}

Messages handOver(std::uint32_t frame, std::size_t queue, std::int64_t firstUs, std::size_t count, std::string_view x) {
    Messages messages;
    for (std::size_t i = 0; i < count; ++i)
        messages.push_back({sample(i, firstUs + static_cast<std::int64_t>(i) * 1000, x)});
    const std::int64_t last = firstUs + static_cast<std::int64_t>(count - 1) * 1000;
    messages.push_back({filed(frame, count, firstUs, last)});
    messages.push_back({updated(frame, count, queue, firstUs, last)});
    return messages;
}

Messages frame(int sensor, std::int64_t startUs, std::size_t total, std::string_view x) {
    const std::int64_t sof = startUs + 1000;
    Messages messages{
        {"[fillLscOISCompInfo] is_multiexp_mode:0"},
        {fmt::format("[fillLscCalcOISValueInputInfo] sof_timestamp:{} [ne:0][se:0], exposure_time:1000000 "
                     "[ne:1000000][se:0]",
                     sof * 1000)},
        {fmt::format("[getDataByTimestamp] total data size:{}", total)},
        {fmt::format("[getDataByTimestamp] match data offset:60 timestamp:{}", sof * 1000)},
        {fmt::format("[getSensorData] get sensor data F:(0) TS:({}) data size:100", sof * 1000)},
        {"[QuerySensorData] get sensor data size:100"},
        {fmt::format("[CalcOISValue] sensorId = {}, type = 1, oisCount = 100, sof_timestamp = {}, exposure_time = "
                     "1000, shutter_time = 4000, timeDiff = -709",
                     sensor, startUs)}};
    Calculation calculation{sensor, 1, kListed, static_cast<std::uint64_t>(startUs), 1000, 4000};
    std::vector<Listed> listing;
    for (std::size_t i = 0; i < kListed; ++i) {
        const std::int64_t us = startUs - 50000 + static_cast<std::int64_t>(i) * 1000;
        listing.push_back({us, std::stof(std::string(x)), 0.25F});
        messages.push_back(
            {fmt::format("[CalcOISValue] get source ois data index = {}, timestamp = {}, oisHall_x = "
                         "{}, oisHall_y = 0.250000",
                         i, us, x)});
    }
    const Recalculation made = recalculate(calculation, 0, windowOf(listing));
    for (std::size_t i = 0; i < made.steps - made.span; ++i)
        messages.push_back({fmt::format("[CalcOISValue] startIndex, index = {}, timestamp Difference = 5000", i)});
    for (std::size_t i = 0; i < made.span; ++i) {
        messages.push_back(
            {fmt::format("[CalcOISValue] Match OIS data, sof_timestamp = {}, activeNum = {}, hall = "
                         "({}, 0.250000), timestamp = {}",
                         startUs, made.span, x, i)});
    }
    messages.push_back(
        {fmt::format("[CalcOISValue] sensorId = {}, frameId = 0, mOisCalCMode = 0, "
                     "out_frame_ois_size(2, 2), out_frame_ois0(x = {}, y=0.250000), "
                     "out_frame_ois1(x = 0.000000, y=0.000000)",
                     sensor, x)});
    messages.push_back({"[fillLscOISCompInfo] cust_lsc_type:1 fill OIS value success!!!"});
    return messages;
}

std::string read(const Messages& messages) {
    Timeline timeline;
    CaptureReader reader(timeline, std::nullopt);
    int clock = 0;
    for (const auto& [text, tid] : messages) {
        ++clock;
        reader.add(tid == 0 ? fmt::format("D/TarvoShadingCustomUtil( 99): {}", text)
                            : fmt::format("11-22 10:{:02}:{:02}.{:03}  99 {} D TarvoShadingCustomUtil: {}",
                                          clock / 60000, clock / 1000 % 60, clock % 1000, tid, text));
    }
    reader.finish();
    std::string words;
    for (const Call& call : timeline.calls()) {
        if (!words.empty()) words += ' ';
        words += std::visit([](const auto& data) { return word(data); }, call.data);
    }
    return words;
}

Messages without(Messages messages, std::string_view part) {
    std::erase_if(messages, [&](const Message& m) { return m.text.find(part) != std::string::npos; });
    return messages;
}

Messages joined(std::initializer_list<Messages> parts) {
    Messages all;
    for (const Messages& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

}  // namespace assembly
