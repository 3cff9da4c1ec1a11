// Watches a session while it is played and tells its observers: monitors that start, samples that are handed over,
// exposures that are asked for and what became of them, what a device made of them, what calls cost. One thread, and
// one watch at a time: it hears of hand-overs from the host platform.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "tools/diagnose/Library.h"
#include "tools/diagnose/SampleAccount.h"

namespace replay {

class Observer;
struct Expectation;

class Watch {
public:
    using LibraryCall = std::function<void()>;

    // `observers` and `library` must outlive the watch.
    Watch(const std::vector<Observer*>& observers, Library& library);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    // What calls have made of the sensor's monitor.
    void monitorRegistered(std::int32_t sensor) { mAccount.registered(sensor); }
    void monitorStarted(std::int32_t sensor);
    void monitorUnregistered(std::int32_t sensor) { mAccount.unregistered(sensor); }
    const SampleAccount& account() const { return mAccount; }

    // Each runs `call`, a call into the library of this kind, and tells what came of it.
    void update(std::int32_t sensor, std::uint32_t frame, std::uint64_t timestampNs, const LibraryCall& call);
    void frame(std::int32_t sensor, const NSCam::IMetadata* metadata, const LibraryCall& call);
    void calculation(std::int32_t sensor, std::uint32_t type, const CalcOISValueInput& input,
                     const std::vector<double>& x, const std::vector<double>& y, const LibraryCall& call);

    void expected(const Expectation& expectation);
    void called(std::string_view function, std::uint64_t ns);

private:
    template <typename MakeInquiry>
    void diagnose(const LibraryCall& call, const MakeInquiry& makeInquiry);

    const std::vector<Observer*>& mObservers;
    Library& mLibrary;
    const bool mDiagnosing;  // some observer wants it
    SampleAccount mAccount;
    bool mFetched = false;  // the call under way did
    lsc::Samples mSamples;  // that it fetched
};

}  // namespace replay
