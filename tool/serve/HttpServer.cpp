#include "tool/serve/HttpServer.h"

#include <civetweb.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <utility>

#include "tool/serve/ServerThreads.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

using Clock = std::chrono::steady_clock;

// For a client that was refused to take the answer; it may go on sending.
constexpr std::chrono::milliseconds kRefusedLimit{500};
// Between the signs of life that a connection with events gets when there are none.
constexpr std::chrono::seconds kQuiet{15};
// For an event to be taken.
constexpr std::chrono::seconds kEventLimit{5};
constexpr unsigned kEventWait = 500;  // milliseconds

char const* Phrase(int status) {
    switch (status) {
        case 200:
            return "OK";
        case 400:
            return "Bad Request";
        case 401:
            return "Unauthorized";
        case 403:
            return "Forbidden";
        case 404:
            return "Not Found";
        case 405:
            return "Method Not Allowed";
        case 408:
            return "Request Timeout";
        case 413:
            return "Content Too Large";
        case 414:
            return "URI Too Long";
        case 431:
            return "Request Header Fields Too Large";
        case 503:
            return "Service Unavailable";
        case 505:
            return "HTTP Version Not Supported";
        default:
            return status < 500 ? "Refused" : "Error";
    }
}

// What every answer begins with.
std::string Head(int status, std::string const& contentType) {
    std::string head = "HTTP/1.1 " + std::to_string(status) + " " + Phrase(status) +
                       "\r\nContent-Type: " + contentType +
                       "\r\nConnection: close"
                       "\r\nCache-Control: no-store"
                       "\r\nContent-Security-Policy: default-src 'none'; script-src 'self'; style-src 'self'; "
                       "connect-src 'self'; img-src 'self' data:; base-uri 'none'; form-action 'none'; "
                       "frame-ancestors 'none'"
                       "\r\nCross-Origin-Opener-Policy: same-origin"
                       "\r\nCross-Origin-Resource-Policy: same-origin"
                       "\r\nReferrer-Policy: no-referrer"
                       "\r\nX-Content-Type-Options: nosniff"
                       "\r\nX-Frame-Options: DENY\r\n";
    if (status == 401) {
        // Bearer for programs; a browser asks its user for the other.
        head += "WWW-Authenticate: Bearer, Basic realm=\"gputunectl: any name, the token as the password\"\r\n";
    } else if (status == 405) {
        head += "Allow: GET, HEAD\r\n";
    } else if (status == 503) {
        head += "Retry-After: 5\r\n";
    }
    return head;
}

bool Write(mg_connection* connection, std::string const& text) {
    return mg_write(connection, text.data(), text.size()) == static_cast<int>(text.size());
}

// In one piece, head and body, so that it is one packet if it can be.
void Send(mg_connection* connection, HttpResponse const& response, bool withBody) {
    std::string text = Head(response.status, response.contentType) +
                       "Content-Length: " + std::to_string(response.body.size()) + "\r\n\r\n";
    if (withBody) {
        text += response.body;
    }
    Write(connection, text);
}

void SendRefusal(mg_connection* connection, int status, std::string const& reason) {
    Send(connection, {.status = status, .contentType = "text/plain; charset=utf-8", .body = reason + "\n"}, true);
    LimitConnection(kRefusedLimit);
}

RequestHead HeadOf(mg_request_info const& info) {
    RequestHead head{.method = info.request_method, .version = info.http_version};
    head.target = info.request_uri;
    if (info.query_string != nullptr) {
        // The library has cut it off.
        head.target += '?';
        head.target += info.query_string;
    }
    for (int i = 0; i < info.num_headers; ++i) {
        head.headers.emplace_back(info.http_headers[i].name, info.http_headers[i].value);
    }
    return head;
}

}  // namespace

class HttpServer::Connections {
public:
    explicit Connections(Setup setup) : setup_(std::move(setup)) {
        mg_init_library(MG_FEATURES_DEFAULT);
        try {
            Start();
        } catch (...) {
            mg_exit_library();
            throw;
        }
    }

    ~Connections() {
        isEnding_ = true;
        StartRemainingThreads();
        mg_stop(context_);
        mg_exit_library();
    }

    Connections(Connections const&) = delete;
    Connections& operator=(Connections const&) = delete;

