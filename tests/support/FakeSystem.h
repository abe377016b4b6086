// The Windows that the library's code runs on in native tests: version, registry, files, signatures and libraries. A
// test sets it up, and reads from `trace` what the code asked of it, in order.
//
//     FakeSystem& system = TheSystem();
//     system.isWindows8 = false;
//     EXPECT_EQ(loader.Load(L"probe.dll", 0), nullptr);
//     EXPECT_EQ(system.trace, Trace({L"load C:\\Windows\\system32\\msasn1.dll 0", ...}));
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
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
    // What the version queries answer.
    bool isWindows8 = true;
    std::uint32_t build = 19045;

    // Empty: the query for it fails.
    std::wstring systemDirectory = L"C:\\Windows\\system32";
    std::wstring hostExecutable = L"C:\\Host\\host.exe";

    // By key, or by key, backslash and value name, in the spelling of the code under test. All others are absent.
    std::map<std::wstring, platform::RegistryAnswer> subkeys;
    std::map<std::wstring, platform::RegistryAnswer> values;

    // What FindFile answers for a path: 0, or the error code. Other files are absent.
    std::map<std::wstring, std::uint32_t> files;
    std::set<std::wstring> trustedFiles;

    // By the name or path that the loader is asked for, in the spelling of the code under test. What is in neither map
    // is absent, unless it is a scripted library of the machine (Machine.h).
    std::map<std::wstring, FakeLibrary> libraries;
    std::map<std::wstring, std::uint32_t> loadErrors;

    // Called during every load and every sleep, on the thread that asked for it.
    std::function<void()> inLoad;
    std::function<void(std::uint32_t milliseconds)> inSleep;

    // "load <what> <flags, hexadecimal>", "unload <what>", "trust <path>", "sleep <milliseconds>", "build <number>",
    // "version <major>.<minor>", "file <path>", "value <key\value>".
    Trace trace;

    // The lines of `trace` that begin so.
    Trace TraceOf(std::wstring const& beginning);
    void Note(std::wstring const& line);
};

// The one that the code under test runs on. Assign a new one to start afresh.
FakeSystem& TheSystem();

// The following are for implementations of platform/library.h. They return std::nullopt or false for a library that is
// not one of TheSystem()'s.

// The handle; null when the load fails as loadErrors says. The last error is set.
std::optional<void*> LoadFakeLibrary(std::wstring const& what, std::uint32_t flags);

bool UnloadFakeLibrary(void* handle);

std::optional<void*> FindInFakeLibrary(void* handle, char const* name);

}  // namespace gputune::test
