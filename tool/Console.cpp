#include "Console.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>

#include "Errors.h"
#include "Report.h"
#include "Text.h"

namespace gputune::tool {

namespace {

// Older than the toolchain's headers for Windows 7.
constexpr DWORD virtualTerminalProcessing = 0x0004;

bool IsConsole(DWORD standardHandle) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(standardHandle), &mode) != 0;
}

bool WriteConsoleText(HANDLE handle, std::wstring_view text) {
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
    // The library's log may go the same way through the runtime; what it said before is to stand before.
    std::fflush(stream);
    HANDLE const handle = GetStdHandle(standardHandle);
    return IsConsole(standardHandle) ? WriteConsoleText(handle, WideFromUtf8(text)) : WriteBytes(handle, text);
}

// Some consoles accept the mode and print the sequences all the same, so one that shows nothing is tried out.
bool UnderstandsSequences(HANDLE output) {
    CONSOLE_SCREEN_BUFFER_INFO before{};
    CONSOLE_SCREEN_BUFFER_INFO after{};
    if (!GetConsoleScreenBufferInfo(output, &before) || !WriteConsoleText(output, L"\x1b[m") ||
        !GetConsoleScreenBufferInfo(output, &after)) {
        return false;
    }
    if (after.dwCursorPosition.X == before.dwCursorPosition.X) {
        return true;
    }
    SetConsoleCursorPosition(output, before.dwCursorPosition);
    WriteConsoleText(output, L"   ");
    SetConsoleCursorPosition(output, before.dwCursorPosition);
    return false;
}

// The handler runs on a thread of the system's own and has no argument, hence these two.
HANDLE interrupted = nullptr;
HANDLE finished = nullptr;

BOOL WINAPI OnInterrupt(DWORD kind) {
    SetEvent(interrupted);
    if (kind != CTRL_C_EVENT && kind != CTRL_BREAK_EVENT) {
        // The process ends when this function returns: leave the program the time to end by itself.
        WaitForSingleObject(finished, 2000);
    }
    return TRUE;
}

}  // namespace

bool InputIsConsole() {
    return IsConsole(STD_INPUT_HANDLE);
}

bool OutputIsConsole() {
    return IsConsole(STD_OUTPUT_HANDLE);
}

bool ErrorIsConsole() {
    return IsConsole(STD_ERROR_HANDLE);
}

void WriteOutput(std::string_view text) {
    if (!Write(STD_OUTPUT_HANDLE, stdout, text)) {
        throw ToolError("Standard output: " + SystemMessage(GetLastError()) + ".");
    }
}

void WriteError(std::string_view text) noexcept {
    try {
        Write(STD_ERROR_HANDLE, stderr, text);
    } catch (std::exception const&) {  // out of memory
        std::fputs("gputunectl: out of memory\n", stderr);
    }
}

bool Confirm(std::string const& question) {
    WriteError(question + " [y/N] ");
    std::wstring line;
    wchar_t buffer[64];
    DWORD read = 0;
    while (
        line.find(L'\n') == std::wstring::npos &&
        ReadConsoleW(GetStdHandle(STD_INPUT_HANDLE), buffer, static_cast<DWORD>(std::size(buffer)), &read, nullptr) &&
        read > 0) {
        line.append(buffer, read);
    }
    std::erase_if(line, [](wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n'; });
    std::transform(line.begin(), line.end(), line.begin(),
                   [](wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c; });
    return line == L"y" || line == L"yes";
}

LiveArea::LiveArea() : output_(GetStdHandle(STD_OUTPUT_HANDLE)) {
    GetConsoleMode(output_, &oldMode_);
    sequences_ = SetConsoleMode(output_, oldMode_ | virtualTerminalProcessing) != 0 && UnderstandsSequences(output_);
    if (sequences_) {
        WriteConsoleText(output_, L"\x1b[?25l");
    }
}

LiveArea::~LiveArea() {
    if (sequences_) {
        WriteConsoleText(output_, L"\x1b[?25h");
    }
    SetConsoleMode(output_, oldMode_);
}

bool LiveArea::Draw(std::vector<std::string> const& lines) {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!GetConsoleScreenBufferInfo(output_, &info)) {
        return false;
    }
    int const height = info.srWindow.Bottom - info.srWindow.Top + 1;
    int const width = std::min<int>(info.dwSize.X, info.srWindow.Right - info.srWindow.Left + 1);
    if (width < 2 || static_cast<int>(std::max(lines.size(), drawn_)) >= height) {
        return false;
    }
    MoveUp(drawn_);
    std::wstring text;
    for (std::string const& line : lines) {
        // A line that fills the last column would wrap and move everything below.
        std::wstring shown = WideFromUtf8(line);
        shown.resize(static_cast<std::size_t>(width) - 1, L' ');
        text += shown + L"\r\n";
    }
    WriteConsoleText(output_, text);
    drawn_ = lines.size();
    return true;
}

void LiveArea::MoveUp(std::size_t lines) const {
    if (lines == 0) {
        return;
    }
    if (sequences_) {
        WriteConsoleText(output_, L"\r\x1b[" + std::to_wstring(lines) + L"A");
        return;
    }
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (GetConsoleScreenBufferInfo(output_, &info)) {
        int const row = std::max(0, info.dwCursorPosition.Y - static_cast<int>(lines));
        SetConsoleCursorPosition(output_, {0, static_cast<SHORT>(row)});
    }
}

InterruptEvent::InterruptEvent() {
    // Manual reset: an interrupt stays one.
    interrupted = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    finished = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    SetConsoleCtrlHandler(OnInterrupt, TRUE);
}

InterruptEvent::~InterruptEvent() {
    SetConsoleCtrlHandler(OnInterrupt, FALSE);
    SetEvent(finished);
    // Left open: a handler that runs at this moment may still use them, and the process ends soon.
}

bool InterruptEvent::Wait(unsigned long milliseconds) const {
    return WaitForSingleObject(interrupted, milliseconds) == WAIT_OBJECT_0;
}

}  // namespace gputune::tool
