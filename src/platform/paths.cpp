#include "platform/paths.h"

#include <windows.h>

namespace gputune::platform {

namespace {

// The longest path Windows itself knows, in characters.
constexpr std::size_t kLongestPath = 32768;

}  // namespace

std::wstring HostDirectory() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        DWORD const length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) {
            return {};
        }
        if (length < path.size()) {
            path.resize(length);
            break;
        }
        if (path.size() >= kLongestPath) {
            return {};
        }
        path.resize(path.size() * 2);
    }
    std::size_t const separator = path.find_last_of(L"\\/");
    return separator == std::wstring::npos ? std::wstring() : path.substr(0, separator);
}

std::FILE* OpenForReading(std::wstring const& path) {
    return ::_wfopen(path.c_str(), L"rb");
}

}  // namespace gputune::platform
