#include "tools/import/Silence.h"

#include <algorithm>

#include "tools/import/Scan.h"

namespace replay::import {
namespace {

// Frames that a device may leave unasked when it stops, and the time until it does.
constexpr std::int64_t kLongestInUsual = 4;

// "MM-DD HH:MM:SS.mmm", with a year or with more decimals, or seconds alone. Midnight is not worth a calendar.
std::optional<std::int64_t> milliseconds(std::string_view clock) {
    clock.remove_prefix(std::min(clock.size(), clock.rfind(' ') + 1));
    std::int64_t seconds = 0;
    for (int parts = 0; parts < 3; ++parts) {
        std::int64_t part = 0;
        if (!takeValue(clock, part)) return std::nullopt;
        seconds = seconds * 60 + part;
        if (!takeText(clock, ":")) break;
    }
    std::int64_t thousandths = 0;
    std::string_view decimals = clock.starts_with('.') ? clock.substr(1, 3) : std::string_view();
    if (decimals.size() == 3) takeValue(decimals, thousandths);
    return seconds * 1000 + thousandths;
}

}  // namespace

void Silence::frame(std::string_view clock) {
    const std::optional<std::int64_t> now = milliseconds(clock);
    if (now && mLast) mUsualMs = std::max(mUsualMs, *now - *mLast);
    mLast = now;
}

std::optional<Silence::Found> Silence::end(std::string_view clock) {
    const std::optional<std::int64_t> now = milliseconds(clock);
    const std::optional<std::int64_t> last = mLast;
    mLast = now;
    if (!now || !last || mUsualMs == 0 || *now - *last <= kLongestInUsual * mUsualMs) return std::nullopt;
    return Found{*now - *last, mUsualMs};
}

}  // namespace replay::import
