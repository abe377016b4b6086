// What garbage makes of AMD's records.
#pragma once

#include <cstdint>

#include "amd/adl_records.h"
#include "sim/standin/garbage.h"

namespace gputune::sim {

// A table of so many levels of 16 bytes has a size beyond 32 bits.
constexpr int kHugeAdlCount = 0x10000000;

template <>
inline void Garble(amd::AdapterInfo& record, Garbage garbage) {
    GarbleText(record.strUDID, garbage, 'U');
    GarbleText(record.strAdapterName, garbage, 'N');
    GarbleText(record.strDisplayName, garbage, 'D');
    GarbleText(record.strDriverPath, garbage, 'P');
    GarbleText(record.strDriverPathExt, garbage, 'E');
    GarbleText(record.strPNPString, garbage, 'S');
}
template <>
inline void Garble(amd::AdapterInfoX2& record, Garbage garbage) {
    Garble(static_cast<amd::AdapterInfo&>(record), garbage);
}
template <>
inline void Garble(amd::ADLMemoryInfo& record, Garbage garbage) {
    if (garbage == Garbage::ExtremeValues) {
        record.iMemorySize = INT64_MIN;
        record.iMemoryBandwidth = INT64_MAX;
    }
    GarbleText(record.strMemoryType, garbage, 'T');
}
// Only the levels, which follow the record.
template <>
inline void Garble(amd::ADLODNPerformanceLevelsX2& record, Garbage garbage) {
    auto const levels = static_cast<std::size_t>(record.iNumberOfPerformanceLevels);
    GarbleInts(&record + 1, levels * sizeof(amd::ADLODNPerformanceLevelX2), garbage);
}
template <>
inline void Garble(amd::ADLODNCapabilitiesX2& record, Garbage garbage) {
    GarbleCount(record.iMaximumNumberOfPerformanceLevels, garbage, kHugeAdlCount);
    GarbleIntsFrom(&record.sEngineClockRange, record, garbage);
}
template <>
inline void Garble(amd::ADLOD8InitSetting& record, Garbage garbage) {
    GarbleCount(record.count, garbage, kHugeAdlCount);
    GarbleIntsFrom(record.od8SettingTable, record, garbage);
}
template <>
inline void Garble(amd::ADLOD8CurrentSetting& record, Garbage garbage) {
    GarbleCount(record.count, garbage, kHugeAdlCount);
    GarbleIntsFrom(record.Od8SettingTable, record, garbage);
}

}  // namespace gputune::sim
