// What tests of the control library's functions share: a client of them.
#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "intel_board.h"

namespace gputune::test {

inline Word Number(void const* pointer) {
    return reinterpret_cast<Word>(pointer);
}

// ctl_runtime_path_args_t: size, version, identifier, the path at 24, device and revision.
struct PathArgs {
    static constexpr std::uint32_t kSize = sizeof(void*) == 4 ? 32 : 40;
    std::uint32_t words[kSize / 4] = {kSize, 0, 0xA0A0A0A0, 0xB0B0B0B0, 0xC0C0C0C0, 0xD0D0D0D0};

    explicit PathArgs(wchar_t const* path) {
        words[kSize / 4 - (sizeof(void*) == 4 ? 1 : 2)] = 0x12345678;
        SetPath(path);
    }
    void SetPath(wchar_t const* path) { std::memcpy(&words[6], &path, sizeof path); }
};

inline int Init(Machine& machine, InitArgs args = InitArgs()) {
    void* handle = nullptr;
    return machine.Ctl("ctlInit", &args, &handle);
}

inline int Close(Machine& machine, Handle handle = kIntelApi) {
    return machine.Ctl("ctlClose", handle);
}

inline int SetPath(Machine& machine, PathArgs& path) {
    return machine.Ctl("ctlSetRuntimePath", &path);
}

inline Machine ControlLibrary() {
    return Machine(Machine::Library::Intel);
}

inline std::wstring const kName = sizeof(void*) == 4 ? L"ControlLib32.dll" : L"ControlLib.dll";

inline void ExpectLoads(Machine& machine, std::vector<std::wstring> const& paths) {
    std::vector<LibraryLoad> const loads = machine.TakeLoads();
    ASSERT_EQ(loads.size(), paths.size());
    for (std::size_t index = 0; index < loads.size(); ++index) {
        EXPECT_EQ(loads[index].path, paths[index]);
        EXPECT_EQ(loads[index].flags, 0x800U) << "the system directory only";
    }
}

// Those that are passed on as they are.
inline Lines ForwardedNames() {
    Lines names;
    for (std::string const name : {
#define CTL_FORWARD(name, ...) #name,
#include "intel/ctl_functions.inc"
         }) {
        if (name != "ctlInit" && name != "ctlClose" && name != "ctlSetRuntimePath") {
            names.push_back(name);
        }
    }
    return names;
}

}  // namespace gputune::test
