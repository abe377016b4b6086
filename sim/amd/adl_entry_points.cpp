// The vendor's entry points. Those with a signature are written out below and checked against the list of all; the rest
// are made from the list and answer that they are not supported.
#include <cstring>
#include <type_traits>

#include "sim/amd/AmdStandIn.h"
#include "sim/model/rounding.h"

#define ADL_EXPORT extern "C" __declspec(dllexport) int ADL_CDECL

using namespace gputune::amd;
using namespace gputune::sim;

namespace {

constexpr std::size_t kManyAdapters = 4096;
constexpr std::size_t kManySettings = 4096;

AmdStandIn& Self() {
    return AmdStandIn::Instance();
}

void Unterminate(AdapterInfo& record) {
    std::memset(record.strUDID, 'U', sizeof(record.strUDID));
    std::memset(record.strAdapterName, 'N', sizeof(record.strAdapterName));
    std::memset(record.strDisplayName, 'D', sizeof(record.strDisplayName));
    std::memset(record.strDriverPath, 'P', sizeof(record.strDriverPath));
    std::memset(record.strDriverPathExt, 'E', sizeof(record.strDriverPathExt));
    std::memset(record.strPNPString, 'S', sizeof(record.strPNPString));
}

template <class Record>
int HandOutAdapters(AmdDriver& driver, Garbage garbage, int adapter, int& count, Record*& out) {
    if (adapter != -1 && !driver.FindAdapter(adapter)) {
        return kInvalidAdapterIndex;
    }
    std::vector<Record> list;
    for (auto const& info : driver.AdapterInfos(adapter)) {
        Record& record = list.emplace_back();
        static_cast<AdapterInfo&>(record) = info;
        record.iSize = sizeof(record);
        if (garbage == Garbage::UnterminatedStrings) {
            Unterminate(record);
        }
    }
    return Self().HandOut(std::move(list), count, out, garbage, kManyAdapters);
}

void SpoilCount(int& count, Garbage garbage) {
    // Sixteen times this and a little more fits no 32-bit number.
    constexpr int kHuge = 0x10000000;
    if (garbage == Garbage::NegativeCount) {
        count = -1;
    } else if (garbage == Garbage::HugeCount) {
        count = kHuge;
    }
}

template <class Operation>
int OverdriveNCall(AmdDriver& driver, int adapter, Operation const& operation) {
    return driver.WithOverdriveN(adapter, Self().Now(), operation);
}

template <class Operation>
int Overdrive8Call(AmdDriver& driver, int adapter, Operation const& operation) {
    return driver.WithOverdrive8(adapter, Self().Now(), operation);
}

}  // namespace

// An entry point whose work is one expression on the adapter's OverdriveN or Overdrive8 state, called state; readings
// are the board's at this moment.
#define SIM_ENTER(entry, call, expression, ...)                                                                       \
    Self().Enter(                                                                                                     \
        #entry,                                                                                                       \
        [&](AmdDriver& driver, [[maybe_unused]] Garbage garbage) {                                                    \
            return call(                                                                                              \
                driver, adapter,                                                                                      \
                [&]([[maybe_unused]] auto& state, [[maybe_unused]] Readings const& readings) { return expression; }); \
        },                                                                                                            \
        context, adapter, __VA_ARGS__)

ADL_EXPORT ADL2_Main_ControlX2_Create(AdlMemoryAllocator allocator, int connectedOnly, AdlContext* context,
                                      int threadingModel) {
    return Self().Enter(
        "ADL2_Main_ControlX2_Create",
        [&](AmdDriver&, Garbage) {
            *context = Self().CreateContext(allocator);
            return kOk;
        },
        allocator, connectedOnly, context, threadingModel);
}

ADL_EXPORT ADL2_Overdrive_Caps(AdlContext context, int adapter, int* supported, int* enabled, int* version) {
    return Self().Enter(
        "ADL2_Overdrive_Caps",
        [&](AmdDriver& driver, Garbage) {
            if (!driver.FindAdapter(adapter)) {
                return kInvalidAdapterIndex;
            }
            *supported = *enabled = driver.Description().overdriveVersion != 0 ? 1 : 0;
            *version = driver.Description().overdriveVersion;
            return kOk;
        },
        context, adapter, supported, enabled, version);
}

