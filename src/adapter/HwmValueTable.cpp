#include "adapter/HwmValueTable.h"

#include <cstring>

namespace gputune {

namespace {

constexpr double kNeverRead = -1.0;

constexpr std::array<std::string_view, GPUTUNE_HWM_KEY_COUNT> kNames = {
    "GPU Core Clock",
    "GPU Memory Clock",
    "GPU Temperature",
    "GPU HotSpot Temperature",
    "GPU Memory Temperature",
    "Fan Speed(%)",
    "Fan Speed(RPM)",
    "GPU Load",
    "Memory Controller Load",
    "GPU only Power Draw",
    "VDDC Power Draw",
    "VDDCI Power Draw",
    "VRM Efficiency",
    "Memory Usage",
    "Memory Usage (Dedicated)",
    "Memory Usage (Dynamic)",
    "VDDC",
    "CPU Usage",
    "CPU Frequency",
    "Temperature Limit",
    "TDP Limit",
};

bool IsKey(int key) {
    return key >= 0 && key < GPUTUNE_HWM_KEY_COUNT;
}

}  // namespace

std::string_view HwmValueName(int key) {
    return IsKey(key) ? kNames[static_cast<std::size_t>(key)] : std::string_view();
}

HwmValueTable::HwmValueTable() {
    for (HwmValue& entry : entries_) {
        entry.Value = kNeverRead;
    }
}

void HwmValueTable::Store(int key, double reading) {
    if (!IsKey(key)) {
        return;
    }
    auto const index = static_cast<std::size_t>(key);
    HwmValue& entry = entries_[index];
    entry.Value = reading;
    // Without the terminator: what follows the name in the entry is zero from the start.
    std::memcpy(entry.Name, kNames[index].data(), kNames[index].size());
    entry.Valid = true;
}

HwmValue const* HwmValueTable::Find(int key) const {
    return IsKey(key) ? &entries_[static_cast<std::size_t>(key)] : nullptr;
}

}  // namespace gputune
