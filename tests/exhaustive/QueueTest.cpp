// Every pair of small batches, and every small queue, against the plain queue.
#include <gmock/gmock.h>

#include <array>
#include <cstdint>
#include <limits>

#include "customer/aaa/aaa/lsc/SampleQueue.h"
#include "tests/exhaustive/Every.h"
#include "tests/support/PlainQueue.h"

namespace {

using lsc::Samples;

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
// Ends of 64 bits, signs, odd and even sums.
constexpr std::int64_t kStamps[] = {kMin, kMin + 1, -3, -2, -1, 0, 1, 2, 5, kMax - 1, kMax};

// The k-th sample at `stamps[k]`, labelled so that two at one time can be told apart.
template <typename Stamps>
Samples samplesAt(const Stamps& stamps, float label = 0) {
    Samples samples(stamps.size());
    for (std::size_t k = 0; k < stamps.size(); ++k) {
        samples[k].timestamp = stamps[k];
        samples[k].oisX = label++;
    }
    return samples;
}

// Every batch of 1 to `longest` of these stamps, in ascending order.
std::vector<std::vector<std::int64_t>> everyAscending(int longest) {
    std::vector<std::vector<std::int64_t>> all;
    for (int count = 1; count <= longest; ++count) {
        std::vector<std::int64_t> stamps(static_cast<std::size_t>(count));
        test::forEveryTuple(
            count, std::size(kStamps),
            [&](int place, std::size_t value) { stamps[static_cast<std::size_t>(place)] = kStamps[value]; },
            [&] {
                if (std::is_sorted(stamps.begin(), stamps.end())) all.push_back(stamps);
            });
    }
    return all;
}

std::string listed(const std::vector<std::int64_t>& older, const std::vector<std::int64_t>& newer) {
    return testing::PrintToString(older) + " then " + testing::PrintToString(newer);
}

// Whether queue and plain queue do the same with the two batches.
bool agree(const std::vector<std::int64_t>& older, const std::vector<std::int64_t>& newer) {
    using Fate = lsc::SampleQueue::Fate;
    lsc::SampleQueue queue(30);
    test::PlainQueue plain;
    if (queue.newestNs()) return false;
    Samples batch = samplesAt(older);
    Samples expected = batch;
    queue.push(1, batch);
    plain.push(1, expected);
    // The newest first, so that the batch is also sorted.
    batch = samplesAt(std::vector<std::int64_t>(newer.rbegin(), newer.rend()), 10);
    expected = batch;
    const auto filing = queue.push(2, batch);
    plain.push(2, expected);
    if (older.front() >= newer.front() && older.back() > newer.front()) {
        if (filing.fate != Fate::kDiscarded) return false;
    } else if (older.back() > newer.front()) {
        const test::Wide sum = test::Wide{older.back()} + newer.front();
        if (filing.fate != Fate::kSplit || filing.splitTime != sum / 2) return false;
    } else if (filing.fate != Fate::kFiled) {
        return false;
    }
    if (!test::same(batch, expected) || queue.frameCount() != plain.frames.size()) return false;
    for (const auto& [frame, samples] : plain.frames) {
        const Samples* const held = queue.byFrame(frame);
        if (held == nullptr || !test::same(*held, samples)) return false;
    }
    return queue.newestNs() == plain.frames.back().second.back().timestamp;
}

TEST(Every, PairOfBatchesIsFiledSplitOrDiscardedAsThePlainQueueDoes) {
    const auto batches = everyAscending(3);
    std::uint64_t cases = 0;
    for (const auto& older : batches) {
        for (const auto& newer : batches) {
            ASSERT_TRUE(agree(older, newer)) << listed(older, newer);
            ++cases;
        }
    }
    RecordProperty("cases", std::to_string(cases));
}

// Every way to cut the samples into at most four frames: a bit for each gap.
template <typename Visit>
void forEveryCut(const Samples& all, const Visit& visit) {
    for (unsigned int cuts = 0; cuts < 1U << (all.size() - 1); ++cuts) {
        if (__builtin_popcount(cuts) > 3) continue;
        lsc::FrameQueue queue(1);
        for (std::size_t k = 0; k < all.size(); ++k) {
            queue.back().samples.push_back(all[k]);
            if ((cuts >> k & 1U) != 0) queue.emplace_back();
        }
        visit(queue);
    }
}

TEST(Every, SmallQueueGivesTheFirstSampleNotBeforeATime) {
    std::uint64_t cases = 0;
    for (const auto& stamps : everyAscending(test::kFew)) {
        const Samples all = samplesAt(stamps);
        forEveryCut(all, [&](const lsc::FrameQueue& queue) {
            for (const std::int64_t stamp : kStamps) {
                const auto time = static_cast<std::uint64_t>(stamp);
                const std::size_t expected = test::plainMatch(all, time);
                const auto match = lsc::firstNotBefore(queue, time);
                ASSERT_EQ(match ? lsc::offsetOf(queue, *match) : all.size(), expected)
                    << testing::PrintToString(stamps) << time;
                ASSERT_TRUE(!match || match->timestamp() == all[expected].timestamp);
                ++cases;
            }
        });
    }
    RecordProperty("cases", std::to_string(cases));
}

// Frames of sizes around the window's halves and its whole.
constexpr std::size_t kSizes[] = {1, 49, 50, 51, 99, 100};

void checkWindows(const std::vector<std::size_t>& sizes, std::uint64_t& cases) {
    lsc::FrameQueue queue;
    Samples all;
    for (const std::size_t size : sizes) {
        queue.push_back({0, Samples(size)});
        for (auto& sample : queue.back().samples) {
            sample.timestamp = static_cast<std::int64_t>(2 * all.size());
            all.push_back(sample);
        }
    }
    for (std::uint64_t time = 0; time <= 2 * all.size(); ++time) {
        const auto match = lsc::firstNotBefore(queue, time);
        const bool enough = match && all.size() >= lsc::kWindowSize;
        const Samples window = enough ? lsc::copyWindow(queue, *match) : Samples();
        ASSERT_TRUE(test::same(window, test::plainWindow(all, time)))
            << testing::PrintToString(sizes) << " at " << time;
        ++cases;
    }
}

TEST(Every, QueueOfFourFramesGivesTheHundredSamplesAroundATime) {
    std::uint64_t cases = 0;
    for (int count = 1; count < test::kFew; ++count) {
        std::vector<std::size_t> sizes(static_cast<std::size_t>(count));
        test::forEveryTuple(
            count, std::size(kSizes),
            [&](int place, std::size_t value) { sizes[static_cast<std::size_t>(place)] = kSizes[value]; },
            [&] {
                if (!HasFatalFailure()) checkWindows(sizes, cases);
            });
    }
    RecordProperty("cases", std::to_string(cases));
}

}  // namespace
