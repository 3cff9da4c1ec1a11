// The part of SessionWriter that decides which result of the device belongs to which exposure.
#include <algorithm>
#include <bit>

#include "tools/import/Recalculation.h"
#include "tools/import/Repair.h"
#include "tools/import/SessionWriter.h"

namespace replay::import {
namespace {

using std::to_string;

constexpr double kNextFrame = 1.5;  // steps between frames: nearer, and no frame lies between

// The start of frame (ns) that an exposure's query asks for.
std::uint64_t startNsOf(const Timing& timing, std::uint32_t type) {
    if (type == 5) return timing.sofNe;
    return type == 6 ? timing.sofSe : timing.sof;
}

bool isWindow(const std::vector<Listed>& listing, const lsc::Samples& window) {
    const auto same = [](const Listed& listed, const NSCam::Utils::SensorData& sample) {
        const auto bits = [](float value) { return std::bit_cast<std::uint32_t>(value); };
        return listed.timeUs == lsc::sampleTimeUs(sample) && bits(listed.x) == bits(sample.oisX) &&
               bits(listed.y) == bits(sample.oisY);
    };
    return std::ranges::equal(listing, window, same);
}

}  // namespace

SessionWriter::Played SessionWriter::play(std::int32_t id, const Exposure& exposure, std::uint64_t startNs) const {
    const Sensor& sensor = mSensors.at(id);
    Played played;
    const lsc::Samples window = sensor.buffer.window(startNs);
    played.listed = isWindow(exposure.listing, window);
    played.repaired = std::ranges::any_of(window, [](const auto& sample) { return sample.status == kRepaired; });
    if (window.empty()) return played;
    Calculation calculation = *exposure.calculation;
    calculation.shutterUs = sensor.shutter / lsc::kNsPerUs;
    played.position = recalculate(calculation, mMode.value_or(0), window).position;
    return played;
}

bool SessionWriter::isNextFrameNext(std::int32_t id, const Exposure& exposure) const {
    const std::uint64_t before = mSensors.at(id).lastStartUs;
    std::uint64_t last = exposure.startUs();
    if (before == 0 || before >= last) return false;
    const auto usual = static_cast<double>(last - before);
    for (const Call& call : mTimeline.calls()) {
        const auto* const next = std::get_if<Frame>(&call.data);
        if (next == nullptr || next->sensor() != id || next->isQueryAlone()) continue;
        const std::uint64_t start = next->exposures.front().startUs();
        return start > last && static_cast<double>(start - last) < kNextFrame * usual;
    }
    return false;
}

bool SessionWriter::isTied(std::int32_t id, const Frame& frame, const Exposure& exposure, const Played& played) const {
    if (exposure.proven) return true;
    if (!exposure.contested && played.position && isPrinted(exposure, *played.position)) return true;
    // Its own samples give another position: either the device computes otherwise, or the messages of two frames run
    // into each other where some between are lost. Then a frame is missing.
    const Exposure& last = frame.exposures.back();
    const bool followed = exposure.calculation->type != 5 || last.calculation->type == 6;
    return exposure.whole && followed && isNextFrameNext(id, frame.exposures.front());
}

void SessionWriter::writeExpectation(std::int32_t id, const Frame& frame, std::uint32_t type,
                                     std::string_view position) {
    std::string text = "#expect {";
    const std::string label = labelOf(id, frame);
    if (label.starts_with("frame ")) text += "\"frame\":" + label.substr(label.find(' ') + 1) + ",";
    text += "\"sensor\":" + to_string(id) + ",\"type\":" + to_string(type) + ",";
    line(text.append(position).append("}"));
}

void SessionWriter::expect(std::int32_t id, const Frame& frame, const Exposure& exposure) {
    const std::uint32_t type = exposure.calculation->type;
    if (exposure.outcome == Outcome::kPosition) {
        if (!mMode) mMode = exposure.mode;
        if (*mMode != exposure.mode) {
            hole(labelOf(id, frame) + ": its calculation mode is " + to_string(exposure.mode) + ", not " +
                 to_string(*mMode));
        }
    }
    const Played played = play(id, exposure, frame.timing ? startNsOf(*frame.timing, type) : startOf(exposure));
    const bool none = exposure.outcome == Outcome::kNone;
    if (!none && (exposure.outcome == Outcome::kUnknown || !isTied(id, frame, exposure, played))) {
        ++mReport.resultless;
        if (!mFacts.sawListings) return;
        return hole(labelOf(id, frame) +
                    (exposure.outcome == Outcome::kUnknown
                         ? ": what became of its exposure of type " + to_string(type) + " is not in the capture"
                         : ": whether the position in the log is its own, nothing tells; left out"));
    }
    writeExpectation(id, frame, type,
                     none ? std::string("\"x\":null,\"y\":null")
                          : "\"x\":\"" + exposure.xText + "\",\"y\":\"" + exposure.yText + "\"");
    const bool same = none ? !played.position : played.position && isPrinted(exposure, *played.position);
    if (same) {
        ++(played.repaired ? mReport.repaired : mReport.exact);
        return;
    }
    ++mReport.different;
    if (!played.listed && !none && mFacts.sawListings) {
        hole(labelOf(id, frame) + ": not all samples that its position was made from are in the capture");
    }
}

void SessionWriter::expectMissing(std::int32_t id, const Frame& frame, std::uint32_t type, bool notTried) {
    if (notTried) {
        ++mReport.exact;
        return writeExpectation(id, frame, type, "\"x\":null,\"y\":null");
    }
    ++mReport.resultless;
    hole(labelOf(id, frame) + ": what became of its exposure of type " + to_string(type) + " is not in the capture");
}

}  // namespace replay::import
