// Libraries that a benchmark loads. Everything here throws when it fails: the figures of an incomplete machine would be
// worth nothing.
#pragma once

#include <windows.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "sim/host/module_path.h"

namespace gputune::bench {

inline HMODULE Load(std::filesystem::path const& path) {
    HMODULE const module = ::LoadLibraryW(path.c_str());
    if (module == nullptr) {
        throw std::runtime_error("cannot load " + path.string());
    }
    return module;
}

// A library in the folder of the program.
inline HMODULE LoadOwn(std::wstring const& file) {
    return Load(sim::ModulePath().parent_path() / file);
}

// What is not the same in both widths: build/bench/x64 has the programs for 64-bit processes, build/bin/x64 their
// library.
inline constexpr bool kIs64Bit = sizeof(void*) == 8;

inline HMODULE LoadLibraryUnderTest() {
    std::filesystem::path const programs = sim::ModulePath().parent_path();
    return Load(kIs64Bit ? programs.parent_path().parent_path() / "bin" / "x64" / "gputune.dll"
                         : programs.parent_path() / "bin" / "gputune.dll");
}

template <class Function>
Function Find(HMODULE module, char const* name) {
    auto* const address = reinterpret_cast<void*>(::GetProcAddress(module, name));
    if (address == nullptr) {
        throw std::runtime_error(std::string("no export ") + name);
    }
    return reinterpret_cast<Function>(address);
}

}  // namespace gputune::bench
