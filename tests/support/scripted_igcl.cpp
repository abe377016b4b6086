// The scripted Intel control library.
#include "ScriptedCore.h"

namespace {

using gputune::test::ScriptedIgcl;
using gputune::test::Signature;

// Entered by hand from the library's published interface, not from the product's declarations.
std::map<std::string, Signature> const kSignatures = {
    {"ctlInit", {"rp", 36}},
    {"ctlClose", {"p"}},
    {"ctlSetRuntimePath", {"r", sizeof(void*) == 4 ? 32 : 40}},
    {"ctlEnumerateDevices", {"prp", 4}},
    {"ctlGetDeviceProperties", {"pr", sizeof(void*) == 4 ? 312 : 320}},
    {"ctlOverclockGetProperties", {"pr", 296}},
    {"ctlPowerTelemetryGet", {"pr", 808}},
    {"ctlEnumFans", {"prp", 4}},
    {"ctlFanGetProperties", {"pr", 24}},
    {"ctlFanGetConfig", {"pr", 936}},
    {"ctlFanSetDefaultMode", {"p"}},
    {"ctlFanSetFixedSpeedMode", {"pr", 16}},
    {"ctlFanSetSpeedTableMode", {"pr", 908}},
    {"ctlOverclockWaiverSet", {"p"}},
    {"ctlOverclockPowerLimitGet", {"pp"}},
    {"ctlOverclockPowerLimitSet", {"pd"}},
    {"ctlOverclockGpuFrequencyOffsetGet", {"pp"}},
    {"ctlOverclockGpuFrequencyOffsetSet", {"pd"}},
    {"ctlOverclockVramFrequencyOffsetGet", {"pp"}},
    {"ctlOverclockVramFrequencyOffsetSet", {"pd"}},
};

[[maybe_unused]] gputune::test::ScriptedCore& Core() {
    return ScriptedIgcl();
}

}  // namespace

#define CTL_FORWARD(name, ...) SCRIPTED_FUNCTION(name)
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
        .otherSignature = Signature{"wwwwwwww"},
    });
    return core;
}
