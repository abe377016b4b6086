// completion: prints a script for the completion of commands in a shell, made from the description of all commands.
#include <algorithm>
#include <map>

#include "tool/commands/Commands.h"
#include "tool/system/Console.h"
#include "tool/values/Errors.h"
#include "tool/values/Text.h"

namespace gputune::embedded {

extern std::string_view const kCompletionBash;
extern std::string_view const kCompletionPowerShell;

}  // namespace gputune::embedded

namespace gputune::tool {

namespace {

// A word that can stand at some place of the command line, and what it means.
struct Candidate {
    std::string word;
    std::string meaning;  // one line
};

// The value of an option.
struct OptionValue {
    bool isFile = false;
    std::vector<std::string> choices{};
};

// The whole command line. Places are named by the commands that lead there: "", "/fan", "/fan/set".
struct CommandLine {
    std::map<std::string, std::vector<Candidate>> candidates;
    std::vector<Candidate> everywhere;          // the options of the outermost place
    std::vector<std::string> filePlaces;        // where a file name can stand
    std::map<std::string, OptionValue> values;  // by place, blank, option
};

// The values of an option whose type is "MODE:{none,file}".
std::vector<std::string> Choices(CLI::Option const& option) {
    std::string const type = option.get_type_name();
    std::size_t const start = type.find('{');
    std::size_t const end = type.find('}', start);
    std::vector<std::string> choices;
    if (end != std::string::npos) {
        choices = CLI::detail::split(type.substr(start + 1, end - start - 1), ',');
    }
    return choices;
}

bool IsFile(CLI::Option const& option) {
    return option.get_type_name() == "FILE" || option.get_type_name() == "BOARD";
}

std::vector<std::string> Names(CLI::Option const& option) {
    std::vector<std::string> names;
    for (std::string const& name : option.get_snames()) {
        names.push_back("-" + name);
    }
    for (std::string const& name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    return names;
}

bool IsEverywhere(CommandLine const& line, std::string const& word) {
    return std::any_of(line.everywhere.begin(), line.everywhere.end(),
                       [&word](Candidate const& candidate) { return candidate.word == word; });
}

// The key of CommandLine::values.
std::string ValueKey(std::string const& place, std::string const& option) {
    return place + " " + option;
}

void DescribeOption(CLI::Option const& option, std::string const& place, CommandLine& line) {
    std::vector<Candidate>& candidates = place.empty() ? line.everywhere : line.candidates[place];
    for (std::string const& name : Names(option)) {
        // Every command has its own --help.
        if (!place.empty() && IsEverywhere(line, name)) {
            continue;
        }
        candidates.push_back({name, option.get_description()});
        if (option.get_items_expected_max() > 0) {
            line.values[ValueKey(place, name)] = {IsFile(option), Choices(option)};
        }
    }
    if (option.get_positional() && IsFile(option)) {
        line.filePlaces.push_back(place);
    }
    if (option.get_positional()) {
        for (std::string const& choice : Choices(option)) {
            candidates.push_back({choice, option.get_description()});
        }
    }
}

void Describe(CLI::App const& app, std::string const& place, CommandLine& line) {
    line.candidates[place];
    for (CLI::Option const* option : app.get_options()) {
        DescribeOption(*option, place, line);
    }
    // Those without a group are not for users.
    for (CLI::App const* command :
         app.get_subcommands([](CLI::App const* candidate) { return !candidate->get_group().empty(); })) {
        line.candidates[place].push_back({command->get_name(), command->get_description()});
        Describe(*command, place + "/" + command->get_name(), line);
    }
}

// ---- bash ----

std::string Words(std::vector<Candidate> const& candidates) {
    std::vector<std::string> words;
    words.reserve(candidates.size());
    for (Candidate const& candidate : candidates) {
        words.push_back(candidate.word);
    }
    return Joined(words, " ");
}

// A pattern for the shell's case statement. Options of the outermost place can stand at every place.
std::string BashPattern(std::string const& key) {
    return (key.starts_with(' ') ? "*'" : "'") + key + "'";
}

// The shell command that completes the value.
std::string BashValue(OptionValue const& value) {
    if (value.isFile) {
        return "return";
    }
    return value.choices.empty() ? "compopt +o default 2>/dev/null; return"
                                 : "candidates='" + Joined(value.choices, " ") + "'";
}

std::string BashScript(CommandLine const& line) {
    std::vector<std::string> withValue;
    std::vector<std::string> values;
    for (auto const& [key, value] : line.values) {
        withValue.push_back(BashPattern(key));
        values.push_back("        " + BashPattern(key) + ") " + BashValue(value) + " ;;");
    }
    std::vector<std::string> places;
    std::vector<std::string> candidates;
    for (auto const& [place, words] : line.candidates) {
        places.push_back(place);
        candidates.push_back("                '" + place + "') candidates='" + Words(words) + "' ;;");
    }
    return FillPlaceholders(embedded::kCompletionBash, {{"with-value", Joined(withValue, " | ")},
                                                        {"values", Joined(values, "\n")},
                                                        {"places", Joined(places, " | ")},
                                                        {"candidates", Joined(candidates, "\n")},
                                                        {"file-places", Joined(line.filePlaces, " | ")},
                                                        {"everywhere", Words(line.everywhere)}});
}

// ---- PowerShell ----

std::string PowerShellText(std::string const& text) {
    std::string quoted = "'";
    for (char const c : text) {
        quoted += c;
        quoted += c == '\'' ? "'" : "";
    }
    return quoted + "'";
}

// A line for each word and its meaning.
std::string PowerShellPairs(std::vector<Candidate> const& candidates, std::string const& indentation) {
    std::vector<std::string> lines;
    lines.reserve(candidates.size());
    for (Candidate const& candidate : candidates) {
        lines.push_back(indentation + ", @(" + PowerShellText(candidate.word) + ", " +
                        PowerShellText(candidate.meaning) + ")");
    }
    return Joined(lines, "\n");
}

// An entry of a table: a key and its list.
std::string PowerShellList(std::string const& key, std::string const& items) {
    return "        " + PowerShellText(key) + " = @(" + items + ")";
}

std::string PowerShellScript(CommandLine const& line) {
    std::vector<std::string> candidates;
    for (auto const& [place, words] : line.candidates) {
        std::string const pairs = PowerShellPairs(words, "            ");
        candidates.push_back(PowerShellList(place, "\n" + pairs + (words.empty() ? "" : "\n") + "        "));
    }
    std::vector<std::string> values;
    for (auto const& [key, value] : line.values) {
        std::vector<std::string> choices;
        std::transform(value.choices.begin(), value.choices.end(), std::back_inserter(choices), PowerShellText);
        values.push_back(PowerShellList(key, Joined(choices, ", ")));
    }
    return FillPlaceholders(embedded::kCompletionPowerShell,
                            {{"candidates", Joined(candidates, "\n")},
                             {"everywhere", PowerShellPairs(line.everywhere, "        ")},
                             {"values", Joined(values, "\n")}});
}

}  // namespace

void AddCompletionCommand(CLI::App& app, Context& context) {
    CLI::App* command = app.add_subcommand("completion", "Print a script that lets a shell complete command lines");
    auto const shell = std::make_shared<std::string>();
    command->add_option("shell", *shell, "The shell to print the script for")
        ->required()
        ->check(CLI::IsMember({"powershell", "bash"}))
        ->type_name("SHELL");
    command->footer(
        "Examples:\n"
        "  gputunectl completion powershell | Out-String | Invoke-Expression\n"
        "  source <(gputunectl completion bash)");
    command->callback([&app, &context, shell] {
        context.run = [&app, shell] {
            CommandLine line;
            Describe(app, "", line);
            WriteOutput(*shell == "bash" ? BashScript(line) : PowerShellScript(line));
            return kExitSuccess;
        };
    });
}

}  // namespace gputune::tool
