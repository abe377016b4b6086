// gputune-test-kit: runs the kit's test cases on a machine that has no compiler, reads its board, and writes a report.
#include <windows.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <cwchar>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "Anonymous.h"
#include "Kit.h"
#include "machine_facts.h"
#include "report.h"
#include "sim/host/module_path.h"
#include "sim/standin/wide_text.h"
#include "tool/system/Console.h"

namespace gputune::kit {

namespace {

constexpr int kExitPassed = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUnusable = 2;

struct Options {
    std::vector<std::string> filters;
    std::string out;
    unsigned jobs = std::max(1U, std::thread::hardware_concurrency());
    unsigned limitSeconds = 60;
    bool noBoard = false;
};

// Nothing that was set for other runs of the tests, or for the library, has a part in this one.
void ForgetSettings() {
    std::vector<std::wstring> names;
    wchar_t* const block = ::GetEnvironmentStringsW();
    for (wchar_t const* entry = block; *entry != L'\0'; entry += std::wcslen(entry) + 1) {
        std::wstring const name(entry, std::wcscspn(entry, L"="));
        if (name.starts_with(L"GTEST_") || name.starts_with(L"GPUTUNE_")) {
            names.push_back(name);
        }
    }
    ::FreeEnvironmentStringsW(block);
    std::for_each(names.begin(), names.end(),
                  [](std::wstring const& name) { ::SetEnvironmentVariableW(name.c_str(), nullptr); });
}

std::string UtcNow() {
    std::time_t const now = std::time(nullptr);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", std::gmtime(&now));
    return text;
}

// An empty folder for what the cases write; gone at the end.
class WorkFolder {
public:
    explicit WorkFolder(std::filesystem::path path) : path_(std::move(path)) {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
        std::filesystem::create_directories(path_, error);
        if (error || !std::filesystem::is_empty(path_)) {
            throw std::runtime_error("The folder " + sim::FromWide(path_.wstring()) +
                                     " cannot be made, or emptied. Unpack the kit where you may write.");
        }
    }
    ~WorkFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    WorkFolder(WorkFolder const&) = delete;
    WorkFolder& operator=(WorkFolder const&) = delete;

    std::filesystem::path const& Path() const { return path_; }

private:
    std::filesystem::path path_;
};

void WriteFile(std::filesystem::path const& path, std::string const& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) {
        throw std::runtime_error("The report " + sim::FromWide(path.wstring()) + " cannot be written.");
    }
}

// The lines end as on Windows: people open it there, send it from there.
std::string WithWindowsLines(std::string const& text) {
    std::string lines;
    for (char const c : text) {
        lines.append(c == '\n' ? "\r\n" : std::string(1, c));
    }
    return lines;
}

int Run(Options const& options) {
    auto const begin = std::chrono::steady_clock::now();
    Kit const kit(sim::ModulePath().parent_path());
    std::filesystem::path const out =
        options.out.empty() ? kit.Folder() / "report" : std::filesystem::absolute(sim::ToWide(options.out));
    WorkFolder const work(out / "work");
    nlohmann::ordered_json report = {{"version", kit.Version()}, {"started", UtcNow()}};

    std::vector<Case> const cases = kit.Cases(options.filters, work.Path());
    if (cases.empty()) {
        throw std::runtime_error("No case has such a name.");
    }
    std::printf("gputune %s: %zu cases, %u at a time\n", kit.Version().c_str(), cases.size(), options.jobs);
    std::fflush(stdout);
    std::vector<Result> const results =
        RunCases(cases, {kit.Folder(), work.Path(), options.jobs, options.limitSeconds});
    nlohmann::ordered_json board = nlohmann::ordered_json::array();
    if (!options.noBoard) {
        std::puts("reading this machine's own board; nothing is set");
        std::fflush(stdout);
        board = kit.ReadBoard(work.Path());
    }

    std::chrono::duration<double> const taken = std::chrono::steady_clock::now() - begin;
    Sum const sum = SumOf(results);
    report["seconds"] = static_cast<int>(taken.count());
    report["jobs"] = options.jobs;
    report["administrator"] = IsAdministrator();
    report["windows"] = WindowsFacts();
    report["sum"] = {{"passed", sum.passed}, {"failed", sum.failed}, {"skipped", sum.skipped}};
    report["drivers"] = DriverFacts();
    report["libraries"] = LibraryFacts();
    report["leftOut"] = kit.LeftOut();
    report["board"] = board;
    report["cases"] = nlohmann::ordered_json::array();
    for (Result const& result : results) {
        report["cases"].push_back(CaseFacts(result));
    }
    // Names of cases and programs are ours; they are left as they are, whatever the user is called.
    Anonymous const anonymous(kit.Folder());
    for (char const* const part : {"drivers", "libraries", "board"}) {
        anonymous.Clean(report[part]);
    }
    for (nlohmann::ordered_json& entry : report["cases"]) {
        if (entry.contains("output")) {
            anonymous.Clean(entry["output"]);
        }
    }
    WriteFile(out / "report.json", JsonText(report));
    WriteFile(out / "report.txt", WithWindowsLines(PlainText(report)));
    std::string line = std::to_string(sum.passed) + " passed, " + std::to_string(sum.failed) + " failed";
    line += sum.skipped > 0 ? ", " + std::to_string(sum.skipped) + " skipped" : "";
    tool::WriteOutput(line + " in " + std::to_string(static_cast<int>(taken.count())) + " s. The report is in " +
                      sim::FromWide(out.wstring()) + "\n");
    return sum.failed == 0 ? kExitPassed : kExitFailed;
}

int Main(std::vector<std::string> arguments) {
    Options options;
    CLI::App app("Runs gputune's tests on this machine, reads its graphics board, and writes a report.",
                 "gputune-test-kit");
    app.allow_windows_style_options(false);
    app.add_option("--filter", options.filters, "Only cases whose name is like one of these; * stands for any text")
        ->type_name("PATTERN");
    app.add_option("--out", options.out, "The folder for the report (default: report, beside this program)")
        ->type_name("FOLDER");
    app.add_option("--jobs", options.jobs, "Cases that run at a time (default: the number of processors)")
        ->check(CLI::Range(1, 256))
        ->type_name("N");
    app.add_option("--limit", options.limitSeconds, "Seconds after which a case is ended (default: 60)")
        ->check(CLI::Range(1, 3600))
        ->type_name("SECONDS");
    app.add_flag("--no-board", options.noBoard, "Do not read this machine's own board");
    app.footer("Exit codes: 0 all cases passed, 1 some did not, 2 the kit could not run.");
    try {
        std::reverse(arguments.begin(), arguments.end());  // the order in which this parser wants them
        app.parse(std::move(arguments));
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? kExitPassed : kExitUnusable;
    }
    try {
        if (options.filters.empty()) {
            options.filters = {"*"};
        }
        return Run(options);
    } catch (std::exception const& error) {
        tool::WriteError(std::string(error.what()) + "\n");
        return kExitUnusable;
    }
}

// Started by a double click: the console is this program's alone, and closes when it ends.
bool HasConsoleForItself() {
    DWORD processes[2];
    return ::GetConsoleProcessList(processes, 2) == 1;
}

}  // namespace

}  // namespace gputune::kit

int wmain(int count, wchar_t** values) {
    using namespace gputune;
    // No message box of a program that crashes, in the programs that this one starts, too.
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    kit::ForgetSettings();
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(sim::FromWide(values[i]));
    }
    int const code = kit::Main(std::move(arguments));
    if (kit::HasConsoleForItself()) {
        std::puts("Press Enter to close this window.");
        std::getchar();
    }
    return code;
}
