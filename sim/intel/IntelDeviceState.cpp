#include "sim/intel/IntelDeviceState.h"

#include <algorithm>
#include <utility>

#include "sim/intel/ctl_codes.h"
#include "sim/standin/copy_text.h"

namespace gputune::sim {

namespace {

constexpr double kMilliwattsPerWatt = 1000;

void Fill(intel::ctl_telemetry_item_t& out, TelemetryItem const& item, double reading) {
    out = {};
    out.bSupported = item.supported ? 1 : 0;
    out.value = item.value.value_or(item.supported ? reading : 0);
}

intel::ctl_oc_control_info_t ToRecord(OverclockControl const& control) {
    intel::ctl_oc_control_info_t record{};
    record.bSupported = control.supported ? 1 : 0;
    record.bRelative = control.relative ? 1 : 0;
    record.bReference = control.reference ? 1 : 0;
    record.units = static_cast<std::uint32_t>(control.units);
    record.min = control.min;
    record.max = control.max;
    record.step = control.step;
    record.Default = control.defaultValue;
    record.reference = control.reference.value_or(0);
    return record;
}

}  // namespace

IntelDeviceState::IntelDeviceState(IntelDevice const& description)
    : description_(description),
      powerLimit_(description.overclock.powerLimit.defaultValue),
      gpuOffset_(description.overclock.gpuFrequencyOffset.defaultValue),
      vramOffset_(description.overclock.vramFrequencyOffset.defaultValue),
      fans_(description.fans.size()) {}

void IntelDeviceState::Forget(bool fansToo) {
    auto const& overclock = description_.overclock;
    powerLimit_ = overclock.powerLimit.defaultValue;
    gpuOffset_ = overclock.gpuFrequencyOffset.defaultValue;
    vramOffset_ = overclock.vramFrequencyOffset.defaultValue;
    if (fansToo) {
        fans_ = std::vector<Fan>(fans_.size());
        governing_ = {};
    }
}

bool IntelDeviceState::FansAreAutomatic() const {
    return governing_.mode == FanMode::Default &&
           std::all_of(fans_.begin(), fans_.end(), [](Fan const& fan) { return fan.mode == FanMode::Default; });
}

Controls IntelDeviceState::ModelControls() const {
    auto const& overclock = description_.overclock;
    Controls controls;
    controls.idleEngineClock = description_.idleEngineClock;
    controls.defaultEngineClock = description_.engineClock;
    controls.engineClock = std::max(description_.engineClock + gpuOffset_, 0.0);
    controls.idleMemoryClock = description_.idleMemoryClock;
    controls.memoryClock = std::max(description_.memoryClock + vramOffset_, 0.0);
    if (overclock.powerLimit.defaultValue > 0) {
        controls.powerLimit = powerLimit_ / overclock.powerLimit.defaultValue;
    }
    if (overclock.temperatureLimit.defaultValue > 0) {
        controls.temperatureLimit = overclock.temperatureLimit.defaultValue;
    }
    if (governing_.mode == FanMode::Fixed) {
        controls.fanPercent = governing_.percent;
    } else if (governing_.mode == FanMode::Table) {
        controls.fanCurve = governing_.curve;
    }
    return controls;
}

int IntelDeviceState::GetProperties(intel::ctl_device_adapter_properties_t& out) const {
    if (out.pDeviceID != nullptr) {
        if (out.device_id_size < sizeof(intel::CtlLuid)) {
            return kCtlInvalidSize;
        }
        *static_cast<intel::CtlLuid*>(out.pDeviceID) = {.low = static_cast<std::uint32_t>(description_.luidLow),
                                                        .high = description_.luidHigh};
        out.device_id_size = sizeof(intel::CtlLuid);
    }
    out.device_type = static_cast<std::uint32_t>(description_.type);
    out.pci_vendor_id = static_cast<std::uint32_t>(description_.vendorId);
    out.pci_device_id = static_cast<std::uint32_t>(description_.deviceId);
    out.rev_id = static_cast<std::uint32_t>(description_.revision);
    CopyText(description_.name, out.name);
    return kCtlSuccess;
}

int IntelDeviceState::GetTelemetry(intel::ctl_power_telemetry_t& out, Readings const& readings, double now) const {
    auto const fill = [&](auto& field, Telemetry item, double reading) {
        TelemetryItem const& described = description_.telemetry[static_cast<std::size_t>(item)];
        if constexpr (std::is_array_v<std::remove_reference_t<decltype(field)>>) {
            for (std::size_t fan = 0; fan < std::min(fans_.size(), std::size(field)); ++fan) {
                Fill(field[fan], described, reading);
            }
        } else {
            Fill(field, described, reading);
        }
    };
#define SIM_TELEMETRY(name, ...) fill(out.name, Telemetry::name, double{__VA_ARGS__});
#include "sim/board/telemetry_items.inc"
    return kCtlSuccess;
}

int IntelDeviceState::GetOverclockProperties(intel::ctl_oc_properties_t& out) const {
    auto const& overclock = description_.overclock;
    out.bSupported = overclock.supported ? 1 : 0;
    out.gpuFrequencyOffset = ToRecord(overclock.gpuFrequencyOffset);
    out.gpuVoltageOffset = ToRecord(overclock.gpuVoltageOffset);
    out.vramFrequencyOffset = ToRecord(overclock.vramFrequencyOffset);
    out.vramVoltageOffset = ToRecord(overclock.vramVoltageOffset);
    out.powerLimit = ToRecord(overclock.powerLimit);
    out.temperatureLimit = ToRecord(overclock.temperatureLimit);
    return kCtlSuccess;
}

int IntelDeviceState::Readable(OverclockControl const& control) const {
    return description_.overclock.supported && control.supported ? kCtlSuccess : kCtlOverclockNotSupported;
}

int IntelDeviceState::Settable(OverclockControl const& control, bool isOffset) const {
    WaiverFor const needs = description_.overclock.waiver;
    bool const needed = needs == WaiverFor::Everything || (needs == WaiverFor::Offsets && isOffset);
    int const readable = Readable(control);
    return readable == kCtlSuccess && needed && !waiver_ ? kCtlWaiverNotSet : readable;
}

int IntelDeviceState::SetWaiver() {
    if (!description_.overclock.supported) {
        return kCtlOverclockNotSupported;
    }
    waiver_ = true;
    return kCtlSuccess;
}

int IntelDeviceState::GetPowerLimit(double& milliwatts) const {
    return GetSetting(description_.overclock.powerLimit, powerLimit_ * kMilliwattsPerWatt, milliwatts);
}

int IntelDeviceState::SetPowerLimit(double milliwatts) {
    auto const& control = description_.overclock.powerLimit;
    if (int const result = Settable(control, false); result != kCtlSuccess) {
        return result;
    }
    if (!control.Contains(milliwatts / kMilliwattsPerWatt)) {
        return kCtlPowerOutsideRange;
    }
    powerLimit_ = milliwatts / kMilliwattsPerWatt;
    return kCtlSuccess;
}

int IntelDeviceState::GetGpuFrequencyOffset(double& megahertz) const {
    return GetSetting(description_.overclock.gpuFrequencyOffset, gpuOffset_, megahertz);
}
int IntelDeviceState::SetGpuFrequencyOffset(double megahertz) {
    return SetOffset(description_.overclock.gpuFrequencyOffset, megahertz, gpuOffset_);
}
int IntelDeviceState::GetVramFrequencyOffset(double& megahertz) const {
    return GetSetting(description_.overclock.vramFrequencyOffset, vramOffset_, megahertz);
}
int IntelDeviceState::SetVramFrequencyOffset(double megahertz) {
    return SetOffset(description_.overclock.vramFrequencyOffset, megahertz, vramOffset_);
}

int IntelDeviceState::GetSetting(OverclockControl const& control, double setting, double& out) const {
    int const result = Readable(control);
    if (result == kCtlSuccess) {
        out = setting;
    }
    return result;
}

int IntelDeviceState::SetOffset(OverclockControl const& control, double wanted, double& offset) const {
    if (int const result = Settable(control, true); result != kCtlSuccess) {
        return result;
    }
    if (!control.Contains(wanted)) {
        return kCtlFrequencyOutsideRange;
    }
    offset = wanted;
    return kCtlSuccess;
}

}  // namespace gputune::sim
