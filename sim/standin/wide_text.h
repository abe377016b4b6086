// The system's wide characters of a text in UTF-8.
#pragma once

#include <windows.h>

#include <string>

namespace gputune::sim {

inline std::wstring Utf8ToWide(std::string const& utf8) {
    int const size = static_cast<int>(utf8.size());
    int const length = ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), length);
    return wide;
}

}  // namespace gputune::sim
