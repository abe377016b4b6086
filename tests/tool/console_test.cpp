// The host tool on a console of its own: what stands on the screen, keys, and another size of the window.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>

namespace {

// Where the build put the program; the repository's root is the folder above.
constexpr wchar_t const* program = GPUTUNE_TOOL_PROGRAM;
constexpr wchar_t const* boards = GPUTUNE_TOOL_BOARDS;

class Handle {
public:
    explicit Handle(HANDLE handle) : handle_(handle) {}
    ~Handle() {
        if (handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE) {
            CloseHandle(handle_);
        }
    }
    Handle(Handle const&) = delete;
    Handle& operator=(Handle const&) = delete;
    HANDLE Get() const { return handle_; }

private:
    HANDLE handle_;
};

// The tool in a console that nobody sees. This process shares the console while the object lives.
class ToolOnConsole {
public:
    explicit ToolOnConsole(std::wstring const& arguments) {
        std::wstring line =
            L"\"" + std::wstring(program) + L"\" --simulate \"" + boards + L"\\overdrive8.json\" " + arguments;
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        FreeConsole();
        started_ = CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr,
                                  &startup, &process_) != 0;
        EXPECT_TRUE(started_) << GetLastError();
        // The console is there as soon as the process is, but not on every system at once.
        EXPECT_TRUE(Eventually([this] { return AttachConsole(process_.dwProcessId) != 0; })) << GetLastError();
    }

    ~ToolOnConsole() {
        FreeConsole();
        if (started_) {
            TerminateProcess(process_.hProcess, 99);
            WaitForSingleObject(process_.hProcess, 5000);
            CloseHandle(process_.hProcess);
            CloseHandle(process_.hThread);
        }
    }

    ToolOnConsole(ToolOnConsole const&) = delete;
    ToolOnConsole& operator=(ToolOnConsole const&) = delete;

    static bool Eventually(std::function<bool()> const& condition) {
        for (int i = 0; i < 1200; ++i) {
            if (condition()) {
                return true;
            }
            Sleep(50);
        }
        return false;
    }

    // The visible text, a line for each of the window's.
    std::wstring Screen() const {
        Handle const output(Open(L"CONOUT$"));
        CONSOLE_SCREEN_BUFFER_INFO info{};
        std::wstring text;
        if (GetConsoleScreenBufferInfo(output.Get(), &info)) {
            for (SHORT row = info.srWindow.Top; row <= info.srWindow.Bottom; ++row) {
                std::wstring line(static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1), L' ');
                DWORD read = 0;
                ReadConsoleOutputCharacterW(output.Get(), line.data(), static_cast<DWORD>(line.size()),
                                            {info.srWindow.Left, row}, &read);
                line.resize(read);
                text += line + L"\n";
            }
        }
        return text;
    }

    bool Shows(std::wstring const& text) const { return Screen().find(text) != std::wstring::npos; }
    bool EventuallyShows(std::wstring const& text) const {
        return Eventually([&] { return Shows(text); });
    }

    void Resize(SHORT width, SHORT height) const {
        Handle const output(Open(L"CONOUT$"));
        // The window may never be larger than its buffer.
        SMALL_RECT const smallest{0, 0, 0, 0};
        SMALL_RECT const window{0, 0, static_cast<SHORT>(width - 1), static_cast<SHORT>(height - 1)};
        SetConsoleWindowInfo(output.Get(), TRUE, &smallest);
        EXPECT_TRUE(SetConsoleScreenBufferSize(output.Get(), {width, height})) << GetLastError();
        EXPECT_TRUE(SetConsoleWindowInfo(output.Get(), TRUE, &window)) << GetLastError();
    }

    void Press(wchar_t key) const {
        Handle const input(Open(L"CONIN$"));
        INPUT_RECORD record{};
        record.EventType = KEY_EVENT;
        record.Event.KeyEvent.bKeyDown = TRUE;
        record.Event.KeyEvent.wRepeatCount = 1;
        record.Event.KeyEvent.uChar.UnicodeChar = key;
        DWORD written = 0;
        EXPECT_TRUE(WriteConsoleInputW(input.Get(), &record, 1, &written)) << GetLastError();
    }

    // What the system does to tell the tool of an event of this kind, in a thread of the tool's.
    void Tell(DWORD kind) const {
        FARPROC const routine = GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "CtrlRoutine");
        ASSERT_NE(routine, nullptr);
        // Modules of the system have one address in all processes.
        Handle const thread(CreateRemoteThread(
            process_.hProcess, nullptr, 0, reinterpret_cast<LPTHREAD_START_ROUTINE>(reinterpret_cast<void*>(routine)),
            reinterpret_cast<void*>(static_cast<std::uintptr_t>(kind)), 0, nullptr));
        EXPECT_NE(thread.Get(), nullptr) << GetLastError();
    }

    // The exit code; 1000 when the tool does not end.
    DWORD ExitCode() const {
        DWORD code = 1000;
        if (WaitForSingleObject(process_.hProcess, 60000) == WAIT_OBJECT_0) {
            GetExitCodeProcess(process_.hProcess, &code);
        }
        return code;
    }

