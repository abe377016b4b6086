#include "sim/board/FaultRules.h"

namespace gputune::sim {

namespace {

constexpr std::string_view kQueryInterface = "nvapi_QueryInterface";

constexpr std::string_view kEntryPoints[] = {
    kQueryInterface,
#define SIM_NVAPI(name, identifier) #name,
#include "sim/board/nvapi_entry_points.inc"
};

// It returns an address: a client would call whatever it is given.
constexpr std::string_view kWithoutResult[] = {kQueryInterface};

using enum Garbage;
constexpr GarbageFit kGarbage[] = {
    {"NvAPI_EnumPhysicalGPUs", Kinds(NegativeCount, HugeCount, OneTooMany, NullHandles)},
    {"NvAPI_GetErrorMessage", Kinds(UnterminatedStrings)},
    {"NvAPI_GetInterfaceVersionString", Kinds(UnterminatedStrings)},
    {"NvAPI_GPU_GetFullName", Kinds(UnterminatedStrings)},
    {"NvAPI_GPU_GetThermalSettings", Kinds(NegativeCount, HugeCount, OneTooMany, ExtremeValues)},
};

}  // namespace

FaultRules NvidiaFaultRules() {
    return {.entryPoints = kEntryPoints, .withoutResult = kWithoutResult, .garbage = kGarbage};
}

}  // namespace gputune::sim
