// What tests of Intel boards share: devices, and the lines that opening and choosing them logs.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "intel_board.h"

namespace gputune::test {

constexpr std::uint64_t kIntelVendorInfo = (4ULL << 32) | 2;

inline std::string const kTag = "[IGCLHelper::IGCLHelper()]";
inline std::string const kEnumerationTag = "[IGCLHelper::SetFanSpeed(int)] ctlEnumerateDevices";  // deliberate

inline Lines DeviceLines(IntelDevice const& device) {
    Lines lines = {kTag + " Adapter ID ... " + std::to_string(device.luidLow),
                   kTag + " Adapter ID ... " + std::to_string(device.luidHigh)};
    if (device.vendor == 0x8086) {
        lines.push_back(kTag + " Intel Adapter Name ... " + device.name);
        lines.push_back(kTag + " Vendor id ... 32902");
        lines.push_back(kTag + " Device id ... " + std::to_string(static_cast<unsigned>(device.device)));
        lines.push_back(kTag + " Rev id ... " + std::to_string(static_cast<unsigned>(device.revision)));
    }
    return lines;
}

inline std::string const kNoGraphics = kTag + " ... This is not a Graphics device";

inline Lines const kRetrieved = {"[IGCLHelper::RetrieveOcProperties()] ... begin",
                                 "[IGCLHelper::RetrieveOcProperties()] retrieve ... successfully"};

inline Lines const kOverclockLabels = {"Oc Supported?",
                                       "Gpu Frequency Offset Supported?",
                                       "Gpu Voltage Offset Supported?",
                                       "VRAM Frequency Offset Supported?",
                                       "VRAM Voltage Offset Supported?",
                                       "Power Limit Supported?",
                                       "Temperature Limit Supported?"};

inline Lines const kTelemetryLabels = {"TimeStamp Supported?",
                                       "Gpu Energy Counter Supported?",
                                       "Gpu Voltage Supported?",
                                       "Gpu Current Frequency Supported?",
                                       "Gpu Current Temperature Supported?",
                                       "Gpu Activity Counter Supported?",
                                       "Render Activity Counter Supported?",
                                       "Media Activity Counter Supported?",
                                       "VRAM Energy Counter Supported?",
                                       "VRAM Voltage Supported?",
                                       "VRAM Frequency Supported?",
                                       "VRAM Effective Frequency Supported?",
                                       "VRAM Read Bandwidth Supported?",
                                       "VRAM Write Bandwidth Supported?",
                                       "VRAM Temperature Supported?",
                                       "Fan Speed Supported?"};

// A label is "true" when it is among the given ones.
inline Lines Flags(Lines const& labels, Lines const& supported) {
    Lines lines;
    for (std::string const& label : labels) {
        bool const isSupported = std::find(supported.begin(), supported.end(), label) != supported.end();
        lines.push_back(label + " ... " + (isSupported ? "true" : "false"));
    }
    return lines;
}

inline Lines OverclockDump(Lines const& entries) {
    return Joined({{"[PrintProperties()] ... begin", "[PrintProperties()] >>>>>>> Overclock properties"},
                   entries,
                   {"[PrintProperties()] <<<<<<< Overclock properties"}});
}

inline Lines TelemetryDump(Lines const& entries) {
    return Joined(
        {{"[PrintProperties()] >>>>>>> HWM features"}, entries, {"[PrintProperties()] <<<<<<< HWM features"}});
}

// Both dumps of IntelBoard.
inline Lines const kDumps =
    Joined({OverclockDump(Flags(kOverclockLabels, {})), TelemetryDump(Flags(kTelemetryLabels, {}))});
inline Lines const kSelected = Joined({kRetrieved, kDumps});

inline std::vector<IntelDevice> Devices(std::vector<IntelDevice> devices) {
    for (std::size_t index = 0; index < devices.size(); ++index) {
        if (devices[index].handle != Handle{}) {
            devices[index].handle = kDevice + static_cast<int>(index);
        }
    }
    return devices;
}

inline IntelDevice Null() {
    return {.handle = Handle{}};
}

inline IntelDevice OfType(int type) {
    return {.type = type};
}

inline IntelDevice OfVendor(int vendor) {
    return {.luidLow = 17, .luidHigh = 0, .vendor = vendor};
}

}  // namespace gputune::test
