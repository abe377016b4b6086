// A console whose picture is drawn again and again, and whose keys are read meanwhile. Newer consoles understand the
// escape sequences of terminals: there the picture has a screen of its own, and what stood in the window comes back
// afterwards. On older ones it is drawn over itself where the cursor was.
#pragma once

#include <cstddef>
#include <vector>

#include "tool/output/Dashboard.h"
#include "tool/system/Console.h"

namespace gputune::tool {

class LiveScreen {
public:
    enum class Event { Time, Interrupt, Quit, Reset, Resized };

    // Standard output must be a console.
    LiveScreen();
    ~LiveScreen();  // the picture that was drawn last stays, and the cursor is below it
    LiveScreen(LiveScreen const&) = delete;
    LiveScreen& operator=(LiveScreen const&) = delete;

    // Room for a picture; a line less than the window has, and a column, so that nothing wraps.
    std::size_t Width() const { return width_; }
    std::size_t Height() const { return height_; }
    Glyphs UsableGlyphs() const { return sequences_ ? Glyphs::Curves : Glyphs::Bars; }
    bool HasKeys() const { return keys_; }

    // The lines must fit into the room.
    void Draw(std::vector<StyledLine> const& lines);

    // Until a key, an interrupt or another size of the window, or for the time. Keys without a meaning are dropped.
    Event Wait(InterruptEvent const& interrupt, unsigned long milliseconds);

private:
    bool ReadSize();
    bool ReadKey(Event& event) const;
    void DrawOver(std::vector<StyledLine> const& lines);
    void WriteStyled(StyledLine const& line) const;
    void Clear();

    void* output_;
    void* input_;
    unsigned long oldOutputMode_ = 0;
    unsigned long oldInputMode_ = 0;
    unsigned short oldAttributes_ = 0;
    bool sequences_ = false;
    bool colours_ = true;
    bool keys_ = false;  // standard input is a console, too
    std::size_t width_ = 0;
    std::size_t height_ = 0;
    std::size_t drawn_ = 0;
    std::vector<StyledLine> picture_;
};

}  // namespace gputune::tool
