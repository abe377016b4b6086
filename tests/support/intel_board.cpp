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
    machine.Reports(ApiHandle{});

    std::vector<Handle> handles;
    for (IntelDevice const& device : devices) {
        handles.push_back(device.handle);
        std::string const properties = For("ctlGetDeviceProperties", device.handle);
        machine.WriteThrough(properties, 1, 8, Ints({static_cast<int>(device.luidLow), device.luidHigh}));
        machine.Write(properties, 1, Ints({device.type}), kDeviceType);
        machine.Write(properties, 1, Ints({device.vendor, device.device, device.revision}), kDeviceNumbers);
        machine.Write(properties, 1, Text(device.name), kDeviceName);
    }
    OrderDeviceList(machine, static_cast<int>(handles.size()), handles);
    OrderDefaultLimit(machine, 200);
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
    std::vector<Handle> handles;
    for (FanProperties const& fan : fans) {
        Handle const handle = kFan + static_cast<int>(handles.size());
        std::string const properties = For("ctlFanGetProperties", handle);
        machine.Write(properties, 1, {fan.canControl}, 5);
        machine.Write(properties, 1, Ints({fan.modes, fan.units, fan.maxRpm, fan.maxPoints}), 8);
        handles.push_back(handle);
    }
    OrderFanList(machine, static_cast<int>(handles.size()), handles);
}

void OrderModeOfOtherFans(Machine& machine, int modes) {
    machine.Write("ctlFanGetProperties", 1, Ints({modes}), 8);
}

void OrderDeviceList(Machine& machine, int count, std::vector<Handle> const& handles) {
    machine.Write("ctlEnumerateDevices", 1, Ints({count})).Write("ctlEnumerateDevices", 2, BytesOf(handles));
}

void OrderFanList(Machine& machine, int count, std::vector<Handle> const& handles) {
    machine.Write("ctlEnumFans", 1, Ints({count})).Write("ctlEnumFans", 2, BytesOf(handles));
}

void OrderControl(Machine& machine, int control, OverclockControl const& properties) {
    machine.Write("ctlOverclockGetProperties", 1, BytesOf(properties), control);
}

void OrderDefaultLimit(Machine& machine, double watts) {
    OrderControl(machine, oc::kPowerLimit, {.standard = watts});
}

void OrderOverclockByte(Machine& machine, int offset, unsigned char value) {
    machine.Write("ctlOverclockGetProperties", 1, {value}, offset);
}

double SentValue(Machine const& machine, std::string const& entryPoint) {
    return machine.LastCall(entryPoint).DoubleArgument(1);
}

void OrderItem(Machine& machine, int item, TelemetryItem const& reading) {
    machine.Write("ctlPowerTelemetryGet", 1, BytesOf(reading), item);
}

void OrderItem(Machine& machine, int item, double value) {
    OrderItem(machine, item, {.value = value});
}

void OrderTelemetryByte(Machine& machine, int offset, unsigned char value) {
    machine.Write("ctlPowerTelemetryGet", 1, {value}, offset);
}

void OrderConfig(Machine& machine, int mode, int count, std::vector<FanNode> const& nodes) {
    machine.Write("ctlFanGetConfig", 1, Ints({mode}), 8).Write("ctlFanGetConfig", 1, Ints({count}), 36);
    int offset = 40;
    for (FanNode const& node : nodes) {
        machine.Write("ctlFanGetConfig", 1, Ints({node.temperature}), offset + 8);
        machine.Write("ctlFanGetConfig", 1, Ints({node.speed, node.units}), offset + 20);
        offset += 28;
    }
}

namespace {

// A record to be read into: its size, and zeros. That of a device's properties has room for the identifier elsewhere,
// and says how much.
bool IsEmptyRecord(Call const& call) {
    Bytes expected = Patched(Bytes(call.record.size()), 0, Ints({static_cast<int>(call.record.size())}));
    if (call.entryPoint != "ctlGetDeviceProperties") {
        return call.record == expected;
    }
    constexpr int kIdentifier = 8;
    expected = Patched(expected, kIdentifier + sizeof(Handle), Ints({8}));
    return call.Int(kIdentifier) != 0 && Patched(call.record, kIdentifier, BytesOf(Handle{})) == expected;
}

}  // namespace

std::string DescribeIntelCall(Call const& call) {
    std::string const& name = call.entryPoint;
    if (name == "ctlInit") {
        return name;
    }
    std::string line = name + " " + NumberOf(call.HandleArgument(0));
    if (name.starts_with("ctlEnum")) {
        bool const isCount = call.HandleArgument(2) == Handle{} && call.Int(0) == 0;
        return line + (isCount ? ": count" : ": room for " + std::to_string(call.Int(0))) +
               (isCount == (call.HandleArgument(2) == Handle{}) ? "" : ", which is not there");
    }
    if (name.starts_with("ctlOverclock") && name.ends_with("Set") && name != "ctlOverclockWaiverSet") {
        char text[32];
        std::snprintf(text, sizeof text, " %.3f", call.DoubleArgument(1));
        return line + text;
    }
    bool const isRead = name.find("Get") != std::string::npos && !call.record.empty();
    return line + (isRead && !IsEmptyRecord(call) ? " into a record that is not empty" : "");
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
