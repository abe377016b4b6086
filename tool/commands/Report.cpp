// report: a recording as a page with charts.
#include "tool/commands/Commands.h"
#include "tool/page/PageParts.h"
#include "tool/recording/RecordingPage.h"
#include "tool/system/Console.h"
#include "tool/system/Files.h"
#include "tool/values/Errors.h"
#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

// About four days at one reading a second. The tool holds all of it in memory, and so does the browser.
constexpr std::size_t kLargestRecording = 64U * 1024 * 1024;

struct ReportOptions {
    std::string recording;  // a path in UTF-8; so is page
    std::string page;       // empty: the recording's name, ending in .html
    bool force = false;
};

std::string Message(std::string const& path, CsvError const& error, char const* severity) {
    return path + ":" + std::to_string(error.line) + ":" + std::to_string(error.column) + ": " + severity + ": " +
           error.message + ".";
}

Recording Read(std::string const& path) {
    std::string const text = ReadTextFile(path, kLargestRecording);
    if (text.size() > kLargestRecording) {
        throw ToolError(path + " is larger than " + std::to_string(kLargestRecording / 1024 / 1024) + " MiB.");
    }
    try {
        return ReadRecording(text);
    } catch (CsvError const& error) {
        throw ToolError(Message(path, error, "error"));
    }
}

std::string FileName(std::string const& path) {
    return path.substr(path.find_last_of("\\/:") + 1);
}

std::string PageBeside(std::string const& recording) {
    constexpr std::string_view kSuffix = ".csv";
    bool const hasSuffix = recording.size() > kSuffix.size() && recording.ends_with(kSuffix);
    return recording.substr(0, recording.size() - (hasSuffix ? kSuffix.size() : 0)) + ".html";
}

int RunReport(GlobalOptions const& options, ReportOptions const& report) {
    if (!HasCharts()) {
        throw ToolError("This gputunectl was built without uPlot, which draws the charts.");
    }
    Recording const recording = Read(report.recording);
    for (CsvError const& remark : recording.remarks) {
        WriteError(Message(report.recording, remark, "warning") + "\n");
    }
    if (recording.furtherRemarks > 0) {
        WriteError(report.recording + ": " + CountText(recording.furtherRemarks, "further warning") + ".\n");
    }
    std::string const path = report.page.empty() ? PageBeside(report.recording) : report.page;
    if (report.force && IsSameFile(path, report.recording)) {
        throw UsageError("The page would replace the recording: choose another name for it.");
    }
    WriteWholeFile(path, RecordingPage(recording, FileName(report.recording)),
                   report.force ? Existing::Replace : Existing::Keep);

    Result result;
    result.SetDone("report", "Made " + path + ".");
    if (options.json) {
        result.Add({.fields = {{"file", "Page", path},
                               {"readings", "Readings", static_cast<std::int64_t>(recording.seconds.size())},
                               {"sensors", "Sensors", static_cast<std::int64_t>(recording.series.size())}}});
    }
    Print(options, result);
    return kExitSuccess;
}

}  // namespace

void AddReportCommand(CLI::App& app, Context& context) {
    auto const report = std::make_shared<ReportOptions>();
    CLI::App* command = AddCommand(app, context,
                                   {"report", "Make a page with charts of a recording; needs no board",
                                    "The page is one HTML file that any browser shows, without a network.\n"
                                    "Examples:\n"
                                    "  gputunectl report run.csv\n"
                                    "  gputunectl report run.csv -o report.html --force"},
                                   RunReport, report);
    command->add_option("recording", report->recording, "A file of record or of monitor --csv")
        ->required()
        ->type_name("FILE");
    command->add_option("-o,--out", report->page, "The page; default: the recording's name, ending in .html")
        ->type_name("FILE");
    command->add_flag("--force", report->force, "Replace the page when it exists");
}

}  // namespace gputune::tool
