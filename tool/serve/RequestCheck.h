// Who may ask the exporter, and what for. Knows nothing of sockets. docs/security.md says what each check is against.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tool/serve/ListenAddress.h"

namespace gputune::tool {

// A request as it came, up to its body. What is viewed is the connection's, and ends with it.
struct RequestHead {
    std::string_view method{};
    std::string target{};        // "/metrics?a=b": what stands behind the method, undecoded
    std::string_view version{};  // "1.1"
    std::vector<std::pair<std::string_view, std::string_view>> headers{};

    // The header's value; nothing when there is none, or more than one.
    std::optional<std::string_view> Only(std::string_view name) const;
    std::size_t Count(std::string_view name) const;
};

// The answer to a request that is refused.
struct Refusal {
    int status = 400;
    std::string reason{};  // a sentence, without anything that came with the request
};

class RequestCheck {
public:
    static constexpr std::size_t kLongestTarget = 256;
    static constexpr std::size_t kMostHeaders = 63;

    struct Rules {
        ListenAddress address{};           // where the server listens, with its real port
        std::vector<std::string> names{};  // this machine's names, under which others may ask for it
        std::string token{};               // empty: whoever reaches the server may ask
        std::vector<std::string> paths{};  // of the routes
    };

    explicit RequestCheck(Rules rules);

    // Why the request is not answered; nothing when it may be, and its target is the path of a route.
    std::optional<Refusal> Refuse(RequestHead const& request) const;

private:
    bool IsOwnHost(std::string_view host) const;
    bool HasToken(RequestHead const& request) const;
    bool IsToken(std::string_view text) const;

    Rules rules_;
    std::vector<std::string> hosts_;  // in lower case
};

// Whether a text can be a token: 16 to 256 visible ASCII characters.
bool IsUsableToken(std::string_view text);

}  // namespace gputune::tool
