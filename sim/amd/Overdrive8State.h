// The Overdrive8 part of one adapter: its present settings and its sensors. Every operation returns the vendor's
// result code and changes nothing when that is not 0.
#pragma once

#include <vector>

#include "amd/adl_records.h"
#include "sim/board/Board.h"
#include "sim/model/ThermalModel.h"

namespace gputune::sim {

class Overdrive8State {
public:
    // The description must outlive the state.
    explicit Overdrive8State(Overdrive8 const& description);

    // The present settings, in the terms of the model.
    Controls ModelControls() const;

    // Back to the defaults, as when the driver starts anew; without the fan's settings, or with them.
    void Forget(bool fanToo);
    bool FanIsAutomatic() const;

    // The present settings.
    template <class Archive>
    void Exchange(Archive& archive) {
        archive(current_);
    }

    // All settings of the driver, which can be more than the older records hold.
    std::vector<amd::ADLOD8SingleInitSetting> InitSettings() const;
    std::vector<int> CurrentSettings() const;

    int GetInit(amd::ADLOD8InitSetting& out) const;
    int GetCurrent(amd::ADLOD8CurrentSetting& out) const;
    // Makes all of the requested settings or none.
    int Set(amd::ADLOD8SetSetting const& request, amd::ADLOD8CurrentSetting& out);
    int GetSensors(amd::ADLPMLogDataOutput& out, Readings const& readings) const;

    int Capabilities() const { return description_.capabilities; }

private:
    bool Has(int capability) const { return (description_.capabilities & capability) != 0; }
    void SetFanControls(Controls& controls) const;

    Overdrive8 const& description_;
    std::vector<int> current_;
};

}  // namespace gputune::sim
