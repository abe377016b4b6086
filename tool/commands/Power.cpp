// power get, power set, power default.
#include <algorithm>
#include <cmath>
#include <limits>

#include "tool/board/Checks.h"
#include "tool/board/ShownSettings.h"
#include "tool/commands/Change.h"
#include "tool/commands/Commands.h"
#include "tool/system/Console.h"
#include "tool/values/Errors.h"
#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

struct TemperatureRange {
    int minimum;
    int maximum;
};

// No function of the library returns this range. But the library logs it when it refuses a temperature outside of it.
// So this asks for a temperature that no board takes, together with a power limit outside its range: the library
// refuses one of them before it calls the driver, and nothing is sent. Nothing when every int is a valid power limit.
std::optional<TemperatureRange> ReadTemperatureRange(Session const& session, PowerLimitSetting const& setting) {
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    bool const hasOutside = setting.Valid && (setting.Max < kHighest || setting.Min > kLowest);
    if (session.ApiType() != GPUTUNE_API_OVERDRIVEN || !hasOutside) {
        return std::nullopt;
    }
    std::size_t const mark = session.LogMark();
    session.Api().SetPowerLimit(kLowest, setting.Max < kHighest ? setting.Max + 1 : setting.Min - 1);
    for (LogEntry const& entry : session.LogSince(mark)) {
        std::optional<int> const minimum = NumberBehind(entry.message, "temp value out of bound: should be ");
        std::optional<int> const maximum = NumberBehind(entry.message, " to ");
        if (minimum && maximum) {
            return TemperatureRange{*minimum, *maximum};
        }
    }
    return std::nullopt;
}

int RunPowerGet(GlobalOptions const& options) {
    Session const session(options);
    session.RequireReady();
    PrintReadings(session, options, {PowerSection(session)}, "its power limit");
    return kExitSuccess;
}

// What the user asks for. One of them may be missing.
struct PowerRequest {
    std::optional<int> temperature{};  // degrees Celsius
    std::optional<int> percent{};
};

std::string DescribePower(PowerRequest const& request, std::string const& link) {
    std::vector<std::string> texts;
    if (request.temperature) {
        texts.push_back("temperature limit " + link + WithUnit(*request.temperature, Unit::Celsius));
    }
    if (request.percent) {
        texts.push_back("power limit " + link + WithUnit(*request.percent, Unit::Percent));
    }
    return Joined(texts, " and the ");
}

// The limit in effect, to be sent again: OverdriveN boards take both limits at once.
int KeptLimit(std::optional<double> const& inEffect, char const* what, char const* option) {
    if (!inEffect) {
        throw ToolError(std::string("The ") + what +
                        " in effect cannot be read, so it cannot stay as it is: give it with " + option + ".");
    }
    return static_cast<int>(*inEffect);
}

// The user gives both limits as arguments, or one or both as options.
PowerRequest JoinRequest(std::vector<int> const& limits, PowerRequest const& named) {
    bool const hasNamed = named.temperature || named.percent;
    if (hasNamed && limits.empty()) {
        return named;
    }
    if (hasNamed || limits.size() != 2) {
        throw UsageError("Give both limits, TEMPERATURE PERCENT, or one of them with --temperature or --percent.");
    }
    return {limits[0], limits[1]};
}

void CheckPowerRequest(Session const& session, PowerLimitSetting const& setting, PowerRequest const& request) {
    if (request.percent) {
        CheckPowerLimit(*request.percent, setting);
    }
    if (request.temperature) {
        if (std::optional<TemperatureRange> const range = ReadTemperatureRange(session, setting)) {
            CheckRange("Temperature limit", *request.temperature, range->minimum, range->maximum, Unit::Celsius);
        }
    }
}

// The Intel backend's functions do not return the limit, but the library logs what it read back.
std::optional<double> LoggedLimit(LogEntries const& entries) {
    std::optional<std::string> const text = LastMessage(entries, "(verify) Current Sustained Power Limit Percent");
    return text ? LeadingNumber(*text) : std::nullopt;
}

int RunPowerSet(GlobalOptions const& options, std::vector<int> const& limits, PowerRequest const& named) {
    PowerRequest request = JoinRequest(limits, named);
    Session const session(options);
    RequireTunable(session);
    bool const hasTemperature = session.ApiType() == GPUTUNE_API_OVERDRIVEN;
    if (request.temperature && !hasTemperature) {
        if (!request.percent) {
            throw UnsupportedError("it has no adjustable temperature limit.");
        }
        request.temperature.reset();
        if (!options.json) {
            WriteError("Note: this board has no adjustable temperature limit, only the power limit is set.\n");
        }
    }
    PowerLimitSetting const setting = session.Api().GetPowerLimitSetting();
    CheckPowerRequest(session, setting, request);
    bool const keepsOne = !request.percent || (hasTemperature && !request.temperature);
    Readings const before = keepsOne ? session.ReadSensors() : Readings{};
    int const percent = request.percent
                            ? *request.percent
                            : KeptLimit(CurrentPowerLimit(session, setting, before), "power limit", "--percent");
    int const temperature = request.temperature ? *request.temperature
                            : hasTemperature
                                ? KeptLimit(before[GPUTUNE_HWM_TEMPERATURE_LIMIT], "temperature limit", "--temperature")
                                : 0;
    std::string const text = DescribePower(request, "to ");
    ConfirmChange(session, options, "Set the " + text);
    std::size_t const mark = session.LogMark();
    RequireDone(session, session.Api().SetPowerLimit(temperature, percent), "to set the " + text);

    ReadBack readBack;
    if (session.ApiType() == GPUTUNE_API_IGCL) {
        // The tolerance of 1: the driver keeps the limit in watts.
        readBack.Compare("power limit", percent, LoggedLimit(session.LogSince(mark)), Unit::Percent, 1);
    } else {
        Readings const readings = session.ReadSensors();
        readBack.Compare("power limit", percent,
                         CurrentPowerLimit(session, session.Api().GetPowerLimitSetting(), readings), Unit::Percent);
        if (hasTemperature) {
            readBack.Compare("temperature limit", temperature, readings[GPUTUNE_HWM_TEMPERATURE_LIMIT], Unit::Celsius);
        }
    }
    return FinishChange(session, options,
                        {.command = "power set",
                         .what = DescribePower(request, ""),
                         .sentence = "Set the " + text + ".",
                         .readBack = std::move(readBack),
                         .sections = {PowerSection(session)}});
}

