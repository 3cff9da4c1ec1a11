#include "tools/play/PlayState.h"

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "tools/session/Limits.h"
#include "tools/session/Narrow.h"

namespace replay {

void PlayState::putMetadata(const std::string& name, std::unique_ptr<NSCam::IMetadata> metadata, std::uint64_t size) {
    KeptMetadata& kept = mMetadata[name];
    mMetadataSize += size - kept.size;
    kept = {std::move(metadata), size};
}

std::uint64_t PlayState::metadataRoom(const std::string& name) const {
    const auto found = mMetadata.find(name);
    return kMaxMetadataSize - mMetadataSize + (found != mMetadata.end() ? found->second.size : 0);
}

NSCam::IMetadata* PlayState::findMetadata(const std::string& name) const {
    const auto found = mMetadata.find(name);
    return found != mMetadata.end() ? found->second.object.get() : nullptr;
}

CustomShadingFlow* PlayState::findInstance(std::int32_t index) const {
    const auto found = mInstances.find(index);
    return found != mInstances.end() ? found->second : nullptr;
}

void PlayState::endMonitors() {
    const ClosedLogGates closed(mLibrary);
    for (const std::int32_t sensor : mWatch.account().registeredSensors()) {
        CustomShadingUtil::UnRegisterSensorMonitor(sensor);
        mWatch.monitorUnregistered(sensor);
    }
}

PlayState::PlatformOfACall::PlatformOfACall(PlayState& state) : mState(state) {
    if (mState.mLibrary.failing()) host::setFailures(mState.mLibrary.failures());
    if (mState.mJournalOn) host::setJournal(true);
}

PlayState::PlatformOfACall::~PlatformOfACall() {
    if (mState.mLibrary.failing()) host::setFailures({});
    if (!mState.mJournalOn) return;
    mState.mJournal = host::takeJournal();
    host::setJournal(false);
}

PlayState::Stopwatch::~Stopwatch() {
    const std::chrono::nanoseconds time = Clock::now() - mStart;
    mState.mWatch.called(mState.mFunction, narrow<std::uint64_t>(time.count()));  // a steady clock does not go back
}

}  // namespace replay
