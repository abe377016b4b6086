// gputunectl: read and tune the installed graphics board from the command line.
#include <windows.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <sstream>

#include "tool/commands/Commands.h"
#include "tool/output/ErrorJson.h"
#include "tool/system/Console.h"
#include "tool/system/Utf8.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

// Afterwards DLLs are loaded from the system directory only, where the vendors' libraries are; not from the current
// directory, the program's directory or the path. The function is looked up because Windows 7 has it only with an
// update.
void RestrictLibrarySearch() {
    SetDllDirectoryW(L"");
    FARPROC const address = GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetDefaultDllDirectories");
    if (address != nullptr) {
        BOOL(WINAPI * setDefaultDllDirectories)(DWORD) = nullptr;
        std::memcpy(&setDefaultDllDirectories, &address, sizeof(address));
        setDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
    }
}

GputuneLogMode LogMode(std::string const& name) {
    if (name == "stdout") {
        return GPUTUNE_LOG_STDOUT;
    }
    if (name == "file") {
        return GPUTUNE_LOG_FILE;
    }
    return name == "both" ? GPUTUNE_LOG_BOTH : GPUTUNE_LOG_NONE;
}

void AddGlobalOptions(CLI::App& app, GlobalOptions& options) {
    CLI::Option* const simulate =
        app.add_option("--simulate", options.boardFile, "Work on a simulated board instead of this machine's")
            ->type_name("BOARD");
    app.add_option("--board-state", options.boardState,
                   "Keep the simulated board in this file, which other processes can share")
        ->needs(simulate)
        ->type_name("FILE");
    app.add_option_function<std::string>(
           "--log", [&options](std::string const& name) { options.log = LogMode(name); },
           "The library's log: none (default), stdout, file (debug.log in the current directory) or both")
        ->check(CLI::IsMember({"none", "stdout", "file", "both"}))
        ->type_name("MODE");
    app.add_option("--adapter", options.adapter, "Act on the adapter with this index (adapters lists them)")
        ->transform(DecimalNumber())
        ->type_name("N");
    app.add_flag("--json", options.json, "Print results as JSON");
    app.add_flag("--yes", options.yes, "Change the board without asking");
    app.set_version_flag("--version", "gputunectl " GPUTUNE_VERSION);
    app.set_help_flag("-h,--help", "Show this help");
}

// An empty value is usually a script's variable that was not set. --simulate "" would otherwise tune the real board.
void RefuseEmptyValues(CLI::App& app) {
    for (CLI::Option* option : app.get_options()) {
        if (option->get_items_expected_max() > 0) {
            option->check([](std::string const& text) { return std::string(text.empty() ? "an empty value" : ""); });
        }
    }
    for (CLI::App* command : app.get_subcommands([](CLI::App*) { return true; })) {
        RefuseEmptyValues(*command);
    }
}

// Two things that the command-line library does not do: /? is --help, and --option= is an error, not an option whose
// value is the next word.
void PrepareArguments(std::vector<std::string>& arguments) {
    for (std::string& argument : arguments) {
        if (argument == "/?") {
            argument = "--help";
        }
        if (argument.starts_with("--") && argument.find('=') == argument.size() - 1) {
            throw UsageError(argument + ": an empty value");
        }
    }
}

[[noreturn]] void Refuse(CLI::App const& app, CLI::ParseError const& error, std::string const& message) {
    std::vector<std::string> const unknown = app.remaining();
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError) && !unknown.empty()) {
        throw UsageError("There is no command " + unknown.front() + ". Run with --help for more information.");
    }
    std::string text = message;
    text.erase(text.find_last_not_of('\n') + 1);
    throw UsageError(text);
}

int Run(std::vector<std::string> arguments) {
    PrepareArguments(arguments);
    Context context;
    CLI::App app("Reads and tunes the installed graphics board, whoever made its GPU.", "gputunectl");
    app.allow_windows_style_options(false);  // paths may begin with '/'
    app.fallthrough();                       // global options may stand after the command
    app.require_subcommand(1);
    AddGlobalOptions(app, context.options);
    AddInfoCommand(app, context);
    AddAdaptersCommand(app, context);
    AddSensorsCommand(app, context);
    AddMonitorCommand(app, context);
    AddRecordCommand(app, context);
    AddReportCommand(app, context);
    AddFanCommands(app, context);
    AddPowerCommands(app, context);
    AddClocksCommands(app, context);
    AddFpsCommand(app, context);
    AddProfileCommands(app, context);
    AddHoldCommands(app, context);
    AddRestoreCommand(app, context);
    AddServeCommand(app, context);
    AddCompletionCommand(app, context);
    AddHelpCommand(app, context);
    RefuseEmptyValues(app);
    app.footer(
        "Exit codes: 0 success, 1 failure, 2 wrong command line, 3 not supported by this board.\n"
        "Examples:\n"
        "  gputunectl info\n"
        "  gputunectl sensors --all\n"
        "  gputunectl --simulate boards\\my-board.json monitor\n"
        "  gputunectl fan set --help");

    try {
        std::reverse(arguments.begin(), arguments.end());  // the order in which this parser wants them
        app.parse(std::move(arguments));
    } catch (CLI::ParseError const& error) {
        std::ostringstream output;
        std::ostringstream message;
        if (app.exit(error, output, message) != 0) {
            Refuse(app, error, message.str());
        }
        WriteOutput(output.str());
        return kExitSuccess;
    }
    if (context.options.json && context.options.LogsToOutput()) {
        throw UsageError("--json and a log on standard output would mix: use --log file.");
    }
    return context.run();
}

}  // namespace

// On standard error; returns the exit code.
int PrintError(ToolError const& error, bool json) {
    WriteError(json ? ErrorJson(error.Details(), error.what()) : std::string(error.what()) + "\n");
    return error.Details().exitCode;
}

}  // namespace gputune::tool

// Tells the C runtime not to replace wildcards in arguments.
int _dowildcard = 0;

int wmain(int count, wchar_t** values) {
    using namespace gputune::tool;
    RestrictLibrarySearch();
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(Utf8FromWide(values[i]));
    }
    // Looked for here, because it also applies to errors of the command line itself.
    bool const json = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
    try {
        return Run(std::move(arguments));
    } catch (ToolError const& error) {
        return PrintError(error, json);
    } catch (std::exception const& error) {
        return PrintError(ToolError(error.what()), json);
    }
}
