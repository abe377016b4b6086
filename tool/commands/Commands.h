// The commands. Each function adds one group to the command line; what the user chose is left in Context::run, which
// main calls when the whole command line has been understood.
#pragma once

#include <CLI/App.hpp>
#include <CLI/Validators.hpp>
#include <functional>
#include <memory>
#include <string>
#include <vector>

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
void AddProfileCheckCommand(CLI::App& profile, Context& context);  // one of the profile commands

// ---- What the commands share ----

// When the command line names this command, main is to run this function, with the arguments as they are then.
template <class... Parameters, class... Arguments>
void RunWhenChosen(CLI::App* command, Context& context, int (*run)(GlobalOptions const&, Parameters...),
                   std::shared_ptr<Arguments>... arguments) {
    command->callback([&context, run, arguments...] {
        context.run = [&context, run, arguments...] { return run(context.options, *arguments...); };
    });
}

// For options that are whole numbers (as a transform): decimal, leading zeros or not. The command-line library by
// itself reads 050 as 40.
CLI::Validator DecimalNumber();

// Text or JSON on standard output, as --json says.
void Print(GlobalOptions const& options, Result const& result);
// The result of a "get" command. After printing, throws ToolError when no section is available, and UnsupportedError
// when this library cannot read `what` ("its fan") on any such board.
void PrintReadings(Session const& session, GlobalOptions const& options, std::vector<Section> sections,
                   std::string const& what);

}  // namespace gputune::tool
