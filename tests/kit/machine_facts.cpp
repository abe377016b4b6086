#include "machine_facts.h"

#include <windows.h>

#include <winver.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "sim/standin/wide_text.h"

namespace gputune::kit {

namespace {

using Json = nlohmann::ordered_json;

constexpr wchar_t kWindowsKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
// Of every display adapter that has ever had a driver here, a key 0000, 0001 and so on.
constexpr wchar_t kDisplayKey[] = L"SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e968-e325-11ce-bfc1-08002be10318}";

template <class Function>
Function FindIn(wchar_t const* library, char const* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(library), name)));
}

std::optional<std::string> TextIn(std::wstring const& key, wchar_t const* value) {
    HKEY opened = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_QUERY_VALUE | KEY_WOW64_64KEY, &opened) !=
        ERROR_SUCCESS) {
        return std::nullopt;
    }
    wchar_t text[512] = {};
    DWORD size = sizeof text - sizeof *text;
    DWORD type = 0;
    bool const isText =
        ::RegQueryValueExW(opened, value, nullptr, &type, reinterpret_cast<BYTE*>(text), &size) == ERROR_SUCCESS &&
        type == REG_SZ;
    ::RegCloseKey(opened);
    return isText ? std::optional(sim::FromWide(text)) : std::nullopt;
}

// Also of a value that is no text.
std::optional<DWORD> NumberIn(std::wstring const& key, wchar_t const* value) {
    DWORD number = 0;
    DWORD size = sizeof number;
    HKEY opened = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_QUERY_VALUE | KEY_WOW64_64KEY, &opened) !=
        ERROR_SUCCESS) {
        return std::nullopt;
    }
    DWORD type = 0;
    bool const isNumber =
        ::RegQueryValueExW(opened, value, nullptr, &type, reinterpret_cast<BYTE*>(&number), &size) == ERROR_SUCCESS &&
        type == REG_DWORD;
    ::RegCloseKey(opened);
    return isNumber ? std::optional(number) : std::nullopt;
}

std::vector<std::wstring> KeysBelow(wchar_t const* key) {
    std::vector<std::wstring> names;
    HKEY opened = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, key, 0, KEY_ENUMERATE_SUB_KEYS, &opened) != ERROR_SUCCESS) {
        return names;
    }
    wchar_t name[256];
    for (DWORD size = static_cast<DWORD>(std::size(name));
         ::RegEnumKeyExW(opened, static_cast<DWORD>(names.size()), name, &size, nullptr, nullptr, nullptr, nullptr) ==
         ERROR_SUCCESS;
         size = static_cast<DWORD>(std::size(name))) {
        names.emplace_back(name);
    }
    ::RegCloseKey(opened);
    return names;
}

std::string VersionOf(std::filesystem::path const& file) {
    DWORD unused = 0;
    std::vector<char> block(::GetFileVersionInfoSizeW(file.c_str(), &unused));
    VS_FIXEDFILEINFO* info = nullptr;
    UINT size = 0;
    if (block.empty() || !::GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(block.size()), block.data()) ||
        !::VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&info), &size) || size < sizeof *info) {
        return "";
    }
    auto const number = [](DWORD value) {
        return std::to_string(value >> 16U) + "." + std::to_string(value & 0xFFFFU);
    };
    return number(info->dwFileVersionMS) + "." + number(info->dwFileVersionLS);
}

void Put(Json& object, char const* name, std::optional<std::string> const& value) {
    if (value && !value->empty()) {
        object[name] = *value;
    }
}

}  // namespace

bool IsFor64Bits() {
    SYSTEM_INFO info{};
    ::GetNativeSystemInfo(&info);
    return info.wProcessorArchitecture != PROCESSOR_ARCHITECTURE_INTEL;
}

bool IsAdministrator() {
    BYTE identifier[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof identifier;
    BOOL isMember = FALSE;
    return ::CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, identifier, &size) &&
           ::CheckTokenMembership(nullptr, identifier, &isMember) && isMember;
}

Json WindowsFacts() {
    Json facts;
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    auto const getVersion = FindIn<LONG(WINAPI*)(OSVERSIONINFOW*)>(L"ntdll.dll", "RtlGetVersion");
    getVersion(&version);
    facts["version"] = std::to_string(version.dwMajorVersion) + "." + std::to_string(version.dwMinorVersion);
    facts["build"] = version.dwBuildNumber;
    // The updates that a build has.
    if (auto const revision = NumberIn(kWindowsKey, L"UBR")) {
        facts["revision"] = *revision;
    }
    Put(facts, "product", TextIn(kWindowsKey, L"ProductName"));
    Put(facts, "release", TextIn(kWindowsKey, L"DisplayVersion"));
    facts["bits"] = IsFor64Bits() ? 64 : 32;
    facts["codePage"] = ::GetACP();
    if (auto const wine = FindIn<char const* (*)()>(L"ntdll.dll", "wine_get_version"); wine != nullptr) {
        facts["wine"] = wine();
    }
    return facts;
}

Json DriverFacts() {
    Json drivers = Json::array();
    for (std::wstring const& name : KeysBelow(kDisplayKey)) {
        std::wstring const key = std::wstring(kDisplayKey) + L"\\" + name;
        Json driver = Json::object();
        Put(driver, "name", TextIn(key, L"DriverDesc"));
        Put(driver, "version", TextIn(key, L"DriverVersion"));
        Put(driver, "date", TextIn(key, L"DriverDate"));
        Put(driver, "provider", TextIn(key, L"ProviderName"));
        Put(driver, "device", TextIn(key, L"MatchingDeviceId"));
        if (!driver.empty()) {
            drivers.push_back(driver);
        }
    }
    return drivers;
}

Json LibraryFacts() {
    wchar_t windows[MAX_PATH];
    ::GetSystemWindowsDirectoryW(windows, MAX_PATH);
    std::filesystem::path const directory = windows;
    // For a 32-bit process, "Sysnative" is the directory of 64-bit libraries.
    struct Place {
        wchar_t const* folder;
        int width;
        std::vector<wchar_t const*> files;
    };
    std::vector<wchar_t const*> const files32 = {L"atiadlxx.dll", L"atiadlxy.dll", L"ControlLib32.dll", L"nvapi.dll"};
    std::vector<wchar_t const*> const files64 = {L"atiadlxx.dll", L"ControlLib.dll", L"nvapi64.dll"};
    std::vector<Place> places{{L"System32", 32, files32}};
    if (IsFor64Bits()) {
        places = {{L"SysWOW64", 32, files32}, {L"Sysnative", 64, files64}};
    }
    Json libraries = Json::array();
    for (Place const& place : places) {
        for (wchar_t const* const file : place.files) {
            std::filesystem::path const path = directory / place.folder / file;
            std::error_code ignored;
            if (std::filesystem::exists(path, ignored)) {
                libraries.push_back(
                    {{"file", sim::FromWide(file)}, {"width", place.width}, {"version", VersionOf(path)}});
            }
        }
    }
    return libraries;
}

}  // namespace gputune::kit
