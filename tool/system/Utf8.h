// Conversions between the encodings of Windows and UTF-8. All texts of the tool are UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace gputune::tool {

std::string Utf8FromWide(std::wstring_view text);
std::wstring WideFromUtf8(std::string_view text);
// From the system's ANSI code page, which the library's texts have. Reads `capacity` bytes at most, or up to a NUL.
std::string Utf8FromAnsi(char const* text, std::size_t capacity);
// The system's text for an error code of GetLastError, and the code.
std::string SystemMessage(unsigned long error);

}  // namespace gputune::tool
