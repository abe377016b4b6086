// What of Intel's records is spoilt. Flags are neither 0 nor 1, numbers the greatest, the least and none in turn.
#pragma once

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>

#include "intel/ctl_records.h"
#include "sim/standin/spoil.h"

namespace gputune::sim {

constexpr std::uint8_t kOddFlag = 0xFF;

inline double ExtremeNumber(std::size_t turn) {
    return turn % 3 == 0 ? DBL_MAX : turn % 3 == 1 ? -DBL_MAX : std::nan("");
}

inline void Spoil(double& value) {
    value = DBL_MAX;
}
inline void Spoil(intel::ctl_device_adapter_properties_t& record) {
    // A device of another type would not be looked at any further.
    constexpr std::size_t kStart = offsetof(intel::ctl_device_adapter_properties_t, supported_subfunction_flags);
    SpoilInts(&record.supported_subfunction_flags, sizeof(record) - kStart);
}
inline void Spoil(intel::ctl_oc_control_info_t& record) {
    record.bSupported = record.bRelative = record.bReference = kOddFlag;
    std::size_t turn = 0;
    for (double* const number : {&record.Default, &record.reference, &record.step, &record.max, &record.min}) {
        *number = ExtremeNumber(turn++);
    }
}
inline void Spoil(intel::ctl_oc_properties_t& record) {
    record.bSupported = kOddFlag;
    for (auto* const control : {&record.gpuFrequencyOffset, &record.gpuVoltageOffset, &record.vramFrequencyOffset,
                                &record.vramVoltageOffset, &record.powerLimit, &record.temperatureLimit}) {
        Spoil(*control);
    }
}
inline void Spoil(intel::ctl_power_telemetry_t& record) {
    std::size_t turn = 0;
    auto const spoilItem = [&](intel::ctl_telemetry_item_t& item) {
        item.bSupported = kOddFlag;
        item.value = ExtremeNumber(turn++);
    };
    auto const spoil = [&](auto& field) {
        if constexpr (std::is_array_v<std::remove_reference_t<decltype(field)>>) {
            std::for_each(std::begin(field), std::end(field), spoilItem);
        } else {
            spoilItem(field);
        }
    };
#define SIM_TELEMETRY(name, ...) spoil(record.name);
#include "sim/board/telemetry_items.inc"
}
inline void Spoil(intel::ctl_fan_properties_t& record) {
    record.canControl = kOddFlag;
    SpoilInts(&record.supportedModes, sizeof(record) - offsetof(intel::ctl_fan_properties_t, supportedModes));
}
inline void Spoil(intel::ctl_fan_config_t& record) {
    SpoilInts(&record.mode, sizeof(record) - offsetof(intel::ctl_fan_config_t, mode));
}

}  // namespace gputune::sim
