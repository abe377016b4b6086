// What the tool's pages share: the look, the charts, and the library that draws them. The texts are compiled in.
#pragma once

#include <string_view>

namespace gputune::embedded {

extern std::string_view const kPageCharts;       // functions for charts; to stand behind uPlot
extern std::string_view const kPageCommonStyle;  // colours, texts, cards, charts
extern std::string_view const kUplotLicence;
extern std::string_view const kUplotScript;
extern std::string_view const kUplotStyle;

}  // namespace gputune::embedded

namespace gputune::tool {

// Whether this program was built with the library that draws the charts. Without it, the texts of uPlot are empty.
inline bool HasCharts() {
    return !embedded::kUplotScript.empty();
}

}  // namespace gputune::tool
