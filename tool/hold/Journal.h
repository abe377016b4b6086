// What a hold leaves on the disk before it sets anything, so that a later start can take it back.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tool/hold/Protocol.h"

namespace gputune::tool {

struct Journal {
    std::string boardFile{};       // of the options: the simulated board; UTF-8
    std::string boardState{};      // of the options; UTF-8
    std::optional<int> adapter{};  // of the options
    TakeBack takeBack{};
};

std::string ToText(Journal const& journal);
// Nothing when the text is no journal, or not all of one.
std::optional<Journal> ReadJournal(std::string_view text);

}  // namespace gputune::tool
