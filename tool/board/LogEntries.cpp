#include "tool/board/LogEntries.h"

#include <algorithm>
#include <charconv>

namespace gputune::tool {

namespace {

constexpr std::string_view separator = " ... ";

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
        std::size_t const split = line.find(separator);
        bool const hasMessage = split != std::string_view::npos;
        entries.push_back({std::string(line), std::string(line.substr(0, split)),
                           std::string(hasMessage ? line.substr(split + separator.size()) : "")});
    }
}

std::optional<std::string> LastMessage(LogEntries const& entries, std::string_view tagEnd) {
    auto const found = std::find_if(entries.rbegin(), entries.rend(),
                                    [tagEnd](LogEntry const& entry) { return entry.tag.ends_with(tagEnd); });
    return found == entries.rend() ? std::nullopt : std::optional(found->message);
}

std::optional<double> LeadingNumber(std::string_view text) {
    double value = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} ? std::optional(value) : std::nullopt;
}

std::optional<int> NumberBehind(std::string_view text, std::string_view word) {
    std::size_t const found = text.find(word);
    if (found == std::string_view::npos) {
        return std::nullopt;
    }
    text.remove_prefix(found + word.size());
    int value = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} ? std::optional(value) : std::nullopt;
}

}  // namespace gputune::tool
