#include "tool/output/LiveScreen.h"

#include <windows.h>

#include <algorithm>
#include <string>

#include "tool/system/Utf8.h"

namespace gputune::tool {

namespace {

// Older than the toolchain's headers for Windows 7.
constexpr DWORD virtualTerminalProcessing = 0x0004;

// How often the window is asked for its size: not every console tells when that changes.
constexpr unsigned long sizeInterval = 200;  // milliseconds

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

void ShowCursor(HANDLE output, bool visible) {
    CONSOLE_CURSOR_INFO cursor{};
    if (GetConsoleCursorInfo(output, &cursor)) {
        cursor.bVisible = visible;
        SetConsoleCursorInfo(output, &cursor);
    }
}

WORD Attributes(Style style, WORD plain) {
    constexpr WORD bright = FOREGROUND_INTENSITY;
    WORD const background = plain & 0xF0U;
    switch (style) {
        case Style::Plain:
            return plain;
        case Style::Dim:
            return static_cast<WORD>(background | bright);
        case Style::Strong:
            return static_cast<WORD>(background | bright | FOREGROUND_RED | FOREGROUND_GREEN | FOREGROUND_BLUE);
        case Style::Red:
            return static_cast<WORD>(background | bright | FOREGROUND_RED);
        case Style::Green:
            return static_cast<WORD>(background | bright | FOREGROUND_GREEN);
        case Style::Yellow:
            return static_cast<WORD>(background | bright | FOREGROUND_RED | FOREGROUND_GREEN);
        case Style::Blue:
            return static_cast<WORD>(background | bright | FOREGROUND_BLUE);
        case Style::Magenta:
            return static_cast<WORD>(background | bright | FOREGROUND_RED | FOREGROUND_BLUE);
        case Style::Cyan:
            return static_cast<WORD>(background | bright | FOREGROUND_GREEN | FOREGROUND_BLUE);
    }
    return plain;
}

}  // namespace

LiveScreen::LiveScreen() : output_(GetStdHandle(STD_OUTPUT_HANDLE)), input_(GetStdHandle(STD_INPUT_HANDLE)) {
    GetConsoleMode(output_, &oldOutputMode_);
    sequences_ =
        SetConsoleMode(output_, oldOutputMode_ | virtualTerminalProcessing) != 0 && UnderstandsSequences(output_);
    // A convention of many programs: whoever sets it wants no colours.
    colours_ = GetEnvironmentVariableW(L"NO_COLOR", nullptr, 0) == 0;
    keys_ = GetConsoleMode(input_, &oldInputMode_) != 0 &&
            SetConsoleMode(input_, (oldInputMode_ | ENABLE_WINDOW_INPUT) &
                                       ~static_cast<DWORD>(ENABLE_LINE_INPUT | ENABLE_ECHO_INPUT)) != 0;
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (GetConsoleScreenBufferInfo(output_, &info)) {
        oldAttributes_ = info.wAttributes;
    }
    if (sequences_) {
        WriteConsoleText(output_, L"\x1b[?1049h\x1b[?25l\x1b[H\x1b[2J");
    } else {
        ShowCursor(output_, false);
    }
    ReadSize();
}

LiveScreen::~LiveScreen() {
    if (sequences_) {
        WriteConsoleText(output_, L"\x1b[?1049l\x1b[?25h");
        for (StyledLine const& line : picture_) {
            WriteConsoleText(output_, WideFromUtf8(TerminalText(line, colours_)) + L"\r\n");
        }
    } else {
        ShowCursor(output_, true);
    }
    SetConsoleMode(output_, oldOutputMode_);
    if (keys_) {
        SetConsoleMode(input_, oldInputMode_);
    }
}

bool LiveScreen::ReadSize() {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!GetConsoleScreenBufferInfo(output_, &info)) {
        return false;
    }
    auto const width = static_cast<std::size_t>(
        std::max(0, std::min<int>(info.dwSize.X, info.srWindow.Right - info.srWindow.Left + 1) - 1));
    auto const height = static_cast<std::size_t>(std::max(0, info.srWindow.Bottom - info.srWindow.Top));
    bool const changed = width != width_ || height != height_;
    width_ = width;
    height_ = height;
    return changed;
}

