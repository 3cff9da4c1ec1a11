// How the host's services record what they are asked.
#pragma once

#include <atomic>
#include <concepts>
#include <string>
#include <string_view>
#include <utility>

#include "platform/host/HostState.h"
#include "platform/host/Journal.h"

namespace host::internal {

// True while there is a journal.
extern std::atomic<bool> gJournalOn;

// One operation under way: filed in the journal when it ends, however it ends. Costs one load while there is none.
class Recorded {
public:
    // Relaxed: the flag publishes nothing, entries are filed under a lock.
    explicit Recorded(Operation operation) : mOn(gJournalOn.load(std::memory_order_relaxed)), mEntry{operation, {}} {}
    ~Recorded() {
        if (mOn) file();
    }
    Recorded(const Recorded&) = delete;
    Recorded& operator=(const Recorded&) = delete;

    // Adds an argument, or what a function gives that is called only for a journal. A lost one is no reason to fail the
    // operation.
    template <typename T>
    Recorded& with(std::string_view name, const T& value) noexcept try {
        if (mOn) mEntry.fields.emplace_back(name, valueOf(value));
        return *this;
    } catch (...) {
        return *this;
    }
    // After the arguments: the hook's turn. Throws what it throws.
    void begin() const { enter(mEntry.operation); }
    // Adds what the operation answers, and gives it back.
    template <typename T>
    T answer(std::string_view name, T value) noexcept {
        with(name, value);
        mAnswered = true;
        return value;
    }
    template <typename T>
    T* answer(T* object) noexcept {
        answer("result", object != nullptr);
        return object;
    }
    void done() noexcept { mAnswered = true; }

private:
    static JournalValue valueOf(bool value) { return value; }
    static JournalValue valueOf(std::signed_integral auto value) { return std::int64_t{value}; }
    static JournalValue valueOf(std::unsigned_integral auto value) { return std::uint64_t{value}; }
    static JournalValue valueOf(const char* text) { return std::string(text != nullptr ? text : ""); }
    static JournalValue valueOf(std::string_view text) { return std::string(text); }
    static JournalValue valueOf(const std::invocable auto& values) { return values(); }

    void file() noexcept;

    const bool mOn;
    bool mAnswered = false;
    JournalEntry mEntry;
};

}  // namespace host::internal
