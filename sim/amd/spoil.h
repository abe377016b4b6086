// What of AMD's records is spoilt.
#pragma once

#include <cstddef>
#include <cstdint>

#include "amd/adl_records.h"
#include "sim/standin/spoil.h"

namespace gputune::sim {

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
