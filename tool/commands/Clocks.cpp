// clocks get, clocks set, clocks default.
#include "tool/board/Checks.h"
#include "tool/commands/Change.h"
#include "tool/commands/Commands.h"
#include "tool/values/Errors.h"
#include "tool/values/FanCurve.h"
#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

// OverdriveN boards with fewer memory levels than engine levels report 0, which is no clock of a running board.
Value CurrentClock(ClockSetting const& setting) {
    return setting.CurrentClock == 0 ? Value() : IntValue(setting.CurrentClock);
}

Section ClockSection(char const* key, char const* title, ClockSetting const& setting) {
    // A board without an adjustable voltage reports a range of 0 to 0.
    bool const hasVoltage = setting.MinVoltage != 0 || setting.MaxVoltage != 0;
    auto const voltage = [hasVoltage](int value) { return hasVoltage ? IntValue(value) : Value(); };
    return {
        .key = key,
        .title = title,
        .available = setting.Valid,
        .fields =
            {
                {"current_clock", "Current clock", CurrentClock(setting), Unit::Megahertz},
                {"default_clock", "Default clock", IntValue(setting.DefaultClock), Unit::Megahertz},
                {"minimum_clock", "Minimum clock", IntValue(setting.MinClock), Unit::Megahertz},
                {"maximum_clock", "Maximum clock", IntValue(setting.MaxClock), Unit::Megahertz},
                {"current_voltage", "Current voltage", voltage(setting.CurrentVoltage), Unit::Millivolt},
                {"default_voltage", "Default voltage", voltage(setting.DefaultVoltage), Unit::Millivolt},
                {"minimum_voltage", "Minimum voltage", voltage(setting.MinVoltage), Unit::Millivolt},
                {"maximum_voltage", "Maximum voltage", voltage(setting.MaxVoltage), Unit::Millivolt},
            },
    };
}

int RunClocksGet(GlobalOptions const& options) {
    Session const session(options);
    session.RequireReady();
    PrintReadings(session, options, {GpuClockSection(session), MemoryClockSection(session)},
                  "its clock settings (sensors may show the clocks)");
    return kExitSuccess;
}

void CompareVoltage(char const* what, int millivolts, ClockSetting const& setting, ReadBack& readBack) {
    bool const isTold = setting.Valid && IsKnown(setting.CurrentVoltage);
    readBack.Compare(what, millivolts, isTold ? std::optional<double>(setting.CurrentVoltage) : std::nullopt,
                     Unit::Millivolt, kClockTolerance);
}

// Compares what was asked for with what an AMD board shows.
ReadBack CompareRequest(Library const& api, ClockRequest const& request) {
    ReadBack readBack;
    ClockSetting const gpu = api.GetGpuClockSetting();
    ClockSetting const memory = api.GetMemClockSetting();
    auto const compare = [&readBack](auto function, char const* what, std::optional<int> asked,
                                     ClockSetting const& setting) {
        if (asked.value_or(0) != 0) {
            function(what, *asked, setting, readBack);
        }
    };
    compare(CompareClock, "GPU clock", request.gpuClock, gpu);
    compare(CompareVoltage, "GPU voltage", request.gpuVoltage, gpu);
    compare(CompareClock, "memory clock", request.memClock, memory);
    compare(CompareVoltage, "memory voltage", request.memVoltage, memory);
    return readBack;
}

// The Intel backend's functions do not return the offsets, but the library logs what it read back.
ReadBack CompareOffsets(LogEntries const& entries, ClockCommand const& command) {
    auto const logged = [&entries](char const* tagEnd) {
        std::optional<std::string> const text = LastMessage(entries, tagEnd);
        return text ? LeadingNumber(*text) : std::nullopt;
    };
    ReadBack readBack;
    readBack.Compare("GPU clock offset", command.gpuClock, logged("(verify) new current gpu frequency offset"),
                     Unit::Megahertz, kClockTolerance);
    readBack.Compare("memory clock offset", command.memClock, logged("(verify) new current vram frequency offset"),
                     Unit::Megahertz, kClockTolerance);
    return readBack;
}

std::string DescribeClocks(ClockRequest const& request, bool offsets) {
    std::vector<std::string> texts;
    auto const add = [&texts](std::string const& what, std::optional<int> const& value, Unit unit, bool takesZero) {
        if (value && (*value != 0 || takesZero)) {
            texts.push_back(what + " " + WithUnit(*value, unit));
        }
    };
    char const* const clock = offsets ? " clock offset" : " clock";
    add(std::string("GPU") + clock, request.gpuClock, Unit::Megahertz, offsets);
    add("GPU voltage", request.gpuVoltage, Unit::Millivolt, false);
    add(std::string("memory") + clock, request.memClock, Unit::Megahertz, offsets);
    add("memory voltage", request.memVoltage, Unit::Millivolt, false);
    return Joined(texts, ", ");
}

