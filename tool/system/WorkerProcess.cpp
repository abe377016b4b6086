#include "tool/system/WorkerProcess.h"

#include <windows.h>

#include <cstdint>
#include <utility>

#include "sim/host/module_path.h"
#include "tool/system/Utf8.h"
#include "tool/values/Errors.h"
#include "tool/values/Numbers.h"

namespace gputune::tool {

namespace {

[[noreturn]] void Fail(char const* what) {
    std::string const reason = SystemMessage(GetLastError());
    throw ToolError(std::string("The worker process cannot be started: ") + what + ": " + reason + ".");
}

// An argument as the C runtime of the new process takes it apart.
std::wstring Quoted(std::wstring const& argument) {
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (wchar_t const c : argument) {
        if (c == L'"') {
            text.append(backslashes + 1, L'\\');
        }
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        text += c;
    }
    return text.append(backslashes, L'\\') + L"\"";
}

std::wstring CommandLine(std::wstring const& program, std::vector<std::string> const& arguments) {
    std::wstring line = Quoted(program);
    for (std::string const& argument : arguments) {
        line += L" " + Quoted(WideFromUtf8(argument));
    }
    return line;
}

struct Pipe {
    HANDLE read = nullptr;
    HANDLE write = nullptr;

    explicit Pipe(DWORD size) {
        SECURITY_ATTRIBUTES attributes{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        if (!CreatePipe(&read, &write, &attributes, size)) {
            Fail("no pipe");
        }
    }
    ~Pipe() {
        for (HANDLE const end : {read, write}) {
            if (end != nullptr) {
                CloseHandle(end);
            }
        }
    }
    Pipe(Pipe const&) = delete;
    Pipe& operator=(Pipe const&) = delete;
};

// Without this list, the new process would inherit every handle that can be inherited, also those of other pipes.
class HandleList {
public:
    explicit HandleList(std::vector<HANDLE>& handles) {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        storage_.resize(size);
        if (!InitializeProcThreadAttributeList(List(), 1, 0, &size)) {
            Fail("no list of handles");
        }
        if (!UpdateProcThreadAttribute(List(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles.data(),
                                       handles.size() * sizeof(HANDLE), nullptr, nullptr)) {
            DeleteProcThreadAttributeList(List());
            Fail("no list of handles");
        }
    }
    ~HandleList() { DeleteProcThreadAttributeList(List()); }
    HandleList(HandleList const&) = delete;
    HandleList& operator=(HandleList const&) = delete;

    LPPROC_THREAD_ATTRIBUTE_LIST List() { return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(storage_.data()); }

private:
    std::vector<std::uint8_t> storage_;
};

HANDLE Release(HANDLE& handle) {
    return std::exchange(handle, nullptr);
}

}  // namespace

WorkerProcess::WorkerProcess(std::vector<std::string> const& arguments) {
    // More than one order or answer has, and more than the library logs in one call.
    constexpr DWORD kLineBuffer = 64U * 1024;
    constexpr DWORD kLogBuffer = 1024U * 1024;
    Pipe orders(kLineBuffer);
    Pipe answers(kLineBuffer);
    Pipe log(kLogBuffer);
    std::vector<HANDLE> handles{orders.read, answers.write, log.write, log.read};
    HandleList list(handles);
    STARTUPINFOEXW startup{};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdInput = orders.read;
    startup.StartupInfo.hStdOutput = log.write;
    startup.StartupInfo.hStdError = answers.write;
    startup.lpAttributeList = list.List();
    std::wstring const program = sim::ModulePath().wstring();
    std::wstring line =
        CommandLine(program, arguments) + L" " + std::to_wstring(reinterpret_cast<std::uintptr_t>(log.read));
    PROCESS_INFORMATION process{};
    // Without a console, so that the closing of the console reaches the supervisor only.
    if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE,
                        DETACHED_PROCESS | EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr, &startup.StartupInfo,
                        &process)) {
        Fail("no process");
    }
    CloseHandle(process.hThread);
    process_.reset(process.hProcess);
    orders_.reset(Release(orders.write));
    answers_ = std::make_unique<PipeLines>(Release(answers.read));
}

WorkerProcess::~WorkerProcess() {
    End();
}

void* WorkerProcess::Handle() const {
    return answers_->Handle();
}

bool WorkerProcess::WriteLine(std::string const& line) const {
    return orders_ != nullptr && WritePipeLine(orders_.get(), line);
}

std::optional<std::string> WorkerProcess::TakeLine() const {
    return answers_->Take();
}

bool WorkerProcess::IsGone() const {
    return answers_->IsAtEnd();
}

void WorkerProcess::Share(void* handle) const {
    HANDLE shared = nullptr;
    DuplicateHandle(GetCurrentProcess(), handle, process_.get(), &shared, 0, FALSE, DUPLICATE_SAME_ACCESS);
}

void WorkerProcess::Close(unsigned long milliseconds) {
    orders_.reset();
    WaitForSingleObject(process_.get(), milliseconds);
}

void WorkerProcess::End() {
    constexpr DWORD kEndLimit = 2000;
    TerminateProcess(process_.get(), 1);
    WaitForSingleObject(process_.get(), kEndLimit);
}

unsigned long WorkerProcess::Id() const {
    return GetProcessId(process_.get());
}

void WorkerProcess::CloseHandles::operator()(void* handle) const {
    CloseHandle(handle);
}

void StartAlone(std::vector<std::string> const& arguments) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    std::wstring const program = sim::ModulePath().wstring();
    std::wstring line = CommandLine(program, arguments);
    PROCESS_INFORMATION process{};
    if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS, nullptr, nullptr,
                       &startup, &process)) {
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
}

OwnOutput::OwnOutput(std::string const& handle)
    : pipe_(reinterpret_cast<void*>(ParseNumber<std::uintptr_t>(handle).value_or(0))) {}

std::string OwnOutput::Take() const {
    std::string text;
    DWORD waiting = 0;
    while (PeekNamedPipe(pipe_, nullptr, 0, nullptr, &waiting, nullptr) && waiting > 0) {
        std::size_t const end = text.size();
        text.resize(end + waiting);
        DWORD read = 0;
        if (!ReadFile(pipe_, text.data() + end, waiting, &read, nullptr)) {
            read = 0;
        }
        text.resize(end + read);
    }
    return text;
}

}  // namespace gputune::tool
