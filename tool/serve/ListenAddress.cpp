#include "tool/serve/ListenAddress.h"

#include "tool/values/Numbers.h"

namespace gputune::tool {

namespace {

bool IsIpv4(std::string_view text) {
    for (int part = 0; part < 4; ++part) {
        if (part > 0) {
            if (!text.starts_with('.')) {
                return false;
            }
            text.remove_prefix(1);
        }
        // With a leading zero, programs do not agree whether it is octal.
        bool const hasLeadingZero = text.size() > 1 && text[0] == '0' && text[1] >= '0' && text[1] <= '9';
        std::optional<unsigned> const value = TakeNumber<unsigned>(text);
        if (hasLeadingZero || !value || *value > 255) {
            return false;
        }
    }
    return text.empty();
}

bool IsIpv6(std::string_view text) {
    return text.find_first_not_of("0123456789abcdefABCDEF:.") == std::string_view::npos &&
           text.find(':') != std::string_view::npos;
}

}  // namespace

bool ListenAddress::IsLoopback() const {
    return host == "::1" || (host.starts_with("127.") && IsIpv4(host));
}

bool ListenAddress::IsAny() const {
    return host == "0.0.0.0" || host == "::";
}

std::string ListenAddress::Text() const {
    bool const isIpv6 = host.find(':') != std::string::npos;
    return (isIpv6 ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

std::optional<ListenAddress> ParseListenAddress(std::string_view text) {
    std::size_t const colon = text.rfind(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view host = text.substr(0, colon);
    // No sign, and no zeros in front.
    std::string_view const port = text.substr(colon + 1);
    std::optional<std::uint16_t> const number = ParseNumber<std::uint16_t>(port);
    if (!number || port != std::to_string(*number)) {
        return std::nullopt;
    }
    if (host == "localhost") {
        host = "127.0.0.1";
    } else if (!IsAddressInFigures(host)) {
        return std::nullopt;
    }
    if (host.starts_with('[')) {
        host = host.substr(1, host.size() - 2);
    }
    return ListenAddress{.host = std::string(host), .port = *number};
}

bool IsAddressInFigures(std::string_view host) {
    return IsIpv4(host) ||
           (host.size() > 2 && host.front() == '[' && host.back() == ']' && IsIpv6(host.substr(1, host.size() - 2)));
}

}  // namespace gputune::tool
