#include "tool/serve/ServedState.h"

#include <chrono>
#include <utility>

#include "tool/serve/MetricsText.h"
#include "tool/serve/PageData.h"

namespace gputune::tool {

class ServedState::Events : public EventSource {
public:
    explicit Events(ServedState& state) : state_(state) {}

    // The first one comes at once when anything was published.
    std::optional<std::string> Next(unsigned milliseconds) override {
        {
            std::unique_lock lock(state_.mutex_);
            bool const hasNews = state_.published_.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] {
                return state_.hasEnded_ || state_.moments_ != seen_;
            });
            if (!hasNews || state_.hasEnded_) {
                return std::nullopt;
            }
            seen_ = state_.moments_;
        }
        return EventJson(state_.Current(), state_.clock_().wall);
    }

private:
    ServedState& state_;
    std::uint64_t seen_ = 0;
};

void ServedState::Publish(Snapshot snapshot) {
    {
        std::lock_guard const lock(historyMutex_);
        history_.Add(snapshot, clock_().wall);
    }
    auto next = std::make_shared<Snapshot const>(std::move(snapshot));
    {
        std::lock_guard const lock(mutex_);
        snapshot_ = std::move(next);
        ++moments_;
    }
    published_.notify_all();
}

void ServedState::End() {
    {
        std::lock_guard const lock(mutex_);
        hasEnded_ = true;
    }
    published_.notify_all();
}

Snapshot ServedState::Current() const {
    std::shared_ptr<Snapshot const> snapshot;
    {
        std::lock_guard const lock(mutex_);
        snapshot = snapshot_;
    }
    return AsOf(*snapshot, clock_());
}

std::vector<HttpRoute> ServedState::Routes() {
    constexpr char const* kJson = "application/json; charset=utf-8";
    return {{.path = "/metrics",
             .handler =
                 [this](HttpRequest const& request) {
                     MetricsFormat const format = ChooseFormat(request.accept);
                     return HttpResponse{.contentType = ContentType(format), .body = MetricsText(Current(), format)};
                 }},
            {.path = "/api/readings",
             .handler =
                 [this](HttpRequest const&) {
                     return HttpResponse{.contentType = kJson, .body = ReadingsJson(Current(), clock_().wall)};
                 }},
            {.path = "/api/history",
             .handler =
                 [this](HttpRequest const&) {
                     std::lock_guard const lock(historyMutex_);
                     return HttpResponse{.contentType = kJson, .body = history_.HistoryJson()};
                 }},
            {.path = "/api/events", .events = [this] { return std::make_unique<Events>(*this); }},
            {.path = "/healthz", .handler = [](HttpRequest const&) {
                 return HttpResponse{.contentType = "text/plain; charset=utf-8", .body = "ok\n"};
             }}};
}

}  // namespace gputune::tool
