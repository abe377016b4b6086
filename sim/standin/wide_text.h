// Texts to and from the system's wide characters.
#pragma once

#include <windows.h>

#include <string>

namespace gputune::sim {

inline std::wstring ToWide(std::string const& utf8) {
    int const size = static_cast<int>(utf8.size());
    int const length = ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), length);
    return wide;
}

// codePage: CP_UTF8 or CP_ACP.
inline std::string FromWide(std::wstring const& wide, UINT codePage) {
    int const size = static_cast<int>(wide.size());
    int const length = ::WideCharToMultiByte(codePage, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(length), '\0');
    ::WideCharToMultiByte(codePage, 0, wide.data(), size, text.data(), length, nullptr, nullptr);
    return text;
}

}  // namespace gputune::sim
