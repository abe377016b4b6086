#include "tool/serve/TextFile.h"

#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

constexpr int kMostFailures = 3;

std::string InDirectory(std::string const& directory, char const* name) {
    bool const hasSeparator = directory.ends_with('\\') || directory.ends_with('/');
    return directory + (hasSeparator ? "" : "\\") + name;
}

}  // namespace

TextFile::TextFile(std::string const& directory, TextFilePort& port)
    : port_(port), path_(InDirectory(directory, "gputune.prom")) {
    try {
        port_.Remove(path_);
    } catch (ToolError const&) {
        // Deliberate: Write says what is wrong with the folder.
    }
}

TextFile::~TextFile() {
    try {
        port_.Remove(path_);
    } catch (ToolError const&) {
        // Deliberate: nobody can do anything about it at the end.
    }
}

std::optional<std::string> TextFile::Write(std::string const& text) {
    try {
        port_.Replace(path_, text);
    } catch (ToolError const& error) {
        ++failures_;
        if (hasComplained_ || (wasWritten_ && failures_ < kMostFailures)) {
            return std::nullopt;
        }
        hasComplained_ = true;
        return "The metrics cannot be written; this is tried again with every sample. " + std::string(error.what());
    }
    wasWritten_ = true;
    failures_ = 0;
    if (!hasComplained_) {
        return std::nullopt;
    }
    hasComplained_ = false;
    return "The metrics are written again: " + path_;
}

}  // namespace gputune::tool
