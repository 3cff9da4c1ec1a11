// Messages of a thread in, calls out: what the tests of the assemblers stand on.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/import/CaptureReader.h"

namespace assembly {

using namespace replay::import;

// A message of the thread `tid`; without one, in a form that names no threads.
struct Message {
    std::string text;
    int tid = 7;
};
using Messages = std::vector<Message>;

std::string sample(std::size_t index, std::int64_t us, std::string_view x = "1.500000");
std::string filed(std::uint32_t frame, std::size_t count, std::int64_t firstUs, std::int64_t lastUs);
std::string updated(std::uint32_t frame, std::size_t count, std::size_t queue, std::int64_t firstUs,
                    std::int64_t lastUs);
// A hand-over of `count` samples, 1 ms apart.
Messages handOver(std::uint32_t frame, std::size_t queue, std::int64_t firstUs, std::size_t count,
                  std::string_view x = "1.500000");

// A frame of a sensor with all its messages; its exposure starts at `startUs`, its start of frame 1 ms later. The lists
// that its calculations give hold 100 samples at x, 1 ms apart, from 50 ms before. `shutter`: 4 ms.
Messages frame(int sensor, std::int64_t startUs, std::size_t total, std::string_view x = "1.500000");

// What the messages say, a word for each call, separated by spaces: "3:F40" for a hand-over of three samples, "-1" for
// skipped ones, "!" where its last message is missing, "E" for one without samples; "W", "T", "M" for a frame that is
// written, has timing, has a mode, with its exposures in brackets, "s1t5" for sensor and type, and then "p" for a
// position, "n" for none, "?" for an unknown result, "*" where every message is there; "R0", "U0" for monitors, "O0"
// for OTP memories, and the text of a doubt in quotes.
std::string read(const Messages& messages);

// Changes a list of messages.
Messages without(Messages messages, std::string_view part);
Messages joined(std::initializer_list<Messages> parts);

}  // namespace assembly
