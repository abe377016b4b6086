// What tests of the control library's functions share: a client of them.
#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "intel_board.h"

namespace gputune::test {

inline int Number(void const* pointer) {
    return static_cast<int>(reinterpret_cast<std::uintptr_t>(pointer));
}

// ctl_runtime_path_args_t: size, version, identifier, the path at 24, device and revision.
struct PathArgs {
    std::uint32_t words[8] = {32, 0, 0xA0A0A0A0, 0xB0B0B0B0, 0xC0C0C0C0, 0xD0D0D0D0, 0, 0x12345678};

    explicit PathArgs(wchar_t const* path) { SetPath(path); }
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

inline std::wstring const kName = L"ControlLib32.dll";

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
