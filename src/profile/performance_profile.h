// The predefined overclock and silent profiles of the boards, from the XML file beside the host application.
#pragma once

#include <cstdint>

#include "records/records.h"

namespace gputune::profile {

// The profile of the board with this identifier, else the default profile; read afresh from
// "Config\ConfigModel.xml" below the host executable's directory. `Valid` is false when there is neither; the reason
// is in the log. Throws HexLongError for a malformed "Id" that stands before the match.
PredefinedPerformanceParameter GetExternalPerformanceParameter(std::uint32_t hwid);

// Log every field of a profile.
void PrintPredefinedPerformanceParameter(PredefinedPerformanceParameter const& parameter);

}  // namespace gputune::profile
