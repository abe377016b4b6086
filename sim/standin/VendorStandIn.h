// The part of a stand-in that depends on the types of its vendor: the driver of its boards, and the arguments of its
// entry points.
#pragma once

#include <memory>
#include <type_traits>
#include <utility>

#include "sim/standin/StandIn.h"
#include "sim/standin/garbage.h"

namespace gputune::sim {

// A client's argument as the parameter of an operation: a pointer becomes a reference to what it points to.
template <class Argument>
decltype(auto) ToParameter(Argument const& argument) {
    if constexpr (std::is_pointer_v<Argument>) {
        return (*argument);
    } else {
        return (argument);
    }
}

// Self is the class of the vendor's stand-in, which derives from this one. It has
//   static constexpr int kNoBoard           the result of every entry point before there is a board
//   int Uninitialized() const               0, or the result when the client has not initialised the library
//   int Refusal(Argument argument) const    0, or the result for an argument that the library refuses
// A result of 0 is a success with every vendor.
template <class Self, class Driver>
class VendorStandIn : public StandIn {
public:
    static Self& Instance() {
        static Self standIn;
        return standIn;
    }

    // Every entry point calls this. Logs the call and obeys orders and faults. Returns Self's result when there is no
    // board, the library is not initialised or an argument is refused; else the result of operation(Driver&, Garbage).
    // After a success, garbles the records among the arguments as the board says.
    template <class Operation, class... Args>
    int Enter(char const* entryPoint, Operation const& operation, Args... args) {
        return Do(entryPoint, true, operation, args...);
    }
    // The same for entry points that work before the library is initialised.
    template <class Operation, class... Args>
    int EnterAtAnyTime(char const* entryPoint, Operation const& operation, Args... args) {
        return Do(entryPoint, false, operation, args...);
    }

protected:
    using StandIn::StandIn;

private:
    std::unique_ptr<BoardDriver> NewDriver(Board board) const override {
        return std::make_unique<Driver>(std::move(board));
    }

    template <class Operation, class... Args>
    int Do(char const* entryPoint, bool needsInitialization, Operation const& operation, Args... args) {
        std::lock_guard const guard(lock_);
        FaultStrike const strike = Begin(entryPoint, args...);
        int const result = strike.result ? *strike.result : Perform(needsInitialization, strike, operation, args...);
        End(entryPoint);
        return result;
    }

    template <class Operation, class... Args>
    int Perform(bool needsInitialization, FaultStrike const& strike, Operation const& operation, Args... args) {
        auto const& self = static_cast<Self const&>(*this);
        auto* const driver = static_cast<Driver*>(CurrentDriver());
        if (driver == nullptr) {
            return Self::kNoBoard;
        }
        int result = needsInitialization ? self.Uninitialized() : 0;
        ((result = result == 0 ? self.Refusal(args) : result), ...);
        if (result != 0) {
            return result;
        }
        result = Self::kNoBoard;
        OnBoard([&] {
            result = operation(*driver, strike.garbage);
            if (result == 0 && strike.forgetsOthers) {
                driver->Forget(false);
            }
        });
        if (result == 0 && strike.garbage != Garbage::None) {
            (GarbleArgument(args, strike.garbage), ...);
        }
        return result;
    }

    template <class Argument>
    static void GarbleArgument(Argument argument, Garbage garbage) {
        if constexpr (PointsToRecord<Argument>) {
            if constexpr (!std::is_const_v<std::remove_pointer_t<Argument>>) {
                Garble(*argument, garbage);
            }
        }
    }
};

}  // namespace gputune::sim
