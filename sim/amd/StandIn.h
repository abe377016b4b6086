// What the stand-in library keeps for its process: the driver of the board loaded last, the orders given to it, and the
// record of calls. The context and the allocation callback outlive a change of board, as a client keeps them.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "amd/CallLog.h"
#include "amd/Driver.h"
#include "amd/spoil.h"
#include "model/TimeSource.h"

namespace gputune::sim {

class StandIn {
public:
    static StandIn& Instance();

    // A fresh state: no orders, no calls, real time. Throws std::runtime_error when an export cannot be hidden.
    void Load(Board board);

    void SetResult(std::string const& entryPoint, int result);
    void ClearFaults();
    bool Hide(std::string const& entryPoint);
    void Advance(int milliseconds);
    int AllocationCount() const { return allocations_; }
    CallLog& Calls() { return calls_; }
    std::mutex& Lock() { return lock_; }

    // Every entry point: logs the call, obeys orders and faults, and refuses null pointers; only then
    // operation(Driver&, Garbage) is called, whose result is returned.
    template <class Operation, class... Args>
    int Enter(char const* entryPoint, Operation const& operation, Args... args) {
        std::lock_guard const guard(lock_);
        LoggedCall call{.entryPoint = entryPoint, .args = {}, .record = {}};
        (LogArgument(call, args), ...);
        calls_.Add(std::move(call));
        if (auto const order = results_.find(entryPoint); order != results_.end()) {
            return order->second;
        }
        if (!driver_) {
            return kError;
        }
        Fault const* const fault = FindFault(entryPoint);
        if (fault && fault->kind == FaultKind::Result) {
            return fault->result;
        }
        if ((IsNullRecord(args) || ...) || (IsForeignContext(args) || ...)) {
            return kInvalidParameter;
        }
        Garbage const garbage = fault ? fault->garbage : Garbage::None;
        int const result = operation(*driver_, garbage);
        if (result == kOk && garbage == Garbage::ExtremeValues) {
            (SpoilArgument(args), ...);
        }
        return result;
    }

    double Now() const { return time_.Now(); }

    // For the entry point that creates the context; returns it.
    amd::AdlContext CreateContext(amd::AdlMemoryAllocator allocator);

    // A copy of the list in memory of the client's, with its count; spoilt as the garbage says. padding: how many
    // entries a list with a huge count really has.
    template <class Record>
    int HandOut(std::vector<Record> list, int& count, Record*& out, Garbage garbage, std::size_t padding) {
        constexpr std::size_t kShort = 5;
        if (garbage == Garbage::HugeCount) {
            list.resize(padding);
        } else if (garbage == Garbage::ShortList && list.size() > kShort) {
            list.resize(kShort);
        }
        count = garbage == Garbage::NegativeCount ? -1 : static_cast<int>(list.size());
        out = nullptr;
        if (garbage == Garbage::NullList || list.empty()) {
            return kOk;
        }
        std::size_t const bytes = list.size() * sizeof(Record);
        void* const block = Allocate(bytes);
        if (!block) {
            return kError;
        }
        std::memcpy(block, list.data(), bytes);
        out = static_cast<Record*>(block);
        return kOk;
    }

private:
    // From the client; null without memory or before there is a context.
    void* Allocate(std::size_t bytes);

    Fault const* FindFault(char const* entryPoint) const;

    template <class Argument>
    static bool IsNullRecord(Argument argument) {
        if constexpr (std::is_pointer_v<Argument> && !std::is_same_v<Argument, amd::AdlContext>) {
            return argument == nullptr;
        }
        return false;
    }
    // Null stands for the only context there is.
    template <class Argument>
    bool IsForeignContext(Argument argument) const {
        if constexpr (std::is_same_v<Argument, amd::AdlContext>) {
            return argument != nullptr && argument != this;
        }
        return false;
    }
    template <class Argument>
    static void SpoilArgument(Argument argument) {
        if constexpr (std::is_pointer_v<Argument> && !std::is_same_v<Argument, amd::AdlContext>) {
            if constexpr (!std::is_function_v<std::remove_pointer_t<Argument>>) {
                Spoil(*argument);
            }
        }
    }

    std::mutex lock_;
    std::unique_ptr<Driver> driver_;
    std::map<std::string, int, std::less<>> results_;
    std::set<std::string> hidden_;
    CallLog calls_;
    TimeSource time_;
    amd::AdlMemoryAllocator allocator_ = nullptr;
    int allocations_ = 0;
};

}  // namespace gputune::sim
