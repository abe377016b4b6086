#include "tool/board/Checks.h"

#include <iterator>

#include "tool/values/Errors.h"
#include "tool/values/FanCurve.h"
#include "tool/values/Numbers.h"

namespace gputune::tool {

namespace {

void CheckKnownRange(std::string const& what, int value, int minimum, int maximum, Unit unit) {
    if (IsKnown(minimum) && IsKnown(maximum)) {
        CheckRange(what, value, minimum, maximum, unit);
    }
}

void RequireAdjustable(std::optional<int> const& value, ClockSetting const& setting, char const* what) {
    if (value.value_or(0) != 0 && !setting.Valid) {
        throw UnsupportedError(std::string("it has no adjustable ") + what + ".");
    }
}

ClockCommand PlanOverdriveN(ClockRequest const& request, ClockSetting const& gpu, ClockSetting const& memory) {
    RequireAdjustable(request.gpuVoltage, gpu, "GPU voltage");
    RequireAdjustable(request.memVoltage, memory, "memory voltage");
    ClockCommand const command{request.gpuClock.value_or(0), request.gpuVoltage.value_or(0),
                               request.memClock.value_or(0), request.memVoltage.value_or(0), false};
    if (command.gpuVoltage != 0) {
        CheckKnownRange("GPU voltage", command.gpuVoltage, gpu.MinVoltage, gpu.MaxVoltage, Unit::Millivolt);
    }
    if (command.memVoltage != 0) {
        CheckKnownRange("Memory voltage", command.memVoltage, memory.MinVoltage, memory.MaxVoltage, Unit::Millivolt);
    }
    return command;
}

ClockCommand PlanOverdrive8(ClockRequest const& request, ClockSetting const& gpu, ClockSetting const& memory) {
    if (request.gpuVoltage.value_or(0) != 0 || request.memVoltage.value_or(0) != 0) {
        throw UnsupportedError("Overdrive8 boards take no voltages. Leave out --gpu-voltage and --mem-voltage.");
    }
    if (!gpu.Valid) {
        throw UnsupportedError("it has no adjustable clocks.");
    }
    constexpr int kNotAvailable = -1;
    bool const keepsGpu = request.gpuClock.value_or(0) == 0;
    bool const keepsMemory = memory.Valid && request.memClock.value_or(0) == 0;
    if ((keepsGpu && gpu.CurrentClock == kNotAvailable) || (keepsMemory && memory.CurrentClock == kNotAvailable)) {
        throw UnsupportedError("its current clocks cannot be read.");
    }
    // Overdrive8 always takes both clocks: for a clock that is to stay, its current value is sent.
    int const currentMem = memory.Valid ? memory.CurrentClock : 0;
    ClockCommand command{gpu.CurrentClock, 0, currentMem, 0, false};
    if (request.gpuClock.value_or(0) != 0) {
        command.gpuClock = *request.gpuClock;
    }
    if (request.memClock.value_or(0) != 0) {
        command.memClock = *request.memClock;
    }
    command.inEffect = command.gpuClock == gpu.CurrentClock && command.memClock == currentMem;
    return command;
}

ClockCommand PlanAmd(std::uint32_t api, ClockRequest const& request, ClockSetting const& gpu,
                     ClockSetting const& memory) {
    for (std::optional<int> const& value :
         {request.gpuClock, request.gpuVoltage, request.memClock, request.memVoltage}) {
        if (value.value_or(0) < 0) {
            throw UsageError("Clocks and voltages of AMD boards are absolute: they cannot be negative.");
        }
    }
    if (request.gpuClock.value_or(0) == 0 && request.gpuVoltage.value_or(0) == 0 && request.memClock.value_or(0) == 0 &&
        request.memVoltage.value_or(0) == 0) {
        throw UsageError("Nothing to set: every value is 0, which keeps the current one.");
    }
    RequireAdjustable(request.gpuClock, gpu, "GPU clock");
    RequireAdjustable(request.memClock, memory, "memory clock");
    if (request.gpuClock.value_or(0) != 0) {
        CheckKnownRange("GPU clock", *request.gpuClock, gpu.MinClock, gpu.MaxClock, Unit::Megahertz);
    }
    if (request.memClock.value_or(0) != 0) {
        CheckKnownRange("Memory clock", *request.memClock, memory.MinClock, memory.MaxClock, Unit::Megahertz);
    }
    return api == GPUTUNE_API_OVERDRIVEN ? PlanOverdriveN(request, gpu, memory) : PlanOverdrive8(request, gpu, memory);
}

ClockCommand PlanIntel(ClockRequest const& request) {
    if (request.gpuVoltage || request.memVoltage) {
        throw UnsupportedError("Intel boards take no voltages. Leave out --gpu-voltage and --mem-voltage.");
    }
    // 0 is an offset like any other, and the offsets in effect cannot be read. So no offset can stay as it is.
    if (!request.gpuClock || !request.memClock) {
        throw UsageError(
            "Intel boards take offsets in MHz from the default clocks, both at once: give --gpu and --mem "
            "(0 is the default clock).");
    }
    return {*request.gpuClock, 0, *request.memClock, 0, false};
}

}  // namespace

void CheckRange(std::string const& what, int value, int minimum, int maximum, Unit unit) {
    if (value < minimum || value > maximum) {
        throw ToolError(what + " " + WithUnit(value, unit) + " is outside the board's range: " +
                            std::to_string(minimum) + " to " + WithUnit(maximum, unit) + ".",
                        {.code = "out_of_range", .range = ErrorDetails::Range{minimum, maximum, unit}});
    }
}

UsageError WrongPointCount(int expected, std::size_t given) {
    return UsageError(
        "This board's fan curve has " + std::to_string(expected) + " points, not " + std::to_string(given) + ".",
        {.code = "wrong_point_count", .expectedPoints = expected});
}

void CheckCurve(std::vector<FanTablePoint> const& curve, FanSetting const& setting, std::uint32_t api) {
    if (api == GPUTUNE_API_IGCL) {
        return;
    }
    if (!setting.Valid || setting.PointCount < 2) {
        throw UnsupportedError("it has no fan curve.");
    }
    auto const count = static_cast<std::size_t>(setting.PointCount);
    if (curve.size() != count) {
        throw WrongPointCount(setting.PointCount, curve.size());
    }
    for (std::size_t i = 0; i < count && i < std::size(setting.Points); ++i) {
        FanPoint const& range = setting.Points[i];
        CheckKnownRange("The temperature of " + FanPointName(i) + ",", curve[i].FanTemperature, range.MinTemperature,
                        range.MaxTemperature, Unit::Celsius);
        CheckKnownRange("The speed of " + FanPointName(i) + ",", curve[i].FanSpeed, range.MinSpeed, range.MaxSpeed,
                        Unit::Percent);
    }
}

void CheckFanSpeed(int percent, FanSetting const& setting) {
    // On a board with a single point this range is that of its lowest speed, not of a fixed speed.
    if (setting.Valid && setting.PointCount >= 2) {
        CheckKnownRange("Fan speed", percent, setting.Points[0].MinSpeed, setting.Points[0].MaxSpeed, Unit::Percent);
    }
}

bool IsAdjustable(PowerLimitSetting const& setting) {
    return setting.Valid && (setting.Min != 0 || setting.Max != 0);
}

void CheckPowerLimit(int percent, PowerLimitSetting const& setting) {
    if (!setting.Valid) {
        return;
    }
    if (!IsAdjustable(setting)) {
        throw UnsupportedError("it has no adjustable power limit.");
    }
    CheckRange("Power limit", percent, setting.Min, setting.Max, Unit::Percent);
}

ClockCommand PlanClocks(std::uint32_t api, ClockRequest const& request, ClockSetting const& gpu,
                        ClockSetting const& memory) {
    if (!request.gpuClock && !request.gpuVoltage && !request.memClock && !request.memVoltage) {
        throw UsageError("Nothing to set: give at least one of --gpu, --gpu-voltage, --mem and --mem-voltage.");
    }
    return api == GPUTUNE_API_IGCL ? PlanIntel(request) : PlanAmd(api, request, gpu, memory);
}

}  // namespace gputune::tool
