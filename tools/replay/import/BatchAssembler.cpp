#include "tools/replay/import/BatchAssembler.h"

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace replay::import {
namespace {

constexpr std::int64_t kNsPerUs = 1000;

// Time stamps were printed as unsigned numbers.
std::int64_t timeOf(std::uint64_t printed) {
    return static_cast<std::int64_t>(printed);
}

// The number as JSON, without zeros that say nothing.
void appendDecimal(std::string& out, std::string_view text) {
    if (text.ends_with("nan")) text = "nan";
    if (!text.ends_with('n') && !text.ends_with('f')) {
        const std::size_t last = text.find_last_not_of('0');
        out += text.substr(0, text[last] == '.' ? last + 2 : last + 1);
    } else {
        out.append("\"").append(text).append("\"");
    }
}

void appendRow(std::string& out, const SampleReceived& sample) {
    if (!out.empty()) out += ',';
    out.append("[").append(std::to_string(timeOf(sample.timestamp)));
    for (const Decimal& value : {sample.hallX, sample.hallY, sample.oisX, sample.oisY}) {
        out += ',';
        appendDecimal(out, value.text);
    }
    out += ']';
}

}  // namespace

std::size_t sampleHash(std::int64_t timeUs, const Decimal& x, const Decimal& y) {
    std::string key = std::to_string(timeUs);
    key.append(" ").append(x.text).append(" ").append(y.text);
    return std::hash<std::string>()(key);
}

OpenBatch& BatchAssembler::open(std::size_t line) {
    if (!mOpen) {
        mOpen.emplace();
        mOpen->call.thread = mThread;
    }
    mOpen->line = line;
    return *mOpen;
}

void BatchAssembler::take(const SampleReceived& sample, std::size_t line) {
    mCapture.everySample = true;
    // A frame number ends the samples, and indexes only rise within a batch.
    if (mOpen && (sample.index < mOpen->nextIndex || mOpen->call.frame)) close();
    OpenBatch& batch = open(line);
    batch.missing += sample.index - batch.nextIndex;
    batch.nextIndex = sample.index + 1;
    appendRow(batch.call.data, sample);
    ++batch.call.samples;
    if (batch.newest > timeOf(sample.timestamp)) return;
    batch.newest = timeOf(sample.timestamp);
    batch.newestHash = sampleHash(batch.newest / kNsPerUs, sample.oisX, sample.oisY);
}

void BatchAssembler::closeUnlessFrame(std::uint32_t frame) {
    if (mOpen && mOpen->call.frame && *mOpen->call.frame != frame) close();
}

void BatchAssembler::take(const BatchDivided& divided, std::size_t line) {
    const auto frame = static_cast<std::uint32_t>(divided.frame);  // printed as a signed number
    closeUnlessFrame(frame);
    OpenBatch& batch = open(line);
    batch.call.frame = frame;
    batch.divided = true;
}

void BatchAssembler::take(const BatchFiled& filed, std::size_t line) {
    closeUnlessFrame(filed.frame);
    open(line).call.frame = filed.frame;
}

void BatchAssembler::take(const BatchUpdated& updated, std::size_t line) {
    closeUnlessFrame(updated.frame);
    OpenBatch& batch = open(line);
    batch.call.frame = updated.frame;
    batch.call.timestamp = updated.timestamp;
    // A division moves samples between this batch and the one before: the newest of both stays here.
    const bool moved = batch.divided && timeOf(updated.last) <= mNewest;
    if (!batch.divided && updated.count > batch.call.samples) {
        batch.missing = std::max(batch.missing, updated.count - batch.call.samples);
    }
    if (batch.missing == 0 && updated.count != 0 && !moved && batch.newest != timeOf(updated.last)) {
        batch.call.hole = "its newest sample is not in the capture";
    }
    close();
}

void BatchAssembler::take(const BatchEmpty& empty, std::size_t line) {
    if (mOpen) close();
    UpdateCall call;
    call.frame = nextFrame();
    call.type = empty.type;
    call.thread = mThread;
    mCapture.add(line, std::move(call));
}

void BatchAssembler::close() {
    OpenBatch batch = std::move(*mOpen);
    mOpen.reset();
    UpdateCall& call = batch.call;
    if (!call.frame) {
        call.frame = nextFrame();
        call.frameKnown = false;
        call.hole = "its frame number is assumed";
    }
    mFrame = call.frame;
    mNewest = std::max(mNewest, batch.newest);
    if (batch.missing == 1) call.hole = "1 sample is not in the capture";
    if (batch.missing > 1) call.hole = std::to_string(batch.missing) + " samples are not in the capture";
    call.samplesLost = call.samples == 0;
    if (!call.samplesLost) mCapture.newestSamples[batch.newestHash] = mCapture.calls.size();
    mCapture.add(batch.line, std::move(call));
}

void BatchAssembler::finish() {
    if (mOpen) close();
}

}  // namespace replay::import
