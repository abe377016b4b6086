// Machine and machine_native.h for native tests, which have the library's code compiled in. Together with
// FakeSystem.cpp this file is the operating system that it runs on.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <map>

#include "FakeSystem.h"
#include "Machine.h"
#include "Outside.h"
#include "ScriptedCore.h"
#include "detect/wmi_query.h"
#include "machine_native.h"
#include "platform/DisplayAdapter.h"
#include "platform/library.h"
#include "platform/paths.h"
#include "platform/process.h"
#include "platform/text.h"

// Declared without their arguments: only the addresses are used.
#define CTL_FORWARD(name, ...) extern "C" int name();
#include "intel/ctl_functions.inc"

namespace gputune::test {

namespace {

std::vector<std::wstring> g_captions;
std::map<std::wstring, std::uint32_t> g_displays;

// The libraries of the machine, by file name.
std::map<std::wstring, ScriptedCore*> g_installed;

// One load of a library; its address is the handle. It stays in g_modules after the unload, so that a later use is
// noticed.
struct Module {
    ScriptedCore* library;
    bool isLoaded = true;
};
std::deque<Module> g_modules;
std::vector<LibraryLoad> g_loads;
int g_unloads = 0;

std::size_t g_refusedSize = 0;
int g_served = 0;
bool (*g_refuse)() = nullptr;

bool IsRefused(std::size_t size) {
    if (g_refuse != nullptr && !Outside::IsAtWork() && g_refuse()) {
        return true;
    }
    return size != 0 && size == g_refusedSize && g_served-- <= 0;
}

Module* LoadModule(std::wstring const& path) {
    auto const found = g_installed.find(path.substr(path.find_last_of(L"\\/") + 1));
    return found == g_installed.end() ? nullptr : &g_modules.emplace_back(Module{found->second});
}

Module& Loaded(void* handle) {
    auto* const module = static_cast<Module*>(handle);
    if (module == nullptr || !module->isLoaded) {
        std::fputs("a library is used that is not loaded\n", stderr);
        std::abort();
    }
    return *module;
}

}  // namespace

void RefuseAllocationsOf(std::size_t size, int served) {
    g_refusedSize = size;
    g_served = served;
}

void RefuseAllocationsBy(bool (*refuse)()) {
    g_refuse = refuse;
}

int LoadedLibraries() {
    return static_cast<int>(
        std::count_if(g_modules.begin(), g_modules.end(), [](Module const& module) { return module.isLoaded; }));
}

void SetDisplay(std::wstring const& name, std::uint32_t source) {
    g_displays[name] = source;
}

void ForgetMachine() {
    g_captions.clear();
    g_displays.clear();
    g_installed.clear();
    g_modules.clear();
    g_loads.clear();
    g_unloads = 0;
    RefuseAllocationsOf(0);
}

void RemoveLibrary(Machine::Library library) {
    g_installed.erase(platform::ToWide(host::FileName(library)));
}

namespace host {

void InstallCaptions(std::vector<std::wstring> const& captions) {
    g_captions = captions;
}

ScriptedLibrary& InstallLibrary(Machine::Library library) {
    ScriptedCore& scripted = library == Machine::Library::Intel    ? ScriptedIgcl()
                             : library == Machine::Library::Nvidia ? ScriptedNvapi()
                                                                   : ScriptedAdl();
    g_installed[platform::ToWide(FileName(library))] = &scripted;
    return scripted;
}

Exports const& LoadLibraryUnderTest() {
    static Exports const exports = {
#define FLAT_FUNCTION(result, name, ...) ::name,
#include "api/flat_functions.inc"
    };
    return exports;
}

void* FindExport(std::string const& name) {
    static std::map<std::string, void*> const exports = {
#define CTL_FORWARD(name, ...) {#name, reinterpret_cast<void*>(&::name)},
#include "intel/ctl_functions.inc"
    };
    return exports.at(name);
}

std::vector<LibraryLoad>& Loads() {
    return g_loads;
}

int UnloadCount() {
    return g_unloads;
}

std::filesystem::path ProfilePath() {
    return "Config/ConfigModel.xml";
}

}  // namespace host

}  // namespace gputune::test

// The linker option --wrap lets all calls of malloc and calloc go to these.
extern "C" {

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);

void* __wrap_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size) {
    return gputune::test::IsRefused(size) ? nullptr : __real_malloc(size);
}

void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return gputune::test::IsRefused(count * size) ? nullptr : __real_calloc(count, size);
}

}  // extern "C"

namespace gputune {

std::vector<std::wstring> GetWmiData(char const* /*query*/, wchar_t const* /*property*/) {
    return test::g_captions;
}

namespace platform {

bool IsProcessEnding() {
    return false;
}

LibraryHandle LoadLibraryByName(wchar_t const* name) {
    test::Outside const outside;
    return test::LoadModule(name);
}

LibraryHandle LoadLibraryWithFlags(wchar_t const* path, std::uint32_t flags) {
    test::Outside const outside;
    test::g_loads.push_back({path, flags});
    auto const fake = test::LoadFakeLibrary(path, flags);
    return fake ? *fake : test::LoadModule(path);
}

void UnloadLibrary(LibraryHandle library) {
    test::Outside const outside;
    if (!test::UnloadFakeLibrary(library)) {
        test::Loaded(library).isLoaded = false;
        ++test::g_unloads;
    }
}

void* FindSymbol(LibraryHandle library, char const* name) {
    test::Outside const outside;
    if (auto const found = test::FindInFakeLibrary(library, name)) {
        return *found;
    }
    return test::Loaded(library).library->Find(name);
}

std::wstring HostDirectory() {
    return L".";
}

std::FILE* OpenForReading(std::wstring const& path) {
    test::Outside const outside;
    std::string narrow = ToNarrow(path);
    for (char& character : narrow) {
        character = character == '\\' ? '/' : character;
    }
    return std::fopen(narrow.c_str(), "rb");
}

DisplayAdapter::DisplayAdapter(std::wstring_view displayName) {
    test::Outside const outside;
    auto const found = test::g_displays.find(std::wstring(displayName));
    if (found != test::g_displays.end()) {
        source_ = found->second;
    }
}

DisplayAdapter::~DisplayAdapter() = default;

}  // namespace platform

}  // namespace gputune
