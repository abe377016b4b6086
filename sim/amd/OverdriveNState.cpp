#include "sim/amd/OverdriveNState.h"

#include <algorithm>
#include <span>

#include "sim/amd/adl_codes.h"
#include "sim/model/rounding.h"

namespace gputune::sim {

namespace {

using amd::ADLODNPerformanceLevelsX2;
using amd::ADLODNPerformanceLevelX2;

template <class Table>
auto LevelsOf(Table& table) {
    using Level = std::conditional_t<std::is_const_v<Table>, ADLODNPerformanceLevelX2 const, ADLODNPerformanceLevelX2>;
    return std::span(reinterpret_cast<Level*>(&table + 1), static_cast<std::size_t>(table.iNumberOfPerformanceLevels));
}

std::vector<Level> Padded(std::vector<Level> levels, int count) {
    levels.resize(static_cast<std::size_t>(count), Level{.clock = 0, .voltage = 0, .enabled = 0, .control = 0});
    return levels;
}

amd::ADLODNParameterRange ToRecord(Range const& range) {
    return {.iMode = 0, .iMin = range.min, .iMax = range.max, .iStep = range.step, .iDefault = range.defaultValue};
}

// The first and the last level with a clock; a level of zeros when there is none.
Level First(std::vector<Level> const& levels) {
    auto const found = std::find_if(levels.begin(), levels.end(), [](Level const& level) { return level.clock != 0; });
    return found == levels.end() ? Level{} : *found;
}
Level Top(std::vector<Level> const& levels) {
    auto const found =
        std::find_if(levels.rbegin(), levels.rend(), [](Level const& level) { return level.clock != 0; });
    return found == levels.rend() ? Level{} : *found;
}

}  // namespace

OverdriveNState::OverdriveNState(OverdriveN const& description)
    : description_(description),
      defaultEngine_(Padded(description.engineLevels, description.levelCount)),
      defaultMemory_(Padded(description.memoryLevels, description.levelCount)),
      engine_(defaultEngine_),
      memory_(defaultMemory_),
      fan_(DefaultFan()),
      powerLimit_(description.powerLimit),
      temperatureLimit_(description.temperatureLimit) {}

void OverdriveNState::Forget(bool fanToo) {
    engine_ = defaultEngine_;
    memory_ = defaultMemory_;
    powerLimit_ = description_.power.defaultValue;
    temperatureLimit_ = description_.temperature.defaultValue;
    if (fanToo) {
        fan_ = DefaultFan();
        userPercent_.reset();
    }
}

OverdriveNState::Fan OverdriveNState::DefaultFan() const {
    return {.mode = amd::kOdnModeAutomatic,
            .targetSpeed = description_.targetFanSpeed,
            .targetTemperature = description_.targetTemperature,
            .minimumSpeed = description_.minimumFanSpeed};
}

Controls OverdriveNState::ModelControls() const {
    constexpr double kPerMhz = 100;
    Controls controls;
    controls.idleEngineClock = First(engine_).clock / kPerMhz;
    controls.engineClock = Top(engine_).clock / kPerMhz;
    controls.defaultEngineClock = std::max(1.0, Top(defaultEngine_).clock / kPerMhz);
    controls.idleMemoryClock = First(memory_).clock / kPerMhz;
    controls.memoryClock = Top(memory_).clock / kPerMhz;
    controls.idleVoltage = First(engine_).voltage;
    controls.voltage = Top(engine_).voltage;
    controls.powerLimit = 1 + powerLimit_ / 100.0;
    controls.temperatureLimit = temperatureLimit_;
    double const maximum = description_.fanSpeed.max;
    if (userPercent_) {
        controls.fanPercent = *userPercent_;
    } else if (fan_.mode == amd::kOdnModeManual && maximum > 0) {
        controls.fanPercent = 100 * fan_.targetSpeed / maximum;
    }
    return controls;
}

int OverdriveNState::GetCapabilities(amd::ADLODNCapabilitiesX2& out) const {
    out.iMaximumNumberOfPerformanceLevels = description_.levelCount;
    out.iFlags = description_.flags;
    out.sEngineClockRange = ToRecord(description_.engineClock);
    out.sMemoryClockRange = ToRecord(description_.memoryClock);
    out.svddcRange = ToRecord(description_.voltage);
    out.power = ToRecord(description_.power);
    out.powerTuneTemperature = ToRecord(description_.temperature);
    out.fanTemperature = ToRecord(description_.fanTemperature);
    out.fanSpeed = ToRecord(description_.fanSpeed);
    out.minimumPerformanceClock = ToRecord(description_.minimumPerformanceClock);
    out.throttleNotification = ToRecord(description_.throttleNotification);
    out.autoSystemClock = ToRecord(description_.autoSystemClock);
    return amd::kAdlOk;
}

bool OverdriveNState::Fits(ADLODNPerformanceLevelsX2 const& table) const {
    constexpr int kHead = sizeof(ADLODNPerformanceLevelsX2);
    constexpr int kLevel = sizeof(ADLODNPerformanceLevelX2);
    return table.iNumberOfPerformanceLevels == description_.levelCount &&
           table.iSize == kHead + kLevel * description_.levelCount;
}

int OverdriveNState::GetClocks(ADLODNPerformanceLevelsX2& table, std::vector<Level> const& current,
                               std::vector<Level> const& defaults) const {
    bool const known = table.iMode == amd::kOdnModeCurrent || table.iMode == amd::kOdnModeDefault;
    if (!known || !Fits(table)) {
        return kAdlInvalidParameter;
    }
    auto const& source = table.iMode == amd::kOdnModeDefault ? defaults : current;
    std::transform(source.begin(), source.end(), LevelsOf(table).begin(), [](Level const& level) {
        return ADLODNPerformanceLevelX2{
            .iClock = level.clock, .iVddc = level.voltage, .iEnabled = level.enabled, .iControl = level.control};
    });
    return amd::kAdlOk;
}

int OverdriveNState::SetClocks(ADLODNPerformanceLevelsX2 const& table, Range const& clocks, std::vector<Level>& current,
                               std::vector<Level> const& defaults) const {
    if (!Fits(table)) {
        return kAdlInvalidParameter;
    }
    if (table.iMode == amd::kOdnModeDefault || table.iMode == amd::kOdnModeAutomatic) {
        current = defaults;
        return amd::kAdlOk;
    }
    if (table.iMode != amd::kOdnModeManual) {
        return kAdlInvalidParameter;
    }
    std::vector<Level> next;
    for (auto const& level : LevelsOf(table)) {
        // The board does not have a level without a clock.
        bool const judged = level.iClock != 0;
        bool const voltageJudged = judged && description_.voltage.max > 0;
        if ((judged && !clocks.Contains(level.iClock)) ||
            (voltageJudged && !description_.voltage.Contains(level.iVddc))) {
            return kAdlInvalidParameter;
        }
        next.push_back(
            {.clock = level.iClock, .voltage = level.iVddc, .enabled = level.iEnabled, .control = level.iControl});
    }
    current = std::move(next);
    return amd::kAdlOk;
}

int OverdriveNState::GetEngineClocks(ADLODNPerformanceLevelsX2& table) const {
    return GetClocks(table, engine_, defaultEngine_);
}
int OverdriveNState::GetMemoryClocks(ADLODNPerformanceLevelsX2& table) const {
    return GetClocks(table, memory_, defaultMemory_);
}
int OverdriveNState::SetEngineClocks(ADLODNPerformanceLevelsX2 const& table) {
    return SetClocks(table, description_.engineClock, engine_, defaultEngine_);
}
int OverdriveNState::SetMemoryClocks(ADLODNPerformanceLevelsX2 const& table) {
    return SetClocks(table, description_.memoryClock, memory_, defaultMemory_);
}

int OverdriveNState::GetPowerLimit(amd::ADLODNPowerLimitSetting& limit) const {
    bool const defaults = limit.iMode == amd::kOdnModeDefault;
    limit.iTDPLimit = defaults ? description_.power.defaultValue : powerLimit_;
    limit.iMaxOperatingTemperature = defaults ? description_.temperature.defaultValue : temperatureLimit_;
    return amd::kAdlOk;
}

int OverdriveNState::SetPowerLimit(amd::ADLODNPowerLimitSetting const& limit) {
    if (limit.iMode == amd::kOdnModeDefault || limit.iMode == amd::kOdnModeAutomatic) {
        powerLimit_ = description_.power.defaultValue;
        temperatureLimit_ = description_.temperature.defaultValue;
        return amd::kAdlOk;
    }
    if (limit.iMode != amd::kOdnModeManual || !description_.power.Contains(limit.iTDPLimit) ||
        !description_.temperature.Contains(limit.iMaxOperatingTemperature)) {
        return kAdlInvalidParameter;
    }
    powerLimit_ = limit.iTDPLimit;
    temperatureLimit_ = limit.iMaxOperatingTemperature;
    return amd::kAdlOk;
}

int OverdriveNState::GetTemperature(int type, int& value, Readings const& readings) const {
    if (type != amd::kOdnTemperatureType) {
        return kAdlNotSupported;
    }
    value = Rounded(readings.temperature * 1000);
    return amd::kAdlOk;
}

int OverdriveNState::GetStatus(amd::ADLODNPerformanceStatus& out, Readings const& readings) const {
    constexpr int kBusSpeed = 8000;  // MT/s
    constexpr int kBusLanes = 16;
    // The lowest level that reaches the clock.
    auto const level = [](std::vector<Level> const& levels, int clock) {
        int reached = 0;
        while (reached + 1 < static_cast<int>(levels.size()) &&
               levels[static_cast<std::size_t>(reached)].clock < clock &&
               levels[static_cast<std::size_t>(reached) + 1].clock != 0) {
            ++reached;
        }
        return reached;
    };
    out = {};
    out.iCoreClock = Rounded(readings.engineClock * 100);
    out.iMemoryClock = Rounded(readings.memoryClock * 100);
    out.iGFXClock = out.iCoreClock;
    out.iGPUActivityPercent = Rounded(readings.load);
    out.iCurrentCorePerformanceLevel = level(engine_, out.iCoreClock);
    out.iCurrentMemoryPerformanceLevel = level(memory_, out.iMemoryClock);
    out.iCurrentGFXPerformanceLevel = out.iCurrentCorePerformanceLevel;
    out.iCurrentBusSpeed = kBusSpeed;
    out.iCurrentBusLanes = kBusLanes;
    out.iMaximumBusLanes = kBusLanes;
    out.iVDDC = Rounded(readings.voltage);
    return amd::kAdlOk;
}

}  // namespace gputune::sim
