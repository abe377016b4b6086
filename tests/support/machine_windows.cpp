// Machine and machine_windows.h for tests of the real gputune.dll. The process registers a WMI locator of its own, and
// loads the scripted vendor libraries by full path, so that gputune.dll gets them when it loads them by name. It gets
// no other: where these tests run on a machine with a driver of its own, none of them may reach its board.
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "ImportHook.h"
#include "Machine.h"
#include "machine_windows.h"
#include "sim/host/module_path.h"

namespace gputune::test {

namespace {

// What is for 64-bit processes has a folder of its own in bin/ and in tests/.
constexpr wchar_t const* kWidth = sizeof(void*) == 4 ? L"" : L"x64";

// The folder that holds bin/ with the library under test, and tests/.
std::filesystem::path OutputDirectory() {
    std::filesystem::path directory = sim::ModulePath().parent_path();
    while (!std::filesystem::exists(directory / "bin" / kWidth / "gputune.dll")) {
        if (directory == directory.parent_path()) {
            throw std::runtime_error("no bin/gputune.dll in a folder above the test program");
        }
        directory = directory.parent_path();
    }
    return directory;
}

HMODULE Load(std::filesystem::path const& path) {
    HMODULE const module = ::LoadLibraryW(path.c_str());
    if (module == nullptr) {
        throw std::runtime_error("cannot load " + path.string() + ": error " + std::to_string(::GetLastError()));
    }
    return module;
}

template <class Function>
void Find(HMODULE module, char const* name, Function& function) {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
    if (function == nullptr) {
        throw std::runtime_error(std::string("no export ") + name);
    }
}

std::vector<LibraryLoad> g_loads;
std::vector<HMODULE> g_modules;  // those that are loaded now
int g_unloads = 0;

bool IsOfAVendor(std::filesystem::path const& file) {
    using Library = Machine::Library;
    constexpr Library kAll[] = {Library::AmdNewer, Library::AmdOlder, Library::Intel, Library::Nvidia};
    return std::any_of(std::begin(kAll), std::end(kAll), [&file](Library library) {
        return ::_wcsicmp(file.c_str(), std::filesystem::path(host::FileName(library)).c_str()) == 0;
    });
}

bool IsOfTheTests(HMODULE module) {
    std::filesystem::path const tests = OutputDirectory() / "tests";
    std::filesystem::path const path = sim::ModulePath(module);
    return std::mismatch(tests.begin(), tests.end(), path.begin(), path.end()).first == tests.end();
}

// A vendor's library is the one that the test has loaded; without one there is none.
HMODULE WINAPI GuardedLoad(wchar_t const* path, HANDLE file, DWORD flags) {
    std::filesystem::path const name = std::filesystem::path(path).filename();
    if (!IsOfAVendor(name)) {
        return ::LoadLibraryExW(path, file, flags);
    }
    HMODULE const loaded = ::GetModuleHandleW(name.c_str());
    if (loaded == nullptr || !IsOfTheTests(loaded)) {
        ::SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    return ::LoadLibraryW(sim::ModulePath(loaded).c_str());
}

HMODULE WINAPI GuardedPlainLoad(wchar_t const* path) {
    return GuardedLoad(path, nullptr, 0);
}

HMODULE WINAPI RecordingLoad(wchar_t const* path, HANDLE file, DWORD flags) {
    g_loads.push_back({path, flags});
    HMODULE const module = GuardedLoad(path, file, flags);
    if (module != nullptr) {
        g_modules.push_back(module);
    }
    return module;
}

BOOL WINAPI RecordingUnload(HMODULE module) {
    auto const found = std::find(g_modules.begin(), g_modules.end(), module);
    if (found != g_modules.end()) {
        g_modules.erase(found);
        ++g_unloads;
    }
    return ::FreeLibrary(module);
}

}  // namespace

sim::WmiStandIn& Wmi() {
    static sim::WmiStandIn wmi;
    return wmi;
}

HMODULE LibraryUnderTest() {
    // GPUTUNE_LIBRARY: the path of another build of the library, such as clang's.
    wchar_t const* const other = ::_wgetenv(L"GPUTUNE_LIBRARY");
    static HMODULE const module = Load(other != nullptr ? other : OutputDirectory() / "bin" / kWidth / "gputune.dll");
    return module;
}

Exports FindExports(HMODULE library) {
    ImportHook::ForGood(library, "LoadLibraryW", GuardedPlainLoad);
    ImportHook::ForGood(library, "LoadLibraryExW", GuardedLoad);
    Exports found{};
#define FLAT_FUNCTION(result, name, ...) Find(library, #name, found.name);
#include "api/flat_functions.inc"
    return found;
}

namespace host {

void InstallCaptions(std::vector<std::wstring> const& captions) {
    std::vector<sim::WmiCaption> scripted;
    for (std::wstring const& caption : captions) {
        scripted.push_back({sim::WmiCaption::Kind::Text, caption});
    }
    Wmi().SetCaptions(scripted);
}

ScriptedLibrary& InstallLibrary(Machine::Library library) {
    std::string const name = FileName(library);
    if (::GetModuleHandleA(name.c_str()) != nullptr) {
        throw std::runtime_error("one machine in a process");
    }
    ScriptedLibrary* (*scripted)() = nullptr;
    Find(Load(OutputDirectory() / "tests" / kWidth / "scripted" / name), "Scripted_Library", scripted);
    return *scripted();
}

Exports const& LoadLibraryUnderTest() {
    static Exports const exports = [] {
        Exports const found = FindExports(LibraryUnderTest());
        ImportHook::ForGood(LibraryUnderTest(), "LoadLibraryExW", RecordingLoad);
        ImportHook::ForGood(LibraryUnderTest(), "FreeLibrary", RecordingUnload);
        return found;
    }();
    return exports;
}

void* FindExport(std::string const& name) {
    LoadLibraryUnderTest();
    void* address = nullptr;
    Find(LibraryUnderTest(), name.c_str(), address);
    return address;
}

std::vector<LibraryLoad>& Loads() {
    return g_loads;
}

int UnloadCount() {
    return g_unloads;
}

std::filesystem::path ProfilePath() {
    // Beside the test program, which is the host.
    return sim::ModulePath().parent_path() / "Config" / "ConfigModel.xml";
}

}  // namespace host

}  // namespace gputune::test
