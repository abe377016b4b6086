// Texts to and from the system's wide characters. codePage: that of the narrow text, CP_UTF8 or CP_ACP.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace gputune::sim {

inline std::wstring ToWide(std::string_view text, UINT codePage = CP_UTF8) {
    int const size = static_cast<int>(text.size());
    int const length = ::MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    ::MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), length);
    return wide;
}

inline std::string FromWide(std::wstring_view wide, UINT codePage = CP_UTF8) {
    int const size = static_cast<int>(wide.size());
    int const length = ::WideCharToMultiByte(codePage, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(length), '\0');
    ::WideCharToMultiByte(codePage, 0, wide.data(), size, text.data(), length, nullptr, nullptr);
    return text;
}

}  // namespace gputune::sim
