// record: writes the sensors' readings to a file for a given time.
#include <algorithm>

#include "tool/commands/Commands.h"
#include "tool/commands/Sampling.h"
#include "tool/output/Bar.h"
#include "tool/recording/RecordingWriter.h"
#include "tool/system/Console.h"
#include "tool/values/Duration.h"
#include "tool/values/Errors.h"
#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

struct RecordOptions {
    SamplingOptions sampling;
    std::string file;  // UTF-8
    double duration = 0;
    bool force = false;
};

// A line on standard error that is replaced again and again. Shown on a console only.
class Progress {
public:
    explicit Progress(double duration) : duration_(duration), shown_(ErrorIsConsole()) {}

    ~Progress() {
        if (shown_) {
            WriteError("\r" + std::string(width_, ' ') + "\r");
        }
    }

    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;

    void Show(double elapsed, std::size_t readings) {
        if (!shown_) {
            return;
        }
        std::string line = ProgressBar(elapsed / duration_, 30) + "  " + CountText(readings, "reading") + ", " +
                           ElapsedText(std::max(0.0, duration_ - elapsed)) + " left";
        std::size_t const width = DisplayWidth(line);
        WriteError("\r" + PadRight(std::move(line), width_));
        width_ = width;
    }

private:
    double duration_;
    bool shown_;
    std::size_t width_ = 0;
};

enum class End { Time, Interrupt, NoReader };

// Reads until the duration is over, there is an interrupt, or nobody reads the lines any more.
End Record(Session const& session, RecordOptions const& record, RecordingWriter& file, std::size_t& readings) {
    if (!file.WriteHeading(DescribeBoard(session, record.sampling))) {
        return End::NoReader;
    }
    InterruptEvent const interrupt;
    Progress progress(record.duration);
    Schedule schedule(record.sampling.interval);
    while (schedule.Elapsed() <= record.duration) {
        unsigned long const remaining = schedule.Remaining();
        progress.Show(schedule.Elapsed() - remaining / 1000.0, readings);
        // Waits a second at most, so that the time left stays up to date.
        if (interrupt.Wait(std::min(remaining, 1000UL))) {
            return End::Interrupt;
        }
        if (schedule.Remaining() == 0) {
            schedule.Advance();
            TakenSample const sample = TakeSample(session, record.sampling);
            if (!file.WriteLine(sample.time, sample.readings, sample.frameRate)) {
                return End::NoReader;
            }
            ++readings;
        }
    }
    return End::Time;
}

int RunRecord(GlobalOptions const& options, RecordOptions record, std::string const& argument) {
    if (record.file.empty() == argument.empty()) {
        throw UsageError("Name one file to record in: record FILE, or --out FILE.");
    }
    record.file += argument;
    RequireOwnOutput(record.file, options);
    Session const session(options, LogUse::NotKept);
    session.RequireReady();
    RecordingWriter file(record.file, record.force ? Existing::Replace : Existing::Keep);
    std::size_t readings = 0;
    End const end = Record(session, record, file, readings);
    if (end == End::NoReader) {
        return kExitSuccess;
    }
    bool const done = end == End::Time;

    Result result;
    if (options.json) {
        result.Add({.fields = {{"command", "", std::string("record")},
                               {"done", "", done},
                               {"file", "", record.file},
                               {"readings", "", static_cast<std::int64_t>(readings)}}});
    } else if (!RecordingWriter::IsStandardOutput(record.file)) {
        result.AddRemark("Recorded " + CountText(readings, "reading") + " in " + record.file + ".");
    }
    Print(options, result);
    if (!done) {
        throw ToolError("The recording was ended before its time.", {.code = "interrupted"});
    }
    return kExitSuccess;
}

}  // namespace

void AddRecordCommand(CLI::App& app, Context& context) {
    auto const record = std::make_shared<RecordOptions>();
    auto const argument = std::make_shared<std::string>();
    CLI::App* command = AddCommand(app, context,
                                   {"record", "Record the sensors in a file for a given time",
                                    "Ctrl+C ends the recording; what was recorded until then is in the file.\n"
                                    "Examples:\n"
                                    "  gputunectl record run.csv --duration 60\n"
                                    "  gputunectl record run.csv --duration 10m --interval 0.5 --force\n"
                                    "  gputunectl report run.csv"},
                                   RunRecord, record, argument);
    command->add_option("file", *argument, "The file, comma-separated values; - is standard output")->type_name("FILE");
    command->add_option("--out", record->file, "The same")->type_name("FILE");
    AddSecondsOption(*command, "--duration", record->duration, 0.05, 10.0 * 365 * 86400,
                     "From the first reading to the last: seconds, or such as 90s, 10m, 2h");
    command->get_option("--duration")->required();
    AddSamplingOptions(*command, record->sampling);
    command->add_flag("--force", record->force, "Replace the file when it exists");
}

}  // namespace gputune::tool
