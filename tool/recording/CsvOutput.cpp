#include "tool/recording/CsvOutput.h"

#include "tool/system/Console.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

CsvOutput::CsvOutput(std::string const& path, Existing existing) {
    if (!IsStandardOutput(path)) {
        file_.emplace(path, existing);
    }
}

void CsvOutput::RequireAlone(std::string const& path, GlobalOptions const& options) {
    if (!IsStandardOutput(path)) {
        return;
    }
    if (options.json) {
        throw UsageError("--json and values on standard output would mix: name a file instead of \"-\".");
    }
    if (options.log == GPUTUNE_LOG_STDOUT || options.log == GPUTUNE_LOG_BOTH) {
        throw UsageError("A log and values on standard output would mix: use --log file.");
    }
}

bool CsvOutput::Write(std::string_view text) {
    if (!file_) {
        return WriteOutput(text);
    }
    file_->Write(text);
    return true;
}

}  // namespace gputune::tool
