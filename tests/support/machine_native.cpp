// The machine for the library's code compiled into the test itself: the operating system it sees is this file.
#include <map>

#include "Machine.h"
#include "detect/WmiQuery.h"
#include "native_platform.h"
#include "platform/display_source.h"
#include "platform/last_error.h"
#include "platform/library.h"
#include "platform/memory.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "scripted_adl_exports.h"

namespace gputune::test {

namespace {

std::vector<std::wstring> g_captions;
Machine::AmdLibrary g_library = Machine::AmdLibrary::Newer;
std::map<std::wstring, std::uint32_t> g_displays;
int g_loadedLibrary = 0;  // its address serves as the handle

}  // namespace

void SetDisplay(std::wstring const& name, std::uint32_t source) {
    g_displays[name] = source;
}

namespace host {

void InstallCaptions(std::vector<std::wstring> const& captions) {
    g_captions = captions;
}

void InstallLibrary(Machine::AmdLibrary library) {
    g_library = library;
}

Exports const& LoadLibraryUnderTest() {
    static Exports const exports = {
        ::InitVGAHelper,         ::IsInitOk,
        ::GetVendorInfo,         ::SetActiveAdapterIndex,
        ::GetActiveAdapterIndex, ::GetVGAInfo,
        ::FetchHwmValues,        ::GetHwmValue,
        ::GetFrameRate,          ::SetFanSpeed,
        ::SetFanSpeedTable,      ::GetFanSetting,
        ::SetPowerLimit,         ::SetPowerLimitDefault,
        ::GetPowerLimitSetting,  ::SetPerformanceUser,
        ::SetPerformanceOC,      ::SetPerformanceDefault,
        ::SetPerformanceSilent,  ::GetGpuClockSetting,
        ::GetMemClockSetting,    ::GetExternalPerformanceParameter,
    };
    return exports;
}

std::filesystem::path ProfilePath() {
    return "Config/ConfigModel.xml";
}

Scripted const& Adl() {
    static Scripted const scripted = {
        Scripted_Reset,      Scripted_Result,       Scripted_Write,           Scripted_Allocate,
        Scripted_Then,       Scripted_Hide,         Scripted_CallCount,       Scripted_GetCall,
        Scripted_ClearCalls, Scripted_AskForMemory, Scripted_AskWithOddStack,
    };
    return scripted;
}

}  // namespace host

}  // namespace gputune::test

void ScriptedAdl_HiddenChanged() {}

namespace gputune {

std::vector<std::wstring> GetWmiData(char const* /*query*/, wchar_t const* /*property*/) {
    return test::g_captions;
}

namespace platform {

LibraryHandle LoadLibraryByName(wchar_t const* name) {
    using test::Machine;
    std::wstring const wanted = test::g_library == Machine::AmdLibrary::Newer   ? L"atiadlxx.dll"
                                : test::g_library == Machine::AmdLibrary::Older ? L"atiadlxy.dll"
                                                                                : L"";
    return name == wanted ? &test::g_loadedLibrary : nullptr;
}

LibraryHandle LoadLibraryWithFlags(wchar_t const* /*path*/, std::uint32_t /*flags*/) {
    return nullptr;
}

void UnloadLibrary(LibraryHandle /*library*/) {}

void* FindSymbol(LibraryHandle library, char const* name) {
    return library == &test::g_loadedLibrary ? ScriptedAdl_Find(name) : nullptr;
}

// Not told here: the sanitizers see what is read too far.
std::size_t ReadableBytes(void const* /*address*/) {
    return static_cast<std::size_t>(-1);
}

std::uint32_t LastError() {
    return 0;
}

// One byte a character, like the narrow encodings of Western systems.
std::string ToNarrow(std::wstring_view text) {
    std::string narrow;
    for (wchar_t const character : text) {
        narrow.push_back(character > 0 && character < 0x100 ? static_cast<char>(character) : '?');
    }
    return narrow;
}

std::wstring ToWide(std::string_view text) {
    std::wstring wide;
    for (char const character : text) {
        wide.push_back(static_cast<wchar_t>(static_cast<unsigned char>(character)));
    }
    return wide;
}

std::wstring HostDirectory() {
    return L".";
}

std::FILE* OpenForReading(std::wstring const& path) {
    std::string narrow = ToNarrow(path);
    for (char& character : narrow) {
        character = character == '\\' ? '/' : character;
    }
    return std::fopen(narrow.c_str(), "rb");
}

std::optional<std::uint32_t> VideoPresentSource(std::wstring_view displayName) {
    auto const found = test::g_displays.find(std::wstring(displayName));
    return found == test::g_displays.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace platform

}  // namespace gputune
