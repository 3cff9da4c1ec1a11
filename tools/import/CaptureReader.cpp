#include "tools/import/CaptureReader.h"

#include <algorithm>
#include <type_traits>
#include <variant>

#include "tools/import/FrameAssembler.h"
#include "tools/import/HandOverAssembler.h"
#include "tools/import/Messages.h"
#include "tools/import/MonitorAssembler.h"

namespace replay::import {
namespace {

constexpr std::string_view kUnit = "ShadingCustomUtil";

template <typename Assembler, typename T>
concept Takes = requires(Assembler a, const T& event) {
    a.take(event, std::size_t{});
};
template <typename Assembler, typename T>
concept TakesAgain = requires(Assembler a, const T& event) {
    a.takeAgain(event, std::size_t{});
};

template <typename... Ts>
bool isOneOf(const Event& event) {
    return (std::holds_alternative<Ts>(event) || ...);
}

// The only message of its call: two of them are two calls.
bool isCall(const Event& event) {
    return isOneOf<BatchEmpty, RollingShutter, OtpTableQueried, IndexForced, Refused>(event);
}

// The whole number in front of " lines", as chatty ends its messages; 0 when there is none.
std::uint64_t lostLines(std::string_view text) {
    const std::size_t end = text.find(" line");
    if (end == std::string_view::npos || end == 0) return 0;
    const std::size_t begin = text.find_last_not_of("0123456789", end - 1) + 1;
    std::string_view digits = text.substr(begin, end - begin);
    std::uint64_t count = 0;
    takeValue(digits, count);
    return count;
}

}  // namespace

struct CaptureReader::Lane {
    Lane(Timeline& timeline, std::size_t number, bool oneThread)
        : handOvers(timeline, number), frames(timeline, number, oneThread), monitors(timeline), otp(timeline) {}

    template <typename T>
    void take(const T& event, std::size_t line) {
        if constexpr (Takes<FrameAssembler, T>) {
            frames.take(event, line);
        } else if constexpr (Takes<HandOverAssembler, T>) {
            handOvers.take(event, line);
        } else if constexpr (Takes<QueryAssembler, T>) {
            frames.queries().take(event, line);
        } else if constexpr (Takes<MonitorAssembler, T>) {
            monitors.take(event, line);
        } else if constexpr (Takes<OtpAssembler, T>) {
            otp.take(event, line);
        }
    }
    void takeAgain(const Event& event, std::size_t line) {
        std::visit(
            [&](const auto& its) {
                if constexpr (TakesAgain<FrameAssembler, std::decay_t<decltype(its)>>) frames.takeAgain(its, line);
            },
            event);
    }
    void letGo() {
        handOvers.letGo();
        frames.letGo();
        monitors.letGo();
        otp.letGo();
    }

