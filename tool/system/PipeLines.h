// The lines that come through a pipe, read by a thread of their own, so that nobody waits for the other side.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace gputune::tool {

class PipeLines {
public:
    // Takes over the pipe's handle. `atEnd`, if there is one, is called by the thread when the other side has closed
    // the pipe. Throws ToolError when no thread can be started.
    explicit PipeLines(void* pipe, std::function<void()> atEnd = nullptr);
    // Gives the reading up; waits a second at most for the thread.
    ~PipeLines();
    PipeLines(PipeLines const&) = delete;
    PipeLines& operator=(PipeLines const&) = delete;

    // An event that is set when a line has come and when the other side has closed the pipe. It is reset by whoever
    // waits for it.
    void* Handle() const;
    // The oldest line that was not taken yet, without its line end.
    std::optional<std::string> Take();
    // Whether the other side has closed the pipe and every line was taken.
    bool IsAtEnd() const;

private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
    void* thread_;
};

// Writes the whole line with a line feed behind it; false when nobody reads.
bool WritePipeLine(void* pipe, std::string const& line);

}  // namespace gputune::tool
