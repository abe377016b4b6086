// The library's 22 exports, found at run time.
#pragma once

#include <memory>
#include <string>

#include "gputune.h"

namespace gputune::tool {

// Every export that is called as the header declares it.
#define GPUTUNE_TOOL_EXPORTS(EXPORT) \
    EXPORT(InitVGAHelper)            \
    EXPORT(IsInitOk)                 \
    EXPORT(GetVendorInfo)            \
    EXPORT(SetActiveAdapterIndex)    \
    EXPORT(GetActiveAdapterIndex)    \
    EXPORT(GetVGAInfo)               \
    EXPORT(FetchHwmValues)           \
    EXPORT(GetHwmValue)              \
    EXPORT(GetFrameRate)             \
    EXPORT(SetFanSpeed)              \
    EXPORT(SetFanSpeedTable)         \
    EXPORT(SetPowerLimit)            \
    EXPORT(SetPowerLimitDefault)     \
    EXPORT(GetPowerLimitSetting)     \
    EXPORT(SetPerformanceUser)       \
    EXPORT(SetPerformanceOC)         \
    EXPORT(SetPerformanceDefault)    \
    EXPORT(SetPerformanceSilent)     \
    EXPORT(GetGpuClockSetting)       \
    EXPORT(GetMemClockSetting)       \
    EXPORT(GetExternalPerformanceParameter)

class Library {
public:
    // Loads the file, a full path. Throws ToolError when it is missing, no 32-bit library, or lacks an export.
    explicit Library(std::wstring const& path);

// NOLINTNEXTLINE(bugprone-macro-parentheses): a name that is declared takes none
#define GPUTUNE_TOOL_MEMBER(name) decltype(&::name) name = nullptr;
    GPUTUNE_TOOL_EXPORTS(GPUTUNE_TOOL_MEMBER)
#undef GPUTUNE_TOOL_MEMBER

    // The board's fan settings. Fields that the backend does not write are kUntouched (values/FanCurve.h).
    ::FanSetting ReadFanSetting() const;

private:
    struct Unload {
        void operator()(void* module) const;
    };

    // In binary form, a function that returns a record takes the record's address as its first argument and returns
    // that address. GetFanSetting does not write the points of OverdriveN boards. Called in this form, it gets a record
    // that ReadFanSetting has filled, which shows afterwards which fields were written.
    using GetFanSettingInPlace = FanSetting*(GPUTUNE_CALL*)(FanSetting* storage);

    std::unique_ptr<void, Unload> module_;
    GetFanSettingInPlace getFanSetting_ = nullptr;
};

}  // namespace gputune::tool
