#include "tools/import/SensorEvidence.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "customer/aaa/aaa/lsc/OisSpan.h"

namespace replay::import {
namespace {

using std::to_string;

// Hand-overs after which what is missing has left the device's buffer.
constexpr std::size_t kBuffered = lsc::kMaxBufferedFrames;
constexpr std::size_t kGivenKept = 128;     // hand-overs
constexpr double kLongStep = 1.75;          // sample periods: longer, and a sample is missing between
constexpr std::int64_t kMostSkipped = 200;  // frame numbers; beyond, the numbering began anew

std::string samplesWord(std::uint64_t count) {
    return to_string(count) + (count == 1 ? " sample" : " samples");
}

}  // namespace

void SensorEvidence::start(bool known) {
    *this = SensorEvidence();
    mDoubtful = known ? 0 : kBuffered;
    mNewestSure = known;
}

void SensorEvidence::lost() {
    mDoubtful = kBuffered;
    mShort.reset();
    mNewestSure = false;
}

void SensorEvidence::filled() {
    ++mFilled;
    lost();
}

// ---- Hand-overs

bool SensorEvidence::isContinuous(const HandOver& batch, std::optional<std::int64_t> newestUs) const {
    if (!newestUs || mPeriodNs <= 0) return false;
    std::optional<std::int64_t> first;
    if (!batch.samples.empty()) {
        first = batch.firstNs();
    } else if (batch.updated) {
        first = static_cast<std::int64_t>(batch.updated->first);  // printed as an unsigned number
    }
    if (!first) return false;
    const double newestNs = static_cast<double>(*newestUs) * lsc::kNsPerUs;
    return static_cast<double>(*first) - newestNs < kLongStep * mPeriodNs;
}

std::int64_t SensorEvidence::skippedBefore(const HandOver& batch) const {
    if (!mFrame || !batch.frame()) return 0;
    return static_cast<std::int32_t>(*batch.frame() - nextLogged());  // numbers wrap at 32 bits
}

SensorEvidence::Gap SensorEvidence::gapOf(std::int64_t skipped, bool continuous, bool elsewhere) const {
    const bool forward = skipped > 0 && skipped <= kMostSkipped;
    // Numbers that sensors share may skip, but then they always do.
    const bool usual = elsewhere && (mSteps == 0 || mLastSkip == skipped);
    if (continuous && (usual || !forward || mFilled != 0)) return {};
    Gap gap;
    gap.samples = !continuous;
    // Which of the numbers were those of hand-overs without samples, nothing tells.
    const std::uint32_t first = nextLogged() - static_cast<std::uint32_t>(mEmpty);
    const std::int64_t all = skipped + static_cast<std::int64_t>(mEmpty);
    const std::string from = to_string(first);
    if (!forward) {
        const std::string next = to_string(nextLogged() + static_cast<std::uint32_t>(skipped));
        const bool ahead = all >= 0 && all <= kMostSkipped;  // fewer hand-overs than there were without samples
        gap.doubt = ahead ? "samples before frame " + next + " are missing"
                          : "frame " + to_string(first - 1) + " is followed by frame " + next +
                                ", and samples are missing; import joined recordings one by one";
    } else if (continuous) {
        gap.doubt =
            "the frame numbers skip " + to_string(all) + " from " + from + " on: hand-overs without samples, or none";
    } else {
        gap.lost = static_cast<std::size_t>(std::max<std::int64_t>(skipped - mFilled, 0));  // not negative
        const std::string frames = from + " to " + to_string(first + static_cast<std::uint32_t>(all) - 1);
        gap.doubt = all == 1 ? "the hand-over of frame " + from
                             : (mEmpty != 0 ? to_string(skipped) + " of " : "") + "the hand-overs of frames " + frames;
        gap.doubt += skipped == 1 ? " is missing" : " are missing";
    }
    return gap;
}

void SensorEvidence::follow(const HandOver& batch) {
    if (mFrame) {
        ++mSteps;
        mLastSkip = skippedBefore(batch);
    }
    if (const auto frame = batch.frame()) {
        mFrame = frame;
    } else {
        mFrame = nextFrame();
    }
    mEmpty = 0;
    mFilled = 0;
    if (mDoubtful > 0) --mDoubtful;
    if (batch.samples.size() > 1) {
        const auto length =
            static_cast<double>(batch.samples.back().timestamp) - static_cast<double>(batch.samples.front().timestamp);
        mPeriodNs = length / static_cast<double>(batch.samples.size() - 1);
    }
    if (!batch.updated) return;
    double place = 0;
    if (!mGiven.empty()) {
        // A number that is skipped was lost, or had no samples.
        const std::uint32_t step = batch.updated->frame - mGiven.back().frame;  // numbers wrap at 32 bits
        place = mGiven.back().place + (step <= kMostSkipped ? step : 1);
    }
    mGiven.push_back({batch.updated->timestamp, batch.updated->frame, place});
    if (mGiven.size() > kGivenKept) mGiven.pop_front();
}

SensorEvidence::Doubts SensorEvidence::filed(const HandOver& batch, const SampleBuffer::Filing& filing, bool whole) {
    Doubts doubts;
    if (batch.emptyType) {
        ++mEmpty;
        return doubts;
    }
    using Fate = lsc::SampleQueue::Fate;
    const bool overlaps = filing.fate == Fate::kSplit;
    const bool stale = filing.fate == Fate::kDiscarded;
    const bool sure = mNewestSure && whole;
    if (!batch.updated) doubts.emplace_back("the message that ends its hand-over is missing");
    if (!batch.filed && sure && !stale && filing.newer != 0) {
        doubts.emplace_back("a message of its hand-over is missing");
    }
    if (sure && overlaps != batch.divided.has_value()) {
        doubts.emplace_back(overlaps ? "the message that divides its batch is missing"
                                     : "its batch was divided: samples before it are missing");
    }
    if (sure && overlaps && batch.divided &&
        (batch.divided->older != filing.older || batch.divided->newer != filing.newer)) {
        doubts.emplace_back("its batch was divided otherwise: samples of it or before it are missing");
    }
    if (sure && batch.updated && doubts.empty() &&
        (batch.updated->count != filing.newer ||
         (filing.newer != 0 && static_cast<std::int64_t>(batch.updated->last) != filing.last))) {
        doubts.emplace_back("its samples are not those that its last message counts");
    }
    if (mDoubtful == 0 && batch.updated && batch.updated->queue != filing.queue && doubts.empty()) {
        doubts.emplace_back("the buffer held " + to_string(batch.updated->queue) + " frames, not " +
                            to_string(filing.queue) + ": hand-overs before it are missing");
    }
    follow(batch);
    // A batch that follows the one before stands alone.
    mNewestSure = doubts.empty() && whole && (sure || (!batch.divided && batch.filed));
    return doubts;
}

// ---- Frames

SensorEvidence::Doubts SensorEvidence::queried(const Query& query, std::size_t total) {
    Doubts doubts;
    const bool untimed = query.answered && query.answered->timestamp == 0;
    const bool silent = !query.total && !query.matched && !query.answered && !query.ended;
    const bool whole =
        (query.total || untimed) && (query.matched || query.nothing || untimed) && query.answered && query.ended;
    if (!silent && !whole) doubts.emplace_back("a message of its query for samples is missing");
    if (!query.total) return doubts;
    const auto more = static_cast<std::int64_t>(*query.total) - static_cast<std::int64_t>(total);
    if (more == 0) {
        mDoubtful = 0;
        mShort.reset();
        return doubts;
    }
    const bool known = mDoubtful > 0 && (!mShort || more <= *mShort);
    if (!known) {
        doubts.push_back(more > 0 ? "the device's buffer held " + samplesWord(static_cast<std::uint64_t>(more)) +
                                        " more: hand-overs are missing or cannot be told apart"
                                  : "the device's buffer held " + samplesWord(static_cast<std::uint64_t>(-more)) +
                                        " less: the messages do not fit together");
        mDoubtful = kBuffered;
    }
    mShort = more;
    return doubts;
}

std::optional<std::uint32_t> SensorEvidence::frameAt(std::uint64_t timestamp) const {
    const auto found = std::ranges::find(mGiven, timestamp, &Given::timestamp);
    return found != mGiven.end() ? std::optional(found->frame) : std::nullopt;
}

// Between two hand-overs, and past the last one, frames come at an even pace.
std::optional<double> SensorEvidence::placeOf(std::uint64_t time) const {
    if (mGiven.empty() || time < mGiven.front().timestamp) return std::nullopt;
    if (time == mGiven.front().timestamp) return mGiven.front().place;
    auto next = std::ranges::find_if(mGiven, [time](const Given& given) { return given.timestamp > time; });
    if (next == mGiven.end()) --next;
    if (next == mGiven.begin()) return std::nullopt;
    const Given& last = *std::prev(next);
    if (next->timestamp <= last.timestamp) return last.place;
    const double pace = (next->place - last.place) / static_cast<double>(next->timestamp - last.timestamp);
    const double place = last.place + pace * static_cast<double>(time - last.timestamp);
    // Farther ahead, the time is none of this sensor's.
    return place <= mGiven.back().place + kMostSkipped ? std::optional(place) : std::nullopt;
}

std::size_t SensorEvidence::asked(std::uint64_t sof) {
    const std::optional<double> place = placeOf(sof);
    if (!place || (mAsked && *place <= *mAsked)) return 0;  // perhaps again
    mDelay = std::max(mDelay, mGiven.back().place - *place);
    const std::optional<double> before = std::exchange(mAsked, place);
    if (!before) return 0;
    const std::int64_t step = std::llround(*place - *before);
    const std::int64_t missing = step - mUsualStep;
    if (missing == mUsualStep || (step > 0 && missing < 0)) mUsualStep = step;
    return missing > 0 ? static_cast<std::size_t>(missing) : 0;
}

std::size_t SensorEvidence::unasked() const {
    if (!mAsked) return 0;
    const std::int64_t late = std::llround(mGiven.back().place - *mAsked - mDelay);
    // The next one was about to be.
    return late > mUsualStep ? static_cast<std::size_t>(late) : 0;
}

double SensorEvidence::longestPeriodNs() const {
    double longest = 0;
    for (std::size_t i = 1; i < mGiven.size(); ++i) {
        const double frames = mGiven[i].place - mGiven[i - 1].place;
        const double length = static_cast<double>(mGiven[i].timestamp) - static_cast<double>(mGiven[i - 1].timestamp);
        if (frames > 0) longest = std::max(longest, length / frames);
    }
    return longest;
}

}  // namespace replay::import
