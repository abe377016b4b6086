// The control library's entry points. Those with a signature are written out below and checked against the list of all;
// the rest are made from the list and answer that the feature is not supported.
#include <cstring>
#include <type_traits>

#include "sim/intel/IntelStandIn.h"
#include "sim/intel/hand_out.h"

#define CTL_EXPORT extern "C" __declspec(dllexport) ctl_result_t CTL_CDECL

using namespace gputune::intel;
using namespace gputune::sim;

namespace {

IntelStandIn& Self() {
    return IntelStandIn::Instance();
}

void SpoilCount(int& count, Garbage garbage, int onBoard) {
    constexpr int kHuge = 1000;
    count = garbage == Garbage::NegativeCount ? -1
            : garbage == Garbage::HugeCount   ? kHuge
            : garbage == Garbage::OneTooMany  ? kCtlFanTableSize + 1
                                              : onBoard;
}

}  // namespace

// An entry point whose work is one expression on the device's state, called state; readings are the device's at this
// moment.
#define SIM_DEVICE(entry, expression, ...)                                                                   \
    Self().Enter(                                                                                            \
        #entry,                                                                                              \
        [&](IntelDriver& driver, Garbage) {                                                                  \
            return driver.WithDevice(device, Self().Now(),                                                   \
                                     [&]([[maybe_unused]] IntelDeviceState& state,                           \
                                         [[maybe_unused]] Readings const& readings) { return expression; }); \
        },                                                                                                   \
        device __VA_OPT__(, ) __VA_ARGS__)

// The same on the state of the device that has the fan, which is number `number` there.
#define SIM_FAN(entry, expression, ...)                                                                     \
    Self().Enter(                                                                                           \
        #entry,                                                                                             \
        [&](IntelDriver& driver, [[maybe_unused]] Garbage garbage) {                                        \
            return driver.WithFan(fan, Self().Now(),                                                        \
                                  [&](IntelDeviceState& state, std::size_t number) { return expression; }); \
        },                                                                                                  \
        fan __VA_OPT__(, ) __VA_ARGS__)

CTL_EXPORT ctlInit(ctl_init_args_t* args, ctl_api_handle_t* handle) {
    return Self().EnterAtAnyTime(
        "ctlInit", [&](IntelDriver&, Garbage) { return Self().Initialize(*args, *handle); }, args, handle);
}

CTL_EXPORT ctlClose(ctl_api_handle_t handle) {
    return Self().Enter(
        "ctlClose", [&](IntelDriver&, Garbage) { return Self().Close(handle); }, handle);
}

CTL_EXPORT ctlSetRuntimePath(ctl_runtime_path_args_t* args) {
    return Self().EnterAtAnyTime(
        "ctlSetRuntimePath", [](IntelDriver&, Garbage) { return kCtlSuccess; }, args);
}

CTL_EXPORT ctlEnumerateDevices(ctl_api_handle_t handle, std::uint32_t* count, ctl_device_adapter_handle_t* devices) {
    return Self().Enter(
        "ctlEnumerateDevices",
        [&](IntelDriver& driver, Garbage garbage) {
            if (!Self().IsOwn(handle)) {
                return kCtlInvalidArgument;
            }
            HandOut(driver.Devices(), *count, devices, garbage);
            return kCtlSuccess;
        },
        handle, count, AddressOnly{devices});
}

CTL_EXPORT ctlGetDeviceProperties(ctl_device_adapter_handle_t device, ctl_device_adapter_properties_t* properties) {
    return Self().Enter(
        "ctlGetDeviceProperties",
        [&](IntelDriver& driver, Garbage garbage) {
            return driver.WithDevice(device, Self().Now(), [&](IntelDeviceState& state, Readings const&) {
                int const result = state.GetProperties(*properties);
                if (garbage == Garbage::UnterminatedStrings) {
                    std::memset(properties->name, 'N', sizeof(properties->name));
                }
                return result;
            });
        },
        device, properties);
}

CTL_EXPORT ctlPowerTelemetryGet(ctl_device_adapter_handle_t device, ctl_power_telemetry_t* telemetry) {
    return SIM_DEVICE(ctlPowerTelemetryGet, state.GetTelemetry(*telemetry, readings, Self().Now()), telemetry);
}

CTL_EXPORT ctlOverclockGetProperties(ctl_device_adapter_handle_t device, ctl_oc_properties_t* properties) {
    return SIM_DEVICE(ctlOverclockGetProperties, state.GetOverclockProperties(*properties), properties);
}

CTL_EXPORT ctlOverclockWaiverSet(ctl_device_adapter_handle_t device) {
    return SIM_DEVICE(ctlOverclockWaiverSet, state.SetWaiver());
}

