// The process that the user starts: it runs a hold, keeps its journal and its lock, and loads no vendor's library.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tool/board/Session.h"
#include "tool/hold/Hold.h"
#include "tool/hold/WorkerHost.h"
#include "tool/system/BoardLock.h"
#include "tool/system/Console.h"

namespace gputune::tool {

// Where a hold is shown, and where the user ends it.
class HoldView {
public:
    virtual ~HoldView() = default;
    // Checks what only the user knows: asks. Throws ToolError when the answer is no.
    virtual void Begin(BoardFacts const& board) = 0;
    // False when nobody reads the output any more.
    virtual bool Show(HoldReport const& report) = 0;
    // Waits until the worker's event is set, for an interrupt or a key, or for the time. `worker` may be null.
    virtual Wake Wait(InterruptEvent const& interrupt, void* worker, unsigned long milliseconds) = 0;
};

class Supervisor : private HoldPort {
public:
    // `journalFile`: the journal to take back; empty: the board's own.
    Supervisor(GlobalOptions options, HoldView& view, std::string journalFile = "");
    ~Supervisor() override;
    Supervisor(Supervisor const&) = delete;
    Supervisor& operator=(Supervisor const&) = delete;

    // Holds until the user ends it or nothing can be held any more; without settings, only takes back what the journal
    // says. Throws ToolError when the hold did not begin or did not end as it should.
    void Run(std::optional<HoldSettings> settings);

private:
    void StartWorker() override { worker_.Start(); }
    void EndWorker() override { worker_.End(); }
    void SendToWorker(std::string const& line) override { worker_.Send(line); }
    std::optional<Journal> Begin(BoardFacts const& board) override;
    void WriteJournal(TakeBack& takeBack) override;
    void RemoveJournal() override;
    void Report(HoldReport const& report) override;

    std::string BoardKey(BoardFacts const& board) const;

    std::unique_ptr<BoardLock> lock_;  // before the worker, which ends first
    WorkerHost worker_;
    HoldView& view_;
    std::string journalFile_;
    bool isRead_ = true;  // somebody reads the output
};

// The journals there are, for `restore`.
std::vector<std::string> JournalFiles();

}  // namespace gputune::tool
