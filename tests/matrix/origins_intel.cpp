// What Intel boards are sent.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "Origins.h"

namespace gputune::matrix {

namespace {

constexpr int kPercentUnits = 1;
constexpr int kMostPoints = 32;

void JudgeFixedSpeed(Sending& sending) {
    int const* const speed = sending.Record(1);
    sending.Expect(speed[0] == 16, "size", 0, speed[0]);
    sending.Expect(speed[1] == 0, "version", 0, speed[1]);
    sending.Expect(speed[2] == sending.Argument(0), "speed", 0, speed[2]);
    sending.Expect(speed[3] == kPercentUnits, "units", 0, speed[3]);
}

// Size, version, number of points; of each point size, version and temperature, then its speed as above.
void JudgeSpeedTable(Sending& sending) {
    bool const isFlat = sending.IsBy("SetFanSpeed");
    int const* const table = sending.Record(1);
    sending.Expect(table[0] == 908, "size", 0, table[0]);
    sending.Expect(table[1] == 0, "version", 0, table[1]);
    std::set<int> const& most = sending.Read().At("ctlFanGetProperties", 5);
    int const points = table[2];
    sending.Expect(
        std::any_of(most.begin(), most.end(), [=](int value) { return points == std::min(value, kMostPoints); }),
        "points", 0, points);
    for (int position = 0; position < kMostPoints; ++position) {
        int const* const point = table + 3 + 7 * position;
        bool const isSent = position < points;
        bool const isOfCurve = isSent && !isFlat && position < test::kCurvePoints;
        FanTablePoint const wanted = isOfCurve ? test::kCurve[position] : FanTablePoint{sending.Argument(0), 0};
        int const expected[7] = {28, 0, wanted.FanTemperature, isFlat ? 0 : 16, 0, wanted.FanSpeed, kPercentUnits};
        for (int word = 0; word < 7; ++word) {
            sending.Expect(point[word] == (isSent ? expected[word] : 0), "point", position, point[word]);
        }
    }
}

// In milliwatts: a share of the default that was read, in watts.
void JudgePowerLimit(Sending& sending) {
    constexpr std::size_t kDefault = 58;  // its two words in the overclocking properties
    double const sent = sending.DoubleArgument(1);
    double const share = sending.IsBy("SetPowerLimit") ? sending.Argument(1) / 100.0 + 1.0 : 1.0;
    bool isExplained = false;
    for (int const low : sending.Read().At("ctlOverclockGetProperties", kDefault)) {
        for (int const high : sending.Read().At("ctlOverclockGetProperties", kDefault + 1)) {
            auto const watts = std::bit_cast<double>(
                static_cast<std::uint64_t>(static_cast<std::uint32_t>(high)) << 32 | static_cast<std::uint32_t>(low));
            double const meant = share * watts * 1000.0;
            isExplained = isExplained || sent == meant || (std::isnan(sent) && std::isnan(meant));
        }
    }
    sending.Expect(isExplained, "milliwatts", 0, sent);
}

void JudgeOffset(Sending& sending, std::size_t argument) {
    double const sent = sending.DoubleArgument(1);
    sending.Expect(sending.IsBy("SetPerformanceUser") && sent == sending.Argument(argument), "offset", 0, sent);
}

}  // namespace

void JudgeIntel(Sending& sending) {
    std::string_view const name = sending.EntryPoint();
    if (name == "ctlFanSetFixedSpeedMode") {
        JudgeFixedSpeed(sending);
    } else if (name == "ctlFanSetSpeedTableMode") {
        JudgeSpeedTable(sending);
    } else if (name == "ctlOverclockPowerLimitSet") {
        JudgePowerLimit(sending);
    } else if (name == "ctlOverclockGpuFrequencyOffsetSet") {
        JudgeOffset(sending, 0);
    } else if (name == "ctlOverclockVramFrequencyOffsetSet") {
        JudgeOffset(sending, 2);
    }
}

}  // namespace gputune::matrix
