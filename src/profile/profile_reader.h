// From the text of the profile file to the profile of one board. It logs nothing and knows neither the file's place nor
// the operating system.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "profile/profile_format.h"
#include "records/records.h"

namespace gputune::profile {

enum class Outcome {
    Unreadable,    // no XML, or beyond the limits (profile_format.h)
    NoRoot,        // a document without an element
    NoEntries,     // a root without elements in it
    NoMatch,       // neither the board's entry nor a default entry
    DefaultEntry,  // the record holds the default entry
    BoardEntry,    // the record holds the board's own entry
};

struct Lookup {
    Outcome outcome = Outcome::Unreadable;
    PredefinedPerformanceParameter record{};  // all zero unless an entry was read
};

// The whole file from its present position on, which is not closed. Nothing when it cannot be read or is longer than
// kLargestDocument; also for a null file.
std::optional<std::string> ReadDocument(std::FILE* file);

// The board's entry, else the last default entry. What follows the board's entry is not read. Throws
// HexLongError for an "Id" before it that is no 32-bit hexadecimal number.
Lookup FindProfile(std::string_view document, std::uint32_t hwid);

}  // namespace gputune::profile
