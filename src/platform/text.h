// Conversion between wide text and the system's narrow encoding (the ANSI code page).
#pragma once

#include <string>
#include <string_view>

namespace gputune::platform {

// What the narrow encoding cannot express becomes its default character.
std::string ToNarrow(std::wstring_view text);

std::wstring ToWide(std::string_view text);

}  // namespace gputune::platform
