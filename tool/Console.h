// Standard input, output and error: a console gets UTF-16, a pipe or file UTF-8 with "\n" line ends. All texts given
// and returned here are UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace gputune::tool {

bool InputIsConsole();
bool OutputIsConsole();
bool ErrorIsConsole();

// Throws ToolError when the text cannot be written (a full disk, a closed pipe).
void WriteOutput(std::string_view text);
// Never throws: there is nowhere left to tell.
void WriteError(std::string_view text) noexcept;

// To the console behind this handle; false when it refuses.
bool WriteConsoleText(void* handle, std::wstring_view text);

// Asks on standard error and reads a line of the console: true for "y" and "yes".
bool Confirm(std::string const& question);

// Ctrl+C, Ctrl+Break and the closing of the console, from construction on. One at a time.
class InterruptEvent {
public:
    InterruptEvent();
    ~InterruptEvent();
    InterruptEvent(InterruptEvent const&) = delete;
    InterruptEvent& operator=(InterruptEvent const&) = delete;

    // True as soon as there was an interrupt, false after the time.
    bool Wait(unsigned long milliseconds) const;
    // The system's event, to wait for along with others.
    void* Handle() const;
};

}  // namespace gputune::tool
