// help: prints what --help prints.
#include "tool/commands/Commands.h"
#include "tool/system/Console.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

void AddHelpCommand(CLI::App& app, Context& context) {
    CLI::App* command = app.add_subcommand("help", "Show the help of a command, as --help after it does");
    auto const words = std::make_shared<std::vector<std::string>>();
    command->add_option("command", *words, "The command; default: all of them")->type_name("COMMAND");
    command->footer(
        "Examples:\n"
        "  gputunectl help\n"
        "  gputunectl help fan curve");
    command->callback([&app, &context, words] {
        context.run = [&app, words] {
            CLI::App* place = &app;
            std::string path = app.get_name();
            for (std::string const& word : *words) {
                std::vector<CLI::App*> const next = place->get_subcommands(
                    [&word](CLI::App const* candidate) { return candidate->get_name() == word; });
                if (next.empty()) {
                    throw UsageError("There is no command " + word + ". Run with --help for more information.");
                }
                place = next.front();
                path += " " + word;
            }
            // CLI11's own function would print the help of the command that was chosen, which is this one.
            WriteOutput(place->get_formatter()->make_help(place, path, CLI::AppFormatMode::Normal));
            return kExitSuccess;
        };
    });
}

}  // namespace gputune::tool
