// The program's own path and the system's, and files and registry values that last as long as an object.
#pragma once

#include <windows.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "sim/host/module_path.h"

namespace gputune::test {

inline std::filesystem::path System32() {
    wchar_t path[MAX_PATH];
    return std::wstring(path, ::GetSystemDirectoryW(path, MAX_PATH));
}

inline bool IsLoaded(std::filesystem::path const& name) {
    return ::GetModuleHandleW(name.c_str()) != nullptr;
}

// A copy of the planted library. Unload it before the object is destroyed.
class PlantedFile {
public:
    explicit PlantedFile(std::filesystem::path path) : path_(std::move(path)) {
        std::filesystem::create_directories(path_.parent_path());
        // A test that was stopped may have left one.
        std::filesystem::remove(path_);
        std::filesystem::copy_file(sim::ModulePath().parent_path() / "planted.dll", path_);
    }
    ~PlantedFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    PlantedFile(PlantedFile const&) = delete;
    PlantedFile& operator=(PlantedFile const&) = delete;

    std::filesystem::path const& Path() const { return path_; }

private:
    std::filesystem::path path_;
};

// A key below HKEY_LOCAL_MACHINE, which is deleted with all that is in it.
class MachineKey {
public:
    explicit MachineKey(std::wstring path) : path_(std::move(path)) {
        if (::RegCreateKeyExW(HKEY_LOCAL_MACHINE, path_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key_,
                              nullptr) != ERROR_SUCCESS) {
            throw std::runtime_error("cannot write the registry");
        }
    }
    ~MachineKey() {
        ::RegCloseKey(key_);
        ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, path_.c_str());
    }
    MachineKey(MachineKey const&) = delete;
    MachineKey& operator=(MachineKey const&) = delete;

    // Stores exactly these characters: add terminators as wanted.
    void Set(wchar_t const* value, DWORD type, std::wstring const& characters) {
        ::RegSetValueExW(key_, value, 0, type, reinterpret_cast<BYTE const*>(characters.data()),
                         static_cast<DWORD>(characters.size() * sizeof(wchar_t)));
    }

private:
    std::wstring path_;
    HKEY key_ = nullptr;
};

}  // namespace gputune::test
