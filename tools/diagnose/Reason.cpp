#include "tools/diagnose/Reason.h"

#include <array>

#include <fmt/format.h>

#include "customer/aaa/aaa/lsc/OisSpan.h"
#include "customer/aaa/aaa/lsc/SampleWindow.h"

namespace replay {

std::string reasonText(Reason::Kind kind) {
    static const std::array<std::string, kReasonKinds> kTexts = {
        // in the order of the kinds
        "no metadata",
        "OTP: no valid OIS calibration",
        "already written",
        "timing missing in metadata",
        "no running monitor",
        "type that computes nothing",
        "no start of frame",
        fmt::format("fewer than {} samples buffered", lsc::kWindowSize),
        "no sample at or after the start of frame",
        fmt::format("no sample within {} us of exposure start", lsc::kMatchWindowUs),
        "span of one sample",
        "calculation mode computes nothing",
        "the session makes the platform fail",
    };
    return kTexts[indexOf(kind)];
}

}  // namespace replay
