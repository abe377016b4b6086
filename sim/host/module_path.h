// Where a module of this process lies.
#pragma once

#include <windows.h>

#include <filesystem>
#include <string>

namespace gputune::sim {

// The path of the module's file; without a module, of the program's.
inline std::filesystem::path ModulePath(HMODULE module = nullptr) {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        DWORD const length = ::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

}  // namespace gputune::sim
