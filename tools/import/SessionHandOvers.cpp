// The part of SessionWriter that writes hand-overs, and fills what the capture lost of them.
#include <algorithm>
#include <limits>

#include "customer/aaa/aaa/lsc/OisSpan.h"
#include "tools/import/Repair.h"
#include "tools/import/SessionWriter.h"

namespace replay::import {
namespace {

using std::to_string;

constexpr std::size_t kNumbersKept = 256;

// Samples that the messages count and that are not there; those that the indexes skip among them.
std::size_t missingOf(const HandOver& batch) {
    std::size_t expected = batch.samples.size() + batch.skipped;
    if (!batch.divided && batch.filed) expected = std::max(expected, batch.filed->count);
    if (!batch.divided && batch.updated) expected = std::max(expected, batch.updated->count);
    return expected - batch.samples.size();
}

}  // namespace

void SessionWriter::meetWitnesses(const HandOver& batch) {
    for (const auto& [id, votes] : batch.votes) {
        if (votes.listed != 0) needMonitor(id);
    }
    if (mAttribution.monitors() != 0) return;
    // A log begun late: a frame that follows may name the only sensor.
    for (const Call& call : mTimeline.calls()) {
        const auto* const frame = std::get_if<Frame>(&call.data);
        if (frame == nullptr || !frame->sensor()) continue;
        return needMonitor(*frame->sensor());
    }
    needMonitor(mSensors.empty() ? 0 : mSensors.begin()->first);
}

std::optional<std::int32_t> SessionWriter::sensorOf(const HandOver& batch) {
    meetWitnesses(batch);
    const Attribution::Choice choice = mAttribution.choose(batch, mTimeline);
    if (!choice.sensor) {
        if (mReport.nobodys++ == 0) hole("a hand-over of a sensor that no message names; left out, as all like it");
        return std::nullopt;
    }
    if (!choice.sure && batch.emptyType) {
        hole("a hand-over without samples, of which sensor nothing tells; taken for sensor " +
             to_string(*choice.sensor) + ", no position depends on it");
    } else if (!choice.sure) {
        ++mReport.ambiguous;
        const auto frame = batch.frame();
        hole("the hand-over of " + (frame ? "frame " + to_string(*frame) : std::string("a frame")) +
             " may belong to several sensors; given to sensor " + to_string(*choice.sensor));
    }
    return choice.sensor;
}

void SessionWriter::update(std::int32_t id, std::uint32_t frame, std::uint64_t timestamp, const lsc::Samples& samples) {
    if (!samples.empty()) line(samplesLine(mSensors.at(id).type, samples));
    line(callLine("UpdateSensorData", id, {{"frame", to_string(frame)}, {"timestamp", to_string(timestamp)}}));
}

void SessionWriter::closeGap(std::int32_t id, const SensorEvidence::Gap& gap, const HandOver& batch) {
    if (gap.doubt.empty()) return;
    Sensor& sensor = mSensors.at(id);
    const std::optional<std::int64_t> newestUs = sensor.buffer.newestUs();
    lsc::Samples found;
    if (gap.lost != 0 && newestUs && !batch.samples.empty()) {
        repair(found, mTimeline, id, *newestUs + 1, batch.firstNs() / std::int64_t{lsc::kNsPerUs} - 1, sensor.buffer);
    }
    hole(
        "sensor " + to_string(id) + ": " + gap.doubt +
        (found.empty() ? std::string() : "; " + countOf(found.size(), "sample") + " taken from lists of calculations"));
    mReport.handOversLost += gap.lost;
    if (gap.samples) sensor.evidence.lost();
    if (found.empty()) return;
    // Nothing tells how the samples were divided among the hand-overs.
    std::uint32_t frame = sensor.evidence.nextFrame();
    mReport.samplesRepaired += found.size();
    for (std::size_t i = 0, first = 0; i < gap.lost; ++i, ++frame) {
        const std::size_t end = found.size() * (i + 1) / gap.lost;
        const lsc::Samples part(found.data() + first, found.data() + end);
        first = end;
        if (part.empty()) continue;
        ++mReport.handOversRepaired;
        --mReport.handOversLost;
        update(id, frame, 0, part);
        sensor.buffer.file(frame, part);
    }
}

std::size_t SessionWriter::fill(std::int32_t id, HandOver& batch, std::size_t missing) {
    Sensor& sensor = mSensors.at(id);
    if (missing == 0 && sensor.evidence.isSure() && batch.updated) return 0;
    std::optional<std::int64_t> last;
    if (batch.updated && batch.updated->count != 0) last = static_cast<std::int64_t>(batch.updated->last);
    if (batch.filed) last = static_cast<std::int64_t>(batch.filed->last);  // times were printed as unsigned numbers
    if (!last && !batch.samples.empty()) last = batch.lastNs();
    if (!last) return 0;
    const std::optional<std::int64_t> from = batch.divided ? sensor.buffer.newestBatchUs() : sensor.buffer.newestUs();
    const std::int64_t fromUs = from ? *from + 1 : std::numeric_limits<std::int64_t>::min();
    const std::size_t found =
        repair(batch.samples, mTimeline, id, fromUs, *last / std::int64_t{lsc::kNsPerUs}, sensor.buffer);
    mReport.samplesRepaired += found;
    if (found != 0) ++mReport.handOversRepaired;
    return found;
}

void SessionWriter::write(HandOver& batch) {
    const std::optional<std::int32_t> id = sensorOf(batch);
    if (!id) return;
    needMonitor(*id);
    Sensor& sensor = mSensors.at(*id);
    mSensorsOfLane[batch.lane].insert(*id);
    ++mReport.handOvers;
    const auto others = [&](std::uint32_t frame) {
        return std::ranges::find(mFrameNumbers, frame) != mFrameNumbers.end();
    };
    closeGap(*id, sensor.evidence.gapBefore(batch, sensor.buffer.newestUs(), others), batch);
    const std::uint32_t frame = batch.frame().value_or(sensor.evidence.nextFrame());
    mFrameNumbers.push_back(frame);
    if (mFrameNumbers.size() > kNumbersKept) mFrameNumbers.pop_front();
    mAttribution.filed(*id, batch);

    const std::string label = "frame " + to_string(frame) + ": ";
    const std::size_t missing = missingOf(batch);
    const std::size_t found = fill(*id, batch, missing);
    if (missing != 0 && mFacts.sawSamples) {
        hole(label + countOf(missing, "sample") + " of its hand-over missing; " +
             (found != 0 ? countOf(found, "sample") + " taken from lists of calculations" : "in no list"));
    }
    if (!batch.frame() && !batch.emptyType) hole(label + "its frame number is assumed");
    const std::uint64_t timestamp = batch.updated ? batch.updated->timestamp : 0;
    if (timestamp != 0) mNewestNs = timestamp;
    sensor.lastLine = mLine;
    if (batch.emptyType) {
        sensor.evidence.filed(batch, {}, true);
        return update(*id, frame, timestamp, {});
    }
    if (batch.samples.empty()) {
        ++mReport.handOversLost;
        sensor.evidence.lost();
        sensor.evidence.filed(batch, {}, false);
        return;
    }
    update(*id, frame, timestamp, batch.samples);
    const SampleBuffer::Filing filing = sensor.buffer.file(frame, batch.samples);
    const bool whole = missing == 0 && found == 0;
    for (const std::string& doubt : sensor.evidence.filed(batch, filing, whole)) {
        hole(label + doubt);
        sensor.evidence.lost();
    }
    if (!whole) sensor.evidence.lost();
}

}  // namespace replay::import
