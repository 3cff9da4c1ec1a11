#include "tools/replay/import/CaptureReader.h"

#include <algorithm>
#include <iterator>
#include <variant>

#include "tools/replay/import/BatchAssembler.h"
#include "tools/replay/import/FrameAssembler.h"
#include "tools/replay/import/Messages.h"
#include "tools/replay/import/MonitorAssembler.h"

namespace replay::import {
namespace {

// Gathers the OTP messages of one thread. Only the layout's and the markers' messages name the sensor.
class OtpGatherer {
public:
    explicit OtpGatherer(Capture& capture) : mCapture(capture) {}

    void take(const OtpLayout& layout, std::size_t line) { factsOf(layout.sensor, line).layout = layout; }
    void take(const OtpGolden& golden, std::size_t line) { factsOf(golden.sensor, line).golden = golden; }
    void take(const OtpCalibration& c, std::size_t line) { factsOf(c.sensor, line).calibration = c; }
    void take(const OtpAbsent&, std::size_t line) {
        if (mSensor) factsOf(*mSensor, line).absent = true;
    }

private:
    // The first message about a sensor's OTP memory stands where it was read.
    OtpFacts& factsOf(std::int32_t sensor, std::size_t line) {
        mSensor = sensor;
        const auto [facts, first] = mCapture.otp.try_emplace(sensor);
        if (first) mCapture.add(line, OtpReadCall{sensor});
        return facts->second;
    }

    Capture& mCapture;
    std::optional<std::int32_t> mSensor;
};

template <typename Assembler, typename T>
concept Takes = requires(Assembler a, const T& event) {
    a.take(event, std::size_t{});
};

// The whole number in front of " lines", as chatty ends its messages; 0 when there is none.
std::uint64_t lostLines(std::string_view text) {
    std::size_t end = text.find(" line");
    if (end == std::string_view::npos || end == 0) return 0;
    const std::size_t begin = text.find_last_not_of("0123456789", end - 1) + 1;
    std::string_view digits = text.substr(begin, end - begin);
    std::uint64_t count = 0;
    takeValue(digits, count);
    return count;
}

}  // namespace

struct CaptureReader::Thread {
    Thread(Capture& capture, std::size_t number, bool oneThread)
        : batches(capture, number), frames(capture, number, oneThread), monitors(capture), otp(capture) {}

    template <typename T>
    void take(const T& event, std::size_t line) {
        if constexpr (Takes<BatchAssembler, T>) {
            batches.take(event, line);
        } else if constexpr (Takes<FrameAssembler, T>) {
            frames.take(event, line);
        } else if constexpr (Takes<MonitorAssembler, T>) {
            monitors.take(event, line);
        } else if constexpr (Takes<OtpGatherer, T>) {
            otp.take(event, line);
        }
    }

    BatchAssembler batches;
    FrameAssembler frames;
    MonitorAssembler monitors;
    OtpGatherer otp;
    std::string lastLine;
};

CaptureReader::CaptureReader(std::optional<std::uint32_t> pid) : mPid(pid) {}

CaptureReader::~CaptureReader() = default;

bool CaptureReader::isOurs(const LogLine& line) {
    if (!mPid && isLibraryTag(line.tag)) mPid = line.pid;
    return mPid == line.pid;
}

void CaptureReader::add(std::string_view text) {
    ++mLine;
    if (text.ends_with('\r')) text.remove_suffix(1);
    const std::optional<LogLine> line = parseLogLine(text);
    if (!line || (line->tag != "chatty" && !isLibraryTag(line->tag))) {
        // The library's tag in a line that cannot be read: cut or grown together with another.
        if (!line && text.find("ShadingCustomUtil") != std::string_view::npos) {
            mCapture.addHole(mLine, "a line of the library that cannot be read; left out");
        } else {
            ++mCapture.foreignLines;
        }
        return;
    }
    if (!isOurs(*line)) {
        if (isLibraryTag(line->tag)) ++mCapture.otherProcesses;
        return;
    }
    if (line->tag == "chatty") return addChatty(*line);
    ++mCapture.ownLines;
    Thread& thread = threadOf(*line);
    // No call issues the same message twice on end.
    if (thread.lastLine == text) {
        ++mCapture.doubledLines;
        const Event event = parseMessage(line->text);
        if (const auto* const mode = std::get_if<ExposureMode>(&event)) thread.frames.takeAgain(*mode, mLine);
        return;
    }
    thread.lastLine = text;
    addMessage(*line);
}

void CaptureReader::addChatty(const LogLine& line) {
    std::string text = std::to_string(lostLines(line.text));
    text.append(" lines of the process were dropped by the log (chatty)");
    mCapture.addHole(mLine, std::move(text));
}

CaptureReader::Thread& CaptureReader::threadOf(const LogLine& line) {
    std::unique_ptr<Thread>& thread = mThreads[line.tid.value_or(line.pid)];
    if (!thread) thread = std::make_unique<Thread>(mCapture, mThreads.size(), line.tid.has_value());
    return *thread;
}

void CaptureReader::addMessage(const LogLine& line) {
    Thread& thread = threadOf(line);
    const auto file = [&](const auto& call) { mCapture.add(mLine, call); };
    std::visit(
        [&](const auto& event) {
            using T = std::decay_t<decltype(event)>;
            if constexpr (std::is_same_v<T, Unreadable>) {
                mCapture.addHole(mLine, "a message of the library that is cut or changed; left out");
            } else if constexpr (std::is_same_v<T, RollingShutter> || std::is_same_v<T, OtpTableQueried>) {
                file(event);
            } else if constexpr (std::is_same_v<T, IndexForced>) {
                mCapture.forcedIndex = event.index;
                file(event);
            } else {
                thread.take(event, mLine);
            }
        },
        parseMessage(line.text));
}

Capture CaptureReader::finish() {
    for (const auto& [id, thread] : mThreads) {
        thread->batches.finish();
        thread->frames.finish();
        thread->monitors.finish();
    }
    mThreads.clear();
    mCapture.newestSamples.clear();  // sorting moves the calls away
    std::ranges::stable_sort(mCapture.calls, {}, &Call::line);
    return std::move(mCapture);
}

}  // namespace replay::import
