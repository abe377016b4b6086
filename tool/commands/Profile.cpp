// profile show, profile apply: the predefined profiles of Config\ConfigModel.xml beside the program.
#include <string_view>

#include "tool/board/PlannedClocks.h"
#include "tool/commands/Change.h"
#include "tool/commands/Commands.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

// "0x12345678" or "12345678", always hexadecimal.
std::uint32_t ParseId(std::string_view text) {
    std::string_view digits = text;
    if (digits.starts_with("0x") || digits.starts_with("0X")) {
        digits.remove_prefix(2);
    }
    std::optional<std::uint32_t> const id = ParseNumber<std::uint32_t>(digits, 16);
    if (!id) {
        throw UsageError("\"" + std::string(text) + "\" is no identifier: write up to eight hexadecimal digits.");
    }
    return *id;
}

// A float as it stands in the file: 1.05, not 1.0499999523162842.
Value Factor(float value) {
    return FewestDigits(double{value});
}

// 0 means that the entry has no such value, which is always so in a default entry.
Value NotZero(int value) {
    return value == 0 ? Value{} : Value{std::int64_t{value}};
}

// 0 means that the entry gives no clock, only the factor.
Field GivenClock(char const* key, char const* label, float value, bool json) {
    if (value == 0.0F) {
        return {key, label, json ? Value{} : Value{std::string("none")}, json ? Unit::Megahertz : Unit::None};
    }
    return {key, label, Factor(value), Unit::Megahertz};
}

// Which entry of the file was read. Only the library's log tells.
Value EntryUsed(LogEntries const& entries, std::uint32_t id, bool json) {
    std::optional<std::string> const used = LastMessage(entries, " config used");
    if (used == "ext. default") {
        return json ? std::string("default") : "the default one: the file has none for " + HexId(id);
    }
    return used ? Value{json ? std::string("board") : "the board's own"} : Value{};
}

// Compares with the clocks that the library computed from the profile. It logs them before it sends them.
void ComparePlan(Session const& session, LogEntries const& entries, ReadBack& readBack) {
    Library const& api = session.Api();
    auto const [gpuClock, memoryClock] = ReadPlannedClocks(entries);
    if (ClockSetting const gpu = api.GetGpuClockSetting(); gpu.Valid && gpuClock) {
        CompareClock("GPU clock", *gpuClock, gpu, readBack);
    }
    if (ClockSetting const memory = api.GetMemClockSetting(); memory.Valid && memoryClock) {
        CompareClock("memory clock", *memoryClock, memory, readBack);
    }
}

// Compares the board's state with what the profile sets.
ReadBack CompareProfile(Session const& session, std::string const& name, LogEntries const& entries) {
    if (name == "default") {
        return CompareDefaults(session);
    }
    ReadBack readBack;
    ComparePlan(session, entries, readBack);
    PredefinedPerformanceParameter const profile =
        session.Api().GetExternalPerformanceParameter(session.Identity().subsystemId);
    ComparePowerLimit(session, static_cast<double>(name == "oc" ? profile.PowerOC : profile.PowerSilent), readBack);
    return readBack;
}

int RunShow(GlobalOptions const& options, std::string const& hwid) {
    std::optional<std::uint32_t> id;
    if (!hwid.empty()) {
        id = ParseId(hwid);
    }
    Session const session(options);
    // With an identifier given, an opened board is not needed, only a backend.
    if (!id || session.State() != InitState::AdapterNotOpened) {
        session.RequireReady();
    }
    if (!id) {
        id = session.Identity().subsystemId;
        if (*id == 0) {
            throw ToolError("This board does not tell its identifier: give one, for example profile show 0x12345678.");
        }
    }
    std::size_t const mark = session.LogMark();
    PredefinedPerformanceParameter const profile = session.Api().GetExternalPerformanceParameter(*id);
    if (!profile.Valid) {
        throw ToolError(
            "No profile for " + HexId(*id) +
            ": Config\\ConfigModel.xml beside gputunectl.exe is missing or malformed, or holds neither this "
            "identifier nor a default entry." +
            session.LogHint());
    }
    Result result;
    result.Add({.fields = {{"identifier", "Identifier", HexId(*id)},
                           {"entry", "Entry", EntryUsed(session.LogSince(mark), *id, options.json)},
                           {"board_power", "Board power", NotZero(profile.Watt), Unit::Watt},
                           {"newest_vbios", "Newest video BIOS", NotZero(profile.NewestVBIOS)}}});
    result.Add({.key = "oc",
                .title = "Overclock profile",
                .fields = {{"gpu_clock_factor", "GPU clock factor", Factor(profile.GpuOC)},
                           GivenClock("gpu_clock", "GPU clock given", profile.GpuOCGivenValue, options.json),
                           {"memory_clock_factor", "Memory clock factor", Factor(profile.MemOC)},
                           GivenClock("memory_clock", "Memory clock given", profile.MemOCGivenValue, options.json),
                           {"power_limit", "Power limit", Factor(profile.PowerOC), Unit::Percent}}});
    result.Add({.key = "silent",
                .title = "Silent profile",
                .fields = {{"gpu_clock_factor", "GPU clock factor", Factor(profile.GpuSilent)},
                           {"memory_clock_factor", "Memory clock factor", Factor(profile.MemSilent)},
                           {"power_limit", "Power limit", Factor(profile.PowerSilent), Unit::Percent}}});
    Print(options, result);
    return kExitSuccess;
}

