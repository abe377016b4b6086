#pragma once

#include <cstdint>

namespace gputune {

// The vendor interface that a backend drives; the numbers are the public header's GputuneApiType.
enum class AdapterApiType : std::uint32_t { None = 0, Overdrive8 = 2, OverdriveN = 3, Igcl = 4, Nvapi = 5 };

}  // namespace gputune
