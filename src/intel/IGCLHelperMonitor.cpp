// Telemetry.
#include "intel/IGCLHelper.h"

namespace gputune::intel {

void IGCLHelper::FetchHwmValues() {
    log::Entry(log::Tag{"[IGCLHelper::FetchHwmValues()]"}, "begin");
    ctl_power_telemetry_t telemetry;
    // The tag names another method than the line before: deliberate.
    if (!ReadTelemetry(log::Tag{"[IGCLHelper::FetchHwmTelemetry()]"}, telemetry)) {
        return;
    }
    // As the library reports it. What is not supported keeps its last reading.
    auto const store = [this](int key, ctl_telemetry_item_t const& item) {
        if (item.bSupported != 0) {
            HwmValues().Store(key, item.value);
        }
    };
    store(GPUTUNE_HWM_GPU_CORE_CLOCK, telemetry.gpuCurrentClockFrequency);
    store(GPUTUNE_HWM_GPU_TEMPERATURE, telemetry.gpuCurrentTemperature);
    // A counter, not a percentage.
    store(GPUTUNE_HWM_GPU_LOAD, telemetry.globalActivityCounter);
    store(GPUTUNE_HWM_GPU_MEMORY_CLOCK, telemetry.vramCurrentClockFrequency);
    store(GPUTUNE_HWM_GPU_MEMORY_TEMPERATURE, telemetry.vramCurrentTemperature);
    store(GPUTUNE_HWM_FAN_SPEED_RPM, telemetry.fanSpeed[0]);
}

}  // namespace gputune::intel
