#include "sim/amd/Overdrive8State.h"

#include <algorithm>

#include "sim/amd/adl_codes.h"
#include "sim/model/rounding.h"

namespace gputune::sim {

namespace {

// The ids of the settings that the model uses.
constexpr std::size_t kEngineClockMax = 0;
constexpr std::size_t kEngineClockMin = 1;
constexpr std::size_t kCurveVoltage1 = 3;
constexpr std::size_t kCurveClock3 = 6;
constexpr std::size_t kCurveVoltage3 = 7;
constexpr std::size_t kMemoryClockMax = 8;
constexpr std::size_t kPowerPercent = 9;
constexpr std::size_t kFanMinimum = 10;
constexpr std::size_t kZeroRpm = 15;
constexpr std::size_t kFanCurve = 19;  // temperature and speed in turn, five times
constexpr std::size_t kFanCurveEnd = 29;
constexpr std::size_t kVoltage = 37;

constexpr std::size_t kFanTarget = 12;

// The settings that are the fan's: the acoustic limit and the target temperature too.
bool IsOfFan(std::size_t id) {
    return (id >= kFanMinimum && id <= kFanTarget) || id == kZeroRpm || (id >= kFanCurve && id < kFanCurveEnd);
}

constexpr int kClockCurve = 0x2;
constexpr int kPowerLimit = 0x8;
constexpr int kFanMinimumSpeed = 0x20;
constexpr int kZeroRpmControl = 0x200;
constexpr int kFanCurveControl = 0x2000;

constexpr double kTemperatureLimit = 110;  // degrees Celsius; this generation has no setting for it
constexpr double kIdleMemoryClock = 96;    // MHz

}  // namespace

Overdrive8State::Overdrive8State(Overdrive8 const& description) : description_(description) {
    for (auto const& setting : description.settings) {
        current_.push_back(setting.current);
    }
}

Controls Overdrive8State::ModelControls() const {
    bool const curve = Has(kClockCurve);
    std::size_t const clock = curve ? kCurveClock3 : kEngineClockMax;
    Controls controls;
    controls.engineClock = current_[clock];
    controls.defaultEngineClock = std::max(1, description_.settings[clock].defaultValue);
    controls.idleEngineClock = std::min(current_[kEngineClockMin], current_[clock]);
    controls.memoryClock = current_[kMemoryClockMax];
    controls.idleMemoryClock = std::min<double>(kIdleMemoryClock, controls.memoryClock);
    if (curve) {
        controls.idleVoltage = current_[kCurveVoltage1];
        controls.voltage = current_[kCurveVoltage3];
    } else if (current_[kVoltage] > 0) {
        controls.voltage = current_[kVoltage];
    }
    controls.powerLimit = Has(kPowerLimit) ? 1 + current_[kPowerPercent] / 100.0 : 1;
    controls.temperatureLimit = kTemperatureLimit;
    SetFanControls(controls);
    return controls;
}

void Overdrive8State::SetFanControls(Controls& controls) const {
    controls.zeroRpm = Has(kZeroRpmControl) && current_[kZeroRpm] != 0;
    if (Has(kFanCurveControl)) {
        controls.fanCurve.clear();
        for (std::size_t id = kFanCurve; id < kFanCurveEnd; id += 2) {
            controls.fanCurve.push_back(
                {.temperature = static_cast<double>(current_[id]), .percent = static_cast<double>(current_[id + 1])});
        }
    } else if (int const maximum = description_.settings[kFanMinimum].max; Has(kFanMinimumSpeed) && maximum > 0) {
        for (auto& point : controls.fanCurve) {
            point.percent = std::max(point.percent, 100.0 * current_[kFanMinimum] / maximum);
        }
    }
}

void Overdrive8State::Forget(bool fanToo) {
    for (std::size_t id = 0; id < current_.size(); ++id) {
        if (fanToo || !IsOfFan(id)) {
            current_[id] = description_.settings[id].defaultValue;
        }
    }
}

bool Overdrive8State::FanIsAutomatic() const {
    for (std::size_t id = 0; id < current_.size(); ++id) {
        if (IsOfFan(id) && current_[id] != description_.settings[id].defaultValue) {
            return false;
        }
    }
    return true;
}

std::vector<amd::ADLOD8SingleInitSetting> Overdrive8State::InitSettings() const {
    std::vector<amd::ADLOD8SingleInitSetting> list;
    for (auto const& setting : description_.settings) {
        list.push_back({.featureID = setting.feature,
                        .minValue = setting.min,
                        .maxValue = setting.max,
                        .defaultValue = setting.defaultValue});
    }
    list.resize(static_cast<std::size_t>(description_.count));
    return list;
}

std::vector<int> Overdrive8State::CurrentSettings() const {
    return {current_.begin(), current_.begin() + description_.count};
}

int Overdrive8State::GetInit(amd::ADLOD8InitSetting& out) const {
    auto const list = InitSettings();
    std::size_t const count = std::min<std::size_t>(list.size(), amd::kOd8Count);
    out.count = static_cast<int>(count);
    out.overdrive8Capabilities = description_.capabilities;
    std::copy_n(list.begin(), count, out.od8SettingTable);
    return amd::kAdlOk;
}

int Overdrive8State::GetCurrent(amd::ADLOD8CurrentSetting& out) const {
    auto const list = CurrentSettings();
    std::size_t const count = std::min<std::size_t>(list.size(), amd::kOd8Count);
    out.count = static_cast<int>(count);
    std::copy_n(list.begin(), count, out.Od8SettingTable);
    return amd::kAdlOk;
}

int Overdrive8State::Set(amd::ADLOD8SetSetting const& request, amd::ADLOD8CurrentSetting& out) {
    if (request.count < 1 || request.count > amd::kOd8Count) {
        return kAdlInvalidParameter;
    }
    std::vector<int> next = current_;
    for (std::size_t id = 0; id < static_cast<std::size_t>(request.count); ++id) {
        auto const& wanted = request.od8SettingTable[id];
        auto const& setting = description_.settings[id];
        if (wanted.requested == 0) {
            continue;
        }
        if (wanted.reset != 0) {
            next[id] = setting.defaultValue;
        } else if (wanted.value >= setting.min && wanted.value <= setting.max) {
            next[id] = wanted.value;
        } else {
            return kAdlInvalidParameter;
        }
    }
    current_ = std::move(next);
    return GetCurrent(out);
}

int Overdrive8State::GetSensors(amd::ADLPMLogDataOutput& out, Readings const& readings) const {
    out = {};
    out.size = sizeof(out);
    for (auto const& sensor : description_.sensors) {
        double const value = sensor.quantity != nullptr ? readings.*sensor.quantity : sensor.value;
        out.sensors[sensor.id] = {.supported = sensor.supported ? 1 : 0, .value = Rounded(value)};
    }
    return amd::kAdlOk;
}

}  // namespace gputune::sim
