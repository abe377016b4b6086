// The metrics in a file, for machines where another exporter collects such files from a folder.
#pragma once

#include <optional>
#include <string>

namespace gputune::tool {

// What a text file does to the disk. Both throw ToolError.
class TextFilePort {
public:
    virtual ~TextFilePort() = default;
    // Writes the whole file or nothing: readers see the old text or the new one.
    virtual void Replace(std::string const& path, std::string const& text) = 0;
    // Does nothing when there is no such file.
    virtual void Remove(std::string const& path) = 0;
};

class TextFile {
public:
    // directory: UTF-8. Nothing is written yet, but what an exporter has left there that did not end well is removed as
    // far as possible.
    TextFile(std::string const& directory, TextFilePort& port);
    // The end: the file is removed, as far as possible.
    ~TextFile();
    TextFile(TextFile const&) = delete;
    TextFile& operator=(TextFile const&) = delete;

    // Replaces the file's text. Returns what is to be said to the user: that it cannot be written, and that it can be
    // again; nothing in between. Readers may keep others from replacing the file for a moment, so a file that was
    // written before has to fail several times.
    std::optional<std::string> Write(std::string const& text);

    std::string const& Path() const { return path_; }

private:
    TextFilePort& port_;
    std::string path_;
    bool wasWritten_ = false;
    bool hasComplained_ = false;
    int failures_ = 0;  // in a row
};

}  // namespace gputune::tool
