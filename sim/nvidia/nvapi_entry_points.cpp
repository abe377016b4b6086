// NVAPI's entry points: its one export, and the functions whose addresses this returns.
#include <algorithm>
#include <iterator>
#include <type_traits>

#include "sim/nvidia/NvidiaStandIn.h"
#include "sim/standin/copy_text.h"

using namespace gputune::nvidia;
using namespace gputune::sim;

namespace {

NvidiaStandIn& Self() {
    return NvidiaStandIn::Instance();
}

// out: a client's NvShortString.
int WriteText(std::string_view text, void* out, Garbage garbage) {
    auto& field = *static_cast<NvShortString*>(out);
    CopyText(text, field);
    GarbleText(field, garbage, 'T');
    return kNvapiOk;
}

int Initialize(NvidiaDriver&, Garbage) {
    Self().SetInitialized();
    return kNvapiOk;
}

int NVAPI_CDECL NvAPI_Initialize() {
    return Self().EnterAtAnyTime(__func__, Initialize);
}

int NVAPI_CDECL InitializeWithMode(int mode) {
    return Self().EnterAtAnyTime(__func__, Initialize, mode);
}

int NVAPI_CDECL BeforeCallHook(std::uint32_t identifier, std::uint32_t* words) {
    // Any two words: the client passes them to the other hook.
    auto const hook = [&](NvidiaDriver&, Garbage) {
        words[0] = identifier;
        words[1] = ~identifier;
        return kNvapiOk;
    };
    return Self().EnterAtAnyTime(__func__, hook, identifier, words);
}

int NVAPI_CDECL AfterCallHook(std::uint32_t identifier, std::uint32_t word0, std::uint32_t word1, int status) {
    auto const hook = [](NvidiaDriver&, Garbage) { return kNvapiOk; };
    return Self().EnterAtAnyTime(__func__, hook, identifier, word0, word1, status);
}

int NVAPI_CDECL NvAPI_GetErrorMessage(int status, char* text) {
    auto const get = [&](NvidiaDriver&, Garbage garbage) { return WriteText(NvapiStatusText(status), text, garbage); };
    return Self().EnterAtAnyTime(__func__, get, status, AddressOnly{text});
}

int NVAPI_CDECL NvAPI_GetInterfaceVersionString(char* text) {
    auto const get = [&](NvidiaDriver& driver, Garbage garbage) {
        return WriteText(driver.Description().version, text, garbage);
    };
    return Self().EnterAtAnyTime(__func__, get, AddressOnly{text});
}

int NVAPI_CDECL NvAPI_EnumPhysicalGPUs(NvPhysicalGpuHandle* handles, std::uint32_t* count) {
    auto const enumerate = [&](NvidiaDriver& driver, Garbage garbage) {
        auto gpus = driver.Gpus();
        *count = static_cast<std::uint32_t>(gpus.size());
        GarbleCount(*count, garbage, kHugeNvapiCount, kMaxPhysicalGpus);
        if (garbage == Garbage::NullHandles) {
            std::fill(gpus.begin(), gpus.end(), nullptr);
        }
        std::copy(gpus.begin(), gpus.end(), handles);
        return kNvapiOk;
    };
    return Self().Enter(__func__, enumerate, AddressOnly{handles}, count);
}

int NVAPI_CDECL NvAPI_GPU_GetFullName(NvPhysicalGpuHandle handle, char* text) {
    auto const get = [&](NvidiaDriver& driver, Garbage garbage) {
        NvidiaGpu const* const gpu = driver.Find(handle);
        return gpu != nullptr ? WriteText(gpu->name, text, garbage) : kNvapiNoGpuHandle;
    };
    return Self().Enter(__func__, get, handle, AddressOnly{text});
}

int NVAPI_CDECL NvAPI_GPU_GetThermalSettings(NvPhysicalGpuHandle handle, std::uint32_t index,
                                             NV_GPU_THERMAL_SETTINGS* settings) {
    auto const get = [&](NvidiaDriver& driver, Garbage) {
        return driver.GetThermalSettings(handle, Self().Now(), index, *settings);
    };
    return Self().Enter(__func__, get, handle, index, settings);
}

// They have the arguments of the library's list.
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
