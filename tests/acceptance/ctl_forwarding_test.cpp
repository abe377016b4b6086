// The control library's functions that are passed on as they are.
#include <limits>

#include "ctl_client.h"

namespace gputune::test {
namespace {

// Passed on as they are, from the published interface.
std::vector<std::string> const kForwarded = {
    "ctlAUXAccess",
    "ctlCheckDriverVersion",
    "ctlEdidManagement",
    "ctlEngineGetActivity",
    "ctlEngineGetProperties",
    "ctlEnumEngineGroups",
    "ctlEnumFans",
    "ctlEnumFrequencyDomains",
    "ctlEnumMemoryModules",
    "ctlEnumPowerDomains",
    "ctlEnumTemperatureSensors",
    "ctlEnumerateDevices",
    "ctlEnumerateDisplayOutputs",
    "ctlEnumerateMuxDevices",
    "ctlFanGetConfig",
    "ctlFanGetProperties",
    "ctlFanGetState",
    "ctlFanSetDefaultMode",
    "ctlFanSetFixedSpeedMode",
    "ctlFanSetSpeedTableMode",
    "ctlFrequencyGetAvailableClocks",
    "ctlFrequencyGetProperties",
    "ctlFrequencyGetRange",
    "ctlFrequencyGetState",
    "ctlFrequencyGetThrottleTime",
    "ctlFrequencySetRange",
    "ctlGetAdaperDisplayEncoderProperties",  // the published letters
    "ctlGetBrightnessSetting",
    "ctlGetCurrentScaling",
    "ctlGetCurrentSharpness",
    "ctlGetDeviceProperties",
    "ctlGetDisplayProperties",
    "ctlGetIntelArcSyncInfoForMonitor",
    "ctlGetIntelArcSyncProfile",
    "ctlGetLACEConfig",
    "ctlGetMuxProperties",
    "ctlGetPowerOptimizationCaps",
    "ctlGetPowerOptimizationSetting",
    "ctlGetSet3DFeature",
    "ctlGetSetCombinedDisplay",
    "ctlGetSetCustomMode",
    "ctlGetSetDisplayGenlock",
    "ctlGetSetRetroScaling",
    "ctlGetSetVideoProcessingFeature",
    "ctlGetSharpnessCaps",
    "ctlGetSupported3DCapabilities",
    "ctlGetSupportedRetroScalingCapability",
    "ctlGetSupportedScalingCapability",
    "ctlGetSupportedVideoProcessingCapabilities",
    "ctlGetZeDevice",
    "ctlI2CAccess",
    "ctlMemoryGetBandwidth",
    "ctlMemoryGetProperties",
    "ctlMemoryGetState",
    "ctlOverclockGetProperties",
    "ctlOverclockGpuFrequencyOffsetGet",
    "ctlOverclockGpuFrequencyOffsetSet",
    "ctlOverclockGpuLockGet",
    "ctlOverclockGpuLockSet",
    "ctlOverclockGpuVoltageOffsetGet",
    "ctlOverclockGpuVoltageOffsetSet",
    "ctlOverclockPowerLimitGet",
    "ctlOverclockPowerLimitSet",
    "ctlOverclockTemperatureLimitGet",
    "ctlOverclockTemperatureLimitSet",
    "ctlOverclockVramFrequencyOffsetGet",
    "ctlOverclockVramFrequencyOffsetSet",
    "ctlOverclockVramVoltageOffsetGet",
    "ctlOverclockVramVoltageOffsetSet",
    "ctlOverclockWaiverSet",
    "ctlPanelDescriptorAccess",
    "ctlPciGetProperties",
    "ctlPciGetState",
    "ctlPixelTransformationGetConfig",
    "ctlPixelTransformationSetConfig",
    "ctlPowerGetEnergyCounter",
    "ctlPowerGetLimits",
    "ctlPowerGetProperties",
    "ctlPowerSetLimits",
    "ctlPowerTelemetryGet",
    "ctlReservedCall",
    "ctlSetBrightnessSetting",
    "ctlSetCurrentScaling",
    "ctlSetCurrentSharpness",
    "ctlSetIntelArcSyncProfile",
    "ctlSetLACEConfig",
    "ctlSetPowerOptimizationSetting",
    "ctlSoftwarePSR",
    "ctlSwitchMux",
    "ctlTemperatureGetProperties",
    "ctlTemperatureGetState",
    "ctlWaitForPropertyChange",
};

TEST(CtlForwarding, ForwardedNamesAreTheNinetyTwo) {
    EXPECT_EQ(kForwarded.size(), 92U);
    EXPECT_EQ(ForwardedNames(), kForwarded);
}

TEST(CtlForwarding, BeforeInitEveryFunctionIsNotInitialized) {
    Machine machine = ControlLibrary();
    for (std::string const& name : kForwarded) {
        EXPECT_EQ(machine.Ctl(name, 1, 2, 3, 4), kNotInitialized) << name;
    }
    ExpectLoads(machine, {});
    EXPECT_EQ(machine.TakeCallNames(), Lines{});
    EXPECT_EQ(machine.TakeLog(), Lines{});
}

TEST(CtlForwarding, EveryArgumentAndTheResultPassUntouched) {
    Machine machine = ControlLibrary();
    ASSERT_EQ(Init(machine), 0);
    machine.TakeCalls();
    int number = 0;
    for (std::string const& name : kForwarded) {
        SCOPED_TRACE(name);
        machine.Result(name, 1000 + number);
        // The library reads a record where it expects one.
        std::vector<unsigned char> room(2000);
        Word const pointer = Number(room.data());
        // Every argument as wide as they come.
        std::vector<Word> words = {
            0x1A000000 + number, pointer, static_cast<Word>(0xC3000000U), -1 - number, 5, 6, 7, 8};
        EXPECT_EQ(machine.Ctl(name, words[0], words[1], words[2], words[3], words[4], words[5], words[6], words[7]),
                  1000 + number);
        std::vector<Call> const calls = machine.TakeCalls();
        ASSERT_EQ(calls.size(), 1U);
        EXPECT_EQ(calls[0].entryPoint, name);
        words.resize(calls[0].args.size());
        EXPECT_EQ(calls[0].args, words);
        ++number;
    }
}

TEST(CtlForwarding, DoublesPassBitByBit) {
    Machine machine = ControlLibrary();
    ASSERT_EQ(Init(machine), 0);
    for (char const* name :
         {"ctlOverclockGpuFrequencyOffsetSet", "ctlOverclockGpuVoltageOffsetSet", "ctlOverclockVramFrequencyOffsetSet",
          "ctlOverclockVramVoltageOffsetSet", "ctlOverclockPowerLimitSet", "ctlOverclockTemperatureLimitSet"}) {
        SCOPED_TRACE(name);
        for (double const value : {0.1, -123.456, -0.0, 1e300, 5e-324, std::numeric_limits<double>::infinity()}) {
            EXPECT_EQ(machine.Ctl(name, kDevice, value), 0);
            Call const call = machine.LastCall(name);
            EXPECT_EQ(call.HandleArgument(0), kDevice);
            double const received = call.DoubleArgument(1);
            EXPECT_EQ(std::memcmp(&received, &value, sizeof value), 0) << received << " for " << value;
        }
    }
}

TEST(CtlForwarding, FunctionThatTheLibraryLacksIsNotInitialized) {
    Machine machine = ControlLibrary();
    for (std::string const& name : kForwarded) {
        machine.Hide(name);
    }
    ASSERT_EQ(Init(machine), 0);
    machine.TakeCalls();
    for (std::string const& name : kForwarded) {
        EXPECT_EQ(machine.Ctl(name, 1, 2, 3, 4), kNotInitialized) << name;
    }
    EXPECT_EQ(machine.TakeCallNames(), Lines{});
    EXPECT_EQ(Close(machine), 0);
}

}  // namespace
}  // namespace gputune::test
