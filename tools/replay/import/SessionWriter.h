// Writes what a capture tells as a session: comments that say what is missing or assumed, the platform's answers, and
// the calls in order, each frame with what the device made of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tools/replay/import/Capture.h"
#include "tools/replay/import/SensorLine.h"

namespace replay::import {

class SessionWriter {
public:
    // `name` is the capture's, for the comments. Gives every call of the capture a sensor.
    SessionWriter(Capture capture, std::string name);

    // The session's text. Once only.
    std::string write();
    // Of the last write(): where the capture has holes, in words, in its order.
    const std::vector<std::string>& holes() const { return mHoleTexts; }

private:
    struct Sensor {
        bool registered = false;
        bool served = false;     // its last frame was
        bool hasFrames = false;  // the library computed for it, or was ready to
        std::int32_t type = 0;
        std::uint32_t shutter = 0;  // ns, of the monitor
        ShutterTimes times;         // as the session's platform answers
    };

    void gatherSensors();
    void noteFrames();

    void write(const UpdateCall& call);
    void write(const FrameCall& call);
    void write(const RegisterCall& call);
    void write(const UnregisterCall& call);
    void write(const RollingShutter& call);
    void write(const OtpReadCall& call);
    void write(const OtpTableQueried& call);
    void write(const IndexForced& call);

    void writeTimed(const FrameCall& call);
    void writeUntimed(const FrameCall& call);
    void expect(const FrameCall& call, const ExposureCall& exposure);
    void expectAll(const FrameCall& call, bool notTried);
    void needMonitor(std::int32_t id);
    void needShutter(std::int32_t id, const ExposureCall& exposure);
    void writeSensor(std::int32_t id);

    void line(std::string_view text) { mBody.append(text).append("\n"); }
    void hole(std::string text);
    std::string labelOf(const FrameCall& call) const;
    std::string head();

    Capture mCapture;
    const std::string mName;
    std::vector<std::string> mAssumptions;
    std::map<std::int32_t, Sensor> mSensors;
    std::map<std::uint64_t, std::uint32_t> mFrames;  // frame number by the time stamp of its UpdateSensorData call
    std::string mBody;
    std::size_t mLine = 0;  // of the capture, of the call being written
    std::vector<std::string> mHoleTexts;
};

}  // namespace replay::import
