// What tests of Overdrive8 boards share: their features, and how a running board becomes another one.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "boards.h"

namespace gputune::test {

// Capability flags.
constexpr int kLimits = 0x1;
constexpr int kCurve = 0x2;
constexpr int kMemory = 0x4;
constexpr int kPower = 0x8;
constexpr int kAcoustic = 0x10;
constexpr int kMinSpeed = 0x20;
constexpr int kTarget = 0x40;
constexpr int kZeroRpm = 0x200;
constexpr int kFanCurve = 0x2000;
constexpr int kOptimized = 0x10000;

// `settings` with some of them changed.
inline std::vector<int> With(std::vector<int> settings, std::vector<std::pair<int, int>> const& changes) {
    for (auto const& [feature, value] : changes) {
        settings.at(static_cast<std::size_t>(feature)) = value;
    }
    return settings;
}

// `ranges` with another one for its feature.
inline std::vector<SettingRange> WithRange(SettingRange const& range,
                                           std::vector<SettingRange> ranges = Overdrive8Ranges()) {
    ranges.at(static_cast<std::size_t>(range.feature)) = range;
    return ranges;
}

template <class Item>
std::vector<Item> First(std::vector<Item> settings, std::size_t count) {
    settings.resize(count);
    return settings;
}

// An Overdrive8 board without features whose adapters are these.
inline Machine BoardListedAs(std::vector<AdapterRecord> const& adapters) {
    Machine machine = AmdBoard(8);
    OrderAdapters(machine, adapters);
    return machine;
}

// Initialise once more, as a board with these flags.
inline void BecomeBoardWith(Machine& machine, int capabilities) {
    machine.Reports(FeatureFlags{capabilities});
    ASSERT_TRUE(machine.InitAndForget());
}
inline void BecomeBoardWith(Machine& machine, int capabilities, std::vector<SettingRange> const& ranges) {
    OrderRanges(machine.Then("ADL2_Overdrive8_Init_SettingX2_Get"), capabilities, ranges);
    ASSERT_TRUE(machine.InitAndForget());
}

// On an initialised machine: begin another answer to the query of the current settings, which holds from now on. Until
// something is ordered it is success without a list.
inline Machine& BeginCurrent(Machine& machine) {
    machine.Api().GetPowerLimitSetting();  // the answer begun last is used at least once
    machine.TakeCalls();
    machine.TakeLog();
    return machine.Then("ADL2_Overdrive8_Current_SettingX2_Get");
}

inline void BecomeCurrent(Machine& machine, std::vector<int> const& current) {
    OrderCurrent(BeginCurrent(machine), current);
}

// Each message under a tag.
inline Lines Entries(std::string const& tag, Lines messages) {
    for (std::string& message : messages) {
        message = tag + " ... " + message;
    }
    return messages;
}

inline Lines const kCurrentFailed = {
    "[OD8Helper::GetCurrentSetting()] ... ADL2_Overdrive8_Current_SettingX2_Get is failed"};

}  // namespace gputune::test
