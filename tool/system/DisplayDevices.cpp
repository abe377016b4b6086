#include "tool/system/DisplayDevices.h"

#include <windows.h>
// After windows.h.
#include <setupapi.h>

#include <cstddef>
#include <cstring>

#include "tool/system/Files.h"
#include "tool/system/Utf8.h"

namespace gputune::tool {

namespace {

constexpr unsigned long long kListInterval = 60'000;  // milliseconds

// The class of display devices.
constexpr GUID kDisplayClass = {0x4D36E968, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};

}  // namespace

// Looked up at run time: only the exporter needs them, so no other command has to load the system's library.
struct DisplayDevices::Functions {
    decltype(&SetupDiGetClassDevsW) list = nullptr;
    decltype(&SetupDiDestroyDeviceInfoList) destroy = nullptr;
    decltype(&SetupDiEnumDeviceInfo) enumerate = nullptr;
    decltype(&SetupDiGetDeviceInstanceIdW) id = nullptr;
    decltype(&SetupDiGetDeviceRegistryPropertyW) property = nullptr;

    bool Resolve(HMODULE module) {
        auto const resolve = [module](char const* name, auto& function) {
            FARPROC const address = GetProcAddress(module, name);
            static_assert(sizeof(function) == sizeof(address));
            std::memcpy(&function, &address, sizeof(function));
            return address != nullptr;
        };
        return resolve("SetupDiGetClassDevsW", list) && resolve("SetupDiDestroyDeviceInfoList", destroy) &&
               resolve("SetupDiEnumDeviceInfo", enumerate) && resolve("SetupDiGetDeviceInstanceIdW", id) &&
               resolve("SetupDiGetDeviceRegistryPropertyW", property);
    }

    std::optional<int> PowerState(HDEVINFO devices, SP_DEVINFO_DATA& device) const {
        CM_POWER_DATA data{};
        DWORD size = 0;
        constexpr DWORD kEnough =
            offsetof(CM_POWER_DATA, PD_MostRecentPowerState) + sizeof(data.PD_MostRecentPowerState);
        if (!property(devices, &device, SPDRP_DEVICE_POWER_DATA, nullptr, reinterpret_cast<BYTE*>(&data), sizeof(data),
                      &size) ||
            size < kEnough) {
            return std::nullopt;
        }
        return static_cast<int>(data.PD_MostRecentPowerState);
    }
};

DisplayDevices::DisplayDevices() {
    // By its full path, so that no file of this name beside the program takes its place. It stays loaded.
    HMODULE const module = LoadLibraryW((SystemDirectory() + L"setupapi.dll").c_str());
    auto functions = std::make_unique<Functions>();
    if (module != nullptr && functions->Resolve(module)) {
        functions_ = std::move(functions);
    }
}

DisplayDevices::~DisplayDevices() {
    ForgetList();
}

void DisplayDevices::ForgetList() {
    if (list_ != nullptr) {
        functions_->destroy(list_);
        list_ = nullptr;
    }
}

std::vector<DisplayDevice> DisplayDevices::Read() {
    std::vector<DisplayDevice> read;
    if (functions_ == nullptr) {
        return read;
    }
    if (GetTickCount64() - listedAt_ >= kListInterval) {
        ForgetList();
    }
    if (list_ == nullptr) {
        HDEVINFO const list = functions_->list(&kDisplayClass, nullptr, nullptr, DIGCF_PRESENT);
        if (list == INVALID_HANDLE_VALUE) {
            return read;
        }
        list_ = list;
        listedAt_ = GetTickCount64();
    }
    SP_DEVINFO_DATA device{};
    device.cbSize = sizeof(device);
    for (DWORD i = 0; functions_->enumerate(list_, i, &device); ++i) {
        wchar_t id[MAX_PATH]{};
        if (functions_->id(list_, &device, id, MAX_PATH, nullptr)) {
            read.push_back({.id = Utf8FromWide(id), .powerState = functions_->PowerState(list_, device)});
        }
    }
    return read;
}

}  // namespace gputune::tool
