// A recording as one HTML page that needs nothing else: summary, charts and their library. Independent of the operating
// system.
#pragma once

#include <string>
#include <string_view>

#include "tool/recording/RecordingReader.h"
#include "tool/values/Summary.h"

namespace gputune::tool {

// Of the readings that are sure.
Summary Summarize(Series const& series);

// As text of an element or in a quoted attribute.
std::string EscapeHtml(std::string_view text);

// Whether this program was built with the library that draws the charts; without it there are no pages.
bool HasCharts();

// `fileName` names the recording to the reader; UTF-8.
std::string RecordingPage(Recording const& recording, std::string const& fileName);

}  // namespace gputune::tool
