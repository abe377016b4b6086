// What tests of Overdrive8 boards share: orders for such a board, and what crossed the table in a form that reads well
// where a test fails.
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

// A request list, settings in ascending order: "9=10" is requested, "9=0!" requested with the reset mark. Anything else
// shows its three fields. The count stands at 0, setting k's value, request and reset marks at 4 + 12 k.
inline std::string DescribeRequest(Call const& call) {
    std::string text;
    if (call.record.size() != 472 || call.Int(0) != 39) {
        return " not a list of 39 settings";
    }
    for (std::size_t k = 0; k < 39; ++k) {
        int const value = call.Int(4 + 12 * k);
        int const requested = call.Int(8 + 12 * k);
        int const reset = call.Int(12 + 12 * k);
        if (value == 0 && requested == 0 && reset == 0) {
            continue;
        }
        text += " " + std::to_string(k) + "=";
        if (requested == 1 && (reset == 0 || reset == 1)) {
            text += std::to_string(value) + (reset == 1 ? "!" : "");
        } else {
            text += "(" + std::to_string(value) + "," + std::to_string(requested) + "," + std::to_string(reset) + ")";
        }
    }
    return text;
}

// The calls since the last look: name without "ADL2_" and "Overdrive8_", adapter index, and a request list's settings.
// A call that is not as all of its kind should be says so.
inline Lines TakeTraffic(Machine& machine) {
    Lines lines;
    for (Call const& call : machine.TakeCalls()) {
        std::string name = call.entryPoint;
        for (std::string const prefix : {"ADL2_", "Overdrive8_"}) {
            if (name.starts_with(prefix)) {
                name = name.substr(prefix.size());
            }
        }
        std::string line = name + " " + std::to_string(call.args.at(1));
        if (call.args.at(0) != kContext) {
            line += " with another context";
        }
        if (name == "Setting_Set") {
            line += ":" + DescribeRequest(call) + (call.args.at(3) == 0 ? " without room for the result" : "");
        }
        if (name.find("SettingX2_Get") != std::string::npos && call.Int(0) != 39) {
            line += " asking for " + std::to_string(call.Int(0)) + " settings";
        }
        lines.push_back(line);
    }
    return lines;
}

// `settings` with some of them changed.
inline std::vector<int> With(std::vector<int> settings, std::vector<std::pair<std::size_t, int>> const& changes) {
    for (auto const& [index, value] : changes) {
        settings.at(index) = value;
    }
    return settings;
}

inline std::vector<int> First(std::vector<int> settings, std::size_t count) {
    settings.resize(count);
    return settings;
}

// An Overdrive8 board without features whose adapter list is this.
inline Machine BoardListedAs(Bytes const& adapters, int count = 1) {
    Machine machine;
    machine.Captions({L"AMD Radeon RX 6800"});
    machine.Write("ADL2_Main_ControlX2_Create", 2, Ints({kContext}));
    machine.Write("ADL2_Adapter_AdapterInfoX4_Get", 2, Ints({count}));
    machine.Allocate("ADL2_Adapter_AdapterInfoX4_Get", 3, adapters);
    machine.Write("ADL2_Adapter_Active_Get", 2, Ints({1}));
    machine.Write("ADL2_Overdrive_Caps", 4, Ints({8}));
    return machine;
}

// Initialise once more, as a board with these flags.
inline void BecomeBoardWith(Machine& machine, int capabilities) {
    machine.Write("ADL2_Overdrive8_Init_SettingX2_Get", 2, Ints({capabilities}));
    ASSERT_TRUE(machine.InitAndForget());
}

// Initialise once more, with these ranges (feature, min, max, default of each setting).
inline void BecomeBoardWith(Machine& machine, int capabilities, std::vector<int> const& ranges) {
    machine.Then("ADL2_Overdrive8_Init_SettingX2_Get")
        .Write("ADL2_Overdrive8_Init_SettingX2_Get", 2, Ints({capabilities}))
        .Write("ADL2_Overdrive8_Init_SettingX2_Get", 3, Ints({39}))
        .Allocate("ADL2_Overdrive8_Init_SettingX2_Get", 4, Ints(ranges));
    ASSERT_TRUE(machine.InitAndForget());
}

// On an initialised machine: begin another answer to the query of the current settings, which holds from now on. Until
// something is ordered it is success without a list.
inline void BeginCurrent(Machine& machine) {
    machine.Api().GetPowerLimitSetting();  // the answer begun last is used at least once
    machine.TakeCalls();
    machine.TakeLog();
    machine.Then("ADL2_Overdrive8_Current_SettingX2_Get");
}

inline void OrderCurrent(Machine& machine, std::vector<int> const& current) {
    BeginCurrent(machine);
    machine.Write("ADL2_Overdrive8_Current_SettingX2_Get", 2, Ints({static_cast<int>(current.size())}))
        .Allocate("ADL2_Overdrive8_Current_SettingX2_Get", 3, Ints(current));
}

inline Lines operator+(Lines first, Lines const& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
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
