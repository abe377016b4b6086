// What every stand-in library keeps for its process: the driver of the board loaded last, the orders given to it, and
// the record of calls. VendorStandIn adds what depends on a vendor's types.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "sim/board/FaultRules.h"
#include "sim/standin/BoardDriver.h"
#include "sim/standin/CallLog.h"
#include "sim/standin/PausePoint.h"
#include "sim/standin/SharedPart.h"
#include "sim/standin/StateFile.h"

namespace gputune::sim {

class StandIn {
public:
    // The object of this library. Each vendor's library defines this function.
    static StandIn& Instance();

    virtual ~StandIn() = default;
    StandIn(StandIn const&) = delete;
    StandIn& operator=(StandIn const&) = delete;

    // Starts a board without orders, without logged calls, in real time. Throws std::runtime_error when the board is
    // another vendor's or an entry point cannot be hidden; the former board then stays.
    void Load(Board board);

    // From now on the board's settings, model, time and faults are those in the file, which other processes share; a
    // missing or empty file gets the present ones. path: UTF-8. Throws StateError when the file cannot be used; nothing
    // has changed then.
    void KeepState(std::string const& path);

    // False when there is no such entry point, or when it returns no result code.
    bool SetResult(std::string const& entryPoint, int result);
    void ClearFaults();
    // False when there is no such entry point.
    bool Hide(std::string const& entryPoint);
    void Advance(int milliseconds);
    int AllocationCount() const { return allocations_; }
    CallLog& Calls() { return calls_; }

    double Now() const { return shared_.time.Now(); }

protected:
    // rules: the entry points there are, hidden or not.
    StandIn(Vendor vendor, FaultRules rules) : vendor_(vendor), rules_(rules) {}

    virtual std::unique_ptr<BoardDriver> NewDriver(Board board) const = 0;
    // The entry points that a library with this board does not have, beside those that its faults say are missing.
    virtual std::set<std::string> AbsentWith(Board const&) const { return {}; }

    // Every entry point calls this first, under the lock. Logs the call, and obeys a fault that crashes or hangs. When
    // an order or another fault demands a result, the entry point must return it and do nothing else.
    template <class... Args>
    FaultStrike Begin(char const* entryPoint, Args... args) {
        LoggedCall call{.entryPoint = entryPoint, .args = {}, .record = {}};
        (LogArgument(call, args), ...);
        calls_.Add(std::move(call));
        return Meet(entryPoint);
    }
    // Every entry point calls this last.
    void End(char const* entryPoint) const { pause_.AfterCall(entryPoint); }
    // Does what looks at the board or changes it, on the state that processes share. False when that cannot be used.
    bool OnBoard(std::function<void()> const& operation);

    // Null before there is a board.
    BoardDriver* CurrentDriver() const { return driver_.get(); }
    bool IsHidden(std::string const& entryPoint) const { return hidden_.contains(entryPoint); }
    void CountAllocation() { ++allocations_; }

    std::mutex lock_;

private:
    FaultStrike Meet(char const* entryPoint);
    StateBytes SavedState();
    void RestoreState(StateBytes const& bytes);

    Vendor const vendor_;
    FaultRules const rules_;
    std::unique_ptr<BoardDriver> driver_;
    SharedPart shared_;
    std::map<std::string, int, std::less<>> results_;
    std::set<std::string> hidden_;
    CallLog calls_;
    std::uint64_t identity_ = 0;  // the board's
    std::unique_ptr<StateFile> state_;
    PausePoint pause_;
    int allocations_ = 0;
};

}  // namespace gputune::sim