int RunPowerDefault(GlobalOptions const& options) {
    Session const session(options);
    RequireTunable(session);
    ConfirmChange(session, options, "Restore the default power limit");
    RequireDone(session, session.Api().SetPowerLimitDefault(), "the default power limit");
    ReadBack readBack;
    ComparePowerLimit(session, session.Api().GetPowerLimitSetting().Default, readBack);
    return FinishChange(session, options,
                        {.command = "power default",
                         .what = "the default power limit",
                         .sentence = "Default power limit restored.",
                         .readBack = std::move(readBack),
                         .sections = {PowerSection(session)}});
}

}  // namespace

Section PowerSection(Session const& session) {
    PowerLimitSetting const setting = session.Api().GetPowerLimitSetting();
    Readings const readings = session.ReadSensors();
    std::optional<double> const& temperature = readings[GPUTUNE_HWM_TEMPERATURE_LIMIT];
    std::optional<double> const limit = CurrentPowerLimit(session, setting, readings);
    bool const adjustable = IsAdjustable(setting);
    auto const range = [adjustable](int field) { return adjustable ? Value{std::int64_t{field}} : Value{}; };
    std::optional<TemperatureRange> const temperatures = ReadTemperatureRange(session, setting);

    return {
        .key = "power_limit",
        .title = "Power limit (relative to the board's default power)",
        .available = adjustable || limit || temperature,
        .fields =
            {
                {"current", "Current", ToValue(limit), Unit::Percent},
                {"default", "Default", range(setting.Default), Unit::Percent},
                {"minimum", "Minimum", range(setting.Min), Unit::Percent},
                {"maximum", "Maximum", range(setting.Max), Unit::Percent},
                {"temperature_limit", "Temperature limit", ToValue(temperature), Unit::Celsius},
                {"minimum_temperature_limit", "Temperature minimum",
                 temperatures ? Value{std::int64_t{temperatures->minimum}} : Value{}, Unit::Celsius},
                {"maximum_temperature_limit", "Temperature maximum",
                 temperatures ? Value{std::int64_t{temperatures->maximum}} : Value{}, Unit::Celsius},
            },
    };
}

void ComparePowerLimit(Session const& session, double percent, ReadBack& readBack) {
    PowerLimitSetting const setting = session.Api().GetPowerLimitSetting();
    if (!IsAdjustable(setting)) {
        return;
    }
    double const wanted =
        std::trunc(std::clamp(percent, static_cast<double>(setting.Min), static_cast<double>(setting.Max)));
    readBack.Compare("power limit", wanted, CurrentPowerLimit(session, setting, session.ReadSensors()), Unit::Percent);
}

void AddPowerCommands(CLI::App& app, Context& context) {
    CLI::App* power = app.add_subcommand("power", "Show and set the power limit");
    power->require_subcommand(1);
    power->footer(
        "Examples:\n"
        "  gputunectl power get\n"
        "  gputunectl power set 85 10\n"
        "  gputunectl power default");

    AddCommand(*power, context, {"get", "Show the power limit and its range", "Example:\n  gputunectl power get"},
               RunPowerGet);

    auto const limits = std::make_shared<std::vector<int>>();
    auto const named = std::make_shared<PowerRequest>();
    CLI::App* set = AddCommand(*power, context,
                               {"set", "Set the temperature limit, the power limit or both",
                                "Examples:\n"
                                "  gputunectl power set 85 10\n"
                                "  gputunectl power set --percent -15\n"
                                "  gputunectl power set --temperature 80"},
                               RunPowerSet, limits, named);
    set->add_option("limits", *limits,
                    "Temperature limit in \u00b0C (AMD OverdriveN boards only) and power limit in percent, relative to "
                    "the default: -10 is 90 % of it")
        ->expected(2)
        ->transform(DecimalNumber())
        ->type_name("TEMPERATURE PERCENT");
    set->add_option("--temperature", named->temperature, "The temperature limit; the power limit stays as it is")
        ->transform(DecimalNumber())
        ->type_name("CELSIUS");
    set->add_option("--percent", named->percent, "The power limit; the temperature limit stays as it is")
        ->transform(DecimalNumber())
        ->type_name("PERCENT");

    AddCommand(*power, context, {"default", "Restore the default power limit", "Example:\n  gputunectl power default"},
               RunPowerDefault);
}

}  // namespace gputune::tool
