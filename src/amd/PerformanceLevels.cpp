#include "amd/PerformanceLevels.h"

#include <algorithm>
#include <cstring>

namespace gputune::amd {

namespace {

std::size_t Size(int levelCount) {
    return sizeof(ADLODNPerformanceLevelsX2) + static_cast<std::size_t>(levelCount) * sizeof(ADLODNPerformanceLevelX2);
}

}  // namespace

std::optional<PerformanceLevels> PerformanceLevels::Create(int levelCount, int mode) {
    if (levelCount < 0 || levelCount > kMaxLevels) {
        return std::nullopt;
    }
    std::size_t const size = Size(levelCount);
    // Behind the end that ADL is told, room for a driver that writes the levels it has instead of those it was asked
    // for.
    constexpr std::size_t kSpare = 64 * sizeof(ADLODNPerformanceLevelX2);
    auto* const table = static_cast<ADLODNPerformanceLevelsX2*>(std::calloc(1, size + kSpare));
    if (table == nullptr) {
        return std::nullopt;
    }
    table->iSize = static_cast<int>(size);
    table->iMode = mode;
    table->iNumberOfPerformanceLevels = levelCount;
    return PerformanceLevels(table, levelCount);
}

std::optional<PerformanceLevels> PerformanceLevels::Copy() const {
    auto copy = Create(m_Capacity, m_Table->iMode);
    if (copy) {
        std::memcpy(copy->m_Table.get(), m_Table.get(), Size(m_Capacity));
    }
    return copy;
}

ADLODNPerformanceLevelsX2* PerformanceLevels::Record() {
    m_Table->iSize = std::clamp(m_Table->iSize, 0, static_cast<int>(Size(m_Capacity)));
    m_Table->iNumberOfPerformanceLevels = static_cast<int>(Counted());
    return m_Table.get();
}

std::size_t PerformanceLevels::Counted() const {
    return static_cast<std::size_t>(std::clamp(m_Table->iNumberOfPerformanceLevels, 0, m_Capacity));
}

std::span<ADLODNPerformanceLevelX2> PerformanceLevels::Levels() {
    return {First(), Counted()};
}

ADLODNPerformanceLevelX2 const* PerformanceLevels::At(int position) const {
    return position >= 0 && position < m_Capacity ? First() + position : nullptr;
}

int PerformanceLevels::CountLeadingClocks() const {
    ADLODNPerformanceLevelX2 const* const first = First();
    return static_cast<int>(
        std::find_if(first, first + m_Capacity, [](auto const& level) { return level.iClock == 0; }) - first);
}

}  // namespace gputune::amd
