// Questions to the library about one exposure, for saying what became of it. They change nothing in the library and
// send nothing out: the log gates are closed while the object lives, and nothing asked here writes a dump file.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"
#include "tools/replay/LogRecorder.h"
#include "tools/replay/Reason.h"
#include "tools/replay/SampleAccount.h"

namespace replay {

// One exposure of a frame.
struct Exposure {
    std::uint32_t type = 0;            // CustShadingType as a number
    std::uint64_t startOfFrameNs = 0;  // 0: unknown
    std::uint64_t exposureTimeNs = 0;
};

// The times that a calculation of `type` uses; nothing for a type that computes nothing.
std::optional<Exposure> exposureOf(std::uint32_t type, const CalcOISValueInput& input);

// The samples that a position came from.
struct SpanUsed {
    std::uint64_t distanceUs = 0;  // from the exposure start to the first of them, the samples' delay counted in
    std::int64_t firstNs = 0;      // time stamps of the first and the last, as delivered
    std::int64_t lastNs = 0;
    std::int32_t samples = 0;
};

class Questions {
public:
    // `account` knows what the library's buffers hold, `gates` are the log switches to put back, `calculationMode` is
    // the library's, when it is known.
    Questions(TarvoShadingCustomUtil& library, const SampleAccount& account, const LogSwitches& gates,
              std::optional<std::int32_t> calculationMode)
        : mLibrary(library), mAccount(account), mClosed(gates), mCalculationMode(calculationMode) {}

    // Whether the sensor has an OIS calibration. Only for a sensor that the library has been asked about by itself:
    // the first question reads the sensor's OTP memory.
    bool isCalibrated(std::int32_t sensor) { return mLibrary.IsSupportFeature(2, sensor); }
    // Fills in the frame's timing; whether exposure and start of frame were there.
    bool readTiming(NSCam::IMetadata& metadata, CalcOISValueInput& input);
    bool monitorRuns(std::int32_t sensor) { return mLibrary.IsEnabled(sensor); }
    // Whether the library finds a position for the exposure, as things stand.
    bool computes(std::int32_t sensor, const Exposure& exposure);
    // Time from the first row read to the last; 0 without one.
    std::uint64_t readoutNs(std::int32_t sensor);
    // The samples it reduces for an exposure that it finds a position for: the library's own search (OisSpan.h) in the
    // samples that it gives for the exposure.
    std::optional<SpanUsed> spanUsed(std::int32_t sensor, const Exposure& exposure);
    // Why it finds none.
    Reason whyNothing(std::int32_t sensor, const Exposure& exposure);

private:
    using Samples = std::vector<NSCam::Utils::SensorData>;
    struct Search;

    Samples samplesAround(std::int32_t sensor, std::uint64_t timestampNs);
    Search searchFor(std::int32_t sensor, const Exposure& exposure, Samples samples);
    Reason whyNoMatch(const Search& search) const;

    TarvoShadingCustomUtil& mLibrary;
    const SampleAccount& mAccount;
    const ClosedLogGates mClosed;
    const std::optional<std::int32_t> mCalculationMode;
};

}  // namespace replay
