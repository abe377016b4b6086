// The worker process of a program that talks to a driver: started, heard and ended here, as WorkerLink wants it.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tool/board/Session.h"
#include "tool/system/Console.h"
#include "tool/system/WorkerProcess.h"

namespace gputune::tool {

class WorkerHost {
public:
    // The worker gets these options; a board file's path becomes a full one.
    explicit WorkerHost(GlobalOptions options);

    void Start();  // throws ToolError when the system refuses
    void End();    // at once, whatever the worker does
    void Send(std::string const& line);
    // Lets the worker end by itself; waits for that at most this long.
    void Close(unsigned long milliseconds);
    // From now on, the worker and all that follow it have a handle of their own to this object.
    void Share(void* handle);

    // Passes on what the worker said, and that it has ended. Either may end it and start another.
    void Hear(std::function<void(std::string const&)> const& onLine, std::function<void()> const& onGone);
    // An event that is set when there is something to hear; null without a worker.
    void* Handle() const;

    GlobalOptions const& Options() const { return options_; }

private:
    GlobalOptions options_;
    std::unique_ptr<WorkerProcess> worker_;
    void* shared_ = nullptr;
};

// What a supervisor waited for.
enum class Wake { Time, Worker, Stop };

// Waits for the interrupt, until the worker's event is set, or for the time. Both may be null.
Wake WaitForWorker(InterruptEvent const* interrupt, void* worker, unsigned long milliseconds);

// The time that WorkerLink and what is built on it count in: seconds, which go on while the machine sleeps.
double SupervisorTime();
// Until that moment, a minute at most, rounded up.
unsigned long MillisecondsUntil(double time);

}  // namespace gputune::tool
