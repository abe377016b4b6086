// fan get, fan set, fan auto, fan curve.
#include <algorithm>

#include "tool/board/Checks.h"
#include "tool/board/FanAnswers.h"
#include "tool/commands/Commands.h"
#include "tool/values/Errors.h"

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

int RunFanGet(GlobalOptions const& options) {
    Session const session(options);
    session.RequireReady();
    PrintReadings(session, options, {FanSection(session)}, "its fan");
    return exitSuccess;
}

// A change that was sent.
int FinishFan(Session const& session, GlobalOptions const& options, std::string command, std::string what,
              std::string sentence, ReadBack readBack) {
    return FinishChange(session, options,
                        {.command = std::move(command),
                         .what = std::move(what),
                         .sentence = std::move(sentence),
                         .readBack = std::move(readBack),
                         .sections = {FanSection(session)}});
}

// What the fans answered. Throws UnsupportedError when none was sent anything.
ReadBack JudgeAnswers(FanAnswers const& answers) {
    std::size_t const unsent =
        answers.Count(FanAnswer::Kind::UnknownMode) + answers.Count(FanAnswer::Kind::NothingSent);
    if (!answers.fans.empty() && unsent == answers.fans.size()) {
        std::string why = "nothing was sent.";
        for (std::string const& problem : answers.Problems()) {
            why += " " + problem;
        }
        throw UnsupportedError(why);
    }
    ReadBack readBack;
    for (std::string const& problem : answers.Problems()) {
        readBack.AddProblem(problem);
    }
    readBack.CannotTell("fan");
    return readBack;
}

// The points of the board's curve in effect beside those that `asked` gives for each; on boards without a curve nothing
// can be compared.
template <class Asked>
ReadBack ComparePoints(Session const& session, Asked&& asked) {
    ReadBack readBack;
    FanSetting const setting = session.Api().ReadFanSetting();
    int const count = std::clamp(setting.PointCount, 0, static_cast<int>(std::size(setting.Points)));
    auto const compare = [&readBack](int point, char const* what, int wanted, int shown, Unit unit) {
        if (wanted != untouched) {
            readBack.Compare(std::string(what) + " of point " + std::to_string(point + 1), wanted,
                             shown == untouched ? std::nullopt : std::optional<double>(shown), unit);
        }
    };
    for (int i = 0; setting.Valid && i < count; ++i) {
        FanPoint const& point = setting.Points[i];
        FanTablePoint const wanted = asked(i, point);
        compare(i, "speed", wanted.FanSpeed, point.CurrentSpeed, Unit::Percent);
        compare(i, "temperature", wanted.FanTemperature, point.CurrentTemperature, Unit::Celsius);
    }
    return readBack;
}

int RunFanSet(GlobalOptions const& options, int percent) {
    Session const session(options);
    RequireTunable(session);
    CheckFanSpeed(percent, session.Api().ReadFanSetting());
    std::string const speed = std::to_string(percent) + " %";
    ConfirmChange(session, options, "Set the fan speed to " + speed);
    std::size_t const mark = session.LogMark();
    RequireDone(session, session.Api().SetFanSpeed(percent), "the fan speed");
    // A fixed speed is a flat curve where there is one; the temperatures stay.
    return FinishFan(session, options, "fan set", "fan speed " + speed, "Fan speed set to " + speed + ".",
                     session.ApiType() == GPUTUNE_API_IGCL
                         ? JudgeAnswers(ReadFanAnswers(session.LogSince(mark)))
                         : ComparePoints(session, [percent](int, FanPoint const&) {
                               return FanTablePoint{.FanSpeed = percent, .FanTemperature = untouched};
                           }));
}

int RunFanAuto(GlobalOptions const& options) {
    Session const session(options);
    RequireTunable(session);
    ConfirmChange(session, options, "Return the fan to the driver's control");
    std::size_t const mark = session.LogMark();
    RequireDone(session, session.Api().SetFanSpeed(-1), "to take over the fan");
    return FinishFan(session, options, "fan auto", "the driver's control of the fan", "The driver controls the fan.",
                     session.ApiType() == GPUTUNE_API_IGCL
                         ? JudgeAnswers(ReadFanAnswers(session.LogSince(mark)))
                         : ComparePoints(session, [](int, FanPoint const& point) {
                               // A setting that the board does not have has a range of nothing.
                               bool const hasSpeed = point.MinSpeed != 0 || point.MaxSpeed != 0;
                               bool const hasTemperature = point.MinTemperature != 0 || point.MaxTemperature != 0;
                               return FanTablePoint{
                                   .FanSpeed = hasSpeed ? point.DefaultSpeed : untouched,
                                   .FanTemperature = hasTemperature ? point.DefaultTemperature : untouched};
                           }));
}

int RunFanCurve(GlobalOptions const& options, std::vector<std::string> const& points) {
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
    std::size_t const mark = session.LogMark();
    bool const done = session.Api().SetFanSpeedTable(curve.data(), static_cast<int>(curve.size()));
    if (session.ApiType() == GPUTUNE_API_IGCL) {
        FanAnswers const answers = ReadFanAnswers(session.LogSince(mark));
        if (answers.expectedPoints) {
            throw WrongPointCount(*answers.expectedPoints, curve.size());
        }
        ReadBack readBack = JudgeAnswers(answers);
        RequireDone(session, done || !readBack.IsDone(), "the fan curve");
        return FinishFan(session, options, "fan curve", "fan curve " + text, "Fan curve set to " + text + ".",
                         std::move(readBack));
    }
    RequireDone(session, done, "the fan curve");
    return FinishFan(session, options, "fan curve", "fan curve " + text, "Fan curve set to " + text + ".",
                     ComparePoints(session, [&curve](int i, FanPoint const&) {
                         return curve[std::min(static_cast<std::size_t>(i), curve.size() - 1)];
                     }));
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
    get->callback([&context] { context.run = [&context] { return RunFanGet(context.options); }; });

    CLI::App* set = fan->add_subcommand("set", "Set a fixed speed");
    auto const percent = std::make_shared<int>(0);
    set->add_option("percent", *percent, "Speed in percent, 0 to 100")
        ->required()
        ->transform(DecimalNumber())
        ->check(CLI::Range(0, 100))
        ->type_name("PERCENT");
    set->footer("Example:\n  gputunectl fan set 60");
    set->callback(
        [&context, percent] { context.run = [&context, percent] { return RunFanSet(context.options, *percent); }; });

    CLI::App* automatic = fan->add_subcommand("auto", "Return the fan to the driver's automatic control");
    automatic->footer("Example:\n  gputunectl fan auto");
    automatic->callback([&context] { context.run = [&context] { return RunFanAuto(context.options); }; });

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
        [&context, points] { context.run = [&context, points] { return RunFanCurve(context.options, *points); }; });
}

}  // namespace gputune::tool
