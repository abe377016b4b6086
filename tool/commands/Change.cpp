#include "tool/commands/Change.h"

#include "tool/commands/Commands.h"
#include "tool/system/Console.h"
#include "tool/values/Errors.h"
#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

bool NobodyIsAsked(GlobalOptions const& options) {
    return options.yes || !InputIsConsole();
}

}  // namespace

void RequireTunable(Session const& session) {
    session.RequireReady();
    if (session.ApiType() == GPUTUNE_API_NVAPI) {
        throw UnsupportedError("NVIDIA boards can be monitored, not tuned.");
    }
}

void ConfirmChange(Session const& session, GlobalOptions const& options, std::string const& change) {
    if (NobodyIsAsked(options)) {
        // Nor is the board, for its name.
        return;
    }
    ConfirmChange(session.AdapterName(), options, change);
}

void ConfirmChange(std::string const& name, GlobalOptions const& options, std::string const& change) {
    if (NobodyIsAsked(options)) {
        return;
    }
    if (!Confirm(change + (name.empty() ? "?" : " (" + name + ")?"))) {
        throw ToolError("Nothing was changed.", {.code = "not_changed"});
    }
}

void RequireDone(Session const& session, bool done, std::string const& what) {
    if (!done) {
        throw ToolError("The board or its driver refused " + what + "." + session.LogHint(), {.code = "refused"});
    }
}

int FinishChange(Session const& session, GlobalOptions const& options, Change change) {
    ReadBack const& readBack = change.readBack;
    std::string const library = VendorName(session.Vendor()).text + std::string("'s library does not confirm ");
    std::string const unreported = readBack.Unreported();
    std::string sentence;
    if (readBack.IsDone()) {
        sentence = readBack.Confirmed() ? change.sentence
                   : unreported.empty() ? "Sent; " + library + "it: " + change.what + "."
                                        : change.sentence + " " + library + unreported + ".";
    }
    Result result;
    result.SetOutcome(std::move(change.command), std::move(sentence),
                      {readBack.IsDone(), readBack.Confirmed(), readBack.Problems()});
    for (Section& section : change.sections) {
        // JSON always has every key.
        if (section.available || options.json) {
            result.Add(std::move(section));
        }
    }
    Print(options, result);
    if (!readBack.IsDone()) {
        throw ToolError("Sent: " + change.what + ". " + Joined(readBack.Problems(), " ") + session.LogHint(),
                        {.code = "not_as_asked"});
    }
    return kExitSuccess;
}

}  // namespace gputune::tool
