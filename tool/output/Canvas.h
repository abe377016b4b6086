// Draws pictures on a console, each over the one before.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "tool/output/Dashboard.h"

namespace gputune::tool {

// The picture that was drawn last stays when the canvas goes away, and the cursor is below it.
class Canvas {
public:
    virtual ~Canvas() = default;

    virtual Glyphs UsableGlyphs() const = 0;
    // Each line of the picture takes `width` columns.
    virtual void Draw(std::vector<StyledLine> const& picture, std::size_t width) = 0;
    // Empties the window; the next picture begins in its first line. To be called when the window's size has changed,
    // as the old picture may then be anywhere.
    virtual void Clear() = 0;
};

// Newer consoles understand the escape sequences of terminals: there the pictures have a screen of their own, and the
// window's former contents come back afterwards. On older consoles the picture begins at the cursor. `console` is the
// handle of standard output.
std::unique_ptr<Canvas> MakeCanvas(void* console);

}  // namespace gputune::tool
