// What the exporter's threads share: one publishes, those of the server read. No reader waits for a driver, nor for
// another reader of the same.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "tool/serve/History.h"
#include "tool/serve/Http.h"
#include "tool/serve/Snapshot.h"

namespace gputune::tool {

class ServedState {
public:
    // The interval of the samples, in seconds. `clock` is asked by every thread.
    ServedState(double interval, Moment (*clock)()) : clock_(clock), history_(interval) {}

    // To be called at every moment of sampling: from now on this is what is served, and what followers are sent.
    void Publish(Snapshot snapshot);
    // Nobody waits for events any more.
    void End();

    // As of now.
    Snapshot Current() const;

    // "/metrics", "/api/...", "/healthz". They end before this object does.
    std::vector<HttpRoute> Routes();

private:
    class Events;

    Moment (*clock_)();
    mutable std::mutex mutex_;
    std::condition_variable published_;
    std::shared_ptr<Snapshot const> snapshot_ = std::make_shared<Snapshot const>();
    std::uint64_t moments_ = 0;
    bool hasEnded_ = false;
    std::mutex historyMutex_;  // its text takes longer
    History history_;
};

}  // namespace gputune::tool
