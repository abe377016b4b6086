// NVAPI's entry points: its one export, and the functions that this hands out.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <type_traits>

#include "sim/nvidia/NvidiaStandIn.h"

using namespace gputune::nvidia;
using namespace gputune::sim;

namespace {

NvidiaStandIn& Self() {
    return NvidiaStandIn::Instance();
}

int WriteText(std::string_view text, char* out, Garbage garbage) {
    if (garbage == Garbage::UnterminatedStrings) {
        std::memset(out, 'T', sizeof(NvShortString));
    } else {
        CopyText(text, std::span<char, sizeof(NvShortString)>(out, sizeof(NvShortString)));
    }
    return kNvOk;
}

std::uint32_t SpoiltCount(std::size_t count, std::size_t room, Garbage garbage) {
    constexpr std::uint32_t kHuge = 4096;
    switch (garbage) {
        case Garbage::NegativeCount:
            return UINT32_MAX;
        case Garbage::HugeCount:
            return kHuge;
        case Garbage::OneTooMany:
            return static_cast<std::uint32_t>(room + 1);
        default:
            return static_cast<std::uint32_t>(count);
    }
}

int NVAPI_CDECL NvAPI_Initialize() {
    return Self().EnterAtAnyTime("NvAPI_Initialize", [](NvidiaDriver&, Garbage) {
        Self().SetInitialized();
        return kNvOk;
    });
}

int NVAPI_CDECL InitializeWithMode(int mode) {
    return Self().EnterAtAnyTime(
        "InitializeWithMode",
        [](NvidiaDriver&, Garbage) {
            Self().SetInitialized();
            return kNvOk;
        },
        mode);
}

int NVAPI_CDECL BeforeCallHook(std::uint32_t identifier, std::uint32_t* words) {
    return Self().EnterAtAnyTime(
        "BeforeCallHook",
        [&](NvidiaDriver&, Garbage) {
            // Whatever they are, the client carries them to the other hook.
            words[0] = identifier;
            words[1] = ~identifier;
            return kNvOk;
        },
        identifier, words);
}

int NVAPI_CDECL AfterCallHook(std::uint32_t identifier, std::uint32_t word0, std::uint32_t word1, int status) {
    return Self().EnterAtAnyTime(
        "AfterCallHook", [](NvidiaDriver&, Garbage) { return kNvOk; }, identifier, word0, word1, status);
}

int NVAPI_CDECL NvAPI_GetErrorMessage(int status, char* text) {
    return Self().EnterAtAnyTime(
        "NvAPI_GetErrorMessage",
        [&](NvidiaDriver&, Garbage garbage) { return WriteText(NvStatusText(status), text, garbage); }, status,
        AddressOnly{text});
}

int NVAPI_CDECL NvAPI_GetInterfaceVersionString(char* text) {
    return Self().EnterAtAnyTime(
        "NvAPI_GetInterfaceVersionString",
        [&](NvidiaDriver& driver, Garbage garbage) { return WriteText(driver.Description().version, text, garbage); },
        AddressOnly{text});
}

int NVAPI_CDECL NvAPI_EnumPhysicalGPUs(NvPhysicalGpuHandle* handles, std::uint32_t* count) {
    return Self().Enter(
        "NvAPI_EnumPhysicalGPUs",
        [&](NvidiaDriver& driver, Garbage garbage) {
            auto gpus = driver.Gpus();
            *count = SpoiltCount(gpus.size(), kMaxPhysicalGpus, garbage);
            if (garbage == Garbage::NullHandles) {
                std::fill(gpus.begin(), gpus.end(), nullptr);
            }
            std::copy(gpus.begin(), gpus.end(), handles);
            return kNvOk;
        },
        AddressOnly{handles}, count);
}

int NVAPI_CDECL NvAPI_GPU_GetFullName(NvPhysicalGpuHandle handle, char* text) {
    return Self().Enter(
        "NvAPI_GPU_GetFullName",
        [&](NvidiaDriver& driver, Garbage garbage) {
            NvidiaGpu const* const gpu = driver.Find(handle);
            return gpu ? WriteText(gpu->name, text, garbage) : kNvNoGpuHandle;
        },
        handle, AddressOnly{text});
}

int NVAPI_CDECL NvAPI_GPU_GetThermalSettings(NvPhysicalGpuHandle handle, std::uint32_t index,
                                             NV_GPU_THERMAL_SETTINGS* settings) {
    return Self().Enter(
        "NvAPI_GPU_GetThermalSettings",
        [&](NvidiaDriver& driver, Garbage garbage) {
            int const status = driver.GetThermalSettings(handle, Self().Now(), index, *settings);
            if (status == kNvOk) {
                settings->count = SpoiltCount(settings->count, kMaxThermalSensors, garbage);
            }
            return status;
        },
        handle, index, settings);
}

// What the product's list says of their arguments.
#define NVAPI_FUNCTION(name, identifier, ...)                                      \
    static_assert(std::is_same_v<decltype(&name), int(NVAPI_CDECL*)(__VA_ARGS__)>, \
                  #name " has other arguments than the list says");
#include "nvidia/nvapi_functions.inc"

struct EntryPoint {
    std::uint32_t identifier;
    char const* name;
    void* address;
};

EntryPoint const kEntryPoints[] = {
#define SIM_NVAPI(name, identifier) {identifier, #name, reinterpret_cast<void*>(&(name))},
#include "sim/board/nvapi_entry_points.inc"
};

}  // namespace

extern "C" __declspec(dllexport) void* NVAPI_CDECL nvapi_QueryInterface(std::uint32_t identifier) {
    auto const found = std::find_if(std::begin(kEntryPoints), std::end(kEntryPoints),
                                    [&](EntryPoint const& entry) { return entry.identifier == identifier; });
    bool const known = found != std::end(kEntryPoints);
    return Self().HandsOut(identifier, known ? found->name : nullptr) ? found->address : nullptr;
}
