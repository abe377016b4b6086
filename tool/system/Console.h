// Standard input, output and error: a console gets UTF-16, a pipe or file UTF-8 with "\n" line ends. All texts given
// and returned here are UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace gputune::tool {

bool InputIsConsole();
bool OutputIsConsole();
bool ErrorIsConsole();

// False when the reader of the pipe has closed it, which is no error. Throws ToolError when the text cannot be written
// for another reason, such as a full disk.
bool WriteOutput(std::string_view text);
// Never throws, as there is no other place for a message.
void WriteError(std::string_view text) noexcept;

// To the console behind this handle; false when it refuses.
bool WriteConsoleText(void* handle, std::wstring_view text);

// Prints the question on standard error and reads a line of the console. True for "y" and "yes", false for anything
// else and for Ctrl+C.
bool Confirm(std::string const& question);

// While it exists, Ctrl+C, Ctrl+Break and the closing of the console set an event and do not end the process at once.
// There may be one at a time.
class InterruptEvent {
public:
    // At the closing of the console, the end of the session or of the system, the program has so many milliseconds to
    // destroy this object; Windows itself grants about 5000.
    explicit InterruptEvent(unsigned long endLimit = 2000);
    ~InterruptEvent();
    InterruptEvent(InterruptEvent const&) = delete;
    InterruptEvent& operator=(InterruptEvent const&) = delete;

    // Returns true as soon as there was an interrupt, false after the time.
    bool Wait(unsigned long milliseconds) const;
    // The event's handle, for WaitForMultipleObjects.
    void* Handle() const;
};

}  // namespace gputune::tool
