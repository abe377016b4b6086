// What Intel's stand-in adds to every stand-in. That the client has initialised the library outlives a change of board.
#pragma once

#include <type_traits>

#include "sim/intel/IntelDriver.h"
#include "sim/intel/spoil.h"
#include "sim/standin/StandIn.h"

namespace gputune::sim {

class IntelStandIn final : public StandIn {
public:
    static IntelStandIn& Instance();

    // Every entry point: logs the call, obeys orders and faults, refuses handles and pointers that are null and records
    // of another size; only then operation(IntelDriver&, Garbage) is called, whose result is returned.
    template <class Operation, class... Args>
    int Enter(char const* entryPoint, Operation const& operation, Args... args) {
        return Do(entryPoint, true, operation, args...);
    }
    // The same, also before the library is initialised.
    template <class Operation, class... Args>
    int EnterAtAnyTime(char const* entryPoint, Operation const& operation, Args... args) {
        return Do(entryPoint, false, operation, args...);
    }
    // For an entry point that this driver does not have.
    int EnterUnsupported(char const* entryPoint);

    // For the entry points that begin and end the use of the library; a handle that is not its own is refused.
    int Initialize(intel::ctl_init_args_t& args, intel::ctl_api_handle_t& handle);
    int Close(intel::ctl_api_handle_t handle);
    bool IsOwn(intel::ctl_api_handle_t handle) const;

private:
    IntelStandIn() : StandIn(Vendor::Intel) {}

    std::unique_ptr<BoardDriver> NewDriver(Board board) const override;
    FaultRules Rules() const override { return IntelFaultRules(); }

    template <class Operation, class... Args>
    int Do(char const* entryPoint, bool needsInitialization, Operation const& operation, Args... args) {
        std::lock_guard const guard(lock_);
        if (auto const demanded = Begin(entryPoint, args...)) {
            return *demanded;
        }
        auto* const driver = static_cast<IntelDriver*>(Driver());
        if (!driver) {
            return kCtlNotAvailable;
        }
        int refusal = needsInitialization && uses_ == 0 ? kCtlNotInitialized : kCtlSuccess;
        ((refusal = refusal == kCtlSuccess ? Judge(args) : refusal), ...);
        if (refusal != kCtlSuccess) {
            return refusal;
        }
        Garbage const garbage = GarbageOf(entryPoint);
        int const result = operation(*driver, garbage);
        if (result == kCtlSuccess && garbage == Garbage::ExtremeValues) {
            (SpoilArgument(args), ...);
        }
        return result;
    }

    template <class Argument>
    static constexpr bool kIsHandle = std::is_same_v<Argument, intel::ctl_api_handle_t> ||
                                      std::is_same_v<Argument, intel::ctl_device_adapter_handle_t> ||
                                      std::is_same_v<Argument, intel::ctl_fan_handle_t>;

    template <class Argument>
    static int Judge(Argument argument) {
        if constexpr (kIsHandle<Argument>) {
            return argument ? kCtlSuccess : kCtlNullHandle;
        } else if constexpr (std::is_pointer_v<Argument>) {
            if (!argument) {
                return kCtlNullPointer;
            }
            if constexpr (requires { argument->Size; }) {
                return argument->Size == sizeof(*argument) ? kCtlSuccess : kCtlUnsupportedSize;
            }
        }
        return kCtlSuccess;
    }
    template <class Argument>
    static void SpoilArgument(Argument argument) {
        if constexpr (std::is_pointer_v<Argument> && !kIsHandle<Argument>) {
            if constexpr (!std::is_const_v<std::remove_pointer_t<Argument>>) {
                Spoil(*argument);
            }
        }
    }

    int uses_ = 0;  // initialisations less closings
};

}  // namespace gputune::sim
