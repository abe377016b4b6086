// One run of `gputunectl hold` on a board of its own, and what happens to it.
#pragma once

#include <windows.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "HeldBoard.h"
#include "kill_cells.h"

namespace gputune::test {

class HandleOwner {
public:
    explicit HandleOwner(HANDLE handle = nullptr) : handle_(handle) {}
    ~HandleOwner() {
        if (handle_ != nullptr) {
            CloseHandle(handle_);
        }
    }
    HandleOwner(HandleOwner&& other) noexcept : handle_(other.handle_) { other.handle_ = nullptr; }
    HandleOwner& operator=(HandleOwner&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    HANDLE Get() const { return handle_; }

private:
    HANDLE handle_;
};

// The processes and files of a run; it ends all of them.
class HoldRun {
public:
    // boards: the folder of the board files. folder: an empty one of this run's own. cell: none for a run that goes on.
    HoldRun(std::filesystem::path const& tool, std::filesystem::path const& boards, std::filesystem::path const& folder,
            std::string const& board, Cell const* cell);
    ~HoldRun();
    HoldRun(HoldRun const&) = delete;
    HoldRun& operator=(HoldRun const&) = delete;

    // Each waits until it is so, a minute at most unless it says otherwise; false when it is not.
    bool WaitUntilStep();
    bool WaitUntilHeld();
    bool WaitUntilSupervisorEnded();
    static bool Eventually(std::function<bool()> const& condition, unsigned long milliseconds = 60000);

    // What happens to the processes. Continue lets the process at the step go on.
    void KillWorker();
    void KillSupervisor();
    void SuspendWorker();
    void SuspendSupervisor();
    void Continue();
    void StandStill(unsigned long milliseconds);  // both processes
    void Interrupt();                             // Ctrl+C
    bool Restore();                               // the next start; false when it fails

    bool IsAutomatic() const;
    BoardView Look() const;
    bool HasSaid(std::string const& text) const;
    bool SupervisorRuns() const;
    bool WorkerRuns() const;  // the one that was at the step
    bool AnotherWorkerHolds() const;
    std::vector<std::string> Calls() const;  // of the vendor's library, by all workers
    std::string Output() const;              // its end

private:
    struct Call {
        DWORD process;
        std::string entryPoint;
    };
    HandleOwner Start(std::wstring const& arguments, std::wstring const& output) const;
    std::vector<Call> Trace() const;
    void FindWorker();

    std::filesystem::path tool_;
    std::filesystem::path folder_;
    std::string name_;
    std::vector<std::wstring> environment_;
    HandleOwner reached_, go_;
    HandleOwner supervisor_;
    HandleOwner worker_;
    DWORD workerId_ = 0;
    std::unique_ptr<HeldBoard> board_;
};

}  // namespace gputune::test
