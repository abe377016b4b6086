// Writes a recording.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tool/recording/RecordingFormat.h"
#include "tool/system/Files.h"

namespace gputune::tool {

// A file, or standard output when the name is "-". Both functions answer false when nobody reads standard output any
// more.
class RecordingWriter {
public:
    RecordingWriter(std::string const& path, Existing existing);

    static bool IsStandardOutput(std::string const& path) { return path == "-"; }

    // Comes before all lines.
    bool WriteHeading(RecordedBoard board);
    bool WriteLine(std::string const& time, Readings const& readings, std::optional<int> frameRate);

private:
    bool Write(std::string_view line);

    std::optional<OutputFile> file_;
    std::optional<RecordingFormat> format_;
};

}  // namespace gputune::tool
