// What garbage makes of Intel's records. Extreme values: flags that are neither 0 nor 1; numbers that are in turn
// the greatest, the least and NaN.
#pragma once

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "intel/ctl_records.h"
#include "sim/standin/garbage.h"

namespace gputune::sim {

constexpr int kHugePointCount = 1000;
constexpr std::uint8_t kOddFlag = 0xFF;

inline double ExtremeNumber(std::size_t turn) {
    return turn % 3 == 0 ? DBL_MAX : turn % 3 == 1 ? -DBL_MAX : std::nan("");
}

// The type stays: a client ignores devices of other types.
template <>
inline void Garble(intel::ctl_device_adapter_properties_t& record, Garbage garbage) {
    GarbleText(record.name, garbage, 'N');
    GarbleIntsFrom(&record.supported_subfunction_flags, record, garbage);
}
template <>
inline void Garble(intel::ctl_oc_control_info_t& record, Garbage garbage) {
    if (garbage == Garbage::ExtremeValues) {
        record.bSupported = record.bRelative = record.bReference = kOddFlag;
        std::size_t turn = 0;
        for (double* const number : {&record.Default, &record.reference, &record.step, &record.max, &record.min}) {
            *number = ExtremeNumber(turn++);
        }
    }
}
template <>
inline void Garble(intel::ctl_oc_properties_t& record, Garbage garbage) {
    if (garbage == Garbage::ExtremeValues) {
        record.bSupported = kOddFlag;
    }
    for (auto* const control : {&record.gpuFrequencyOffset, &record.gpuVoltageOffset, &record.vramFrequencyOffset,
                                &record.vramVoltageOffset, &record.powerLimit, &record.temperatureLimit}) {
        Garble(*control, garbage);
    }
}
template <>
inline void Garble(intel::ctl_power_telemetry_t& record, Garbage garbage) {
    if (garbage != Garbage::ExtremeValues) {
        return;
    }
    std::size_t turn = 0;
    auto const garble = [&](void* items, std::size_t bytes) {
        for (std::size_t i = 0; i < bytes / sizeof(intel::ctl_telemetry_item_t); ++i) {
            auto& item = static_cast<intel::ctl_telemetry_item_t*>(items)[i];
            item.bSupported = kOddFlag;
            item.value = ExtremeNumber(turn++);
        }
    };
#define SIM_TELEMETRY(name, ...) garble(&record.name, sizeof(record.name));
#include "sim/board/telemetry_items.inc"
}
template <>
inline void Garble(intel::ctl_fan_properties_t& record, Garbage garbage) {
    if (garbage == Garbage::ExtremeValues) {
        record.canControl = kOddFlag;
    }
    GarbleCount(record.maxPoints, garbage, kHugePointCount, intel::kCtlFanTableSize);
    GarbleIntsFrom(&record.supportedModes, record, garbage);
}
template <>
inline void Garble(intel::ctl_fan_config_t& record, Garbage garbage) {
    GarbleCount(record.speedTable.numPoints, garbage, kHugePointCount, intel::kCtlFanTableSize);
    GarbleIntsFrom(&record.mode, record, garbage);
}

}  // namespace gputune::sim
