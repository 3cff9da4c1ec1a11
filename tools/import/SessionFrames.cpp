// The part of SessionWriter that writes frames.
#include <algorithm>
#include <array>
#include <limits>
#include <span>

#include "tools/import/Repair.h"
#include "tools/import/SessionWriter.h"

namespace replay::import {
namespace {

using std::to_string;

std::span<const std::uint32_t> typesOf(bool multi) {
    static constexpr std::array<std::uint32_t, 1> kSingle{1};
    static constexpr std::array<std::uint32_t, 2> kMulti{5, 6};
    return multi ? std::span<const std::uint32_t>(kMulti) : std::span<const std::uint32_t>(kSingle);
}

bool isMulti(const Frame& frame) {
    const auto multi = [](const Exposure& e) { return e.calculation && e.calculation->type >= 5; };
    return frame.multi.value_or(std::ranges::any_of(frame.exposures, multi));
}

}  // namespace

std::optional<std::int32_t> SessionWriter::sensorOf(const Frame& frame) const {
    if (frame.sensor()) return frame.sensor();
    const auto lane = mSensorsOfLane.find(frame.lane);
    if (mSensors.size() == 1) return mSensors.begin()->first;
    // Without a calculation it is for a sensor that is not monitored, unless it has its positions already.
    std::vector<std::int32_t> idle;
    for (const auto& [id, sensor] : mSensors) {
        if (!sensor.registered) idle.push_back(id);
    }
    if (!frame.written && idle.size() == 1) return idle.front();
    if (lane != mSensorsOfLane.end() && lane->second.size() == 1) return *lane->second.begin();
    // The call changes nothing.
    const auto last = mLastOfLane.find(frame.lane);
    if (frame.written && last != mLastOfLane.end()) return last->second;
    return std::nullopt;
}

std::string SessionWriter::labelOf(std::int32_t id, const Frame& frame) const {
    std::uint64_t start = 0;
    if (frame.timing) {
        start = frame.timing->sof;
    } else if (!frame.exposures.empty()) {
        start = startOf(frame.exposures.front());
    }
    const auto number = mSensors.at(id).evidence.frameAt(start);
    if (number) return "frame " + to_string(*number);
    if (!frame.timing && start != 0) return "the frame with an exposure that starts at " + to_string(start) + " ns";
    return start != 0 ? "the frame that starts at " + to_string(start) + " ns" : std::string("a frame");
}

// ---- Before the call

void SessionWriter::prepare(std::int32_t id, const Frame& frame) {
    Sensor& sensor = sensorAt(id);
    if (!sensor.otp && (frame.multi || frame.timing)) {
        hole("sensor " + to_string(id) + ": its OTP memory is not in the capture; one with a calibration is assumed");
        sensor.otp.emplace().sensor = id;
    }
    for (const Exposure& exposure : frame.exposures) {
        // Calculations are only reported with a monitor that runs.
        needMonitor(id);
        needShutter(id, *exposure.calculation);
        fillBefore(id, exposure);
    }
}

void SessionWriter::fillBefore(std::int32_t id, const Exposure& exposure) {
    Sensor& sensor = mSensors.at(id);
    if (exposure.listing.empty() || !exposure.trusted) return;
    const std::int64_t newestUs = sensor.buffer.newestUs().value_or(std::numeric_limits<std::int64_t>::min());
    if (exposure.listing.back().timeUs <= newestUs) return;
    lsc::Samples found;
    addMissing(found, exposure.listing, newestUs + 1, exposure.listing.back().timeUs, sensor.buffer);
    if (found.empty()) return;
    const std::uint32_t number = sensor.evidence.nextFrame();
    hole("sensor " + to_string(id) + ": a calculation lists " + to_string(found.size()) +
         (found.size() == 1 ? " sample" : " samples") + " that no hand-over before it holds; taken from its list");
    mReport.samplesRepaired += found.size();
    ++mReport.handOversRepaired;
    update(id, number, 0, found);
    sensor.buffer.file(number, found);
    sensor.evidence.filled();
}

void SessionWriter::checkFrame(std::int32_t id, const Frame& frame) {
    Sensor& sensor = mSensors.at(id);
    const std::string label = labelOf(id, frame) + ": ";
    if (!frame.multi && frame.timing) hole(label + "its exposure mode is not in the capture");
    bool filled = false;
    for (const Exposure& exposure : frame.exposures) {
        filled = filled || exposure.filled;
        if (exposure.query) {
            for (const std::string& doubt : sensor.evidence.queried(*exposure.query, sensor.buffer.total())) {
                hole(label + doubt);
            }
        } else if (mFacts.sawHandOvers && exposure.calculation->startUs + exposure.calculation->exposureUs != 0) {
            hole(label + "its query for samples is not in the capture");
        }
        if (exposure.missing != 0 && exposure.isOver()) {
            hole(label + "its calculation's list lacks " + to_string(exposure.missing) +
                 (exposure.missing == 1 ? " sample" : " samples"));
        } else if (mFacts.sawListings && exposure.isOver() && !exposure.isListed() &&
                   exposure.calculation->count != 0) {
            hole(label + "the end of its calculation's list is missing");
        }
        const bool inFrame = frame.multi || frame.timing;
        if (inFrame && exposure.outcome == Outcome::kPosition && !exposure.filled) {
            hole(label + "the message that its position was written is missing");
        }
    }
    if (!frame.timing && (filled || frame.multi)) {
        hole(label + "its timing is not in the capture; its calculations are played alone");
    }
    const std::uint64_t start = frame.timing              ? frame.timing->sof
                                : frame.exposures.empty() ? 0
                                                          : startOf(frame.exposures.front());
    if (const std::size_t missing = sensor.evidence.asked(start); missing != 0) {
        countLost(missing);
        hole(label + callsMissing(missing, "before it"));
    }
}

// ---- The call

void SessionWriter::write(Frame& frame) {
    if (frame.isQueryAlone()) {
        const std::optional<QueryAnswered>& answered = frame.exposures.front().query->answered;
        if (answered && answered->timestamp == 0) return;  // by frame number: of no calculation
        return hole("a query for samples without its calculation");
    }
    ++mReport.frames;
    const std::optional<std::int32_t> id = sensorOf(frame);
    const bool bare = !frame.timing && frame.exposures.empty() && !frame.written;
    if (!id || bare) {
        ++mReport.framesLost;
        ++mLeftOut;
        return hole(bare ? "a frame without its timing and its calculations; left out"
                         : "a frame without its calculation, of which sensor nothing tells; left out");
    }
    prepare(*id, frame);
    Sensor& sensor = mSensors.at(*id);
    mSensorsOfLane[frame.lane].insert(*id);
    mLastOfLane[frame.lane] = *id;
    const std::string name = "frame-" + to_string(*id);
    if (frame.written) {
        if (mSensors.size() > 1 && mSensorsOfLane[frame.lane].size() > 1) {
            ++mReport.framesUntold;
            line("# assumed: the sensor of this call");
        }
        if (!sensor.served) line(writtenMetadata(name, isMulti(frame)));
        return line(callLine("fillLscOISCompInfo", *id, {{"metadata", "\"" + name + "\""}}));
    }
    checkFrame(*id, frame);
    if (frame.timing) {
        writeTimed(*id, frame);
    } else {
        writeUntimed(*id, frame);
    }
    if (!frame.exposures.empty()) sensor.lastStartUs = frame.exposures.front().startUs();
}

void SessionWriter::writeTimed(std::int32_t id, Frame& frame) {
    const Timing& timing = *frame.timing;
    // The call goes on to the calculation only with both entries there, whatever they hold.
    const bool tried = !frame.exposures.empty();
    const bool hasStart = tried || timing.sof != 0;
    const bool hasExposure = tried || timing.exposure != 0 || timing.exposureSe != 0;
    Sensor& sensor = mSensors.at(id);
    const std::string name = "frame-" + to_string(id);
    line(frameMetadata(name, isMulti(frame), timing, hasStart, hasExposure));
    line(callLine("fillLscOISCompInfo", id, {{"metadata", "\"" + name + "\""}}));
    for (const std::uint32_t type : typesOf(isMulti(frame))) {
        const auto its = std::ranges::find_if(
            frame.exposures, [type](const Exposure& exposure) { return exposure.calculation->type == type; });
        if (its != frame.exposures.end()) {
            expect(id, frame, *its);
        } else {
            // For which sensor the call was is certain with one sensor alone, or while nothing is missing.
            const bool sure = mSensors.size() == 1 || mReport.notices() == 0;
            expectMissing(id, frame, type, sure && !tried && (!hasStart || !hasExposure || !sensor.registered));
        }
    }
    sensor.served = tried && std::ranges::all_of(frame.exposures, [](const Exposure& exposure) {
                        return exposure.outcome == Outcome::kPosition;
                    });
}

void SessionWriter::writeUntimed(std::int32_t id, Frame& frame) {
    for (const Exposure& exposure : frame.exposures) {
        line(calculationLine(id, exposure));
        expect(id, frame, exposure);
    }
    mSensors.at(id).served = false;
}

}  // namespace replay::import
