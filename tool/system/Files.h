// Files by their UTF-8 paths. Every function throws ToolError with the path and the system's reason.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace gputune::tool {

// The whole file; of one that is larger than `enough` bytes, at least one byte more than that.
std::string ReadTextFile(std::string const& path, std::size_t enough);

// Whether both name one file that exists.
bool IsSameFile(std::string const& one, std::string const& other);

// What becomes of a file that is there already.
enum class Existing { Keep, Replace };

// A file that is written piece by piece: what Write was given is in the file when it returns, whatever happens then.
// Other programs may read along.
class OutputFile {
public:
    // With Existing::Keep it is an error when the file exists. Messages call the file `shown`, when it is given.
    OutputFile(std::string const& path, Existing existing, std::string const& shown = "");

    void Write(std::string_view text);

private:
    struct Close {
        void operator()(void* handle) const;
    };

    std::string shown_;
    std::unique_ptr<void, Close> handle_;
};

// Writes a file as a whole or not at all: it gets its name when it is complete.
void WriteWholeFile(std::string const& path, std::string_view text, Existing existing);

}  // namespace gputune::tool
