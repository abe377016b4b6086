// OverdriveN: fan and power limit.
#include <algorithm>

#include "amd/OD7Helper.h"

#include "amd/single_precision.h"

namespace gputune::amd {

namespace {

bool IsInside(ADLODNParameterRange const& range, int value) {
    return value >= range.iMin && value <= range.iMax;
}

void LogPower(log::Tag tag, ADLODNPowerLimitSetting const& power) {
    log::Entry(tag, "max_temp: ", power.iMaxOperatingTemperature, ", power: ", power.iTDPLimit);
}

}  // namespace

bool OD7Helper::SetFanSpeed(int percent) {
    log::Entry(log::Tag{"[OD7Helper::SetFanSpeed(int)]"}, "begin");
    return SetOD5FanSpeed(percent) || SetODNFanSpeed(percent);
}

bool OD7Helper::SetOD5FanSpeed(int percent) {
    constexpr log::Tag kTag{"[OD7Helper::SetOD5FanSpeed(int)]"};
    if (m_ThermalControllers.empty()) {
        log::Entry(kTag, "ThermalControllers is empty");
        return false;
    }
    bool anySet = false;
    // The position in the list is what ADL is given, not the controller's own domain index: deliberate.
    for (int index = 0; index < static_cast<int>(m_ThermalControllers.size()); ++index) {
        log::Entry(kTag / "current thermal controller index", index);
        if (percent < 0) {
            anySet |= m_Adl.Set(kTag, "set", &AdlFunctions::ADL2_Overdrive5_FanSpeedToDefault_Set, index);
        } else {
            ADLFanSpeedValue speed{.iSize = sizeof(ADLFanSpeedValue),
                                   .iSpeedType = kFanSpeedTypePercent,
                                   .iFanSpeed = percent,
                                   .iFlags = kFanFlagUserDefinedSpeed};
            anySet |= m_Adl.Set(kTag, "set", &AdlFunctions::ADL2_Overdrive5_FanSpeed_Set, index, &speed);
        }
    }
    return anySet;
}

bool OD7Helper::SetODNFanSpeed(int percent) {
    constexpr log::Tag kTag{"[OD7Helper::SetODNFanSpeed(int)]"};
    log::Entry(kTag, "begin");
    ADLODNFanControl control{};
    if (!m_Adl.Call(kTag, &AdlFunctions::ADL2_OverdriveN_FanControl_Get, &control)) {
        return false;
    }
    if (percent < 0) {
        control.iMode = kOdnModeAutomatic;
    } else {
        control.iMode = kOdnModeManual;
        if (m_Capabilities.fanSpeed.iMax <= 0) {
            log::Entry(kTag, "no fan speed range");
            return false;
        }
        // At least 1 percent and at least 1 RPM, so that the fan is never commanded to a target of zero.
        auto const share = static_cast<float>(percent == 0 ? 1 : percent) / 100.0F;
        std::optional<int> const speed = Truncate(share * static_cast<float>(m_Capabilities.fanSpeed.iMax));
        if (!speed) {
            log::Entry(kTag, "fan speed out of range");
            return false;
        }
        control.iTargetFanSpeed = std::max(1, *speed);
        control.iMinFanLimit = control.iTargetFanSpeed;
    }
    return m_Adl.Set(kTag, "set", &AdlFunctions::ADL2_OverdriveN_FanControl_Set, &control);
}

bool OD7Helper::SetFanSpeedTable(FanTablePoint const* /*table*/, int /*count*/) {
    constexpr log::Tag kTag{"[OD7Helper::SetFanSpeedTable(obj,int)]"};
    log::Entry(kTag, "begin");
    log::Entry(kTag, "*** NOT IMPLEMENT YET ***");
    return false;
}

bool OD7Helper::SetPowerLimit(int temperatureLimit, int powerLimit) {
    constexpr log::Tag kTag{"[OD7Helper::SetPowerLimit(int,int)]"};
    log::Entry(kTag, "begin");
    auto const refused = [&](ADLODNParameterRange const& range, int value, std::string_view quantity) {
        if (IsInside(range, value)) {
            return false;
        }
        log::Entry(kTag, quantity, " value out of bound: should be ", range.iMin, " to ", range.iMax);
        return true;
    };
    if (refused(m_Capabilities.powerTuneTemperature, temperatureLimit, "temp") ||
        refused(m_Capabilities.power, powerLimit, "tdp")) {
        return false;
    }
    // Values of 0 pass the comparisons above when the ranges were not read and are zero.
    if (!m_HasCapabilities) {
        log::Entry(kTag, "no power limit range");
        return false;
    }
    ADLODNPowerLimitSetting power{};
    if (!m_Adl.Call(kTag, &AdlFunctions::ADL2_OverdriveN_PowerLimit_Get, &power)) {
        return false;
    }
    LogPower(kTag / "current power value", power);
    power.iMaxOperatingTemperature = temperatureLimit;
    power.iMode = kOdnModeManual;
    power.iTDPLimit = powerLimit;
    LogPower(kTag / "plan power value", power);
    return m_Adl.Set(kTag, "set", &AdlFunctions::ADL2_OverdriveN_PowerLimit_Set, &power);
}

bool OD7Helper::SetPowerLimitDefault() {
    constexpr log::Tag kTag{"[OD7Helper::SetPowerLimitDefault()]"};
    log::Entry(kTag, "begin");
    if (!m_Adl.Has(&AdlFunctions::ADL2_OverdriveN_PowerLimit_Get) ||
        !m_Adl.Has(&AdlFunctions::ADL2_OverdriveN_PowerLimit_Set)) {
        log::Entry(kTag / "ADL2_OverdriveN_PowerLimit_Get || ADL2_OverdriveN_PowerLimit_Set", "null ptr");
        return false;
    }
    ADLODNPowerLimitSetting power{};
    if (!m_Adl.Call(kTag, &AdlFunctions::ADL2_OverdriveN_PowerLimit_Get, &power)) {
        return false;
    }
    // Only the mode changes: the values just read go back with it.
    power.iMode = kOdnModeDefault;
    return m_Adl.Set(kTag, "set default", &AdlFunctions::ADL2_OverdriveN_PowerLimit_Set, &power);
}

void OD7Helper::GetFanSetting(FanSetting& setting) {
    setting.Valid = true;
    setting.PointCount = 1;
}

void OD7Helper::GetPowerLimitSetting(PowerLimitSetting& setting) {
    setting.Valid = true;
    setting.Default = m_Capabilities.power.iDefault;
    setting.Max = m_Capabilities.power.iMax;
    setting.Min = m_Capabilities.power.iMin;
    setting.Current = kNotAvailable;
}

}  // namespace gputune::amd
