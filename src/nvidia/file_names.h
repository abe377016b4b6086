// File names compare as the file system compares them: the case of letters does not count. The names compared here are
// plain ASCII.
#pragma once

#include <algorithm>
#include <string_view>

namespace gputune::nvidia {

constexpr wchar_t ToLower(wchar_t character) {
    return character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character - L'A' + L'a') : character;
}

constexpr bool SameName(std::wstring_view one, std::wstring_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](wchar_t a, wchar_t b) { return ToLower(a) == ToLower(b); });
}

constexpr bool BeginsWith(std::wstring_view name, std::wstring_view beginning) {
    return SameName(name.substr(0, beginning.size()), beginning);
}

constexpr bool EndsWith(std::wstring_view name, std::wstring_view end) {
    return name.size() >= end.size() && SameName(name.substr(name.size() - end.size()), end);
}

}  // namespace gputune::nvidia
