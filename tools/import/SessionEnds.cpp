// The part of SessionWriter that tells what the end of a monitor, or of the capture, leaves open, and what to do.
#include <algorithm>
#include <utility>

#include "tools/import/SessionWriter.h"

namespace replay::import {
namespace {

using std::to_string;

// Frames of a sensor without a hand-over; more, and some are missing.
constexpr double kMostBeforeEnd = 4;   // of its monitor: the camera has stopped already
constexpr double kMostWithoutEnd = 3;  // sensors' hand-overs are not equally late
constexpr double kMostSilent = 1e6;    // a damaged time stamp may be any

}  // namespace

// Frames that were left out are among those that the calls before and after them miss.
void SessionWriter::countLost(std::size_t frames) {
    const std::size_t counted = std::min(frames, std::exchange(mLeftOut, 0));
    mReport.framesLost += frames - counted;
}

void SessionWriter::checkAsked(std::int32_t id) {
    const std::size_t missing = mSensors.at(id).evidence.unasked();
    if (missing == 0) return;
    countLost(missing);
    hole("sensor " + to_string(id) + ": " + callsMissing(missing, "at the end"));
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
    const double silence = static_cast<double>(mNewestNs) - static_cast<double>(evidence.newestNs());
    return std::min(silence / period, kMostSilent);
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

void SessionWriter::finish() {
    for (const auto& [id, sensor] : mSensors) {
        if (!sensor.registered) continue;
        checkAsked(id);
        checkSilence(id, false);
    }
    adviseOnForm();
    adviseOnLosses();
}

void SessionWriter::adviseOnForm() {
    for (const auto& [pid, count] : mFacts.otherProcesses) {
        mReport.general(countOf(count, "message") + " of process " + to_string(pid) + " left out; --pid " +
                        to_string(pid) + " imports them");
    }
    if (mFacts.bareLines != 0) {
        mReport.general(countOf(mFacts.bareLines, "message") +
                        " without a tag left out: the forms raw and thread have none; record with -v threadtime");
    }
    if (!mFacts.sawThreads && mSensors.size() > 1) {
        mReport.general("the form of the log names no threads, and there are " + to_string(mSensors.size()) +
                        " sensors: messages were told apart by what they say; record with -v threadtime");
    }
    if (mFacts.refused != 0) {
        mReport.general(countOf(mFacts.refused, "call") +
                        " for a sensor that the library refuses left out, the first for sensor " +
                        to_string(mFacts.refusedSensor) + "; they change nothing");
    }
    if (mReport.frames != 0 && !mMode && mFacts.sawListings) {
        mReport.general("no position tells the calculation mode; 0 is assumed");
    }
}

void SessionWriter::adviseOnLosses() {
    // A hand-over has one sample at least.
    const bool cut = !mFacts.sawSamples && mUnreadable > mReport.handOvers;
    if (cut) {
        mReport.general(countOf(mUnreadable, "message") + " cut or changed; record again, and keep lines whole");
    } else if (!mFacts.sawSamples) {
        mReport.general(
            "the samples handed over are not in the log: set vendor.tarvo.3a.lscutil.log to 4 and restart the camera "
            "service (docs/workbench.md)");
    } else if (mReport.handOversLost + mReport.framesLost != 0) {
        mReport.general("calls are missing; record again with a larger log buffer: adb logcat -G 64M");
    }
    if (mReport.nobodys != 0) {
        mReport.general(countOf(mReport.nobodys, "hand-over") +
                        " of a sensor that no message names left out; record from before the camera opens");
    }
    if (mReport.ambiguous != 0) {
        mReport.general(countOf(mReport.ambiguous, "hand-over") +
                        " may belong to several sensors; record one camera at a time");
    }
}

}  // namespace replay::import
