#include "tool/system/DisplayDevices.h"

#include <windows.h>
// After windows.h.
#include <cfgmgr32.h>
#include <devpropdef.h>

#include <cstddef>
#include <cstring>
#include <cwchar>

#include "tool/system/Files.h"
#include "tool/system/Utf8.h"

namespace gputune::tool {

namespace {

constexpr unsigned long long kFindInterval = 60'000;  // milliseconds

// The class of display devices, and the property that is a CM_POWER_DATA.
constexpr wchar_t const* kDisplayClass = L"{4d36e968-e325-11ce-bfc1-08002be10318}";
constexpr DEVPROPKEY kPowerData = {{0xA45C254E, 0xDF1C, 0x4EFD, {0x80, 0x20, 0x67, 0xD1, 0x46, 0xA8, 0x50, 0xE0}}, 32};
constexpr DEVPROPTYPE kBinary = 0x1003;  // DEVPROP_TYPE_BINARY

}  // namespace

// Looked up at run time: only the exporter needs them, so no other command has to load the system's library.
struct DisplayDevices::Functions {
    decltype(&CM_Get_Device_ID_List_SizeW) listSize = nullptr;
    decltype(&CM_Get_Device_ID_ListW) list = nullptr;
    decltype(&CM_Locate_DevNodeW) locate = nullptr;
    decltype(&CM_Get_DevNode_PropertyW) property = nullptr;

    bool Resolve(HMODULE module) {
        auto const resolve = [module](char const* name, auto& function) {
            FARPROC const address = GetProcAddress(module, name);
            static_assert(sizeof(function) == sizeof(address));
            std::memcpy(&function, &address, sizeof(function));
            return address != nullptr;
        };
        return resolve("CM_Get_Device_ID_List_SizeW", listSize) && resolve("CM_Get_Device_ID_ListW", list) &&
               resolve("CM_Locate_DevNodeW", locate) && resolve("CM_Get_DevNode_PropertyW", property);
    }
};

DisplayDevices::DisplayDevices() {
    // By its full path, so that no file of this name beside the program takes its place. It stays loaded.
    HMODULE const module = LoadLibraryW((SystemDirectory() + L"cfgmgr32.dll").c_str());
    auto functions = std::make_unique<Functions>();
    if (module != nullptr && functions->Resolve(module)) {
        functions_ = std::move(functions);
    }
}

DisplayDevices::~DisplayDevices() = default;

std::vector<DisplayDevice> DisplayDevices::Read() {
    std::vector<DisplayDevice> read;
    if (functions_ == nullptr) {
        return read;
    }
    if (GetTickCount64() >= findAt_) {
        Find();
        findAt_ = GetTickCount64() + kFindInterval;
    }
    for (Device const& device : devices_) {
        read.push_back({.id = device.id, .powerState = PowerState(device.number)});
    }
    return read;
}

void DisplayDevices::Find() {
    constexpr ULONG kFilter = CM_GETIDLIST_FILTER_CLASS | CM_GETIDLIST_FILTER_PRESENT;
    devices_.clear();
    ULONG size = 0;
    if (functions_->listSize(&size, kDisplayClass, kFilter) != CR_SUCCESS || size == 0) {
        return;
    }
    // Texts one behind the other, each with its NUL; an empty one ends the list.
    std::wstring ids(size, L'\0');
    if (functions_->list(kDisplayClass, ids.data(), size, kFilter) != CR_SUCCESS) {
        return;
    }
    ids += L'\0';
    for (wchar_t* id = ids.data(); *id != L'\0'; id += std::wcslen(id) + 1) {
        DEVINST device = 0;
        if (functions_->locate(&device, id, CM_LOCATE_DEVNODE_NORMAL) == CR_SUCCESS) {
            devices_.push_back({.id = Utf8FromWide(id), .number = device});
        }
    }
}

std::optional<int> DisplayDevices::PowerState(unsigned long device) const {
    CM_POWER_DATA data{};
    ULONG size = sizeof(data);
    DEVPROPTYPE type = 0;
    CONFIGRET const result = functions_->property(device, &kPowerData, &type, reinterpret_cast<BYTE*>(&data), &size, 0);
    constexpr ULONG kEnough = offsetof(CM_POWER_DATA, PD_MostRecentPowerState) + sizeof(data.PD_MostRecentPowerState);
    if (result != CR_SUCCESS || type != kBinary || size < kEnough) {
        return std::nullopt;
    }
    return static_cast<int>(data.PD_MostRecentPowerState);
}

}  // namespace gputune::tool
