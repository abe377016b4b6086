#include "platform/paths.h"

#include <windows.h>

#include "platform/last_error.h"

namespace gputune::platform {

namespace {

// The longest path Windows itself knows, in characters.
constexpr std::size_t kLongestPath = 32768;

}  // namespace

std::wstring HostExecutable() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        DWORD const length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) {
            return {};
        }
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        if (path.size() >= kLongestPath) {
            return {};
        }
        path.resize(path.size() * 2);
    }
}

std::wstring HostDirectory() {
    std::wstring const path = HostExecutable();
    std::size_t const separator = path.find_last_of(L"\\/");
    return separator == std::wstring::npos ? std::wstring() : path.substr(0, separator);
}

std::wstring SystemDirectory() {
    wchar_t path[MAX_PATH];
    UINT const length = ::GetSystemDirectoryW(path, MAX_PATH);
    return length < MAX_PATH ? std::wstring(path, length) : std::wstring();
}

std::FILE* OpenForReading(std::wstring const& path) {
    return ::_wfopen(path.c_str(), L"rb");
}

std::uint32_t FindFile(std::wstring const& path) {
    DWORD const attributes = ::GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return ::GetLastError();
    }
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? kErrorFileNotFound : 0;
}

}  // namespace gputune::platform
