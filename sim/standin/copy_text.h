// A text in storage of a fixed size.
#pragma once

#include <span>
#include <string_view>

namespace gputune::sim {

// Writes the text with its terminator, cut to fit. The storage behind the terminator stays; an empty one stays whole.
inline void CopyText(std::string_view text, std::span<char> out) {
    if (!out.empty()) {
        out[text.copy(out.data(), out.size() - 1)] = '\0';
    }
}

}  // namespace gputune::sim
