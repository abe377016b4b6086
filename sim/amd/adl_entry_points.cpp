// The entry points of AMD's library. Those with a signature are written out below and checked against the list of all;
// the others are made from the list and return that they are not supported.
#include <type_traits>

#include "sim/amd/AmdStandIn.h"
#include "sim/model/rounding.h"
#include "sim/standin/copy_text.h"

#define ADL_EXPORT extern "C" __declspec(dllexport) int ADL_CDECL

using namespace gputune::amd;
using namespace gputune::sim;

namespace {

AmdStandIn& Self() {
    return AmdStandIn::Instance();
}

// An entry point that is one operation of the adapter's OverdriveN or Overdrive8 state. The operation gets the client's
// arguments, records by reference, and the board's present readings when it has a parameter for them.
template <class State, class Function, class... Args>
int EnterState(char const* entryPoint, Function State::*operation, AdlContext context, int adapter, Args... args) {
    auto const onDriver = [&](AmdDriver& driver, Garbage) {
        return driver.With<State>(adapter, Self().Now(), [&](State& state, Readings const& readings) {
            if constexpr (std::is_invocable_v<decltype(operation), State&, decltype(ToParameter(args))...>) {
                return (state.*operation)(ToParameter(args)...);
            } else {
                return (state.*operation)(ToParameter(args)..., readings);
            }
        });
    };
    return Self().Enter(entryPoint, onDriver, context, adapter, args...);
}

// An entry point that returns data of the board file: operation(AmdBoard const&, Adapter const&).
template <class Operation, class... Args>
int EnterAdapter(char const* entryPoint, Operation operation, AdlContext context, int adapter, Args... args) {
    auto const onDriver = [&](AmdDriver& driver, Garbage) {
        Adapter const* const found = driver.FindAdapter(adapter);
        return found != nullptr ? operation(driver.Description(), *found) : kAdlInvalidAdapterIndex;
    };
    return Self().Enter(entryPoint, onDriver, context, adapter, args...);
}

// An entry point that returns the list of adapters, as records of one type or the other.
template <class Record>
int EnterAdapterList(char const* entryPoint, AdlContext context, int adapter, int* count, Record** out) {
    auto const onDriver = [&](AmdDriver& driver, Garbage garbage) {
        if (adapter != -1 && driver.FindAdapter(adapter) == nullptr) {
            return kAdlInvalidAdapterIndex;
        }
        std::vector<Record> list;
        for (auto const& info : driver.AdapterInfos(adapter)) {
            Record& record = list.emplace_back();
            static_cast<AdapterInfo&>(record) = info;
            record.iSize = sizeof(record);
            Garble(record, garbage);
        }
        return Self().HandOut(std::move(list), *count, *out, garbage);
    };
    return Self().Enter(entryPoint, onDriver, context, adapter, count, out);
}

}  // namespace

ADL_EXPORT ADL2_Main_ControlX2_Create(AdlMemoryAllocator allocator, int connectedOnly, AdlContext* context,
                                      int threadingModel) {
    auto const create = [&](AmdDriver&, Garbage) {
        *context = Self().CreateContext(allocator);
        return kAdlOk;
    };
    return Self().Enter(__func__, create, allocator, connectedOnly, context, threadingModel);
}

ADL_EXPORT ADL2_Overdrive_Caps(AdlContext context, int adapter, int* supported, int* enabled, int* version) {
    auto const get = [&](AmdBoard const& board, Adapter const&) {
        *supported = *enabled = board.overdriveVersion != 0 ? 1 : 0;
        *version = board.overdriveVersion;
        return kAdlOk;
    };
    return EnterAdapter(__func__, get, context, adapter, supported, enabled, version);
}

ADL_EXPORT ADL2_Adapter_Active_Get(AdlContext context, int adapter, int* status) {
    auto const get = [&](AmdBoard const&, Adapter const& found) {
        *status = found.active ? 1 : 0;
        return kAdlOk;
    };
    return EnterAdapter(__func__, get, context, adapter, status);
}

ADL_EXPORT ADL2_Adapter_MemoryInfo_Get(AdlContext context, int adapter, ADLMemoryInfo* info) {
    auto const get = [&](AmdBoard const& board, Adapter const&) {
        *info = {};
        info->iMemorySize = std::int64_t{board.memory.megabytes} * 1024 * 1024;
        info->iMemoryBandwidth = board.memory.bandwidth;
        CopyText(board.memory.type, info->strMemoryType);
        return kAdlOk;
    };
    return EnterAdapter(__func__, get, context, adapter, info);
}

