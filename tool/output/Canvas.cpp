#include "tool/output/Canvas.h"

#include <windows.h>

#include <algorithm>
#include <string>

#include "tool/system/Console.h"
#include "tool/system/Utf8.h"

namespace gputune::tool {

namespace {

// Many programs show no colours when this variable is set.
bool WantsColours() {
    return GetEnvironmentVariableW(L"NO_COLOR", nullptr, 0) == 0;
}

// Draws with the escape sequences of terminals.
class SequenceCanvas : public Canvas {
public:
    explicit SequenceCanvas(HANDLE console) : console_(console) {
        WriteConsoleText(console_, L"\x1b[?1049h\x1b[?25l\x1b[H\x1b[2J");
    }

    ~SequenceCanvas() override { WriteConsoleText(console_, L"\x1b[?1049l\x1b[?25h" + Lines(L"")); }

    Glyphs UsableGlyphs() const override { return Glyphs::Curves; }

    void Draw(std::vector<StyledLine> const& picture, std::size_t) override {
        picture_ = picture;
        // Written at once, so that no half picture is seen. "\x1b[K" clears the rest of a line.
        WriteConsoleText(console_, L"\x1b[H" + Lines(L"\x1b[K") + L"\x1b[J");
    }

    void Clear() override { WriteConsoleText(console_, L"\x1b[2J"); }

private:
    std::wstring Lines(std::wstring const& end) const {
        std::wstring lines;
        for (StyledLine const& line : picture_) {
            lines += WideFromUtf8(TerminalText(line, colours_)) + end + L"\r\n";
        }
        return lines;
    }

    HANDLE console_;
    bool colours_ = WantsColours();
    std::vector<StyledLine> picture_;
};

// Draws by the cursor's position.
class CursorCanvas : public Canvas {
public:
    explicit CursorCanvas(HANDLE console) : console_(console), plain_(Info().wAttributes) { ShowCursor(false); }

    ~CursorCanvas() override { ShowCursor(true); }

    Glyphs UsableGlyphs() const override { return Glyphs::Bars; }

    void Draw(std::vector<StyledLine> const& picture, std::size_t width) override {
        int const row = std::max(0, Info().dwCursorPosition.Y - static_cast<int>(drawn_));
        SetConsoleCursorPosition(console_, {0, static_cast<SHORT>(row)});
        for (StyledLine const& line : picture) {
            WriteLine(line);
        }
        for (std::size_t i = picture.size(); i < drawn_; ++i) {
            WriteLine({{std::string(width, ' '), Style::Plain}});
        }
        drawn_ = std::max(picture.size(), drawn_);
    }

    void Clear() override {
        CONSOLE_SCREEN_BUFFER_INFO const info = Info();
        COORD const corner{0, info.srWindow.Top};
        auto const cells = static_cast<DWORD>(info.dwSize.X) *
                           static_cast<DWORD>(std::max(0, info.srWindow.Bottom - info.srWindow.Top + 1));
        DWORD written = 0;
        FillConsoleOutputCharacterW(console_, L' ', cells, corner, &written);
        FillConsoleOutputAttribute(console_, plain_, cells, corner, &written);
        SetConsoleCursorPosition(console_, corner);
        drawn_ = 0;
    }

private:
    CONSOLE_SCREEN_BUFFER_INFO Info() const {
        CONSOLE_SCREEN_BUFFER_INFO info{};
        GetConsoleScreenBufferInfo(console_, &info);
        return info;
    }

    void ShowCursor(bool isVisible) const {
        CONSOLE_CURSOR_INFO cursor{};
        if (GetConsoleCursorInfo(console_, &cursor)) {
            cursor.bVisible = isVisible;
            SetConsoleCursorInfo(console_, &cursor);
        }
    }

    WORD Attributes(Style style) const {
        if (!colours_ || style == Style::Plain) {
            return plain_;
        }
        auto const colours = static_cast<unsigned>(style);
        unsigned const foreground = ((colours & 1U) != 0 ? FOREGROUND_RED : 0U) |
                                    ((colours & 2U) != 0 ? FOREGROUND_GREEN : 0U) |
                                    ((colours & 4U) != 0 ? FOREGROUND_BLUE : 0U);
        return static_cast<WORD>((plain_ & 0xF0U) | FOREGROUND_INTENSITY | foreground);
    }

    void WriteLine(StyledLine const& line) const {
        for (StyledText const& part : line) {
            SetConsoleTextAttribute(console_, Attributes(part.style));
            WriteConsoleText(console_, WideFromUtf8(part.text));
        }
        SetConsoleTextAttribute(console_, plain_);
        WriteConsoleText(console_, L"\r\n");
    }

    HANDLE console_;
    WORD plain_;
    bool colours_ = WantsColours();
    std::size_t drawn_ = 0;  // lines
};

// Some consoles accept the mode and print the sequences as text. So this writes one that has no effect, and looks
// whether the cursor moved.
bool UnderstandsSequences(HANDLE console) {
    // The headers do not name it to programs for Windows 7.
    constexpr DWORD kVirtualTerminalProcessing = 0x0004;
    DWORD mode = 0;
    CONSOLE_SCREEN_BUFFER_INFO before{};
    CONSOLE_SCREEN_BUFFER_INFO after{};
    if (!GetConsoleMode(console, &mode) || !SetConsoleMode(console, mode | kVirtualTerminalProcessing) ||
        !GetConsoleScreenBufferInfo(console, &before) || !WriteConsoleText(console, L"\x1b[m") ||
        !GetConsoleScreenBufferInfo(console, &after)) {
        return false;
    }
    if (after.dwCursorPosition.X == before.dwCursorPosition.X) {
        return true;
    }
    SetConsoleCursorPosition(console, before.dwCursorPosition);
    WriteConsoleText(console, L"   ");
    SetConsoleCursorPosition(console, before.dwCursorPosition);
    return false;
}

}  // namespace

std::unique_ptr<Canvas> MakeCanvas(void* console) {
    if (UnderstandsSequences(console)) {
        return std::make_unique<SequenceCanvas>(console);
    }
    return std::make_unique<CursorCanvas>(console);
}

}  // namespace gputune::tool
