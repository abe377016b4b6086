#include "tool/hold/WorkerHost.h"

#include <windows.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "tool/system/Files.h"

namespace gputune::tool {

namespace {

// The arguments of a worker with these options.
std::vector<std::string> WorkerArguments(GlobalOptions const& options) {
    std::vector<std::string> arguments;
    if (!options.boardFile.empty()) {
        arguments.insert(arguments.end(), {"--simulate", options.boardFile});
    }
    if (!options.boardState.empty()) {
        arguments.insert(arguments.end(), {"--board-state", options.boardState});
    }
    if (options.adapter) {
        arguments.insert(arguments.end(), {"--adapter", std::to_string(*options.adapter)});
    }
    if (options.log == GPUTUNE_LOG_FILE || options.log == GPUTUNE_LOG_BOTH) {
        arguments.insert(arguments.end(), {"--log", "file"});
    }
    arguments.emplace_back("hold-worker");
    return arguments;
}

}  // namespace

WorkerHost::WorkerHost(GlobalOptions options) : options_(std::move(options)) {
    if (!options_.boardFile.empty()) {
        options_.boardFile = FullPath(options_.boardFile);
    }
    if (!options_.boardState.empty()) {
        options_.boardState = FullPath(options_.boardState);
    }
}

void WorkerHost::Start() {
    worker_ = std::make_unique<WorkerProcess>(WorkerArguments(options_));
    if (shared_ != nullptr) {
        worker_->Share(shared_);
    }
}

void WorkerHost::End() {
    if (worker_ != nullptr) {
        worker_->End();
        worker_.reset();
    }
}

void WorkerHost::Send(std::string const& line) {
    // A worker that does not read has ended, which is seen at once.
    static_cast<void>(worker_->WriteLine(line));
}

void WorkerHost::Close(unsigned long milliseconds) {
    if (worker_ != nullptr) {
        worker_->Close(milliseconds);
        worker_.reset();
    }
}

void WorkerHost::Share(void* handle) {
    shared_ = handle;
    if (worker_ != nullptr) {
        worker_->Share(handle);
    }
}

void WorkerHost::Hear(std::function<void(std::string const&)> const& onLine, std::function<void()> const& onGone) {
    WorkerProcess const* const heard = worker_.get();
    while (heard != nullptr && heard == worker_.get()) {
        std::optional<std::string> const line = worker_->TakeLine();
        if (!line) {
            if (worker_->IsGone()) {
                onGone();
            }
            return;
        }
        onLine(*line);
    }
}

void* WorkerHost::Handle() const {
    return worker_ != nullptr ? worker_->Handle() : nullptr;
}

Wake WaitForWorker(InterruptEvent const* interrupt, void* worker, unsigned long milliseconds) {
    HANDLE handles[2];
    DWORD count = 0;
    if (interrupt != nullptr) {
        handles[count++] = interrupt->Handle();
    }
    if (worker != nullptr) {
        handles[count++] = worker;
    }
    if (count == 0) {
        Sleep(milliseconds);
        return Wake::Time;
    }
    DWORD const happened = WaitForMultipleObjects(count, handles, FALSE, milliseconds) - WAIT_OBJECT_0;
    if (happened >= count) {
        return Wake::Time;
    }
    return handles[happened] == worker ? Wake::Worker : Wake::Stop;
}

double SupervisorTime() {
    return static_cast<double>(GetTickCount64()) / 1000;
}

unsigned long MillisecondsUntil(double time) {
    return static_cast<unsigned long>(std::ceil(std::clamp(time - SupervisorTime(), 0.0, 60.0) * 1000));
}

}  // namespace gputune::tool
