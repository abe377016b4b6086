// monitor: the sensors again and again, on the screen and in a file.
#include <windows.h>

#include <cmath>
#include <cstdio>
#include <limits>

#include "Commands.h"
#include "Console.h"
#include "Errors.h"
#include "Text.h"

namespace gputune::tool {

namespace {

struct MonitorOptions {
    double interval = 1.0;  // seconds
    int count = 0;          // 0: until interrupted
    std::string csvFile;    // UTF-8; empty: none
};

// Local time, "2025-01-31T12:34:56.789".
std::string Timestamp() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    char text[40];
    std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u.%03u", unsigned{now.wYear}, unsigned{now.wMonth},
                  unsigned{now.wDay}, unsigned{now.wHour}, unsigned{now.wMinute}, unsigned{now.wSecond},
                  unsigned{now.wMilliseconds});
    return text;
}

// Every line is in the file when AddLine returns.
class CsvFile {
public:
    explicit CsvFile(std::string const& path) : path_(path) {
        if (!path.empty()) {
            file_.reset(_wfopen(WideFromUtf8(path).c_str(), L"wb"));
            if (!file_) {
                throw ToolError("Cannot write " + path + ": " + SystemMessage(GetLastError()) + ".");
            }
        }
    }

    bool IsOpen() const { return file_ != nullptr; }

    void AddLine(std::string const& line) {
        if (std::fputs((line + "\n").c_str(), file_.get()) < 0 || std::fflush(file_.get()) != 0) {
            throw ToolError("Cannot write " + path_ + ".");
        }
    }

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::string path_;
    std::unique_ptr<std::FILE, Close> file_;
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

// Waits for the next moment on the interval's grid, so that slow readings do not stretch it. True when interrupted.
bool WaitFor(InterruptEvent const& interrupt, ULONGLONG moment) {
    ULONGLONG const now = GetTickCount64();
    return interrupt.Wait(moment > now ? static_cast<unsigned long>(moment - now) : 0);
}

int RunMonitor(GlobalOptions const& options, MonitorOptions const& monitor) {
    Session const session(options);
    session.RequireReady();
    CsvFile csv(monitor.csvFile);
    if (csv.IsOpen()) {
        csv.AddLine(CsvHeading(session.Vendor()));
    }
    auto const step = static_cast<ULONGLONG>(std::lround(monitor.interval * 1000));
    InterruptEvent const interrupt;
    Screen screen(options, session.Vendor());
    ULONGLONG next = GetTickCount64();
    for (int taken = 0; monitor.count == 0 || taken < monitor.count; ++taken) {
        if (WaitFor(interrupt, next)) {
            break;
        }
        Readings const readings = session.ReadSensors();
        std::string const time = Timestamp();
        if (csv.IsOpen()) {
            csv.AddLine(CsvLine(time, readings));
        }
        screen.Show(time, readings);
        next = std::max(next + step, GetTickCount64());
    }
    return exitSuccess;
}

}  // namespace

void AddMonitorCommand(CLI::App& app, Context& context) {
    CLI::App* command = app.add_subcommand("monitor", "Read the sensors repeatedly until Ctrl+C");
    auto const monitor = std::make_shared<MonitorOptions>();
    command->add_option("--interval", monitor->interval, "Seconds between readings, 0.05 to 86400; default 1")
        ->check(CLI::Range(0.05, 86400.0))
        ->check([](std::string const& text) {  // a range lets "nan" through
            return text.find_first_of("nN") == std::string::npos ? std::string() : text + " is not a number of seconds";
        })
        ->type_name("SECONDS");
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
