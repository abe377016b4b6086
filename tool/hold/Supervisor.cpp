#include "tool/hold/Supervisor.h"

#include <utility>

#include "tool/system/Files.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

// Nearly all that Windows grants at the closing of the console.
constexpr unsigned long kEndLimit = 4800;
// For a worker that is to take something back without its supervisor.
constexpr unsigned long kWorkerEndLimit = 4000;

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
    : worker_(std::move(options)), view_(view), journalFile_(std::move(journalFile)) {}

Supervisor::~Supervisor() = default;

void Supervisor::Run(std::optional<HoldSettings> settings) {
    InterruptEvent const interrupt(kEndLimit);
    Hold hold(std::move(settings), *this);
    while (!hold.IsEnded()) {
        Wake const wake = view_.Wait(interrupt, worker_.Handle(), MillisecondsUntil(hold.NextTime()));
        if (wake == Wake::Stop || !isRead_) {
            hold.Stop("Ended by the user.", SupervisorTime());
        }
        worker_.Hear([&hold](std::string const& line) { hold.OnLine(line, SupervisorTime()); },
                     [&hold] { hold.OnGone(SupervisorTime()); });
        hold.OnTime(SupervisorTime());
    }
    worker_.Close(kWorkerEndLimit);
    if (hold.ExitCode() != kExitSuccess) {
        throw ToolError(hold.Problem(), {.code = hold.ProblemCode(), .exitCode = hold.ExitCode()});
    }
}

std::string Supervisor::BoardKey(BoardFacts const& board) const {
    std::string const label = BoardLabel(board);
    GlobalOptions const& options = worker_.Options();
    return options.boardFile.empty() ? label
                                     : "simulated-" + Digest(options.boardFile + options.boardState) + "-" + label;
}

std::optional<Journal> Supervisor::Begin(BoardFacts const& board) {
    std::string const key = BoardKey(board);
    // A simulated board without a state is this process's own.
    GlobalOptions const& options = worker_.Options();
    if (options.boardFile.empty() || !options.boardState.empty()) {
        lock_ = std::make_unique<BoardLock>(key);
        worker_.Share(lock_->Handle());
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
    GlobalOptions const& options = worker_.Options();
    Journal journal{.boardFile = options.boardFile,
                    .boardState = options.boardState,
                    .adapter = options.adapter,
                    .takeBack = takeBack};
    WriteDurably(journalFile_, ToText(journal));
}

void Supervisor::RemoveJournal() {
    RemoveFile(journalFile_);
}

void Supervisor::Report(HoldReport const& report) {
    isRead_ = view_.Show(report) && isRead_;
}

std::vector<std::string> JournalFiles() {
    return FilesIn(StateDirectory(), "hold-*.json");
}

}  // namespace gputune::tool
