#include "tool/recording/RecordingWriter.h"

#include "tool/system/Console.h"

namespace gputune::tool {

RecordingWriter::RecordingWriter(std::string const& path, Existing existing) {
    if (!IsStandardOutput(path)) {
        file_.emplace(path, existing);
    }
}

bool RecordingWriter::WriteHeading(RecordedBoard board) {
    format_.emplace(std::move(board));
    return Write(format_->Heading() + "\n");
}

bool RecordingWriter::WriteLine(std::string const& time, Readings const& readings, std::optional<int> frameRate) {
    return Write(format_->Line(time, readings, frameRate) + "\n");
}

bool RecordingWriter::Write(std::string_view line) {
    if (!file_) {
        return WriteOutput(line);
    }
    file_->Write(line);
    return true;
}

}  // namespace gputune::tool
