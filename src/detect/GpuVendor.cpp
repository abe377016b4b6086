#include "detect/GpuVendor.h"

#include <algorithm>
#include <cwctype>
#include <string_view>
#include <vector>

#include "detect/wmi_query.h"
#include "log/DebugLog.h"

namespace gputune {

namespace {

GpuVendor VendorOfCaption(std::wstring caption) {
    std::transform(caption.begin(), caption.end(), caption.begin(),
                   [](wchar_t unit) { return static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(unit))); });
    auto const names = [&](std::wstring_view line) { return caption.find(line) != std::wstring::npos; };

    if (names(L"RADEON")) {
        // Integrated Radeon graphics lack "RX"; such a controller is never tried for the other vendors.
        return names(L"RX") ? GpuVendor::Amd : GpuVendor::Unknown;
    }
    if (names(L"ARC")) {
        return GpuVendor::Intel;
    }
    if (names(L"NVIDIA")) {
        return GpuVendor::Nvidia;
    }
    return GpuVendor::Unknown;
}

constexpr std::string_view MessageOf(GpuVendor vendor) {
    switch (vendor) {
        case GpuVendor::Amd:
            return "AMD";
        case GpuVendor::Intel:
            return "INTEL";
        case GpuVendor::Nvidia:
            return "NVIDIA";
        case GpuVendor::Unknown:
            break;
    }
    return "UNKNOWN";
}

}  // namespace

GpuVendor VendorOfCaptions(std::span<std::wstring const> captions) {
    for (std::wstring const& caption : captions) {
        GpuVendor const vendor = VendorOfCaption(caption);
        if (vendor != GpuVendor::Unknown) {
            return vendor;
        }
    }
    return GpuVendor::Unknown;
}

GpuVendor GetVendor() {
    constexpr log::Tag kTag{"[GetVendor()]"};
    std::vector<std::wstring> const captions = GetWmiData("SELECT * FROM Win32_VideoController", L"Caption");

    log::Line(kTag.method, " >>>>>>> display devices");
    for (std::wstring const& caption : captions) {
        log::WideLine(caption);
    }
    log::Line(kTag.method, " <<<<<<< display devices");

    GpuVendor const vendor = VendorOfCaptions(captions);
    log::Entry(kTag, MessageOf(vendor));
    return vendor;
}

}  // namespace gputune
