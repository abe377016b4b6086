// Where a console shows the pictures that are drawn one over the other.
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
    // Empties the window: another size of it has moved the old picture to an unknown place. The next one begins in the
    // window's first line.
    virtual void Clear() = 0;
};

// Newer consoles understand the escape sequences of terminals: there the pictures have a screen of their own, and what
// stood in the window comes back afterwards. On older ones they are drawn where the cursor is. `console` is standard
// output's handle.
std::unique_ptr<Canvas> MakeCanvas(void* console);

}  // namespace gputune::tool
