// The fan operations of OverdriveNState. Both families of entry points set the same fan; the last setting holds.
#include "sim/amd/OverdriveNState.h"
#include "sim/amd/adl_codes.h"
#include "sim/model/rounding.h"

namespace gputune::sim {

int OverdriveNState::GetFan(amd::ADLODNFanControl& fan, Readings const& readings) const {
    Fan const shown = fan.iMode == amd::kOdnModeDefault ? DefaultFan() : fan_;
    fan.iFanControlMode = shown.mode;
    fan.iCurrentFanSpeedMode = shown.mode;
    fan.iCurrentFanSpeed = Rounded(readings.fanRpm);
    fan.iTargetFanSpeed = shown.targetSpeed;
    fan.iTargetTemperature = shown.targetTemperature;
    fan.iMinPerformanceClock = description_.minimumPerformanceClock.defaultValue;
    fan.iMinFanLimit = shown.minimumSpeed;
    return amd::kAdlOk;
}

int OverdriveNState::SetFan(amd::ADLODNFanControl const& fan) {
    if (fan.iMode == amd::kOdnModeDefault || fan.iMode == amd::kOdnModeAutomatic) {
        fan_ = DefaultFan();
        userPercent_.reset();
        return amd::kAdlOk;
    }
    if (fan.iMode != amd::kOdnModeManual || !description_.fanSpeed.Contains(fan.iTargetFanSpeed) ||
        !description_.fanSpeed.Contains(fan.iMinFanLimit)) {
        return kAdlInvalidParameter;
    }
    fan_ = {.mode = amd::kOdnModeManual,
            .targetSpeed = fan.iTargetFanSpeed,
            .targetTemperature = fan.iTargetTemperature,
            .minimumSpeed = fan.iMinFanLimit};
    userPercent_.reset();
    return amd::kAdlOk;
}

int OverdriveNState::EnumerateController(int index, amd::ADLThermalControllerInfo& out) const {
    if (index < 0) {
        return kAdlInvalidParameter;
    }
    if (static_cast<std::size_t>(index) >= description_.thermalControllers.size()) {
        return amd::kAdlWarningNoData;
    }
    auto const& controller = description_.thermalControllers[static_cast<std::size_t>(index)];
    out.iThermalDomain = controller.domain;
    out.iDomainIndex = index;
    out.iFlags = controller.flags;
    return controller.result;
}

int OverdriveNState::ControllerResult(int controller) const {
    if (controller < 0 || static_cast<std::size_t>(controller) >= description_.thermalControllers.size()) {
        return kAdlInvalidParameter;
    }
    return description_.thermalControllers[static_cast<std::size_t>(controller)].fan ? amd::kAdlOk : kAdlNotSupported;
}

int OverdriveNState::GetFanSpeed(int controller, amd::ADLFanSpeedValue& value, Readings const& readings) const {
    if (int const result = ControllerResult(controller); result != amd::kAdlOk) {
        return result;
    }
    switch (value.iSpeedType) {
        case amd::kFanSpeedTypePercent:
            value.iFanSpeed = userPercent_ ? *userPercent_ : Rounded(readings.fanPercent);
            break;
        case amd::kFanSpeedTypeRpm:
            value.iFanSpeed = Rounded(readings.olderFanRpm.value_or(readings.fanRpm));
            break;
        default:
            return kAdlInvalidParameter;
    }
    value.iFlags = userPercent_ ? amd::kFanFlagUserDefinedSpeed : 0;
    return amd::kAdlOk;
}

int OverdriveNState::SetFanSpeed(int controller, amd::ADLFanSpeedValue const& value) {
    if (int const result = ControllerResult(controller); result != amd::kAdlOk) {
        return result;
    }
    if (value.iSize != sizeof(value)) {
        return kAdlInvalidParameter;
    }
    int percent = value.iFanSpeed;
    if (value.iSpeedType == amd::kFanSpeedTypeRpm && description_.fanSpeed.max > 0) {
        percent = Rounded(100.0 * value.iFanSpeed / description_.fanSpeed.max);
    } else if (value.iSpeedType != amd::kFanSpeedTypePercent) {
        return kAdlInvalidParameter;
    }
    if (percent < 0 || percent > 100) {
        return kAdlInvalidParameter;
    }
    userPercent_ = percent;
    return amd::kAdlOk;
}

int OverdriveNState::ResetFanSpeed(int controller) {
    if (int const result = ControllerResult(controller); result != amd::kAdlOk) {
        return result;
    }
    userPercent_.reset();
    fan_ = DefaultFan();
    return amd::kAdlOk;
}

}  // namespace gputune::sim
