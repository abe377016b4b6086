#include "tool/commands/Commands.h"

#include <algorithm>

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

void Print(GlobalOptions const& options, Result const& result) {
    WriteOutput(options.json ? result.Json() : result.Text());
}

void PrintReadings(Session const& session, GlobalOptions const& options, std::vector<Section> sections,
                   std::string const& what) {
    bool available = false;
    Result result;
    for (Section& section : sections) {
        available = available || section.available;
        result.Add(std::move(section));
    }
    Print(options, result);
    if (available) {
        return;
    }
    if (session.Vendor() != GPUTUNE_VENDOR_AMD) {
        throw UnsupportedError("it does not report " + what + ".");
    }
    throw ToolError("This board does not report " + what + "." + session.LogHint(), {.code = "not_available"});
}

}  // namespace gputune::tool
