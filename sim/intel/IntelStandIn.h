// What Intel's stand-in adds to every stand-in. The library stays initialised when the board changes.
#pragma once

#include "sim/intel/IntelDriver.h"
#include "sim/intel/ctl_garbage.h"
#include "sim/standin/VendorStandIn.h"

namespace gputune::sim {

class IntelStandIn final : public VendorStandIn<IntelStandIn, IntelDriver> {
public:
    // For an entry point that this driver does not have.
    int EnterUnsupported(char const* entryPoint);

    // For the entry points that begin and end the use of the library. Close refuses a handle that is not its own.
    int Initialize(intel::ctl_init_args_t& args, intel::ctl_api_handle_t& handle);
    int Close(intel::ctl_api_handle_t handle);
    bool IsOwn(intel::ctl_api_handle_t handle) const;

private:
    friend class VendorStandIn<IntelStandIn, IntelDriver>;
    static constexpr int kNoBoard = kCtlNotAvailable;

    IntelStandIn() : VendorStandIn(Vendor::Intel, IntelFaultRules()) {}

    int Uninitialized() const { return uses_ == 0 ? kCtlNotInitialized : kCtlSuccess; }

    // Refuses null handles, null pointers and records of another size.
    template <class Argument>
    static int Refusal(Argument argument) {
        if constexpr (std::is_pointer_v<Argument>) {
            if (argument == nullptr) {
                constexpr bool kIsRecord{PointsToRecord<Argument>};
                return kIsRecord ? kCtlNullPointer : kCtlNullHandle;
            }
            if constexpr (requires { argument->Size; }) {
                return argument->Size == sizeof(*argument) ? kCtlSuccess : kCtlUnsupportedSize;
            }
        }
        return kCtlSuccess;
    }

    int uses_ = 0;  // how often it was initialised, less how often it was closed
};

}  // namespace gputune::sim
