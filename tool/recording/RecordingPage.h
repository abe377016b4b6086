// A recording as one HTML page, which holds all that it needs: summary, charts and the library that draws them.
#pragma once

#include <string>
#include <string_view>

#include "tool/recording/RecordingReader.h"
#include "tool/values/Summary.h"

namespace gputune::tool {

// Of the readings that are not unsure.
Summary Summarize(Series const& series);

// For the text of an element or a quoted attribute.
std::string EscapeHtml(std::string_view text);

// `fileName` names the recording to the reader; UTF-8. Needs the library that draws charts (HasCharts).
std::string RecordingPage(Recording const& recording, std::string const& fileName);

}  // namespace gputune::tool
