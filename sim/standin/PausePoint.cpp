#include "sim/standin/PausePoint.h"

#include <windows.h>

#include <sstream>

namespace gputune::sim {

namespace {

// The C runtime's own copy of the environment is older than a change by the process's parts.
std::string Variable(char const* name) {
    std::string text(::GetEnvironmentVariableA(name, nullptr, 0), '\0');
    text.resize(::GetEnvironmentVariableA(name, text.data(), static_cast<DWORD>(text.size())));
    return text;
}

}  // namespace

PausePoint::PausePoint() : trace_(Variable("GPUTUNE_SIM_TRACE")) {
    std::istringstream text(Variable("GPUTUNE_SIM_PAUSE"));
    std::string when;
    text >> when >> number_ >> entryPoint_ >> name_;
    before_ = when == "before";
}

void PausePoint::BeforeCall(std::string_view entryPoint) {
    calls_ += entryPoint == entryPoint_ ? 1 : 0;
    if (!trace_.empty()) {
        Trace(entryPoint);
    }
    if (before_ && IsHere(entryPoint)) {
        Wait();
    }
}

void PausePoint::AfterCall(std::string_view entryPoint) const {
    if (!before_ && IsHere(entryPoint)) {
        Wait();
    }
}

void PausePoint::Trace(std::string_view entryPoint) const {
    HANDLE const file = ::CreateFileA(trace_.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    std::string line = std::to_string(::GetCurrentProcessId());
    line.append(" ").append(entryPoint).append("\n");
    DWORD written = 0;
    ::WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    ::CloseHandle(file);
}

void PausePoint::Wait() const {
    HANDLE const reached = ::OpenEventA(EVENT_MODIFY_STATE | SYNCHRONIZE, FALSE, (name_ + "-reached").c_str());
    HANDLE const go = ::OpenEventA(SYNCHRONIZE, FALSE, (name_ + "-go").c_str());
    if (reached != nullptr && go != nullptr && ::WaitForSingleObject(reached, 0) == WAIT_TIMEOUT) {
        ::SetEvent(reached);
        ::WaitForSingleObject(go, INFINITE);
    }
    for (HANDLE const event : {reached, go}) {
        if (event != nullptr) {
            ::CloseHandle(event);
        }
    }
}

}  // namespace gputune::sim
