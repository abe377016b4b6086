// The process that loads the library and talks to the driver, on the orders of a supervisor.
#pragma once

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
    Worker(GlobalOptions const& options, std::string const& outputHandle);
    ~Worker();
    Worker(Worker const&) = delete;
    Worker& operator=(Worker const&) = delete;

    // Obeys until the supervisor closes its pipe. When it does so, or says nothing for kSilenceLimit, an armed worker
    // takes everything back. Returns the exit code.
    int Run();

private:
    enum class Wake { Line, Closed, Silence };

    Wake WaitForLine(std::string& line);
    Answer Obey(Request const& request);
    void Open(Answer& answer);
    void Sample(Answer& answer) const;
    void TakeBackAlone();

    GlobalOptions options_;
    OwnOutput output_;
    PipeLines orders_;
    std::unique_ptr<Session> session_;
    std::optional<TakeBack> armed_;
};

}  // namespace gputune::tool