ADL_EXPORT ADL2_Adapter_AdapterInfoX4_Get(AdlContext context, int adapter, int* count, AdapterInfoX2** list) {
    return EnterAdapterList(__func__, context, adapter, count, list);
}

ADL_EXPORT ADL2_Adapter_AdapterInfoX3_Get(AdlContext context, int adapter, int* count, AdapterInfo** list) {
    return EnterAdapterList(__func__, context, adapter, count, list);
}

ADL_EXPORT ADL2_Adapter_VRAMUsage_Get(AdlContext context, int adapter, int* megabytes) {
    auto const get = [&](AmdDriver& driver, Garbage) {
        return driver.WithReadings(adapter, Self().Now(), [&](Readings const& readings) {
            *megabytes = Rounded(readings.memoryUsed);
            return kAdlOk;
        });
    };
    return Self().Enter(__func__, get, context, adapter, megabytes);
}

ADL_EXPORT ADL2_Adapter_FrameMetrics_Get(AdlContext context, int adapter, int source, float* framesPerSecond) {
    auto const get = [&](AmdDriver& driver, Garbage) {
        if (!driver.Description().frameMetricsRunning) {
            return driver.FindAdapter(adapter) != nullptr ? kAdlError : kAdlInvalidAdapterIndex;
        }
        return driver.WithReadings(adapter, Self().Now(), [&](Readings const& readings) {
            *framesPerSecond = static_cast<float>(readings.framesPerSecond);
            return kAdlOk;
        });
    };
    return Self().Enter(__func__, get, context, adapter, source, framesPerSecond);
}

ADL_EXPORT ADL2_Overdrive5_ThermalDevices_Enum(AdlContext context, int adapter, int controller,
                                               ADLThermalControllerInfo* info) {
    auto const get = [&](AmdDriver& driver, Garbage garbage) {
        if (garbage == Garbage::EndlessEnumeration) {
            info->iThermalDomain = kThermalDomainGpu;
            info->iDomainIndex = controller;
            return kAdlOk;
        }
        return driver.With<OverdriveNState>(adapter, Self().Now(), [&](OverdriveNState& state, Readings const&) {
            return state.EnumerateController(controller, *info);
        });
    };
    return Self().Enter(__func__, get, context, adapter, controller, info);
}

ADL_EXPORT ADL2_Overdrive5_FanSpeed_Get(AdlContext context, int adapter, int controller, ADLFanSpeedValue* value) {
    return EnterState(__func__, &OverdriveNState::GetFanSpeed, context, adapter, controller, value);
}

ADL_EXPORT ADL2_Overdrive5_FanSpeed_Set(AdlContext context, int adapter, int controller, ADLFanSpeedValue* value) {
    return EnterState(__func__, &OverdriveNState::SetFanSpeed, context, adapter, controller, value);
}

ADL_EXPORT ADL2_Overdrive5_FanSpeedToDefault_Set(AdlContext context, int adapter, int controller) {
    return EnterState(__func__, &OverdriveNState::ResetFanSpeed, context, adapter, controller);
}

ADL_EXPORT ADL2_OverdriveN_CapabilitiesX2_Get(AdlContext context, int adapter, ADLODNCapabilitiesX2* capabilities) {
    return EnterState(__func__, &OverdriveNState::GetCapabilities, context, adapter, capabilities);
}

ADL_EXPORT ADL2_OverdriveN_SystemClocksX2_Get(AdlContext context, int adapter, ADLODNPerformanceLevelsX2* table) {
    return EnterState(__func__, &OverdriveNState::GetEngineClocks, context, adapter, table);
}

ADL_EXPORT ADL2_OverdriveN_SystemClocksX2_Set(AdlContext context, int adapter, ADLODNPerformanceLevelsX2* table) {
    return EnterState(__func__, &OverdriveNState::SetEngineClocks, context, adapter, table);
}

ADL_EXPORT ADL2_OverdriveN_MemoryClocksX2_Get(AdlContext context, int adapter, ADLODNPerformanceLevelsX2* table) {
    return EnterState(__func__, &OverdriveNState::GetMemoryClocks, context, adapter, table);
}

ADL_EXPORT ADL2_OverdriveN_MemoryClocksX2_Set(AdlContext context, int adapter, ADLODNPerformanceLevelsX2* table) {
    return EnterState(__func__, &OverdriveNState::SetMemoryClocks, context, adapter, table);
}

