#include "platform/text.h"

#include <windows.h>

#include <climits>

namespace gputune::platform {

namespace {

// The conversions count in int; no text of this library comes near the limit.
int ClampLength(std::size_t length) {
    return length > INT_MAX / 4 ? INT_MAX / 4 : static_cast<int>(length);
}

}  // namespace

std::string ToNarrow(std::wstring_view text) {
    int const length = ClampLength(text.size());
    int const needed = ::WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(needed), '\0');
    ::WideCharToMultiByte(CP_ACP, 0, text.data(), length, narrow.data(), needed, nullptr, nullptr);
    return narrow;
}

std::wstring ToWide(std::string_view text) {
    int const length = ClampLength(text.size());
    int const needed = ::MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(needed), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, text.data(), length, wide.data(), needed);
    return wide;
}

}  // namespace gputune::platform