ADL_EXPORT ADL2_Adapter_Active_Get(AdlContext context, int adapter, int* status) {
    return Self().Enter(
        "ADL2_Adapter_Active_Get",
        [&](AmdDriver& driver, Garbage) {
            Adapter const* const found = driver.FindAdapter(adapter);
            if (!found) {
                return kInvalidAdapterIndex;
            }
            *status = found->active ? 1 : 0;
            return kOk;
        },
        context, adapter, status);
}

ADL_EXPORT ADL2_Adapter_VRAMUsage_Get(AdlContext context, int adapter, int* megabytes) {
    return Self().Enter(
        "ADL2_Adapter_VRAMUsage_Get",
        [&](AmdDriver& driver, Garbage) {
            return driver.WithReadings(adapter, Self().Now(), [&](Readings const& readings) {
                *megabytes = Rounded(readings.memoryUsed);
                return kOk;
            });
        },
        context, adapter, megabytes);
}

ADL_EXPORT ADL2_Adapter_AdapterInfoX4_Get(AdlContext context, int adapter, int* count, AdapterInfoX2** list) {
    return Self().Enter(
        "ADL2_Adapter_AdapterInfoX4_Get",
        [&](AmdDriver& driver, Garbage garbage) { return HandOutAdapters(driver, garbage, adapter, *count, *list); },
        context, adapter, count, list);
}

ADL_EXPORT ADL2_Adapter_AdapterInfoX3_Get(AdlContext context, int adapter, int* count, AdapterInfo** list) {
    return Self().Enter(
        "ADL2_Adapter_AdapterInfoX3_Get",
        [&](AmdDriver& driver, Garbage garbage) { return HandOutAdapters(driver, garbage, adapter, *count, *list); },
        context, adapter, count, list);
}

ADL_EXPORT ADL2_Adapter_MemoryInfo_Get(AdlContext context, int adapter, ADLMemoryInfo* info) {
    return Self().Enter(
        "ADL2_Adapter_MemoryInfo_Get",
        [&](AmdDriver& driver, Garbage garbage) {
            if (!driver.FindAdapter(adapter)) {
                return kInvalidAdapterIndex;
            }
            Memory const& memory = driver.Description().memory;
            *info = {};
            info->iMemorySize = std::int64_t{memory.megabytes} * 1024 * 1024;
            info->iMemoryBandwidth = memory.bandwidth;
            memory.type.copy(info->strMemoryType, sizeof(info->strMemoryType) - 1);
            if (garbage == Garbage::UnterminatedStrings) {
                std::memset(info->strMemoryType, 'T', sizeof(info->strMemoryType));
            }
            return kOk;
        },
        context, adapter, info);
}

ADL_EXPORT ADL2_Overdrive5_ThermalDevices_Enum(AdlContext context, int adapter, int controller,
                                               ADLThermalControllerInfo* info) {
    return Self().Enter(
        "ADL2_Overdrive5_ThermalDevices_Enum",
        [&](AmdDriver& driver, Garbage garbage) {
            if (garbage == Garbage::EndlessEnumeration) {
                info->iThermalDomain = kThermalDomainGpu;
                info->iDomainIndex = controller;
                return kOk;
            }
            return OverdriveNCall(driver, adapter, [&](OverdriveNState& state, Readings const&) {
                return state.EnumerateController(controller, *info);
            });
        },
        context, adapter, controller, info);
}

ADL_EXPORT ADL2_Overdrive5_FanSpeed_Get(AdlContext context, int adapter, int controller, ADLFanSpeedValue* value) {
    return SIM_ENTER(ADL2_Overdrive5_FanSpeed_Get, OverdriveNCall, state.GetFanSpeed(controller, *value, readings),
                     controller, value);
}

ADL_EXPORT ADL2_Overdrive5_FanSpeed_Set(AdlContext context, int adapter, int controller, ADLFanSpeedValue* value) {
    return SIM_ENTER(ADL2_Overdrive5_FanSpeed_Set, OverdriveNCall, state.SetFanSpeed(controller, *value), controller,
                     value);
}

