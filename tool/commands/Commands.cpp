#include "tool/commands/Commands.h"

#include <algorithm>
#include <cstdio>

#include "tool/system/Console.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

CLI::Validator DecimalNumber() {
    return {[](std::string& text) {
                std::size_t const digits = text.starts_with('-') || text.starts_with('+') ? 1 : 0;
                if (text.size() == digits || text.find_first_not_of("0123456789", digits) != std::string::npos) {
                    return text + " is not a whole number";
                }
                std::size_t const significant = text.find_first_not_of('0', digits);
                text.erase(digits, std::min(significant, text.size() - 1) - digits);
                return std::string();
            },
            ""};
}

std::string HexId(std::uint32_t id) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(id));
    return text;
}

void Print(GlobalOptions const& options, Report const& report) {
    WriteOutput(options.json ? report.Json() : report.Text());
}

void PrintReadings(Session const& session, GlobalOptions const& options, std::vector<Section> sections,
                   std::string const& what) {
    bool available = false;
    Report report;
    for (Section& section : sections) {
        available = available || section.available;
        report.Add(std::move(section));
    }
    Print(options, report);
    if (available) {
        return;
    }
    if (session.Vendor() != GPUTUNE_VENDOR_AMD) {
        throw UnsupportedError("it does not report " + what + ".");
    }
    throw ToolError("This board does not report " + what + "." + session.LogHint(), {.code = "not_available"});
}

int FinishChange(Session const& session, GlobalOptions const& options, Change change) {
    ReadBack const& readBack = change.readBack;
    std::string const library = VendorName(session.Vendor()).text + std::string("'s library does not confirm ");
    std::string const untold = readBack.Untold();
    std::string sentence;
    if (readBack.IsDone()) {
        sentence = readBack.Confirmed() ? change.sentence
                   : untold.empty()     ? "Sent; " + library + "it: " + change.what + "."
                                        : change.sentence + " " + library + untold + ".";
    }
    Report report;
    report.SetOutcome(std::move(change.command), std::move(sentence),
                      {readBack.IsDone(), readBack.Confirmed(), readBack.Problems()});
    for (Section& section : change.sections) {
        // Programs get every key at every time.
        if (section.available || options.json) {
            report.Add(std::move(section));
        }
    }
    Print(options, report);
    if (!readBack.IsDone()) {
        std::string message = "Sent: " + change.what + ".";
        for (std::string const& problem : readBack.Problems()) {
            message += " " + problem;
        }
        throw ToolError(message + session.LogHint(), {.code = "not_as_asked"});
    }
    return exitSuccess;
}

void RequireTunable(Session const& session) {
    session.RequireReady();
    if (session.ApiType() == GPUTUNE_API_NVAPI) {
        throw UnsupportedError("NVIDIA boards can be monitored, not tuned.");
    }
}

void ConfirmChange(Session const& session, GlobalOptions const& options, std::string const& change) {
    if (options.yes || !InputIsConsole()) {
        return;
    }
    std::string const name = session.AdapterName();
    if (!Confirm(change + (name.empty() ? "?" : " (" + name + ")?"))) {
        throw ToolError("Nothing was changed.", {.code = "not_changed"});
    }
}

void RequireDone(Session const& session, bool done, std::string const& what) {
    if (!done) {
        throw ToolError("The board or its driver refused " + what + "." + session.LogHint(), {.code = "refused"});
    }
}

}  // namespace gputune::tool
