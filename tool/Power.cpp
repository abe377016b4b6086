// power get, power set, power default.
#include <algorithm>
#include <cmath>

#include "Checks.h"
#include "Commands.h"
#include "Console.h"
#include "Errors.h"

namespace gputune::tool {

namespace {

// Boards without the setting report a range of nothing.
bool IsAdjustable(PowerLimitSetting const& setting) {
    return setting.Valid && (setting.Min != 0 || setting.Max != 0);
}

// Overdrive8 always reads the value in effect: there -1 is a limit of -1 %. OverdriveN tells it with the sensors.
std::optional<double> CurrentLimit(Session const& session, PowerLimitSetting const& setting, Readings const& readings) {
    if (IsAdjustable(setting) && (setting.Current != -1 || session.ApiType() == GPUTUNE_API_OVERDRIVE8)) {
        return setting.Current;
    }
    return readings[GPUTUNE_HWM_TDP_LIMIT];
}

int RunGet(GlobalOptions const& options) {
    Session const session(options);
    session.RequireReady();
    PrintReadings(session, options, {PowerSection(session)}, "its power limit");
    return exitSuccess;
}

int Finish(Session const& session, GlobalOptions const& options, std::string command, std::string sentence) {
    PrintChange(options, std::move(command), std::move(sentence), {PowerSection(session)});
    return exitSuccess;
}

int RunSet(GlobalOptions const& options, int temperature, int percent) {
    Session const session(options);
    RequireTunable(session);
    PowerLimitSetting const setting = session.Api().GetPowerLimitSetting();
    if (setting.Valid && !IsAdjustable(setting)) {
        throw UnsupportedError("it has no adjustable power limit.");
    }
    if (setting.Valid) {
        CheckRange("Power limit", percent, setting.Min, setting.Max, Unit::Percent);
    }
    std::string limits = "power limit to " + FormatValue(std::int64_t{percent}, Unit::Percent);
    if (session.ApiType() == GPUTUNE_API_OVERDRIVEN) {
        limits = "temperature limit to " + FormatValue(std::int64_t{temperature}, Unit::Celsius) + " and the " + limits;
    } else {
        WriteError("Note: this board has no adjustable temperature limit, only the power limit is set.\n");
    }
    ConfirmChange(session, options, "Set the " + limits);
    RequireDone(session, session.Api().SetPowerLimit(temperature, percent), "to set the " + limits);
    return Finish(session, options, "power set", "Set the " + limits + ".");
}

int RunDefault(GlobalOptions const& options) {
    Session const session(options);
    RequireTunable(session);
    ConfirmChange(session, options, "Restore the default power limit");
    RequireDone(session, session.Api().SetPowerLimitDefault(), "the default power limit");
    return Finish(session, options, "power default", "Default power limit restored.");
}

}  // namespace

Section PowerSection(Session const& session) {
    PowerLimitSetting const setting = session.Api().GetPowerLimitSetting();
    Readings const readings = session.ReadSensors();
    std::optional<double> const& temperature = readings[GPUTUNE_HWM_TEMPERATURE_LIMIT];
    std::optional<double> const limit = CurrentLimit(session, setting, readings);
    bool const adjustable = IsAdjustable(setting);
    auto const range = [adjustable](int field) { return adjustable ? Value{std::int64_t{field}} : Value{}; };

    Section section{.key = "power_limit", .title = "Power limit (relative to the board's default power)"};
    section.available = adjustable || limit || temperature;
    section.fields = {
        {"current", "Current", limit ? Value{*limit} : Value{}, Unit::Percent},
        {"default", "Default", range(setting.Default), Unit::Percent},
        {"minimum", "Minimum", range(setting.Min), Unit::Percent},
        {"maximum", "Maximum", range(setting.Max), Unit::Percent},
        {"temperature_limit", "Temperature limit", temperature ? Value{*temperature} : Value{}, Unit::Celsius},
    };
    return section;
}

void RequirePowerLimit(Session const& session, double percent) {
    PowerLimitSetting const setting = session.Api().GetPowerLimitSetting();
    std::optional<double> const current = CurrentLimit(session, setting, session.ReadSensors());
    double const wanted =
        std::trunc(std::clamp(percent, static_cast<double>(setting.Min), static_cast<double>(setting.Max)));
    if (IsAdjustable(setting) && current && *current != wanted) {
        throw ToolError("The power limit is " + FormatValue(*current, Unit::Percent) + " and not " +
                        FormatValue(wanted, Unit::Percent) + ": the board or its driver refused it." +
                        session.LogHint());
    }
}

void AddPowerCommands(CLI::App& app, Context& context) {
    CLI::App* power = app.add_subcommand("power", "Show and set the power limit");
    power->require_subcommand(1);
    power->footer(
        "Examples:\n"
        "  gputunectl power get\n"
        "  gputunectl power set 85 10\n"
        "  gputunectl power default");

    CLI::App* get = power->add_subcommand("get", "Show the power limit and its range");
    get->footer("Example:\n  gputunectl power get");
    get->callback([&context] { context.run = [&context] { return RunGet(context.options); }; });

    CLI::App* set = power->add_subcommand("set", "Set the temperature limit and the power limit");
    auto const temperature = std::make_shared<int>(0);
    auto const percent = std::make_shared<int>(0);
    set->add_option("temperature", *temperature, "Temperature limit in \u00b0C; AMD OverdriveN boards only")
        ->required()
        ->transform(DecimalNumber())
        ->type_name("TEMPERATURE");
    set->add_option("percent", *percent, "Power limit in percent, relative to the default: -10 is 90 % of it")
        ->required()
        ->transform(DecimalNumber())
        ->type_name("PERCENT");
    set->footer(
        "Examples:\n"
        "  gputunectl power set 85 10\n"
        "  gputunectl power set 80 -15");
    set->callback([&context, temperature, percent] {
        context.run = [&context, temperature, percent] { return RunSet(context.options, *temperature, *percent); };
    });

    CLI::App* restore = power->add_subcommand("default", "Restore the default power limit");
    restore->footer("Example:\n  gputunectl power default");
    restore->callback([&context] { context.run = [&context] { return RunDefault(context.options); }; });
}

}  // namespace gputune::tool
