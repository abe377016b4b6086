// Lines of text in styles.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace gputune::tool {

// The numbers are those of terminals' colours: sums of red (1), green (2) and blue (4). Dim is grey; Strong is white,
// or bold. Plain is what the console shows without a style.
enum class Style { Dim, Red, Green, Yellow, Blue, Magenta, Cyan, Strong, Plain };

struct StyledText {
    std::string text;
    Style style = Style::Plain;
};

using StyledLine = std::vector<StyledText>;

// Cuts the line to that many columns, or fills it up with blanks.
StyledLine FitLine(StyledLine const& line, std::size_t width);
// With escape sequences when `colours` is set, else the text alone.
std::string TerminalText(StyledLine const& line, bool colours);

}  // namespace gputune::tool
