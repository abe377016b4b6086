// Conversions between the encodings of Windows and UTF-8, in which the tool keeps all its texts.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace gputune::tool {

std::string Utf8FromWide(std::wstring_view text);
std::wstring WideFromUtf8(std::string_view text);
// A NUL-terminated text of at most `capacity` bytes in the system's ANSI code page, as the library delivers them.
std::string Utf8FromAnsi(char const* text, std::size_t capacity);
// What the system says about an error code of GetLastError, with the code.
std::string SystemMessage(unsigned long error);

}  // namespace gputune::tool
