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
    return m_Adl.IsValid() && m_InitOk;
}

bool OD7Helper::InitAdapter() {
    m_HasCapabilities = m_Adl.Call(kInitTag, &AdlFunctions::ADL2_OverdriveN_CapabilitiesX2_Get, &m_Capabilities);
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
    constexpr auto kEnumerate = &AdlFunctions::ADL2_Overdrive5_ThermalDevices_Enum;
    constexpr log::Tag kTag = kInitTag / NameOf(kEnumerate);

    for (int index = 0; index < kThermalControllerLimit; ++index) {
        ADLThermalControllerInfo controller{};
        controller.iSize = sizeof controller;
        std::optional<int> const result = m_Adl.Ask(kEnumerate, index, &controller);
        if (!result) {
            log::Entry(kTag, "null ptr");
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
    log::Entry(kTag, "num of thermal controller: ", static_cast<int>(m_ThermalControllers.size()));
    return true;
}

}  // namespace gputune::amd
