// The customer OTP provider library: the bytes of each camera module's one-time-programmable memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>

// The provider's answer for one sensor. 16 bytes, exchanged between libraries: the layout is fixed.
struct OTPData {
    std::uint8_t isStored;  // non-zero when the provider holds the module's OTP bytes
    std::uint8_t reserved[7];
    const std::uint8_t* bytes;  // the whole OTP memory of the module; owned by the provider, never freed or written
};
static_assert(sizeof(OTPData) == 16 && offsetof(OTPData, bytes) == 8);

// The provider. Created on first use, never destroyed. The library holds the sensor's OTP lock across both calls, so
// neither may call the library nor wait for a thread that does.
class TarvoOTPData {
public:
    // The one object, created under `mSingleMutex` on the first call; null when its allocation failed.
    // Thread safe. May throw.
    static TarvoOTPData* getInstance();

    // Fills `data` for the sensor, or leaves it as it is when the provider knows nothing about it. The record carries
    // no length: the bytes must cover every offset that the sensor's driver names in its OTP layout. The library can
    // check no more than its own limit, and reads a shorter memory past its end. Thread safe. May throw.
    void getOTPData(int sensorId, OTPData& data);

    static TarvoOTPData* mSingleInstance;
    static std::mutex mSingleMutex;
};
