// A console whose picture is drawn again and again, and whose keys are read meanwhile.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "tool/output/Canvas.h"
#include "tool/system/Console.h"

namespace gputune::tool {

class LiveScreen {
public:
    enum class Event { Time, Interrupt, Quit, Reset, Resized, Other };

    // Standard output must be a console.
    LiveScreen();
    ~LiveScreen();  // the picture that was drawn last stays, and the cursor is below it
    LiveScreen(LiveScreen const&) = delete;
    LiveScreen& operator=(LiveScreen const&) = delete;

    // The largest picture: a line and a column less than the window has, so that no line wraps.
    std::size_t Width() const { return width_; }
    std::size_t Height() const { return height_; }
    Glyphs UsableGlyphs() const { return canvas_->UsableGlyphs(); }
    bool HasKeys() const { return hasKeys_; }

    // Every line must be Width() columns wide.
    void Draw(std::vector<StyledLine> const& picture) { canvas_->Draw(picture, width_); }

    // Returns at a key, an interrupt, a change of the window's size, or after the time. Other keys are ignored. `other`
    // is the handle of an event that ends the waiting, too; null: there is none.
    Event Wait(InterruptEvent const& interrupt, unsigned long milliseconds, void* other = nullptr);

private:
    // Whether the size has changed.
    bool ReadSize();
    bool ReadKey(Event& event) const;

    void* output_;
    void* input_;
    unsigned long oldOutputMode_ = 0;
    unsigned long oldInputMode_ = 0;
    bool hasKeys_ = false;  // standard input is a console, too
    std::size_t width_ = 0;
    std::size_t height_ = 0;
    std::unique_ptr<Canvas> canvas_;
};

}  // namespace gputune::tool
