// What AMD's stand-in adds to every stand-in. The context and the allocation callback stay when the board changes: the
// client keeps them.
#pragma once

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "sim/amd/AmdDriver.h"
#include "sim/amd/adl_garbage.h"
#include "sim/standin/VendorStandIn.h"

namespace gputune::sim {

// The levels of a table follow its head; they are not kept when the head contradicts itself.
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

class AmdStandIn final : public VendorStandIn<AmdStandIn, AmdDriver> {
public:
    // For the entry point that creates the context; returns it.
    amd::AdlContext CreateContext(amd::AdlMemoryAllocator allocator) {
        allocator_ = allocator;
        return this;
    }

    // Copies a list into memory from the client's allocation callback, garbled as the garbage says. An empty list has
    // no memory.
    template <class Record>
    int HandOut(std::vector<Record> list, int& count, Record*& out, Garbage garbage) {
        constexpr std::size_t kShort = 5;
        if (garbage == Garbage::HugeCount) {
            list.resize(kHugeListSize);
        } else if (garbage == Garbage::ShortList && list.size() > kShort) {
            list.resize(kShort);
        }
        count = garbage == Garbage::NegativeCount ? -1 : static_cast<int>(list.size());
        out = nullptr;
        if (garbage == Garbage::NullList || list.empty()) {
            return amd::kAdlOk;
        }
        std::size_t const bytes = list.size() * sizeof(Record);
        void* const block = Allocate(bytes);
        if (block == nullptr) {
            return kAdlError;
        }
        std::memcpy(block, list.data(), bytes);
        out = static_cast<Record*>(block);
        return amd::kAdlOk;
    }

private:
    friend class VendorStandIn<AmdStandIn, AmdDriver>;
    static constexpr int kNoBoard = kAdlError;

    AmdStandIn() : VendorStandIn(Vendor::Amd, AmdFaultRules()) {}

    std::set<std::string> AbsentWith(Board const& board) const override;

    static int Uninitialized() { return amd::kAdlOk; }

    // Refuses null pointers and foreign contexts. A null context stands for the only one there is.
    template <class Argument>
    int Refusal(Argument argument) const {
        bool refused = false;
        if constexpr (std::is_same_v<Argument, amd::AdlContext>) {
            refused = argument != nullptr && argument != this;
        } else if constexpr (std::is_pointer_v<Argument>) {
            refused = argument == nullptr;
        }
        return refused ? kAdlInvalidParameter : amd::kAdlOk;
    }

    // From the client's callback; null without memory or before there is a context.
    void* Allocate(std::size_t bytes);

    amd::AdlMemoryAllocator allocator_ = nullptr;
};

}  // namespace gputune::sim
