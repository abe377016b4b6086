// The library's log, entry by entry, for what its functions do not return. Independent of the operating system.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace gputune::tool {

struct LogEntry {
    std::string line;     // as a whole, without its end
    std::string tag;      // the line itself where it has no message
    std::string message;  // what stands behind " ... "
};

using LogEntries = std::vector<LogEntry>;

// A last line without an end is left out: the library is still writing it.
LogEntries ReadLogEntries(std::string_view text);

// The message of the last entry whose tag ends like this.
std::optional<std::string> LastMessage(LogEntries const& entries, std::string_view tagEnd);
// The number that the text begins with.
std::optional<double> LeadingNumber(std::string_view text);
// The whole number behind the word: NumberBehind("plan GpuClock=1400, GpuVol=1100", "GpuVol=") is 1100.
std::optional<int> NumberBehind(std::string_view text, std::string_view word);

}  // namespace gputune::tool
