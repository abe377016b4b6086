// Where the exporter listens.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace gputune::tool {

struct ListenAddress {
    std::string host = "127.0.0.1";  // an address in figures; one of IPv6 without brackets
    std::uint16_t port = 9835;       // 0: a free one, which the system chooses

    // Only programs of this machine reach it.
    bool IsLoopback() const;
    // All addresses of this machine.
    bool IsAny() const;
    // "127.0.0.1:9835", "[::1]:9835".
    std::string Text() const;
};

// From "127.0.0.1:9835", "[::1]:9835" or "localhost:9835"; nothing when it is none of these. Whether this machine has
// the address is seen when a server is to listen there.
std::optional<ListenAddress> ParseListenAddress(std::string_view text);

// Whether the text is an address of IPv4, or one of IPv6 in brackets: nothing that a name server could have a say in.
bool IsAddressInFigures(std::string_view host);

}  // namespace gputune::tool
