#include "tool/system/DevicePower.h"

#include <algorithm>

#include "gputune.h"

namespace gputune::tool {

namespace {

struct PciVendor {
    std::uint32_t vendor;
    char const* begin;  // of a device's identifier
};

constexpr PciVendor kPciVendors[] = {{GPUTUNE_VENDOR_AMD, "PCI\\VEN_1002&"},
                                     {GPUTUNE_VENDOR_INTEL, "PCI\\VEN_8086&"},
                                     {GPUTUNE_VENDOR_NVIDIA, "PCI\\VEN_10DE&"}};
constexpr int kWorks = 1;
constexpr int kDeepestSleep = 4;

bool IsOfVendor(DisplayDevice const& device, std::uint32_t vendor) {
    std::string id = device.id;
    std::transform(id.begin(), id.end(), id.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return std::any_of(std::begin(kPciVendors), std::end(kPciVendors), [&](PciVendor const& known) {
        return (vendor == GPUTUNE_VENDOR_UNKNOWN || vendor == known.vendor) && id.starts_with(known.begin);
    });
}

}  // namespace

std::optional<bool> AnyHasPower(std::vector<DisplayDevice> const& devices, std::uint32_t vendor) {
    std::optional<bool> power;
    bool isKnown = true;
    for (DisplayDevice const& device : devices) {
        if (!IsOfVendor(device, vendor)) {
            continue;
        }
        int const state = device.powerState.value_or(0);
        if (state == kWorks) {
            return true;
        }
        isKnown = isKnown && state > kWorks && state <= kDeepestSleep;
        power = false;
    }
    return isKnown ? power : std::nullopt;
}

}  // namespace gputune::tool
