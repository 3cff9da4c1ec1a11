#include "tools/replay/Reason.h"

namespace replay {

std::string_view reasonText(Reason::Kind kind) {
    switch (kind) {
        case Reason::Kind::kNoMetadata:
            return "no metadata";
        case Reason::Kind::kNoCalibration:
            return "OTP: no valid OIS calibration";
        case Reason::Kind::kAlreadyWritten:
            return "already written";
        case Reason::Kind::kTimingMissing:
            return "timing missing in metadata";
        case Reason::Kind::kNoMonitor:
            return "no running monitor";
        case Reason::Kind::kUnknownType:
            return "type without a calculation";
        case Reason::Kind::kNoStartOfFrame:
            return "no start of frame";
        case Reason::Kind::kTooFewSamples:
            return "fewer than 100 samples buffered";
        case Reason::Kind::kNoLaterSample:
            return "no sample at or after the start of frame";
        case Reason::Kind::kNoNearSample:
            return "no sample within 1000 us of exposure start";
        case Reason::Kind::kOneSample:
            return "span of one sample";
        case Reason::Kind::kCalculationMode:
            return "calculation mode computes nothing";
    }
    return {};
}

}  // namespace replay
