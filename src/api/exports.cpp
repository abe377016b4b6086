// The exported functions. Each forwards to one operation of the current adapter and adds nothing: no checks of the
// arguments, no logging, no translation of results.
//
// Records are filled in the caller's own storage (the compiler elides the copy of a named result), so that what an
// operation does not write keeps what the caller had there.
#include <concepts>
#include <cstring>
#include <exception>
#include <string_view>
#include <type_traits>

#include "api/current_adapter.h"
#include "log/DebugLog.h"

namespace {

namespace log = gputune::log;
using gputune::IVideoAdapter;
using gputune::api::CurrentAdapter;

// The boundary between hosts and the library: no call without an adapter, no exception to a host built by another
// compiler. Runs `operation` on the current adapter. Without one nothing happens; an exception ends here, with a log
// entry under the exported function's tag.
template <class Operation>
void OnAdapter(char const* exportTag, Operation&& operation) noexcept {
    IVideoAdapter* const adapter = CurrentAdapter();
    if (adapter == nullptr) {
        return;
    }
    try {
        operation(*adapter);
    } catch (std::exception const& error) {
        log::Entry(log::Tag{exportTag}, std::string_view(error.what()));
    } catch (...) {
        log::Entry(log::Tag{exportTag}, "unknown exception");
    }
}

// False, or -1, without an adapter and when the operation has thrown.
template <auto Operation, class... Args>
auto Forward(char const* exportTag, Args... args) {
    using Result = std::invoke_result_t<decltype(Operation), IVideoAdapter&, Args...>;
    auto result = static_cast<Result>(std::same_as<Result, bool> ? 0 : gputune::kNotAvailable);
    OnAdapter(exportTag, [&](IVideoAdapter& adapter) { result = (adapter.*Operation)(args...); });
    return result;
}

// All zero without an adapter.
template <class Record, void (IVideoAdapter::*Operation)(Record&)>
Record Filled(char const* exportTag) {
    Record record;
    if (CurrentAdapter() == nullptr) {
        std::memset(&record, 0, sizeof record);
    }
    OnAdapter(exportTag, [&](IVideoAdapter& adapter) { (adapter.*Operation)(record); });
    return record;
}

#define FLAT_FUNCTION(result, name, ...) \
    static_assert(std::same_as<decltype(&::name), result(GPUTUNE_CALL*)(__VA_ARGS__)>);
#include "api/flat_functions.inc"

}  // namespace

extern "C" {

// Without the guard: lets the runtime's allocation exception through when memory runs out.
bool GPUTUNE_CALL InitVGAHelper(int logMode) {
    return gputune::api::InitializeAdapter(logMode);
}

bool GPUTUNE_CALL IsInitOk(void) {
    return Forward<&IVideoAdapter::IsInitOk>("[IsInitOk()]");
}

std::uint64_t GPUTUNE_CALL GetVendorInfo(void) {
    return gputune::api::VendorInfo();
}

bool GPUTUNE_CALL SetActiveAdapterIndex(int index) {
    return Forward<&IVideoAdapter::SetActiveAdapterIndex>("[SetActiveAdapterIndex(int)]", index);
}

int GPUTUNE_CALL GetActiveAdapterIndex(void) {
    return Forward<&IVideoAdapter::GetActiveAdapterIndex>("[GetActiveAdapterIndex()]");
}

VgaInfo GPUTUNE_CALL GetVGAInfo(void) {
    return Filled<VgaInfo, &IVideoAdapter::GetVGAInfo>("[GetVGAInfo()]");
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
    return Forward<&IVideoAdapter::GetFrameRate>("[GetFrameRate()]");
}

bool GPUTUNE_CALL SetFanSpeed(int percent) {
    return Forward<&IVideoAdapter::SetFanSpeed>("[SetFanSpeed(int)]", percent);
}

bool GPUTUNE_CALL SetFanSpeedTable(FanTablePoint const* table, int count) {
    return Forward<&IVideoAdapter::SetFanSpeedTable>("[SetFanSpeedTable(obj,int)]", table, count);
}

FanSetting GPUTUNE_CALL GetFanSetting(void) {
    return Filled<FanSetting, &IVideoAdapter::GetFanSetting>("[GetFanSetting()]");
}

bool GPUTUNE_CALL SetPowerLimit(int temperatureLimit, int powerLimit) {
    return Forward<&IVideoAdapter::SetPowerLimit>("[SetPowerLimit(int,int)]", temperatureLimit, powerLimit);
}

bool GPUTUNE_CALL SetPowerLimitDefault(void) {
    return Forward<&IVideoAdapter::SetPowerLimitDefault>("[SetPowerLimitDefault()]");
}

PowerLimitSetting GPUTUNE_CALL GetPowerLimitSetting(void) {
    return Filled<PowerLimitSetting, &IVideoAdapter::GetPowerLimitSetting>("[GetPowerLimitSetting()]");
}

bool GPUTUNE_CALL SetPerformanceUser(int gpuClock, int gpuVoltage, int memClock, int memVoltage) {
    return Forward<&IVideoAdapter::SetPerformanceUser>("[SetPerformanceUser(int,int,int,int)]", gpuClock, gpuVoltage,
                                                       memClock, memVoltage);
}

bool GPUTUNE_CALL SetPerformanceOC(void) {
    return Forward<&IVideoAdapter::SetPerformanceOC>("[SetPerformanceOC()]");
}

bool GPUTUNE_CALL SetPerformanceDefault(void) {
    return Forward<&IVideoAdapter::SetPerformanceDefault>("[SetPerformanceDefault()]");
}

bool GPUTUNE_CALL SetPerformanceSilent(void) {
    return Forward<&IVideoAdapter::SetPerformanceSilent>("[SetPerformanceSilent()]");
}

ClockSetting GPUTUNE_CALL GetGpuClockSetting(void) {
    return Filled<ClockSetting, &IVideoAdapter::GetGpuClockSetting>("[GetGpuClockSetting()]");
}

ClockSetting GPUTUNE_CALL GetMemClockSetting(void) {
    return Filled<ClockSetting, &IVideoAdapter::GetMemClockSetting>("[GetMemClockSetting()]");
}

PredefinedPerformanceParameter GPUTUNE_CALL GetExternalPerformanceParameter(std::uint32_t hwid) {
    PredefinedPerformanceParameter parameter{};
    OnAdapter("[GetExternalPerformanceParameter(unsigned)]",
              [&](IVideoAdapter& adapter) { parameter = adapter.GetExternalPerformanceParameter(hwid); });
    return parameter;
}

}  // extern "C"
