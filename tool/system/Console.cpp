#include "tool/system/Console.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "tool/system/Utf8.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

bool IsConsole(DWORD standardHandle) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(standardHandle), &mode) != 0;
}

bool WriteBytes(HANDLE handle, std::string_view text) {
    while (!text.empty()) {
        DWORD written = 0;
        if (!WriteFile(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) || written == 0) {
            return false;
        }
        text.remove_prefix(written);
    }
    return true;
}

bool Write(DWORD standardHandle, std::FILE* stream, std::string_view text) {
    // The library's log may go to the same place through the C runtime. This keeps the order.
    std::fflush(stream);
    HANDLE const handle = GetStdHandle(standardHandle);
    return IsConsole(standardHandle) ? WriteConsoleText(handle, WideFromUtf8(text)) : WriteBytes(handle, text);
}

// Global, because the system calls the handler without an argument, on another thread.
HANDLE g_interrupted = nullptr;
HANDLE g_finished = nullptr;
DWORD g_endLimit = 0;

// Reads a line of the console into the text that it is given.
DWORD WINAPI ReadLine(void* argument) {
    std::wstring& line = *static_cast<std::wstring*>(argument);
    wchar_t buffer[64];
    DWORD read = 0;
    while (
        line.find(L'\n') == std::wstring::npos &&
        ReadConsoleW(GetStdHandle(STD_INPUT_HANDLE), buffer, static_cast<DWORD>(std::size(buffer)), &read, nullptr) &&
        read > 0) {
        line.append(buffer, read);
    }
    return 0;
}

BOOL WINAPI OnInterrupt(DWORD kind) {
    SetEvent(g_interrupted);
    if (kind != CTRL_C_EVENT && kind != CTRL_BREAK_EVENT) {
        // The process ends when this function returns. So it waits until the program has ended its work.
        WaitForSingleObject(g_finished, g_endLimit);
    }
    return TRUE;
}

}  // namespace

bool WriteConsoleText(void* handle, std::wstring_view text) {
    while (!text.empty()) {
        // Consoles refuse more than 64 KiB at once.
        std::wstring_view const part = text.substr(0, 8192);
        DWORD written = 0;
        if (!WriteConsoleW(handle, part.data(), static_cast<DWORD>(part.size()), &written, nullptr) || written == 0) {
            return false;
        }
        text.remove_prefix(written);
    }
    return true;
}

bool InputIsConsole() {
    return IsConsole(STD_INPUT_HANDLE);
}

bool OutputIsConsole() {
    return IsConsole(STD_OUTPUT_HANDLE);
}

bool ErrorIsConsole() {
    return IsConsole(STD_ERROR_HANDLE);
}

bool WriteOutput(std::string_view text) {
    if (Write(STD_OUTPUT_HANDLE, stdout, text)) {
        return true;
    }
    DWORD const error = GetLastError();
    if (error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA || error == ERROR_PIPE_NOT_CONNECTED) {
        return false;
    }
    throw ToolError("Standard output: " + SystemMessage(error) + ".");
}

void WriteError(std::string_view text) noexcept {
    try {
        Write(STD_ERROR_HANDLE, stderr, text);
    } catch (std::exception const&) {  // out of memory
        std::fputs("gputunectl: out of memory\n", stderr);
    }
}

bool Confirm(std::string const& question) {
    InterruptEvent const interrupt;  // so that Ctrl+C is an answer and does not end the program
    WriteError(question + " [y/N] ");
    // On another thread, because on some systems Ctrl+C does not end ReadConsole.
    auto answer = std::make_unique<std::wstring>();
    HANDLE const thread = CreateThread(nullptr, 0, ReadLine, answer.get(), 0, nullptr);
    if (thread == nullptr) {
        return false;
    }
    HANDLE const ends[] = {interrupt.Handle(), thread};
    bool const isInterrupted =
        WaitForMultipleObjects(static_cast<DWORD>(std::size(ends)), ends, FALSE, INFINITE) == WAIT_OBJECT_0;
    CloseHandle(thread);
    if (isInterrupted) {
        static_cast<void>(answer.release());  // deliberate: the thread may still write to it
        WriteError("\n");
        return false;
    }
    std::wstring& line = *answer;
    std::erase_if(line, [](wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n'; });
    std::transform(line.begin(), line.end(), line.begin(),
                   [](wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c; });
    return line == L"y" || line == L"yes";
}

InterruptEvent::InterruptEvent(unsigned long endLimit) {
    g_endLimit = endLimit;
    // With manual reset: after an interrupt the event stays set.
    g_interrupted = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    g_finished = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    SetConsoleCtrlHandler(OnInterrupt, TRUE);
}

InterruptEvent::~InterruptEvent() {
    SetConsoleCtrlHandler(OnInterrupt, FALSE);
    SetEvent(g_finished);
    // Deliberate: the events stay open, as a handler that runs at this moment may still use them.
}

void* InterruptEvent::Handle() const {
    return g_interrupted;
}

bool InterruptEvent::Wait(unsigned long milliseconds) const {
    return WaitForSingleObject(g_interrupted, milliseconds) == WAIT_OBJECT_0;
}

}  // namespace gputune::tool
