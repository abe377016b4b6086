// The monitored values that an adapter holds: one entry for each key of GputuneHwmKey.
#pragma once

#include <array>
#include <string_view>

#include "records/records.h"

namespace gputune {

// The display name of a key; empty for a number that is no key.
std::string_view HwmValueName(int key);

class HwmValueTable {
public:
    // Holds every key, each with Value -1.0, an empty name and Valid false.
    HwmValueTable();

    // Store a reading in the key's unit: sets value, name and the valid flag. A key that the table does not hold is
    // dropped.
    void Store(int key, double reading);

    // The entry of a key, null when the table does not hold it.
    HwmValue const* Find(int key) const;

private:
    std::array<HwmValue, GPUTUNE_HWM_KEY_COUNT> entries_{};
};

}  // namespace gputune