CTL_EXPORT ctlOverclockPowerLimitGet(ctl_device_adapter_handle_t device, double* milliwatts) {
    return SIM_DEVICE(ctlOverclockPowerLimitGet, state.GetPowerLimit(*milliwatts), milliwatts);
}

CTL_EXPORT ctlOverclockPowerLimitSet(ctl_device_adapter_handle_t device, double milliwatts) {
    return SIM_DEVICE(ctlOverclockPowerLimitSet, state.SetPowerLimit(milliwatts), milliwatts);
}

CTL_EXPORT ctlOverclockGpuFrequencyOffsetGet(ctl_device_adapter_handle_t device, double* megahertz) {
    return SIM_DEVICE(ctlOverclockGpuFrequencyOffsetGet, state.GetGpuFrequencyOffset(*megahertz), megahertz);
}

CTL_EXPORT ctlOverclockGpuFrequencyOffsetSet(ctl_device_adapter_handle_t device, double megahertz) {
    return SIM_DEVICE(ctlOverclockGpuFrequencyOffsetSet, state.SetGpuFrequencyOffset(megahertz), megahertz);
}

CTL_EXPORT ctlOverclockVramFrequencyOffsetGet(ctl_device_adapter_handle_t device, double* megahertz) {
    return SIM_DEVICE(ctlOverclockVramFrequencyOffsetGet, state.GetVramFrequencyOffset(*megahertz), megahertz);
}

CTL_EXPORT ctlOverclockVramFrequencyOffsetSet(ctl_device_adapter_handle_t device, double megahertz) {
    return SIM_DEVICE(ctlOverclockVramFrequencyOffsetSet, state.SetVramFrequencyOffset(megahertz), megahertz);
}

CTL_EXPORT ctlEnumFans(ctl_device_adapter_handle_t device, std::uint32_t* count, ctl_fan_handle_t* fans) {
    return Self().Enter(
        "ctlEnumFans",
        [&](IntelDriver& driver, Garbage garbage) {
            return driver.WithDevice(device, Self().Now(), [&](IntelDeviceState&, Readings const&) {
                HandOut(driver.Fans(device), *count, fans, garbage);
                return kCtlSuccess;
            });
        },
        device, count, AddressOnly{fans});
}

CTL_EXPORT ctlFanGetProperties(ctl_fan_handle_t fan, ctl_fan_properties_t* properties) {
    auto const get = [&](IntelDeviceState& state, std::size_t number, Garbage garbage) {
        int const result = state.GetFanProperties(number, *properties);
        SpoilCount(properties->maxPoints, garbage, properties->maxPoints);
        return result;
    };
    return SIM_FAN(ctlFanGetProperties, get(state, number, garbage), properties);
}

CTL_EXPORT ctlFanGetConfig(ctl_fan_handle_t fan, ctl_fan_config_t* config) {
    auto const get = [&](IntelDeviceState& state, std::size_t number, Garbage garbage) {
        int const result = state.GetFanConfig(number, *config);
        SpoilCount(config->speedTable.numPoints, garbage, config->speedTable.numPoints);
        return result;
    };
    return SIM_FAN(ctlFanGetConfig, get(state, number, garbage), config);
}

CTL_EXPORT ctlFanSetDefaultMode(ctl_fan_handle_t fan) {
    return SIM_FAN(ctlFanSetDefaultMode, state.SetFanDefault(number));
}

CTL_EXPORT ctlFanSetFixedSpeedMode(ctl_fan_handle_t fan, ctl_fan_speed_t const* speed) {
    return SIM_FAN(ctlFanSetFixedSpeedMode, state.SetFanFixed(number, *speed), speed);
}

CTL_EXPORT ctlFanSetSpeedTableMode(ctl_fan_handle_t fan, ctl_fan_speed_table_t const* table) {
    return SIM_FAN(ctlFanSetSpeedTableMode, state.SetFanTable(number, *table), table);
}

// The list: an entry point without arguments there is made, one with arguments must be written out above.
#define SIM_MAKE(name)                         \
    CTL_EXPORT name() {                        \
        return Self().EnterUnsupported(#name); \
    }
#define SIM_MAKE_TYPED(name, ...)                                                         \
    static_assert(std::is_same_v<decltype(&name), ctl_result_t(CTL_CDECL*)(__VA_ARGS__)>, \
                  #name " has other arguments than the list says");
#define CTL_FORWARD(name, ...) SIM_MAKE##__VA_OPT__(_TYPED)(name __VA_OPT__(, ) __VA_ARGS__)
#include "intel/ctl_functions.inc"
