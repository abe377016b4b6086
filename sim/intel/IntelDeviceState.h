// One device behind Intel's control library: its present settings, and the operations behind the entry points. Every
// operation returns the library's result code and changes nothing when that is not 0. The Size of a record was checked
// before.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "intel/ctl_records.h"
#include "sim/board/IntelBoard.h"
#include "sim/model/ThermalModel.h"

namespace gputune::sim {

class IntelDeviceState {
public:
    // The description must outlive the state.
    explicit IntelDeviceState(IntelDevice const& description);

    // The present settings, in the terms of the model.
    Controls ModelControls() const;

    // Back to the defaults, as when the driver starts anew; without the fans' settings, or with them.
    void Forget(bool fansToo);
    bool FansAreAutomatic() const;

    // The present settings; not the waiver, which is the client's and not the device's.
    template <class Archive>
    void Exchange(Archive& archive) {
        archive(powerLimit_, gpuOffset_, vramOffset_, fans_, governing_);
    }

    std::size_t FanCount() const { return fans_.size(); }

    int GetProperties(intel::ctl_device_adapter_properties_t& out) const;
    int GetTelemetry(intel::ctl_power_telemetry_t& out, Readings const& readings, double now) const;

    int GetOverclockProperties(intel::ctl_oc_properties_t& out) const;
    int SetWaiver();
    int GetPowerLimit(double& milliwatts) const;
    int SetPowerLimit(double milliwatts);
    int GetGpuFrequencyOffset(double& megahertz) const;
    int SetGpuFrequencyOffset(double megahertz);
    int GetVramFrequencyOffset(double& megahertz) const;
    int SetVramFrequencyOffset(double megahertz);

    // fan: below FanCount.
    int GetFanProperties(std::size_t fan, intel::ctl_fan_properties_t& out) const;
    int GetFanConfig(std::size_t fan, intel::ctl_fan_config_t& out) const;
    int SetFanDefault(std::size_t fan);
    int SetFanFixed(std::size_t fan, intel::ctl_fan_speed_t const& speed);
    int SetFanTable(std::size_t fan, intel::ctl_fan_speed_table_t const& table);

private:
    enum class FanMode { Default, Fixed, Table };

    struct Fan {
        FanMode mode = FanMode::Default;
        int percent = 0;
        std::vector<FanCurvePoint> curve;

        template <class Archive>
        void Exchange(Archive& archive) {
            auto count = static_cast<std::uint32_t>(curve.size());
            archive(mode, percent, count);
            // As many as there can be, so that the size is always the same.
            curve.resize(intel::kCtlFanTableSize);
            archive(curve);
            curve.resize(std::min<std::size_t>(count, curve.size()));
        }
    };

    // 0, or the result for a control that cannot be read or set.
    int Readable(OverclockControl const& control) const;
    int Settable(OverclockControl const& control, bool isOffset) const;
    int GetSetting(OverclockControl const& control, double setting, double& out) const;
    int SetOffset(OverclockControl const& control, double wanted, double& offset) const;
    // 0, or the result for a fan that does not have this mode.
    int TakesMode(std::size_t fan, std::uint32_t mode) const;
    int SetFan(std::size_t fan, Fan setting);

    IntelDevice const& description_;
    bool waiver_ = false;
    double powerLimit_;  // W
    double gpuOffset_;   // MHz
    double vramOffset_;  // MHz
    std::vector<Fan> fans_;
    Fan governing_;  // the setting made last, of any fan: the model has one fan for all
};

}  // namespace gputune::sim
