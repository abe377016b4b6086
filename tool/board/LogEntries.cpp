#include "tool/board/LogEntries.h"

#include <algorithm>

#include "tool/values/Numbers.h"

namespace gputune::tool {

namespace {

constexpr std::string_view kSeparator = " ... ";

}  // namespace

LogEntries ReadLogEntries(std::string_view text) {
    LogEntries entries;
    for (;;) {
        std::size_t const end = text.find('\n');
        if (end == std::string_view::npos) {
            return entries;
        }
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end + 1);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        std::size_t const split = line.find(kSeparator);
        bool const hasMessage = split != std::string_view::npos;
        entries.push_back({std::string(line), std::string(line.substr(0, split)),
                           std::string(hasMessage ? line.substr(split + kSeparator.size()) : "")});
    }
}

std::optional<std::string> LastMessage(LogEntries const& entries, std::string_view tagEnd) {
    auto const found = std::find_if(entries.rbegin(), entries.rend(),
                                    [tagEnd](LogEntry const& entry) { return entry.tag.ends_with(tagEnd); });
    return found == entries.rend() ? std::nullopt : std::optional(found->message);
}

std::optional<double> LeadingNumber(std::string_view text) {
    return TakeNumber<double>(text);
}

std::optional<int> NumberBehind(std::string_view text, std::string_view word) {
    std::size_t const found = text.find(word);
    std::string_view rest = text.substr(found == std::string_view::npos ? text.size() : found + word.size());
    return TakeNumber<int>(rest);
}

}  // namespace gputune::tool
