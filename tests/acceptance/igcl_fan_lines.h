// What tests of Intel boards' fans share: the lines that are logged, and the records that are sent.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "intel_board.h"

namespace gputune::test {

inline std::string const kSpeed = "[IGCLHelper::SetFanSpeed(int)]";
inline std::string const kTable = "[IGCLHelper::SetFanSpeedTable(obj,int)]";
inline std::string const kDefault = "[IGCLHelper::SetFanDefault()]";
inline std::string const kUnknownModes = "[IGCLHelper::SetFanSpeed(int)] ?????";

// A board with these fans, running.
inline Machine RunningBoard(std::vector<FanProperties> const& fans) {
    Machine machine = IntelBoard();
    OrderFans(machine, fans);
    return machine.Started();
}

inline Lines Begin(std::string const& tag, unsigned fans) {
    return {tag + " ... begin", tag + " Number of Fan Handles ... " + std::to_string(fans)};
}

inline Lines FanLines(std::string const& tag, unsigned position, FanProperties const& fan) {
    return {tag + " ... For fan handle " + std::to_string(position),
            tag + " >>>>>>> Fan properties",
            tag + " Can Control: " + std::to_string(fan.canControl),
            tag + " Max Points: " + std::to_string(fan.maxPoints),
            tag + " Max RPM: " + std::to_string(fan.maxRpm),
            tag + " Supported Modes: " + std::to_string(static_cast<unsigned>(fan.modes)),
            tag + " Supported Units: " + std::to_string(static_cast<unsigned>(fan.units)),
            tag + " <<<<<<< Fan properties"};
}

// The read-back: mode, number of nodes, and "temperature/speed/units" of each that is logged.
inline Lines ReadBack(std::string const& tag, std::string const& mode, std::string const& count, Lines const& nodes) {
    Lines lines = {tag + " (verify) mode ... " + mode, tag + " (verify) num of fan nodes ... " + count};
    for (std::size_t j = 0; j < nodes.size(); ++j) {
        lines.push_back(tag + " (verify) node #" + std::to_string(j) + " temp/speed/units ... " + nodes[j]);
    }
    return lines;
}

inline Lines ZeroReadBack(std::string const& tag, std::size_t nodes) {
    return ReadBack(tag, "0", "0", Lines(nodes, "0/0/0"));
}

// A curve of these points, whose number may be another than their number.
inline SpeedTable Curve(int count, std::vector<SpeedPoint> const& points) {
    SpeedTable table{.count = count};
    std::copy(points.begin(), points.end(), table.points);
    return table;
}

// One point of SetFanSpeed: at 0 degrees, without the inner size, deliberately.
inline SpeedPoint FlatPoint(int speed) {
    return {.size = 28, .speed = speed, .units = 1};
}

// One point of SetFanSpeedTable.
inline SpeedPoint CurvePoint(FanTablePoint const& point) {
    return {.size = 28, .temperature = point.FanTemperature, .speedSize = 16, .speed = point.FanSpeed, .units = 1};
}

}  // namespace gputune::test
