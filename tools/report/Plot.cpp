#include "tools/report/Plot.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <numeric>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "tools/report/Causes.h"
#include "tools/report/Gnuplot.h"
#include "tools/report/Picture.h"
#include "tools/report/Strip.h"
#include "tools/session/Errors.h"

namespace replay {
namespace {

constexpr double kLabelHeight = 0.09;      // of the panel
constexpr std::size_t kMarked = 24;        // exposures without a position that are marked in the panels above
constexpr std::size_t kLegendColumns = 2;  // gnuplot keeps to no more where texts are long
constexpr double kLegendRow = 0.024;       // of the picture's height

bool endsAs(const std::string& file, std::string_view ending) {
    return file.size() > ending.size() && file.ends_with(ending);
}

// Within gnuplot's single quotes, which know no other escape.
std::string singleQuoted(std::string_view text) {
    std::string result = "'";
    for (const char c : text)
        result.append(c == '\'' ? 2 : 1, c == '\n' ? ' ' : c);
    return result + "'";
}

std::string dataBlock(std::string_view name, const std::string& rows) {
    return fmt::format("${} << EOD\n{}EOD\n", name, rows);
}

// A script that is drawn at once draws on standard output, because gnuplot does not tell when its own file is not
// written.
std::string terminal(const std::string& file) {
    if (endsAs(file, ".svg")) return "set terminal svg size 1600,1000 font 'sans,14' background 'white'\n";
    const std::string png = "set terminal pngcairo size 1600,1000 font 'sans,12'\n";
    // gnuplot calls the script by the name that it was given.
    return endsAs(file, ".gp") ? png + "set output ARG0[1:strlen(ARG0)-3].'.png'\n" : png;
}

// The picture, which has the end that its format demands.
std::string drawn(const std::string& script, const std::string& file) {
    std::string picture = runGnuplot(script);
    const std::string_view end = endsAs(file, ".svg") ? "</svg>" : "IEND";
    constexpr std::size_t kLongestEnd = 10;  // with line breaks, or a check sum
    if (picture.find(end, picture.size() - std::min(picture.size(), kLongestEnd)) == std::string::npos) {
        throw StreamError("gnuplot's picture is not complete: is the disk full?");
    }
    return picture;
}

// The part of the script that is the same for every picture.
constexpr const char* kStyle = R"(set encoding utf8
set multiplot
set lmargin at screen 0.065
set rmargin at screen 0.985
set grid xtics ytics lc rgb '#dddddd' lt 1
set border lc rgb '#666666'
set tics textcolor rgb '#333333'
set key at screen 0.06,0.942 left top Left reverse horizontal noenhanced samplen 2 textcolor rgb '#333333'
)";

// Puts the next panel between two heights of the picture.
std::string placeAt(double bottom, double top) {
    return fmt::format("set tmargin at screen {:.10g}\nset bmargin at screen {:.10g}\n", top, bottom);
}

// The elements of a panel that have something to show: gnuplot complains of those that have not.
class Elements {
public:
    void add(const std::string& rows, const std::string& element) {
        if (rows.empty()) return;
        mText += (mText.empty() ? "plot " : ", \\\n  ") + element;
    }
    std::string text() const { return (mText.empty() ? "plot NaN notitle" : mText) + "\n"; }

private:
    std::string mText;
};

// What the two panels of the hall sensor show, as rows of numbers.
struct HallRows {
    explicit HallRows(const Picture& picture)
        : samples(picture.samples()),
          spans(picture.spans()),
          positions(picture.positions()),
          device(picture.devicePositions()),
          differences(picture.differences()) {}

    std::string blocks() const {
        return dataBlock("samples", samples) + dataBlock("spans", spans) + dataBlock("positions", positions) +
               dataBlock("device", device) + dataBlock("differences", differences);
    }

    const std::string samples, spans, positions, device, differences;
};

// In a panel that has no scale.
constexpr const char* kNoSamples = R"(unset ytics
set label 'no samples' at graph 0.5,0.5 center font ',14' textcolor rgb '#555555'
)";

