// fan get, fan set, fan auto, fan curve.
#include "tool/board/Checks.h"
#include "tool/board/FanChanges.h"
#include "tool/commands/Change.h"
#include "tool/commands/Commands.h"
#include "tool/values/Errors.h"
#include "tool/values/FanCurve.h"
#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

Value FanValue(int field) {
    return IsKnown(field) ? Value{std::int64_t{field}} : Value{};
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
    for (int i = 0; i < CountPoints(setting); ++i) {
        FanPoint const& point = setting.Points[i];
        grid.rows.push_back({Value{std::int64_t{i + 1}}, FanValue(point.CurrentTemperature),
                             FanValue(point.CurrentSpeed), FanValue(point.DefaultTemperature),
                             FanValue(point.DefaultSpeed), FanValue(point.MinTemperature),
                             FanValue(point.MaxTemperature), FanValue(point.MinSpeed), FanValue(point.MaxSpeed)});
    }
    return grid;
}

int RunFanGet(GlobalOptions const& options) {
    Session const session(options);
    session.RequireReady();
    PrintReadings(session, options, {FanSection(session)}, "its fan");
    return kExitSuccess;
}

int RunFanSet(GlobalOptions const& options, int percent) {
    Session const session(options);
    RequireTunable(session);
    CheckFanSpeed(percent, session.Api().ReadFanSetting());
    std::string const speed = WithUnit(percent, Unit::Percent);
    ConfirmChange(session, options, "Set the fan speed to " + speed);
    SentChange const sent = SendFanSpeed(session, percent);
    RequireDone(session, sent.done, "the fan speed");
    return FinishChange(session, options,
                        {.command = "fan set",
                         .what = "fan speed " + speed,
                         .sentence = "Fan speed set to " + speed + ".",
                         .readBack = sent.readBack,
                         .sections = {FanSection(session)}});
}

int RunFanAuto(GlobalOptions const& options) {
    Session const session(options);
    RequireTunable(session);
    ConfirmChange(session, options, "Return the fan to the driver's control");
    SentChange const sent = SendAutomaticFan(session);
    RequireDone(session, sent.done, "to take over the fan");
    return FinishChange(session, options,
                        {.command = "fan auto",
                         .what = "the driver's control of the fan",
                         .sentence = "The driver controls the fan.",
                         .readBack = sent.readBack,
                         .sections = {FanSection(session)}});
}

// The points of the command line; throws UsageError when they make no curve.
std::vector<FanTablePoint> ParseArguments(std::vector<std::string> const& points) {
    try {
        return ParseFanCurve(points);
    } catch (FanCurveError const& error) {
        throw UsageError(error.what());
    }
}

int RunFanCurve(GlobalOptions const& options, std::vector<std::string> const& points) {
    std::vector<FanTablePoint> const curve = ParseArguments(points);
    Session const session(options);
    RequireTunable(session);
    CheckCurve(curve, session.Api().ReadFanSetting(), session.ApiType());
    std::vector<std::string> texts;
    texts.reserve(curve.size());
    for (FanTablePoint const& point : curve) {
        texts.push_back(WithUnit(point.FanTemperature, Unit::Celsius) + " " + WithUnit(point.FanSpeed, Unit::Percent));
    }
    std::string const text = Joined(texts, ", ");
    ConfirmChange(session, options, "Set the fan curve to " + text);
    SentChange const sent = SendFanCurve(session, curve);
    RequireDone(session, sent.done, "the fan curve");
    return FinishChange(session, options,
                        {.command = "fan curve",
                         .what = "fan curve " + text,
                         .sentence = "Fan curve set to " + text + ".",
                         .readBack = sent.readBack,
                         .sections = {FanSection(session)}});
}

}  // namespace

Section FanSection(Session const& session) {
    FanSetting const setting = session.Api().ReadFanSetting();
    Readings const readings = session.ReadSensors();
    Value const duty = ToValue(readings[GPUTUNE_HWM_FAN_SPEED_PERCENT]);
    Value const speed = ToValue(readings[GPUTUNE_HWM_FAN_SPEED_RPM]);

    return {
        .key = "fan",
        .title = "Fan",
        .available = setting.Valid || duty.index() != 0 || speed.index() != 0,
        .fields = {{"measured_speed", kSensorNames[GPUTUNE_HWM_FAN_SPEED_PERCENT].text, duty, Unit::Percent},
                   {"measured_speed", kSensorNames[GPUTUNE_HWM_FAN_SPEED_RPM].text, speed, Unit::Rpm},
                   {"point_count", "Points", setting.Valid ? IntValue(setting.PointCount) : Value{}}},
        .grids = {PointGrid(setting)},
    };
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

    AddCommand(*fan, context, {"get", "Show the fan's speed, ranges and curve", "Example:\n  gputunectl fan get"},
               RunFanGet);

    auto const percent = std::make_shared<int>(0);
    CLI::App* set = AddCommand(*fan, context, {"set", "Set a fixed speed", "Example:\n  gputunectl fan set 60"},
                               RunFanSet, percent);
    set->add_option("percent", *percent, "Speed in percent, 0 to 100")
        ->required()
        ->transform(DecimalNumber())
        ->check(CLI::Range(0, 100))
        ->type_name("PERCENT");

    AddCommand(*fan, context,
               {"auto", "Return the fan to the driver's automatic control", "Example:\n  gputunectl fan auto"},
               RunFanAuto);

    auto const points = std::make_shared<std::vector<std::string>>();
    CLI::App* curve = AddCommand(
        *fan, context,
        {"curve", "Set a fan curve",
         "AMD Overdrive8 boards take five points, Intel fans as many as the fan has; other boards have no curve.\n"
         "Example:\n"
         "  gputunectl fan curve 40:20 55:30 65:45 75:65 85:90"},
        RunFanCurve, points);
    curve
        ->add_option("points", *points,
                     "Points in ascending order, each a temperature in \u00b0C and a speed in percent")
        ->required()
        ->expected(1, 50)
        ->type_name("TEMPERATURE:SPEED");
}

}  // namespace gputune::tool
