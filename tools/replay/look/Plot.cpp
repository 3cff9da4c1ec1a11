#include "tools/replay/look/Plot.h"

#include <fstream>
#include <stdexcept>
#include <string_view>

#include "tools/replay/Errors.h"
#include "tools/replay/look/Gnuplot.h"
#include "tools/replay/look/Picture.h"

namespace replay {
namespace {

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

std::string dataBlock(const char* name, const std::string& rows) {
    return std::string("$") + name + " << EOD\n" + rows + "EOD\n";
}

std::string terminal(const std::string& file) {
    if (endsAs(file, ".png"))
        return "set terminal pngcairo size 1600,1000 font 'sans,12'\nset output " + singleQuoted(file) + "\n";
    if (endsAs(file, ".svg")) {
        return "set terminal svg size 1600,1000 font 'sans,14' background 'white'\nset output " + singleQuoted(file) +
               "\n";
    }
    return {};
}

// The part of the script that is the same for every picture.
constexpr const char* kStyle = R"(set encoding utf8
set multiplot
set lmargin at screen 0.065
set rmargin at screen 0.985
set grid xtics ytics lc rgb '#dddddd' lt 1
set border lc rgb '#666666'
set tics textcolor rgb '#333333'
set y2range [0:1]
set key at screen 0.985,0.985 right top horizontal noenhanced samplen 2 textcolor rgb '#333333'
)";

// Puts the next panel between two heights of the picture.
std::string placeAt(double bottom, double top) {
    return "set tmargin at screen " + number(top) + "\nset bmargin at screen " + number(bottom) + "\n";
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

// What the picture shows, as rows of numbers.
struct Rows {
    explicit Rows(const Picture& picture)
        : samples(picture.samples()),
          spans(picture.spans()),
          positions(picture.positions()),
          exposures(picture.exposureBoxes()),
          readouts(picture.readoutBoxes()),
          missed(picture.missedBoxes()),
          reasons(picture.reasons()) {}

    std::string blocks() const {
        return dataBlock("samples", samples) + dataBlock("spans", spans) + dataBlock("positions", positions) +
               dataBlock("exposures", exposures) + dataBlock("readouts", readouts) + dataBlock("missed", missed) +
               dataBlock("reasons", reasons);
    }

    const std::string samples, spans, positions, exposures, readouts, missed, reasons;
};

// One axis of the hall sensor; `column` is that of samples and positions.
std::string axisPanel(const Rows& rows, const Picture& picture, const char* name, int column) {
    const std::string c = std::to_string(column);
    Elements elements;
    elements.add(rows.missed,
                 "$missed using 3:(0):(0):(1) axes x1y2 with vectors nohead lc rgb '#d62728' dt 2 "
                 "title 'no position'");
    elements.add(rows.samples, "$samples using 1:" + c + " with lines lw 1 lc rgb '#8494a4' title 'hall samples'");
    elements.add(rows.spans, "$spans using 1:" + c + " with lines lw 3 lc rgb '#6db3f2' title 'span used'");
    // Where frames are close, the bars over their spans would hide everything else.
    elements.add(rows.positions,
                 "$positions using 1:" + c +
                     (picture.isDetailed() ? ":4:5 with xerrorbars ps 0.7 lw 1.4" : " with points ps 0.2") +
                     " pt 7 lc rgb '#12304f' title 'position reported'");
    const bool measured = !rows.samples.empty() || !rows.spans.empty() || !rows.positions.empty();
    const std::string range = measured ? "set yrange [*:*]\n" : "set yrange [0:1]\n";
    return range + "set ylabel 'hall " + name + " (ois" + (column == 2 ? "X" : "Y") + ", as delivered)'\n" +
           elements.text();
}

std::string framePanel(const Rows& rows, const Picture& picture) {
    const auto boxes = [](const char* style) {
        return std::string(" using 1:2:3:4:5:6 with boxxyerror fs ") + style + " title ";
    };
    Elements elements;
    if (picture.isDetailed()) {
        elements.add(rows.exposures, "$exposures" + boxes("solid border lc rgb '#ffffff' fc rgb '#f2b84b'") +
                                         "'exposure of the first row'");
        elements.add(rows.readouts,
                     "$readouts" + boxes("solid border lc rgb '#ffffff' fc rgb '#8cc29a'") + "'readout'");
        elements.add(rows.missed, "$missed" + boxes("empty lc rgb '#d62728' lw 2.5") + "'no position'");
    } else {
        elements.add(rows.exposures,
                     "$exposures" + boxes("solid noborder fc rgb '#8cc29a'") + "'exposure and readout'");
        elements.add(rows.readouts,
                     "$readouts using 1:2:3:4:5:6 with boxxyerror fs solid noborder fc rgb '#8cc29a' notitle");
        elements.add(rows.missed,
                     "$missed" + boxes("solid border lc rgb '#d62728' fc rgb '#d62728'") + "'no position'");
    }
    elements.add(rows.reasons, "$reasons using 1:2:3 with labels left font ',11' tc rgb '#a01015' noenhanced notitle");
    return "set yrange [-0.5:" + number(picture.top()) + "]\nunset ytics\nset ylabel 'frames'\n" +
           "set xlabel 'ms from the first sample'\nset format x '%g'\n" + elements.text();
}

std::string heading(const Picture& picture, std::int32_t sensor, const PlotOptions& options) {
    const std::string text = options.title + ", sensor " + std::to_string(sensor) + ": " +
                             std::to_string(picture.exposures()) + " exposures, " + std::to_string(picture.unserved()) +
                             " without a position";
    return "set label 1 " + singleQuoted(text) + " at screen 0.065,0.975 noenhanced font ',14'\n";
}

}  // namespace

bool isPlotName(const std::string& file) {
    return endsAs(file, ".svg") || endsAs(file, ".png") || endsAs(file, ".gp");
}

std::string plotScript(const Recording& recording, const PlotOptions& options) {
    const auto& sensors = recording.sensors();
    const auto sensor = options.sensor ? sensors.find(*options.sensor) : sensors.begin();
    if (sensors.empty())
        throw std::invalid_argument("nothing to plot: the session takes no samples and asks for no frame");
    if (sensor == sensors.end()) throw std::invalid_argument("nothing to plot: the session has no such sensor");
    const Picture picture(sensor->second, recording.beginNs(), options.fromMs, options.toMs);
    if (picture.isEmpty()) throw std::invalid_argument("nothing to plot between these times");

    const Rows rows(picture);
    const std::string range = "set xrange [" + number(picture.from()) + ":" + number(picture.to()) + "]\n";
    return terminal(options.file) + rows.blocks() + kStyle + heading(picture, sensor->first, options) + range +
           "set format x ''\n" + placeAt(0.66, 0.945) + axisPanel(rows, picture, "x", 2) +
           "unset label 1\nunset key\n" + placeAt(0.355, 0.64) + axisPanel(rows, picture, "y", 3) +
           "set key at screen 0.985,0.34\n" + placeAt(0.075, 0.3) + framePanel(rows, picture) + "unset multiplot\n";
}

void plot(const Recording& recording, const PlotOptions& options) {
    const std::string script = plotScript(recording, options);
    if (!endsAs(options.file, ".gp")) return runGnuplot(script);
    std::ofstream out(options.file, std::ios::binary | std::ios::trunc);
    if (!out || !(out << script).flush()) throw StreamError(options.file + ": cannot be written");
}

}  // namespace replay
