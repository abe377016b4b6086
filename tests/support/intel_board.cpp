#include "intel_board.h"

#include <algorithm>
#include <cstdio>

namespace gputune::test {

std::string ErrorLine(std::string const& tag, int code, std::string const& text) {
    return tag + " ... error: " + std::to_string(code) + " (" + text + ")";
}

std::string FailureLine(std::string const& tag) {
    return ErrorLine(tag, 1073741827, "[CTL_RESULT_ERROR_DEVICE_LOST]");
}

std::string NotInitializedLine(std::string const& tag) {
    return ErrorLine(tag, 1073741825, "[CTL_RESULT_ERROR_NOT_INITIALIZED]");
}

Machine IntelBoard(std::vector<IntelDevice> const& devices) {
    Machine machine(Machine::Library::Intel);
    machine.Captions({L"Intel(R) Arc(TM) A770 Graphics"});
    machine.Write("ctlInit", 1, Ints({kIntelApi}));

    std::vector<int> handles;
    for (IntelDevice const& device : devices) {
        handles.push_back(device.handle);
        std::string const properties = For("ctlGetDeviceProperties", device.handle);
        machine.WriteThrough(properties, 1, 8, Ints({static_cast<int>(device.luidLow), device.luidHigh}));
        machine.Write(properties, 1, Ints({device.type}), 16);
        machine.Write(properties, 1, Ints({device.vendor, device.device, device.revision}), 56);
        machine.Write(properties, 1, Text(device.name), 80);
    }
    machine.Write("ctlEnumerateDevices", 1, Ints({static_cast<int>(handles.size())}));
    machine.Write("ctlEnumerateDevices", 2, Ints(handles));

    machine.Write("ctlOverclockGetProperties", 1, Doubles({200.0}), oc::kPowerLimit + oc::kDefault);
    OrderFans(machine, {FixedFan()});
    return machine;
}

FanProperties FixedFan() {
    return {};
}

FanProperties TableFan(int points) {
    return {.canControl = 0, .modes = 2, .units = 1, .maxRpm = 2900, .maxPoints = points};
}

void OrderFans(Machine& machine, std::vector<FanProperties> const& fans) {
    std::vector<int> handles;
    for (FanProperties const& fan : fans) {
        int const handle = kFan + static_cast<int>(handles.size());
        std::string const properties = For("ctlFanGetProperties", handle);
        machine.Write(properties, 1, {fan.canControl}, 5);
        machine.Write(properties, 1, Ints({fan.modes, fan.units, fan.maxRpm, fan.maxPoints}), 8);
        handles.push_back(handle);
    }
    machine.Write("ctlEnumFans", 1, Ints({static_cast<int>(handles.size())}));
    machine.Write("ctlEnumFans", 2, Ints(handles));
}

Lines TakeIntelTraffic(Machine& machine) {
    Lines lines;
    for (Call const& call : machine.TakeCalls()) {
        char text[100];
        if (call.args.size() == 3 && call.entryPoint.ends_with("Set")) {
            std::snprintf(text, sizeof text, "%s %X %.3f", call.entryPoint.c_str(),
                          static_cast<unsigned>(call.args.at(0)), call.DoubleArgument(1));
        } else if (call.entryPoint == "ctlInit") {
            std::snprintf(text, sizeof text, "ctlInit");
        } else {
            std::snprintf(text, sizeof text, "%s %X", call.entryPoint.c_str(), static_cast<unsigned>(call.args.at(0)));
        }
        lines.push_back(text);
    }
    return lines;
}

Bytes SizedRecord(int size) {
    return Patched(Bytes(static_cast<std::size_t>(size)), 0, Ints({size}));
}

Lines WithoutDetection(Lines const& log) {
    auto const last = std::find_if(log.begin(), log.end(),
                                   [](std::string const& line) { return line.starts_with("[GetVendor()] ..."); });
    return {last == log.end() ? log.begin() : last + 1, log.end()};
}

Lines Joined(std::vector<Lines> const& parts) {
    Lines all;
    for (Lines const& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

}  // namespace gputune::test
