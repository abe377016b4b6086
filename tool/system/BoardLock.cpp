#include "tool/system/BoardLock.h"

#include <windows.h>

#include "tool/system/Utf8.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

// Longer than a worker waits before it acts, and acts.
constexpr DWORD kWorkersLimit = 10000;  // ms
constexpr DWORD kLookAgain = 50;

[[noreturn]] void FailAsHeld(std::string const& detail) {
    throw ToolError("Another gputunectl holds this board" + detail + ".", {.code = "held"});
}

}  // namespace

BoardLock::BoardLock(std::string const& board) {
    std::wstring const name = L"Global\\gputunectl-hold-" + WideFromUtf8(board);
    ULONGLONG const end = GetTickCount64() + kWorkersLimit;
    for (;;) {
        mutex_ = CreateMutexW(nullptr, TRUE, name.c_str());
        DWORD const error = GetLastError();
        if (mutex_ == nullptr) {
            FailAsHeld(", for another user: " + SystemMessage(error));
        }
        if (error != ERROR_ALREADY_EXISTS) {
            return;
        }
        // Owned: by a living supervisor. Not owned: only workers have it.
        DWORD const owned = WaitForSingleObject(mutex_, 0);
        if (owned != WAIT_TIMEOUT) {
            ReleaseMutex(mutex_);
        }
        CloseHandle(mutex_);
        mutex_ = nullptr;
        if (owned == WAIT_TIMEOUT) {
            FailAsHeld("");
        }
        if (GetTickCount64() >= end) {
            FailAsHeld(": a worker process of an earlier one has not ended");
        }
        Sleep(kLookAgain);
    }
}

BoardLock::~BoardLock() {
    if (mutex_ != nullptr) {
        ReleaseMutex(mutex_);
        CloseHandle(mutex_);
    }
}

}  // namespace gputune::tool