private:
    static HANDLE Open(wchar_t const* name) {
        return CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                           OPEN_EXISTING, 0, nullptr);
    }

    PROCESS_INFORMATION process_{};
    bool started_ = false;
};

std::string Utf8(std::wstring const& text) {
    std::string utf8(text.size() * 4, '\0');
    int const size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), utf8.data(),
                                         static_cast<int>(utf8.size()), nullptr, nullptr);
    utf8.resize(static_cast<std::size_t>(size));
    return utf8;
}

TEST(Dashboard, ShowsEverySensorWithItsFigures) {
    ToolOnConsole const tool(L"monitor --interval 0.1");
    EXPECT_TRUE(tool.EventuallyShows(L" readings, one every 0.1 s")) << Utf8(tool.Screen());
    std::wstring const screen = tool.Screen();
    for (wchar_t const* const text :
         {L"AMD Radeon RX 5700 XT, AMD Overdrive8", L"now      min      avg      max", L"GPU Core Clock ",
          L"GPU Temperature ", L"\u00b0C", L"GPU Load ", L"\u2588", L"q ends, r starts the figures anew"}) {
        EXPECT_NE(screen.find(text), std::wstring::npos) << Utf8(text) << "\n" << Utf8(screen);
    }
    EXPECT_EQ(screen.find(L"Frame rate"), std::wstring::npos) << "not asked for";
}

TEST(Dashboard, KeyQEnds) {
    ToolOnConsole const tool(L"monitor --interval 60");
    EXPECT_TRUE(tool.EventuallyShows(L"1 reading,")) << Utf8(tool.Screen());
    tool.Press(L'x');
    tool.Press(L'q');
    EXPECT_EQ(tool.ExitCode(), 0U);
    EXPECT_TRUE(tool.Shows(L"GPU Core Clock")) << "the last picture stays\n" << Utf8(tool.Screen());
}

TEST(Dashboard, KeyRStartsTheFiguresAnew) {
    ToolOnConsole const tool(L"monitor --interval 2");
    EXPECT_TRUE(tool.EventuallyShows(L"2 readings,")) << Utf8(tool.Screen());
    tool.Press(L'r');
    EXPECT_TRUE(tool.EventuallyShows(L"1 reading,")) << Utf8(tool.Screen());
}

TEST(Dashboard, CountEndsIt) {
    ToolOnConsole const tool(L"monitor --interval 0.1 --count 2");
    EXPECT_EQ(tool.ExitCode(), 0U);
    EXPECT_TRUE(tool.Shows(L"2 readings,")) << Utf8(tool.Screen());
}

TEST(Dashboard, FollowsTheSizeOfTheWindow) {
    // The picture has to change without another reading.
    ToolOnConsole const tool(L"monitor --interval 60");
    EXPECT_TRUE(tool.EventuallyShows(L"\u2588")) << Utf8(tool.Screen());
    tool.Resize(60, 20);
    EXPECT_TRUE(ToolOnConsole::Eventually([&] {
        std::wstring const screen = tool.Screen();
        return screen.find(L"max") != std::wstring::npos && screen.find(L"avg") == std::wstring::npos;
    })) << Utf8(tool.Screen());
    EXPECT_FALSE(tool.Shows(L"\u2588")) << Utf8(tool.Screen());
    tool.Resize(40, 7);
    EXPECT_TRUE(tool.EventuallyShows(L"more: the window is too low")) << Utf8(tool.Screen());
    tool.Resize(120, 30);
    EXPECT_TRUE(tool.EventuallyShows(L"avg")) << Utf8(tool.Screen());
    EXPECT_TRUE(tool.EventuallyShows(L"\u2588")) << Utf8(tool.Screen());
}

TEST(Question, CtrlCChangesNothing) {
    ToolOnConsole const tool(L"fan set 60");
    ASSERT_TRUE(tool.EventuallyShows(L"[y/N]")) << Utf8(tool.Screen());
    // Whatever was typed before counts for nothing.
    tool.Press(L'y');
    SetConsoleCtrlHandler(nullptr, TRUE);
    EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0)) << GetLastError();
    EXPECT_EQ(tool.ExitCode(), 1U);
    SetConsoleCtrlHandler(nullptr, FALSE);
    EXPECT_TRUE(tool.Shows(L"Nothing was changed.")) << Utf8(tool.Screen());
    EXPECT_FALSE(tool.Shows(L"Fan speed set")) << Utf8(tool.Screen());
}

