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
    GetInitSetting(m_InitSetting);
    ListUnsupportedFeatures();
    PrintLogDataCapabilities();
}

bool OD8Helper::IsInitOk() const {
    return m_Adl.IsValid();
}

// Newer drivers hand out a list of their own (`newer`, which takes `arguments` before the count); the others fill the
// whole record (`older`).
template <class Record, class Setting, class Newer, class Older, class... Arguments>
bool OD8Helper::ReadSettings(log::Tag tag, Record& out, Setting (&table)[kOd8Count], Newer newer, Older older,
                             Arguments... arguments) const {
    auto const clear = [&] {
        out = {};
        out.count = kOd8Count;
    };
    clear();
    std::string_view failed = NameOf(newer);
    if (m_Adl.Has(newer)) {
        int count = kOd8Count;
        AdlList<Setting> list;
        auto const result = m_Adl.Ask(newer, arguments..., &count, list.Out());
        auto const settings = Usable(list, count);
        if (result == kAdlOk && settings) {
            out.count = static_cast<int>(settings->size());
            std::copy(settings->begin(), settings->end(), table);
            return true;
        }
    } else if (m_Adl.Has(older) && m_Adl.Ask(older, &out) != kAdlOk) {
        failed = NameOf(older);
    } else {
        out.count = kOd8Count;  // whatever the driver has made of it
        return true;
    }
    clear();  // whatever the failing call has written
    log::Entry(tag, failed, " is failed");
    return false;
}

bool OD8Helper::GetInitSetting(ADLOD8InitSetting& out) const {
    return ReadSettings(log::Tag{"[OD8Helper::GetInitSetting()]"}, out, out.od8SettingTable,
                        &AdlFunctions::ADL2_Overdrive8_Init_SettingX2_Get,
                        &AdlFunctions::ADL2_Overdrive8_Init_Setting_Get, &out.overdrive8Capabilities);
}

bool OD8Helper::GetCurrentSetting(ADLOD8CurrentSetting& out) const {
    return ReadSettings(log::Tag{"[OD8Helper::GetCurrentSetting()]"}, out, out.Od8SettingTable,
                        &AdlFunctions::ADL2_Overdrive8_Current_SettingX2_Get,
                        &AdlFunctions::ADL2_Overdrive8_Current_Setting_Get);
}

std::optional<ADLOD8CurrentSetting> OD8Helper::CurrentSettings(log::Tag tag, int last) const {
    ADLOD8CurrentSetting current;
    if (!GetCurrentSetting(current)) {
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
    if (!GetCurrentSetting(current)) {
        std::fill(std::begin(current.Od8SettingTable), std::end(current.Od8SettingTable), kNotAvailable);
    }
    return current;
}

bool OD8Helper::Send(Request& request, ADLOD8CurrentSetting answer) const {
    answer.count = kOd8Count;  // the room there is, however many settings were read before
    return m_Adl.Ask(&AdlFunctions::ADL2_Overdrive8_Setting_Set, request.Record(), &answer) == kAdlOk;
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
    if (m_Adl.Ask(&AdlFunctions::ADL2_New_QueryPMLogData_Get, &output) != kAdlOk) {
        log::Entry(tag, "ADL2_New_QueryPMLogData_Get failed");
        return false;
    }
    return true;
}

}  // namespace gputune::amd
