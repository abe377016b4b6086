// The fan operations of IntelDeviceState. The model has one fan for all fans of a device: the last setting holds.
#include <algorithm>
#include <utility>

#include "sim/intel/IntelDeviceState.h"
#include "sim/intel/ctl_codes.h"

namespace gputune::sim {

namespace {

constexpr int kFullSpeed = 100;  // percent

intel::ctl_fan_speed_t Percent(int speed) {
    return {.Size = sizeof(intel::ctl_fan_speed_t), .Version = 0, .speed = speed, .units = intel::kCtlFanUnitsPercent};
}

bool IsSpeed(intel::ctl_fan_speed_t const& speed) {
    return speed.units == intel::kCtlFanUnitsPercent && speed.speed >= 0 && speed.speed <= kFullSpeed;
}

}  // namespace

int IntelDeviceState::TakesMode(std::size_t fan, std::uint32_t mode) const {
    IntelFan const& described = description_.fans[fan];
    bool const takes = described.canControl && (static_cast<std::uint32_t>(described.modes) & mode) != 0;
    return takes ? kCtlSuccess : kCtlUnsupportedFeature;
}

int IntelDeviceState::SetFan(std::size_t fan, Fan setting) {
    fans_[fan] = setting;
    governing_ = std::move(setting);
    return kCtlSuccess;
}

int IntelDeviceState::GetFanProperties(std::size_t fan, intel::ctl_fan_properties_t& out) const {
    IntelFan const& described = description_.fans[fan];
    out.canControl = described.canControl ? 1 : 0;
    out.supportedModes = static_cast<std::uint32_t>(described.modes);
    out.supportedUnits = static_cast<std::uint32_t>(described.units);
    out.maxRPM = described.maxRpm;
    out.maxPoints = described.maxPoints;
    return kCtlSuccess;
}

int IntelDeviceState::GetFanConfig(std::size_t fan, intel::ctl_fan_config_t& out) const {
    Fan const& setting = fans_[fan];
    out.mode = static_cast<int>(setting.mode);
    out.speedFixed = Percent(setting.percent);
    out.speedTable = {};
    out.speedTable.Size = sizeof(out.speedTable);
    out.speedTable.numPoints = static_cast<int>(setting.curve.size());
    std::transform(setting.curve.begin(), setting.curve.end(), out.speedTable.table, [](FanCurvePoint const& point) {
        return intel::ctl_fan_temp_speed_t{.Size = sizeof(intel::ctl_fan_temp_speed_t),
                                           .Version = 0,
                                           .temperature = static_cast<std::uint32_t>(point.temperature),
                                           .speed = Percent(static_cast<int>(point.percent))};
    });
    return kCtlSuccess;
}

int IntelDeviceState::SetFanDefault(std::size_t fan) {
    return description_.fans[fan].canControl ? SetFan(fan, {}) : kCtlUnsupportedFeature;
}

int IntelDeviceState::SetFanFixed(std::size_t fan, intel::ctl_fan_speed_t const& speed) {
    if (int const result = TakesMode(fan, intel::kCtlFanModeFixed); result != kCtlSuccess) {
        return result;
    }
    if (!IsSpeed(speed)) {
        return kCtlInvalidArgument;
    }
    return SetFan(fan, {.mode = FanMode::Fixed, .percent = speed.speed, .curve = {}});
}

int IntelDeviceState::SetFanTable(std::size_t fan, intel::ctl_fan_speed_table_t const& table) {
    if (int const result = TakesMode(fan, intel::kCtlFanModeTable); result != kCtlSuccess) {
        return result;
    }
    int const most = std::min(description_.fans[fan].maxPoints, intel::kCtlFanTableSize);
    if (table.numPoints < 1 || table.numPoints > most) {
        return kCtlInvalidArgument;
    }
    Fan setting{.mode = FanMode::Table, .percent = 0, .curve = {}};
    for (int i = 0; i < table.numPoints; ++i) {
        auto const& point = table.table[i];
        bool const falls = i > 0 && point.temperature < table.table[i - 1].temperature;
        if (falls || !IsSpeed(point.speed)) {
            return kCtlInvalidArgument;
        }
        setting.curve.push_back(
            {.temperature = static_cast<double>(point.temperature), .percent = static_cast<double>(point.speed.speed)});
    }
    return SetFan(fan, std::move(setting));
}

}  // namespace gputune::sim
