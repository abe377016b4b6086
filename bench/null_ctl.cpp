// A control library that does next to nothing: one graphics device with constant telemetry.
#include "intel/ctl_records.h"

using namespace gputune::intel;

#define NULL_CTL extern "C" __declspec(dllexport) ctl_result_t CTL_CDECL

NULL_CTL ctlInit(ctl_init_args_t*, ctl_api_handle_t* api) {
    *api = reinterpret_cast<ctl_api_handle_t>(1);
    return 0;
}

NULL_CTL ctlClose(ctl_api_handle_t) {
    return 0;
}

NULL_CTL ctlEnumerateDevices(ctl_api_handle_t, std::uint32_t* count, ctl_device_adapter_handle_t* devices) {
    *count = 1;
    if (devices != nullptr) {
        *devices = reinterpret_cast<ctl_device_adapter_handle_t>(1);
    }
    return 0;
}

NULL_CTL ctlGetDeviceProperties(ctl_device_adapter_handle_t, ctl_device_adapter_properties_t* properties) {
    properties->device_type = kCtlDeviceTypeGraphics;
    return 0;
}

NULL_CTL ctlOverclockGetProperties(ctl_device_adapter_handle_t, ctl_oc_properties_t* properties) {
    properties->powerLimit.Default = 200;
    return 0;
}

NULL_CTL ctlPowerTelemetryGet(ctl_device_adapter_handle_t, ctl_power_telemetry_t* telemetry) {
    ctl_telemetry_item_t const item{.bSupported = 1, .units = 0, .type = 0, .value = 42};
    telemetry->gpuCurrentClockFrequency = item;
    telemetry->gpuCurrentTemperature = item;
    telemetry->globalActivityCounter = item;
    telemetry->vramCurrentClockFrequency = item;
    telemetry->vramCurrentTemperature = item;
    telemetry->fanSpeed[0] = item;
    return 0;
}

NULL_CTL ctlOverclockGpuFrequencyOffsetSet(ctl_device_adapter_handle_t, double) {
    return 0;
}