TEST(Recording, ShowsItsProgress) {
    ToolOnConsole const tool(L"record --out progress.csv --duration 3 --interval 0.1");
    EXPECT_TRUE(tool.EventuallyShows(L"\u2588\u2588\u2588")) << Utf8(tool.Screen());
    std::wstring const screen = tool.Screen();
    EXPECT_NE(screen.find(L" %  "), std::wstring::npos) << Utf8(screen);
    EXPECT_NE(screen.find(L" readings, 0:0"), std::wstring::npos) << Utf8(screen);
    EXPECT_EQ(tool.ExitCode(), 0U);
    EXPECT_FALSE(tool.Shows(L"\u2588")) << "the bar goes away\n" << Utf8(tool.Screen());
    EXPECT_TRUE(tool.Shows(L" in progress.csv.")) << Utf8(tool.Screen());
}

TEST(Recording, CtrlCKeepsWhatWasRecorded) {
    ToolOnConsole const tool(L"record --out part.csv --duration 600 --interval 1");
    ASSERT_TRUE(tool.EventuallyShows(L" 2 readings")) << Utf8(tool.Screen());
    // It goes to every process of the console.
    SetConsoleCtrlHandler(nullptr, TRUE);
    EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0)) << GetLastError();
    EXPECT_EQ(tool.ExitCode(), 1U);
    SetConsoleCtrlHandler(nullptr, FALSE);
    EXPECT_TRUE(tool.Shows(L"ended before its time")) << Utf8(tool.Screen());
    Handle const file(CreateFileW(L"part.csv", GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    std::string text(65536, '\0');
    DWORD read = 0;
    ASSERT_TRUE(ReadFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &read, nullptr));
    text.resize(read);
    EXPECT_TRUE(text.starts_with("time,gpu_core_clock_mhz,"));
    EXPECT_TRUE(text.ends_with("\n"));
    EXPECT_GE(std::count(text.begin(), text.end(), '\n'), 3);
}

// A hold on a board that outlives it, with its journal in the current directory.
class Hold : public testing::Test {
protected:
    static constexpr wchar_t kArguments[] =
        L"--board-state held.state --yes hold --fan 40:30 90:100 --hysteresis 2 --interval 0.2";

    void SetUp() override { SetEnvironmentVariableW(L"GPUTUNE_STATE_DIRECTORY", L"state"); }

    static bool HasJournal() {
        WIN32_FIND_DATAW found{};
        HANDLE const search = FindFirstFileW(L"state\\hold-*.json", &found);
        if (search != INVALID_HANDLE_VALUE) {
            FindClose(search);
        }
        return search != INVALID_HANDLE_VALUE;
    }
};

TEST_F(Hold, KeyQEndsIt) {
    ToolOnConsole const tool(kArguments);
    EXPECT_TRUE(tool.EventuallyShows(L"fan 30 % | q ends and lets go")) << Utf8(tool.Screen());
    EXPECT_TRUE(tool.Shows(L"GPU Temperature ")) << Utf8(tool.Screen());
    EXPECT_TRUE(HasJournal());
    tool.Press(L'q');
    EXPECT_EQ(tool.ExitCode(), 0U);
    EXPECT_FALSE(HasJournal());
    EXPECT_TRUE(tool.Shows(L"Everything was taken back.")) << Utf8(tool.Screen());
}

TEST_F(Hold, AsksBeforeItBegins) {
    ToolOnConsole const tool(L"hold --fan 40:30 90:100 --power 10");
    EXPECT_TRUE(tool.EventuallyShows(L"Hold fan curve 40:30 90:100 by GPU Temperature, power limit 10 %"))
        << Utf8(tool.Screen());
    EXPECT_TRUE(tool.Shows(L"[y/N]")) << Utf8(tool.Screen());
    EXPECT_FALSE(HasJournal());
    SetConsoleCtrlHandler(nullptr, TRUE);
    EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0)) << GetLastError();
    EXPECT_EQ(tool.ExitCode(), 1U);
    SetConsoleCtrlHandler(nullptr, FALSE);
    EXPECT_TRUE(tool.Shows(L"Nothing was changed.")) << Utf8(tool.Screen());
}

// The closing of the console, the end of the session and of the system.
class HoldEnd : public Hold, public testing::WithParamInterface<DWORD> {};

TEST_P(HoldEnd, TakesEverythingBack) {
    ToolOnConsole const tool(kArguments);
    EXPECT_TRUE(tool.EventuallyShows(L"fan 30 % |")) << Utf8(tool.Screen());
    EXPECT_TRUE(HasJournal());
    tool.Tell(GetParam());
    EXPECT_NE(tool.ExitCode(), 1000U);
    EXPECT_FALSE(HasJournal());
}

INSTANTIATE_TEST_SUITE_P(, HoldEnd,
                         testing::Values(DWORD{CTRL_CLOSE_EVENT}, DWORD{CTRL_LOGOFF_EVENT},
                                         DWORD{CTRL_SHUTDOWN_EVENT}));

}  // namespace
