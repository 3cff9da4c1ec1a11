// The part of SessionWriter that tells what the end of a monitor, or of the capture, leaves open.
#include <algorithm>

#include "tools/import/SessionWriter.h"

namespace replay::import {
namespace {

using std::to_string;

// Frames of a sensor without a hand-over; more, and some are missing.
constexpr double kMostBeforeEnd = 4;   // of its monitor: the camera has stopped already
constexpr double kMostWithoutEnd = 3;  // sensors' hand-overs are not equally late

}  // namespace

void SessionWriter::checkAsked(std::int32_t id) {
    const std::size_t missing = mSensors.at(id).evidence.unasked();
    if (missing == 0) return;
    mReport.framesLost += missing;
    hole("sensor " + to_string(id) + ": the calls for the last " + countOf(missing, "frame") +
         " handed over are missing, or were not made");
}

// Frames of the sensor that fit between its last hand-over and the last one of all sensors.
double SessionWriter::silentFrames(std::int32_t id) const {
    const SensorEvidence& evidence = mSensors.at(id).evidence;
    double period = evidence.longestPeriodNs();
    if (period <= 0) {
        for (const auto& [other, sensor] : mSensors)
            period = std::max(period, sensor.evidence.longestPeriodNs());
    }
    if (evidence.newestNs() == 0 || period <= 0) return 0;
    return (static_cast<double>(mNewestNs) - static_cast<double>(evidence.newestNs())) / period;
}

void SessionWriter::checkSilence(std::int32_t id, bool ended) {
    const double frames = silentFrames(id);
    if (frames <= (ended ? kMostBeforeEnd : kMostWithoutEnd)) return;
    const Sensor& sensor = mSensors.at(id);
    const auto missing = static_cast<std::size_t>(frames);
    mReport.handOversLost += missing;
    if (sensor.evidence.wasAsked()) mReport.framesLost += missing;
    mLine = sensor.lastLine;
    hole("sensor " + to_string(id) + ": no hand-over after this one" +
         (ended ? " until its monitor ended" : ", nor the end of its monitor") +
         ", while another camera went on: up to " + to_string(missing) +
         (sensor.evidence.wasAsked() ? " hand-overs and calls for frames" : " hand-overs") + " are missing");
}

}  // namespace replay::import