    ListenAddress const& Address() const { return setup_.rules.address; }

private:
    void Start() {
        mg_callbacks callbacks{};
        callbacks.begin_request = [](mg_connection* connection) { return Of(connection).Answer(connection); };
        callbacks.http_error = [](mg_connection* connection, int status, char const*) {
            SendRefusal(connection, status, "The request was not understood.");
            return 0;
        };
        callbacks.init_connection = [](mg_connection const*, void**) {
            BeginConnection(std::chrono::seconds(kConnectionLimit));
            return 0;
        };
        callbacks.connection_closed = [](mg_connection const*) { EndConnection(); };
        callbacks.connection_close = [](mg_connection const* connection) {
            if (mg_get_request_info(connection)->request_method == nullptr) {
                LimitConnection(std::chrono::seconds(0));  // nothing was asked, and nothing is on its way
            }
        };
        callbacks.log_message = [](mg_connection const* connection, char const* message) {
            Of(connection).Note(message);
            return 1;
        };
        std::string const address = setup_.rules.address.Text();
        std::string const threads = std::to_string(kMostRequests + kMostEventStreams);
        std::string const head = std::to_string(kLargestHead);
        std::string const limit = std::to_string(kRequestLimit * 1000);
        char const* options[] = {"listening_ports",
                                 address.c_str(),
                                 "num_threads",
                                 threads.c_str(),
                                 "max_request_size",
                                 head.c_str(),
                                 "request_timeout_ms",
                                 limit.c_str(),
                                 "enable_keep_alive",
                                 "no",
                                 "decode_url",
                                 "no",
                                 "tcp_nodelay",
                                 "1",
                                 nullptr};
        context_ = mg_start(&callbacks, this, options);
        if (context_ == nullptr) {
            throw ToolError("Cannot listen on " + address +
                            ": another program uses the port, or this machine does not have the address (" + note_ +
                            ").");
        }
        mg_server_port port{};
        if (mg_get_server_ports(context_, 1, &port) == 1) {
            setup_.rules.address.port = static_cast<std::uint16_t>(port.port);
        }
        for (HttpRoute const& route : setup_.routes) {
            setup_.rules.paths.push_back(route.path);
        }
        check_.set_value(std::make_unique<RequestCheck>(setup_.rules));
    }

    static Connections& Of(mg_connection const* connection) {
        return *static_cast<Connections*>(mg_get_user_data(mg_get_context(connection)));
    }

    void Note(char const* message) {
        std::lock_guard const lock(noteMutex_);
        note_ = message;
    }

    // Returns the status, which tells the library that everything was sent.
    int Answer(mg_connection* connection) {
        try {
            RequestHead const head = HeadOf(*mg_get_request_info(connection));
            // Requests may come before everything is ready.
            if (std::optional<Refusal> const refusal = ready_.get()->Refuse(head)) {
                SendRefusal(connection, refusal->status, refusal->reason);
                return refusal->status;
            }
            return AnswerRoute(connection, head);
        } catch (std::exception const&) {  // out of memory
            LimitConnection(std::chrono::seconds(0));
            return 500;
        }
    }

    int AnswerRoute(mg_connection* connection, RequestHead const& head) {
        bool const withBody = head.method == "GET";
        auto const route = std::find_if(setup_.routes.begin(), setup_.routes.end(),
                                        [&head](HttpRoute const& known) { return known.path == head.target; });
        if (!route->events) {
            Send(connection,
                 route->handler({.path = route->path, .accept = std::string(head.Only("Accept").value_or(""))}),
                 withBody);
            return 200;
        }
        if (!withBody) {
            Send(connection, {.contentType = "text/event-stream", .body = ""}, false);
            return 200;
        }
        if (++eventStreams_ > kMostEventStreams) {
            SendRefusal(connection, 503, "Too many others follow the events.");
        } else {
            Stream(connection, *route->events());
        }
        --eventStreams_;
        return 200;
    }

    void Stream(mg_connection* connection, EventSource& source) {
        if (!Write(connection, Head(200, "text/event-stream") + "\r\n")) {
            return;
        }
        Clock::time_point lastSign = Clock::now();
        for (bool isRead = true; isRead && !isEnding_;) {
            std::optional<std::string> const data = source.Next(kEventWait);
            LimitConnection(kEventLimit, Further::Exactly);
            if (data) {
                isRead = Write(connection, "data: " + *data + "\n\n");
                lastSign = Clock::now();
            } else if (Clock::now() - lastSign >= kQuiet) {
                isRead = Write(connection, ":\n\n");
                lastSign = Clock::now();
            }
        }
        LimitConnection(kRefusedLimit);
    }

    Setup setup_;
    std::promise<std::unique_ptr<RequestCheck const>> check_;
    std::shared_future<std::unique_ptr<RequestCheck const>> ready_ = check_.get_future().share();
    std::atomic<int> eventStreams_ = 0;
    std::atomic<bool> isEnding_ = false;
    std::mutex noteMutex_;
    std::string note_;  // the library's last message
    mg_context* context_ = nullptr;
};

HttpServer::HttpServer(Setup setup) : connections_(std::make_unique<Connections>(std::move(setup))) {}

HttpServer::~HttpServer() = default;

ListenAddress const& HttpServer::Address() const {
    return connections_->Address();
}

}  // namespace gputune::tool
