// What a sensor's messages repeat, held against what was read.
#include <gmock/gmock.h>

#include "tools/import/Recalculation.h"
#include "tools/import/Repair.h"
#include "tools/import/SensorEvidence.h"
#include "tools/import/Silence.h"

namespace {

using namespace replay::import;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::int64_t kMs = 1000000;  // ns

class Evidence : public testing::Test {
protected:
    Evidence() { evidence.start(true); }

    // A hand-over of ten samples, 1 ms apart, as the device logs it.
    HandOver batchAt(std::uint32_t frame, std::int64_t firstMs) {
        HandOver batch;
        for (std::int64_t i = 0; i < 10; ++i) {
            NSCam::Utils::SensorData sample = {};
            sample.timestamp = (firstMs + i) * kMs;
            batch.samples.push_back(sample);
        }
        const auto first = static_cast<std::uint64_t>(batch.samples.front().timestamp);
        const auto last = static_cast<std::uint64_t>(batch.samples.back().timestamp);
        ++queue;
        batch.filed = BatchFiled{frame, 10, first, last};
        batch.updated = BatchUpdated{frame, first, 10, queue, first, last};
        return batch;
    }
    SensorEvidence::Doubts file(const HandOver& batch) {
        return evidence.filed(batch, buffer.file(batch.frame().value_or(0), batch.samples), batch.skipped == 0);
    }
    SensorEvidence::Gap gapBefore(const HandOver& batch, bool elsewhere = false) {
        return evidence.gapBefore(batch, buffer.newestUs(), [=](std::uint32_t) { return elsewhere; });
    }
    SensorEvidence::Doubts query(std::size_t total) {
        Query query;
        query.total = total;
        query.matched = Matched{};
        query.answered = QueryAnswered{0, 1, 100};
        query.ended = true;
        return evidence.queried(query, buffer.total());
    }

