// The journal of the host platform: what the library asked of it, with which arguments, and what it answered. Off until
// switched on, and then costs nothing. Thread safe; one journal for the process.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/host/Host.h"

namespace host {

// A flag, a number, a text, or the values that were written to metadata.
using JournalValue = std::variant<bool, std::int64_t, std::uint64_t, std::string, MetadataValues>;

// One operation. The fields are its arguments in the order of its declaration, then what it answered, or "threw" when
// an exception left it instead. docs/session-format.md lists them. Addresses are never among them: of memory that an
// argument points to, the journal holds what the operation is told there, or whether there is any.
struct JournalEntry {
    Operation operation;
    std::vector<std::pair<std::string_view, JournalValue>> fields;
};

// Begins a new journal, or ends it; entries not taken yet are lost. reset() ends it.
void setJournal(bool on);

// The entries since the last call, in the order in which the operations ended: those inside a burst stand before it. An
// entry for which there is no memory is lost. The log's operations are not recorded: the sink has what they bring.
std::vector<JournalEntry> takeJournal();

// An operation as declared under platform/, for example "SensorProvider::enableSensor".
std::string_view nameOf(Operation operation);

}  // namespace host
