// Finds records that a capture holds twice: a recording that was interrupted begins again with what the log's buffer
// still holds. Only forms with a clock show it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/import/LogLine.h"

namespace replay::import {

class RepeatFilter {
public:
    enum class Verdict {
        kNew,
        kBack,      // new, though its time is before that of the record before
        kRepeated,  // the record has been there
        kLate,      // among repeated records, but it was not there the first time
    };
    Verdict check(const LogLine& line);

    // The clock of the newest record.
    const std::string& clock() const { return mClock; }

private:
    static constexpr std::size_t kKept = 1000000;  // records that are remembered

    std::uint64_t keyAt(std::uint64_t number) const { return mKeys[number % kKept]; }
    // The number of the record with this key, searched up to the newest one; the number of records when there is none.
    std::uint64_t findUp(std::uint64_t from, std::uint64_t key) const;
    std::uint64_t findDown(std::uint64_t key) const;
    void remember(std::string_view clock, std::uint64_t key);

    std::vector<std::uint64_t> mKeys;
    std::uint64_t mRecords = 0;  // remembered so far
    std::uint64_t mNext = 0;     // where the repetition has come to
    bool mRepeating = false;
    std::string mClock;
};

}  // namespace replay::import
