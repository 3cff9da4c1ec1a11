#include "tools/diagnose/Watch.h"

#include <algorithm>

#include "platform/host/Host.h"
#include "tools/diagnose/Diagnosis.h"
#include "tools/diagnose/Inquiry.h"
#include "tools/diagnose/Observer.h"

namespace replay {

Watch::Watch(const std::vector<Observer*>& observers, Library& library)
    : mObservers(observers),
      mLibrary(library),
      mDiagnosing(std::ranges::any_of(observers, [](const Observer* its) { return its->wantsDiagnosis(); })) {
    if (!mDiagnosing) return;
    host::setHandOverListener([this](NSCam::Utils::eSensorType, const lsc::Samples& samples) {
        mFetched = true;
        mSamples = samples;  // a copy, because the library sorts and divides its own
    });
}

Watch::~Watch() {
    host::setHandOverListener(nullptr);
}

void Watch::monitorStarted(std::int32_t sensor) {
    if (!mAccount.started(sensor)) return;
    for (Observer* const observer : mObservers)
        observer->monitorStarted(sensor);
}

void Watch::update(std::int32_t sensor, std::uint32_t frame, std::uint64_t timestampNs, const LibraryCall& call) {
    mFetched = false;
    call();
    if (!mFetched) return;
    lsc::sortByTime(mSamples);
    const auto filing = mAccount.file(sensor, frame, timestampNs, mSamples);
    if (!filing) return;
    for (Observer* const observer : mObservers)
        observer->handedOver({sensor, frame, mSamples, *filing, timestampNs});
}

void Watch::frame(std::int32_t sensor, const NSCam::IMetadata* metadata, const LibraryCall& call) {
    diagnose(call, [&] { return FrameInquiry(sensor, metadata); });
}

void Watch::calculation(std::int32_t sensor, std::uint32_t type, const CalcOISValueInput& input,
                        const std::vector<double>& x, const std::vector<double>& y, const LibraryCall& call) {
    diagnose(call, [&] { return CalculationInquiry(sensor, type, input, x, y); });
}

template <typename MakeInquiry>
void Watch::diagnose(const LibraryCall& call, const MakeInquiry& makeInquiry) {
    if (!mDiagnosing) return call();
    const auto inquiry = makeInquiry();
    call();
    Diagnosis diagnosis(mLibrary, mAccount);
    std::vector<ExposureOutcome> outcomes = inquiry.outcomes(diagnosis);
    for (ExposureOutcome& outcome : outcomes)
        outcome.frame = mAccount.frameAt(outcome.sensor, outcome.times ? outcome.times->sofNs : UINT64_MAX);
    for (Observer* const observer : mObservers)
        observer->exposuresAsked(outcomes);
}

void Watch::expected(const Expectation& expectation) {
    for (Observer* const observer : mObservers)
        observer->expected(expectation);
}

void Watch::called(std::string_view function, std::uint64_t ns) {
    for (Observer* const observer : mObservers)
        observer->called(function, ns);
}

}  // namespace replay
