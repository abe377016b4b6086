// Standard input, output and error: a console gets UTF-16, a pipe or file UTF-8 with "\n" line ends. All texts given
// and returned here are UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace gputune::tool {

bool InputIsConsole();
bool OutputIsConsole();
bool ErrorIsConsole();

// False when there is no reader any more: what comes is not wanted, which is no error. Throws ToolError when the text
// cannot be written for another reason, such as a full disk.
bool WriteOutput(std::string_view text);
// Never throws: there is nowhere left to tell.
void WriteError(std::string_view text) noexcept;

// To the console behind this handle; false when it refuses.
bool WriteConsoleText(void* handle, std::wstring_view text);

// Asks on standard error and reads a line of the console: true for "y" and "yes", false for anything else and for
// Ctrl+C.
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
