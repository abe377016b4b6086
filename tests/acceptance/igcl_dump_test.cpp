// Intel boards: what the log says about their abilities, and how it names results.
#include "igcl_lines.h"

namespace gputune::test {
namespace {

// The dumps that choosing the adapter logs.
Lines TakeDumps(Machine& machine) {
    EXPECT_TRUE(machine.Init());
    Lines const log = machine.TakeLog();
    auto const begin = std::find(log.begin(), log.end(), "[PrintProperties()] ... begin");
    return {begin, log.end()};
}

struct Flag {
    char const* label;
    int offset;
};

Flag const kOverclockFlags[] = {
    {"Oc Supported?", oc::kSupported},
    {"Gpu Frequency Offset Supported?", oc::kGpuFrequency},
    {"Gpu Voltage Offset Supported?", oc::kGpuVoltage},
    {"VRAM Frequency Offset Supported?", oc::kVramFrequency},
    {"VRAM Voltage Offset Supported?", oc::kVramVoltage},
    {"Power Limit Supported?", oc::kPowerLimit},
    {"Temperature Limit Supported?", oc::kTemperatureLimit},
};

TEST(IgclDump, EachOverclockFlagIsReadWhereItStands) {
    Machine machine = IntelBoard();
    TakeDumps(machine);
    for (Flag const& flag : kOverclockFlags) {
        SCOPED_TRACE(flag.label);
        OrderOverclockByte(machine.Then("ctlOverclockGetProperties"), flag.offset);
        EXPECT_EQ(TakeDumps(machine), Joined({OverclockDump(Flags(kOverclockLabels, {flag.label})),
                                              TelemetryDump(Flags(kTelemetryLabels, {}))}));
    }
}

TEST(IgclDump, ReferenceFollowsARelativeControlThatHasOne) {
    Machine machine = IntelBoard();
    double value = 0;
    for (int const control : {oc::kGpuFrequency, oc::kGpuVoltage, oc::kVramFrequency, oc::kVramVoltage}) {
        value += 1000.5;
        OrderControl(machine, control, {.relative = 1, .reference = 1, .referenceValue = value});
    }
    // These have none to print.
    for (int const control : {oc::kPowerLimit, oc::kTemperatureLimit}) {
        OrderControl(machine, control, {.supported = 1, .relative = 1, .reference = 1, .referenceValue = 99});
    }
    EXPECT_EQ(
        TakeDumps(machine),
        Joined({OverclockDump({"Oc Supported? ... false", "Gpu Frequency Offset Supported? ... false",
                               "  - reference value ... 1000.500000", "Gpu Voltage Offset Supported? ... false",
                               "  - reference value ... 2001.000000", "VRAM Frequency Offset Supported? ... false",
                               "  - reference value ... 3001.500000", "VRAM Voltage Offset Supported? ... false",
                               "  - reference value ... 4002.000000", "Power Limit Supported? ... true",
                               "Temperature Limit Supported? ... true"}),
                TelemetryDump(Flags(kTelemetryLabels, {}))}));
}

TEST(IgclDump, RelativeOrReferenceAloneIsNotEnough) {
    Machine machine = IntelBoard();
    OrderControl(machine, oc::kGpuFrequency, {.relative = 1});
    OrderControl(machine, oc::kGpuVoltage, {.reference = 1});
    OrderControl(machine, oc::kVramFrequency, {.reference = 1});
    OrderControl(machine, oc::kVramVoltage, {.relative = 1});
    EXPECT_EQ(TakeDumps(machine), kDumps);
}

TEST(IgclDump, AnyByteButZeroIsTrue) {
    Machine machine = IntelBoard();
    for (Flag const& flag : kOverclockFlags) {
        OrderOverclockByte(machine, flag.offset, 0x80);
    }
    OrderControl(machine, oc::kGpuVoltage, {.supported = 0x80, .relative = 2, .reference = 0xFF});
    OrderTelemetryByte(machine, telemetry::kFanSpeed, 0xFE);
    Lines overclock = Flags(kOverclockLabels, kOverclockLabels);
    overclock.insert(overclock.begin() + 3, "  - reference value ... 0.000000");
    EXPECT_EQ(TakeDumps(machine),
              Joined({OverclockDump(overclock), TelemetryDump(Flags(kTelemetryLabels, {"Fan Speed Supported?"}))}));
}

TEST(IgclDump, EachTelemetryFlagIsReadWhereItStands) {
    Flag const flags[] = {
        {"TimeStamp Supported?", telemetry::kTimeStamp},
        {"Gpu Energy Counter Supported?", telemetry::kGpuEnergy},
        {"Gpu Voltage Supported?", telemetry::kGpuVoltage},
        {"Gpu Current Frequency Supported?", telemetry::kGpuClock},
        {"Gpu Current Temperature Supported?", telemetry::kGpuTemperature},
        {"Gpu Activity Counter Supported?", telemetry::kGlobalActivity},
        {"Render Activity Counter Supported?", telemetry::kRenderActivity},
        {"Media Activity Counter Supported?", telemetry::kMediaActivity},
        {"VRAM Energy Counter Supported?", telemetry::kVramEnergy},
        {"VRAM Voltage Supported?", telemetry::kVramVoltage},
        {"VRAM Frequency Supported?", telemetry::kVramClock},
        {"VRAM Effective Frequency Supported?", telemetry::kVramEffectiveClock},
        {"VRAM Read Bandwidth Supported?", telemetry::kVramRead},
        {"VRAM Write Bandwidth Supported?", telemetry::kVramWrite},
        {"VRAM Temperature Supported?", telemetry::kVramTemperature},
        {"Fan Speed Supported?", telemetry::kFanSpeed},
    };
    Machine machine = IntelBoard();
    TakeDumps(machine);
    for (Flag const& flag : flags) {
        SCOPED_TRACE(flag.label);
        OrderTelemetryByte(machine.Then("ctlPowerTelemetryGet"), flag.offset);
        EXPECT_EQ(TakeDumps(machine), Joined({OverclockDump(Flags(kOverclockLabels, {})),
                                              TelemetryDump(Flags(kTelemetryLabels, {flag.label}))}));
    }
    // What the dump does not name: the whole card's energy, the limits, the other fans.
    machine.Then("ctlPowerTelemetryGet");
    for (int const offset :
         {200, 201, 202, 203, 204, 376, 377, 378, 379, 380, 384, 408, 416, 440, 712, 736, 760, 784}) {
        OrderTelemetryByte(machine, offset);
    }
    EXPECT_EQ(TakeDumps(machine), kDumps);
}

TEST(IgclDump, FailingPropertiesAreReportedAndPrintedAsTheyAre) {
    Machine machine = IntelBoard();
    machine.Result("ctlOverclockGetProperties", kFailure);
    OrderControl(machine, oc::kVramVoltage, {.supported = 1});
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(WithoutDetection(machine.TakeLog()),
              Joined({DeviceLines({}),
                      {"[IGCLHelper::RetrieveOcProperties()] ... begin",
                       FailureLine("[IGCLHelper::RetrieveOcProperties()] ctlOverclockGetProperties")},
                      OverclockDump(Flags(kOverclockLabels, {"VRAM Voltage Offset Supported?"})),
                      TelemetryDump(Flags(kTelemetryLabels, {}))}));
}

TEST(IgclDump, FailingTelemetryLeavesTheFeaturesOut) {
    Machine machine = IntelBoard();
    machine.Result("ctlPowerTelemetryGet", kFailure);
    OrderItem(machine, telemetry::kTimeStamp, 1);
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(WithoutDetection(machine.TakeLog()),
              Joined({DeviceLines({}),
                      kRetrieved,
                      OverclockDump(Flags(kOverclockLabels, {})),
                      {FailureLine("[IGCLHelper::SetFanSpeed(int)] ctlPowerTelemetryGet")}}));  // deliberate
}

TEST(IgclDump, MissingFunctionsCountAsNotInitialized) {
    Machine machine = IntelBoard();
    machine.Hide("ctlOverclockGetProperties").Hide("ctlPowerTelemetryGet");
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(WithoutDetection(machine.TakeLog()),
              Joined({DeviceLines({}),
                      {"[IGCLHelper::RetrieveOcProperties()] ... begin",
                       NotInitializedLine("[IGCLHelper::RetrieveOcProperties()] ctlOverclockGetProperties")},
                      OverclockDump(Flags(kOverclockLabels, {})),
                      {NotInitializedLine("[IGCLHelper::SetFanSpeed(int)] ctlPowerTelemetryGet")}}));
}

// ---- Names of results ----

TEST(IgclResults, EveryCodeHasItsText) {
    std::pair<std::uint32_t, char const*> const texts[] = {
        {0x40000000, "[CTL_RESULT_ERROR_GENERIC_START]"},
        {0x40000001, "[CTL_RESULT_ERROR_NOT_INITIALIZED]"},
        {0x40000002, "[CTL_RESULT_ERROR_ALREADY_INITIALIZED]"},
        {0x40000003, "[CTL_RESULT_ERROR_DEVICE_LOST]"},
        {0x40000004, "[Unknown Error]"},
        {0x40000005, "[Unknown Error]"},
        {0x40000006, "[CTL_RESULT_ERROR_INSUFFICIENT_PERMISSIONS]"},
        {0x40000007, "[CTL_RESULT_ERROR_NOT_AVAILABLE]"},
        {0x40000008, "[CTL_RESULT_ERROR_UNINITIALIZED]"},
        {0x40000009, "[CTL_RESULT_ERROR_UNSUPPORTED_VERSION]"},
        {0x4000000A, "[CTL_RESULT_ERROR_UNSUPPORTED_FEATURE]"},
        {0x4000000B, "[CTL_RESULT_ERROR_INVALID_ARGUMENT]"},
        {0x4000000C, "[Unknown Error]"},
        {0x4000000D, "[CTL_RESULT_ERROR_INVALID_NULL_HANDLE]"},
        {0x4000000E, "[CTL_RESULT_ERROR_INVALID_NULL_POINTER]"},
        {0x4000000F, "[CTL_RESULT_ERROR_INVALID_SIZE]"},
        {0x40000010, "[CTL_RESULT_ERROR_UNSUPPORTED_SIZE]"},
        {0x40000011, "[Unknown Error]"},
        {0x40000012, "[Unknown Error]"},
        {0x40000013, "[Unknown Error]"},
        {0x40000014, "[Unknown Error]"},
        {0x40000015, "[CTL_RESULT_ERROR_NOT_IMPLEMENTED]"},
        {0x40000016, "[Unknown Error]"},
        {0x40000017, "[Unknown Error]"},
        {0x40000018, "[Unknown Error]"},
        {0x40000019, "[CTL_RESULT_ERROR_ZE_LOADER]"},
        {0x4000001A, "[CTL_RESULT_ERROR_INVALID_OPERATION_TYPE]"},
        {0x4000001B, "[Unknown Error]"},
        {0x40000026, "[Unknown Error]"},
        {0x4000FFFE, "[Unknown Error]"},
        {0x4000FFFF, "[CTL_RESULT_ERROR_UNKNOWN]"},
        {0x44000000, "[Unknown Error]"},
        {0x44000001, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_NOT_SUPPORTED]"},
        {0x44000002, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_VOLTAGE_OUTSIDE_RANGE]"},
        {0x44000003, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_FREQUENCY_OUTSIDE_RANGE]"},
        {0x44000004, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_POWER_OUTSIDE_RANGE]"},
        {0x44000005, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_TEMPERATURE_OUTSIDE_RANGE]"},
        {0x44000006, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_IN_VOLTAGE_LOCKED_MODE"},  // without its bracket, deliberate
        {0x44000007, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_RESET_REQUIRED]"},
        {0x44000008, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_WAIVER_NOT_SET]"},
        {0x44000009, "[Unknown Error]"},
        {1, "[Unknown Error]"},
        {0x7FFFFFFF, "[Unknown Error]"},
        {0x80000000, "[Unknown Error]"},
        {0xFFFFFFFF, "[Unknown Error]"},
    };
    Machine machine = IntelBoard().Started();
    for (auto const& [code, text] : texts) {
        int const result = static_cast<int>(code);
        machine.Then("ctlPowerTelemetryGet").Result("ctlPowerTelemetryGet", result);
        machine.Api().FetchHwmValues();
        EXPECT_EQ(machine.TakeLog().back(),
                  ErrorLine("[IGCLHelper::FetchHwmTelemetry()] ctlPowerTelemetryGet", result, text));
    }
}

}  // namespace
}  // namespace gputune::test
