// fan get, fan set, fan auto, fan curve.
#include <algorithm>

#include "Checks.h"
#include "Commands.h"
#include "Errors.h"

namespace gputune::tool {

namespace {

Value FanValue(int field) {
    return field == untouched ? Value{} : IntValue(field);
}

Grid PointGrid(FanSetting const& setting) {
    Grid grid{.key = "points", .label = "Settings of the points", .columns = {}, .rows = {}};
    grid.columns = {{"point", "Point", Unit::None},
                    {"current_temperature", "Temp.", Unit::Celsius},
                    {"current_speed", "Speed", Unit::Percent},
                    {"default_temperature", "Default temp.", Unit::Celsius},
                    {"default_speed", "Default speed", Unit::Percent},
                    {"minimum_temperature", "Min temp.", Unit::Celsius},
                    {"maximum_temperature", "Max temp.", Unit::Celsius},
                    {"minimum_speed", "Min speed", Unit::Percent},
                    {"maximum_speed", "Max speed", Unit::Percent}};
    int const count = std::clamp(setting.PointCount, 0, static_cast<int>(std::size(setting.Points)));
    for (int i = 0; i < count; ++i) {
        FanPoint const& point = setting.Points[i];
        grid.rows.push_back({Value{std::int64_t{i + 1}}, FanValue(point.CurrentTemperature),
                             FanValue(point.CurrentSpeed), FanValue(point.DefaultTemperature),
                             FanValue(point.DefaultSpeed), FanValue(point.MinTemperature),
                             FanValue(point.MaxTemperature), FanValue(point.MinSpeed), FanValue(point.MaxSpeed)});
    }
    return grid;
}

Value ReadingValue(Readings const& readings, GputuneHwmKey key) {
    return readings[key] ? Value{*readings[key]} : Value{};
}

int RunGet(GlobalOptions const& options) {
    Session const session(options);
    session.RequireReady();
    PrintReadings(session, options, {FanSection(session)}, "its fan");
    return exitSuccess;
}

int Finish(Session const& session, GlobalOptions const& options, std::string command, std::string sentence) {
    PrintChange(options, std::move(command), std::move(sentence), {FanSection(session)});
    return exitSuccess;
}

int RunSet(GlobalOptions const& options, int percent) {
    Session const session(options);
    RequireTunable(session);
    CheckFanSpeed(percent, session.Api().ReadFanSetting());
    std::string const speed = std::to_string(percent) + " %";
    ConfirmChange(session, options, "Set the fan speed to " + speed);
    RequireDone(session, session.Api().SetFanSpeed(percent), "the fan speed");
    return Finish(session, options, "fan set", "Fan speed set to " + speed + ".");
}

int RunAuto(GlobalOptions const& options) {
    Session const session(options);
    RequireTunable(session);
    ConfirmChange(session, options, "Return the fan to the driver's control");
    RequireDone(session, session.Api().SetFanSpeed(-1), "to take over the fan");
    return Finish(session, options, "fan auto", "The driver controls the fan.");
}

int RunCurve(GlobalOptions const& options, std::vector<std::string> const& points) {
    std::vector<FanTablePoint> const curve = ParseCurve(points);
    Session const session(options);
    RequireTunable(session);
    CheckCurve(curve, session.Api().ReadFanSetting(), session.ApiType());
    std::string text;
    for (FanTablePoint const& point : curve) {
        text += text.empty() ? "" : ", ";
        text += FormatValue(std::int64_t{point.FanTemperature}, Unit::Celsius) + " " +
                FormatValue(std::int64_t{point.FanSpeed}, Unit::Percent);
    }
    ConfirmChange(session, options, "Set the fan curve to " + text);
    bool const done = session.Api().SetFanSpeedTable(curve.data(), static_cast<int>(curve.size()));
    bool const isIntel = session.ApiType() == GPUTUNE_API_IGCL;
    RequireDone(session, done,
                isIntel ? "the fan curve, or its fans take another number of points than " +
                              std::to_string(curve.size()) + ", or none"
                        : "the fan curve");
    return Finish(session, options, "fan curve", "Fan curve set to " + text + ".");
}

}  // namespace

Section FanSection(Session const& session) {
    FanSetting const setting = session.Api().ReadFanSetting();
    Readings const readings = session.ReadSensors();
    Value const duty = ReadingValue(readings, GPUTUNE_HWM_FAN_SPEED_PERCENT);
    Value const speed = ReadingValue(readings, GPUTUNE_HWM_FAN_SPEED_RPM);

    Section section{.key = "fan", .title = "Fan"};
    section.available = setting.Valid || duty.index() != 0 || speed.index() != 0;
    section.fields = {
        {"measured_speed", sensorNames[GPUTUNE_HWM_FAN_SPEED_PERCENT].text, duty, Unit::Percent},
        {"measured_speed", sensorNames[GPUTUNE_HWM_FAN_SPEED_RPM].text, speed, Unit::Rpm},
        {"point_count", "Points", setting.Valid ? IntValue(setting.PointCount) : Value{}},
    };
    section.grids = {PointGrid(setting)};
    return section;
}

void AddFanCommands(CLI::App& app, Context& context) {
    CLI::App* fan = app.add_subcommand("fan", "Show and set the fan");
    fan->require_subcommand(1);
    fan->footer(
        "Examples:\n"
        "  gputunectl fan get\n"
        "  gputunectl fan set 60\n"
        "  gputunectl fan auto\n"
        "  gputunectl fan curve 40:20 55:30 65:45 75:65 85:90");

    CLI::App* get = fan->add_subcommand("get", "Show the fan's speed, ranges and curve");
    get->footer("Example:\n  gputunectl fan get");
    get->callback([&context] { context.run = [&context] { return RunGet(context.options); }; });

    CLI::App* set = fan->add_subcommand("set", "Set a fixed speed");
    auto const percent = std::make_shared<int>(0);
    set->add_option("percent", *percent, "Speed in percent, 0 to 100")
        ->required()
        ->transform(DecimalNumber())
        ->check(CLI::Range(0, 100))
        ->type_name("PERCENT");
    set->footer("Example:\n  gputunectl fan set 60");
    set->callback(
        [&context, percent] { context.run = [&context, percent] { return RunSet(context.options, *percent); }; });

    CLI::App* automatic = fan->add_subcommand("auto", "Return the fan to the driver's automatic control");
    automatic->footer("Example:\n  gputunectl fan auto");
    automatic->callback([&context] { context.run = [&context] { return RunAuto(context.options); }; });

    CLI::App* curve = fan->add_subcommand("curve", "Set a fan curve");
    auto const points = std::make_shared<std::vector<std::string>>();
    curve
        ->add_option("points", *points,
                     "Points in ascending order, each a temperature in \u00b0C and a speed in percent")
        ->required()
        ->expected(1, 50)
        ->type_name("TEMPERATURE:SPEED");
    curve->footer(
        "AMD Overdrive8 boards take five points, Intel fans as many as the fan has; other boards have no curve.\n"
        "Example:\n"
        "  gputunectl fan curve 40:20 55:30 65:45 75:65 85:90");
    curve->callback(
        [&context, points] { context.run = [&context, points] { return RunCurve(context.options, *points); }; });
}

}  // namespace gputune::tool
