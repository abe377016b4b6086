// OverdriveN: initialisation and the default clock tables.
#include "amd/OD7Helper.h"

namespace gputune::amd {

namespace {

constexpr log::Tag kInitTag{"[OD7Helper::InitAdapter()]"};
constexpr int kThermalControllerLimit = 255;

}  // namespace

OD7Helper::OD7Helper(ADL& adl)
    : AmdAdapter(adl, {.subDeviceId = {"[OD7Helper::GetVGASubDeviceID()]"},
                       .adapterName = {"[OD7Helper::GetAdapterName()] adapter name"},
                       .busNumber = {"[OD7Helper::GetBusNumber()] bus number"}}) {
    m_InitOk = InitAdapter();
}

bool OD7Helper::IsInitOk() const {
    return m_Adl.m_Valid && m_InitOk;
}

bool OD7Helper::InitAdapter() {
    m_HasCapabilities = m_Adl.Call(kInitTag, m_Adl.m_Functions.ADL2_OverdriveN_CapabilitiesX2_Get, &m_Capabilities);
    if (!m_HasCapabilities) {
        m_Capabilities = {};  // whatever the failing call has written
        return false;
    }
    return ReadDefaultClocks() && EnumerateThermalControllers();
}

bool OD7Helper::ReadDefaultClocks() {
    m_DefaultSystemClock = GetClockInfo(ClockKind::Engine, kOdnModeDefault);
    if (!m_DefaultSystemClock) {
        log::Entry(kInitTag / "m_DefaultSystemClock", "null ptr");
        return false;
    }
    m_MaxGpuLevels = m_DefaultSystemClock->CountLeadingClocks();
    log::Entry(kInitTag / "m_MaxGpuLevels", m_MaxGpuLevels);

    m_DefaultMemoryClock = GetClockInfo(ClockKind::Memory, kOdnModeDefault);
    if (!m_DefaultMemoryClock) {
        log::Entry(kInitTag / "m_DefaultMemoryClock", "null ptr");
        return false;
    }
    m_MaxMemLevels = m_DefaultMemoryClock->CountLeadingClocks();
    log::Entry(kInitTag / "m_MaxMemLevels", m_MaxMemLevels);
    return true;
}

bool OD7Helper::EnumerateThermalControllers() {
    auto const& enumerate = m_Adl.m_Functions.ADL2_Overdrive5_ThermalDevices_Enum;
    log::Tag const tag = kInitTag / enumerate.kName;

    for (int index = 0; index < kThermalControllerLimit; ++index) {
        ADLThermalControllerInfo controller{};
        controller.iSize = sizeof controller;
        std::optional<int> const result = enumerate(m_Adl.m_Context, m_Adl.m_AdapterIndex, index, &controller);
        if (!result) {
            log::Entry(tag, "null ptr");
            return false;
        }
        if (*result == kAdlWarningNoData) {
            break;
        }
        // Other result codes do not matter: what says that it belongs to the GPU counts.
        if (controller.iThermalDomain == kThermalDomainGpu) {
            m_ThermalControllers.push_back(controller);
        }
    }
    log::Entry(tag, "num of thermal controller: ", static_cast<int>(m_ThermalControllers.size()));
    return true;
}

std::optional<PerformanceLevels> OD7Helper::GetClockInfo(ClockKind kind, int mode) const {
    constexpr log::Tag tag{"[OD7Helper::GetClockInfo(obj)]"};
    AdlFunctions const& adl = m_Adl.m_Functions;

    log::Entry(tag, "begin");
    // Both, whichever kind is asked for: deliberate.
    if (adl.ADL2_OverdriveN_SystemClocksX2_Get.address == nullptr ||
        adl.ADL2_OverdriveN_MemoryClocksX2_Get.address == nullptr) {
        log::Entry(log::Tag{"[OD7Helper::GetClockInfo()] !ADL2_OverdriveN_SystemClocksX2_Get || "
                            "!ADL2_OverdriveN_MemoryClocksX2_Get"},
                   "null ptr");
        return std::nullopt;
    }
    auto levels = PerformanceLevels::Create(m_Capabilities.iMaximumNumberOfPerformanceLevels, mode);
    if (!levels) {
        log::Entry(tag, "no table for number of levels: ", m_Capabilities.iMaximumNumberOfPerformanceLevels);
        return std::nullopt;
    }
    bool const read = kind == ClockKind::Engine
                          ? m_Adl.Call(tag, adl.ADL2_OverdriveN_SystemClocksX2_Get, levels->Record())
                          : m_Adl.Call(tag, adl.ADL2_OverdriveN_MemoryClocksX2_Get, levels->Record());
    if (!read) {
        return std::nullopt;
    }
    log::Entry(tag, "get ok");
    return levels;
}

}  // namespace gputune::amd
