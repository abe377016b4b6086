#include "adapter/HwmValueTable.h"

#include <array>
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

}  // namespace

std::string_view HwmValueName(int key) {
    return key >= 0 && key < GPUTUNE_HWM_KEY_COUNT ? kNames[static_cast<std::size_t>(key)] : std::string_view();
}

HwmValueTable::HwmValueTable() {
    for (int key = 0; key < GPUTUNE_HWM_KEY_COUNT; ++key) {
        entries_[key] = HwmValue{};
        entries_[key].Value = kNeverRead;
    }
}

void HwmValueTable::Store(int key, double reading) {
    auto const found = entries_.find(key);
    if (found == entries_.end()) {
        return;
    }
    HwmValue& entry = found->second;
    entry.Value = reading;
    // Without the terminator: what follows the name in the entry is zero from the start.
    std::string_view const name = HwmValueName(key);
    std::memcpy(entry.Name, name.data(), name.size());
    entry.Valid = true;
}

HwmValue const* HwmValueTable::Find(int key) const {
    auto const found = entries_.find(key);
    return found == entries_.end() ? nullptr : &found->second;
}

}  // namespace gputune
