// A capture that falls silent before a monitor ends, although frames came at short intervals until then: the one trace
// that the last calls leave when all their messages are lost. Only forms with a clock show it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace replay::import {

class Silence {
public:
    struct Found {
        std::int64_t ms = 0;       // without a hand-over or a frame
        std::int64_t usualMs = 0;  // the longest such time before
    };

    // A hand-over or a frame at `clock`, as the line shows it.
    void frame(std::string_view clock);
    // A message of a monitor that starts.
    void start() { mLast.reset(); }
    // A message of a monitor that ends: the silence before it, if it is too long for frames to have come all the time.
    std::optional<Found> end(std::string_view clock);

private:
    std::optional<std::int64_t> mLast;  // ms, of the last call since a monitor started
    std::int64_t mUsualMs = 0;
};

}  // namespace replay::import
