// Records filled with extreme values: the greatest and the least integer in turn, the greatest number. A vendor
// overloads Spoil for records with a head by which they say what they are: that stays.
#pragma once

#include <cfloat>
#include <climits>
#include <cstddef>

namespace gputune::sim {

inline void SpoilInts(void* start, std::size_t bytes) {
    auto* const values = static_cast<int*>(start);
    for (std::size_t i = 0; i < bytes / sizeof(int); ++i) {
        values[i] = i % 2 == 0 ? INT_MAX : INT_MIN;
    }
}

template <class Record>
void Spoil(Record& record) {
    // NOLINTNEXTLINE(bugprone-sizeof-expression): of the place of a pointer, too, its own size
    SpoilInts(&record, sizeof(record));
}
inline void Spoil(float& value) {
    value = FLT_MAX;
}

}  // namespace gputune::sim
