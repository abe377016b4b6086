// completion: scripts that let a shell complete the command line, made from the command line's own description.
#include <algorithm>
#include <map>

#include "tool/commands/Commands.h"
#include "tool/system/Console.h"
#include "tool/values/Errors.h"
#include "tool/values/Text.h"

namespace gputune::embedded {

extern std::string_view const completionBash;
extern std::string_view const completionPowerShell;

}  // namespace gputune::embedded

namespace gputune::tool {

namespace {

// A word that can stand somewhere, and what it means.
struct Candidate {
    std::string word;
    std::string meaning;  // one line
};

// What follows an option that takes a value.
struct OptionValue {
    bool isFile = false;
    std::vector<std::string> choices{};
};

// The whole command line. Places are named by the commands that lead there: "", "/fan", "/fan/set".
struct CommandLine {
    std::map<std::string, std::vector<Candidate>> candidates;
    std::vector<Candidate> everywhere;          // the options of the outermost place
    std::vector<std::string> filePlaces;        // where the name of a file can stand
    std::map<std::string, OptionValue> values;  // by place, blank, option
};

// "MODE:{none,file}" is the type of a value out of two.
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

// What an option of a place is known by, among the options that take a value.
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
    for (CLI::App const* command : app.get_subcommands([](CLI::App const*) { return true; })) {
        line.candidates[place].push_back({command->get_name(), command->get_description()});
        Describe(*command, place + "/" + command->get_name(), line);
    }
}

// ---- bash ----

std::string Join(std::string const& text, char const* separator, std::string const& more) {
    return text.empty() ? more : text + separator + more;
}

std::string Words(std::vector<Candidate> const& candidates) {
    std::string words;
    for (Candidate const& candidate : candidates) {
        words = Join(words, " ", candidate.word);
    }
    return words;
}

// A pattern of the shell's case: options of the outermost place follow every place.
std::string BashPattern(std::string const& key) {
    return (key.starts_with(' ') ? "*'" : "'") + key + "'";
}

// What is done for an option's value.
std::string BashValue(OptionValue const& value) {
    if (value.isFile) {
        return "return";
    }
    std::string words;
    for (std::string const& choice : value.choices) {
        words = Join(words, " ", choice);
    }
    return words.empty() ? "compopt +o default 2>/dev/null; return" : "candidates='" + words + "'";
}

// The words of a place.
std::string BashCandidates(std::string const& place, std::string const& words) {
    return "                '" + place + "') candidates='" + words + "' ;;";
}

std::string BashScript(CommandLine const& line) {
    std::string withValue;
    std::string values;
    for (auto const& [key, value] : line.values) {
        withValue = Join(withValue, " | ", BashPattern(key));
        values = Join(values, "\n", "        " + BashPattern(key) + ") " + BashValue(value) + " ;;");
    }
    std::string filePlaces;
    for (std::string const& place : line.filePlaces) {
        filePlaces = Join(filePlaces, " | ", place);
    }
    std::string places;
    std::string candidates;
    for (auto const& [place, words] : line.candidates) {
        places = place.empty() ? places : Join(places, " | ", place);
        candidates = Join(candidates, "\n", BashCandidates(place, Words(words)));
    }
    return FillPlaceholders(embedded::completionBash, {{"with-value", withValue},
                                                       {"values", values},
                                                       {"places", places},
                                                       {"candidates", candidates},
                                                       {"file-places", filePlaces},
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

std::string PowerShellPair(Candidate const& candidate, std::string const& indentation) {
    return indentation + ", @(" + PowerShellText(candidate.word) + ", " + PowerShellText(candidate.meaning) + ")";
}

// A line each, which gives a word and what it means.
std::string PowerShellPairs(std::vector<Candidate> const& candidates, std::string const& indentation) {
    std::string lines;
    for (Candidate const& candidate : candidates) {
        lines = Join(lines, "\n", PowerShellPair(candidate, indentation));
    }
    return lines;
}

// An entry of a table of lists.
std::string PowerShellList(std::string const& key, std::string const& items) {
    return "        " + PowerShellText(key) + " = @(" + items + ")";
}

// The words of a place.
std::string PowerShellPlace(std::string const& place, std::vector<Candidate> const& words) {
    return PowerShellList(place,
                          "\n" + PowerShellPairs(words, "            ") + (words.empty() ? "" : "\n") + "        ");
}

std::string PowerShellScript(CommandLine const& line) {
    std::string candidates;
    for (auto const& [place, words] : line.candidates) {
        candidates = Join(candidates, "\n", PowerShellPlace(place, words));
    }
    std::string values;
    for (auto const& [key, value] : line.values) {
        std::string choices;
        for (std::string const& choice : value.choices) {
            choices = Join(choices, ", ", PowerShellText(choice));
        }
        values = Join(values, "\n", PowerShellList(key, choices));
    }
    return FillPlaceholders(
        embedded::completionPowerShell,
        {{"candidates", candidates}, {"everywhere", PowerShellPairs(line.everywhere, "        ")}, {"values", values}});
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
