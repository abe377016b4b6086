#include "tool/board/KeptLog.h"

#include <windows.h>

#include "tool/system/Files.h"
#include "tool/system/Utf8.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

constexpr wchar_t kLogFile[] = L"debug.log";

bool HasFile(GputuneLogMode mode) {
    return mode == GPUTUNE_LOG_FILE || mode == GPUTUNE_LOG_BOTH;
}

std::wstring CurrentDirectory() {
    std::wstring path(GetCurrentDirectoryW(0, nullptr), L'\0');
    path.resize(GetCurrentDirectoryW(static_cast<DWORD>(path.size()), path.data()));
    return path;
}

// Empty when it cannot be made.
std::wstring MakeFolder() {
    wchar_t directory[MAX_PATH + 1];
    DWORD const length = GetTempPathW(static_cast<DWORD>(std::size(directory)), directory);
    if (length == 0 || length >= std::size(directory)) {
        return L"";
    }
    std::wstring const start = directory + (L"gputunectl-" + std::to_wstring(GetCurrentProcessId())) + L"-";
    // A folder that exists already belongs to another process.
    for (int i = 0; i < 100; ++i) {
        std::wstring folder = start + std::to_wstring(i);
        if (CreateDirectoryW(folder.c_str(), nullptr)) {
            return folder;
        }
    }
    return L"";
}

}  // namespace

void RequireLogFile(GputuneLogMode mode) {
    if (!HasFile(mode)) {
        return;
    }
    HANDLE const file = CreateFileW(kLogFile, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        std::string const reason = SystemMessage(GetLastError());
        throw ToolError("The log file debug.log cannot be opened in " + Utf8FromWide(CurrentDirectory()) + ": " +
                        reason + ". Nothing was done.");
    }
    CloseHandle(file);
}

KeptLog::KeptLog(GputuneLogMode wanted) : mode_(wanted) {
    if (HasFile(wanted)) {
        file_ = CurrentDirectory() + L"\\" + kLogFile;
        return;
    }
    folder_ = MakeFolder();
    if (!folder_.empty()) {
        file_ = folder_ + L"\\" + kLogFile;
        mode_ = wanted == GPUTUNE_LOG_STDOUT ? GPUTUNE_LOG_BOTH : GPUTUNE_LOG_FILE;
    }
}

KeptLog::~KeptLog() {
    if (!folder_.empty()) {
        DeleteFileW(file_.c_str());
        RemoveDirectoryW(folder_.c_str());
    }
}

KeptLog::InDirectory::InDirectory(KeptLog const& log) {
    if (!log.folder_.empty()) {
        former_ = CurrentDirectory();
        SetCurrentDirectoryW(log.folder_.c_str());
    }
}

KeptLog::InDirectory::~InDirectory() {
    if (!former_.empty()) {
        SetCurrentDirectoryW(former_.c_str());
    }
}

LogEntries KeptLog::Read() const {
    constexpr std::size_t kEnough = 64U * 1024 * 1024;
    try {
        return file_.empty() ? LogEntries() : ReadLogEntries(ReadTextFile(Utf8FromWide(file_), kEnough));
    } catch (ToolError const&) {
        return {};
    }
}

}  // namespace gputune::tool
