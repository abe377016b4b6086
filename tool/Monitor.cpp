// monitor: the sensors again and again, on the screen and in a file.
#include <limits>

#include "Commands.h"
#include "Console.h"
#include "Errors.h"
#include "Files.h"
#include "Sampling.h"

namespace gputune::tool {

namespace {

struct MonitorOptions {
    SamplingOptions sampling;
    int count = 0;        // 0: until interrupted
    std::string csvFile;  // UTF-8; empty: none
};

// Where each reading goes: over the last one on a console, else on a line of its own.
class Screen {
public:
    Screen(GlobalOptions const& options, std::uint32_t vendor) : json_(options.json), vendor_(vendor) {
        // The log's lines would tear the table apart.
        bool const logOnScreen = options.log == GPUTUNE_LOG_STDOUT || options.log == GPUTUNE_LOG_BOTH;
        if (OutputIsConsole() && !json_ && !logOnScreen) {
            live_ = std::make_unique<LiveArea>();
        }
    }

    void Show(std::string const& time, Readings const& readings) {
        extremes_.Add(readings);
        if (json_) {
            WriteOutput(JsonLine(time, readings));
            return;
        }
        if (live_) {
            std::vector<std::string> lines = MonitorTable(readings, extremes_, vendor_);
            lines.push_back(time + "  Ctrl+C ends");
            if (live_->Draw(lines)) {
                return;
            }
            live_.reset();
        }
        WriteOutput(time + "  " + ReadingsLine(readings, vendor_) + "\n");
    }

private:
    std::string JsonLine(std::string const& time, Readings const& readings) const {
        Section head{.key = "", .title = ""};
        head.fields = {{"time", "Time", time}};
        Report report;
        report.Add(std::move(head));
        report.Add(SensorSection(readings, vendor_, true));
        return report.Json(false);
    }

    bool json_;
    std::uint32_t vendor_;
    Extremes extremes_;
    std::unique_ptr<LiveArea> live_;
};

int RunMonitor(GlobalOptions const& options, MonitorOptions const& monitor) {
    Session const session(options);
    session.RequireReady();
    std::optional<OutputFile> csv;
    RecordingFormat format(DescribeBoard(session, monitor.sampling));
    if (!monitor.csvFile.empty()) {
        csv.emplace(monitor.csvFile, Existing::Replace);
        csv->Write(format.Heading() + "\n");
    }
    InterruptEvent const interrupt;
    Screen screen(options, session.Vendor());
    Schedule schedule(monitor.sampling.interval);
    for (int taken = 0; monitor.count == 0 || taken < monitor.count; ++taken) {
        if (interrupt.Wait(schedule.Remaining())) {
            break;
        }
        schedule.Advance();
        Sample const sample = TakeSample(session, monitor.sampling);
        if (csv) {
            csv->Write(format.Line(sample.time, sample.readings, sample.frameRate) + "\n");
        }
        screen.Show(sample.time, sample.readings);
    }
    return exitSuccess;
}

}  // namespace

void AddMonitorCommand(CLI::App& app, Context& context) {
    CLI::App* command = app.add_subcommand("monitor", "Read the sensors repeatedly until Ctrl+C");
    auto const monitor = std::make_shared<MonitorOptions>();
    AddSamplingOptions(*command, monitor->sampling);
    command->add_option("--count", monitor->count, "End after this many readings; default: go on until Ctrl+C")
        ->transform(DecimalNumber())
        ->check(CLI::Range(1, std::numeric_limits<int>::max()))
        ->type_name("N");
    command->add_option("--csv", monitor->csvFile, "Write the readings to this file, too; an existing one is replaced")
        ->type_name("FILE");
    command->footer(
        "In a console the table is redrawn; otherwise every reading is a line (with --json an object).\n"
        "Examples:\n"
        "  gputunectl monitor\n"
        "  gputunectl monitor --interval 0.5 --count 120 --csv run.csv\n"
        "  gputunectl --json monitor --count 10");
    command->callback(
        [&context, monitor] { context.run = [&context, monitor] { return RunMonitor(context.options, *monitor); }; });
}

}  // namespace gputune::tool
