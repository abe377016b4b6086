// power get, power set, power default.
#include "Checks.h"
#include "Commands.h"
#include "Console.h"
#include "Errors.h"

namespace gputune::tool {

namespace {

int RunGet(GlobalOptions const& options) {
    Session const session(options);
    session.RequireReady();
    PrintReadings(options, {PowerSection(session)}, "This board does not report its power limit.");
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
    std::optional<double> const& limit = readings[GPUTUNE_HWM_TDP_LIMIT];

    // Overdrive8 always reads the value in effect: there -1 is a limit of -1 %. OverdriveN tells it with the sensors.
    Value current;
    if (setting.Valid && (setting.Current != -1 || session.ApiType() == GPUTUNE_API_OVERDRIVE8)) {
        current = std::int64_t{setting.Current};
    } else if (limit) {
        current = *limit;
    }
    auto const range = [&setting](int field) { return setting.Valid ? Value{std::int64_t{field}} : Value{}; };

    Section section{.key = "power_limit", .title = "Power limit (relative to the board's default power)"};
    section.available = setting.Valid || limit || temperature;
    section.fields = {
        {"current", "Current", current, Unit::Percent},
        {"default", "Default", range(setting.Default), Unit::Percent},
        {"minimum", "Minimum", range(setting.Min), Unit::Percent},
        {"maximum", "Maximum", range(setting.Max), Unit::Percent},
        {"temperature_limit", "Temperature limit", temperature ? Value{*temperature} : Value{}, Unit::Celsius},
    };
    return section;
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
        ->type_name("TEMPERATURE");
    set->add_option("percent", *percent, "Power limit in percent, relative to the default: -10 is 90 % of it")
        ->required()
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
