// What the library finds for one exposure, and why it finds nothing: asked of the library itself. The questions change
// nothing in it and send nothing out: the log gates are closed while the object lives, and nothing asked here writes a
// dump file.
#pragma once

#include <cstdint>
#include <optional>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "tools/diagnose/Library.h"
#include "tools/diagnose/Outcome.h"
#include "tools/diagnose/SampleAccount.h"

namespace replay {

class Diagnosis {
public:
    // `account` knows what the library's buffers hold.
    Diagnosis(Library& library, const SampleAccount& account)
        : mClosed(library),
          mLibrary(library.customer()),
          mAccount(account),
          mPlatformFailing(library.failing()),
          mCalculationMode(library.calculationMode()) {}

    // Whether the session makes the platform fail. What the library found is then beyond asking: computes() says no,
    // and this is why.
    bool platformFailing() const { return mPlatformFailing; }
    // Whether the sensor has an OIS calibration. Only for a sensor that the library has been asked about by itself:
    // the first question reads the sensor's OTP memory.
    bool isCalibrated(std::int32_t sensor) { return mLibrary.IsSupportFeature(kFeatureOisCompensation, sensor); }
    // Time from the first row read to the last; 0 without one.
    std::uint64_t readoutNs(std::int32_t sensor) { return mLibrary.QueryRollingShutter(sensor); }
    // The times that a calculation of `type` uses; nothing for a type that computes nothing.
    std::optional<lsc::ExposureTimes> timesOf(std::int32_t sensor, std::uint32_t type, const CalcOISValueInput& input);
    // Whether the library finds a position for the exposure, as things stand.
    bool computes(std::int32_t sensor, const lsc::ExposureTimes& times);
    // The samples it reduces for an exposure that it finds a position for: the library's own search (OisSpan.h) in the
    // samples that it gives for the exposure.
    std::optional<SpanUsed> spanUsed(std::int32_t sensor, const lsc::ExposureTimes& times);
    // Why it finds none.
    Reason whyNothing(std::int32_t sensor, const lsc::ExposureTimes& times);
    // Why it computes none; nothing while the sensor's monitor runs.
    std::optional<Reason> whyNoMonitor(std::int32_t sensor);

private:
    struct Search;

    lsc::Samples samplesAround(std::int32_t sensor, std::uint64_t timestampNs);
    Search searchFor(const lsc::ExposureTimes& times, lsc::Samples samples) const;
    Reason whyNoSamples(std::int32_t sensor, const lsc::ExposureTimes& times);
    Reason whyNoMatch(const Search& search, std::uint64_t shutterNs) const;

    const ClosedLogGates mClosed;
    TarvoShadingCustomUtil& mLibrary;
    const SampleAccount& mAccount;
    const bool mPlatformFailing;
    const std::optional<std::int32_t> mCalculationMode;
};

}  // namespace replay
