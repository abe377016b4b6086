// Texts of files as messages and pages show them. Independent of the operating system.
#pragma once

#include <string>
#include <string_view>

namespace gputune::tool {

// UTF-8 without control characters: these, and bytes that are no UTF-8, become "\x00", "\xE9".
std::string Printable(std::string_view text);

// In quotation marks and printable; of a text with more than 40 characters the first 40, and "...".
std::string Quoted(std::string_view text);

}  // namespace gputune::tool
