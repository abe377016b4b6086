// An NVAPI library that does next to nothing: one GPU with one sensor of constant temperature.
#include <cstring>

#include "nvidia/nvapi_records.h"

using namespace gputune::nvidia;

namespace {

int NVAPI_CDECL Initialize() {
    return kNvapiOk;
}

int NVAPI_CDECL EnumPhysicalGpus(NvPhysicalGpuHandle* handles, std::uint32_t* count) {
    handles[0] = reinterpret_cast<NvPhysicalGpuHandle>(1);
    *count = 1;
    return kNvapiOk;
}

int NVAPI_CDECL GetThermalSettings(NvPhysicalGpuHandle, std::uint32_t, NV_GPU_THERMAL_SETTINGS* settings) {
    settings->count = 1;
    settings->sensor[0].currentTemp = 61;
    return kNvapiOk;
}

}  // namespace

extern "C" __declspec(dllexport) void* NVAPI_CDECL nvapi_QueryInterface(std::uint32_t identifier) {
    switch (identifier) {
        case 0x0150E828:
            return reinterpret_cast<void*>(&Initialize);
        case 0xE5AC921F:
            return reinterpret_cast<void*>(&EnumPhysicalGpus);
        case 0xE3640A56:
            return reinterpret_cast<void*>(&GetThermalSettings);
        default:
            return nullptr;
    }
}
