// A list of Overdrive8 settings to change in one driver call. What is not requested stays as it is.
#pragma once

#include "amd/OD8Helper.h"

namespace gputune::amd {

class OD8Helper::Request {
public:
    Request() { record_.count = kOd8Count; }

    void Set(int setting, int value) {
        record_.od8SettingTable[setting] = {.value = value, .requested = 1, .reset = 0};
    }

    // Ask the driver to restore its default; the value goes along.
    void Reset(int setting, int defaultValue) {
        record_.od8SettingTable[setting] = {.value = defaultValue, .requested = 1, .reset = 1};
    }

    // The block as ADL takes it.
    ADLOD8SetSetting* Record() { return &record_; }

private:
    ADLOD8SetSetting record_{};
};

}  // namespace gputune::amd
