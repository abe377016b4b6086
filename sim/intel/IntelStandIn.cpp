#include "sim/intel/IntelStandIn.h"

namespace gputune::sim {

StandIn& StandIn::Instance() {
    return IntelStandIn::Instance();
}

int IntelStandIn::EnterUnsupported(char const* entryPoint) {
    std::lock_guard const guard(lock_);
    int const result = Begin(entryPoint).result.value_or(kCtlUnsupportedFeature);
    End(entryPoint);
    return result;
}

int IntelStandIn::Initialize(intel::ctl_init_args_t& args, intel::ctl_api_handle_t& handle) {
    constexpr std::uint32_t kVersion = intel::CtlVersion(1, 1);
    if (intel::CtlMajorVersion(args.AppVersion) > intel::CtlMajorVersion(kVersion)) {
        return kCtlUnsupportedVersion;
    }
    args.SupportedVersion = kVersion;
    handle = reinterpret_cast<intel::ctl_api_handle_t>(this);
    ++uses_;
    return kCtlSuccess;
}

int IntelStandIn::Close(intel::ctl_api_handle_t handle) {
    if (!IsOwn(handle)) {
        return kCtlInvalidArgument;
    }
    --uses_;
    return kCtlSuccess;
}

bool IntelStandIn::IsOwn(intel::ctl_api_handle_t handle) const {
    return reinterpret_cast<std::uintptr_t>(handle) == reinterpret_cast<std::uintptr_t>(this);
}

}  // namespace gputune::sim
