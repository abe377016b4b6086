// Standard input, output and error: a console gets UTF-16, a pipe or file UTF-8 with "\n" line ends. All texts given
// and returned here are UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace gputune::tool {

bool InputIsConsole();
bool OutputIsConsole();
bool ErrorIsConsole();

// Throws ToolError when the text cannot be written (a full disk, a closed pipe).
void WriteOutput(std::string_view text);
// Never throws: there is nowhere left to tell.
void WriteError(std::string_view text) noexcept;

// Asks on standard error and reads a line of the console: true for "y" and "yes".
bool Confirm(std::string const& question);

// Lines that are drawn over the ones drawn before.
class LiveArea {
public:
    LiveArea();
    ~LiveArea();  // the cursor is below the lines and visible again
    LiveArea(LiveArea const&) = delete;
    LiveArea& operator=(LiveArea const&) = delete;

    // False, and nothing is drawn, when the console is too low for the lines.
    bool Draw(std::vector<std::string> const& lines);

private:
    void MoveUp(std::size_t lines) const;

    void* output_;
    unsigned long oldMode_ = 0;
    bool sequences_ = false;  // the console understands escape sequences
    std::size_t drawn_ = 0;
};

// Ctrl+C, Ctrl+Break and the closing of the console, from construction on. One at a time.
class InterruptEvent {
public:
    InterruptEvent();
    ~InterruptEvent();
    InterruptEvent(InterruptEvent const&) = delete;
    InterruptEvent& operator=(InterruptEvent const&) = delete;

    // True as soon as there was an interrupt, false after the time.
    bool Wait(unsigned long milliseconds) const;
};

}  // namespace gputune::tool
