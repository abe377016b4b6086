// monitor: reads the sensors repeatedly and shows them.
#include <limits>

#include "tool/commands/Commands.h"
#include "tool/commands/Sampling.h"
#include "tool/output/LiveScreen.h"
#include "tool/output/SensorTexts.h"
#include "tool/recording/RecordingWriter.h"
#include "tool/system/Console.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

struct MonitorOptions {
    SamplingOptions sampling;
    int count = 0;        // 0: until interrupted
    std::string csvFile;  // UTF-8; empty: none
};

std::string JsonLine(TakenSample const& sample, std::uint32_t vendor) {
    Result result;
    result.Add({.fields = {{"time", "Time", sample.time}}});
    result.Add(SensorSection(sample.readings, vendor, true));
    result.Add(
        {.fields = {{kFrameRateName.code, kFrameRateName.text,
                     sample.frameRate ? Value{std::int64_t{*sample.frameRate}} : Value{}, Unit::FramesPerSecond}}});
    return result.Json(false);
}

std::string TextLine(TakenSample const& sample, std::uint32_t vendor) {
    std::string line = sample.time + "  " + ReadingsLine(sample.readings, vendor);
    if (sample.frameRate) {
        line += std::string(", ") + kFrameRateName.text + " " + WithUnit(*sample.frameRate, Unit::FramesPerSecond);
    }
    return line + "\n";
}

// How the readings are shown.
class View {
public:
    virtual ~View() = default;
    // False when nobody reads the output any more.
    virtual bool Show(TakenSample const& sample) = 0;
    // Waits until the schedule's next moment; false when the user ended the command.
    virtual bool Wait(InterruptEvent const& interrupt, Schedule const& schedule) {
        return !interrupt.Wait(schedule.Remaining());
    }
};

// Every reading is a line, of text or of JSON.
class LineView : public View {
public:
    LineView(bool json, std::uint32_t vendor) : json_(json), vendor_(vendor) {}

    bool Show(TakenSample const& sample) override {
        return WriteOutput(json_ ? JsonLine(sample, vendor_) : TextLine(sample, vendor_));
    }

private:
    bool json_;
    std::uint32_t vendor_;
};

// For a recording on standard output: nothing else is shown.
class NoView : public View {
public:
    bool Show(TakenSample const&) override { return true; }
};

class DashboardView : public View {
public:
    DashboardView(Session const& session, double interval) : dashboard_(Title(session), session.Vendor(), interval) {}

    bool Show(TakenSample const& sample) override {
        dashboard_.Add(sample.time, sample.readings,
                       sample.frameRate ? std::optional<double>(*sample.frameRate) : std::nullopt);
        Draw();
        return true;
    }

    bool Wait(InterruptEvent const& interrupt, Schedule const& schedule) override {
        for (;;) {
            switch (screen_.Wait(interrupt, schedule.Remaining())) {
                case LiveScreen::Event::Time:
                case LiveScreen::Event::Other:
                    return true;
                case LiveScreen::Event::Interrupt:
                case LiveScreen::Event::Quit:
                    return false;
                case LiveScreen::Event::Reset:
                    dashboard_.Reset();
                    Draw();
                    break;
                case LiveScreen::Event::Resized:
                    Draw();
                    break;
            }
        }
    }

private:
    static std::string Title(Session const& session) {
        std::string const name = session.AdapterName();
        return (name.empty() ? "" : name + ", ") + ApiName(session.ApiType()).text;
    }

    void Draw() {
        screen_.Draw(dashboard_.Frame(screen_.Width(), screen_.Height(), screen_.UsableGlyphs(),
                                      screen_.HasKeys() ? "q ends, r starts the figures anew" : "Ctrl+C ends"));
    }

    Dashboard dashboard_;
    LiveScreen screen_;
};

std::unique_ptr<View> MakeView(Session const& session, GlobalOptions const& options, MonitorOptions const& monitor) {
    if (RecordingWriter::IsStandardOutput(monitor.csvFile)) {
        return std::make_unique<NoView>();
    }
    // Lines of the log would stand in the middle of the picture.
    if (OutputIsConsole() && !options.json && !options.LogsToOutput()) {
        return std::make_unique<DashboardView>(session, monitor.sampling.interval);
    }
    return std::make_unique<LineView>(options.json, session.Vendor());
}

int RunMonitor(GlobalOptions const& options, MonitorOptions const& monitor) {
    RequireOwnOutput(monitor.csvFile, options);
    Session const session(options, LogUse::NotKept);
    session.RequireReady();
    RecordedBoard const board = DescribeBoard(session, monitor.sampling);
    std::optional<RecordingWriter> csv;
    if (!monitor.csvFile.empty()) {
        csv.emplace(monitor.csvFile, Existing::Replace);
        if (!csv->WriteHeading(board)) {
            return kExitSuccess;
        }
    }
    InterruptEvent const interrupt;
    std::unique_ptr<View> const view = MakeView(session, options, monitor);
    Schedule schedule(monitor.sampling.interval);
    for (int taken = 0; monitor.count == 0 || taken < monitor.count; ++taken) {
        if (!view->Wait(interrupt, schedule)) {
            break;
        }
        schedule.Advance();
        TakenSample const sample = TakeSample(session, monitor.sampling);
        bool const isWanted = !csv || csv->WriteLine(sample.time, sample.readings, sample.frameRate);
        if (!isWanted || !view->Show(sample)) {
            break;
        }
    }
    return kExitSuccess;
}

}  // namespace

void AddMonitorCommand(CLI::App& app, Context& context) {
    auto const monitor = std::make_shared<MonitorOptions>();
    CLI::App* command = AddCommand(
        app, context,
        {"monitor", "Read the sensors repeatedly until Ctrl+C",
         "In a console a dashboard is drawn (q ends, r starts the figures anew); otherwise every reading is a line, "
         "with\n"
         "--json an object.\n"
         "Examples:\n"
         "  gputunectl monitor\n"
         "  gputunectl monitor --interval 0.5 --count 120 --csv run.csv\n"
         "  gputunectl --json monitor --count 10"},
        RunMonitor, monitor);
    AddSamplingOptions(*command, monitor->sampling);
    command->add_option("--count", monitor->count, "End after this many readings; default: go on until Ctrl+C")
        ->transform(DecimalNumber())
        ->check(CLI::Range(1, std::numeric_limits<int>::max()))
        ->type_name("N");
    command
        ->add_option(
            "--csv", monitor->csvFile,
            "Write the readings to this file, too; an existing one is replaced. - is standard output, and nothing else "
            "goes there")
        ->type_name("FILE");
}

}  // namespace gputune::tool