// Not so close to a lens at rest that the rounding of its samples fills the panel.
std::string yRange(const Picture& picture, double Point::*axis) {
    constexpr double kLeastHeightUm = 2;
    constexpr double kFinest = 1e-5;  // of a position
    const auto extremes = picture.extremes(axis);
    if (!extremes) return "[0:1]";
    const auto [least, largest] = *extremes;
    const double middle = std::midpoint(least, largest);
    const double height = std::max(kLeastHeightUm, kFinest * std::abs(middle));
    if (largest - least >= height) return "[*:*]";
    return fmt::format("[{:.10g}:{:.10g}]", middle - height / 2, middle + height / 2);
}

// One axis of the hall sensor; `column` is that of samples and positions.
std::string axisPanel(const HallRows& rows, const Picture& picture, double Point::*axis, int column) {
    Elements elements;
    elements.add(rows.samples,
                 fmt::format("$samples using 1:{} with lines lw 1 lc rgb '#8494a4' title 'hall samples'", column));
    elements.add(rows.spans,
                 fmt::format("$spans using 1:{} with lines lw 3 lc rgb '#6db3f2' title 'span used'", column));
    elements.add(rows.device, fmt::format("$device using 1:{} with points pt 5 ps {} lc rgb '#f0a030' "
                                          "title 'position on the device'",
                                          column, picture.isDetailed() ? 1.3 : 0.4));
    // Where frames are close, the bars over their spans would hide everything else.
    elements.add(rows.positions,
                 fmt::format("$positions using 1:{}{} pt 7 lc rgb '#12304f' title 'position reported'", column,
                             picture.isDetailed() ? ":4:5 with xerrorbars ps 0.7 lw 1.4" : " with points ps 0.2"));
    elements.add(
        rows.differences,
        fmt::format("$differences using 1:{0}:(0):(${1}-${0}) with vectors nohead lw 2 lc rgb '#d0006f' notitle, "
                    "$differences using 1:{1} with points pt 6 ps 1.8 lw 2 lc rgb '#d0006f' "
                    "title 'device differs: {2}'",
                    column, column + 2, picture.countDifferences()));
    const bool empty = !picture.extremes(axis);
    return fmt::format("set yrange {}\nset ylabel 'hall {} (ois{}, as delivered)'\n{}", yRange(picture, axis),
                       column == 2 ? 'x' : 'y', column == 2 ? 'X' : 'Y', empty ? kNoSamples : "") +
           elements.text();
}

// Lines through the panels of the hall sensor at exposures without a position, unless they would hide the rest.
std::string marks(const Picture& picture) {
    if (picture.unserved() > kMarked) return {};
    std::string text;
    for (const auto& [ms, group] : picture.unservedTimes())
        text += fmt::format("set arrow from {0:.10g}, graph 0 to {0:.10g}, graph 1 nohead dt 2 lc rgb '{1}'\n", ms,
                            kColours.at(group));
    return text;
}

std::string groupTitle(const Picture& picture, std::size_t group) {
    return singleQuoted(fmt::format("{}: {}", groupText(group), picture.count(group)));
}

// Half of the width holds the longest reason.
bool isLeft(const Picture& picture, const Picture::Label& label) {
    return label.ms <= std::midpoint(picture.from(), picture.to());
}

// In the order in which they stand on each other, so that the lines down to the frames pass beside the texts below.
std::vector<Picture::Label> stacked(const Picture& picture) {
    std::vector<Picture::Label> labels = picture.labels();
    std::ranges::sort(labels, {}, [&](const Picture::Label& label) {
        return isLeft(picture, label) ? std::pair(1, -label.ms) : std::pair(0, label.ms);
    });
    return labels;
}

// Reasons above the frames, a line each, with a line down to the frame.
std::string labels(const Picture& picture, double bottom, double rowHeight) {
    std::string text = "unset label\nunset arrow\n";
    double height = bottom;
    for (const Picture::Label& label : stacked(picture)) {
        const std::string_view colour = kColours.at(label.group);
        const bool left = isLeft(picture, label);
        text += fmt::format("set arrow from {0:.10g},{1:.6g} to {0:.10g},{2:.6g} nohead lc rgb '{3}'\n", label.ms,
                            bottom, height + rowHeight, colour);
        text += fmt::format("set label {} at {:.10g},{:.6g} {} offset {},0 font ',11' tc rgb '{}' noenhanced\n",
                            singleQuoted(label.text), label.ms, height + rowHeight / 2, left ? "left" : "right",
                            left ? 0.5 : -0.5, colour);
        height += rowHeight;
    }
    return text;
}

