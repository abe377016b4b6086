// The entries of the library's log.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace gputune::tool {

struct LogEntry {
    std::string line;     // the whole line, without its line end
    std::string tag;      // what stands before " ... "; the whole line when there is no message
    std::string message;  // what stands behind " ... "
};

using LogEntries = std::vector<LogEntry>;

// Leaves out a last line without a line end, which the library is still writing.
LogEntries ReadLogEntries(std::string_view text);

// The message of the last entry whose tag ends in `tagEnd`.
std::optional<std::string> LastMessage(LogEntries const& entries, std::string_view tagEnd);
// The number that the text begins with.
std::optional<double> LeadingNumber(std::string_view text);
// The whole number behind the word: NumberBehind("plan GpuClock=1400, GpuVol=1100", "GpuVol=") is 1100.
std::optional<int> NumberBehind(std::string_view text, std::string_view word);

}  // namespace gputune::tool