int RunApply(GlobalOptions const& options, std::string const& name) {
    Session const session(options);
    RequireTunable(session);
    if (session.ApiType() == GPUTUNE_API_IGCL) {
        throw UnsupportedError("profiles cannot be applied to Intel boards.");
    }
    if (session.IdentityIsOfAnother()) {
        throw UnsupportedError(
            "the identity of this adapter is not known, and the library would apply the profile of "
            "adapter " +
            std::to_string(session.FirstAdapter()) + ". clocks and power set its clocks and power limit.");
    }
    std::string const what = name == "oc" ? "overclock" : name;
    ConfirmChange(session, options, "Apply the " + what + " profile");
    Library const& api = session.Api();
    std::size_t const mark = session.LogMark();
    bool const done = name == "oc"       ? api.SetPerformanceOC()
                      : name == "silent" ? api.SetPerformanceSilent()
                                         : api.SetPerformanceDefault();
    if (!done && name != "default") {
        // The library sets the power limit first, so it may have changed although the clocks were refused.
        throw ToolError(
            "The " + what +
                " profile was not applied as a whole: there is none for this board (see profile show), its "
                "identifier cannot be read, the driver refused it, or its clocks are in effect already. The "
                "power limit may have changed." +
                session.LogHint(),
            {.code = "refused"});
    }
    RequireDone(session, done, "the " + what + " profile");
    return FinishChange(session, options,
                        {.command = "profile apply",
                         .what = "the " + what + " profile",
                         .sentence = "Applied the " + what + " profile.",
                         .readBack = CompareProfile(session, name, session.LogSince(mark)),
                         .sections = {GpuClockSection(session), MemoryClockSection(session), PowerSection(session)}});
}

void AddShow(CLI::App& profile, Context& context) {
    auto const hwid = std::make_shared<std::string>();
    CLI::App* show = AddCommand(profile, context,
                                {"show", "Show the predefined profiles of a board",
                                 "Examples:\n"
                                 "  gputunectl profile show\n"
                                 "  gputunectl profile show 0x12345678"},
                                RunShow, hwid);
    show->add_option("hwid", *hwid, "The board's identifier, hexadecimal; default: this board's own")
        ->type_name("HWID");
}

void AddApply(CLI::App& profile, Context& context) {
    auto const name = std::make_shared<std::string>();
    CLI::App* apply = AddCommand(profile, context,
                                 {"apply", "Apply a predefined profile; AMD boards only",
                                  "Examples:\n"
                                  "  gputunectl profile apply oc\n"
                                  "  gputunectl profile apply default"},
                                 RunApply, name);
    apply->add_option("name", *name, "oc, silent or default")
        ->required()
        ->check(CLI::IsMember({"oc", "silent", "default"}))
        ->type_name("oc|silent|default");
}

}  // namespace

void AddProfileCommands(CLI::App& app, Context& context) {
    CLI::App* profile = app.add_subcommand("profile", "Show, apply and check the predefined profiles");
    profile->require_subcommand(1);
    profile->footer(
        "Examples:\n"
        "  gputunectl profile show\n"
        "  gputunectl profile apply silent");
    AddShow(*profile, context);
    AddApply(*profile, context);
    AddProfileCheckCommand(*profile, context);
}

}  // namespace gputune::tool
