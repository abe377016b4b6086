// Overdrive8: the setting tables and the start-up diagnostics.
#include "amd/OD8Helper.h"

#include <algorithm>
#include <iterator>

namespace gputune::amd {

namespace {

// How many records of an X2 list to copy. Nothing when the list announced with a count is not there.
template <class Record>
std::optional<std::span<Record const>> Usable(AdlList<Record> const& list, int count) {
    auto const records = list.First(std::min(count, kOd8Count));
    if (records.empty() && count > 0) {
        return std::nullopt;
    }
    return records;
}

}  // namespace

OD8Helper::OD8Helper(ADL& adl)
    : AmdAdapter(adl, {.subDeviceId = {"[OD8Helper::GetVGASubDeviceID()]"},
                       .adapterName = {"[OD8Helper::GetAdapterName()] adapter name"},
                       .busNumber = {"[OD8Helper::GetBusNumber()] bus number"}}) {
    GetInitSetting(m_Adl.m_AdapterIndex, m_InitSetting);
    ListUnsupportedFeatures();
    PrintLogDataCapabilities();
}

bool OD8Helper::IsInitOk() const {
    return m_Adl.m_Valid;
}

bool OD8Helper::GetInitSetting(int adapterIndex, ADLOD8InitSetting& out) const {
    constexpr log::Tag tag{"[OD8Helper::GetInitSetting()]"};
    AdlFunctions const& adl = m_Adl.m_Functions;

    out = {};
    out.count = kOd8Count;
    if (adl.ADL2_Overdrive8_Init_SettingX2_Get.address != nullptr) {
        int capabilities = 0;
        int count = kOd8Count;
        AdlList<ADLOD8SingleInitSetting> list;
        auto const result =
            adl.ADL2_Overdrive8_Init_SettingX2_Get(m_Adl.m_Context, adapterIndex, &capabilities, &count, list.Out());
        auto const settings = Usable(list, count);
        if (result != kAdlOk || !settings) {
            log::Entry(tag, "ADL2_Overdrive8_Init_SettingX2_Get is failed");
            return false;
        }
        out.count = static_cast<int>(settings->size());
        out.overdrive8Capabilities = capabilities;
        std::copy(settings->begin(), settings->end(), out.od8SettingTable);
        return true;
    }
    bool const failed = adl.ADL2_Overdrive8_Init_Setting_Get.address != nullptr &&
                        adl.ADL2_Overdrive8_Init_Setting_Get(m_Adl.m_Context, adapterIndex, &out) != kAdlOk;
    if (failed) {
        out = {};  // whatever the failing call has written
        log::Entry(tag, "ADL2_Overdrive8_Init_Setting_Get is failed");
    }
    out.count = kOd8Count;  // whatever the driver has made of it
    return !failed;
}

bool OD8Helper::GetCurrentSetting(int adapterIndex, ADLOD8CurrentSetting& out) const {
    constexpr log::Tag tag{"[OD8Helper::GetCurrentSetting()]"};
    AdlFunctions const& adl = m_Adl.m_Functions;

    out = {};
    out.count = kOd8Count;
    if (adl.ADL2_Overdrive8_Current_SettingX2_Get.address != nullptr) {
        int count = kOd8Count;
        AdlList<int> list;
        auto const result =
            adl.ADL2_Overdrive8_Current_SettingX2_Get(m_Adl.m_Context, adapterIndex, &count, list.Out());
        auto const settings = Usable(list, count);
        if (result != kAdlOk || !settings) {
            log::Entry(tag, "ADL2_Overdrive8_Current_SettingX2_Get is failed");
            return false;
        }
        out.count = static_cast<int>(settings->size());
        std::copy(settings->begin(), settings->end(), out.Od8SettingTable);
        return true;
    }
    bool const failed = adl.ADL2_Overdrive8_Current_Setting_Get.address != nullptr &&
                        adl.ADL2_Overdrive8_Current_Setting_Get(m_Adl.m_Context, adapterIndex, &out) != kAdlOk;
    if (failed) {
        out = {};  // whatever the failing call has written
        log::Entry(tag, "ADL2_Overdrive8_Current_Setting_Get is failed");
    }
    out.count = kOd8Count;  // whatever the driver has made of it
    return !failed;
}

std::optional<ADLOD8CurrentSetting> OD8Helper::CurrentSettings(log::Tag tag, int last) const {
    ADLOD8CurrentSetting current;
    if (!GetCurrentSetting(m_Adl.m_AdapterIndex, current)) {
        return std::nullopt;
    }
    if (last >= current.count) {
        log::Entry(tag, "too few current settings");
        return std::nullopt;
    }
    return current;
}

ADLOD8CurrentSetting OD8Helper::ShownSettings() const {
    ADLOD8CurrentSetting current;
    if (!GetCurrentSetting(m_Adl.m_AdapterIndex, current)) {
        std::fill(std::begin(current.Od8SettingTable), std::end(current.Od8SettingTable), kNotAvailable);
    }
    return current;
}

ADLOD8SingleInitSetting const& OD8Helper::Range(int setting) const {
    return m_InitSetting.od8SettingTable[setting];
}

void OD8Helper::ListUnsupportedFeatures() const {
    log::Line(">>> Unsupported feature flags");
    for (int flag = 1; flag <= kOd8LastListedFlag; flag *= 2) {
        if ((m_InitSetting.overdrive8Capabilities & flag) != flag) {
            log::Line(flag);
        }
    }
    log::Line("<<< Unsupported feature flags");
}

void OD8Helper::PrintLogDataCapabilities() const {
    ADLPMLogDataOutput output;
    if (!QueryPmLog(log::Tag{"[OD8Helper::PrintLogDataCapabilities()]"}, output)) {
        return;
    }
    log::Line(">>> Supported PMLOG sensor type");
    for (int sensor = kPmLogFirstListed; sensor <= kPmLogLastListed; ++sensor) {
        if (output.sensors[sensor].supported != 0) {
            log::Line(sensor);
        }
    }
    log::Line("<<< Supported PMLOG sensor type");
}

bool OD8Helper::QueryPmLog(log::Tag tag, ADLPMLogDataOutput& output) const {
    output = {};
    if (m_Adl.m_Functions.ADL2_New_QueryPMLogData_Get(m_Adl.m_Context, m_Adl.m_AdapterIndex, &output) != kAdlOk) {
        log::Entry(tag, "ADL2_New_QueryPMLogData_Get failed");
        return false;
    }
    return true;
}

}  // namespace gputune::amd
