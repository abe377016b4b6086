// Where recorded lines go.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tool/board/Session.h"
#include "tool/system/Files.h"

namespace gputune::tool {

// A file, or standard output when the name is "-".
class CsvOutput {
public:
    CsvOutput(std::string const& path, Existing existing);

    static bool IsStandardOutput(std::string const& path) { return path == "-"; }
    // Throws UsageError when the lines would mix with other output of the command.
    static void RequireAlone(std::string const& path, GlobalOptions const& options);

    // False when nobody reads standard output any more.
    bool Write(std::string_view text);

private:
    std::optional<OutputFile> file_;
};

}  // namespace gputune::tool