ADL_EXPORT ADL2_Overdrive5_FanSpeedToDefault_Set(AdlContext context, int adapter, int controller) {
    return SIM_ENTER(ADL2_Overdrive5_FanSpeedToDefault_Set, OverdriveNCall, state.ResetFanSpeed(controller),
                     controller);
}

ADL_EXPORT ADL2_OverdriveN_CapabilitiesX2_Get(AdlContext context, int adapter, ADLODNCapabilitiesX2* capabilities) {
    return Self().Enter(
        "ADL2_OverdriveN_CapabilitiesX2_Get",
        [&](AmdDriver& driver, Garbage garbage) {
            return OverdriveNCall(driver, adapter, [&](OverdriveNState& state, Readings const&) {
                int const result = state.GetCapabilities(*capabilities);
                SpoilCount(capabilities->iMaximumNumberOfPerformanceLevels, garbage);
                return result;
            });
        },
        context, adapter, capabilities);
}

ADL_EXPORT ADL2_OverdriveN_SystemClocksX2_Get(AdlContext context, int adapter, ADLODNPerformanceLevelsX2* table) {
    return SIM_ENTER(ADL2_OverdriveN_SystemClocksX2_Get, OverdriveNCall, state.GetEngineClocks(*table), table);
}

ADL_EXPORT ADL2_OverdriveN_SystemClocksX2_Set(AdlContext context, int adapter, ADLODNPerformanceLevelsX2* table) {
    return SIM_ENTER(ADL2_OverdriveN_SystemClocksX2_Set, OverdriveNCall, state.SetEngineClocks(*table), table);
}

ADL_EXPORT ADL2_OverdriveN_MemoryClocksX2_Get(AdlContext context, int adapter, ADLODNPerformanceLevelsX2* table) {
    return SIM_ENTER(ADL2_OverdriveN_MemoryClocksX2_Get, OverdriveNCall, state.GetMemoryClocks(*table), table);
}

ADL_EXPORT ADL2_OverdriveN_MemoryClocksX2_Set(AdlContext context, int adapter, ADLODNPerformanceLevelsX2* table) {
    return SIM_ENTER(ADL2_OverdriveN_MemoryClocksX2_Set, OverdriveNCall, state.SetMemoryClocks(*table), table);
}

ADL_EXPORT ADL2_OverdriveN_FanControl_Get(AdlContext context, int adapter, ADLODNFanControl* fan) {
    return SIM_ENTER(ADL2_OverdriveN_FanControl_Get, OverdriveNCall, state.GetFan(*fan, readings), fan);
}

ADL_EXPORT ADL2_OverdriveN_FanControl_Set(AdlContext context, int adapter, ADLODNFanControl* fan) {
    return SIM_ENTER(ADL2_OverdriveN_FanControl_Set, OverdriveNCall, state.SetFan(*fan), fan);
}

ADL_EXPORT ADL2_OverdriveN_PowerLimit_Get(AdlContext context, int adapter, ADLODNPowerLimitSetting* limit) {
    return SIM_ENTER(ADL2_OverdriveN_PowerLimit_Get, OverdriveNCall, state.GetPowerLimit(*limit), limit);
}

ADL_EXPORT ADL2_OverdriveN_PowerLimit_Set(AdlContext context, int adapter, ADLODNPowerLimitSetting* limit) {
    return SIM_ENTER(ADL2_OverdriveN_PowerLimit_Set, OverdriveNCall, state.SetPowerLimit(*limit), limit);
}

ADL_EXPORT ADL2_OverdriveN_Temperature_Get(AdlContext context, int adapter, int type, int* value) {
    return SIM_ENTER(ADL2_OverdriveN_Temperature_Get, OverdriveNCall, state.GetTemperature(type, *value, readings),
                     type, value);
}

ADL_EXPORT ADL2_OverdriveN_PerformanceStatus_Get(AdlContext context, int adapter, ADLODNPerformanceStatus* status) {
    return SIM_ENTER(ADL2_OverdriveN_PerformanceStatus_Get, OverdriveNCall, state.GetStatus(*status, readings), status);
}