    SensorEvidence evidence;
    SampleBuffer buffer;
    std::size_t queue = 0;
};

TEST_F(Evidence, ThatAgreesIsSilent) {
    EXPECT_THAT(file(batchAt(1, 0)), IsEmpty());
    const HandOver next = batchAt(2, 10);
    EXPECT_EQ(gapBefore(next).doubt, "");
    EXPECT_THAT(file(next), IsEmpty());
    EXPECT_THAT(query(20), IsEmpty());
}

TEST_F(Evidence, TellsAHandOverFromNumbersThatItDoesNotNeed) {
    file(batchAt(1, 0));
    const auto lost = gapBefore(batchAt(4, 30));
    EXPECT_EQ(lost.lost, 2u);
    EXPECT_EQ(lost.doubt, "the hand-overs of frames 2 to 3 are missing");
    // No sample is missing: numbers may skip, of which nothing else tells; or other sensors have them.
    EXPECT_THAT(gapBefore(batchAt(4, 10)).doubt, HasSubstr("skip 2 from 2 on"));
    EXPECT_EQ(gapBefore(batchAt(4, 10), true).doubt, "");
    file(batchAt(2, 10));
    EXPECT_THAT(gapBefore(batchAt(4, 20), true).doubt, HasSubstr("skip 1 from 3 on"));  // they did not before
    // Numbers begin anew.
    EXPECT_EQ(gapBefore(batchAt(0, 20)).doubt, "");
    EXPECT_THAT(gapBefore(batchAt(0, 40)).doubt, HasSubstr("frame 2 is followed by frame 0, and samples are missing"));
    HandOver empty;
    empty.emptyType = 5;
    file(empty);
    EXPECT_EQ(gapBefore(batchAt(4, 40)).doubt, "");
}

TEST_F(Evidence, NamesTheMessageOfAHandOverThatIsMissing) {
    file(batchAt(1, 0));
    HandOver batch = batchAt(2, 10);
    batch.filed.reset();
    EXPECT_THAT(file(batch), ElementsAre("a message of its hand-over is missing"));
    batch = batchAt(3, 20);
    file(batch);
    batch = batchAt(4, 30);
    batch.updated.reset();
    EXPECT_THAT(file(batch), ElementsAre("the message that ends its hand-over is missing"));
}

TEST_F(Evidence, HoldsASplitAgainstTheBatchBefore) {
    file(batchAt(1, 0));
    HandOver batch = batchAt(2, 5);
    EXPECT_THAT(file(batch), ElementsAre("the message that divides its batch is missing"));
    file(batchAt(3, 20));
    batch = batchAt(4, 25);
    batch.divided = BatchDivided{4, 9, 12, 0};
    batch.filed.reset();
    batch.updated->count = 12;
    EXPECT_THAT(file(batch), testing::Contains(HasSubstr("divided otherwise")));
    file(batchAt(5, 50));
    batch = batchAt(6, 60);
    batch.divided = BatchDivided{6, 9, 12, 0};
    EXPECT_THAT(file(batch), testing::Contains(HasSubstr("samples before it are missing")));
}

TEST_F(Evidence, CountsWhatTheBufferHeld) {
    file(batchAt(1, 0));
    EXPECT_THAT(query(27), ElementsAre(HasSubstr("17 samples more")));
    EXPECT_THAT(query(27), IsEmpty());  // said once
    EXPECT_THAT(query(28), ElementsAre(HasSubstr("18 samples more")));
    EXPECT_THAT(query(10), IsEmpty());
    queue += 3;
    EXPECT_THAT(file(batchAt(2, 10)), ElementsAre(HasSubstr("held 5 frames, not 2")));
}

TEST_F(Evidence, OfALogBegunLateSaysNothingUntilTheBufferIsKnown) {
    evidence.start(false);
    queue = 20;
    EXPECT_THAT(file(batchAt(1, 0)), IsEmpty());
    EXPECT_THAT(query(300), IsEmpty());
    EXPECT_FALSE(evidence.isSure());
    EXPECT_THAT(query(10), IsEmpty());
    EXPECT_TRUE(evidence.isSure());
}

TEST_F(Evidence, TellsFramesThatWereNotAskedFor) {
    for (std::uint32_t i = 0; i < 12; ++i)
        file(batchAt(i, 10 * i));
    const auto askedAt = [&](std::uint64_t ms) { return evidence.asked(ms * kMs); };
    EXPECT_EQ(evidence.unasked(), 0U) << "never asked";
    EXPECT_EQ(askedAt(10), 0U);
    EXPECT_EQ(askedAt(20), 0U);
    EXPECT_EQ(askedAt(20), 0U) << "again";
    EXPECT_EQ(askedAt(50), 2U);
    EXPECT_EQ(askedAt(60), 0U);
    EXPECT_EQ(evidence.frameAt(50 * kMs), 5u);
}

TEST_F(Evidence, TellsFramesThatWereNotAskedForUpToTheEnd) {
    // Each hand-over but the first two is followed by the frame two before it.
    const auto run = [&](std::uint32_t from, std::uint32_t to, bool asks) {
        for (std::uint32_t i = from; i < to; ++i) {
            file(batchAt(i, 10 * i));
            const bool asked = asks && i >= 2;
            EXPECT_EQ(asked ? evidence.asked((i - 2) * 10ULL * kMs) : 0U, 0U);
        }
    };
    run(0, 10, true);
    EXPECT_EQ(evidence.unasked(), 0U);
    run(10, 11, false);
    EXPECT_EQ(evidence.unasked(), 0U) << "the call may come";
    run(11, 400, false);
    EXPECT_EQ(evidence.unasked(), 390U);
    EXPECT_EQ(evidence.asked(3970 * kMs), 389U) << "however long ago";
    EXPECT_EQ(evidence.unasked(), 0U);
}

TEST_F(Evidence, CountsFramesBetweenHandOversThatAreMissing) {
    for (const std::uint32_t i : {0U, 1U, 2U, 9U})
        file(batchAt(i, 10 * i));
    evidence.asked(10 * kMs);
    EXPECT_EQ(evidence.asked(70 * kMs), 5U);
    EXPECT_EQ(evidence.asked(80 * kMs), 0U);
}

TEST(Repair, TakesWhatIsListedAndNotThere) {
    const std::vector<Listed> listing{{1000, 1, 1}, {2000, 2, 2}, {3000, 3, 3}, {4000, 4, 4}};
    SampleBuffer buffer;
    NSCam::Utils::SensorData sample = {};
    sample.timestamp = 2 * kMs;
    buffer.file(1, {sample});
    sample.timestamp = 3000999;
    lsc::Samples known{sample};
    addMissing(known, listing, 1000, 4000, buffer);
    ASSERT_EQ(known.size(), 3u);
    EXPECT_EQ(known[1].timestamp, 1 * kMs);
    EXPECT_EQ(known[2].timestamp, 4 * kMs);
    EXPECT_EQ(known[2].status, kRepaired);
    EXPECT_FLOAT_EQ(known[2].oisY, 4);
}

TEST(Recalculation, OfTwoSamplesIsAPositionAndOfOneIsNone) {
    // The samples count for 166 us more than their stamps.
    const auto spanOf = [](std::uint32_t shutterUs) {
        lsc::Samples window(100);
        for (std::size_t i = 0; i < window.size(); ++i) {
            window[i].timestamp = static_cast<std::int64_t>(i) * kMs;
            window[i].oisX = 1;
        }
        const Recalculation made = recalculate({0, 1, 100, 50'170, 0, shutterUs}, 0, window);
        EXPECT_GT(made.steps, 0U);
        EXPECT_EQ(made.position.has_value(), made.span > 1);
        return made.span;
    };
    EXPECT_EQ(spanOf(100), 0U);
    EXPECT_EQ(spanOf(1'000), 2U);
}

TEST(SilenceBeforeAMonitorEnds, IsFoundWhenLongerThanFourUsualPauses) {
    const auto afterPauses = [](const char* end, std::initializer_list<const char*> frames) {
        Silence silence;
        silence.start();
        for (const char* frame : frames)
            silence.frame(frame);
        const auto found = silence.end(end);
        return found ? found->ms : 0;
    };
    EXPECT_EQ(afterPauses("11-24 02:17:00.121", {"11-24 02:16:59.970", "11-24 02:17:00.000"}), 121);
    EXPECT_EQ(afterPauses("11-24 02:17:00.120", {"11-24 02:16:59.970", "11-24 02:17:00.000"}), 0);
    EXPECT_EQ(afterPauses("7261.221999", {"7261.070001", "7261.100002"}), 121) << "seconds alone, microseconds";
    EXPECT_EQ(afterPauses("02:17:09.000", {"02:17:00.000"}), 0) << "one frame tells no usual pause";
    EXPECT_EQ(afterPauses("", {"", "", ""}), 0) << "a form without a clock";
    EXPECT_EQ(afterPauses("00:00:00.000", {"23:59:58.000", "23:59:59.000"}), 0) << "midnight";
}

}  // namespace
