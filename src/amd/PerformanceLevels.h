// A table of OverdriveN performance levels, in the one block that ADL reads and writes: a head, then the levels.
#pragma once

#include <cstdlib>
#include <memory>
#include <optional>
#include <span>

#include "amd/adl_records.h"

namespace gputune::amd {

class PerformanceLevels {
public:
    // A zeroed table for `levelCount` levels (0 to kMaxLevels) with its head filled in. Nothing when the count is out
    // of range or memory runs out.
    static std::optional<PerformanceLevels> Create(int levelCount, int mode);

    // A table of its own with the same content; nothing when memory runs out.
    std::optional<PerformanceLevels> Copy() const;

    // More than any board has; a larger count is garbage.
    static constexpr int kMaxLevels = 65536;

    // The block as ADL takes it. Its head is as ADL left it, but size and count are limited to what the block holds,
    // because ADL believes them.
    ADLODNPerformanceLevelsX2* Record();

    void SetMode(int mode) { m_Table->iMode = mode; }

    // The levels that the head counts, never more than the block holds, whatever ADL wrote into the head.
    std::span<ADLODNPerformanceLevelX2> Levels();

    // The level at a position of the block; null when the block does not reach that far.
    ADLODNPerformanceLevelX2 const* At(int position) const;

    // How many leading levels of the block have a non-zero clock. The enabled flag does not matter.
    int CountLeadingClocks() const;

private:
    struct Free {
        void operator()(void* block) const { std::free(block); }
    };

    PerformanceLevels(ADLODNPerformanceLevelsX2* table, int capacity) : m_Table(table), m_Capacity(capacity) {}

    ADLODNPerformanceLevelX2* First() const { return reinterpret_cast<ADLODNPerformanceLevelX2*>(m_Table.get() + 1); }
    std::size_t Counted() const;

    std::unique_ptr<ADLODNPerformanceLevelsX2, Free> m_Table;
    int m_Capacity;
};

}  // namespace gputune::amd