    HandOverAssembler handOvers;
    FrameAssembler frames;
    MonitorAssembler monitors;
    OtpAssembler otp;
    std::string lastText;
    std::string lastTime;
};

CaptureReader::CaptureReader(Timeline& timeline, std::optional<std::uint32_t> pid) : mTimeline(timeline) {
    mFacts.pid = pid;
}

CaptureReader::~CaptureReader() = default;

bool CaptureReader::isOurs(const LogLine& line) {
    if (!line.pid) return true;
    if (!mFacts.pid && isLibraryTag(line.tag)) mFacts.pid = line.pid;
    return mFacts.pid == line.pid;
}

void CaptureReader::add(std::string_view text) {
    ++mFacts.lines;
    const std::optional<LogLine> line = mParser.parse(text);
    const bool library = line && isLibraryTag(line->tag);
    if (!library && (!line || line->tag != "chatty")) return addForeign(text, line);
    if (!isOurs(*line)) {
        if (library) ++mFacts.otherProcesses[*line->pid];
        return;
    }
    if (!library) return addChatty(*line);
    ++mFacts.ownLines;
    if (isRepeated(*line)) return;
    addMessage(*line);
    if (mTimeline.isFull()) letGo();
}

void CaptureReader::addForeign(std::string_view text, const std::optional<LogLine>& record) {
    if (record) return;
    if (text.starts_with("[pushValue] ") || text.starts_with("[CalcOISValue] ")) ++mFacts.bareLines;
    // The library's tag in a line that cannot be read: cut or grown together with another.
    if (text.find(kUnit) == std::string_view::npos || mParser.isInLong()) return;
    mTimeline.doubt(mFacts.lines, "a line of the library that cannot be read; left out");
}

void CaptureReader::addChatty(const LogLine& line) {
    const std::uint64_t count = lostLines(line.text);
    if (line.text.find(" identical ") != std::string_view::npos) {
        if (!isRepeated(line)) repeatLast(laneOf(line), count);
        return;
    }
    mTimeline.doubt(mFacts.lines, std::to_string(count) + " lines " +
                                      (line.pid ? "of the process" : "of a process that this form does not name") +
                                      " were dropped by the log (chatty)");
}

void CaptureReader::repeatLast(Lane& lane, std::uint64_t times) {
    constexpr std::uint64_t kMost = 500;  // more than a log holds of one second
    const Event event = parseMessage(lane.lastText);
    if (!isCall(event)) return;
    if (times > kMost) {
        return mTimeline.doubt(mFacts.lines,
                               "a call that the log repeats " + std::to_string(times) + " times (chatty); left out");
    }
    for (std::uint64_t i = 0; i < times; ++i)
        addEvent(event, lane);
}

bool CaptureReader::isRepeated(const LogLine& line) {
    using Verdict = RepeatFilter::Verdict;
    const std::string before = mRepeats.clock();
    const Verdict verdict = mRepeats.check(line);
    if (verdict != Verdict::kLate) tellLate();
    switch (verdict) {
        case Verdict::kRepeated:
            if (mFacts.repeatedLines++ == 0) {
                mTimeline.doubt(mFacts.lines, "lines from here on were there before: the recording was interrupted");
            }
            return true;
        case Verdict::kLate:
            if (mLate++ == 0) mFirstLate = mFacts.lines;
            return true;
        case Verdict::kBack:
            mTimeline.doubt(
                mFacts.lines,
                "the log's clock runs back, from " + before + " to " + std::string(line.time) +
                    ": parts of several logs, or in another order; import each log alone, its parts in order");
            return false;
        default:
            return false;
    }
}

void CaptureReader::tellLate() {
    if (mLate == 0) return;
    mTimeline.doubt(mFirstLate, std::to_string(mLate) + (mLate == 1 ? " line" : " lines") +
                                    " among repeated ones, not there before; left out");
    mLate = 0;
}

CaptureReader::Lane& CaptureReader::laneOf(const LogLine& line) {
    const std::uint32_t id = line.tid.value_or(line.pid.value_or(0));
    if (mLastLane != nullptr && mLastId == id) return *mLastLane;
    std::unique_ptr<Lane>& lane = mLanes[id];
    if (!lane) lane = std::make_unique<Lane>(mTimeline, mLanes.size(), line.tid.has_value());
    mLastLane = lane.get();
    mLastId = id;
    return *lane;
}

void CaptureReader::addMessage(const LogLine& line) {
    Lane& lane = laneOf(line);
    mFacts.sawThreads = mFacts.sawThreads || line.tid.has_value();
    const Event event = parseMessage(line.text);
    // No call issues the same message twice in a row.
    if (lane.lastText == line.text && lane.lastTime == line.time && (mDoubles || !isCall(event))) {
        return addDoubled(event, lane);
    }
    lane.lastText = line.text;
    lane.lastTime = line.time;
    if (const auto* const batch = std::get_if<BatchUpdated>(&event); batch && line.time.empty()) watchTimes(*batch);
    listen(event, line.time);
    addEvent(event, lane);
}

void CaptureReader::addEvent(const Event& event, Lane& lane) {
    std::visit(
        [&](const auto& its) {
            using T = std::decay_t<decltype(its)>;
            if constexpr (std::is_same_v<T, SampleReceived>) mFacts.sawSamples = true;
            if constexpr (std::is_same_v<T, SampleUsed>) mFacts.sawListings = true;
            if constexpr (std::is_same_v<T, BatchUpdated>) mFacts.sawHandOvers = true;
            if constexpr (std::is_same_v<T, Timing>) mFacts.sawFrames = true;
            if constexpr (std::is_same_v<T, Refused>) {
                if (mFacts.refused++ == 0) mFacts.refusedSensor = its.sensor;
            }
            if constexpr (std::is_same_v<T, Unreadable>) {
                mTimeline.doubt(mFacts.lines, std::string(kUnreadableMessage));
            } else if constexpr (std::is_same_v<T, RollingShutter> || std::is_same_v<T, OtpTableQueried> ||
                                 std::is_same_v<T, IndexForced>) {
                mTimeline.add(mFacts.lines, its);
            } else {
                lane.take(its, mFacts.lines);
            }
        },
        event);
}

void CaptureReader::addDoubled(const Event& event, Lane& lane) {
    ++mFacts.doubledLines;
    // Concurrent calls of sensors whose threads are not known never mix these.
    mDoubles = mDoubles || isOneOf<SampleReceived, BatchUpdated, Registered>(event);
    if (std::holds_alternative<BatchEmpty>(event)) {
        mTimeline.doubt(mFacts.lines, "a hand-over without samples, twice like other lines of this log; taken for one");
    }
    lane.takeAgain(event, mFacts.lines);
}

void CaptureReader::watchTimes(const BatchUpdated& batch) {
    constexpr std::uint64_t kBackMs = 250;  // hand-overs of concurrent cameras lie nearer
    constexpr std::uint64_t kNsPerMs = 1000000;
    if (batch.count == 0) return;
    const bool back = batch.last < mNewestNs && (mNewestNs - batch.last) / kNsPerMs > kBackMs;
    if (back) {
        mTimeline.doubt(mFacts.lines, "samples run back by " + std::to_string((mNewestNs - batch.last) / kNsPerMs) +
                                          " ms: the log was printed twice, which then counts twice, or the device "
                                          "restarted; import either part alone, or record with -v threadtime");
    }
    mNewestNs = back ? batch.last : std::max(mNewestNs, batch.last);
}

void CaptureReader::listen(const Event& event, std::string_view clock) {
    if (std::holds_alternative<Registered>(event) || std::holds_alternative<Started>(event) ||
        std::holds_alternative<DeliveryStarted>(event)) {
        return mSilence.start();
    }
    if (std::holds_alternative<BatchUpdated>(event) || std::holds_alternative<Timing>(event)) {
        return mSilence.frame(clock);
    }
    if (!std::holds_alternative<DeliveryEnded>(event) && !std::holds_alternative<Stopped>(event)) return;
    if (const auto found = mSilence.end(clock)) {
        mTimeline.doubt(mFacts.lines, "no hand-over and no frame in the " + std::to_string(found->ms) +
                                          " ms before this monitor ended, where " + std::to_string(found->usualMs) +
                                          " ms was the longest pause before: some may be missing");
    }
}

void CaptureReader::letGo() {
    for (const auto& [id, lane] : mLanes)
        lane->letGo();
}

void CaptureReader::finish() {
    tellLate();
    letGo();
}

}  // namespace replay::import
