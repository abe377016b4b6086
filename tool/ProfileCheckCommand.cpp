// profile check: what is wrong with a profile file.
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

#include "Commands.h"
#include "Console.h"
#include "Errors.h"
#include "ProfileCheck.h"
#include "Text.h"

namespace gputune::tool {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// The file, or as much of it as shows that it is too long.
std::string ReadFile(std::string const& path) {
    std::unique_ptr<std::FILE, CloseFile> const file(::_wfopen(WideFromUtf8(path).c_str(), L"rb"));
    if (!file) {
        throw ToolError(path + ": " + std::strerror(errno) + ".");
    }
    std::string text;
    std::array<char, 16 * 1024> block;
    while (std::size_t const count = std::fread(block.data(), 1, block.size(), file.get())) {
        text.append(block.data(), count);
        if (text.size() > largestProfileFile) {
            break;
        }
    }
    if (std::ferror(file.get()) != 0) {
        throw ToolError(path + " cannot be read.");
    }
    return text;
}

Report JsonReport(std::string const& path, std::vector<Problem> const& problems) {
    Grid grid{.key = "problems",
              .label = "Problems",
              .columns = {{"line", "Line"}, {"column", "Column"}, {"severity", "Severity"}, {"message", "Message"}},
              .rows = {}};
    for (Problem const& problem : problems) {
        grid.rows.push_back({static_cast<std::int64_t>(problem.line), static_cast<std::int64_t>(problem.column),
                             std::string(problem.severity == Severity::Error ? "error" : "warning"), problem.message});
    }
    Section section{.key = "", .title = ""};
    section.fields = {{"file", "File", path}};
    section.grids.push_back(std::move(grid));
    Report report;
    report.Add(std::move(section));
    return report;
}

int RunCheck(GlobalOptions const& options, std::string const& path) {
    std::vector<Problem> const problems = CheckProfile(ReadFile(path));
    if (options.json) {
        Print(options, JsonReport(path, problems));
    } else {
        std::string lines;
        for (Problem const& problem : problems) {
            lines += FormatProblem(path, problem) + '\n';
        }
        WriteOutput(lines);
    }
    return HasError(problems) ? exitFailure : exitSuccess;
}

}  // namespace

void AddProfileCheckCommand(CLI::App& profile, Context& context) {
    CLI::App* check = profile.add_subcommand("check", "Find mistakes in a profile file; needs no board");
    auto const path = std::make_shared<std::string>();
    check->add_option("file", *path, "The profile file")->required()->type_name("FILE");
    check->footer(
        "Every problem is a line FILE:LINE:COLUMN: error|warning: MESSAGE. The exit code is 1 when there is an error.\n"
        "Examples:\n"
        "  gputunectl profile check Config\\ConfigModel.xml");
    check->callback([&context, path] { context.run = [&context, path] { return RunCheck(context.options, *path); }; });
}

}  // namespace gputune::tool
