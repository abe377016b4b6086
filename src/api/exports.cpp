// The exported functions. Each forwards to one operation of the current adapter and adds nothing: no checks of the
// arguments, no logging, no translation of results. Their names stand in flat_exports.txt.
//
// Records are filled in the caller's own storage (the compiler elides the copy of a named result), so that what an
// operation does not write keeps what the caller had there.
#include <cstring>

#include "api/boundary.h"

namespace {

using gputune::IVideoAdapter;
using gputune::api::CurrentAdapter;
using gputune::api::OnAdapter;

bool ForwardBool(char const* exportTag, auto&& operation) {
    bool result = false;
    return OnAdapter(exportTag, [&](IVideoAdapter& adapter) { result = operation(adapter); }) && result;
}

int ForwardInt(char const* exportTag, auto&& operation) {
    int result = gputune::kNotAvailable;
    OnAdapter(exportTag, [&](IVideoAdapter& adapter) { result = operation(adapter); });
    return result;
}

// All zero without an adapter.
template <class Record>
void FillRecord(char const* exportTag, Record& record, void (IVideoAdapter::*operation)(Record&)) {
    if (CurrentAdapter() == nullptr) {
        std::memset(&record, 0, sizeof record);
    }
    OnAdapter(exportTag, [&](IVideoAdapter& adapter) { (adapter.*operation)(record); });
}

}  // namespace

extern "C" {

// Not behind the boundary: running out of memory ends in the runtime's allocation exception.
bool GPUTUNE_CALL InitVGAHelper(int logMode) {
    return gputune::api::InitializeAdapter(logMode);
}

bool GPUTUNE_CALL IsInitOk(void) {
    return ForwardBool("[IsInitOk()]", [](IVideoAdapter& adapter) { return adapter.IsInitOk(); });
}

std::uint64_t GPUTUNE_CALL GetVendorInfo(void) {
    return gputune::api::VendorInfo();
}

bool GPUTUNE_CALL SetActiveAdapterIndex(int index) {
    return ForwardBool("[SetActiveAdapterIndex(int)]",
                       [=](IVideoAdapter& adapter) { return adapter.SetActiveAdapterIndex(index); });
}

int GPUTUNE_CALL GetActiveAdapterIndex(void) {
    return ForwardInt("[GetActiveAdapterIndex()]",
                      [](IVideoAdapter& adapter) { return adapter.GetActiveAdapterIndex(); });
}

VgaInfo GPUTUNE_CALL GetVGAInfo(void) {
    VgaInfo info;
    FillRecord("[GetVGAInfo()]", info, &IVideoAdapter::GetVGAInfo);
    return info;
}

void GPUTUNE_CALL FetchHwmValues(void) {
    OnAdapter("[FetchHwmValues()]", [](IVideoAdapter& adapter) { adapter.FetchHwmValues(); });
}

HwmValue GPUTUNE_CALL GetHwmValue(int key) {
    IVideoAdapter* const adapter = CurrentAdapter();
    HwmValue const* const entry = adapter == nullptr ? nullptr : adapter->HwmValues().Find(key);
    if (entry == nullptr) {
        return HwmValue{};
    }
    return *entry;
}

int GPUTUNE_CALL GetFrameRate(void) {
    return ForwardInt("[GetFrameRate()]", [](IVideoAdapter& adapter) { return adapter.GetFrameRate(); });
}

bool GPUTUNE_CALL SetFanSpeed(int percent) {
    return ForwardBool("[SetFanSpeed(int)]", [=](IVideoAdapter& adapter) { return adapter.SetFanSpeed(percent); });
}

bool GPUTUNE_CALL SetFanSpeedTable(FanTablePoint const* table, int count) {
    return ForwardBool("[SetFanSpeedTable(obj,int)]",
                       [=](IVideoAdapter& adapter) { return adapter.SetFanSpeedTable(table, count); });
}

FanSetting GPUTUNE_CALL GetFanSetting(void) {
    FanSetting setting;
    FillRecord("[GetFanSetting()]", setting, &IVideoAdapter::GetFanSetting);
    return setting;
}

bool GPUTUNE_CALL SetPowerLimit(int temperatureLimit, int powerLimit) {
    return ForwardBool("[SetPowerLimit(int,int)]",
                       [=](IVideoAdapter& adapter) { return adapter.SetPowerLimit(temperatureLimit, powerLimit); });
}

bool GPUTUNE_CALL SetPowerLimitDefault(void) {
    return ForwardBool("[SetPowerLimitDefault()]",
                       [](IVideoAdapter& adapter) { return adapter.SetPowerLimitDefault(); });
}

PowerLimitSetting GPUTUNE_CALL GetPowerLimitSetting(void) {
    PowerLimitSetting setting;
    FillRecord("[GetPowerLimitSetting()]", setting, &IVideoAdapter::GetPowerLimitSetting);
    return setting;
}

bool GPUTUNE_CALL SetPerformanceUser(int gpuClock, int gpuVoltage, int memClock, int memVoltage) {
    return ForwardBool("[SetPerformanceUser(int,int,int,int)]", [=](IVideoAdapter& adapter) {
        return adapter.SetPerformanceUser(gpuClock, gpuVoltage, memClock, memVoltage);
    });
}

bool GPUTUNE_CALL SetPerformanceOC(void) {
    return ForwardBool("[SetPerformanceOC()]", [](IVideoAdapter& adapter) { return adapter.SetPerformanceOC(); });
}

bool GPUTUNE_CALL SetPerformanceDefault(void) {
    return ForwardBool("[SetPerformanceDefault()]",
                       [](IVideoAdapter& adapter) { return adapter.SetPerformanceDefault(); });
}

bool GPUTUNE_CALL SetPerformanceSilent(void) {
    return ForwardBool("[SetPerformanceSilent()]",
                       [](IVideoAdapter& adapter) { return adapter.SetPerformanceSilent(); });
}

ClockSetting GPUTUNE_CALL GetGpuClockSetting(void) {
    ClockSetting setting;
    FillRecord("[GetGpuClockSetting()]", setting, &IVideoAdapter::GetGpuClockSetting);
    return setting;
}

ClockSetting GPUTUNE_CALL GetMemClockSetting(void) {
    ClockSetting setting;
    FillRecord("[GetMemClockSetting()]", setting, &IVideoAdapter::GetMemClockSetting);
    return setting;
}

PredefinedPerformanceParameter GPUTUNE_CALL GetExternalPerformanceParameter(std::uint32_t hwid) {
    PredefinedPerformanceParameter parameter{};
    OnAdapter("[GetExternalPerformanceParameter(unsigned)]",
              [&](IVideoAdapter& adapter) { parameter = adapter.GetExternalPerformanceParameter(hwid); });
    return parameter;
}

}  // extern "C"
