// A text in storage of a fixed size.
#pragma once

#include <span>
#include <string_view>

namespace gputune::sim {

// Writes the text and its terminator, cut to fit. Does not change the storage behind the terminator, and does nothing
// without storage.
inline void CopyText(std::string_view text, std::span<char> out) {
    if (!out.empty()) {
        out[text.copy(out.data(), out.size() - 1)] = '\0';
    }
}

}  // namespace gputune::sim
