// Puts the messages of one thread about sample batches together to UpdateSensorData calls. One batch is open at most:
// from its first sample's message to the message that ends it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

#include "tools/replay/import/Capture.h"

namespace replay::import {

// A batch whose last message has not come yet.
struct OpenBatch {
    UpdateCall call;
    std::size_t line = 0;  // the last one of the batch
    std::size_t nextIndex = 0;
    std::size_t missing = 0;  // samples that the indexes skip
    bool divided = false;
    std::int64_t newest = std::numeric_limits<std::int64_t>::min();  // ns
    std::size_t newestHash = 0;
};

class BatchAssembler {
public:
    // `capture` must outlive the assembler.
    BatchAssembler(Capture& capture, std::size_t thread) : mCapture(capture), mThread(thread) {}

    void take(const SampleReceived& sample, std::size_t line);
    void take(const BatchDivided& divided, std::size_t line);
    void take(const BatchFiled& filed, std::size_t line);
    void take(const BatchUpdated& updated, std::size_t line);
    void take(const BatchEmpty& empty, std::size_t line);
    // No more lines come.
    void finish();

private:
    OpenBatch& open(std::size_t line);
    void close();
    void closeUnlessFrame(std::uint32_t frame);
    std::uint32_t nextFrame() const { return mFrame ? *mFrame + 1 : 0; }

    Capture& mCapture;
    const std::size_t mThread;
    std::optional<OpenBatch> mOpen;
    std::optional<std::uint32_t> mFrame;                              // of the batch before
    std::int64_t mNewest = std::numeric_limits<std::int64_t>::min();  // of the batches before
};

// Identifies a sample by what both a batch's and a calculation's messages print.
std::size_t sampleHash(std::int64_t timeUs, const Decimal& x, const Decimal& y);

}  // namespace replay::import