ADL_EXPORT ADL2_Overdrive8_Init_Setting_Get(AdlContext context, int adapter, ADLOD8InitSetting* settings) {
    return Self().Enter(
        "ADL2_Overdrive8_Init_Setting_Get",
        [&](AmdDriver& driver, Garbage garbage) {
            return Overdrive8Call(driver, adapter, [&](Overdrive8State& state, Readings const&) {
                int const result = state.GetInit(*settings);
                SpoilCount(settings->count, garbage);
                return result;
            });
        },
        context, adapter, settings);
}

ADL_EXPORT ADL2_Overdrive8_Current_Setting_Get(AdlContext context, int adapter, ADLOD8CurrentSetting* settings) {
    return Self().Enter(
        "ADL2_Overdrive8_Current_Setting_Get",
        [&](AmdDriver& driver, Garbage garbage) {
            return Overdrive8Call(driver, adapter, [&](Overdrive8State& state, Readings const&) {
                int const result = state.GetCurrent(*settings);
                SpoilCount(settings->count, garbage);
                return result;
            });
        },
        context, adapter, settings);
}

ADL_EXPORT ADL2_Overdrive8_Setting_Set(AdlContext context, int adapter, ADLOD8SetSetting* request,
                                       ADLOD8CurrentSetting* settings) {
    return SIM_ENTER(ADL2_Overdrive8_Setting_Set, Overdrive8Call, state.Set(*request, *settings), request, settings);
}

ADL_EXPORT ADL2_New_QueryPMLogData_Get(AdlContext context, int adapter, ADLPMLogDataOutput* data) {
    return SIM_ENTER(ADL2_New_QueryPMLogData_Get, Overdrive8Call, state.GetSensors(*data, readings), data);
}

ADL_EXPORT ADL2_Overdrive8_Init_SettingX2_Get(AdlContext context, int adapter, int* capabilities, int* count,
                                              ADLOD8SingleInitSetting** list) {
    return Self().Enter(
        "ADL2_Overdrive8_Init_SettingX2_Get",
        [&](AmdDriver& driver, Garbage garbage) {
            return Overdrive8Call(driver, adapter, [&](Overdrive8State& state, Readings const&) {
                *capabilities = state.Capabilities();
                return Self().HandOut(state.InitSettings(), *count, *list, garbage, kManySettings);
            });
        },
        context, adapter, capabilities, count, list);
}

ADL_EXPORT ADL2_Overdrive8_Current_SettingX2_Get(AdlContext context, int adapter, int* count, int** list) {
    return Self().Enter(
        "ADL2_Overdrive8_Current_SettingX2_Get",
        [&](AmdDriver& driver, Garbage garbage) {
            return Overdrive8Call(driver, adapter, [&](Overdrive8State& state, Readings const&) {
                return Self().HandOut(state.CurrentSettings(), *count, *list, garbage, kManySettings);
            });
        },
        context, adapter, count, list);
}

ADL_EXPORT ADL2_Adapter_FrameMetrics_Get(AdlContext context, int adapter, int source, float* framesPerSecond) {
    return Self().Enter(
        "ADL2_Adapter_FrameMetrics_Get",
        [&](AmdDriver& driver, Garbage) {
            if (!driver.Description().frameMetricsRunning) {
                return driver.FindAdapter(adapter) ? kError : kInvalidAdapterIndex;
            }
            return driver.WithReadings(adapter, Self().Now(), [&](Readings const& readings) {
                *framesPerSecond = static_cast<float>(readings.framesPerSecond);
                return kOk;
            });
        },
        context, adapter, source, framesPerSecond);
}

// The list: an entry point without arguments there is made, one with arguments must be written out above.
#define SIM_MAKE(name)                                                                 \
    ADL_EXPORT name() {                                                                \
        return Self().Enter(#name, [](AmdDriver&, Garbage) { return kNotSupported; }); \
    }
#define SIM_MAKE_TYPED(name, ...)                                                \
    static_assert(std::is_same_v<decltype(&name), int(ADL_CDECL*)(__VA_ARGS__)>, \
                  #name " has other arguments than the list says");
#define ADL_FUNCTION(name, ...) SIM_MAKE##__VA_OPT__(_TYPED)(name __VA_OPT__(, ) __VA_ARGS__)
#include "amd/adl_functions.inc"
