// Whether a board has power, as far as Windows tells without asking the device.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace gputune::tool {

// A display device that is present, as Windows' device manager knows it.
struct DisplayDevice {
    std::string id{};  // "PCI\VEN_1002&DEV_67DF&SUBSYS_0B361002&REV_E7\4&2A5F3C8D&0&0008"
    // What the device was told last, as DEVICE_POWER_STATE: 1 is D0, which works; 2 to 4 are D1 to D3, which sleep;
    // 0: not specified.
    std::optional<int> powerState{};
};

// Whether any of this vendor's devices (GputuneVendor; GPUTUNE_VENDOR_UNKNOWN: of all that the library knows) works.
// False when there are some and all sleep; nothing when there are none, or the state of one is not known and no other
// works. Windows does not tell which of several devices the library opened.
std::optional<bool> AnyHasPower(std::vector<DisplayDevice> const& devices, std::uint32_t vendor);

}  // namespace gputune::tool
