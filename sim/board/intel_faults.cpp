#include "sim/board/FaultRules.h"

namespace gputune::sim {

namespace {

constexpr std::string_view kEntryPoints[] = {
#define CTL_FORWARD(name, ...) #name,
#include "intel/ctl_functions.inc"
};

using enum Garbage;
constexpr GarbageFit kGarbage[] = {
    {"ctlEnumerateDevices", Kinds(NegativeCount, HugeCount, NullHandles, GrowingCount, ShrinkingCount)},
    {"ctlEnumFans", Kinds(NegativeCount, HugeCount, NullHandles, GrowingCount, ShrinkingCount)},
    {"ctlGetDeviceProperties", Kinds(UnterminatedStrings, ExtremeValues)},
    {"ctlFanGetProperties", Kinds(NegativeCount, HugeCount, OneTooMany, ExtremeValues)},
    {"ctlFanGetConfig", Kinds(NegativeCount, HugeCount, OneTooMany, ExtremeValues)},
    {"ctlOverclockGetProperties", Kinds(ExtremeValues)},
    {"ctlOverclockPowerLimitGet", Kinds(ExtremeValues)},
    {"ctlOverclockGpuFrequencyOffsetGet", Kinds(ExtremeValues)},
    {"ctlOverclockVramFrequencyOffsetGet", Kinds(ExtremeValues)},
    {"ctlPowerTelemetryGet", Kinds(ExtremeValues)},
};

}  // namespace

FaultRules IntelFaultRules() {
    return {.entryPoints = kEntryPoints, .withoutResult = {}, .garbage = kGarbage};
}

}  // namespace gputune::sim
