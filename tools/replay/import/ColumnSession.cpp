#include "tools/replay/import/ColumnSession.h"

#include <algorithm>
#include <limits>
#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tools/replay/Errors.h"
#include "tools/replay/JsonText.h"
#include "tools/replay/import/SensorGuess.h"
#include "tools/replay/import/SensorLine.h"
#include "tools/replay/import/SessionText.h"

namespace replay::import {
namespace {

using std::to_string;

constexpr std::int32_t kSensor = 0;
constexpr std::uint32_t kMode = 0;

struct Frame {
    std::uint32_t number = 0;
    std::uint64_t startNs = 0;
    std::uint64_t exposureNs = 0;
    std::uint32_t readoutNs = 0;
    std::string samples;  // rows of the session
};

template <typename Row>
void readRows(std::istream& input, ColumnLog& log, Row row) {
    for (std::string line; std::getline(input, line);)
        if (log.take(line)) row();
    if (input.bad()) throw StreamError(log.file() + ": cannot be read");
}

std::uint32_t readoutOf(const ColumnLog& log, const ColumnOptions& options) {
    if (!log.has("readout")) return *options.readoutNs;
    const std::uint64_t ns = log.time("readout");
    if (ns > std::numeric_limits<std::uint32_t>::max()) {
        throw SessionError(log.file(), log.line(), "readout: longer than 4 s; check the columns and the unit");
    }
    return static_cast<std::uint32_t>(ns);  // just tested
}

std::vector<Frame> readFrames(std::istream& input, const ColumnOptions& options) {
    ColumnLog log(options.framesFile, "--frame-columns", options.frameColumns, options.frameUnit, {"time", "exposure"},
                  {"readout", "frame"});
    if (!log.has("readout") && !options.readoutNs) {
        throw std::invalid_argument("--frame-columns: without the column \"readout\", --readout must give the time");
    }
    std::vector<Frame> frames;
    readRows(input, log, [&] {
        Frame frame;
        // Frames count from 1: 0 asks the library for no frame.
        frame.number = log.has("frame") ? log.whole("frame") : static_cast<std::uint32_t>(frames.size() + 1);
        frame.startNs = log.time("time");
        frame.exposureNs = log.time("exposure");
        frame.readoutNs = readoutOf(log, options);
        frames.push_back(std::move(frame));
    });
    if (frames.empty()) throw SessionError(options.framesFile, log.line(), "no frame in the file");
    return frames;
}

// Finds the frame that a sample is handed over with.
class Assignment {
public:
    Assignment(std::vector<Frame>& frames, bool byNumber) : mByNumber(byNumber) {
        for (Frame& frame : frames) {
            mNumbers.emplace(frame.number, &frame);
            mEnds.emplace(frame.startNs + frame.readoutNs, &frame);
        }
    }

    // Null when there is none.
    Frame* frameOf(const ColumnLog& log) const {
        if (mByNumber) {
            const auto found = mNumbers.find(log.whole("frame"));
            return found != mNumbers.end() ? found->second : nullptr;
        }
        const auto found = mEnds.lower_bound(log.time("time"));
        return found != mEnds.end() ? found->second : nullptr;
    }

private:
    const bool mByNumber;
    std::map<std::uint32_t, Frame*> mNumbers;
    std::map<std::uint64_t, Frame*> mEnds;
};

std::string sampleRow(const ColumnLog& log) {
    std::string row = "[";
    row += to_string(log.time("time"));
    const bool hasHall = log.has("hall_x") && log.has("hall_y");
    for (const std::string_view column : {hasHall ? "hall_x" : "x", hasHall ? "hall_y" : "y", "x", "y"}) {
        row += ',';
        appendNumber(row, log.number(column));
    }
    return row + "]";
}

void readSamples(std::istream& input, const ColumnOptions& options, std::vector<Frame>& frames,
                 ColumnSession& session) {
    ColumnLog log(options.oisFile, "--ois-columns", options.oisColumns, options.oisUnit, {"x", "y", "time"},
                  {"frame", "hall_x", "hall_y"});
    const Assignment assignment(frames, log.has("frame"));
    readRows(input, log, [&] {
        const std::string row = sampleRow(log);
        ++session.samples;
        Frame* const frame = assignment.frameOf(log);
        if (frame == nullptr) {
            ++session.unused;
            return;
        }
        frame->samples += (frame->samples.empty() ? "" : ",") + row;
    });
    if (session.samples == 0) throw SessionError(options.oisFile, log.line(), "no lens position in the file");
}

class Writer {
public:
    explicit Writer(const std::vector<Frame>& frames) : mFrames(frames) {}

    std::string write(std::size_t delay, const std::string& head) {
        mText = head;
        line("{\"platform\":\"log\",\"mode\":1,\"details_level\":5,\"details_mask\":\"0x821000\"}");
        writeSensor(mFrames.front().readoutNs);
        line(callLine("RegisterAndStartSensorMonitor", kSensor, {{"type", to_string(kAssumedType)}}));
        line(callLine("StoreRollingShutter", kSensor, {{"mode", to_string(kMode)}}));
        for (std::size_t i = 0; i < mFrames.size(); ++i) {
            handOver(mFrames[i]);
            if (i >= delay) ask(mFrames[i - delay]);
        }
        for (std::size_t i = mFrames.size() - std::min(delay, mFrames.size()); i < mFrames.size(); ++i)
            ask(mFrames[i]);
        line(callLine("UnRegisterSensorMonitor", kSensor, {}));
        return std::move(mText);
    }

private:
    void line(const std::string& text) { mText.append(text).append("\n"); }

    void writeSensor(std::uint32_t readoutNs) {
        mReadoutNs = readoutNs;
        line(sensorLine(kSensor, {}, true, {{kMode, readoutNs}}));
    }

    void handOver(const Frame& frame) {
        if (frame.samples.empty()) return;
        line("{\"samples\":" + to_string(kAssumedType) + ",\"data\":[" + frame.samples + "]}");
        line(callLine("UpdateSensorData", kSensor,
                      {{"frame", to_string(frame.number)}, {"timestamp", to_string(frame.startNs)}}));
    }

    void ask(const Frame& frame) {
        if (frame.readoutNs != mReadoutNs) {
            writeSensor(frame.readoutNs);
            line(callLine("StoreRollingShutter", kSensor, {{"mode", to_string(kMode)}}));
        }
        Timing timing;
        timing.sof = frame.startNs;
        timing.exposure = frame.exposureNs;
        line(frameMetadata("frame", false, timing, true, true));
        line(callLine("fillLscOISCompInfo", kSensor, {{"metadata", "\"frame\""}}));
    }

    const std::vector<Frame>& mFrames;
    std::string mText;
    std::uint32_t mReadoutNs = 0;  // as the platform answers
};

}  // namespace

ColumnSession importColumns(std::istream& ois, std::istream& frames, const ColumnOptions& options) {
    std::vector<Frame> all = readFrames(frames, options);
    ColumnSession session;
    readSamples(ois, options, all, session);
    session.frames = all.size();
    std::string head =
        "# Made from " + inComment(options.oisFile) + " (" + to_string(session.samples) + " lens positions";
    if (session.unused != 0) head += ", " + to_string(session.unused) + " of them of frames that are not there";
    head += ") and " + inComment(options.framesFile) + " (" + to_string(session.frames) + " frames).\n";
    head += "# The sensor's OTP memory is made up. Each frame is asked for " + to_string(options.delay) +
            " frames later.\n";
    session.text = Writer(all).write(options.delay, head);
    return session;
}

}  // namespace replay::import
