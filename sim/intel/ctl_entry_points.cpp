// The control library's entry points. Those with a signature are written out below and checked against the list of all;
// the others are made from the list and return that the feature is not supported.
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

// An entry point that is one operation of the device's state. The operation gets the client's arguments, records by
// reference.
template <class Function, class... Args>
int EnterDevice(char const* entryPoint, Function IntelDeviceState::*operation, ctl_device_adapter_handle_t device,
                Args... args) {
    auto const onDriver = [&](IntelDriver& driver, Garbage) {
        return driver.WithDevice(device, Self().Now(), [&](IntelDeviceState& state, Readings const&) {
            return (state.*operation)(ToParameter(args)...);
        });
    };
    return Self().Enter(entryPoint, onDriver, device, args...);
}

// The same for a fan. The operation gets its number on the device first.
template <class Function, class... Args>
int EnterFan(char const* entryPoint, Function IntelDeviceState::*operation, ctl_fan_handle_t fan, Args... args) {
    auto const onDriver = [&](IntelDriver& driver, Garbage) {
        return driver.WithFan(fan, Self().Now(), [&](IntelDeviceState& state, std::size_t number) {
            return (state.*operation)(number, ToParameter(args)...);
        });
    };
    return Self().Enter(entryPoint, onDriver, fan, args...);
}

}  // namespace

CTL_EXPORT ctlInit(ctl_init_args_t* args, ctl_api_handle_t* handle) {
    auto const initialize = [&](IntelDriver&, Garbage) { return Self().Initialize(*args, *handle); };
    return Self().EnterAtAnyTime(__func__, initialize, args, handle);
}

CTL_EXPORT ctlClose(ctl_api_handle_t handle) {
    auto const close = [&](IntelDriver&, Garbage) { return Self().Close(handle); };
    return Self().Enter(__func__, close, handle);
}

CTL_EXPORT ctlSetRuntimePath(ctl_runtime_path_args_t* args) {
    auto const accept = [](IntelDriver&, Garbage) { return kCtlSuccess; };
    return Self().EnterAtAnyTime(__func__, accept, args);
}

CTL_EXPORT ctlEnumerateDevices(ctl_api_handle_t handle, std::uint32_t* count, ctl_device_adapter_handle_t* devices) {
    auto const enumerate = [&](IntelDriver& driver, Garbage garbage) {
        if (!Self().IsOwn(handle)) {
            return kCtlInvalidArgument;
        }
        HandOut(driver.Devices(), *count, devices, garbage);
        return kCtlSuccess;
    };
    return Self().Enter(__func__, enumerate, handle, count, AddressOnly{devices});
}

CTL_EXPORT ctlGetDeviceProperties(ctl_device_adapter_handle_t device, ctl_device_adapter_properties_t* properties) {
    return EnterDevice(__func__, &IntelDeviceState::GetProperties, device, properties);
}

CTL_EXPORT ctlPowerTelemetryGet(ctl_device_adapter_handle_t device, ctl_power_telemetry_t* telemetry) {
    auto const get = [&](IntelDriver& driver, Garbage) {
        return driver.WithDevice(device, Self().Now(), [&](IntelDeviceState& state, Readings const& readings) {
            return state.GetTelemetry(*telemetry, readings, Self().Now());
        });
    };
    return Self().Enter(__func__, get, device, telemetry);
}

CTL_EXPORT ctlOverclockGetProperties(ctl_device_adapter_handle_t device, ctl_oc_properties_t* properties) {
    return EnterDevice(__func__, &IntelDeviceState::GetOverclockProperties, device, properties);
}

CTL_EXPORT ctlOverclockWaiverSet(ctl_device_adapter_handle_t device) {
    return EnterDevice(__func__, &IntelDeviceState::SetWaiver, device);
}

CTL_EXPORT ctlOverclockPowerLimitGet(ctl_device_adapter_handle_t device, double* milliwatts) {
    return EnterDevice(__func__, &IntelDeviceState::GetPowerLimit, device, milliwatts);
}

CTL_EXPORT ctlOverclockPowerLimitSet(ctl_device_adapter_handle_t device, double milliwatts) {
    return EnterDevice(__func__, &IntelDeviceState::SetPowerLimit, device, milliwatts);
}

CTL_EXPORT ctlOverclockGpuFrequencyOffsetGet(ctl_device_adapter_handle_t device, double* megahertz) {
    return EnterDevice(__func__, &IntelDeviceState::GetGpuFrequencyOffset, device, megahertz);
}

CTL_EXPORT ctlOverclockGpuFrequencyOffsetSet(ctl_device_adapter_handle_t device, double megahertz) {
    return EnterDevice(__func__, &IntelDeviceState::SetGpuFrequencyOffset, device, megahertz);
}

CTL_EXPORT ctlOverclockVramFrequencyOffsetGet(ctl_device_adapter_handle_t device, double* megahertz) {
    return EnterDevice(__func__, &IntelDeviceState::GetVramFrequencyOffset, device, megahertz);
}

CTL_EXPORT ctlOverclockVramFrequencyOffsetSet(ctl_device_adapter_handle_t device, double megahertz) {
    return EnterDevice(__func__, &IntelDeviceState::SetVramFrequencyOffset, device, megahertz);
}

CTL_EXPORT ctlEnumFans(ctl_device_adapter_handle_t device, std::uint32_t* count, ctl_fan_handle_t* fans) {
    auto const enumerate = [&](IntelDriver& driver, Garbage garbage) {
        return driver.WithDevice(device, Self().Now(), [&](IntelDeviceState&, Readings const&) {
            HandOut(driver.Fans(device), *count, fans, garbage);
            return kCtlSuccess;
        });
    };
    return Self().Enter(__func__, enumerate, device, count, AddressOnly{fans});
}

CTL_EXPORT ctlFanGetProperties(ctl_fan_handle_t fan, ctl_fan_properties_t* properties) {
    return EnterFan(__func__, &IntelDeviceState::GetFanProperties, fan, properties);
}

CTL_EXPORT ctlFanGetConfig(ctl_fan_handle_t fan, ctl_fan_config_t* config) {
    return EnterFan(__func__, &IntelDeviceState::GetFanConfig, fan, config);
}

CTL_EXPORT ctlFanSetDefaultMode(ctl_fan_handle_t fan) {
    return EnterFan(__func__, &IntelDeviceState::SetFanDefault, fan);
}

CTL_EXPORT ctlFanSetFixedSpeedMode(ctl_fan_handle_t fan, ctl_fan_speed_t const* speed) {
    return EnterFan(__func__, &IntelDeviceState::SetFanFixed, fan, speed);
}

CTL_EXPORT ctlFanSetSpeedTableMode(ctl_fan_handle_t fan, ctl_fan_speed_table_t const* table) {
    return EnterFan(__func__, &IntelDeviceState::SetFanTable, fan, table);
}

// The list: an entry point without arguments in it is made here; one with arguments must be written out above.
#define SIM_MAKE(name)                            \
    CTL_EXPORT name() {                           \
        return Self().EnterUnsupported(__func__); \
    }
#define SIM_MAKE_TYPED(name, ...)                                                         \
    static_assert(std::is_same_v<decltype(&name), ctl_result_t(CTL_CDECL*)(__VA_ARGS__)>, \
                  #name " has other arguments than the list says");
#define CTL_FORWARD(name, ...) SIM_MAKE##__VA_OPT__(_TYPED)(name __VA_OPT__(, ) __VA_ARGS__)
#include "intel/ctl_functions.inc"