void LiveScreen::Draw(std::vector<StyledLine> const& lines) {
    picture_ = lines;
    if (!sequences_) {
        DrawOver(lines);
        return;
    }
    // One text, so that no half of a picture is seen. Each line clears what stood behind it.
    std::string text = "\x1b[H";
    for (StyledLine const& line : lines) {
        text += TerminalText(line, colours_) + "\x1b[K\r\n";
    }
    WriteConsoleText(output_, WideFromUtf8(text + "\x1b[J"));
}

void LiveScreen::DrawOver(std::vector<StyledLine> const& lines) {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!GetConsoleScreenBufferInfo(output_, &info)) {
        return;
    }
    int const row = std::max(0, info.dwCursorPosition.Y - static_cast<int>(drawn_));
    SetConsoleCursorPosition(output_, {0, static_cast<SHORT>(row)});
    for (StyledLine const& line : lines) {
        WriteStyled(line);
    }
    for (std::size_t i = lines.size(); i < drawn_; ++i) {
        WriteStyled({{std::string(width_, ' '), Style::Plain}});
    }
    drawn_ = std::max(lines.size(), drawn_);
}

void LiveScreen::WriteStyled(StyledLine const& line) const {
    for (StyledText const& part : line) {
        SetConsoleTextAttribute(output_, colours_ ? Attributes(part.style, oldAttributes_) : oldAttributes_);
        WriteConsoleText(output_, WideFromUtf8(part.text));
    }
    SetConsoleTextAttribute(output_, oldAttributes_);
    WriteConsoleText(output_, L"\r\n");
}

// The window, after which the picture begins in its first line: what another size made of the old one is anywhere.
void LiveScreen::Clear() {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (sequences_) {
        WriteConsoleText(output_, L"\x1b[2J");
    } else if (GetConsoleScreenBufferInfo(output_, &info)) {
        COORD const corner{0, info.srWindow.Top};
        auto const cells = static_cast<DWORD>(info.dwSize.X) *
                           static_cast<DWORD>(std::max(0, info.srWindow.Bottom - info.srWindow.Top + 1));
        DWORD written = 0;
        FillConsoleOutputCharacterW(output_, L' ', cells, corner, &written);
        FillConsoleOutputAttribute(output_, oldAttributes_, cells, corner, &written);
        SetConsoleCursorPosition(output_, corner);
        drawn_ = 0;
    }
}

LiveScreen::Event LiveScreen::Wait(InterruptEvent const& interrupt, unsigned long milliseconds) {
    ULONGLONG const end = GetTickCount64() + milliseconds;
    HANDLE const handles[] = {interrupt.Handle(), input_};
    for (;;) {
        ULONGLONG const now = GetTickCount64();
        auto const left = static_cast<DWORD>(end > now ? end - now : 0);
        DWORD const happened =
            WaitForMultipleObjects(keys_ ? 2 : 1, handles, FALSE, std::min<DWORD>(left, sizeInterval));
        Event event = Event::Time;
        if (happened == WAIT_OBJECT_0) {
            return Event::Interrupt;
        }
        if (happened == WAIT_OBJECT_0 + 1 && ReadKey(event)) {
            return event;
        }
        if (ReadSize()) {
            Clear();
            return Event::Resized;
        }
        if (GetTickCount64() >= end) {
            return Event::Time;
        }
    }
}

// Takes one event from the queue; true when it means something here.
bool LiveScreen::ReadKey(Event& event) const {
    INPUT_RECORD record{};
    DWORD count = 0;
    if (!ReadConsoleInputW(input_, &record, 1, &count) || count == 0 || record.EventType != KEY_EVENT ||
        !record.Event.KeyEvent.bKeyDown) {
        return false;
    }
    switch (record.Event.KeyEvent.uChar.UnicodeChar) {
        case L'q':
        case L'Q':
            event = Event::Quit;
            return true;
        case L'r':
        case L'R':
            event = Event::Reset;
            return true;
        default:
            return false;
    }
}

}  // namespace gputune::tool
