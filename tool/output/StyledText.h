// Lines of text in styles. Independent of the operating system.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace gputune::tool {

// Plain is what the console shows by itself. The others are combinations of red (1), green (2) and blue (4), as the
// escape sequences of terminals number their colours: none is grey, all are white, which is shown as bold.
enum class Style { Dim, Red, Green, Yellow, Blue, Magenta, Cyan, Strong, Plain };

struct StyledText {
    std::string text;
    Style style = Style::Plain;
};

using StyledLine = std::vector<StyledText>;

// The line in as many columns, cut or filled up with blanks.
StyledLine FitLine(StyledLine const& line, std::size_t width);
// With the escape sequences of terminals where `colours` is set; without, the text alone.
std::string TerminalText(StyledLine const& line, bool colours);

}  // namespace gputune::tool
