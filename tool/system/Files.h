// Files by their UTF-8 paths. Every function throws ToolError with the path and the system's reason.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace gputune::tool {

// The folder of this program; ends with the separator.
std::wstring ProgramDirectory();

// The system's folder for its own libraries; ends with the separator.
std::wstring SystemDirectory();

// The whole file. Of a file that is larger than `enough` bytes, at least one byte more than `enough`.
std::string ReadTextFile(std::string const& path, std::size_t enough);

// Whether both paths lead to the same existing file.
bool IsSameFile(std::string const& one, std::string const& other);

// What to do with a file that exists already.
enum class Existing { Keep, Replace };

// A file that is written piece by piece. Nothing is buffered: when Write returns, the text is in the file. Other
// programs may read the file meanwhile.
class OutputFile {
public:
    // With Existing::Keep it is an error when the file exists. Messages name the file `shown`, or else `path`.
    OutputFile(std::string const& path, Existing existing, std::string const& shown = "");

    void Write(std::string_view text);
    // Returns when everything is on the disk.
    void Flush();

private:
    struct Close {
        void operator()(void* handle) const;
    };

    std::string shown_;
    std::unique_ptr<void, Close> handle_;
};

// Writes the whole file or nothing: it writes to another name and renames the file when it is complete.
void WriteWholeFile(std::string const& path, std::string_view text, Existing existing);

// The same, replacing an existing file; when it returns, the file survives a power cut.
void WriteDurably(std::string const& path, std::string_view text);

bool FileExists(std::string const& path);

// Does nothing when there is no such file.
void RemoveFile(std::string const& path);

// The folder in which the tool keeps what has to survive it; it is made when it is missing. Ends with the separator. In
// the user's folder for programs' local data, or else the one that the environment variable GPUTUNE_STATE_DIRECTORY
// names.
std::string StateDirectory();

// The full paths of the files in this folder, which ends with the separator, whose names fit the pattern "*.json".
std::vector<std::string> FilesIn(std::string const& folder, std::string const& pattern);

// The file's full path; `path` itself when the system has none for it.
std::string FullPath(std::string const& path);

}  // namespace gputune::tool
