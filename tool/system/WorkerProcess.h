// A second process of this program, and the pipes to it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tool/system/PipeLines.h"

namespace gputune::tool {

// The worker's standard input and standard error are the pipes to the process that started it. Its standard output is a
// pipe that it reads itself (OwnOutput).
class WorkerProcess {
public:
    // Starts this program with these arguments, and behind them the number that OwnOutput takes. Throws ToolError when
    // the system refuses. The worker has no console, and inherits the handles of its pipes and no other.
    explicit WorkerProcess(std::vector<std::string> const& arguments);
    ~WorkerProcess();  // ends the worker
    WorkerProcess(WorkerProcess const&) = delete;
    WorkerProcess& operator=(WorkerProcess const&) = delete;

    // An event that is set when a line has come and when the worker has ended.
    void* Handle() const;
    // False when the worker reads no more. Waits when the worker has left earlier lines in the pipe, as many as fill
    // it: so a line must not be sent before the one before was answered.
    bool WriteLine(std::string const& line) const;
    // The oldest line of the worker that was not taken yet.
    std::optional<std::string> TakeLine() const;
    // Whether the worker has ended, and every line was taken.
    bool IsGone() const;
    // Gives the worker a handle of its own to this object, which so exists as long as the worker does.
    void Share(void* handle) const;
    // Closes the pipe to the worker, which then ends by itself; waits for that at most this long.
    void Close(unsigned long milliseconds);
    // Ends the worker at once, and waits two seconds at most until it has ended: one that is stuck in a driver ends
    // later.
    void End();
    unsigned long Id() const;

private:
    struct CloseHandles {
        void operator()(void* handle) const;
    };
    using OwnedHandle = std::unique_ptr<void, CloseHandles>;

    OwnedHandle process_;
    OwnedHandle orders_;
    std::unique_ptr<PipeLines> answers_;
};

// Starts this program with these arguments, without a console and without the caller's handles; nobody waits for it.
// Does nothing when the system refuses.
void StartAlone(std::vector<std::string> const& arguments);

// What this process, a worker, has written to its own standard output.
class OwnOutput {
public:
    // `handle` is the number that the worker was started with.
    explicit OwnOutput(std::string const& handle);

    // Everything since the last call.
    std::string Take() const;

private:
    void* pipe_;
};

}  // namespace gputune::tool
