// The customer camera data library: what the camera application is doing right now.
#pragma once

#include <string>

// Facts about the current camera use. Thread safe. May throw. No operation of this header may call the library.
class CustomMetadata {
public:
    // Name of the current camera mode, for example "high_pixel_mode"; empty when none is set.
    virtual std::string getCameraModeName() const = 0;

protected:
    CustomMetadata() = default;
    CustomMetadata(const CustomMetadata&) = default;
    CustomMetadata& operator=(const CustomMetadata&) = default;
    ~CustomMetadata() = default;
};

// The process-wide holder of the customer's camera data.
class CustomerData {
public:
    // The one object, or null when the library could not set it up. Never destroyed. Thread safe. May throw.
    static CustomerData* getInstance();

    // Its mode facts, or null when there are none. They live as long as the holder.
    virtual const CustomMetadata* customMetadata() const = 0;

protected:
    CustomerData() = default;
    CustomerData(const CustomerData&) = default;
    CustomerData& operator=(const CustomerData&) = default;
    ~CustomerData() = default;
};
