// profile check: what is wrong with a profile file.
#include <memory>
#include <utility>

#include "src/profile/profile_format.h"
#include "tool/commands/Commands.h"
#include "tool/profile/ProfileCheck.h"
#include "tool/system/Console.h"
#include "tool/system/Files.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

Result JsonResult(std::string const& path, std::vector<Problem> const& problems) {
    Grid grid{.key = "problems",
              .label = "Problems",
              .columns = {{"line", "Line"}, {"severity", "Severity"}, {"message", "Message"}},
              .rows = {}};
    for (Problem const& problem : problems) {
        grid.rows.push_back({std::int64_t{problem.line},
                             std::string(problem.severity == Severity::Error ? "error" : "warning"), problem.message});
    }
    Result result;
    result.Add({.fields = {{"file", "File", path}}, .grids = {std::move(grid)}});
    return result;
}

int RunCheck(GlobalOptions const& options, std::string const& path) {
    std::vector<Problem> const problems = CheckProfile(ReadTextFile(path, profile::kLargestDocument));
    if (options.json) {
        Print(options, JsonResult(path, problems));
    } else {
        std::string lines;
        for (Problem const& problem : problems) {
            lines += FormatProblem(path, problem) + '\n';
        }
        WriteOutput(lines);
    }
    return HasError(problems) ? kExitFailure : kExitSuccess;
}

}  // namespace

void AddProfileCheckCommand(CLI::App& profile, Context& context) {
    auto const path = std::make_shared<std::string>();
    CLI::App* check = AddCommand(
        profile, context,
        {"check", "Find mistakes in a profile file; needs no board",
         "Every problem is a line FILE:LINE: error|warning: MESSAGE. The exit code is 1 when there is an error.\n"
         "Examples:\n"
         "  gputunectl profile check Config\\ConfigModel.xml"},
        RunCheck, path);
    check->add_option("file", *path, "The profile file")->required()->type_name("FILE");
}

}  // namespace gputune::tool
