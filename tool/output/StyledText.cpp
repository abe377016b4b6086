#include "tool/output/StyledText.h"

#include "tool/values/Text.h"

namespace gputune::tool {

StyledLine FitLine(StyledLine const& line, std::size_t width) {
    StyledLine fitted;
    std::size_t left = width;
    for (StyledText const& part : line) {
        fitted.push_back({std::string(Cut(part.text, left)), part.style});
        left -= DisplayWidth(fitted.back().text);
    }
    fitted.push_back({std::string(left, ' '), Style::Plain});
    return fitted;
}

std::string TerminalText(StyledLine const& line, bool colours) {
    std::string text;
    for (StyledText const& part : line) {
        bool const isStyled = colours && part.style != Style::Plain && !part.text.empty();
        // 90 to 97 are the bright colours, 1 is bold.
        std::string const number =
            part.style == Style::Strong ? "1" : std::to_string(90 + static_cast<int>(part.style));
        text += isStyled ? "\x1b[" + number + "m" + part.text + "\x1b[m" : part.text;
    }
    return text;
}

}  // namespace gputune::tool
