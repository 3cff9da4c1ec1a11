// Writes what a capture tells as a session, call by call: the platform's answers, the calls in order, each frame with
// what the device made of it, and at their place comments that say what is missing, repaired or assumed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "customer/aaa/aaa/lsc/OisSpan.h"
#include "tools/import/Attribution.h"
#include "tools/import/Report.h"
#include "tools/import/SampleBuffer.h"
#include "tools/import/SensorEvidence.h"
#include "tools/import/SensorLine.h"
#include "tools/import/SessionText.h"

namespace replay::import {

class SessionWriter {
public:
    using Sink = std::function<void(std::string_view text)>;

    // `name` is the capture's, for the comments. All references must outlive the writer.
    SessionWriter(std::string name, const CaptureFacts& facts, Timeline& timeline, Report& report, Sink sink);

    // Writes the calls that have waited long enough; `all`: no more come, and the session ends.
    void write(bool all);

private:
    using Outcome = Exposure::Outcome;

    struct Sensor {
        bool registered = false;
        bool served = false;  // its last frame was
        std::int32_t type = 0;
        std::uint32_t shutter = 0;  // ns, of the monitor
        ShutterTimes times;         // as the session's platform answers
        std::optional<OtpRead> otp;
        SampleBuffer buffer;
        SensorEvidence evidence;
        std::uint64_t lastStartUs = 0;  // of the frame asked for last
        std::size_t lastLine = 0;       // of the capture, of the last hand-over
    };

    // What the session gives for an exposure.
    struct Played {
        std::optional<lsc::LensPosition> position;
        bool repaired = false;  // some of its samples are
        bool listed = false;    // its samples are those that the device lists
    };

    void write(HandOver& batch);
    void write(Frame& frame);
    void write(const RegisterCall& call);
    void write(const UnregisterCall& call);
    void write(const RollingShutter& call);
    void write(const OtpRead& call);
    void write(const OtpTableQueried& call);
    void write(const IndexForced& call);
    void write(const Doubt& doubt);

    // Hand-overs
    std::optional<std::int32_t> sensorOf(const HandOver& batch);
    void closeGap(std::int32_t id, const SensorEvidence::Gap& gap, const HandOver& batch);
    std::size_t fill(std::int32_t id, HandOver& batch, std::size_t missing);
    void update(std::int32_t id, std::uint32_t frame, std::uint64_t timestamp, const lsc::Samples& samples);
    void meetWitnesses(const HandOver& batch);

    // Frames
    std::optional<std::int32_t> sensorOf(const Frame& frame) const;
    void writeTimed(std::int32_t id, Frame& frame);
    void writeUntimed(std::int32_t id, Frame& frame);
    void prepare(std::int32_t id, const Frame& frame);
    void fillBefore(std::int32_t id, const Exposure& exposure);
    void checkFrame(std::int32_t id, const Frame& frame);
    Played play(std::int32_t id, const Exposure& exposure, std::uint64_t startNs) const;
    void expect(std::int32_t id, const Frame& frame, const Exposure& exposure);
    void expectMissing(std::int32_t id, const Frame& frame, std::uint32_t type, bool notTried);
    bool isTied(std::int32_t id, const Frame& frame, const Exposure& exposure, const Played& played) const;
    bool isNextFrameNext(std::int32_t id, const Exposure& exposure) const;
    void writeExpectation(std::int32_t id, const Frame& frame, std::uint32_t type, std::string_view position);
    std::string labelOf(std::int32_t id, const Frame& frame) const;

    // Ends
    void finish();
    void adviseOnForm();
    void adviseOnLosses();
    void countLost(std::size_t frames);
    void checkAsked(std::int32_t id);
    double silentFrames(std::int32_t id) const;
    void checkSilence(std::int32_t id, bool ended);

    // Sensors
    Sensor& sensorAt(std::int32_t id);
    void writeSensor(std::int32_t id);
    void needMonitor(std::int32_t id);
    void needShutter(std::int32_t id, const Calculation& calculation);

    void line(std::string_view text) { mBody.append(text).append("\n"); }
    void hole(const std::string& text);
    void flush(bool all);

    const std::string mName;
    const CaptureFacts& mFacts;
    Timeline& mTimeline;
    Report& mReport;
    const Sink mSink;
    Attribution mAttribution;
    std::map<std::int32_t, Sensor> mSensors;
    std::map<std::size_t, std::set<std::int32_t>> mSensorsOfLane;
    std::map<std::size_t, std::int32_t> mLastOfLane;  // whose frame was asked for last
    std::deque<std::uint32_t> mFrameNumbers;          // of the last hand-overs of all sensors
    std::uint64_t mNewestNs = 0;                      // time stamp of the last hand-over of all sensors
    std::size_t mLeftOut = 0;                         // frames since some were last counted as missing
    std::size_t mUnreadable = 0;                      // messages
    Settings mSettings;
    std::optional<std::int32_t> mMode;
    bool mHeadWritten = false;
    std::string mBody;
    std::size_t mLine = 0;  // of the capture, of the call being written
};

}  // namespace replay::import
