// hold: keeps settings in force until it ends, and takes them back. hold-worker: the process that it starts.
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <memory>

#include "tool/commands/Commands.h"
#include "tool/commands/HoldViews.h"
#include "tool/commands/Sampling.h"
#include "tool/hold/Supervisor.h"
#include "tool/hold/Worker.h"
#include "tool/values/Errors.h"
#include "tool/values/FanCurve.h"
#include "tool/values/Numbers.h"

namespace gputune::tool {

namespace {

// As typed.
struct HoldOptions {
    std::vector<std::string> points{};
    std::string sensor{};
    std::optional<double> hysteresis{};  // kelvins
    std::optional<double> spinDown{};    // seconds
    std::string zeroRpm{};
    std::optional<int> power{};
    std::string profile{};
    double interval = 1;
    bool keep = false;
};

ZeroRpm ParseZeroRpm(std::string const& text) {
    std::size_t const colon = std::min(text.find(':'), text.size());
    std::optional<int> const start = ParseNumber<int>(std::string_view(text).substr(0, colon));
    std::optional<int> const stop = ParseNumber<int>(std::string_view(text).substr(std::min(colon + 1, text.size())));
    if (!start || !stop || *start <= *stop) {
        throw UsageError("\"" + text +
                         "\": write two temperatures, START:STOP, the first above the second, for example 55:45.");
    }
    return {.start = static_cast<double>(*start), .stop = static_cast<double>(*stop)};
}

HoldSettings ToSettings(HoldOptions const& options) {
    HoldSettings settings{
        .power = options.power, .profile = options.profile, .interval = options.interval, .keep = options.keep};
    bool const hasFanOption =
        !options.sensor.empty() || options.hysteresis || options.spinDown || !options.zeroRpm.empty();
    if (options.points.empty()) {
        if (hasFanOption) {
            throw UsageError("--sensor, --hysteresis, --spin-down and --zero-rpm need --fan.");
        }
        if (!options.power && options.profile.empty()) {
            throw UsageError("Nothing to hold: give at least one of --fan, --power and --profile.");
        }
        return settings;
    }
    try {
        settings.law.points = ParseFanCurve(options.points);
    } catch (FanCurveError const& error) {
        throw UsageError(error.what());
    }
    settings.sensor = options.sensor == "hotspot"  ? GPUTUNE_HWM_GPU_HOTSPOT_TEMPERATURE
                      : options.sensor == "memory" ? GPUTUNE_HWM_GPU_MEMORY_TEMPERATURE
                                                   : GPUTUNE_HWM_GPU_TEMPERATURE;
    settings.law.hysteresis = options.hysteresis.value_or(settings.law.hysteresis);
    settings.law.spinDownDelay = options.spinDown.value_or(settings.law.spinDownDelay);
    if (!options.zeroRpm.empty()) {
        settings.law.zeroRpm = ParseZeroRpm(options.zeroRpm);
    }
    settings.plainCurve = !options.hysteresis && !options.spinDown && options.zeroRpm.empty();
    return settings;
}

int RunHold(GlobalOptions const& options, HoldOptions const& typed) {
    if (options.LogsToOutput()) {
        throw UsageError("The log and the lines of the hold would mix: use --log file.");
    }
    HoldSettings const settings = ToSettings(typed);
    std::unique_ptr<HoldView> const view =
        MakeHoldView(options, "Hold " + Describe(settings) + " until this program ends", settings.interval);
    Supervisor(options, *view).Run(settings);
    return kExitSuccess;
}

int RunWorker(GlobalOptions const& options, std::string const& outputHandle) {
    return Worker(options, outputHandle).Run();
}

}  // namespace

void AddHoldCommands(CLI::App& app, Context& context) {
    auto const typed = std::make_shared<HoldOptions>();
    CLI::App* hold = AddCommand(
        app, context,
        {"hold", "Keep a fan curve, a power limit or a profile in force until the end",
         "At its end, and whatever goes wrong, the fan returns to the driver's automatic control, and power limit and\n"
         "clocks to what they were before. In a console a dashboard is drawn (q ends); otherwise every event is a "
         "line,\n"
         "with --json an object.\n"
         "Examples:\n"
         "  gputunectl hold --fan 40:25 60:40 75:70 85:100\n"
         "  gputunectl hold --fan 50:0 60:40 80:100 --zero-rpm 55:45 --power 10\n"
         "  gputunectl hold --profile silent --keep"},
        RunHold, typed);
    hold->add_option("--fan", typed->points,
                     "Points in ascending order, each a temperature in \u00b0C and a speed in percent; straight lines "
                     "between them")
        ->expected(1, 50)
        ->type_name("TEMPERATURE:SPEED");
    hold->add_option("--sensor", typed->sensor, "The temperature that the fan follows; default: temperature, the GPU's")
        ->check(CLI::IsMember({"temperature", "hotspot", "memory"}))
        ->type_name("SENSOR");
    hold->add_option("--hysteresis", typed->hysteresis,
                     "How far the temperature has to fall before the fan does, in kelvins; default 3")
        ->check(CLI::Range(0.0, 30.0))
        ->type_name("KELVINS");
    AddSecondsOption(*hold, "--spin-down", typed->spinDown, 0, 600,
                     "How long the temperature has to be lower before the fan slows down; default 8");
    hold->add_option("--zero-rpm", typed->zeroRpm,
                     "Let the fan stand: it starts at the first temperature in \u00b0C and stops at the second")
        ->type_name("START:STOP");
    hold->add_option("--power", typed->power, "The power limit in percent, relative to the default")
        ->transform(DecimalNumber())
        ->type_name("PERCENT");
    hold->add_option("--profile", typed->profile, "A predefined profile: oc or silent; AMD boards only")
        ->check(CLI::IsMember({"oc", "silent"}))
        ->type_name("PROFILE");
    AddSecondsOption(*hold, "--interval", typed->interval, 0.2, 5, "Between readings: seconds, 0.2 to 5; default 1");
    hold->add_flag("--keep", typed->keep, "Leave power limit and clocks as they are at the end");

    auto const handle = std::make_shared<std::string>();
    CLI::App* worker =
        AddCommand(app, context, {"hold-worker", "The process that talks to the driver; started by hold and serve", ""},
                   RunWorker, handle);
    worker->add_option("handle", *handle, "Where it reads its own output")->required();
    worker->group("");  // not listed: of no use to users
}

}  // namespace gputune::tool
