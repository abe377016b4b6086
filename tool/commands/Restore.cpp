// restore: takes back what a hold has left that could not end.
#include "tool/commands/Commands.h"
#include "tool/commands/HoldViews.h"
#include "tool/hold/Supervisor.h"
#include "tool/system/Files.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

// False when the board is being held: then nothing was left behind.
bool RestoreOne(GlobalOptions options, std::string const& file) {
    constexpr std::size_t kEnough = 64U * 1024;
    std::optional<Journal> const journal = ReadJournal(ReadTextFile(file, kEnough));
    // A damaged one names no board: then that of the command line has to do.
    if (journal) {
        options.boardFile = journal->boardFile;
        options.boardState = journal->boardState;
        options.adapter = journal->adapter;
    }
    std::unique_ptr<HoldView> const view = MakeRestoreView(options);
    try {
        Supervisor(options, *view, file).Run(std::nullopt);
    } catch (ToolError const& error) {
        if (error.Details().code != "held") {
            throw;
        }
        return false;
    }
    if (!journal) {
        throw ToolError("The journal " + file +
                            " was damaged. The driver controls the fan again; whether a hold had changed the power "
                            "limit or the clocks is not known: power default and clocks default restore them.",
                        {.code = "damaged_journal"});
    }
    return true;
}

int RunRestore(GlobalOptions const& options) {
    std::int64_t restored = 0;
    for (std::string const& file : JournalFiles()) {
        restored += RestoreOne(options, file) ? 1 : 0;
    }
    Result result;
    result.SetDone("restore", restored > 0
                                  ? "The settings of before are in force again, and the driver controls the fan."
                                  : "There is nothing to take back.");
    result.Add({.fields = {{"boards", "Boards", restored}}});
    Print(options, result);
    return kExitSuccess;
}

}  // namespace

void AddRestoreCommand(CLI::App& app, Context& context) {
    AddCommand(app, context,
               {"restore", "Take back what a hold has left that could not end, after a power cut for example",
                "For a task at logon. Does nothing when there is nothing to take back.\n"
                "Example:\n"
                "  gputunectl restore"},
               RunRestore);
}

}  // namespace gputune::tool
