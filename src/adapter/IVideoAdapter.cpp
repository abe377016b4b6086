#include "adapter/IVideoAdapter.h"

#include "profile/performance_profile.h"

namespace gputune {

PredefinedPerformanceParameter IVideoAdapter::GetExternalPerformanceParameter(std::uint32_t hwid) const {
    return profile::GetExternalPerformanceParameter(hwid);
}

}  // namespace gputune