int RunClocksSet(GlobalOptions const& options, ClockRequest const& request) {
    Session const session(options);
    RequireTunable(session);
    Library const& api = session.Api();
    ClockCommand const command =
        PlanClocks(session.ApiType(), request, api.GetGpuClockSetting(), api.GetMemClockSetting());
    std::string const text = DescribeClocks(request, session.ApiType() == GPUTUNE_API_IGCL);
    ConfirmChange(session, options, "Set " + text);
    std::size_t const mark = session.LogMark();
    bool const done =
        api.SetPerformanceUser(command.gpuClock, command.gpuVoltage, command.memClock, command.memVoltage);
    bool const wasInEffect = !done && command.inEffect;
    RequireDone(session, done || wasInEffect, "these clocks");
    return FinishChange(
        session, options,
        {.command = "clocks set",
         .what = text,
         .sentence = (wasInEffect ? "In effect already: " : "Set ") + text + ".",
         .readBack = session.ApiType() == GPUTUNE_API_IGCL ? CompareOffsets(session.LogSince(mark), command)
                                                           : CompareRequest(api, request),
         .sections = {GpuClockSection(session), MemoryClockSection(session)}});
}

int RunClocksDefault(GlobalOptions const& options) {
    Session const session(options);
    RequireTunable(session);
    if (session.ApiType() == GPUTUNE_API_IGCL) {
        throw UnsupportedError("Intel boards take offsets. clocks set --gpu 0 --mem 0 sets the default clocks.");
    }
    ConfirmChange(session, options, "Restore the default clocks, voltages and power limit");
    RequireDone(session, session.Api().SetPerformanceDefault(), "the default clocks");
    return FinishChange(session, options,
                        {.command = "clocks default",
                         .what = "the default clocks, voltages and power limit",
                         .sentence = "Default clocks and voltages restored, and the power limit with them.",
                         .readBack = CompareDefaults(session),
                         .sections = {GpuClockSection(session), MemoryClockSection(session)}});
}

}  // namespace

void CompareClock(char const* what, double megahertz, ClockSetting const& setting, ReadBack& readBack) {
    // 0 as in CurrentClock.
    bool const isTold = setting.Valid && setting.CurrentClock > 0;
    readBack.Compare(what, megahertz, isTold ? std::optional<double>(setting.CurrentClock) : std::nullopt,
                     Unit::Megahertz, kClockTolerance);
}

ReadBack CompareDefaults(Session const& session) {
    Library const& api = session.Api();
    ReadBack readBack;
    if (ClockSetting const gpu = api.GetGpuClockSetting(); gpu.Valid) {
        CompareClock("GPU clock", gpu.DefaultClock, gpu, readBack);
    }
    ClockSetting const memory = api.GetMemClockSetting();
    if (memory.Valid && session.ApiType() == GPUTUNE_API_OVERDRIVEN) {
        // The board reports the memory level with the number of the highest engine level. That need not be the level of
        // the default clock.
        readBack.AddUnreported("memory clock");
    } else if (memory.Valid) {
        CompareClock("memory clock", memory.DefaultClock, memory, readBack);
    }
    ComparePowerLimit(session, api.GetPowerLimitSetting().Default, readBack);
    return readBack;
}

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

    AddCommand(*clocks, context, {"get", "Show clocks, voltages and their ranges", "Example:\n  gputunectl clocks get"},
               RunClocksGet);

    auto const request = std::make_shared<ClockRequest>();
    CLI::App* set = AddCommand(*clocks, context,
                               {"set", "Set clocks and voltages; what is not given stays as it is",
                                "Intel boards take offsets from the default clocks, --gpu and --mem together.\n"
                                "Examples:\n"
                                "  gputunectl clocks set --gpu 1500\n"
                                "  gputunectl clocks set --gpu 1500 --gpu-voltage 1100 --mem 1000\n"
                                "  gputunectl clocks set --gpu 50 --mem 0"},
                               RunClocksSet, request);
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

    AddCommand(
        *clocks, context,
        {"default", "Restore the default clocks, voltages and power limit", "Example:\n  gputunectl clocks default"},
        RunClocksDefault);
}

}  // namespace gputune::tool
