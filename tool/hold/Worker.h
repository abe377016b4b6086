// The process that loads the library and talks to the driver, on the orders of a supervisor.
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "tool/board/Session.h"
#include "tool/hold/Protocol.h"
#include "tool/system/PipeLines.h"
#include "tool/system/WorkerProcess.h"

namespace gputune::tool {

class Worker {
public:
    // `outputHandle`: see OwnOutput.
    Worker(GlobalOptions options, std::string const& outputHandle);
    ~Worker();
    Worker(Worker const&) = delete;
    Worker& operator=(Worker const&) = delete;

    // Obeys until the supervisor closes its pipe. When it does so, or says nothing for kSilenceLimit, an armed worker
    // takes everything back. Where it cannot, because the driver hangs or refuses, it leaves that to a new process.
    // Returns the exit code.
    int Run();

private:
    enum class Wake { Line, Closed, Silence };

    Wake WaitForLine(std::string& line);
    Answer Obey(Request const& request);
    void Arm(std::optional<TakeBack> const& takeBack);
    void Open(Answer& answer);
    void Sample(Answer& answer) const;
    bool TakeBackAlone() const;
    void Watch() const;

    GlobalOptions options_;
    OwnOutput output_;
    std::atomic<bool> isArmed_ = false;  // as armed_; also read by the thread that reads the orders
    void* finished_;                     // an event: for that thread, too
    PipeLines orders_;
    std::unique_ptr<Session> session_;
    std::optional<TakeBack> armed_;
};

}  // namespace gputune::tool
