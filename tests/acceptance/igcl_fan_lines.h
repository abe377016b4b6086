// What tests of Intel boards' fans share: the lines that are logged, and the records that are sent.
#pragma once

#include <gtest/gtest.h>

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
    EXPECT_TRUE(machine.InitAndForget());
    return machine;
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

// ctl_fan_speed_table_t. A point: size 28, version, temperature, then size, version, speed and units of its speed.
inline Bytes SpeedTable(int count, std::vector<std::vector<int>> const& points) {
    Bytes table = Patched(Bytes(908), 0, Ints({908, 0, count}));
    for (std::size_t j = 0; j < points.size(); ++j) {
        table = Patched(table, 12 + 28 * j, Ints(points[j]));
    }
    return table;
}

// One point of SetFanSpeed: at 0 degrees, without the inner size, deliberately.
inline std::vector<int> FlatPoint(int speed) {
    return {28, 0, 0, 0, 0, speed, 1};
}

// One point of SetFanSpeedTable.
inline std::vector<int> CurvePoint(FanTablePoint const& point) {
    return {28, 0, point.FanTemperature, 16, 0, point.FanSpeed, 1};
}

// What ctlFanGetConfig writes: mode, then at 36 the number of nodes, and from 40 on the nodes.
inline void OrderConfig(Machine& machine, int mode, int count, std::vector<std::vector<int>> const& nodes) {
    machine.Write("ctlFanGetConfig", 1, Ints({mode}), 8);
    machine.Write("ctlFanGetConfig", 1, Ints({count}), 36);
    int offset = 40;
    for (std::vector<int> const& node : nodes) {
        machine.Write("ctlFanGetConfig", 1, Ints({node.at(0)}), offset + 8);
        machine.Write("ctlFanGetConfig", 1, Ints({node.at(1), node.at(2)}), offset + 20);
        offset += 28;
    }
}

}  // namespace gputune::test
