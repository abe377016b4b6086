// The Windows that the library's code meets on the native machine, as far as loading libraries with care goes: its
// version, registry, files, signatures and libraries. A test arranges it and reads from `trace` what was asked of it,
// in order.
//
//     FakeSystem& system = TheSystem();
//     system.isWindows8 = false;
//     EXPECT_EQ(loader.Load(L"probe.dll", 0), nullptr);
//     EXPECT_EQ(system.trace, Trace({L"load C:\\Windows\\system32\\msasn1.dll 0", ...}));
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/registry.h"

namespace gputune::test {

using Trace = std::vector<std::wstring>;

// A library that can be loaded. Its address is the handle.
struct FakeLibrary {
    std::map<std::string, void*> entryPoints;
    int loads = 0;  // less the unloads
};

struct FakeSystem {
    // What the version query tells the process.
    bool isWindows8 = true;
    std::uint32_t build = 19045;

    // Empty: the system does not tell.
    std::wstring systemDirectory = L"C:\\Windows\\system32";
    std::wstring hostExecutable = L"C:\\Host\\host.exe";

    // By key, or by key, backslash and value, spelled as the code under test spells them. All others are absent.
    std::map<std::wstring, platform::RegistryAnswer> subkeys;
    std::map<std::wstring, platform::RegistryAnswer> values;

    // What looking for a file answers: 0, or the error code. Other files are absent.
    std::map<std::wstring, std::uint32_t> files;
    std::set<std::wstring> trustedFiles;

    // By what the loader is asked for, name or path, spelled as the code under test spells it. What is in neither is
    // absent, but for the scripted libraries of the machine.
    std::map<std::wstring, FakeLibrary> libraries;
    std::map<std::wstring, std::uint32_t> loadErrors;

    // Called in every load and sleep, on the thread that asked.
    std::function<void()> inLoad;
    std::function<void(std::uint32_t milliseconds)> inSleep;

    // "load <what> <flags, hexadecimal>", "unload <what>", "trust <path>", "sleep <milliseconds>", "build <number>",
    // "version <major>.<minor>", "file <path>", "value <key\value>".
    Trace trace;

    // The lines that begin so.
    Trace TraceOf(std::wstring const& beginning);
    void Note(std::wstring const& line);
};

// The one that the code under test runs on. Assigning a new one starts afresh.
FakeSystem& TheSystem();

}  // namespace gputune::test