ADL_EXPORT ADL2_OverdriveN_FanControl_Get(AdlContext context, int adapter, ADLODNFanControl* fan) {
    return EnterState(__func__, &OverdriveNState::GetFan, context, adapter, fan);
}

ADL_EXPORT ADL2_OverdriveN_FanControl_Set(AdlContext context, int adapter, ADLODNFanControl* fan) {
    return EnterState(__func__, &OverdriveNState::SetFan, context, adapter, fan);
}

ADL_EXPORT ADL2_OverdriveN_PowerLimit_Get(AdlContext context, int adapter, ADLODNPowerLimitSetting* limit) {
    return EnterState(__func__, &OverdriveNState::GetPowerLimit, context, adapter, limit);
}

ADL_EXPORT ADL2_OverdriveN_PowerLimit_Set(AdlContext context, int adapter, ADLODNPowerLimitSetting* limit) {
    return EnterState(__func__, &OverdriveNState::SetPowerLimit, context, adapter, limit);
}

ADL_EXPORT ADL2_OverdriveN_Temperature_Get(AdlContext context, int adapter, int type, int* value) {
    return EnterState(__func__, &OverdriveNState::GetTemperature, context, adapter, type, value);
}

ADL_EXPORT ADL2_OverdriveN_PerformanceStatus_Get(AdlContext context, int adapter, ADLODNPerformanceStatus* status) {
    return EnterState(__func__, &OverdriveNState::GetStatus, context, adapter, status);
}

ADL_EXPORT ADL2_Overdrive8_Init_Setting_Get(AdlContext context, int adapter, ADLOD8InitSetting* settings) {
    return EnterState(__func__, &Overdrive8State::GetInit, context, adapter, settings);
}

ADL_EXPORT ADL2_Overdrive8_Current_Setting_Get(AdlContext context, int adapter, ADLOD8CurrentSetting* settings) {
    return EnterState(__func__, &Overdrive8State::GetCurrent, context, adapter, settings);
}

ADL_EXPORT ADL2_Overdrive8_Setting_Set(AdlContext context, int adapter, ADLOD8SetSetting* request,
                                       ADLOD8CurrentSetting* settings) {
    return EnterState(__func__, &Overdrive8State::Set, context, adapter, request, settings);
}

ADL_EXPORT ADL2_New_QueryPMLogData_Get(AdlContext context, int adapter, ADLPMLogDataOutput* data) {
    return EnterState(__func__, &Overdrive8State::GetSensors, context, adapter, data);
}

ADL_EXPORT ADL2_Overdrive8_Init_SettingX2_Get(AdlContext context, int adapter, int* capabilities, int* count,
                                              ADLOD8SingleInitSetting** list) {
    auto const get = [&](AmdDriver& driver, Garbage garbage) {
        return driver.With<Overdrive8State>(adapter, Self().Now(), [&](Overdrive8State& state, Readings const&) {
            *capabilities = state.Capabilities();
            return Self().HandOut(state.InitSettings(), *count, *list, garbage);
        });
    };
    return Self().Enter(__func__, get, context, adapter, capabilities, count, list);
}

ADL_EXPORT ADL2_Overdrive8_Current_SettingX2_Get(AdlContext context, int adapter, int* count, int** list) {
    auto const get = [&](AmdDriver& driver, Garbage garbage) {
        return driver.With<Overdrive8State>(adapter, Self().Now(), [&](Overdrive8State& state, Readings const&) {
            return Self().HandOut(state.CurrentSettings(), *count, *list, garbage);
        });
    };
    return Self().Enter(__func__, get, context, adapter, count, list);
}

// The list: an entry point without arguments in it is made here; one with arguments must be written out above.
#define SIM_MAKE(name)                                                                       \
    ADL_EXPORT name() {                                                                      \
        return Self().Enter(__func__, [](AmdDriver&, Garbage) { return kAdlNotSupported; }); \
    }
#define SIM_MAKE_TYPED(name, ...)                                                \
    static_assert(std::is_same_v<decltype(&name), int(ADL_CDECL*)(__VA_ARGS__)>, \
                  #name " has other arguments than the list says");
#define ADL_FUNCTION(name, ...) SIM_MAKE##__VA_OPT__(_TYPED)(name __VA_OPT__(, ) __VA_ARGS__)
#include "amd/adl_functions.inc"
