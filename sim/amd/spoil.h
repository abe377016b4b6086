// Records filled with extreme values: the greatest and the least integer in turn, the greatest number. Heads by which
// the record says what it is stay.
#pragma once

#include <cfloat>
#include <climits>
#include <cstddef>
#include <cstdint>

#include "amd/adl_records.h"

namespace gputune::sim {

inline void SpoilInts(void* start, std::size_t bytes) {
    auto* const values = static_cast<int*>(start);
    for (std::size_t i = 0; i < bytes / sizeof(int); ++i) {
        values[i] = i % 2 == 0 ? INT_MAX : INT_MIN;
    }
}

template <class Record>
void Spoil(Record& record) {
    SpoilInts(&record, sizeof(record));
}
inline void Spoil(float& value) {
    value = FLT_MAX;
}
inline void Spoil(amd::ADLMemoryInfo& record) {
    record.iMemorySize = INT64_MIN;
    record.iMemoryBandwidth = INT64_MAX;
}
inline void Spoil(amd::ADLODNPerformanceLevelsX2& table) {
    SpoilInts(&table + 1,
              static_cast<std::size_t>(table.iNumberOfPerformanceLevels) * sizeof(amd::ADLODNPerformanceLevelX2));
}
inline void Spoil(amd::ADLODNCapabilitiesX2& record) {
    SpoilInts(&record.sEngineClockRange, sizeof(record) - offsetof(amd::ADLODNCapabilitiesX2, sEngineClockRange));
}
inline void Spoil(amd::ADLOD8InitSetting& record) {
    SpoilInts(record.od8SettingTable, sizeof(record.od8SettingTable));
}
inline void Spoil(amd::ADLOD8CurrentSetting& record) {
    SpoilInts(record.Od8SettingTable, sizeof(record.Od8SettingTable));
}

}  // namespace gputune::sim
