#include "tool/system/PipeLines.h"

#include <windows.h>

#include <deque>
#include <utility>

#include "tool/system/Utf8.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

class Lock {
public:
    explicit Lock(CRITICAL_SECTION& section) : section_(section) { EnterCriticalSection(&section_); }
    ~Lock() { LeaveCriticalSection(&section_); }
    Lock(Lock const&) = delete;
    Lock& operator=(Lock const&) = delete;

private:
    CRITICAL_SECTION& section_;
};

// More than any message has: what sends longer lines is no worker.
constexpr std::size_t kLongestLine = 1U << 20U;

}  // namespace

// Belongs to the thread as well, which may outlive the object when the system does not let it go.
struct PipeLines::Shared {
    Shared(void* handle, std::function<void()> whenClosed)
        : pipe(handle), event(CreateEventW(nullptr, FALSE, FALSE, nullptr)), closed(std::move(whenClosed)) {
        InitializeCriticalSection(&section);
    }
    ~Shared() {
        DeleteCriticalSection(&section);
        CloseHandle(event);
        CloseHandle(pipe);
    }
    Shared(Shared const&) = delete;
    Shared& operator=(Shared const&) = delete;

    static DWORD WINAPI Run(void* argument) {
        std::unique_ptr<std::shared_ptr<Shared>> const own(static_cast<std::shared_ptr<Shared>*>(argument));
        (*own)->Read();
        return 0;
    }

    void Read() {
        char block[4096];
        std::string rest;
        DWORD read = 0;
        while (ReadFile(pipe, block, sizeof block, &read, nullptr) && read > 0 && rest.size() <= kLongestLine) {
            rest.append(block, read);
            Add(rest);
        }
        {
            Lock const lock(section);
            atEnd = true;
        }
        SetEvent(event);
        if (closed) {
            closed();
        }
    }

    void Add(std::string& rest) {
        Lock const lock(section);
        for (std::size_t end = rest.find('\n'); end != std::string::npos; end = rest.find('\n')) {
            std::size_t const length = end > 0 && rest[end - 1] == '\r' ? end - 1 : end;
            lines.push_back(rest.substr(0, length));
            rest.erase(0, end + 1);
            SetEvent(event);
        }
    }

    void* pipe;
    void* event;
    std::function<void()> closed;
    CRITICAL_SECTION section{};
    std::deque<std::string> lines;
    bool atEnd = false;
};

PipeLines::PipeLines(void* pipe, std::function<void()> atEnd)
    : shared_(std::make_shared<Shared>(pipe, std::move(atEnd))) {
    auto own = std::make_unique<std::shared_ptr<Shared>>(shared_);
    constexpr std::size_t kStack = 64U * 1024;
    thread_ = CreateThread(nullptr, kStack, Shared::Run, own.get(), STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (thread_ == nullptr) {
        throw ToolError("No thread can be started: " + SystemMessage(GetLastError()) + ".");
    }
    static_cast<void>(own.release());  // deliberate: the thread deletes it
}

PipeLines::~PipeLines() {
    for (int i = 0; i < 20 && WaitForSingleObject(thread_, 0) == WAIT_TIMEOUT; ++i) {
        CancelSynchronousIo(thread_);
        WaitForSingleObject(thread_, 50);
    }
    CloseHandle(thread_);
}

void* PipeLines::Handle() const {
    return shared_->event;
}

std::optional<std::string> PipeLines::Take() {
    Lock const lock(shared_->section);
    if (shared_->lines.empty()) {
        return std::nullopt;
    }
    std::string line = std::move(shared_->lines.front());
    shared_->lines.pop_front();
    return line;
}

bool PipeLines::IsAtEnd() const {
    Lock const lock(shared_->section);
    return shared_->atEnd && shared_->lines.empty();
}

bool WritePipeLine(void* pipe, std::string const& line) {
    std::string const text = line + "\n";
    DWORD written = 0;
    return WriteFile(pipe, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) && written == text.size();
}

}  // namespace gputune::tool
