// What NVAPI's stand-in adds to every stand-in. Its entry points have identifiers instead of exports; that the client
// has initialised the library outlives a change of board.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "sim/nvidia/NvidiaDriver.h"
#include "sim/standin/StandIn.h"
#include "sim/standin/spoil.h"

namespace gputune::sim {

// The version and the count stay.
inline void Spoil(nvidia::NV_GPU_THERMAL_SETTINGS& record) {
    SpoilInts(record.sensor, sizeof(record.sensor));
}

class NvidiaStandIn final : public StandIn {
public:
    static NvidiaStandIn& Instance();

    // Every entry point: logs the call, obeys orders and faults, refuses null pointers; only then
    // operation(NvidiaDriver&, Garbage) is called, whose result is returned.
    template <class Operation, class... Args>
    int Enter(char const* entryPoint, Operation const& operation, Args... args) {
        return Do(entryPoint, true, operation, args...);
    }
    // The same, also before the library is initialised.
    template <class Operation, class... Args>
    int EnterAtAnyTime(char const* entryPoint, Operation const& operation, Args... args) {
        return Do(entryPoint, false, operation, args...);
    }

    // Whether the entry point is handed out for its identifier; logs the question.
    bool HandsOut(std::uint32_t identifier, char const* entryPoint);

    void SetInitialized() { initialized_ = true; }

private:
    NvidiaStandIn() : StandIn(Vendor::Nvidia) {}

    std::unique_ptr<BoardDriver> NewDriver(Board board) const override;
    FaultRules Rules() const override { return NvidiaFaultRules(); }
    std::set<std::string> AbsentWith(Board const& board) const override;

    template <class Operation, class... Args>
    int Do(char const* entryPoint, bool needsInitialization, Operation const& operation, Args... args) {
        std::lock_guard const guard(lock_);
        if (auto const demanded = Begin(entryPoint, args...)) {
            return *demanded;
        }
        auto* const driver = static_cast<NvidiaDriver*>(Driver());
        if (!driver) {
            return kNvError;
        }
        if (needsInitialization && !initialized_) {
            return kNvNotInitialized;
        }
        if ((IsNull(args) || ...)) {
            return kNvInvalidArgument;
        }
        Garbage const garbage = GarbageOf(entryPoint);
        int const result = operation(*driver, garbage);
        if (result == kNvOk && garbage == Garbage::ExtremeValues) {
            (SpoilArgument(args), ...);
        }
        return result;
    }

    template <class Argument>
    static bool IsNull(Argument argument) {
        // Handles are judged with the board at hand.
        if constexpr (std::is_pointer_v<Argument> && !std::is_same_v<Argument, nvidia::NvPhysicalGpuHandle>) {
            return argument == nullptr;
        }
        return false;
    }
    template <class T>
    static bool IsNull(AddressOnly<T> argument) {
        return argument.address == nullptr;
    }
    template <class Argument>
    static void SpoilArgument(Argument argument) {
        if constexpr (std::is_same_v<Argument, nvidia::NV_GPU_THERMAL_SETTINGS*>) {
            Spoil(*argument);
        }
    }

    bool initialized_ = false;
};

}  // namespace gputune::sim
