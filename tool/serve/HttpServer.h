// The exporter's HTTP server: routes that can only be read, and limits that keep one client from shutting out another.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tool/serve/Http.h"
#include "tool/serve/RequestCheck.h"

namespace gputune::tool {

class HttpServer {
public:
    // Browsers that may follow events at a time. Every connection takes a thread; threads are started as they are
    // needed.
    static constexpr int kMostEventStreams = 8;
    // Requests that are read and answered at a time. Further ones wait.
    static constexpr int kMostRequests = 64;
    static constexpr int kLargestHead = 16 * 1024;  // bytes, of a request line with its headers
    static constexpr int kRequestLimit = 2;         // seconds, for a request to come
    static constexpr int kConnectionLimit = 10;     // seconds, for all of a connection but one that follows events

    // What `rules` says of routes and of the port is completed here.
    struct Setup {
        RequestCheck::Rules rules{};
        std::vector<HttpRoute> routes{};
    };

    // Listens at once. Throws ToolError when that is not possible.
    explicit HttpServer(Setup setup);
    // Ends all connections; takes about a second. An EventSource is asked again at most once more, so whoever has some
    // that wait long ends their waiting before.
    ~HttpServer();
    HttpServer(HttpServer const&) = delete;
    HttpServer& operator=(HttpServer const&) = delete;

    // With the port that the system chose, if it was to.
    ListenAddress const& Address() const;

private:
    class Connections;
    std::unique_ptr<Connections> connections_;
};

}  // namespace gputune::tool
