#include "sim/board/FaultRules.h"

namespace gputune::sim {

namespace {

constexpr std::string_view kEntryPoints[] = {
#define CTL_FORWARD(name, ...) #name,
#include "intel/ctl_functions.inc"
};

constexpr GarbageFit kGarbage[] = {
    {"ctlEnumerateDevices", Garbage::NegativeCount},
    {"ctlEnumerateDevices", Garbage::HugeCount},
    {"ctlEnumerateDevices", Garbage::NullHandles},
    {"ctlEnumerateDevices", Garbage::GrowingCount},
    {"ctlEnumerateDevices", Garbage::ShrinkingCount},
    {"ctlEnumFans", Garbage::NegativeCount},
    {"ctlEnumFans", Garbage::HugeCount},
    {"ctlEnumFans", Garbage::NullHandles},
    {"ctlEnumFans", Garbage::GrowingCount},
    {"ctlEnumFans", Garbage::ShrinkingCount},
    {"ctlGetDeviceProperties", Garbage::UnterminatedStrings},
    {"ctlGetDeviceProperties", Garbage::ExtremeValues},
    {"ctlFanGetProperties", Garbage::NegativeCount},
    {"ctlFanGetProperties", Garbage::HugeCount},
    {"ctlFanGetProperties", Garbage::OneTooMany},
    {"ctlFanGetProperties", Garbage::ExtremeValues},
    {"ctlFanGetConfig", Garbage::NegativeCount},
    {"ctlFanGetConfig", Garbage::HugeCount},
    {"ctlFanGetConfig", Garbage::OneTooMany},
    {"ctlFanGetConfig", Garbage::ExtremeValues},
    {"ctlOverclockGetProperties", Garbage::ExtremeValues},
    {"ctlOverclockPowerLimitGet", Garbage::ExtremeValues},
    {"ctlOverclockGpuFrequencyOffsetGet", Garbage::ExtremeValues},
    {"ctlOverclockVramFrequencyOffsetGet", Garbage::ExtremeValues},
    {"ctlPowerTelemetryGet", Garbage::ExtremeValues},
};

}  // namespace

FaultRules IntelFaultRules() {
    return {.entryPoints = kEntryPoints, .withoutResult = {}, .garbage = kGarbage};
}

}  // namespace gputune::sim
