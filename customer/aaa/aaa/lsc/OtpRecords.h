// Per-sensor records of the OTP calibration: the layout that the sensor driver describes, and the result of the read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>

#include "aaa/aaa/lsc/ThreadAnnotations.h"

// Layout of a module's OTP memory: byte offsets into it, sizes and counts. The sensor driver fills the record in answer
// to its OTP layout command, so the layout is fixed: eleven 32-bit words, 44 bytes.
struct OTPInfo {
    struct MultiGolden {
        std::uint32_t offset;    // the block; only logged
        std::uint32_t size;      // bytes; only logged
        std::uint32_t valid;     // offset of the valid marker byte
        std::uint32_t gradient;  // offset of the gradient's magnitude byte
        std::uint32_t flag;      // offset of the gradient's sign byte
    } multiGolden;
    struct OisCalibration {
        std::uint32_t offset;       // the table's first byte
        std::uint32_t size;         // bytes that callers get, with zeros after the rows
        std::uint32_t valid;        // offset of the valid marker byte
        std::uint32_t indexNum;     // rows
        std::uint32_t tableNumber;  // entries per row, 2 bytes each
    } oisCalibration;
    std::uint32_t enable;  // 0: the driver describes no layout
};
static_assert(offsetof(OTPInfo::MultiGolden, offset) == 0 && offsetof(OTPInfo::MultiGolden, size) == 4 &&
              offsetof(OTPInfo::MultiGolden, valid) == 8 && offsetof(OTPInfo::MultiGolden, gradient) == 12 &&
              offsetof(OTPInfo::MultiGolden, flag) == 16);
static_assert(offsetof(OTPInfo::OisCalibration, offset) == 0 && offsetof(OTPInfo::OisCalibration, size) == 4 &&
              offsetof(OTPInfo::OisCalibration, valid) == 8 && offsetof(OTPInfo::OisCalibration, indexNum) == 12 &&
              offsetof(OTPInfo::OisCalibration, tableNumber) == 16);
static_assert(offsetof(OTPInfo, multiGolden) == 0 && offsetof(OTPInfo, oisCalibration) == 20 &&
              offsetof(OTPInfo, enable) == 40 && sizeof(OTPInfo) == 44);

// Result of a sensor's one OTP read. `otpMutex` serialises the read; the three results are written during it and never
// again, so they may be read without the lock by whoever has seen `isRead` set under it.
struct OTPState {
    bool isRead LSC_GUARDED_BY(otpMutex) = false;         // the read has been tried; it is never tried twice
    bool oisCalibrationValid = false;                     // true exactly when there is a table
    std::int32_t multi_tbl_idx = 0;                       // golden shading table, 1 to 5; 0 when not known
    std::unique_ptr<std::uint8_t[]> oisCalibrationTable;  // reordered; lsc::storedBytes of it
    std::mutex otpMutex;
};
