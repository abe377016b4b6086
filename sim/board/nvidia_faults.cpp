#include "sim/board/FaultRules.h"

namespace gputune::sim {

namespace {

constexpr std::string_view kQueryInterface = "nvapi_QueryInterface";

constexpr std::string_view kEntryPoints[] = {
    kQueryInterface,
#define SIM_NVAPI(name, identifier) #name,
#include "sim/board/nvapi_entry_points.inc"
};

// Returns an address: a result would be one that a client calls.
constexpr std::string_view kWithoutResult[] = {kQueryInterface};

constexpr GarbageFit kGarbage[] = {
    {"NvAPI_EnumPhysicalGPUs", Garbage::NegativeCount},
    {"NvAPI_EnumPhysicalGPUs", Garbage::HugeCount},
    {"NvAPI_EnumPhysicalGPUs", Garbage::OneTooMany},
    {"NvAPI_EnumPhysicalGPUs", Garbage::NullHandles},
    {"NvAPI_GetErrorMessage", Garbage::UnterminatedStrings},
    {"NvAPI_GetInterfaceVersionString", Garbage::UnterminatedStrings},
    {"NvAPI_GPU_GetFullName", Garbage::UnterminatedStrings},
    {"NvAPI_GPU_GetThermalSettings", Garbage::NegativeCount},
    {"NvAPI_GPU_GetThermalSettings", Garbage::HugeCount},
    {"NvAPI_GPU_GetThermalSettings", Garbage::OneTooMany},
    {"NvAPI_GPU_GetThermalSettings", Garbage::ExtremeValues},
};

}  // namespace

FaultRules NvidiaFaultRules() {
    return {.entryPoints = kEntryPoints, .withoutResult = kWithoutResult, .garbage = kGarbage};
}

}  // namespace gputune::sim
