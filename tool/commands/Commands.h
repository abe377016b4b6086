// The commands. Each function adds one group to the command line; what the user chose is left in Context::run, which
// main calls when the whole command line has been understood.
#pragma once

#include <CLI/App.hpp>
#include <CLI/Validators.hpp>
#include <functional>
#include <string>
#include <vector>

#include "tool/board/ReadBack.h"
#include "tool/board/Session.h"
#include "tool/output/Result.h"

namespace gputune::tool {

struct Context {
    GlobalOptions options;
    std::function<int()> run;  // returns the exit code; may throw ToolError
};

void AddInfoCommand(CLI::App& app, Context& context);
void AddAdaptersCommand(CLI::App& app, Context& context);
void AddSensorsCommand(CLI::App& app, Context& context);
void AddMonitorCommand(CLI::App& app, Context& context);
void AddRecordCommand(CLI::App& app, Context& context);
void AddReportCommand(CLI::App& app, Context& context);
void AddFanCommands(CLI::App& app, Context& context);
void AddPowerCommands(CLI::App& app, Context& context);
void AddClocksCommands(CLI::App& app, Context& context);
void AddFpsCommand(CLI::App& app, Context& context);
void AddProfileCommands(CLI::App& app, Context& context);
void AddCompletionCommand(CLI::App& app, Context& context);
void AddHelpCommand(CLI::App& app, Context& context);
void AddProfileCheckCommand(CLI::App& profile, Context& context);  // one of the former's

// ---- What the commands share ----

// For options that are whole numbers (as a transform): decimal, leading zeros or not. The command-line library by
// itself reads 050 as 40.
CLI::Validator DecimalNumber();

// An identifier as it is shown: "0x12345678".
std::string HexId(std::uint32_t id);

// Text or JSON on standard output, as --json says.
void Print(GlobalOptions const& options, Report const& report);
// The result of a "get" command. After printing, throws ToolError when no section is available, and UnsupportedError
// when this library cannot read `what` ("its fan") on any such board.
void PrintReadings(Session const& session, GlobalOptions const& options, std::vector<Section> sections,
                   std::string const& what);

// A change that the driver took, as far as the library's function tells.
struct Change {
    std::string command;   // as typed, for JSON: "fan set"
    std::string what;      // what was sent: "fan speed 60 %"
    std::string sentence;  // when it is done: "Fan speed set to 60 %."
    ReadBack readBack;
    std::vector<Section> sections{};  // the new state
};

// Prints the result: the sentence, or that the board does not tell, and the new state as far as it can be read back.
// Returns the exit code; throws ToolError after printing when the board shows something else.
int FinishChange(Session const& session, GlobalOptions const& options, Change change);

// For commands that change the board. Throws ToolError when the board was not opened, UnsupportedError when it is one
// that this library only monitors.
void RequireTunable(Session const& session);
// Asks whether `change` ("Set the fan speed to 60 %") is to be done, when someone is there to ask and --yes was not
// given. Throws ToolError when the answer is no.
void ConfirmChange(Session const& session, GlobalOptions const& options, std::string const& change);
// Throws ToolError with a hint at the log when `done` is false. `what` names the change: "the fan speed".
void RequireDone(Session const& session, bool done, std::string const& what);

// The state a group of commands shows, also after a change. `available` is false when nothing can be read.
Section FanSection(Session const& session);
Section PowerSection(Session const& session);

// The limit in effect beside `percent`, cut to the board's range. Nothing is compared on boards that have none.
void ComparePowerLimit(Session const& session, double percent, ReadBack& readBack);
// All that a return to the defaults sets, beside the defaults that the board tells.
ReadBack CompareDefaults(Session const& session);
// The clock in effect beside `megahertz`.
void CompareClock(char const* what, double megahertz, ClockSetting const& setting, ReadBack& readBack);
Section GpuClockSection(Session const& session);
Section MemoryClockSection(Session const& session);

}  // namespace gputune::tool
