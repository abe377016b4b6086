// The metrics as text, in the two formats that monitoring systems read.
#pragma once

#include <string>
#include <string_view>

#include "tool/serve/Snapshot.h"

namespace gputune::tool {

enum class MetricsFormat {
    Prometheus,  // the text format 0.0.4
    OpenMetrics  // 1.0
};

// The format for a request with this Accept header, which may be empty or nonsense: the one that its best value allows,
// OpenMetrics only where it is named; Prometheus when none fits.
MetricsFormat ChooseFormat(std::string_view accept);

// For the response's header.
char const* ContentType(MetricsFormat format);

// Without time stamps on samples. Takes the snapshot as it is: see AsOf.
std::string MetricsText(Snapshot const& snapshot, MetricsFormat format);

}  // namespace gputune::tool
