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
void AddHoldCommands(CLI::App& app, Context& context);  // hold, and the worker process that it starts
void AddRestoreCommand(CLI::App& app, Context& context);
void AddServeCommand(CLI::App& app, Context& context);
void AddCompletionCommand(CLI::App& app, Context& context);
void AddHelpCommand(CLI::App& app, Context& context);
void AddProfileCheckCommand(CLI::App& profile, Context& context);  // one of the profile commands

// ---- What the commands share ----

struct CommandTexts {
    char const* name;
    char const* description;  // one line
    char const* footer;       // stands below the help: examples, and what else there is to say
};

// Adds a command. When the command line names it, main will run this function, with the arguments that were parsed by
// then.
template <class... Parameters, class... Arguments>
CLI::App* AddCommand(CLI::App& parent, Context& context, CommandTexts const& texts,
                     int (*run)(GlobalOptions const&, Parameters...), std::shared_ptr<Arguments>... arguments) {
    CLI::App* const command = parent.add_subcommand(texts.name, texts.description);
    command->footer(texts.footer);
    command->callback([&context, run, arguments...] {
        context.run = [&context, run, arguments...] { return run(context.options, *arguments...); };
    });
    return command;
}

// A transform for options that are whole numbers: decimal, even with leading zeros. CLI11 itself reads 050 as 40.
CLI::Validator DecimalNumber();

// Prints text, or JSON with --json, on standard output.
void Print(GlobalOptions const& options, Result const& result);
// Prints the result of a "get" command. Afterwards throws ToolError when no section is available, or UnsupportedError
// when the library cannot read `what` ("its fan") on any board of this vendor.
void PrintReadings(Session const& session, GlobalOptions const& options, std::vector<Section> sections,
                   std::string const& what);

}  // namespace gputune::tool
