// What an import found: everything that is uncertain, counted and named, and what became of the exposures.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "tools/import/CaptureReader.h"

namespace replay::import {

class Report {
public:
    // Something at this line of the capture is uncertain.
    void notice(std::size_t line, const std::string& text);
    // Something about the capture as a whole is; `text` says what to do.
    void general(std::string_view text) { mGeneral.emplace_back(text); }

    // Notices of both kinds.
    std::size_t notices() const { return mNotices + mGeneral.size(); }
    // Prints the notices, the first of them one by one, and the table of what was found.
    void print(std::ostream& out, const std::string& name, const CaptureFacts& facts) const;

    std::size_t handOvers = 0;
    std::size_t handOversRepaired = 0;  // some samples, or all, are from lists of calculations
    std::size_t handOversLost = 0;
    std::size_t samplesRepaired = 0;
    std::size_t frames = 0;
    std::size_t framesLost = 0;    // their calls are not in the session
    std::size_t framesUntold = 0;  // they had their positions already; of which sensor, nothing tells
    std::size_t exact = 0;         // exposures whose result the session gives
    std::size_t repaired = 0;      // ... with repaired samples
    std::size_t different = 0;     // the session gives another result
    std::size_t resultless = 0;    // nothing tells what the device made of them, or for which frame
    std::size_t nobodys = 0;       // hand-overs for a sensor that no message names
    std::size_t ambiguous = 0;     // hand-overs that may be another sensor's

private:
    std::size_t mNotices = 0;
    std::vector<std::string> mFirst;
    std::vector<std::string> mGeneral;
};

}  // namespace replay::import
