// What AMD's stand-in adds to every stand-in. The context and the allocation callback outlive a change of board, as a
// client keeps them.
#pragma once

#include "sim/amd/AmdDriver.h"
#include "sim/amd/spoil.h"
#include "sim/standin/StandIn.h"

namespace gputune::sim {

// The levels of a table follow its head; of a head that contradicts itself nothing more is kept.
template <>
struct LoggedSize<amd::ADLODNPerformanceLevelsX2> {
    static std::size_t Of(amd::ADLODNPerformanceLevelsX2 const& table) {
        constexpr int kHead = sizeof(table);
        constexpr int kLevel = sizeof(amd::ADLODNPerformanceLevelX2);
        int const levels = table.iNumberOfPerformanceLevels;
        bool const sound =
            levels > 0 && levels <= (GPUTUNE_SIM_MAX_RECORD - kHead) / kLevel && table.iSize == kHead + levels * kLevel;
        return static_cast<std::size_t>(sound ? table.iSize : kHead);
    }
};

class AmdStandIn final : public StandIn {
public:
    static AmdStandIn& Instance();

    // Every entry point: logs the call, obeys orders and faults, and refuses null pointers; only then
    // operation(AmdDriver&, Garbage) is called, whose result is returned.
    template <class Operation, class... Args>
    int Enter(char const* entryPoint, Operation const& operation, Args... args) {
        std::lock_guard const guard(lock_);
        if (auto const demanded = Begin(entryPoint, args...)) {
            return *demanded;
        }
        auto* const driver = static_cast<AmdDriver*>(Driver());
        if (!driver) {
            return kError;
        }
        if ((IsNullRecord(args) || ...) || (IsForeignContext(args) || ...)) {
            return kInvalidParameter;
        }
        Garbage const garbage = GarbageOf(entryPoint);
        int const result = operation(*driver, garbage);
        if (result == kOk && garbage == Garbage::ExtremeValues) {
            (SpoilArgument(args), ...);
        }
        return result;
    }

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
    AmdStandIn() : StandIn(Vendor::Amd) {}

    std::unique_ptr<BoardDriver> NewDriver(Board board) const override;
    FaultRules Rules() const override { return AmdFaultRules(); }
    std::set<std::string> AbsentWith(Board const& board) const override;

    // From the client; null without memory or before there is a context.
    void* Allocate(std::size_t bytes);

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

    amd::AdlMemoryAllocator allocator_ = nullptr;
};

}  // namespace gputune::sim
