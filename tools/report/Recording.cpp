#include "tools/report/Recording.h"

#include <algorithm>
#include <cstdlib>
#include <span>

#include "tools/session/Expectation.h"

namespace replay {
namespace {

RecordedExposure::Device compare(const ExposureOutcome& here, const Expectation& device, double tolerance) {
    const Agreement agreement = agreementOf(printedPosition(here), device.position, tolerance);
    if (!device.position) return {std::nullopt, agreement};
    const auto& [x, y] = *device.position;
    return {Position{std::strtod(x.c_str(), nullptr), std::strtod(y.c_str(), nullptr)}, agreement};
}

}  // namespace

void Recording::handedOver(const HandOver& handOver) {
    mExtent.handedOver(handOver);
    auto& samples = mSensors[handOver.sensor].samples;
    for (const auto& sample : handOver.samples)
        samples.push_back({sample.timestamp, sample.oisX, sample.oisY});
}

void Recording::exposuresAsked(const std::vector<ExposureOutcome>& outcomes) {
    mExtent.exposuresAsked(outcomes);
    mNewest = outcomes.size();
    for (const ExposureOutcome& outcome : outcomes)
        mSensors[outcome.sensor].exposures.push_back({outcome, std::nullopt});
}

void Recording::expected(const Expectation& expectation) {
    const auto sensor = mSensors.find(expectation.sensor);
    if (sensor == mSensors.end()) return;
    auto& exposures = sensor->second.exposures;
    for (RecordedExposure& exposure : std::span(exposures).last(std::min(mNewest, exposures.size()))) {
        if (exposure.outcome.type == expectation.type)
            exposure.device = compare(exposure.outcome, expectation, mTolerance);
    }
}

void Recording::finish() {
    for (auto& [id, sensor] : mSensors) {
        std::ranges::stable_sort(sensor.samples, {}, &RecordedSample::timeNs);
        const auto repeated = std::ranges::unique(sensor.samples);
        sensor.samples.erase(repeated.begin(), repeated.end());
        sensor.samples.shrink_to_fit();
    }
}

}  // namespace replay
