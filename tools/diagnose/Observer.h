// Hears what a session does while it is played. Every view of a session is one: table, statistics, recording, costs.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace replay {

struct Expectation;
struct ExposureOutcome;
struct HandOver;

class Observer {
public:
    Observer() = default;
    virtual ~Observer() = default;
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;

    // Whether it follows samples and exposures. To find out what became of them the library is asked as much again, so
    // nobody does that for observers who would not listen.
    virtual bool wantsDiagnosis() const { return true; }

    // The sensor's monitor began to run; it did not before.
    virtual void monitorStarted(std::int32_t /*sensor*/) {}
    virtual void handedOver(const HandOver& /*handOver*/) {}
    // One call asked for these exposures.
    virtual void exposuresAsked(const std::vector<ExposureOutcome>& /*outcomes*/) {}
    // What a device made of an exposure of that call.
    virtual void expected(const Expectation& /*expectation*/) {}
    // A call into the library took this long.
    virtual void called(std::string_view /*function*/, std::uint64_t /*ns*/) {}
};

}  // namespace replay
