// What every stand-in library keeps for its process: the driver of the board loaded last, the orders given to it, and
// the record of calls. VendorStandIn adds what depends on a vendor's types.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "sim/board/FaultRules.h"
#include "sim/model/TimeSource.h"
#include "sim/standin/BoardDriver.h"
#include "sim/standin/CallLog.h"

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

    // False when there is no such entry point, or when it returns no result code.
    bool SetResult(std::string const& entryPoint, int result);
    void ClearFaults();
    // False when there is no such entry point.
    bool Hide(std::string const& entryPoint);
    void Advance(int milliseconds);
    int AllocationCount() const { return allocations_; }
    CallLog& Calls() { return calls_; }

    double Now() const { return time_.Now(); }

protected:
    // rules: the entry points there are, hidden or not.
    StandIn(Vendor vendor, FaultRules rules) : vendor_(vendor), rules_(rules) {}

    virtual std::unique_ptr<BoardDriver> NewDriver(Board board) const = 0;
    // The entry points that a library with this board does not have, beside those that its faults say are missing.
    virtual std::set<std::string> AbsentWith(Board const&) const { return {}; }

    // Every entry point calls this first, under the lock. Logs the call. Returns the result that an order or a fault
    // demands, if any: the entry point must then return it and do nothing else.
    template <class... Args>
    std::optional<int> Begin(char const* entryPoint, Args... args) {
        LoggedCall call{.entryPoint = entryPoint, .args = {}, .record = {}};
        (LogArgument(call, args), ...);
        calls_.Add(std::move(call));
        return Demanded(entryPoint);
    }
    // The garbage that the board orders of this entry point.
    Garbage GarbageOf(char const* entryPoint) const;

    // Null before there is a board.
    BoardDriver* CurrentDriver() const { return driver_.get(); }
    bool IsHidden(std::string const& entryPoint) const { return hidden_.contains(entryPoint); }
    void CountAllocation() { ++allocations_; }

    std::mutex lock_;

private:
    std::optional<int> Demanded(char const* entryPoint) const;
    Fault const* FindFault(char const* entryPoint) const;

    Vendor const vendor_;
    FaultRules const rules_;
    std::unique_ptr<BoardDriver> driver_;
    std::vector<Fault> faults_;
    std::map<std::string, int, std::less<>> results_;
    std::set<std::string> hidden_;
    CallLog calls_;
    TimeSource time_;
    int allocations_ = 0;
};

}  // namespace gputune::sim
