// The scripted Intel control library.
#include "ScriptedCore.h"

namespace {

using gputune::test::ScriptedIgcl;
using gputune::test::Signature;

// Entered by hand from the library's published interface, not from the product's declarations.
std::map<std::string, Signature> const kSignatures = {
    {"ctlInit", {2, 0, 36}},
    {"ctlClose", {1}},
    {"ctlSetRuntimePath", {1, 0, 32}},
    {"ctlEnumerateDevices", {3, 1, 4}},
    {"ctlGetDeviceProperties", {2, 1, 312}},
    {"ctlOverclockGetProperties", {2, 1, 296}},
    {"ctlPowerTelemetryGet", {2, 1, 808}},
    {"ctlEnumFans", {3, 1, 4}},
    {"ctlFanGetProperties", {2, 1, 24}},
    {"ctlFanGetConfig", {2, 1, 936}},
    {"ctlFanSetDefaultMode", {1}},
    {"ctlFanSetFixedSpeedMode", {2, 1, 16}},
    {"ctlFanSetSpeedTableMode", {2, 1, 908}},
    {"ctlOverclockWaiverSet", {1}},
    {"ctlOverclockPowerLimitGet", {2}},
    {"ctlOverclockPowerLimitSet", {3}},
    {"ctlOverclockGpuFrequencyOffsetGet", {2}},
    {"ctlOverclockGpuFrequencyOffsetSet", {3}},
    {"ctlOverclockVramFrequencyOffsetGet", {2}},
    {"ctlOverclockVramFrequencyOffsetSet", {3}},
};

int Answer(char const* name, int const* words) {
    return ScriptedIgcl().Answer(name, words);
}

}  // namespace

#define CTL_FORWARD(name, ...) SCRIPTED_FUNCTION(extern "C", name)
#include "intel/ctl_functions.inc"

gputune::test::ScriptedCore& gputune::test::ScriptedIgcl() {
    static ScriptedCore core({
        .entryPoints =
            {
#define CTL_FORWARD(name, ...) SCRIPTED_ENTRY(name)
#include "intel/ctl_functions.inc"
            },
        .signatures = kSignatures,
        // For the functions that no backend calls, all words that the caller may have passed are recorded.
        .otherSignature = Signature{gputune::test::kMaxWords},
    });
    return core;
}
