// The system properties that hold the customer object's settings. It reads them once, when it is created; each is a
// 32-bit number, 0 when unset.
#pragma once

namespace lsc::setting {

inline constexpr char kLogLevel[] = "vendor.tarvo.3a.lscutil.log";
inline constexpr char kOisDump[] = "vendor.debug.capture.lsc.ois.dump";                   // not 0: writes the hall dump
inline constexpr char kOisCalculation[] = "vendor.debug.ois.hall.calculation";            // lsc::OisReduction
inline constexpr char kForcedTableIndex[] = "vendor.debug.lsc_mgr.otp_tbl_idx";           // from 1 on it is the answer
inline constexpr char kDisableCompensation[] = "vendor.camera.disable_ois_compensation";  // from 1 on it disables

}  // namespace lsc::setting
