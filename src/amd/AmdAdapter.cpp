#include "amd/AmdAdapter.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "records/hex_long.h"

namespace gputune::amd {

bool AmdAdapter::SetActiveAdapterIndex(int index) {
    return m_Adl.SetActiveAdapterIndex(index);
}

int AmdAdapter::GetActiveAdapterIndex() const {
    return m_Adl.GetActiveAdapterIndex();
}

void AmdAdapter::GetVGAInfo(VgaInfo& info) {
    info.SubsystemId = 0;
    try {
        info.SubsystemId = GetVGASubDeviceID();
    } catch (...) {
        FillNameAndBus(info);
        throw;
    }
    FillNameAndBus(info);
}

void AmdAdapter::FillNameAndBus(VgaInfo& info) const {
    AdapterInfoX2 const& first = *m_Adl.FirstAdapter();

    std::string_view const name = log::Bounded(first.strAdapterName);
    log::Entry(m_Tags.adapterName, name);
    std::memset(info.AdapterName, 0, sizeof info.AdapterName);
    std::memcpy(info.AdapterName, name.data(), std::min(name.size(), sizeof info.AdapterName - 1));

    log::Entry(m_Tags.busNumber, first.iBusNumber);
    info.BusNumber = first.iBusNumber;
}

std::uint32_t AmdAdapter::GetVGASubDeviceID() const {
    constexpr std::string_view kMarker = "&SUBSYS_";
    constexpr std::size_t kDigits = 8;

    std::string_view const udid = log::Bounded(m_Adl.FirstAdapter()->strUDID);
    log::Entry(m_Tags.subDeviceId / "UDID", udid);

    std::size_t const marker = udid.find(kMarker);
    if (marker == std::string_view::npos || udid.size() - marker - kMarker.size() < kDigits) {
        log::Entry(m_Tags.subDeviceId, "unknown hwid");
        return 0;
    }
    std::string const hwid = "0x" + std::string(udid.substr(marker + kMarker.size(), kDigits));
    log::Entry(m_Tags.subDeviceId / "hwid", hwid);
    return static_cast<std::uint32_t>(ParseHexLong(hwid));
}

std::optional<PredefinedPerformanceParameter> AmdAdapter::ReadProfile(log::Tag tag) const {
    log::Entry(tag, "begin");
    PredefinedPerformanceParameter const parameter = GetExternalPerformanceParameter(GetVGASubDeviceID());
    if (!parameter.Valid) {
        log::Entry(tag, "Get predefined performance parameter failed");
        return std::nullopt;
    }
    return parameter;
}

}  // namespace gputune::amd
