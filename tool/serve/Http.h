// What the exporter's routes get and give, without the library that speaks HTTP.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace gputune::tool {

// A request that has passed all checks of who may ask.
struct HttpRequest {
    std::string path{};    // "/metrics"; there are no parameters
    std::string accept{};  // the header of this name; empty when there is none
};

struct HttpResponse {
    int status = 200;
    std::string contentType{};
    std::string body{};
};

// Called by the server's threads, several at a time; has to be quick, and never waits for a driver.
using HttpHandler = std::function<HttpResponse(HttpRequest const&)>;

// Events that a browser receives as they come (server-sent events). Called by a thread of the one connection.
class EventSource {
public:
    virtual ~EventSource() = default;
    // The data of the next event, one line; waits for it as long as this. Nothing when none came, so that the server
    // can see whether the browser is still there.
    virtual std::optional<std::string> Next(unsigned milliseconds) = 0;
};

struct HttpRoute {
    std::string path{};
    HttpHandler handler{};                                   // either this
    std::function<std::unique_ptr<EventSource>()> events{};  // or this, once for each connection
};

}  // namespace gputune::tool
