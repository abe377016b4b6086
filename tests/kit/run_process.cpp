#include "run_process.h"

#include <windows.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>

#include "sim/standin/wide_text.h"
#include "tool/system/Utf8.h"

namespace gputune::kit {

namespace {

struct CloseHandles {
    void operator()(void* handle) const { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, CloseHandles>;

// Null when the system refuses.
Handle Owned(HANDLE handle) {
    return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

// The new process inherits it.
Handle Open(wchar_t const* path, DWORD access, DWORD disposition) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    return Owned(::CreateFileW(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherited,
                               disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// Ends every process in it when its last handle is closed. Null where this process is in a job already and the system,
// Windows 7, knows no jobs in jobs: then only the process itself is ended.
Handle NewJob() {
    Handle job = Owned(::CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    ::SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

struct Process {
    Handle process;
    Handle thread;
    std::string error;
};

Process Start(std::filesystem::path const& program, std::wstring const& arguments,
              std::filesystem::path const& directory, std::filesystem::path const& output,
              std::filesystem::path const& messages) {
    // While it has handles that are inherited, no other process is started, which would inherit them, too.
    static std::mutex mutex;
    std::lock_guard const lock(mutex);
    Handle const input = Open(L"NUL", GENERIC_READ, OPEN_EXISTING);
    Handle const out = Open(output.c_str(), GENERIC_WRITE, CREATE_ALWAYS);
    Handle const error = Open(messages.c_str(), GENERIC_WRITE, CREATE_ALWAYS);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.get();
    startup.hStdOutput = out.get();
    startup.hStdError = error.get();
    PROCESS_INFORMATION information{};
    std::wstring line = L"\"" + program.wstring() + L"\" " + arguments;
    if (!::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW | CREATE_SUSPENDED, nullptr,
                          directory.c_str(), &startup, &information)) {
        return {nullptr, nullptr, tool::SystemMessage(::GetLastError())};
    }
    return {Owned(information.hProcess), Owned(information.hThread), ""};
}

}  // namespace

std::string ReadText(std::filesystem::path const& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string const bytes{std::istreambuf_iterator<char>(stream), {}};
    bool const isUtf8 = bytes.empty() || ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(),
                                                               static_cast<int>(bytes.size()), nullptr, 0) != 0;
    std::string text = sim::FromWide(sim::ToWide(bytes, isUtf8 ? CP_UTF8 : CP_ACP));
    std::erase(text, '\r');
    return text;
}

Ended RunProcess(std::filesystem::path const& program, std::wstring const& arguments,
                 std::filesystem::path const& directory, unsigned limitSeconds) {
    auto const begin = std::chrono::steady_clock::now();
    // Beside the folder: the process has that for itself.
    std::filesystem::path const output = directory.wstring() + L".output";
    std::filesystem::path const messages = directory.wstring() + L".messages";
    Ended ended;
    Process const child = Start(program, arguments, directory, output, messages);
    if (!child.process) {
        ended.messages = child.error;
        return ended;
    }
    ended.started = true;
    {
        Handle const job = NewJob();
        ::AssignProcessToJobObject(job.get(), child.process.get());
        ::ResumeThread(child.thread.get());
        if (::WaitForSingleObject(child.process.get(), limitSeconds * 1000) != WAIT_OBJECT_0) {
            ended.timedOut = true;
            ::TerminateProcess(child.process.get(), 1);
        }
    }
    // One that a driver keeps from ending is left behind.
    constexpr DWORD kPatience = 5000;
    ::WaitForSingleObject(child.process.get(), kPatience);
    DWORD code = 0;
    ::GetExitCodeProcess(child.process.get(), &code);
    ended.exitCode = code;
    ended.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    ended.output = ReadText(output);
    ended.messages = ReadText(messages);
    std::error_code ignored;
    std::filesystem::remove(output, ignored);
    std::filesystem::remove(messages, ignored);
    return ended;
}

}  // namespace gputune::kit
