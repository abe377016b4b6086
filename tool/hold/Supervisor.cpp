#include "tool/hold/Supervisor.h"

#include <windows.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "tool/system/Files.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

// Nearly all that Windows grants at the closing of the console.
constexpr unsigned long kEndLimit = 4800;
// For a worker that is to take something back without its supervisor.
constexpr unsigned long kWorkerEndLimit = 4000;

double Now() {
    return static_cast<double>(GetTickCount64()) / 1000;
}

unsigned long Milliseconds(double seconds) {
    return static_cast<unsigned long>(std::ceil(std::clamp(seconds, 0.0, 60.0) * 1000));
}

// A short name for a text, for file names.
std::string Digest(std::string const& text) {
    std::uint32_t hash = 2166136261U;  // FNV-1a
    for (char const c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
    }
    return std::to_string(hash);
}

}  // namespace

Supervisor::Supervisor(GlobalOptions options, HoldView& view, std::string journalFile)
    : options_(std::move(options)), view_(view), journalFile_(std::move(journalFile)) {
    if (!options_.boardFile.empty()) {
        options_.boardFile = FullPath(options_.boardFile);
    }
    if (!options_.boardState.empty()) {
        options_.boardState = FullPath(options_.boardState);
    }
}

Supervisor::~Supervisor() = default;

void Supervisor::Run(std::optional<HoldSettings> settings) {
    InterruptEvent const interrupt(kEndLimit);
    Hold hold(std::move(settings), *this);
    while (!hold.IsEnded()) {
        HoldView::Wake const wake = view_.Wait(interrupt, worker_ != nullptr ? worker_->Handle() : nullptr,
                                               Milliseconds(hold.NextTime() - Now()));
        if (wake == HoldView::Wake::Stop || !isRead_) {
            hold.Stop("Ended by the user.", Now());
        }
        HearWorker(hold);
        hold.OnTime(Now());
    }
    if (worker_ != nullptr) {
        worker_->Close(kWorkerEndLimit);
        worker_.reset();
    }
    if (hold.ExitCode() != kExitSuccess) {
        throw ToolError(hold.Problem(), {.code = hold.ProblemCode(), .exitCode = hold.ExitCode()});
    }
}

// What the worker says may end it, and start another one.
void Supervisor::HearWorker(Hold& hold) {
    WorkerProcess const* const heard = worker_.get();
    while (heard != nullptr && heard == worker_.get()) {
        std::optional<std::string> const line = worker_->TakeLine();
        if (!line) {
            if (worker_->IsGone()) {
                hold.OnGone(Now());
            }
            return;
        }
        hold.OnLine(*line, Now());
    }
}

void Supervisor::StartWorker() {
    worker_ = std::make_unique<WorkerProcess>(WorkerArguments(options_));
    if (lock_ != nullptr) {
        worker_->Share(lock_->Handle());
    }
}

void Supervisor::EndWorker() {
    if (worker_ != nullptr) {
        worker_->End();
        worker_.reset();
    }
}

void Supervisor::SendToWorker(std::string const& line) {
    // A worker that does not read has ended, which is seen at once.
    static_cast<void>(worker_->WriteLine(line));
}

std::string Supervisor::BoardKey(BoardFacts const& board) const {
    std::string const label = BoardLabel(board);
    return options_.boardFile.empty() ? label
                                      : "simulated-" + Digest(options_.boardFile + options_.boardState) + "-" + label;
}

std::optional<Journal> Supervisor::Begin(BoardFacts const& board) {
    std::string const key = BoardKey(board);
    // A simulated board without a state is this process's own.
    if (options_.boardFile.empty() || !options_.boardState.empty()) {
        lock_ = std::make_unique<BoardLock>(key);
        worker_->Share(lock_->Handle());
    }
    view_.Begin(board);
    if (journalFile_.empty()) {
        journalFile_ = StateDirectory() + "hold-" + key + ".json";
    }
    if (!FileExists(journalFile_)) {
        return std::nullopt;
    }
    constexpr std::size_t kEnough = 64U * 1024;
    std::optional<Journal> journal = ReadJournal(ReadTextFile(journalFile_, kEnough));
    if (!journal) {
        view_.Show({.event = HoldEvent::Refused,
                    .text = "The journal " + journalFile_ +
                            " is damaged: only the fan is returned to automatic control. Whether an earlier hold had "
                            "changed the power limit or the clocks is not known."});
        journal = Journal{.takeBack = {.fan = true}};
    }
    // Wherever the journal was found: the worker must not leave it behind.
    journal->takeBack.journalFile = journalFile_;
    return journal;
}

void Supervisor::WriteJournal(TakeBack& takeBack) {
    takeBack.journalFile = journalFile_;
    Journal journal{.boardFile = options_.boardFile,
                    .boardState = options_.boardState,
                    .adapter = options_.adapter,
                    .takeBack = takeBack};
    WriteDurably(journalFile_, ToText(journal));
}

void Supervisor::RemoveJournal() {
    RemoveFile(journalFile_);
}

void Supervisor::Report(HoldReport const& report) {
    isRead_ = view_.Show(report) && isRead_;
}

std::vector<std::string> WorkerArguments(GlobalOptions const& options) {
    std::vector<std::string> arguments;
    if (!options.boardFile.empty()) {
        arguments.insert(arguments.end(), {"--simulate", options.boardFile});
    }
    if (!options.boardState.empty()) {
        arguments.insert(arguments.end(), {"--board-state", options.boardState});
    }
    if (options.adapter) {
        arguments.insert(arguments.end(), {"--adapter", std::to_string(*options.adapter)});
    }
    if (options.log == GPUTUNE_LOG_FILE || options.log == GPUTUNE_LOG_BOTH) {
        arguments.insert(arguments.end(), {"--log", "file"});
    }
    arguments.emplace_back("hold-worker");
    return arguments;
}

std::vector<std::string> JournalFiles() {
    return FilesIn(StateDirectory(), "hold-*.json");
}

}  // namespace gputune::tool