std::string framePanel(const Picture& picture) {
    std::string blocks;
    Elements elements;
    std::size_t entries = picture.spanBars().empty() ? 0 : 1;
    for (std::size_t group = 0; group < kGroups; ++group) {
        const std::string rows = picture.frames(group);
        if (rows.empty()) continue;
        ++entries;
        blocks += dataBlock(fmt::format("frames{}", group), rows);
        elements.add(rows, fmt::format("$frames{0} using 1:2 with polygons fs solid border lc rgb '{1}' fc rgb '{1}' "
                                       "title {2}",
                                       group, kColours.at(group), groupTitle(picture, group)));
    }
    const std::string spans = picture.spanBars();
    elements.add(spans, "$bars using 1:2:3:(0) with vectors nohead lw 3 lc rgb '#6db3f2' title 'span used'");
    const double bottom = picture.lanes() - 0.5;
    const auto count = static_cast<double>(picture.labels().size());  // a few
    const double height = picture.lanes() / (1 - kLabelHeight * count);
    const auto rows = static_cast<double>((entries + kLegendColumns - 1) / kLegendColumns);  // a few
    return blocks + dataBlock("bars", spans) + labels(picture, bottom, kLabelHeight * height) +
           fmt::format("set key at screen 0.06,0.338 maxcols {}\n", kLegendColumns) +
           placeAt(0.075, 0.33 - kLegendRow * rows) +
           fmt::format("set yrange [-0.5:{:.10g}]\nunset ytics\nset ylabel '{}'\n", height - 0.5,
                       picture.isDetailed() ? "rows of each frame" : "share of frames") +
           "set xlabel 'ms from the first sample'\nset format x '%.10g'\n" + elements.text();
}

std::string heading(const Picture& picture, std::int32_t sensor, const PlotOptions& options) {
    const std::string again =
        picture.askedAgain() == 0 ? "" : fmt::format(", {} asked for again", picture.askedAgain());
    const std::string text = fmt::format("{}, sensor {}: {}, {} without a position{}", options.title, sensor,
                                         counted(picture.exposures(), "exposure"), picture.unserved(), again);
    return fmt::format("set label {} at screen 0.065,0.982 noenhanced font ',14'\n", singleQuoted(text)) +
           fmt::format("set label {} at screen 0.065,0.957 noenhanced tc rgb '#555555'\n",
                       singleQuoted(picture.ranges()));
}

}  // namespace

bool isPlotName(const std::string& file) {
    return endsAs(file, ".svg") || endsAs(file, ".png") || endsAs(file, ".gp");
}

std::string plotScript(const Recording& recording, const PlotOptions& options) {
    const auto& sensors = recording.sensors();
    const auto sensor = options.sensor ? sensors.find(*options.sensor) : sensors.begin();
    if (sensors.empty()) throw std::invalid_argument("nothing to plot: the session has neither samples nor frames");
    if (sensor == sensors.end())
        throw std::invalid_argument(fmt::format("nothing to plot: the session has no sensor {}", *options.sensor));
    const Picture picture(sensor->second, recording.extent(), options.limits);
    if (picture.isEmpty())
        throw std::invalid_argument(fmt::format("nothing to plot: the sensor has neither samples nor frames{}",
                                                options.limits.given() ? " between these times" : " with times"));

    const HallRows rows(picture);
    const std::string range = fmt::format("set xrange [{:.10g}:{:.10g}]\n", picture.from(), picture.to());
    return terminal(options.file) + rows.blocks() + kStyle + heading(picture, sensor->first, options) + range +
           "set format x ''\n" + marks(picture) + placeAt(0.65, 0.91) + axisPanel(rows, picture, &Point::x, 2) +
           "unset label\nunset key\n" + placeAt(0.365, 0.625) + axisPanel(rows, picture, &Point::y, 3) +
           framePanel(picture) + "unset multiplot\n";
}

void plot(const std::string& script, const std::string& file) {
    const std::string content = endsAs(file, ".gp") ? script : drawn(script, file);
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    if (!out || !(out << content).flush()) throw StreamError(file + ": cannot be written");
}

}  // namespace replay
