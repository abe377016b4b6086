// clocks get, clocks set, clocks default.
#include "Checks.h"
#include "Commands.h"
#include "Errors.h"

namespace gputune::tool {

namespace {

// OverdriveN boards with fewer memory than engine levels answer 0, which no running board has.
Value CurrentClock(ClockSetting const& setting) {
    return setting.CurrentClock == 0 ? Value() : IntValue(setting.CurrentClock);
}

Section ClockSection(char const* key, char const* title, ClockSetting const& setting) {
    // Boards without an adjustable voltage report a range of nothing.
    bool const hasVoltage = setting.MinVoltage != 0 || setting.MaxVoltage != 0;
    auto const voltage = [hasVoltage](int value) { return hasVoltage ? IntValue(value) : Value(); };
    Section section{.key = key, .title = title};
    section.available = setting.Valid;
    section.fields = {
        {"current_clock", "Current clock", CurrentClock(setting), Unit::Megahertz},
        {"default_clock", "Default clock", IntValue(setting.DefaultClock), Unit::Megahertz},
        {"minimum_clock", "Minimum clock", IntValue(setting.MinClock), Unit::Megahertz},
        {"maximum_clock", "Maximum clock", IntValue(setting.MaxClock), Unit::Megahertz},
        {"current_voltage", "Current voltage", voltage(setting.CurrentVoltage), Unit::Millivolt},
        {"default_voltage", "Default voltage", voltage(setting.DefaultVoltage), Unit::Millivolt},
        {"minimum_voltage", "Minimum voltage", voltage(setting.MinVoltage), Unit::Millivolt},
        {"maximum_voltage", "Maximum voltage", voltage(setting.MaxVoltage), Unit::Millivolt},
    };
    return section;
}

int RunGet(GlobalOptions const& options) {
    Session const session(options);
    session.RequireReady();
    PrintReadings(session, options, {GpuClockSection(session), MemoryClockSection(session)},
                  "its clock settings (sensors may show the clocks)");
    return exitSuccess;
}

int Finish(Session const& session, GlobalOptions const& options, std::string command, std::string sentence) {
    PrintChange(options, std::move(command), std::move(sentence),
                {GpuClockSection(session), MemoryClockSection(session)});
    return exitSuccess;
}

std::string Describe(ClockRequest const& request, bool offsets) {
    std::string text;
    auto const add = [&text](char const* what, std::optional<int> const& value, Unit unit, bool always) {
        if (value && (*value != 0 || always)) {
            text += text.empty() ? "" : ", ";
            text += std::string(what) + " " + FormatValue(std::int64_t{*value}, unit);
        }
    };
    add(offsets ? "GPU clock offset" : "GPU clock", request.gpuClock, Unit::Megahertz, offsets);
    add("GPU voltage", request.gpuVoltage, Unit::Millivolt, false);
    add(offsets ? "memory clock offset" : "memory clock", request.memClock, Unit::Megahertz, offsets);
    add("memory voltage", request.memVoltage, Unit::Millivolt, false);
    return text;
}

int RunSet(GlobalOptions const& options, ClockRequest const& request) {
    Session const session(options);
    RequireTunable(session);
    Library const& api = session.Api();
    ClockCommand const command =
        PlanClocks(session.ApiType(), request, api.GetGpuClockSetting(), api.GetMemClockSetting());
    std::string const text = Describe(request, session.ApiType() == GPUTUNE_API_IGCL);
    ConfirmChange(session, options, "Set " + text);
    bool const done =
        api.SetPerformanceUser(command.gpuClock, command.gpuVoltage, command.memClock, command.memVoltage);
    if (!done && command.inEffect) {
        return Finish(session, options, "clocks set", "In effect already: " + text + ".");
    }
    RequireDone(session, done, "these clocks");
    return Finish(session, options, "clocks set", "Set " + text + ".");
}

int RunDefault(GlobalOptions const& options) {
    Session const session(options);
    RequireTunable(session);
    if (session.ApiType() == GPUTUNE_API_IGCL) {
        throw UnsupportedError("Intel boards take offsets. clocks set --gpu 0 --mem 0 sets the default clocks.");
    }
    ConfirmChange(session, options, "Restore the default clocks, voltages and power limit");
    RequireDone(session, session.Api().SetPerformanceDefault(), "the default clocks");
    Finish(session, options, "clocks default", "Default clocks and voltages restored, and the power limit with them.");
    RequirePowerLimit(session, session.Api().GetPowerLimitSetting().Default);
    return exitSuccess;
}

}  // namespace

Section GpuClockSection(Session const& session) {
    return ClockSection("gpu_clock", "GPU clock", session.Api().GetGpuClockSetting());
}

Section MemoryClockSection(Session const& session) {
    return ClockSection("memory_clock", "Memory clock", session.Api().GetMemClockSetting());
}

void AddClocksCommands(CLI::App& app, Context& context) {
    CLI::App* clocks = app.add_subcommand("clocks", "Show and set clocks and voltages");
    clocks->require_subcommand(1);
    clocks->footer(
        "Examples:\n"
        "  gputunectl clocks get\n"
        "  gputunectl clocks set --gpu 1500 --mem 1000\n"
        "  gputunectl clocks default");

    CLI::App* get = clocks->add_subcommand("get", "Show clocks, voltages and their ranges");
    get->footer("Example:\n  gputunectl clocks get");
    get->callback([&context] { context.run = [&context] { return RunGet(context.options); }; });

    CLI::App* set = clocks->add_subcommand("set", "Set clocks and voltages; what is not given stays as it is");
    auto const request = std::make_shared<ClockRequest>();
    set->add_option("--gpu", request->gpuClock, "GPU clock in MHz, 0 keeps it; Intel: offset in MHz")
        ->transform(DecimalNumber())
        ->type_name("MHZ");
    set->add_option("--gpu-voltage", request->gpuVoltage, "GPU voltage in mV, 0 keeps it; AMD OverdriveN only")
        ->transform(DecimalNumber())
        ->type_name("MV");
    set->add_option("--mem", request->memClock, "Memory clock in MHz, 0 keeps it; Intel: offset in MHz")
        ->transform(DecimalNumber())
        ->type_name("MHZ");
    set->add_option("--mem-voltage", request->memVoltage, "Memory voltage in mV, 0 keeps it; AMD OverdriveN only")
        ->transform(DecimalNumber())
        ->type_name("MV");
    set->footer(
        "Intel boards take offsets from the default clocks, --gpu and --mem together.\n"
        "Examples:\n"
        "  gputunectl clocks set --gpu 1500\n"
        "  gputunectl clocks set --gpu 1500 --gpu-voltage 1100 --mem 1000\n"
        "  gputunectl clocks set --gpu 50 --mem 0");
    set->callback(
        [&context, request] { context.run = [&context, request] { return RunSet(context.options, *request); }; });

    CLI::App* restore = clocks->add_subcommand("default", "Restore the default clocks, voltages and power limit");
    restore->footer("Example:\n  gputunectl clocks default");
    restore->callback([&context] { context.run = [&context] { return RunDefault(context.options); }; });
}

}  // namespace gputune::tool
