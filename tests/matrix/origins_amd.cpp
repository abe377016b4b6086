// What AMD boards are sent.
#include <algorithm>
#include <cmath>

#include "Origins.h"

namespace gputune::matrix {

namespace {

// In single precision, with a few roundings on the way.
bool IsNear(double sent, double meant, double tolerance) {
    return std::abs(sent - meant) <= tolerance + std::abs(meant) * 4e-7;
}

bool HasNear(std::set<int> const& values, int sent) {
    return std::any_of(values.begin(), values.end(), [=](int value) { return IsNear(sent, value, 0); });
}

// Overdrive 5 --------------------------------------------------------------------------------------------------------

void JudgeController(Sending& sending) {
    int const* const speed = sending.Record(3);
    sending.Expect(speed[0] == 16, "size", 0, speed[0]);
    sending.Expect(speed[1] == 1, "speed type", 0, speed[1]);
    sending.Expect(speed[2] == sending.Argument(0), "speed", 0, speed[2]);
    sending.Expect(speed[3] == 1, "flags", 0, speed[3]);
}

// OverdriveN ---------------------------------------------------------------------------------------------------------

constexpr char kCapabilities[] = "ADL2_OverdriveN_CapabilitiesX2_Get";
// Their words.
constexpr std::size_t kPowerMin = 18;
constexpr std::size_t kPowerMax = 19;
constexpr std::size_t kTemperatureDefault = 26;
constexpr std::size_t kFanMax = 34;

bool IsFanTarget(Sending const& sending, int speed) {
    std::set<int> const& maxima = sending.Read().At(kCapabilities, kFanMax);
    int const percent = std::max(1, sending.Argument(0));
    return speed >= 1 && std::any_of(maxima.begin(), maxima.end(), [&](int maximum) {
               return maximum > 0 && IsNear(speed, std::max(1.0, percent / 100.0 * maximum), 1);
           });
}

void JudgeFanControl(Sending& sending) {
    int const* const control = sending.Record(2);
    bool const isManual = sending.Argument(0) >= 0;
    for (std::size_t word = 0; word < 8; ++word) {
        int const value = control[word];
        bool const isTarget = isManual && (word == 4 || word == 7);
        bool const isExplained = word == 0  ? value == (isManual ? 3 : 2)
                                 : isTarget ? IsFanTarget(sending, value)
                                            : sending.Read().Has("ADL2_OverdriveN_FanControl_Get", word, value);
        sending.Expect(isExplained, "word", static_cast<int>(word), value);
    }
}

void JudgePowerLimit(Sending& sending) {
    constexpr char kRead[] = "ADL2_OverdriveN_PowerLimit_Get";
    Readings const& read = sending.Read();
    int const* const limit = sending.Record(2);
    int const mode = limit[0];
    int const power = limit[1];
    int const temperature = limit[2];
    bool isPower = false;
    bool isTemperature = false;
    if (mode == 1) {
        isPower = read.Has(kRead, 1, power);
        isTemperature = read.Has(kRead, 2, temperature);
    } else if (!read.At(kCapabilities, kPowerMin).empty()) {  // else there are no limits to keep to
        isPower = sending.IsBy("SetPowerLimit") && power == sending.Argument(1);
        isTemperature = sending.IsBy("SetPowerLimit") && temperature == sending.Argument(0);
        if (ModeValues const* const values = sending.Mode()) {
            isPower = power == values->power || HasNear(read.At(kCapabilities, kPowerMin), power) ||
                      HasNear(read.At(kCapabilities, kPowerMax), power);
            isTemperature = read.Has(kCapabilities, kTemperatureDefault, temperature);
        }
    }
    sending.Expect(mode == 1 || mode == 3, "mode", 0, mode);
    sending.Expect(isPower, "power", 0, power);
    sending.Expect(isTemperature, "temperature", 0, temperature);
}

// A table of levels: size, mode and number, then clock (10 kHz), voltage, enabled and control of each.
struct Table {
    char const* read;
    int enabled;
    std::size_t clockArgument;
    std::size_t voltageArgument;
    double ModeValues::*factor;
};
constexpr Table kEngine{"ADL2_OverdriveN_SystemClocksX2_Get", 3, 0, 1, &ModeValues::gpu};
constexpr Table kMemory{"ADL2_OverdriveN_MemoryClocksX2_Get", 1, 2, 3, &ModeValues::memory};
constexpr std::size_t kHead = 3;
constexpr std::size_t kLevel = 4;

template <class Fits>
bool IsOfSomeLevel(Sending const& sending, Table const& table, std::size_t field, Fits const& fits) {
    Readings const& read = sending.Read();
    for (std::size_t word = kHead + field; word < read.Words(table.read); word += kLevel) {
        std::set<int> const& values = read.At(table.read, word);
        if (std::any_of(values.begin(), values.end(), fits)) {
            return true;
        }
    }
    return false;
}

bool IsPlannedClock(Sending const& sending, Table const& table, int clock) {
    auto const isKept = [=](int current) { return IsNear(clock, current, 100); };
    if (ModeValues const* const values = sending.Mode()) {
        double const factor = values->*table.factor;
        return IsOfSomeLevel(sending, table, 0, [=](int standard) {
            double const plan = std::trunc(std::trunc(standard / 100.0) * factor) * 100;
            return IsNear(clock, plan, 100) || (plan == 0 && isKept(standard));
        });
    }
    if (!sending.IsBy("SetPerformanceUser")) {
        return false;
    }
    int const wanted = sending.Argument(table.clockArgument);
    return wanted != 0 ? IsNear(clock, wanted * 100.0, 1) : IsOfSomeLevel(sending, table, 0, isKept);
}

bool IsPlannedVoltage(Sending const& sending, Table const& table, int voltage) {
    int const wanted = sending.IsBy("SetPerformanceUser") ? sending.Argument(table.voltageArgument) : 0;
    if (wanted != 0) {
        return IsNear(voltage, wanted, 1);
    }
    return IsOfSomeLevel(sending, table, 1, [=](int known) { return IsNear(voltage, known, 1); });
}

void JudgeLevels(Sending& sending, Table const& table) {
    Readings const& read = sending.Read();
    int const* const sent = sending.Record(2);
    sending.Expect(sent[1] == 3 || read.Has(table.read, 1, sent[1]), "mode", 0, sent[1]);
    int const levels = std::min(sent[2], (sent[0] - static_cast<int>(kHead) * 4) / 16);
    for (int position = 0; position < levels; ++position) {
        std::size_t const word = kHead + kLevel * static_cast<std::size_t>(position);
        int const* const level = sent + word;
        auto const isRead = [&](std::size_t field) { return read.Has(table.read, word + field, level[field]); };
        bool const canChange = position > 0;
        sending.Expect(isRead(0) || (canChange && IsPlannedClock(sending, table, level[0])), "clock", position,
                       level[0]);
        sending.Expect(isRead(1) || (canChange && IsPlannedVoltage(sending, table, level[1])), "voltage", position,
                       level[1]);
        sending.Expect(isRead(2) || (canChange && level[2] == table.enabled), "enabled", position, level[2]);
        sending.Expect(isRead(3), "control", position, level[3]);
    }
}

// Overdrive8 ---------------------------------------------------------------------------------------------------------

std::set<int> const& Minimum(Sending const& sending, int setting) {
    return sending.Read().At(kOd8Ranges, static_cast<std::size_t>(4 * setting + 1));
}
std::set<int> const& Maximum(Sending const& sending, int setting) {
    return sending.Read().At(kOd8Ranges, static_cast<std::size_t>(4 * setting + 2));
}
std::set<int> const& Default(Sending const& sending, int setting) {
    return sending.Read().At(kOd8Ranges, static_cast<std::size_t>(4 * setting + 3));
}

bool IsPlanned(std::set<int> const& standards, double factor, int clock) {
    return std::any_of(standards.begin(), standards.end(),
                       [=](int standard) { return IsNear(clock, std::trunc(standard * factor), 1); });
}

// A speed of the curve in the unit of a limit of the fan.
bool IsSpeedWithin(Sending const& sending, int setting, int percent, int value) {
    for (int const minimum : Minimum(sending, setting)) {
        for (int const maximum : Maximum(sending, setting)) {
            long long const speed = maximum <= 100 ? percent : static_cast<long long>(percent) * maximum / 100;
            if (value == std::max<long long>(minimum, std::min<long long>(maximum, speed))) {
                return true;
            }
        }
    }
    return false;
}

bool IsOfCurve(Sending const& sending, int setting, int value) {
    bool const isSpeed = setting % 2 == 0;
    if (sending.IsBy("SetFanSpeedTable")) {
        FanTablePoint const& point = test::kCurve[(setting - 19) / 2];
        return value == (isSpeed ? point.FanSpeed : point.FanTemperature);
    }
    return isSpeed && sending.IsBy("SetFanSpeed") && value == sending.Argument(0);
}

bool IsSetting(Sending const& sending, int setting, int value) {
    bool const isTable = sending.IsBy("SetFanSpeedTable");
    bool const isUser = sending.IsBy("SetPerformanceUser");
    ModeValues const* const mode = sending.Mode();
    switch (setting) {
        case 0:
        case 6:
            return (isUser && value == sending.Argument(0)) ||
                   (mode != nullptr && (IsPlanned(Default(sending, 6), mode->gpu, value) ||
                                        IsPlanned(Default(sending, 0), mode->gpu, value)));
        case 8:
            return (isUser && value == sending.Argument(2)) ||
                   (mode != nullptr && IsPlanned(Default(sending, 8), mode->memory, value));
        case 9:
            return (sending.IsBy("SetPowerLimit") && value == sending.Argument(1)) ||
                   (mode != nullptr && (value == mode->power || HasNear(Minimum(sending, 9), value) ||
                                        HasNear(Maximum(sending, 9), value)));
        case 10:
            return isTable ? IsSpeedWithin(sending, 10, test::kCurve[0].FanSpeed, value)
                           : Minimum(sending, 10).contains(value);
        case 11:
            return isTable ? IsSpeedWithin(sending, 11, test::kCurve[test::kCurvePoints - 1].FanSpeed, value)
                           : Maximum(sending, 11).contains(value);
        case 12:
            return Minimum(sending, 12).contains(value) || Default(sending, 12).contains(value);
        case 15:
            return value == 0;  // off
        case 36:
            return value == 3;  // manual
        default:
            return setting >= 19 && setting <= 28 && IsOfCurve(sending, setting, value);
    }
}

void JudgeSettings(Sending& sending) {
    constexpr int kSettings = 39;
    int const* const request = sending.Record(2);
    sending.Expect(request[0] == kSettings, "count", 0, request[0]);
    if (int const* const answer = sending.Record(3)) {
        sending.Expect(answer[0] == kSettings, "count of the answer", 0, answer[0]);
    }
    for (int setting = 0; setting < kSettings; ++setting) {
        int const* const entry = request + 1 + 3 * setting;
        int const value = entry[0];
        bool isExplained = false;
        if (entry[1] == 0) {
            isExplained = value == 0 && entry[2] == 0;
        } else if (entry[2] == 1) {
            // The driver restores its own default; where none was read, 0 goes along.
            isExplained = value == 0 || Default(sending, setting).contains(value);
        } else if (entry[1] == 1 && entry[2] == 0) {
            isExplained = sending.Read().Has(kOd8Current, static_cast<std::size_t>(setting), value) ||
                          IsSetting(sending, setting, value);
        }
        sending.Expect(isExplained, "setting", setting, value);
    }
}

}  // namespace

void JudgeAmd(Sending& sending) {
    std::string_view const name = sending.EntryPoint();
    if (name == "ADL2_Overdrive5_FanSpeed_Set") {
        JudgeController(sending);
    } else if (name == "ADL2_OverdriveN_FanControl_Set") {
        JudgeFanControl(sending);
    } else if (name == "ADL2_OverdriveN_PowerLimit_Set") {
        JudgePowerLimit(sending);
    } else if (name == "ADL2_OverdriveN_SystemClocksX2_Set") {
        JudgeLevels(sending, kEngine);
    } else if (name == "ADL2_OverdriveN_MemoryClocksX2_Set") {
        JudgeLevels(sending, kMemory);
    } else if (name == "ADL2_Overdrive8_Setting_Set") {
        JudgeSettings(sending);
    }
}

}  // namespace gputune::matrix
