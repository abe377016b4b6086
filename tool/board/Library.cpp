#include "tool/board/Library.h"

#include <windows.h>

#include <cstring>

#include "tool/system/Utf8.h"
#include "tool/values/Errors.h"
#include "tool/values/FanCurve.h"

namespace gputune::tool {

namespace {

template <typename Function>
void Resolve(void* module, char const* name, std::wstring const& path, Function& function) {
    FARPROC const address = GetProcAddress(static_cast<HMODULE>(module), name);
    if (address == nullptr) {
        throw ToolError(Utf8FromWide(path) + " has no function " + name +
                        ": it does not belong to this gputunectl. Install both from the same release.");
    }
    static_assert(sizeof(function) == sizeof(address));
    std::memcpy(&function, &address, sizeof(function));
}

void* Load(std::wstring const& path) {
    // The library imports from system DLLs only. Windows 7 knows this flag only with an update.
    HMODULE const kernel = GetModuleHandleW(L"kernel32.dll");
    bool const knowsFlags = GetProcAddress(kernel, "SetDefaultDllDirectories") != nullptr;
    DWORD const flags = knowsFlags ? LOAD_LIBRARY_SEARCH_SYSTEM32 : LOAD_WITH_ALTERED_SEARCH_PATH;
    HMODULE const module = LoadLibraryExW(path.c_str(), nullptr, flags);
    if (module == nullptr) {
        DWORD const error = GetLastError();
        throw ToolError("Cannot load " + Utf8FromWide(path) + ": " + SystemMessage(error) +
                        ".\nThe library must lie beside gputunectl.exe.");
    }
    return module;
}

}  // namespace

Library::Library(std::wstring const& path) : module_(Load(path)) {
#define FLAT_FUNCTION(result, name, ...) Resolve(module_.get(), #name, path, name);
#include "src/api/flat_functions.inc"
}

FanSetting Library::ReadFanSetting() const {
    FanSetting setting{};
    for (FanPoint& point : setting.Points) {
        point = {kUntouched, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched};
    }
    // In binary form, a function that returns a record takes the record's address as its first argument and returns
    // that address. GetFanSetting does not write the points of OverdriveN boards. Called in this form, it gets the
    // record that was filled above, which shows afterwards which fields were written.
    using InPlace = FanSetting*(GPUTUNE_CALL*)(FanSetting*);
    reinterpret_cast<InPlace>(reinterpret_cast<void*>(GetFanSetting))(&setting);
    return setting;
}

void Library::Unload::operator()(void* module) const {
    FreeLibrary(static_cast<HMODULE>(module));
}

}  // namespace gputune::tool
