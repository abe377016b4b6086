#include "tool/output/LiveScreen.h"

#include <windows.h>

#include <algorithm>

namespace gputune::tool {

LiveScreen::LiveScreen() : output_(GetStdHandle(STD_OUTPUT_HANDLE)), input_(GetStdHandle(STD_INPUT_HANDLE)) {
    GetConsoleMode(output_, &oldOutputMode_);
    hasKeys_ = GetConsoleMode(input_, &oldInputMode_) != 0 &&
               SetConsoleMode(input_, (oldInputMode_ | ENABLE_WINDOW_INPUT) &
                                          ~static_cast<DWORD>(ENABLE_LINE_INPUT | ENABLE_ECHO_INPUT)) != 0;
    canvas_ = MakeCanvas(output_);
    ReadSize();
}

LiveScreen::~LiveScreen() {
    canvas_.reset();
    SetConsoleMode(output_, oldOutputMode_);
    if (hasKeys_) {
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

LiveScreen::Event LiveScreen::Wait(InterruptEvent const& interrupt, unsigned long milliseconds, void* other) {
    // In milliseconds. The window is asked for its size again and again, as not every console reports a change.
    constexpr DWORD kSizeInterval = 200;
    ULONGLONG const end = GetTickCount64() + milliseconds;
    HANDLE handles[3] = {interrupt.Handle()};
    DWORD count = 1;
    DWORD const keys = hasKeys_ ? count++ : MAXIMUM_WAIT_OBJECTS;
    DWORD const others = other != nullptr ? count++ : MAXIMUM_WAIT_OBJECTS;
    if (hasKeys_) {
        handles[keys] = input_;
    }
    if (other != nullptr) {
        handles[others] = other;
    }
    for (;;) {
        ULONGLONG const now = GetTickCount64();
        auto const left = static_cast<DWORD>(end > now ? end - now : 0);
        DWORD const happened = WaitForMultipleObjects(count, handles, FALSE, std::min(left, kSizeInterval));
        Event event = Event::Time;
        if (happened == WAIT_OBJECT_0) {
            return Event::Interrupt;
        }
        if (happened == WAIT_OBJECT_0 + keys && ReadKey(event)) {
            return event;
        }
        if (happened == WAIT_OBJECT_0 + others) {
            return Event::Other;
        }
        if (ReadSize()) {
            canvas_->Clear();
            return Event::Resized;
        }
        if (GetTickCount64() >= end) {
            return Event::Time;
        }
    }
}

// Takes one event from the queue; false when it is no key with a meaning.
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
