// Makes texts from files fit for messages and pages.
#pragma once

#include <string>
#include <string_view>

namespace gputune::tool {

// UTF-8 without control characters. Control characters, and bytes that are no UTF-8, become "\x00", "\xE9".
std::string Printable(std::string_view text);

// Printable, in quotation marks. A longer text is cut after 40 characters and ends in "...".
std::string Quoted(std::string_view text);

}  // namespace gputune::tool
