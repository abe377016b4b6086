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
#define GPUTUNE_TOOL_RESOLVE(name) Resolve(module_.get(), #name, path, name);
    GPUTUNE_TOOL_EXPORTS(GPUTUNE_TOOL_RESOLVE)
#undef GPUTUNE_TOOL_RESOLVE
    Resolve(module_.get(), "GetFanSetting", path, getFanSetting_);
}

FanSetting Library::ReadFanSetting() const {
    FanSetting setting{};
    for (FanPoint& point : setting.Points) {
        point = {kUntouched, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched};
    }
    getFanSetting_(&setting);
    return setting;
}

void Library::Unload::operator()(void* module) const {
    FreeLibrary(static_cast<HMODULE>(module));
}

}  // namespace gputune::tool
