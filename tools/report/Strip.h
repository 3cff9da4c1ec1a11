// Very many frames as a strip: its height is divided, at each time, by the shares of what became of the frames.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tools/diagnose/Reason.h"
#include "tools/report/Points.h"

namespace replay {

// What has a colour of its own: exposures with a position (0), and each kind of reason (its index and 1).
inline constexpr std::size_t kGroups = kReasonKinds + 1;
inline constexpr std::array<std::string_view, kGroups> kColours = {
    "#a3cfae", "#7f7f7f", "#222222", "#c7c7c7", "#8c564b", "#5f6b7a", "#bcbd22",
    "#e377c2", "#9467bd", "#1795a8", "#d62728", "#2f5fd0", "#b8720a", "#5c4033",
};
std::string groupText(std::size_t group);

class Strip {
public:
    Strip(double fromMs, double toMs);

    // A frame that lies, or reaches, between the two times.
    void add(double beginMs, double endMs, std::size_t group);
    // The group's part of the strip as polygons, from -0.5 to 0.5: time and height of each corner, an empty line after
    // each. A reason has a tenth of the height at least wherever it occurs, and is two of 1500 pixels wide.
    std::string polygons(std::size_t group) const;

private:
    using Shares = std::array<double, kGroups>;

    Columns mColumns;
    std::vector<Shares> mFrames;  // in each column
};

}  // namespace replay
