// What NVAPI's stand-in adds to every stand-in. Its entry points have identifiers instead of exports. The library stays
// initialised when the board changes.
#pragma once

#include <set>
#include <string>

#include "sim/nvidia/NvidiaDriver.h"
#include "sim/standin/VendorStandIn.h"

namespace gputune::sim {

// For the list of handles and for the list of sensors.
constexpr int kHugeNvapiCount = 4096;

// The version stays.
template <>
inline void Garble(nvidia::NV_GPU_THERMAL_SETTINGS& record, Garbage garbage) {
    GarbleCount(record.count, garbage, kHugeNvapiCount, nvidia::kMaxThermalSensors);
    GarbleIntsFrom(record.sensor, record, garbage);
}

class NvidiaStandIn final : public VendorStandIn<NvidiaStandIn, NvidiaDriver> {
public:
    // Whether nvapi_QueryInterface returns the entry point for its identifier; logs that call.
    bool HandsOut(std::uint32_t identifier, char const* entryPoint);

    void SetInitialized() { initialized_ = true; }

private:
    friend class VendorStandIn<NvidiaStandIn, NvidiaDriver>;
    static constexpr int kNoBoard = nvidia::kNvapiError;

    NvidiaStandIn() : VendorStandIn(Vendor::Nvidia, NvidiaFaultRules()) {}

    std::set<std::string> AbsentWith(Board const& board) const override;

    int Uninitialized() const { return initialized_ ? nvidia::kNvapiOk : kNvapiNotInitialized; }

    // Refuses null pointers. Handles are checked by the driver, which knows them.
    template <class Argument>
    static int Refusal(Argument argument) {
        bool isNull = false;
        if constexpr (PointsToRecord<Argument>) {
            isNull = argument == nullptr;
        } else if constexpr (requires { argument.address; }) {
            isNull = argument.address == nullptr;
        }
        return isNull ? kNvapiInvalidArgument : nvidia::kNvapiOk;
    }

    bool initialized_ = false;
};

}  // namespace gputune::sim
